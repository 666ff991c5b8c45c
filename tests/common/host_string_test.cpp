// Strings in the host's layout, with 16-bit characters on every platform, so sanitizers test what Windows
// runs.
#include "common/host_string.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace zrml {
namespace {

using String = BasicHostString<char16_t>;
using Text = std::u16string;

// A string's 32 bytes at the contract's offsets.
struct Parts {
  std::array<std::byte, 16> text;
  std::uint64_t size;
  std::uint64_t capacity;
};
static_assert(sizeof(Parts) == sizeof(String));

Parts PartsOf(const String& string) {
  Parts parts{};
  std::memcpy(&parts, &string, sizeof(parts));
  return parts;
}

bool IsInside(const String& string) {
  return static_cast<const void*>(string.data()) == static_cast<const void*>(&string);
}

// Around seven characters inside and around 4,096 bytes of a block: 2,048 characters with the terminator.
constexpr std::array<std::size_t, 10> kLengths = {0, 1, 6, 7, 8, 15, 16, 2046, 2047, 5000};

TEST(HostString, HoldsItsTextTerminatedInTheContractsLayout) {
  for (const std::size_t length : kLengths) {
    const Text text(length, u'x');
    const String string(text);
    EXPECT_EQ(std::u16string_view(string), text);
    EXPECT_EQ(string.data()[length], u'\0');
    const Parts parts = PartsOf(string);
    EXPECT_EQ(parts.size, length);
    EXPECT_GE(parts.capacity, length);
    EXPECT_EQ(IsInside(string), parts.capacity == 7) << length;
    EXPECT_EQ(IsInside(string), length <= 7) << length;
    if (!IsInside(string)) {
      const void* block = nullptr;
      std::memcpy(&block, parts.text.data(), sizeof(block));
      EXPECT_EQ(block, string.data());
    }
  }
}

TEST(HostString, CopiesAreDeepAndMovesLeaveAnEmptyString) {
  for (const std::size_t length : kLengths) {
    String source(Text(length, u'y'));
    const String copy(source);
    EXPECT_EQ(copy, source);
    EXPECT_NE(copy.data(), source.data());
    const String moved(std::move(source));
    EXPECT_EQ(moved, copy);
    EXPECT_TRUE(source.empty());  // NOLINT: the state after a move is part of the contract
    EXPECT_EQ(PartsOf(source).capacity, 7U);
  }
}

TEST(HostString, AssignsAnyLengthOverAnyOther) {
  for (const std::size_t before : kLengths) {
    for (const std::size_t after : kLengths) {
      String string(Text(before, u'b'));
      string.Assign(Text(after, u'a'));
      EXPECT_EQ(std::u16string_view(string), Text(after, u'a')) << before << " " << after;
      EXPECT_EQ(string.data()[after], u'\0') << before << " " << after;
      String copied;
      copied = string;
      EXPECT_EQ(copied, string);
      String taken(Text(before, u'c'));
      taken = std::move(copied);
      EXPECT_EQ(taken, string);
    }
  }
}

TEST(HostString, AssigningToItselfChangesNothing) {
  String string(Text(20, u'z'));
  const String& same = string;
  string = same;
  EXPECT_EQ(std::u16string_view(string), Text(20, u'z'));
}

TEST(HostString, AShrunkStringKeepsItsBlockWithTheCapacityItWasMadeWith) {
  String string(Text(3000, u'x'));
  const auto capacity = PartsOf(string).capacity;
  string.Assign(u"short");
  EXPECT_EQ(PartsOf(string).capacity, capacity);  // the block is freed by this capacity later
  EXPECT_FALSE(IsInside(string));
  EXPECT_EQ(std::u16string_view(string), u"short");
}

TEST(HostString, ComparesWithTextAndSwaps) {
  String a(u"one");
  String b(Text(30, u'2'));
  EXPECT_TRUE(a == u"one");
  EXPECT_FALSE(a == u"on");
  EXPECT_FALSE(a == b);
  swap(a, b);
  EXPECT_TRUE(b == u"one");
  EXPECT_EQ(std::u16string_view(a), Text(30, u'2'));
}

}  // namespace
}  // namespace zrml
