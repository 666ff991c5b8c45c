// How each kind of argument is passed to and from a host built by another compiler: the content of the
// register, and what the interface's operations see. Containers are passed by address; their contents are not
// copied.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "common/host_types.h"

namespace zrml::hostabi {

/// Numbers: unchanged. There is no general case: every argument type has its own rule below.
template <class T>
class Inbound;

template <class T>
class NumberInbound {
 public:
  using Wire = T;
  explicit NumberInbound(Wire wire) : value_(wire) {}
  T Value() const { return value_; }
  void Commit() const {}

 private:
  T value_;
};

template <>
class Inbound<int> : public NumberInbound<int> {
  using NumberInbound::NumberInbound;
};

template <>
class Inbound<double> : public NumberInbound<double> {
  using NumberInbound::NumberInbound;
};

/// The upper bits of the register are garbage; any bit set in the low byte means true.
template <>
class Inbound<bool> : public NumberInbound<unsigned char> {
 public:
  using NumberInbound::NumberInbound;
  bool Value() const { return NumberInbound::Value() != 0; }
};

/// Outputs and containers: already in the host's layout, used in place.
template <class T>
class Inbound<T&> {
 public:
  using Wire = T*;
  explicit Inbound(Wire wire) : target_(wire) {}
  T& Value() const { return *target_; }
  void Commit() const {}

 private:
  T* target_;
};

/// Texts are borrowed from the host and read once.
template <>
class Inbound<const std::wstring&> {
 public:
  using Wire = const HostString*;
  explicit Inbound(Wire wire) : text_(std::wstring_view(*wire)) {}
  const std::wstring& Value() const { return text_; }
  void Commit() const {}

 private:
  std::wstring text_;
};

/// Texts that an operation may set are handed back when it succeeds or fails, but not when it throws.
template <>
class Inbound<std::wstring&> {
 public:
  using Wire = HostString*;
  explicit Inbound(Wire wire) : target_(wire), text_(std::wstring_view(*wire)) {}
  std::wstring& Value() { return text_; }
  void Commit() const { target_->Assign(text_); }

 private:
  HostString* target_;
  std::wstring text_;
};

template <>
class Inbound<std::vector<std::wstring>&> {
 public:
  using Wire = HostVector<HostString>*;
  explicit Inbound(Wire wire) : target_(wire) {
    for (const HostString& text : *wire) texts_.emplace_back(std::wstring_view(text));
  }
  std::vector<std::wstring>& Value() { return texts_; }
  void Commit() const {
    HostVector<HostString> texts;
    texts.reserve(texts_.size());
    for (const std::wstring& text : texts_) texts.emplace_back(std::wstring_view(text));
    target_->swap(texts);
  }

 private:
  HostVector<HostString>* target_;
  std::vector<std::wstring> texts_;
};

template <class T>
using WireOf = typename Inbound<T>::Wire;

}  // namespace zrml::hostabi
