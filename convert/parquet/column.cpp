#include "convert/parquet/column.h"

#include <bit>
#include <cmath>
#include <cstring>

namespace zrml::convert::parquet {
namespace {

static_assert(std::endian::native == std::endian::little, "numbers go out as they stand in memory");

constexpr std::size_t kLength = 4;  // bytes in front of a text

template <class Number>
std::string BytesOf(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

template <class Number>
double Loaded(std::string_view plain) {
  Number number;
  std::memcpy(&number, plain.data(), sizeof number);
  return static_cast<double>(number);
}

double NumberOf(Type type, std::string_view plain) {
  switch (type) {
    case Type::kInt32:
      return Loaded<std::int32_t>(plain);
    case Type::kInt64:
      return Loaded<std::int64_t>(plain);
    case Type::kFloat:
      return Loaded<float>(plain);
    case Type::kDouble:
    case Type::kText:
      break;
  }
  return Loaded<double>(plain);
}

// Texts byte by byte.
bool IsLess(Type type, std::string_view a, std::string_view b) {
  if (type == Type::kText) return a.substr(kLength) < b.substr(kLength);
  return NumberOf(type, a) < NumberOf(type, b);
}

bool IsReal(Type type) { return type == Type::kFloat || type == Type::kDouble; }

std::string ForStatistics(Type type, const std::string& plain, double zero) {
  if (type == Type::kText) return plain.substr(kLength);
  return IsReal(type) && NumberOf(type, plain) == 0 ? PlainNumber(type, zero) : plain;
}

}  // namespace

std::string PlainNumber(Type type, double value) {
  switch (type) {
    case Type::kInt32:
      return BytesOf(static_cast<std::int32_t>(value));
    case Type::kInt64:
      return BytesOf(static_cast<std::int64_t>(value));
    case Type::kFloat:
      return BytesOf(static_cast<float>(value));
    case Type::kDouble:
    case Type::kText:
      break;
  }
  return BytesOf(value);
}

std::string PlainText(std::string_view text) {
  return BytesOf(static_cast<std::uint32_t>(text.size())).append(text);
}

void Bounds::Widen(Type type, std::string_view plain) {
  if (plain.empty() || (type != Type::kText && std::isnan(NumberOf(type, plain)))) return;
  if (IsEmpty() || IsLess(type, plain, low_)) low_ = plain;
  if (high_.empty() || IsLess(type, high_, plain)) high_ = plain;
}

void Bounds::Widen(Type type, const Bounds& bounds) {
  Widen(type, bounds.low_);
  Widen(type, bounds.high_);
}

std::string Bounds::Low(Type type) const { return ForStatistics(type, low_, -0.0); }
std::string Bounds::High(Type type) const { return ForStatistics(type, high_, 0.0); }

}  // namespace zrml::convert::parquet
