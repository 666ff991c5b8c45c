#include "masslynx/directory_files.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "common/text.h"
#include "common/text_file.h"
#include "masslynx/function_record.h"
#include "masslynx/function_types.h"

namespace zrml::masslynx {
namespace {

using platform::SystemPath;

SystemPath Join(const SystemPath& folder, const std::wstring& name) {
  return platform::PathIn(folder, platform::ToSystemPath(name));
}

// Calls `visit(path)` for each spelling until it returns true; returns whether it did.
template <class Visit>
bool AnySpelling(const SystemPath& folder, std::wstring_view name, Spellings spellings, Visit visit) {
  if (folder.empty() || name.empty()) return false;
  if (spellings == Spellings::kAsWrittenUpperLower && visit(Join(folder, std::wstring(name)))) return true;
  return visit(Join(folder, ToUpper(name))) || visit(Join(folder, ToLower(name)));
}

// Opens the first spelling that opens, and returns it.
platform::File OpenFirst(const SystemPath& folder, std::wstring_view name, Spellings spellings,
                         SystemPath& found) {
  platform::File file;
  AnySpelling(folder, name, spellings, [&](SystemPath path) {
    file = platform::File::OpenSystemPath(path);
    if (file.IsOpen()) found = std::move(path);
    return file.IsOpen();
  });
  return file;
}

std::wstring NumberedName(std::wstring_view stem, int number, std::wstring_view extension) {
  return std::wstring(stem) + ZeroPadded(number, 3) + L'.' + std::wstring(extension);
}

// Functions have fewer files; a directory with many others is not worth listing.
constexpr std::size_t kMostNamesPerFile = 16;
constexpr std::size_t kFewFiles = 8;

bool IsAscii(const SystemPath& name) {
  return std::all_of(name.begin(), name.end(), [](auto c) { return c >= 0 && c < 0x80; });
}

// One zero at the end may be there, as that of a text in memory.
bool HasZeros(std::string_view text) {
  const std::size_t first = text.find('\0');
  return first != std::string_view::npos && first + 1 < text.size();
}

// A CR that is left where CR LF is folded, and ends no line.
bool HasLoneCr(std::string_view text) {
  for (std::size_t at = text.find('\r'); at < text.size(); at = text.find('\r', at + 1)) {
    const std::size_t next = text.find_first_not_of('\r', at);
    if (next < text.size() && text[next] != '\n') return true;
  }
  return false;
}

void NoticeDamagedText(std::string_view text, std::wstring_view name, Findings& findings) {
  const auto notice = [&](const char* problem) {
    findings.Add({.code = FindingCode::kTextDamaged,
                  .file = platform::ToNativePath(ToUpper(name)),
                  .problem = problem});
  };
  if (HasZeros(text)) notice("has zeros in place of text, so values are missing");
  if (HasLoneCr(text)) notice("has CR alone in place of line ends, so lines are not read");
}

}  // namespace

platform::File OpenInDirectory(const SystemPath& folder, std::wstring_view name, Spellings spellings) {
  SystemPath found;
  return OpenFirst(folder, name, spellings, found);
}

bool FileExistsInDirectory(const SystemPath& folder, std::wstring_view name) {
  return platform::IsDirectory(folder) &&
         AnySpelling(folder, name, Spellings::kUpperLower,
                     [](const SystemPath& path) { return platform::IsFile(path); });
}

bool IsThere(const SystemPath& folder, std::wstring_view name, Spellings spellings) {
  return AnySpelling(folder, name, spellings, [](const SystemPath& path) { return platform::IsThere(path); });
}

Finding NotOpened(const SystemPath& folder, std::wstring_view name, Spellings spellings,
                  FindingCode codeWhenMissing, std::string_view result) {
  const bool isThere = IsThere(folder, name, spellings);
  return {.code = isThere ? FindingCode::kFileUnreadable : codeWhenMissing,
          .file = platform::ToNativePath(ToUpper(name)),
          .problem = (isThere ? "cannot be opened" : "is missing") + std::string(result)};
}

void NoticeUnreadable(const SystemPath& folder, std::wstring_view name, Findings* findings,
                      const FindingSubject& subject) {
  if (findings == nullptr || !IsThere(folder, name)) return;
  Finding finding = NotOpened(folder, name, Spellings::kUpperLower, FindingCode::kFileUnreadable);
  finding.subject = subject;
  findings->Add(std::move(finding));
}

void NoticeRefusal(const platform::File& file, const SystemPath& folder, std::wstring_view name,
                   Spellings spellings, std::string* refusal) {
  if (refusal == nullptr || !refusal->empty() || (file.IsOpen() && !file.IsRefused())) return;
  std::string problem = file.Refusal();
  if (!file.IsOpen()) {
    std::string reason;
    AnySpelling(folder, name, spellings, [&](const SystemPath& path) {
      reason = platform::WhyClosed(path);
      return !reason.empty();
    });
    if (reason.empty()) return;
    problem = "cannot be opened (" + reason + ")";
  }
  *refusal = platform::ToNativePath(ToUpper(name)) + ' ' + problem;
}

std::string ReadTextOf(const platform::File& file, std::wstring_view name, Findings* findings) {
  if (findings == nullptr) return ReadTextBytes(file);
  if (file.Size() > kMostTextBytes) {
    findings->Add({.code = FindingCode::kTextOversized,
                   .file = platform::ToNativePath(ToUpper(name)),
                   .problem = "has " + std::to_string(file.Size()) + " bytes, of which " +
                              std::to_string(kMostTextBytes >> 20) + " MiB are read"});
  }
  std::string text = ReadTextBytes(file, kMostTextBytes);
  NoticeDamagedText(text, name, *findings);
  return text;
}

// A system that ignores case may take characters that are not ASCII for ASCII ones ("ſ" for "s"):
// among such names nothing is known to be missing.
FileFinder::FileFinder(const SystemPath& folder, std::size_t names) : folder_(folder) {
  if (names < kFewFiles) return;
  std::optional<std::vector<SystemPath>> listed = platform::ListNames(folder, names * kMostNamesPerFile);
  if (!listed || !std::all_of(listed->begin(), listed->end(), IsAscii)) return;
  for (const SystemPath& name : *listed) names_.push_back(ToLower(name));
  std::sort(names_.begin(), names_.end());
  isListed_ = true;
}

bool FileFinder::Opens(std::wstring_view name) const {
  if (isListed_ && !std::binary_search(names_.begin(), names_.end(), platform::ToSystemPath(ToLower(name))))
    return false;
  return OpenInDirectory(folder_, name).IsOpen();
}

bool IsRawDirectory(const SystemPath& folder) {
  return FileExistsInDirectory(folder, kHeaderName) && FileExistsInDirectory(folder, kFunctionTableName);
}

std::wstring FunctionFileName(int number, std::wstring_view extension) {
  return NumberedName(L"_FUNC", number, extension);
}

std::wstring ProcessedFileName(int number, std::wstring_view extension) {
  return NumberedName(L"_PROC", number, extension);
}

std::string FunctionStem(std::string_view fileName) {
  constexpr std::size_t kExtensionLength = 4;
  const std::string upper = ToUpper(fileName);
  const bool isOfFunction = upper.starts_with("_FUNC") || upper.starts_with("_PROC");
  if (!isOfFunction || upper[upper.size() - kExtensionLength] != '.') return {};
  return upper.substr(0, upper.size() - kExtensionLength);
}

std::wstring FileNameOf(const FunctionRecord& function, std::wstring_view extension) {
  return function.processed ? ProcessedFileName(function.number, extension)
                            : FunctionFileName(function.number, extension);
}

platform::File OpenFunctionFile(const SystemPath& folder, const FunctionRecord& function,
                                std::wstring_view extension) {
  return OpenInDirectory(folder, FileNameOf(function, extension), Spellings::kAsWrittenUpperLower);
}

platform::File OpenDataFile(const SystemPath& folder, FunctionRecord& function) {
  platform::File file = platform::File::OpenSystemPath(function.dataFilePath);
  if (file.IsOpen()) return file;
  return OpenFirst(folder, FileNameOf(function, L"dat"), Spellings::kAsWrittenUpperLower,
                   function.dataFilePath);
}

SystemPath PathOfDataFile(const SystemPath& folder, const FunctionRecord& function) {
  SystemPath found;
  AnySpelling(folder, FileNameOf(function, L"dat"), Spellings::kAsWrittenUpperLower, [&](SystemPath path) {
    const bool isThere = platform::IsFile(path);
    if (isThere) found = std::move(path);
    return isThere;
  });
  return found;
}

FindingSubject SubjectOf(const FunctionRecord& function) {
  if (function.typeCode == kDadType)
    return {.kind = FindingSubject::Kind::kAbsorbance, .function = function.number};
  FindingSubject subject = {.kind = FindingSubject::Kind::kFunction, .function = function.number};
  if (function.processed) {
    subject.function = function.rawNumber;
    subject.process = function.number;
    subject.repeat = function.repeat;
  }
  return subject;
}

}  // namespace zrml::masslynx
