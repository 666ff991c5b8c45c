// Text files, read alike on every platform: each byte becomes the character of the same code, CR LF is folded
// to LF, and Ctrl-Z ends the text.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "common/platform/platform.h"

namespace zrml {

/// The text of `file` from its start, from at most `maxBytes` bytes. A read error ends the text.
std::wstring ReadText(const platform::File& file,
                      std::uint64_t maxBytes = std::numeric_limits<std::uint64_t>::max());

/// Hands out text in the pieces that a line buffer of a given size would hold: up to and with a line feed, or
/// one character less than the buffer.
class LineReader {
 public:
  LineReader(std::wstring_view text, std::size_t bufferSize) : rest_(text), limit_(bufferSize - 1) {}

  /// False, with `piece` unchanged, when no character is left. A NUL character ends the piece's text.
  bool Next(std::wstring_view& piece);

  /// True once a read has met the end of the text: after the last piece when it lacks a line feed, otherwise
  /// only after one more, failed, Next().
  bool MetEnd() const { return metEnd_; }

 private:
  std::wstring_view rest_;
  std::size_t limit_;
  bool metEnd_ = false;
};

}  // namespace zrml
