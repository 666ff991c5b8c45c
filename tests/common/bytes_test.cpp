#include "common/bytes.h"

#include <array>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace zrml {
namespace {

std::vector<std::byte> MakeBytes(std::initializer_list<int> values) {
  std::vector<std::byte> bytes;
  for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
  return bytes;
}

/// Every read of the cursor with its value on kPattern. All these values are exact as doubles.
struct ReadCase {
  const char* name;
  std::size_t width;
  double (*read)(ByteCursor&);
  double value;
};

const std::vector<std::byte> kPattern = MakeBytes({0x81, 0x92, 0xA3, 0xC4});

const ReadCase kReads[] = {
    {"U8", 1, [](ByteCursor& c) { return static_cast<double>(c.U8()); }, 0x81},
    {"I8", 1, [](ByteCursor& c) { return static_cast<double>(c.I8()); }, 0x81 - 0x100},
    {"U16", 2, [](ByteCursor& c) { return static_cast<double>(c.U16()); }, 0x9281},
    {"I16", 2, [](ByteCursor& c) { return static_cast<double>(c.I16()); }, 0x9281 - 0x10000},
    {"U32", 4, [](ByteCursor& c) { return static_cast<double>(c.U32()); }, 0xC4A39281},
    {"I32", 4, [](ByteCursor& c) { return static_cast<double>(c.I32()); }, 0xC4A39281 - 4294967296.0},
    // 0xC4A39281: sign 1, exponent 0x89 - 127 = 10, mantissa 1.0100011 10010010 10000001 in binary = 0xA39281
    // / 2^23.
    {"F32", 4, [](ByteCursor& c) { return static_cast<double>(c.F32()); }, -0xA39281 / 8192.0},
};

TEST(ByteCursor, EveryReadAtEveryTruncationAndOffset) {
  for (const ReadCase& read : kReads) {
    for (std::size_t offset = 0; offset <= 3; ++offset) {
      for (std::size_t left = 0; left <= read.width + 1; ++left) {
        SCOPED_TRACE(testing::Message() << read.name << " of " << left << " bytes at " << offset);
        std::vector<std::byte> bytes(offset);
        bytes.insert(bytes.end(), kPattern.begin(), kPattern.end());
        bytes.resize(offset + left);  // beyond the pattern: zero
        const bool fits = left >= read.width;

        ByteCursor cursor(bytes, offset);
        EXPECT_EQ(read.read(cursor), fits ? read.value : 0.0);
        EXPECT_EQ(cursor.Ok(), fits);
        EXPECT_EQ(cursor.Remaining(), fits ? left - read.width : 0);
      }
    }
  }
}

TEST(ByteCursor, AFailedReadMovesToTheEndAndIsRemembered) {
  const auto bytes = MakeBytes({1, 2, 3});
  ByteCursor cursor(bytes);
  EXPECT_EQ(cursor.U32(), 0U);
  EXPECT_EQ(cursor.Remaining(), 0U);
  EXPECT_EQ(cursor.U8(), 0U);
  cursor.Skip(0);
  EXPECT_FALSE(cursor.Ok());
}

TEST(ByteCursor, ReadsFollowEachOther) {
  const auto bytes = MakeBytes({0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07});
  ByteCursor cursor(bytes);
  EXPECT_EQ(cursor.U8(), 0x01);
  EXPECT_EQ(cursor.U16(), 0x0302);
  EXPECT_EQ(cursor.U32(), 0x07060504U);
  EXPECT_EQ(cursor.Remaining(), 0U);
  EXPECT_TRUE(cursor.Ok());
}

TEST(ByteCursor, SkipsWithinTheBytesAndFailsBeyondThem) {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
  const std::array<std::byte, 8> bytes{};
  const struct {
    std::uint64_t start;
    std::uint64_t count;
    bool ok;
    std::size_t remaining;
  } cases[] = {
      {0, 0, true, 8},
      {0, 7, true, 1},
      {0, 8, true, 0},
      {0, 9, false, 0},
      {3, 5, true, 0},
      {3, 6, false, 0},
      {8, 0, true, 0},
      {8, 1, false, 0},
      {9, 0, false, 0},
      {0, kLargest, false, 0},
      {1, kLargest, false, 0},  // 1 + (2^64 - 1) would wrap to 0
      {8, kLargest - 7, false, 0},
      {kLargest, 0, false, 0},
      {kLargest, 1, false, 0},
      {0, 1ULL << 32, false, 0},
      {1ULL << 63, 0, false, 0},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << expected.start << " + " << expected.count);
    ByteCursor cursor(bytes, expected.start);
    cursor.Skip(expected.count);
    EXPECT_EQ(cursor.Ok(), expected.ok);
    EXPECT_EQ(cursor.Remaining(), expected.remaining);
  }
}

TEST(ByteCursor, WithoutBytesEveryReadIsZero) {
  ByteCursor cursor{Bytes()};
  EXPECT_TRUE(cursor.Ok());
  EXPECT_EQ(cursor.Remaining(), 0U);
  EXPECT_EQ(cursor.F32(), 0.0F);
  EXPECT_FALSE(cursor.Ok());
}

TEST(Load, IntegersAreLittleEndian) {
  EXPECT_EQ(LoadU16(kPattern.data()), 0x9281);
  EXPECT_EQ(LoadI16(kPattern.data()), 0x9281 - 0x10000);
  EXPECT_EQ(LoadU32(kPattern.data()), 0xC4A39281U);
  EXPECT_EQ(LoadF32(MakeBytes({0x00, 0x00, 0xC0, 0x3F}).data()), 1.5F);
}

}  // namespace
}  // namespace zrml
