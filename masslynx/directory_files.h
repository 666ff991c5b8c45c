// Files of a raw directory. Acquisition PCs ignore case and other systems do not, so names are tried in
// several spellings. Folders are system paths, with or without a trailing separator; an empty path has no
// files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/findings.h"
#include "common/platform/platform.h"

namespace zrml::masslynx {

struct FunctionRecord;

inline constexpr std::wstring_view kHeaderName = L"_HEADER.TXT";
inline constexpr std::wstring_view kFunctionTableName = L"_FUNCTNS.INF";
inline constexpr std::wstring_view kHistoryName = L"_HISTORY.INF";
inline constexpr std::wstring_view kLabelsName = L"_EXTERN.INF";

/// Upper, then lower case; deliberately never the name's own mixed case unless requested: index, statistics
/// and data files are first looked for as written ("_FUNC001.idx").
enum class Spellings { kUpperLower, kAsWrittenUpperLower };

/// Opens `name` in `folder` by the first spelling that opens. A closed file when none does.
platform::File OpenInDirectory(const platform::SystemPath& folder, std::wstring_view name,
                               Spellings spellings = Spellings::kUpperLower);

/// Whether `folder` is a directory and has an entry `name`, in one of the spellings, that is not a directory.
bool FileExistsInDirectory(const platform::SystemPath& folder, std::wstring_view name);

/// Whether anything is called `name`, even a directory.
bool IsThere(const platform::SystemPath& folder, std::wstring_view name,
             Spellings spellings = Spellings::kUpperLower);

/// A finding about a file that does not open: "is missing" or "cannot be opened", then `result`.
Finding NotOpened(const platform::SystemPath& folder, std::wstring_view name, Spellings spellings,
                  FindingCode codeWhenMissing, std::string_view result = {});

/// Reports that `name` does not open although it exists.
void NoticeUnreadable(const platform::SystemPath& folder, std::wstring_view name, Findings* findings,
                      const FindingSubject& subject = {});

/// Sets `refusal`, unless already set, when the system refuses `name`, opened or tried in `spellings`:
/// "_FUNC001.IDX cannot be opened (Too many open files)", "_FUNC001.IDX cannot be read to its end
/// (Input/output error)". `refusal` may be null.
void NoticeRefusal(const platform::File& file, const platform::SystemPath& folder, std::wstring_view name,
                   Spellings spellings, std::string* refusal);

/// Text files have a few KB. Anything beyond this many bytes is damage.
inline constexpr std::uint64_t kMostTextBytes = std::uint64_t{16} << 20;

/// The text of the file `name`. When findings are collected, at most kMostTextBytes; a longer file is a
/// finding.
std::string ReadTextOf(const platform::File& file, std::wstring_view name, Findings* findings);

/// Finds out for many names whether OpenInDirectory() opens them. The directory, which must not be empty, is
/// listed once where that is less work than trying every name; names that are not in the list, ignoring case,
/// are then not tried. Files created later are missed.
class FileFinder {
 public:
  FileFinder(const platform::SystemPath& folder, std::size_t names);

  bool Opens(std::wstring_view name) const;

 private:
  const platform::SystemPath& folder_;
  bool isListed_ = false;
  std::vector<platform::SystemPath> names_;  // in lower case, sorted
};

/// Whether `folder` holds a header and a function table, each wholly in upper or wholly in lower case.
bool IsRawDirectory(const platform::SystemPath& folder);

/// "_FUNC%03d.<extension>".
std::wstring FunctionFileName(int number, std::wstring_view extension);

/// "_PROC%03d.<extension>".
std::wstring ProcessedFileName(int number, std::wstring_view extension);

/// Either of the two.
std::wstring FileNameOf(const FunctionRecord& function, std::wstring_view extension);

/// "_FUNC002" for "_func002.dat": the common part of the names of a function's files. Empty for other names.
std::string FunctionStem(std::string_view fileName);

/// Opens the file of a raw or processed function with the extension "idx", "sts" or "dat".
platform::File OpenFunctionFile(const platform::SystemPath& folder, const FunctionRecord& function,
                                std::wstring_view extension);

/// Opens the function's data file, trying its last known path first.
platform::File OpenDataFile(const platform::SystemPath& folder, FunctionRecord& function);

/// The path of the file that OpenDataFile() opens; empty when there is none.
platform::SystemPath PathOfDataFile(const platform::SystemPath& folder, const FunctionRecord& function);

/// The subject of findings about a function.
FindingSubject SubjectOf(const FunctionRecord& function);

}  // namespace zrml::masslynx
