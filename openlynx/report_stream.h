// The bytes of a report, in the pieces that a line buffer would hold. Reads large blocks and keeps the last
// one, so going back a little is free.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/platform/platform.h"
#include "openlynx/report_format.h"

namespace zrml::openlynx {

class ReportStream {
 public:
  /// kBinary: all bytes unchanged. kText: CR LF is folded to LF and Ctrl-Z ends the text; only for reading
  /// from the start, since positions then count the folded bytes. kCareful: the bytes of kBinary, for tools,
  /// which leave out what may not be what was written. Hosts get what the grammar makes of it.
  enum class Mode { kBinary, kText, kCareful };

  ReportStream() = default;

  /// A closed stream when `path` cannot be opened.
  static ReportStream Open(const platform::SystemPath& path, Mode mode = Mode::kBinary);

  bool IsOpen() const { return file_.IsOpen(); }
  bool IsCareful() const { return mode_ == Mode::kCareful; }
  void Close() { *this = ReportStream(); }

  /// Releases the file without closing it.
  void Abandon() { file_.Abandon(); }

  /// Drops what has been read ahead, so the file is read again.
  void Forget() {
    base_ = nextRead_ = Position();
    size_ = at_ = 0;
  }

  /// Where the next piece begins, in bytes.
  std::uint64_t Position() const { return base_ + at_; }
  void Seek(std::uint64_t position);

  /// The next piece: up to and including a line feed, or kPieceSize bytes. A NUL stays in the piece; code
  /// that takes text from it stops there. Valid until the next call. False at the end or on a read error.
  bool Next(std::string_view& piece);

  /// For careful readers, whether the file ends with the last piece.
  bool IsAtEnd() const { return at_ == size_; }

  /// The next piece that begins with a bracket or a brace; skips those between quickly.
  bool NextMarked(std::string_view& piece);

  /// Moves to the next piece that begins with `start`, skipping the others quickly. False, and at the end,
  /// when there is none. `start` has no line feed.
  bool Find(std::string_view start);

  /// Whether the system has refused to read on, short of the file's end or of an end that it had before.
  bool IsRefused() const { return isRefused_; }
  /// The same, and forgets the refusal.
  bool TakeRefusal() { return std::exchange(isRefused_, false); }
  /// What the last refusal was, as File::Refusal() puts it.
  std::string Refusal() const { return file_.IsRefused() ? file_.Refusal() : platform::kHasShrunk; }

  /// A digest of the bytes [from, end) of the file as they are now; other bytes give another one.
  std::uint64_t Digest(std::uint64_t from, std::uint64_t end);

 private:
  std::string_view Buffered() const { return {buffer_.data() + at_, size_ - at_}; }
  template <class Search>
  bool FindPiece(std::size_t length, Search search);
  bool Fill();
  void ReadBlock();
  void FoldText(std::size_t from);

  platform::File file_;
  Mode mode_ = Mode::kBinary;
  std::vector<char> buffer_;
  std::size_t size_ = 0;        // bytes in the buffer
  std::size_t at_ = 0;          // bytes already handed out
  std::uint64_t base_ = 0;      // position of the buffer's first byte
  std::uint64_t nextRead_ = 0;  // offset in the file of the next read
  std::uint64_t furthest_ = 0;  // the end of all that has been read
  bool holdsBackCr_ = false;    // kText: a CR has been read, but not yet the byte after it
  bool metCtrlZ_ = false;       // kText
  bool isRefused_ = false;
};

}  // namespace zrml::openlynx
