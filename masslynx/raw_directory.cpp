#include "masslynx/raw_directory.h"

#include <initializer_list>
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

// Opens the first of the spellings that opens, and tells it.
platform::File OpenFirst(const std::wstring& directory, std::initializer_list<std::wstring> names,
                         platform::SystemPath& found) {
  for (const std::wstring& name : names) {
    platform::SystemPath path = platform::ToSystemPath(Join(directory, name));
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
  return OpenFirst(directory, {name, ToUpper(name), ToLower(name)}, found);
}

}  // namespace

platform::File OpenInDirectory(const std::wstring& directory, std::wstring_view name) {
  if (directory.empty() || name.empty()) return {};
  platform::SystemPath found;
  return OpenFirst(directory, {ToUpper(name), ToLower(name)}, found);
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
