// A file of a raw directory, in the spellings that the provider tries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/platform/platform.h"

namespace zrml {

class RawFile {
 public:
  /// `name` in upper or in lower case.
  RawFile(const std::wstring& folder, std::wstring name);
  /// An index, statistics or data file as its provider reads it: also in upper case with a lower-case
  /// extension, "_FUNC001.idx".
  static RawFile OfFunction(const std::wstring& folder, const std::wstring& stem,
                            const std::wstring& extension);

  const std::wstring& Name() const { return name_; }
  bool IsOpen() const { return file_.IsOpen(); }
  /// Why it is not open: "is missing" or "cannot be opened".
  std::wstring Problem() const;
  bool IsThere() const { return isThere_; }
  std::uint64_t Size() const { return file_.Size(); }

  /// Zeros for what cannot be read.
  std::vector<std::byte> Read(std::uint64_t offset, std::size_t size) const;

 private:
  void Try(const std::wstring& folder, const std::wstring& spelling);

  std::wstring name_;
  platform::File file_;
  bool isThere_ = false;
};

}  // namespace zrml
