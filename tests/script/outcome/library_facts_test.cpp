// What is known of the library is what it does, whichever way it was asked.
#include "script/outcome/library_facts.h"

#include <gtest/gtest.h>

#include "tests/script/outcome/outcome_fixture.h"

namespace script {
namespace {

class LibraryFactsTest : public OutcomeTest {};

TEST_F(LibraryFactsTest, KnowNothingOfALibraryThatWasNeverCalled) {
  EXPECT_FALSE(Facts().attached);
  EXPECT_FALSE(Facts().ready);
  EXPECT_EQ(Facts().channels, 0u);
  EXPECT_EQ(Facts().video_back_end, DriverState::Closed);
}

TEST_F(LibraryFactsTest, CountTheChannelsThatTheCommandFound) {
  for (const unsigned chips : {1u, 2u, 3u, 4u}) {
    Attach(chips);
    EXPECT_TRUE(Facts().attached);
    EXPECT_FALSE(Facts().ready);
    EXPECT_EQ(Command(0xF001), 0);
    EXPECT_TRUE(Facts().ready);
    EXPECT_EQ(Facts().channels, 4 * chips);
    EXPECT_FALSE(Facts().pal);
  }
}

TEST_F(LibraryFactsTest, CountTheChannelsThatTheTextLineFoundWithOrWithoutAWindow) {
  Attach(2);
  Said("vexo init ");
  EXPECT_TRUE(Facts().ready);
  EXPECT_EQ(Facts().channels, 8u);

  Attach(3);
  Watch([] { harness::Uninitialize(); });
  Said("vexo init ");
  EXPECT_TRUE(Facts().ready);
  EXPECT_EQ(Facts().channels, 12u);
}

TEST_F(LibraryFactsTest, KnowTheStandard) {
  Attach(1);
  World().nvram.SetRecord("MDVR", 1, 4);
  EXPECT_EQ(Command(0xF001), 0);
  EXPECT_TRUE(Facts().pal);
}

TEST_F(LibraryFactsTest, StayReadyWithoutChannelsWhenNoChipAnswersAnyMore) {
  for (const bool by_text : {false, true}) {
    Start(2);
    World().board.FitChips(0);
    if (by_text) {
      Said("vexo init ");
    } else {
      EXPECT_EQ(Command(0xF001), -1);
    }
    EXPECT_TRUE(Facts().ready) << by_text;
    EXPECT_EQ(Facts().channels, 0u) << by_text;
  }
}

TEST_F(LibraryFactsTest, AreNotMovedByACommandThatFailsBeforeItLooks) {
  Start(2);
  Watch([] { harness::CommandProc(0xF001, nullptr); });
  EXPECT_EQ(Facts().channels, 8u);
  Command(0xF009);
  EXPECT_EQ(Facts().channels, 8u);
}

TEST_F(LibraryFactsTest, StayReadyOverDetach) {
  Start(1);
  Watch([] { harness::Entry(0); });
  EXPECT_FALSE(Facts().attached);
  EXPECT_TRUE(Facts().ready);
  Watch([] { harness::Entry(1); });
  // So it is: a command for the chips reaches them.
  EXPECT_EQ(Said("vexo pip stop "), "");
  EXPECT_NE(Writes(), 0u);
}

TEST_F(LibraryFactsTest, FollowTheVideoBackEndDriverAlone) {
  Attach(1);
  Said("vpb init ");
  EXPECT_EQ(Facts().video_back_end, DriverState::Open);
  Said("vexo stream on ");  // opens and closes the camera's
  EXPECT_EQ(Facts().video_back_end, DriverState::Open);
  Said("vpb uninit ");
  EXPECT_EQ(Facts().video_back_end, DriverState::Closed);

  World().drivers.Set("VBE1:", sim::Drivers::State::Absent);
  Said("vpb init ");
  EXPECT_EQ(Facts().video_back_end, DriverState::FailedOpen);
  Said("vpb uninit ");
  EXPECT_EQ(Facts().video_back_end, DriverState::Closed);

  World().drivers.Set("VBE1:", sim::Drivers::State::Null);
  Said("vpb init ");
  EXPECT_EQ(Facts().video_back_end, DriverState::Closed);
}

}  // namespace
}  // namespace script
