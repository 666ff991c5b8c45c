#include "openlynx/report_stream.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>

namespace zrml::openlynx {
namespace {

using namespace report_format;

constexpr std::size_t kBlock = 1 << 17;
constexpr char kCtrlZ = 0x1a;

bool IsMark(char c) { return c == kBracket || c == kOpen || c == kClose; }

// Whether eight bytes may hold a mark: the three share five bits, with few other characters and none used in
// data lines.
bool MayHoldMark(const char* bytes) {
  constexpr std::uint64_t kEach = 0x0101010101010101;
  constexpr std::uint64_t kSharedBits = 0xD9;
  constexpr std::uint64_t kTopBits = 0x80 * kEach;
  static_assert((kBracket & kSharedBits) == (kOpen & kSharedBits) &&
                (kOpen & kSharedBits) == (kClose & kSharedBits));
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof(word));
  const std::uint64_t difference = (word & (kSharedBits * kEach)) ^ ((kBracket & kSharedBits) * kEach);
  return ((difference - kEach) & ~difference & kTopBits) != 0;  // a byte of it is zero
}

std::size_t FindMark(std::string_view text) {
  constexpr std::size_t kStride = sizeof(std::uint64_t);
  std::size_t at = 0;
  while (at < text.size()) {
    if (text.size() - at >= kStride && !MayHoldMark(text.data() + at)) {
      at += kStride;
    } else if (IsMark(text[at])) {
      return at;
    } else {
      ++at;
    }
  }
  return std::string_view::npos;
}

}  // namespace

ReportStream ReportStream::Open(const platform::SystemPath& path, Mode mode) {
  ReportStream stream;
  stream.file_ = platform::File::OpenSystemPath(path);
  stream.mode_ = mode;
  return stream;
}

void ReportStream::Seek(std::uint64_t position) {
  if (position >= base_ && position - base_ <= size_) {
    at_ = static_cast<std::size_t>(position - base_);
    return;
  }
  size_ = at_ = 0;
  base_ = nextRead_ = position;
}

// Drops the part already returned and reads on after the rest. False when there is nothing more.
bool ReportStream::Fill() {
  buffer_.resize(kBlock);
  if (at_ != 0) std::copy(buffer_.data() + at_, buffer_.data() + size_, buffer_.data());
  base_ += at_;
  size_ -= at_;
  at_ = 0;
  const std::size_t kept = size_;
  do {
    ReadBlock();
  } while (size_ == kept && holdsBackCr_);
  if (size_ == kept && !metCtrlZ_ && (nextRead_ < furthest_ || nextRead_ < file_.Size())) isRefused_ = true;
  return size_ > kept;
}

void ReportStream::ReadBlock() {
  if (metCtrlZ_) return;
  const std::size_t from = size_;
  if (holdsBackCr_) buffer_[size_++] = '\r';
  holdsBackCr_ = false;
  const std::size_t count =
      file_.ReadAt(nextRead_, std::as_writable_bytes(std::span(buffer_).subspan(size_)));
  nextRead_ += count;
  if (count > 0) furthest_ = std::max(furthest_, nextRead_);
  size_ += count;
  if (mode_ == Mode::kText && count > 0) FoldText(from);
}

void ReportStream::FoldText(std::size_t from) {
  std::string_view text(buffer_.data() + from, size_ - from);
  const std::size_t ctrlZ = text.find(kCtrlZ);
  metCtrlZ_ = ctrlZ != std::string_view::npos;
  holdsBackCr_ = !metCtrlZ_ && text.back() == '\r';
  text = text.substr(0, metCtrlZ_ ? ctrlZ : text.size() - (holdsBackCr_ ? 1 : 0));
  char* out = buffer_.data() + from;
  while (!text.empty()) {
    const std::size_t cr = std::min(text.find('\r'), text.size());
    out = std::copy_n(text.data(), cr, out);
    text.remove_prefix(cr);
    if (text.empty()) break;
    text.remove_prefix(1);
    if (!text.starts_with('\n')) *out++ = '\r';
  }
  size_ = static_cast<std::size_t>(out - buffer_.data());
}

// For IsAtEnd a piece that is as long as can be needs a byte more.
bool ReportStream::Next(std::string_view& piece) {
  const std::size_t enough = IsCareful() ? kPieceSize + 1 : kPieceSize;
  while (true) {
    const std::string_view window = Buffered().substr(0, kPieceSize);
    const std::size_t lineFeed = window.find('\n');
    const bool isWhole = lineFeed != std::string_view::npos || Buffered().size() >= enough;
    if (!isWhole && Fill()) continue;
    piece = lineFeed != std::string_view::npos ? window.substr(0, lineFeed + 1)
                                               : Buffered().substr(0, kPieceSize);
    at_ += piece.size();
    return !piece.empty();
  }
}

// Moves on to the next piece that begins with a match of `search`, `length` bytes long. Candidates first,
// lines only around them: a candidate begins a piece when it is a multiple of the piece size away from
// the beginning of its line.
template <class Search>
bool ReportStream::FindPiece(std::size_t length, Search search) {
  std::uint64_t lineStart = Position();
  while (true) {
    const std::string_view rest = Buffered();
    const std::size_t found = search(rest);
    const bool isFound = found != std::string_view::npos;
    // A possible start of a candidate stays for the next block.
    const std::size_t passed = isFound ? found : rest.size() - std::min(rest.size(), length - 1);
    const std::size_t lineFeed = rest.substr(0, passed).rfind('\n');
    if (lineFeed != std::string_view::npos) lineStart = Position() + lineFeed + 1;
    at_ += passed;
    if (isFound && (Position() - lineStart) % kPieceSize == 0) return true;
    if (isFound) {
      ++at_;
    } else if (!Fill()) {
      at_ = size_;
      return false;
    }
  }
}

bool ReportStream::Find(std::string_view start) {
  return FindPiece(start.size(), [&](std::string_view rest) { return rest.find(start); });
}

bool ReportStream::NextMarked(std::string_view& piece) { return FindPiece(1, FindMark) && Next(piece); }

std::uint64_t ReportStream::Digest(std::uint64_t from, std::uint64_t end) {
  constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;
  Seek(from);
  Forget();
  std::uint64_t digest = 0;
  while (Position() < end && Fill()) {
    const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(size_, end - Position()));
    digest = (digest ^ std::hash<std::string_view>()(Buffered().substr(0, length))) * kOdd;
    at_ += length;
  }
  return digest;
}

}  // namespace zrml::openlynx
