// Files of a raw directory. Acquisition PCs do not tell case apart, other systems do, so names are tried in
// several spellings. Folders are system paths, with or without a separator at their end; an empty one has no
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

/// Upper, then lower case; deliberately never a mixed case of the name's own, unless that is asked for:
/// index, statistics and data files are looked for as they are written first ("_FUNC001.idx").
enum class Spellings { kUpperLower, kAsWrittenUpperLower };

/// Opens `name` of `folder` in the first spelling that opens. A closed file when none does.
platform::File OpenInDirectory(const platform::SystemPath& folder, std::wstring_view name,
                               Spellings spellings = Spellings::kUpperLower);

/// Whether `folder` is a directory and holds `name` in a spelling, as something else than a directory.
bool FileExistsInDirectory(const platform::SystemPath& folder, std::wstring_view name);

/// Whether something is called `name`, be it a directory.
bool IsThere(const platform::SystemPath& folder, std::wstring_view name,
             Spellings spellings = Spellings::kUpperLower);

/// A finding about a file that does not open: "is missing" or "cannot be opened", then `result`.
Finding NotOpened(const platform::SystemPath& folder, std::wstring_view name, Spellings spellings,
                  FindingCode codeWhenMissing, std::string_view result = {});

/// Collects that `name` does not open although something is called so.
void NoticeUnreadable(const platform::SystemPath& folder, std::wstring_view name, Findings* findings,
                      const FindingSubject& subject = {});

/// Collects, unless something is collected already, that the system refuses `name`, which was opened in
/// `spellings` or could not be: "_FUNC001.IDX cannot be opened (Too many open files)", "_FUNC001.IDX cannot
/// be read to its end (Input/output error)". `refusal` may be null.
void NoticeRefusal(const platform::File& file, const platform::SystemPath& folder, std::wstring_view name,
                   Spellings spellings, std::string* refusal);

/// Texts beside the data have a few KB. What follows this many bytes is damage.
inline constexpr std::uint64_t kMostTextBytes = std::uint64_t{16} << 20;

/// The text of the file `name`, up to kMostTextBytes when findings are collected: then a longer one is one.
std::string ReadTextOf(const platform::File& file, std::wstring_view name, Findings* findings);

/// Tells for many names whether OpenInDirectory() opens them. The directory, which must not be empty, is
/// listed once where that is less work than trying them all; names that it lacks in every case of their
/// letters are not tried then. A file that comes later is missed.
class FileFinder {
 public:
  FileFinder(const platform::SystemPath& folder, std::size_t names);

  bool Opens(std::wstring_view name) const;

 private:
  const platform::SystemPath& folder_;
  bool isListed_ = false;
  std::vector<platform::SystemPath> names_;  // in lower case and in order
};

/// Whether `folder` holds a header and a function table, each wholly in upper or wholly in lower case.
bool IsRawDirectory(const platform::SystemPath& folder);

/// "_FUNC%03d.<extension>".
std::wstring FunctionFileName(int number, std::wstring_view extension);

/// "_PROC%03d.<extension>".
std::wstring ProcessedFileName(int number, std::wstring_view extension);

/// The one or the other.
std::wstring FileNameOf(const FunctionRecord& function, std::wstring_view extension);

/// "_FUNC002" of "_func002.dat": what the files of a function have in common, from the name of any. Empty for
/// other names.
std::string FunctionStem(std::string_view fileName);

/// Opens the file of a raw or processed function with the extension "idx", "sts" or "dat".
platform::File OpenFunctionFile(const platform::SystemPath& folder, const FunctionRecord& function,
                                std::wstring_view extension);

/// Opens the function's data file, first where it was found before.
platform::File OpenDataFile(const platform::SystemPath& folder, FunctionRecord& function);

/// Where that looks for it, without opening it; empty when it is not there.
platform::SystemPath PathOfDataFile(const platform::SystemPath& folder, const FunctionRecord& function);

/// What findings about a function are about.
FindingSubject SubjectOf(const FunctionRecord& function);

}  // namespace zrml::masslynx
