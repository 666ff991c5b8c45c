#include "convert/ordered_pieces.h"

namespace zrml::convert {
namespace {

// Pieces per worker being made or waiting, whatever their length: enough to go on while one is taken.
constexpr std::size_t kFewestAhead = 2;
// A slot keeps the memory of its piece up to this size for the next.
constexpr std::size_t kKeptCapacity = 1u << 16;

}  // namespace

OrderedPieces::OrderedPieces(std::size_t count, std::vector<MakePiece> workers)
    : count_(count),
      workers_(std::move(workers)),
      slots_(workers_.size() == 1 ? 1 : workers_.size() * kPiecesAhead) {
  try {
    for (std::size_t i = 1; i < workers_.size(); ++i) {
      threads_.push_back(std::make_unique<Thread>([this, i] { Work(workers_[i]); }));
    }
  } catch (...) {
    Stop();
    throw;
  }
}

OrderedPieces::~OrderedPieces() { Stop(); }

void OrderedPieces::Stop() {
  {
    const Lock lock(mutex_);
    isStopped_ = true;
    room_.NotifyAll();
  }
  threads_.clear();
}

void OrderedPieces::MakeNext(Lock& lock, const MakePiece& make) {
  const std::size_t index = started_++;
  Slot& slot = SlotOf(index);
  {
    const Unlock unlock(lock);
    try {
      make(index, slot.piece);
    } catch (...) {
      slot.error = std::current_exception();
    }
  }
  slot.isReady = true;
  held_ += slot.piece.size();
  if (isTakerWaiting_ && index == taken_) ready_.NotifyAll();
}

void OrderedPieces::Work(const MakePiece& make) {
  Lock lock(mutex_);
  while (!isStopped_ && started_ < count_) {
    if (HasRoom()) {
      MakeNext(lock, make);
      continue;
    }
    ++idle_;
    room_.Wait(lock, [&] { return isStopped_ || started_ == count_ || HasRoom(); });
    --idle_;
  }
}

bool OrderedPieces::HasRoom(std::size_t part) const {
  const std::size_t ahead = started_ - released_;
  return ahead < (slots_.size() + part - 1) / part &&
         (ahead < kFewestAhead * workers_.size() || held_ < kBytesAhead * workers_.size() / part);
}

// Workers are woken when half of the room is free, not for each piece, which would cost more than a short
// one.
void OrderedPieces::Release(std::size_t index) {
  Slot& slot = SlotOf(index);
  slot.isReady = false;
  held_ -= slot.piece.size();
  if (slots_.size() > 1 && slot.piece.capacity() > kKeptCapacity) slot.piece = std::string();
  released_ = index + 1;
  if (idle_ > 0 && HasRoom(2)) room_.NotifyAll();
}

const std::string& OrderedPieces::Take() {
  Lock lock(mutex_);
  if (taken_ > 0) Release(taken_ - 1);
  Slot& slot = SlotOf(taken_);
  while (!slot.isReady) {
    if (started_ < count_ && HasRoom()) {
      MakeNext(lock, workers_.front());
      continue;
    }
    isTakerWaiting_ = true;
    ready_.Wait(lock, [&] { return slot.isReady; });
    isTakerWaiting_ = false;
  }
  ++taken_;
  if (slot.error) std::rethrow_exception(slot.error);
  return slot.piece;
}

}  // namespace zrml::convert
