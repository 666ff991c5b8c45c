#include "tools/zrml/convert/progress_bar.h"

#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"

namespace zrml {
namespace {

constexpr std::size_t kCells = 30;
constexpr std::chrono::milliseconds kBetweenUpdates(100);

void Show(const std::string& text) {
  std::wstring ignored;
  WriteStream(Stream::kError, text, ignored);
}

}  // namespace

void ProgressBar::Update(std::size_t done, std::size_t all) {
  if (!isShown_ || all == 0) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kBetweenUpdates;
  const std::string bar = std::string(kCells * done / all, '#');
  std::string line = "[" + bar;
  line.append(kCells - bar.size(), ' ');
  line += "] " + std::to_string(100 * done / all) + "% " + VisibleUtf8(label_);
  width_ = CharacterCount(line);
  Show("\r" + line);
}

void ProgressBar::Clear() {
  if (width_ > 0) Show("\r" + std::string(width_, ' ').append("\r"));
  width_ = 0;
}

}  // namespace zrml
