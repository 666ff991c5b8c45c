#include "masslynx/raw_directory.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <utility>

#include "common/text.h"
#include "masslynx/function_record.h"

namespace zrml {
namespace {

std::wstring Join(const std::wstring& directory, std::wstring_view name) {
  std::wstring path = directory;
  if (!path.ends_with(L'\\')) path += L'\\';
  return path.append(name);
}

std::wstring NumberedName(std::wstring_view stem, int number, std::wstring_view extension) {
  return std::wstring(stem) + ZeroPadded(number, 3) + L'.' + std::wstring(extension);
}

using Spelling = std::wstring (*)(std::wstring_view name);

std::wstring AsWritten(std::wstring_view name) { return std::wstring(name); }

// Opens the first of the spellings that opens, and tells it.
platform::File OpenFirst(const std::wstring& directory, std::wstring_view name,
                         std::initializer_list<Spelling> spellings, platform::SystemPath& found) {
  for (const Spelling spelled : spellings) {
    platform::SystemPath path = platform::ToSystemPath(Join(directory, spelled(name)));
    if (platform::File file = platform::File::OpenSystemPath(path); file.IsOpen()) {
      found = std::move(path);
      return file;
    }
  }
  return {};
}

platform::File FindFunctionFile(const std::wstring& directory, const FunctionRecord& function,
                                std::wstring_view extension, platform::SystemPath& found) {
  if (directory.empty()) return {};
  const std::wstring name = function.processed ? ProcessedFileName(function.number, extension)
                                               : FunctionFileName(function.number, extension);
  return OpenFirst(directory, name, {AsWritten, ToUpper, ToLower}, found);
}

// Functions have fewer files; a directory with many others is not worth listing.
constexpr std::size_t kMostNamesPerFile = 16;
constexpr std::size_t kFewFiles = 8;

bool IsAscii(const platform::SystemPath& name) {
  return std::all_of(name.begin(), name.end(), [](auto c) { return c >= 0 && c < 0x80; });
}

void MakeLowerCase(platform::SystemPath& name) {
  using Char = platform::SystemPath::value_type;
  std::transform(name.begin(), name.end(), name.begin(), [](Char c) {
    return c >= Char('A') && c <= Char('Z') ? static_cast<Char>(c - Char('A') + Char('a')) : c;
  });
}

}  // namespace

platform::File OpenInDirectory(const std::wstring& directory, std::wstring_view name) {
  if (directory.empty() || name.empty()) return {};
  platform::SystemPath found;
  return OpenFirst(directory, name, {ToUpper, ToLower}, found);
}

// A system that does not tell case apart may take characters that are not ASCII for ASCII ones ("ſ" for "s"):
// among such names nothing is known to be missing.
FileFinder::FileFinder(const std::wstring& directory, std::size_t names) : directory_(directory) {
  if (names < kFewFiles) return;
  std::optional<std::vector<platform::SystemPath>> listed =
      platform::ListNames(directory, names * kMostNamesPerFile);
  if (!listed || !std::all_of(listed->begin(), listed->end(), IsAscii)) return;
  names_ = std::move(*listed);
  std::for_each(names_.begin(), names_.end(), MakeLowerCase);
  std::sort(names_.begin(), names_.end());
  isListed_ = true;
}

bool FileFinder::Opens(std::wstring_view name) const {
  if (isListed_) {
    platform::SystemPath wanted = platform::ToSystemPath(std::wstring(name));
    MakeLowerCase(wanted);
    if (!std::binary_search(names_.begin(), names_.end(), wanted)) return false;
  }
  return OpenInDirectory(directory_, name).IsOpen();
}

bool FileExistsInDirectory(const std::wstring& directory, std::wstring_view name) {
  return platform::IsDirectory(directory) && platform::IsFile(Join(directory, name));
}

bool IsRawDirectory(const std::wstring& path) {
  const auto holds = [&](std::wstring_view lower, std::wstring_view upper) {
    return FileExistsInDirectory(path, lower) || FileExistsInDirectory(path, upper);
  };
  return holds(L"_header.txt", L"_HEADER.TXT") && holds(L"_functns.inf", L"_FUNCTNS.INF");
}

std::wstring FunctionFileName(int number, std::wstring_view extension) {
  return NumberedName(L"_FUNC", number, extension);
}

std::wstring ProcessedFileName(int number, std::wstring_view extension) {
  return NumberedName(L"_PROC", number, extension);
}

platform::File OpenFunctionFile(const std::wstring& directory, const FunctionRecord& function,
                                std::wstring_view extension) {
  platform::SystemPath found;
  return FindFunctionFile(directory, function, extension, found);
}

platform::File OpenDataFile(const std::wstring& directory, FunctionRecord& function) {
  platform::File file = platform::File::OpenSystemPath(function.dataFilePath);
  return file.IsOpen() ? std::move(file)
                       : FindFunctionFile(directory, function, L"dat", function.dataFilePath);
}

}  // namespace zrml
