// The bytes of a report, handed out in the pieces that a line buffer would hold. Reads large blocks and keeps
// the last one, so that going back a little costs nothing.
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
  /// kBinary: all bytes as they are. kText: CR LF is folded to LF and Ctrl-Z ends the text; for reading from
  /// the start only, since positions then count the folded bytes.
  enum class Mode { kBinary, kText };

  ReportStream() = default;

  /// A closed stream when `path` cannot be opened.
  static ReportStream Open(const platform::SystemPath& path, Mode mode = Mode::kBinary);

  bool IsOpen() const { return file_.IsOpen(); }
  void Close() { *this = ReportStream(); }

  /// Lets go of the file without closing it.
  void Abandon() { file_.Abandon(); }

  /// Drops what has been read ahead, so that the file is looked at anew.
  void Forget() {
    base_ = nextRead_ = Position();
    size_ = at_ = 0;
  }

  /// Where the next piece begins, in bytes.
  std::uint64_t Position() const { return base_ + at_; }
  void Seek(std::uint64_t position);

  /// The next piece: up to and with a line feed, or kPieceSize bytes. A NUL ends a piece's text for whoever
  /// takes text from it; it is left in. Valid until the next call. False at the end, or on a read error.
  bool Next(std::string_view& piece);

  /// The next piece that begins with a bracket or a brace, without going through those between.
  bool NextMarked(std::string_view& piece);

  /// Moves on to the next piece that begins with `start`, without going through all pieces. False, and at the
  /// end, when there is none. `start` holds no line feed.
  bool Find(std::string_view start);

  /// Whether the system has refused to read on, short of the file's end.
  bool IsRefused() const { return isRefused_; }
  /// The same, and forgets it.
  bool TakeRefusal() { return std::exchange(isRefused_, false); }
  /// As File::Refusal() has it of the last one.
  std::string Refusal() const { return file_.Refusal(); }

  /// A number of the bytes [from, end) of the file, as they are now: other bytes have another one.
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
  std::size_t at_ = 0;          // of them, handed out
  std::uint64_t base_ = 0;      // position of the buffer's first byte
  std::uint64_t nextRead_ = 0;  // offset in the file of what is read next
  bool holdsBackCr_ = false;    // kText: a CR has been read, but not yet the byte behind it
  bool metCtrlZ_ = false;       // kText
  bool isRefused_ = false;
};

}  // namespace zrml::openlynx
