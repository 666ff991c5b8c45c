#include "tools/zrml/convert/ordered_pieces.h"

namespace zrml {
namespace {

// Pieces in the making or waiting, a worker: enough to go on while one of them takes long.
constexpr std::size_t kSlotsPerWorker = 8;

}  // namespace

OrderedPieces::OrderedPieces(std::size_t count, std::vector<MakePiece> workers)
    : count_(count), workers_(std::move(workers)), slots_(workers_.size() * kSlotsPerWorker) {
  if (workers_.size() == 1) return;
  try {
    for (const MakePiece& make : workers_) {
      threads_.push_back(std::make_unique<Thread>([this, &make] { Work(make); }));
    }
  } catch (...) {
    {
      const Lock lock(mutex_);
      isStopped_ = true;
      changed_.NotifyAll();
    }
    threads_.clear();
    throw;
  }
}

OrderedPieces::~OrderedPieces() {
  {
    const Lock lock(mutex_);
    isStopped_ = true;
    changed_.NotifyAll();
  }
  threads_.clear();
}

void OrderedPieces::Work(const MakePiece& make) {
  for (;;) {
    std::size_t index = 0;
    {
      Lock lock(mutex_);
      changed_.Wait(lock,
                    [&] { return isStopped_ || started_ == count_ || started_ < released_ + slots_.size(); });
      if (isStopped_ || started_ == count_) return;
      index = started_++;
    }
    Slot& slot = SlotOf(index);
    try {
      make(index, slot.piece);
    } catch (...) {
      slot.error = std::current_exception();
    }
    const Lock lock(mutex_);
    slot.isReady = true;
    changed_.NotifyAll();
  }
}

const std::string& OrderedPieces::TakeReady() {
  Lock lock(mutex_);
  if (taken_ > 0) {
    SlotOf(taken_ - 1).isReady = false;
    released_ = taken_;
    changed_.NotifyAll();
  }
  Slot& slot = SlotOf(taken_);
  changed_.Wait(lock, [&] { return slot.isReady; });
  ++taken_;
  if (slot.error) std::rethrow_exception(slot.error);
  return slot.piece;
}

const std::string& OrderedPieces::Take() {
  if (workers_.size() > 1) return TakeReady();
  workers_.front()(taken_++, slots_.front().piece);
  return slots_.front().piece;
}

}  // namespace zrml
