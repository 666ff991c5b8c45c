#include "tools/zrml/view/question.h"

#include <gtest/gtest.h>

namespace zrml::view {
namespace {

TEST(Question, IsANameAndNumbers) {
  const auto question = Question::Parse("map?sample=2&from=1.5&function=0");
  ASSERT_TRUE(question);
  EXPECT_EQ(question->Name(), "map");
  EXPECT_EQ(question->Position("sample"), 2);
  EXPECT_EQ(question->Number("from"), 1.5);
  EXPECT_FALSE(question->Has("to"));
  EXPECT_EQ(question->Word("to"), "");
}

TEST(Question, TextHasItsKeysInOrder) {
  EXPECT_EQ(Question::Parse("map?sample=2&from=1.5&function=0")->Text(), "map?from=1.5&function=0&sample=2");
  EXPECT_EQ(Question::Parse("run")->Text(), "run");
}

TEST(Question, OtherTextsAreNone) {
  for (const char* text : {"", "?a=1", "run?a", "run?a=", "run?=1", "run?a=1&a=2", "run?a=%41", "../run",
                           "run?a=1&", "run?a=b c", "run?path=/etc"}) {
    EXPECT_FALSE(Question::Parse(text)) << text;
  }
}

TEST(Question, PositionsAreWholeAndBelowTheirCount) {
  const Question question("map", {{"a", "3"}, {"b", "-1"}, {"c", "1.5"}, {"d", "x"}, {"e", "1e400"}});
  EXPECT_EQ(question.Position("a", 4), 3);
  EXPECT_THROW(question.Position("a", 3), WrongQuestion);
  EXPECT_THROW(question.Position("b"), WrongQuestion);
  EXPECT_THROW(question.Position("c"), WrongQuestion);
  EXPECT_EQ(question.Number("c"), 1.5);
  EXPECT_THROW(question.Number("d"), WrongQuestion);
  EXPECT_THROW(question.Number("e"), WrongQuestion);
  EXPECT_THROW(question.Number("none"), WrongQuestion);
}

}  // namespace
}  // namespace zrml::view
