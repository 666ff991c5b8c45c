#include "tools/zrml/check/raw_file.h"

#include "common/text.h"

namespace zrml {

RawFile::RawFile(const std::wstring& folder, std::wstring name) : name_(std::move(name)) {
  Try(folder, ToUpper(name_));
  Try(folder, ToLower(name_));
}

RawFile RawFile::OfFunction(const std::wstring& folder, const std::wstring& stem,
                            const std::wstring& extension) {
  RawFile file(folder, stem + L'.' + extension);
  file.Try(folder, stem + L'.' + ToLower(extension));
  return file;
}

void RawFile::Try(const std::wstring& folder, const std::wstring& spelling) {
  if (IsOpen()) return;
  const std::wstring path = folder + L'\\' + spelling;
  file_ = platform::File::Open(path);
  isThere_ = isThere_ || IsOpen() || platform::IsFile(path) || platform::IsDirectory(path);
}

std::wstring RawFile::Problem() const { return isThere_ ? L"cannot be opened" : L"is missing"; }

std::vector<std::byte> RawFile::Read(std::uint64_t offset, std::size_t size) const {
  std::vector<std::byte> bytes(size);
  file_.ReadAt(offset, bytes);
  return bytes;
}

}  // namespace zrml
