#include "masslynx/raw_directory.h"

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

}  // namespace

platform::File OpenInDirectory(const std::wstring& directory, std::wstring_view name) {
  if (directory.empty() || name.empty()) return {};
  platform::File file = platform::File::Open(Join(directory, ToUpper(name)));
  if (!file.IsOpen()) file = platform::File::Open(Join(directory, ToLower(name)));
  return file;
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
  const std::wstring name = function.processed ? ProcessedFileName(function.number, extension)
                                               : FunctionFileName(function.number, extension);
  platform::File file = platform::File::Open(Join(directory, name));
  return file.IsOpen() ? std::move(file) : OpenInDirectory(directory, name);
}

}  // namespace zrml
