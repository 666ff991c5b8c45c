// Pieces of text made by several workers at once and taken in order. The taker is a worker too while the next
// piece is missing. The pieces, and the first error, do not depend on the number of workers.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "convert/threads.h"

namespace zrml::convert {

/// Makes piece `index` for a worker. `piece` holds an earlier one. Called by one thread at a time.
using MakePiece = std::function<void(std::size_t index, std::string& piece)>;

class OrderedPieces {
 public:
  /// Pieces wait for the taker up to this many bytes per worker, or two pieces per worker if they are longer,
  /// and never more than this many pieces.
  static constexpr std::size_t kBytesAhead = 8u << 20;
  static constexpr std::size_t kPiecesAhead = 256;

  /// Pieces 0 to `count` - 1. The first worker is the taker's; each of the others has its own thread and
  /// begins at once.
  OrderedPieces(std::size_t count, std::vector<MakePiece> workers);
  OrderedPieces(const OrderedPieces&) = delete;
  OrderedPieces& operator=(const OrderedPieces&) = delete;
  /// Waits until the workers have finished their current pieces.
  ~OrderedPieces();

  /// The next piece; valid until the next call. Throws what its worker has thrown; then nothing more may be
  /// taken.
  const std::string& Take();

 private:
  struct Slot {
    std::string piece;
    std::exception_ptr error;
    bool isReady = false;
  };

  void Work(const MakePiece& make);
  /// Makes the next piece that nobody has begun, with the mutex released meanwhile.
  void MakeNext(Lock& lock, const MakePiece& make);
  void Release(std::size_t index);
  void Stop();
  /// Whether a piece may be begun; with `part` 2, whether half of the room is free.
  bool HasRoom(std::size_t part = 1) const;
  Slot& SlotOf(std::size_t index) { return slots_[index % slots_.size()]; }

  std::size_t count_;
  std::vector<MakePiece> workers_;
  std::vector<Slot> slots_;
  Mutex mutex_;      // guards what follows, and which slots are ready
  Condition ready_;  // the taker waits for its piece
  Condition room_;   // workers wait for free slots
  std::size_t started_ = 0;
  std::size_t released_ = 0;  // pieces whose slots are free again
  std::size_t taken_ = 0;
  std::size_t held_ = 0;  // bytes of finished pieces that are not released yet
  std::size_t idle_ = 0;  // workers waiting for room
  bool isTakerWaiting_ = false;
  bool isStopped_ = false;
  std::vector<std::unique_ptr<Thread>> threads_;  // last: they use the others
};

}  // namespace zrml::convert
