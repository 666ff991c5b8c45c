// Pieces made by several threads; runs under ThreadSanitizer, too.
#include "convert/ordered_pieces.h"

#include <atomic>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zrml::convert::test {
namespace {

std::vector<MakePiece> Workers(std::size_t count, const MakePiece& make) { return {count, make}; }

TEST(OrderedPiecesTest, ComeInOrderWhateverTheWorkers) {
  constexpr std::size_t kPieces = 1000;
  for (const std::size_t workers : {1, 2, 7}) {
    OrderedPieces pieces(kPieces, Workers(workers, [](std::size_t index, std::string& piece) {
                           piece = std::to_string(index);
                         }));
    for (std::size_t i = 0; i < kPieces; ++i) ASSERT_EQ(pieces.Take(), std::to_string(i));
  }
}

// Takes `count` pieces of `size` bytes with two workers and reports whether any was begun while `most` others
// were being made or waiting. Nothing is taken after the first until `fill` are begun.
bool ComesTooEarly(std::size_t count, std::size_t size, std::size_t fill, std::size_t most) {
  std::atomic<std::size_t> takes = 1;
  std::atomic<std::size_t> begun = 0;
  std::atomic<bool> isTooEarly = false;
  OrderedPieces pieces(count, Workers(2, [&](std::size_t index, std::string& piece) {
                         ++begun;
                         if (index >= takes - 1 + most) isTooEarly = true;
                         piece.assign(size, 'x');
                       }));
  for (; takes <= count; ++takes) {
    pieces.Take();
    while (takes == 1 && begun < fill) sched_yield();
  }
  EXPECT_EQ(begun, count);
  return isTooEarly;
}

TEST(OrderedPiecesTest, ShortOnesWaitUpToTheirNumber) {
  constexpr std::size_t kMost = 2 * OrderedPieces::kPiecesAhead;
  EXPECT_FALSE(ComesTooEarly(2000, 1, kMost, kMost));
}

// When all bytes are used no further piece is begun, but the other worker may already be working on one.
TEST(OrderedPiecesTest, LongOnesWaitUpToTheirBytes) {
  constexpr std::size_t kSize = 1u << 20;
  constexpr std::size_t kFill = 2 * OrderedPieces::kBytesAhead / kSize;
  EXPECT_FALSE(ComesTooEarly(200, kSize, kFill, kFill + 1));
}

TEST(OrderedPiecesTest, LongerOnesWaitTwoForEachWorker) {
  EXPECT_FALSE(ComesTooEarly(12, 2 * OrderedPieces::kBytesAhead, 4, 4));
}

TEST(OrderedPiecesTest, ErrorComesWhereItsPieceWouldHave) {
  for (const std::size_t workers : {1, 3}) {
    OrderedPieces pieces(100, Workers(workers, [](std::size_t index, std::string& piece) {
                           if (index >= 5) throw std::runtime_error(std::to_string(index));
                           piece = "fine";
                         }));
    for (int i = 0; i < 5; ++i) EXPECT_EQ(pieces.Take(), "fine");
    try {
      pieces.Take();
      ADD_FAILURE() << "no error";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "5");
    }
  }
}

TEST(OrderedPiecesTest, CanBeLeftEarly) {
  for (const std::size_t taken : {0, 1, 20}) {
    OrderedPieces pieces(1000, Workers(3, [](std::size_t, std::string&) {}));
    for (std::size_t i = 0; i < taken; ++i) pieces.Take();
  }
}

}  // namespace
}  // namespace zrml::convert::test
