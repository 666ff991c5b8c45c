// Files of a raw directory. Acquisition PCs do not tell case apart, other systems do, so names are tried in
// several spellings.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/platform/platform.h"

namespace zrml {

struct FunctionRecord;

/// Opens `name` of `directory` spelled in upper case, else in lower case; deliberately never in a mixed case
/// of its own. A closed file when neither opens or one of the texts is empty.
platform::File OpenInDirectory(const std::wstring& directory, std::wstring_view name);

/// Tells for many names whether OpenInDirectory() opens them. The directory, which must not be empty, is
/// listed once where that is less work than trying them all; names that it lacks in every case of their
/// letters are not tried then. A file that comes later is missed.
class FileFinder {
 public:
  FileFinder(const std::wstring& directory, std::size_t names);

  bool Opens(std::wstring_view name) const;

 private:
  const std::wstring& directory_;
  bool isListed_ = false;
  std::vector<platform::SystemPath> names_;  // in lower case and in order
};

/// Whether `directory` is a directory and holds `name`, spelled as given, as something else than a directory.
bool FileExistsInDirectory(const std::wstring& directory, std::wstring_view name);

/// Whether `path` holds a header and a function table, each wholly in upper or wholly in lower case.
bool IsRawDirectory(const std::wstring& path);

/// "_FUNC%03d.<extension>".
std::wstring FunctionFileName(int number, std::wstring_view extension);

/// "_PROC%03d.<extension>".
std::wstring ProcessedFileName(int number, std::wstring_view extension);

/// Opens the file of a raw or processed function with the extension "idx", "sts" or "dat": the name as
/// written ("_FUNC001.idx"), in upper case, then in lower case.
platform::File OpenFunctionFile(const std::wstring& directory, const FunctionRecord& function,
                                std::wstring_view extension);

/// Opens the function's data file, first where it was found before.
platform::File OpenDataFile(const std::wstring& directory, FunctionRecord& function);

}  // namespace zrml
