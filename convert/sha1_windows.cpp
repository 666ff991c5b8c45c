#include <windows.h>
// after windows.h, which it needs
#include <algorithm>
#include <array>
#include <bcrypt.h>

#include "convert/error.h"
#include "convert/hex.h"
#include "convert/sha1.h"

namespace zrml::convert {

struct Sha1::State {
  State() = default;
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() {
    if (hash != nullptr) ::BCryptDestroyHash(hash);
    if (algorithm != nullptr) ::BCryptCloseAlgorithmProvider(algorithm, 0);
  }

  BCRYPT_ALG_HANDLE algorithm = nullptr;
  BCRYPT_HASH_HANDLE hash = nullptr;
};

Sha1::Sha1() : state_(std::make_unique<State>()) {
  State& state = *state_;
  if (::BCryptOpenAlgorithmProvider(&state.algorithm, BCRYPT_SHA1_ALGORITHM, nullptr, 0) < 0 ||
      ::BCryptCreateHash(state.algorithm, &state.hash, nullptr, 0, nullptr, 0, 0) < 0) {
    throw Error(ErrorKind::kSystem, "the system's library does not offer SHA-1");
  }
}
Sha1::Sha1(Sha1&&) noexcept = default;
Sha1::~Sha1() = default;

void Sha1::Add(std::span<const std::byte> bytes) {
  constexpr std::size_t kLargest = 1u << 30;  // the system counts in 32 bits
  while (!bytes.empty()) {
    const auto piece = bytes.first(std::min(bytes.size(), kLargest));
    auto* const data = reinterpret_cast<PUCHAR>(const_cast<std::byte*>(piece.data()));
    ::BCryptHashData(state_->hash, data, static_cast<ULONG>(piece.size()), 0);
    bytes = bytes.subspan(piece.size());
  }
}

std::string Sha1::Finish() {
  std::array<std::byte, 20> digest{};
  ::BCryptFinishHash(state_->hash, reinterpret_cast<PUCHAR>(digest.data()), 20, 0);
  return Hex(digest);
}

}  // namespace zrml::convert
