// Pieces of text made by several workers at once and taken in order, few ahead of the taker. Whatever the
// number of workers, the pieces are the same, and so is the first error.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/zrml/convert/threads.h"

namespace zrml {

/// A worker's way to make piece `index`. `piece` holds an earlier one. Called by one thread at a time.
using MakePiece = std::function<void(std::size_t index, std::string& piece)>;

class OrderedPieces {
 public:
  /// Pieces 0 to `count` - 1. A single worker works in Take, without a thread of its own.
  OrderedPieces(std::size_t count, std::vector<MakePiece> workers);
  OrderedPieces(const OrderedPieces&) = delete;
  OrderedPieces& operator=(const OrderedPieces&) = delete;
  /// Waits until the workers have ended the pieces that they are at.
  ~OrderedPieces();

  /// The next piece; valid until the next call. Throws what its worker has thrown.
  const std::string& Take();

 private:
  struct Slot {
    std::string piece;
    std::exception_ptr error;
    bool isReady = false;
  };

  void Work(const MakePiece& make);
  Slot& SlotOf(std::size_t index) { return slots_[index % slots_.size()]; }
  const std::string& TakeReady();

  std::size_t count_;
  std::vector<MakePiece> workers_;
  std::vector<Slot> slots_;
  Mutex mutex_;  // guards what follows, and which slots are ready
  Condition changed_;
  std::size_t started_ = 0;
  std::size_t released_ = 0;  // pieces whose slots are free again
  std::size_t taken_ = 0;
  bool isStopped_ = false;
  std::vector<std::unique_ptr<Thread>> threads_;  // last: they use the others
};

}  // namespace zrml
