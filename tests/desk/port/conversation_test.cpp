// Bytes of a connection to greeting and lines.
#include "desk/port/conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace desk {
namespace {

using testing::HasSubstr;
using Kind = Conversation::Step::Kind;

std::vector<Conversation::Step> StepsOf(std::string_view bytes, std::size_t at_a_time) {
  Conversation conversation;
  std::vector<Conversation::Step> steps;
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, at_a_time);
    conversation.Take(part);
    bytes.remove_prefix(part.size());
    while (auto step = conversation.Next()) steps.push_back(*step);
  }
  return steps;
}

TEST(Conversation, AGreetingSaysWhichEventsAreWanted) {
  EXPECT_EQ(StepsOf("vexo 1\n", 99).at(0).wants, Wants::Nothing);
  EXPECT_EQ(StepsOf("vexo 1 events\r\n", 99).at(0).wants, Wants::Events);
  EXPECT_EQ(StepsOf("vexo 1 events cycles\n", 99).at(0).wants, Wants::AllEvents);
}

TEST(Conversation, LinesAreTheSameHoweverTheyCome) {
  const std::string_view bytes = "vexo 1\ncamera 5 off\r\n\nlast\nnot ended";
  for (std::size_t at_a_time = 1; at_a_time < bytes.size(); ++at_a_time) {
    const auto steps = StepsOf(bytes, at_a_time);
    ASSERT_EQ(steps.size(), 4u) << at_a_time;
    EXPECT_EQ(steps[0].kind, Kind::Greeting);
    EXPECT_EQ(steps[1].line, "camera 5 off");
    EXPECT_EQ(steps[1].number, 1u);
    EXPECT_EQ(steps[2].line, "");
    EXPECT_EQ(steps[3].line, "last");
    EXPECT_EQ(steps[3].number, 3u);
  }
}

TEST(Conversation, AnythingElseThanAGreetingIsTheEnd) {
  for (const char* first :
       {"GET / HTTP/1.1", "POST / HTTP/1.1", "vexo 2", "vexo", "vexo 1 ", "VEXO 1", " vexo 1",
        "vexo 1\t", "", "camera 5 off", "\x16\x03\x01\x02"}) {
    const auto steps = StepsOf(first + std::string("\nvexo 1\ncamera 5 off\n"), 7);
    ASSERT_EQ(steps.size(), 1u) << first;
    EXPECT_EQ(steps[0].kind, Kind::Over);
    EXPECT_THAT(steps[0].why, HasSubstr("vexo 1"));
  }
}

TEST(Conversation, WhatIsNoTextIsNoLineAndThoseAfterItAre) {
  using namespace std::string_view_literals;
  const auto steps = StepsOf("vexo 1\n\0\n\xFF\na\x1B[2J\n\xC3\xBC\tok\n"sv, 5);
  ASSERT_EQ(steps.size(), 5u);
  for (std::size_t i = 1; i < 4; ++i) {
    EXPECT_EQ(steps[i].kind, Kind::NoLine) << i;
    EXPECT_EQ(steps[i].number, i);
  }
  EXPECT_EQ(steps[4].kind, Kind::Line);
  EXPECT_EQ(steps[4].line, "\xC3\xBC\tok");
}

TEST(Conversation, ALineHas4096BytesAtMost) {
  const std::string longest(4096, 'a');
  for (const char* end : {"\n", "\r\n"}) {
    const auto steps = StepsOf("vexo 1\n" + longest + end, 1000);
    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(steps[1].line, longest);
  }
  for (const char* end : {"\n", "\r\n", "aaaaaaaaa"}) {
    const auto steps = StepsOf("vexo 1\n" + longest + 'a' + end, 1000);
    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(steps[1].kind, Kind::Over);
    EXPECT_EQ(steps[1].why, "a line has 4096 bytes at most");
  }
}

TEST(Conversation, ALineWithoutEndIsOverAsSoonAsItIsTooLong) {
  Conversation conversation;
  conversation.Take(std::string(4098, 'a'));
  ASSERT_TRUE(conversation.Next().has_value());
  conversation.Take("\nvexo 1\n");
  EXPECT_FALSE(conversation.Next().has_value());
  EXPECT_FALSE(conversation.Greeted());
}

}  // namespace
}  // namespace desk
