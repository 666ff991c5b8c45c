// Text files, read the same way on every platform: CR LF is folded to LF, and Ctrl-Z ends the text. A byte is
// a character; in wide text it becomes the character of the same code.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "common/platform/platform.h"

namespace zrml {

/// The text at the start of `file`, read from at most `maxBytes` bytes. A read error ends the text.
std::string ReadTextBytes(const platform::File& file,
                          std::uint64_t maxBytes = std::numeric_limits<std::uint64_t>::max());

/// The same, as wide text.
std::wstring ReadText(const platform::File& file,
                      std::uint64_t maxBytes = std::numeric_limits<std::uint64_t>::max());

/// Splits text as a line buffer of a given size would: each piece ends with a line feed or is one character
/// shorter than the buffer.
template <class Char>
class BasicLineReader {
 public:
  using View = std::basic_string_view<Char>;

  BasicLineReader(View text, std::size_t bufferSize)
      : rest_(text), limit_(bufferSize - 1), hasNul_(text.find(Char{}) != View::npos) {}

  /// False, with `piece` unchanged, when no character is left. A NUL character ends the piece's text.
  bool Next(View& piece) {
    if (rest_.empty()) {
      metEnd_ = true;
      return false;
    }
    const View window = rest_.substr(0, limit_);
    const std::size_t lineFeed = window.find(Char('\n'));
    const std::size_t length = lineFeed == View::npos ? window.size() : lineFeed + 1;
    metEnd_ = lineFeed == View::npos && length < limit_;
    piece = rest_.substr(0, length);
    if (hasNul_) piece = piece.substr(0, piece.find(Char{}));
    rest_.remove_prefix(length);
    return true;
  }

  /// True once a read has reached the end of the text: after the last piece when it lacks a line feed,
  /// otherwise only after one more Next(), which fails.
  bool MetEnd() const { return metEnd_; }

 private:
  View rest_;
  std::size_t limit_;
  bool hasNul_;  // searched once: few texts have one
  bool metEnd_ = false;
};

using LineReader = BasicLineReader<wchar_t>;
using ByteLineReader = BasicLineReader<char>;

}  // namespace zrml
