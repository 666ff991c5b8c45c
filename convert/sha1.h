// SHA-1 with the system's library.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace zrml::convert {

class Sha1 {
 public:
  /// Throws an Error when the system has no SHA-1.
  Sha1();
  Sha1(Sha1&&) noexcept;
  ~Sha1();

  void Add(std::span<const std::byte> bytes);

  /// 40 digits in lower case. Nothing can be added afterwards.
  std::string Finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zrml::convert
