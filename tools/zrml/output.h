// Text that goes out in large pieces, to the program's standard output or elsewhere; nothing before the first
// piece is full or Finish is called.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zrml::tool {

/// Thrown when nobody reads the output any more; the rest need not be made.
struct ReaderGone {};

class Output {
 public:
  using Write = std::function<void(std::string_view piece)>;

  /// To standard output.
  Output() : Output(WriteStandardOutput) {}
  explicit Output(Write write) : write_(std::move(write)) { buffer_.reserve(kPiece + kPiece / 4); }

  /// Both throw what writing throws: ReaderGone, or a Failure when standard output cannot be written. UTF-8,
  /// whole characters.
  void Text(std::string_view utf8) {
    buffer_ += utf8;
    if (buffer_.size() >= kPiece) Finish();
  }
  void Number(double value);
  void ShortNumber(double value);

  void Finish();

 private:
  static constexpr std::size_t kPiece = 1u << 16;
  static void WriteStandardOutput(std::string_view piece);

  Write write_;
  std::string buffer_;
};

/// One line on standard error, with the program's name in front.
void PrintError(const std::string& message);

/// While it lives, the messages that this thread gives to PrintError are kept in `messages` instead.
class KeptErrors {
 public:
  explicit KeptErrors(std::vector<std::string>& messages);
  KeptErrors(const KeptErrors&) = delete;
  KeptErrors& operator=(const KeptErrors&) = delete;
  ~KeptErrors();
};

}  // namespace zrml::tool
