// A wide string laid out like the host's: 32 bytes, up to seven characters inside, longer text in a block of
// the host's heap, always terminated.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "common/host_heap.h"

namespace zrml {

template <class Char>
class BasicHostString {
 public:
  using View = std::basic_string_view<Char>;

  BasicHostString() noexcept { Reset(); }
  BasicHostString(const Char* text) : BasicHostString(View(text)) {}  // NOLINT: a literal is its text
  explicit BasicHostString(View text) {
    Reset();
    Assign(text);
  }
  BasicHostString(const BasicHostString& other) : BasicHostString(View(other)) {}
  BasicHostString(BasicHostString&& other) noexcept
      : text_(other.text_), size_(other.size_), capacity_(other.capacity_) {
    other.Reset();
  }
  BasicHostString& operator=(const BasicHostString& other) {
    if (this != &other) Assign(other);
    return *this;
  }
  BasicHostString& operator=(BasicHostString&& other) noexcept {
    BasicHostString taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~BasicHostString() { Free(); }

  /// `text` must not be part of this string. When memory runs out the string is unchanged.
  void Assign(View text) {
    if (text.size() > capacity_) {
      const std::size_t capacity = text.size() | kInside;  // as the host rounds
      Char* const block = HostAllocator<Char>().allocate(capacity + 1);
      Free();
      text_.block = block;
      capacity_ = capacity;
    }
    Char* const target = Data();
    text.copy(target, text.size());
    target[text.size()] = Char();
    size_ = text.size();
  }

  const Char* data() const noexcept { return capacity_ > kInside ? text_.block : text_.inside; }
  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  const Char* begin() const noexcept { return data(); }
  const Char* end() const noexcept { return data() + size_; }
  operator View() const noexcept { return {data(), size_}; }  // NOLINT: a string is its text

  friend bool operator==(const BasicHostString& a, View b) noexcept { return View(a) == b; }
  friend bool operator==(const BasicHostString& a, const Char* b) noexcept { return View(a) == b; }
  friend bool operator==(const BasicHostString& a, const BasicHostString& b) noexcept {
    return View(a) == View(b);
  }

  void swap(BasicHostString& other) noexcept {
    std::swap(text_, other.text_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  static constexpr std::size_t kInside = 7;

  Char* Data() noexcept { return capacity_ > kInside ? text_.block : text_.inside; }

  void Reset() noexcept {
    text_ = {};
    size_ = 0;
    capacity_ = kInside;
  }

  void Free() noexcept {
    if (capacity_ > kInside) HostAllocator<Char>().deallocate(text_.block, capacity_ + 1);
  }

  union Text {
    Char inside[kInside + 1] = {};
    Char* block;
  };

  Text text_;
  std::size_t size_;
  std::size_t capacity_;
};

static_assert(sizeof(BasicHostString<char16_t>) == 32);

template <class Char>
void swap(BasicHostString<Char>& a, BasicHostString<Char>& b) noexcept {
  a.swap(b);
}

}  // namespace zrml
