#include "tools/zrml/view/answer.h"

#include <cstring>
#include <limits>

#include <gtest/gtest.h>

namespace zrml::view {
namespace {

Answer SmallAnswer() {
  return {{{"name", "</script><!-- \u00e9"}}, {{1, 2, 3}, {4, 5, 6}, {0, 1, 2}}, {2, 1, {7, 8}}};
}

TEST(Answer, FrameIsJsonAndAlignedArrays) {
  const std::string frame = FrameOf(SmallAnswer());
  std::uint64_t length = 0;
  std::memcpy(&length, frame.data(), 8);
  EXPECT_EQ(length % 8, 0U);
  const Json facts = Json::parse(frame.substr(8, length));
  EXPECT_EQ(facts["name"], "</script><!-- \u00e9");
  EXPECT_EQ(facts["columns"], 2);
  EXPECT_EQ(facts["arrays"].dump(), R"([["x","f8",3],["y","f8",3],["scans","i4",3],["cells","u1",2]])");
  const std::string arrays = frame.substr(8 + length);
  ASSERT_EQ(arrays.size(), 24U + 24 + 16 + 8);
  double y = 0;
  std::memcpy(&y, &arrays[24 + 16], 8);
  EXPECT_EQ(y, 6);
  EXPECT_EQ(arrays[64], 7);
}

TEST(Answer, ScriptHasNoBracketThatBeginsMarkup) {
  const std::string script = ScriptOf(SmallAnswer(), Numbers::kShort);
  EXPECT_EQ(script.find('<'), std::string::npos);
  const Json json = Json::parse(script);
  EXPECT_EQ(json["facts"]["name"], "</script><!-- \u00e9");
  EXPECT_EQ(json["facts"]["arrays"].dump(), R"([["x","f4",3],["y","f4",3],["cells","u1",2]])");
  // 3 singles of x, padded to 16 bytes, first: 1.0f, 2.0f, 3.0f
  EXPECT_EQ(json["data"].get<std::string>().substr(0, 24), "AACAPwAAAEAAAEBAAAAAAAAA");
}

TEST(Answer, NumbersThatAreNoneAreNullAndInvalidBytesAreReplaced) {
  Answer answer;
  answer.facts = {{"a", std::numeric_limits<double>::infinity()}, {"b", "\xff"}};
  EXPECT_EQ(ScriptJson(answer.facts), "{\"a\":null,\"b\":\"\ufffd\"}");
}

}  // namespace
}  // namespace zrml::view
