#include <array>
#include <openssl/evp.h>

#include "convert/error.h"
#include "convert/hex.h"
#include "convert/sha1.h"

namespace zrml::convert {

struct Sha1::State {
  State() : context(EVP_MD_CTX_new()) {}
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { EVP_MD_CTX_free(context); }

  EVP_MD_CTX* context;
};

Sha1::Sha1() : state_(std::make_unique<State>()) {
  if (state_->context == nullptr || EVP_DigestInit_ex(state_->context, EVP_sha1(), nullptr) != 1) {
    throw Error(ErrorKind::kSystem, "the system's library does not offer SHA-1");
  }
}
Sha1::Sha1(Sha1&&) noexcept = default;
Sha1::~Sha1() = default;

void Sha1::Add(std::span<const std::byte> bytes) {
  EVP_DigestUpdate(state_->context, bytes.data(), bytes.size());
}

std::string Sha1::Finish() {
  std::array<std::byte, 20> digest{};
  EVP_DigestFinal_ex(state_->context, reinterpret_cast<unsigned char*>(digest.data()), nullptr);
  return Hex(digest);
}

}  // namespace zrml::convert
