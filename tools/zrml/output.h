// The program's standard output, buffered: text goes out in large pieces, and nothing before the first piece
// is full or Finish is called.
#pragma once

#include <string>
#include <string_view>

namespace zrml::tool {

/// Thrown when nobody reads the output any more; the rest need not be made.
struct ReaderGone {};

class Output {
 public:
  Output() { buffer_.reserve(kPiece + kPiece / 4); }

  /// Both throw ReaderGone, or a Failure when the output cannot be written. UTF-8, whole characters.
  void Text(std::string_view utf8) {
    buffer_ += utf8;
    if (buffer_.size() >= kPiece) Finish();
  }
  void Number(double value);
  void ShortNumber(double value);

  void Finish();

 private:
  static constexpr std::size_t kPiece = 1u << 16;
  std::string buffer_;
};

/// One line on standard error, with the program's name in front.
void PrintError(const std::string& message);

}  // namespace zrml::tool
