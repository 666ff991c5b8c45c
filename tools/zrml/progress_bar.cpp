#include "tools/zrml/progress_bar.h"

#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"

namespace zrml::tool {
namespace {

constexpr std::size_t kCells = 30;
constexpr std::chrono::milliseconds kBetweenUpdates(100);

bool IsTail(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }  // of a character in UTF-8

// No fewer than the terminal takes for the character that begins with `c`: the wide ones are from U+1100 on.
std::size_t ColumnsOf(char c) {
  if (IsTail(c)) return 0;
  return static_cast<unsigned char>(c) >= 0xE1 ? 2 : 1;
}

std::size_t ColumnsOf(std::string_view text) {
  std::size_t columns = 0;
  for (const char c : text) columns += ColumnsOf(c);
  return columns;
}

// The end of `text`, of whole characters.
std::string_view EndOf(std::string_view text, std::size_t columns) {
  std::size_t at = text.size();
  for (std::size_t i = text.size(), used = 0; i-- > 0;) {
    used += ColumnsOf(text[i]);
    if (used > columns) break;
    if (!IsTail(text[i])) at = i;
  }
  return text.substr(at);
}

void Show(const std::string& text) {
  std::string ignored;
  WriteStream(Stream::kError, text, ignored);
}

}  // namespace

std::string ProgressLine(std::size_t done, std::size_t all, const std::string& label, std::size_t columns) {
  constexpr std::string_view kCut = "...";
  const std::string bar = std::string(kCells * done / all, '#');
  const std::string percent = std::to_string(100 * done / all) + "%";
  std::string line = "[" + bar + std::string(kCells - bar.size(), ' ') + "] " + percent;
  if (line.size() >= columns) return percent.size() < columns ? percent : std::string();
  const std::string text = VisibleText(label);
  const std::size_t room = columns - 1 - line.size();
  if (ColumnsOf(text) + 1 <= room) return line + " " + text;
  if (room > kCut.size() + 1) line.append(" ").append(kCut).append(EndOf(text, room - kCut.size() - 1));
  return line;
}

void ProgressBar::Update(std::size_t done, std::size_t all) {
  if (!isShown_ || all == 0) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kBetweenUpdates;
  const std::string line = ProgressLine(done, all, label_, ErrorTerminalWidth());
  // Blanks cover the rest of a longer line before.
  const std::size_t columns = ColumnsOf(line);
  const std::size_t blanks = width_ > columns ? width_ - columns : 0;
  width_ = columns;
  Show("\r" + line + std::string(blanks, ' '));
}

void ProgressBar::Clear() {
  if (width_ > 0) Show("\r" + std::string(width_, ' ').append("\r"));
  width_ = 0;
}

}  // namespace zrml::tool
