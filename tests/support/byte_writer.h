// Builds the bytes of a file: little-endian appends, patches at an offset, and hex text for comparisons.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zrml {

using FileBytes = std::vector<std::byte>;

/// Fills unused places, so a reader that looks there is noticed.
inline constexpr std::uint8_t kUnusedByte = 0xEE;

class ByteWriter {
 public:
  ByteWriter& U8(std::uint8_t value);
  ByteWriter& I8(std::int8_t value) { return U8(static_cast<std::uint8_t>(value)); }
  ByteWriter& U16(std::uint16_t value);
  ByteWriter& I16(std::int16_t value) { return U16(static_cast<std::uint16_t>(value)); }
  ByteWriter& U32(std::uint32_t value);
  ByteWriter& F32(float value);

  ByteWriter& Append(std::span<const std::byte> bytes);
  ByteWriter& Text(std::string_view text);
  ByteWriter& Fill(std::size_t count, std::uint8_t value);
  ByteWriter& Zeros(std::size_t count) { return Fill(count, 0); }
  ByteWriter& Unused(std::size_t count) { return Fill(count, kUnusedByte); }

  /// Unused bytes up to `size`; nothing when there are already enough.
  ByteWriter& UnusedUpTo(std::size_t size);

  std::size_t Size() const { return bytes_.size(); }
  const FileBytes& Written() const { return bytes_; }
  FileBytes Take() { return std::move(bytes_); }

 private:
  FileBytes bytes_;
};

// Overwrite existing bytes; throw std::out_of_range otherwise.
void PatchU8(FileBytes& bytes, std::size_t offset, std::uint8_t value);
void PatchU16(FileBytes& bytes, std::size_t offset, std::uint16_t value);
void PatchU32(FileBytes& bytes, std::size_t offset, std::uint32_t value);
void PatchF32(FileBytes& bytes, std::size_t offset, float value);
void PatchBytes(FileBytes& bytes, std::size_t offset, std::span<const std::byte> values);

/// The bytes of text, unchanged.
FileBytes TextToBytes(std::string_view text);
std::string BytesToText(std::span<const std::byte> bytes);

/// "0A ff" and "0aFF" are the same; blanks and line feeds between bytes are skipped. Throws
/// std::invalid_argument.
FileBytes HexToBytes(std::string_view hex);

/// "0A FF".
std::string BytesToHex(std::span<const std::byte> bytes);

}  // namespace zrml
