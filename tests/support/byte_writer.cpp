#include "tests/support/byte_writer.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace zrml {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  throw std::invalid_argument("not a hex digit");
}

}  // namespace

ByteWriter& ByteWriter::U8(std::uint8_t value) {
  bytes_.push_back(static_cast<std::byte>(value));
  return *this;
}

ByteWriter& ByteWriter::U16(std::uint16_t value) {
  return U8(static_cast<std::uint8_t>(value & 0xFF)).U8(static_cast<std::uint8_t>(value >> 8));
}

ByteWriter& ByteWriter::U32(std::uint32_t value) {
  return U16(static_cast<std::uint16_t>(value & 0xFFFF)).U16(static_cast<std::uint16_t>(value >> 16));
}

ByteWriter& ByteWriter::F32(float value) { return U32(std::bit_cast<std::uint32_t>(value)); }

ByteWriter& ByteWriter::Append(std::span<const std::byte> bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

ByteWriter& ByteWriter::Text(std::string_view text) { return Append(std::as_bytes(std::span(text))); }

ByteWriter& ByteWriter::Fill(std::size_t count, std::uint8_t value) {
  bytes_.insert(bytes_.end(), count, static_cast<std::byte>(value));
  return *this;
}

ByteWriter& ByteWriter::UnusedUpTo(std::size_t size) {
  return size > bytes_.size() ? Unused(size - bytes_.size()) : *this;
}

void PatchBytes(FileBytes& bytes, std::size_t offset, std::span<const std::byte> values) {
  if (offset > bytes.size() || values.size() > bytes.size() - offset) {
    throw std::out_of_range("patch beyond the end");
  }
  std::copy(values.begin(), values.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

void PatchU8(FileBytes& bytes, std::size_t offset, std::uint8_t value) {
  PatchBytes(bytes, offset, ByteWriter().U8(value).Written());
}

void PatchU16(FileBytes& bytes, std::size_t offset, std::uint16_t value) {
  PatchBytes(bytes, offset, ByteWriter().U16(value).Written());
}

void PatchU32(FileBytes& bytes, std::size_t offset, std::uint32_t value) {
  PatchBytes(bytes, offset, ByteWriter().U32(value).Written());
}

void PatchF32(FileBytes& bytes, std::size_t offset, float value) {
  PatchBytes(bytes, offset, ByteWriter().F32(value).Written());
}

FileBytes TextToBytes(std::string_view text) { return ByteWriter().Text(text).Take(); }

std::string BytesToText(std::span<const std::byte> bytes) {
  std::string text;
  for (const std::byte byte : bytes) text.push_back(std::to_integer<char>(byte));
  return text;
}

FileBytes HexToBytes(std::string_view hex) {
  std::string digits(hex);
  std::erase_if(digits, [](char c) { return c == ' ' || c == '\n'; });
  if (digits.size() % 2 != 0) throw std::invalid_argument("half a byte");
  ByteWriter writer;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    writer.U8(static_cast<std::uint8_t>(HexDigit(digits[i]) * 16 + HexDigit(digits[i + 1])));
  }
  return writer.Take();
}

std::string BytesToHex(std::span<const std::byte> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string hex;
  for (const std::byte byte : bytes) {
    if (!hex.empty()) hex += ' ';
    hex += kDigits[std::to_integer<unsigned>(byte) >> 4];
    hex += kDigits[std::to_integer<unsigned>(byte) & 0xF];
  }
  return hex;
}

}  // namespace zrml
