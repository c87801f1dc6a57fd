// Register listings.
#include "script/listing/register_listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "sim/board/board.h"
#include "sim/text.h"
#include "sim/world.h"

namespace script {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class RegisterListing : public testing::Test {
 protected:
  void Attach() { at_attach_ = sim::TakeSnapshot(board); }
  std::string List(unsigned position, std::optional<std::uint8_t> page, bool colour = false) const {
    return ListRegisters(board, position, page, at_attach_, colour);
  }
  // The lines below the sixteen rows of bytes.
  std::vector<std::string> Names(unsigned position, std::uint8_t page) const {
    std::vector<std::string> lines = sim::TextLines(List(position, page));
    lines.erase(lines.begin(), lines.begin() + 18);
    return lines;
  }

  sim::Reports reports;
  sim::Board board{reports};

 private:
  std::optional<sim::RegisterSnapshot> at_attach_;
};

TEST_F(RegisterListing, PrintsSixteenBytesALine) {
  board.FitChips(2);
  for (unsigned reg = 0x30; reg < 0x40; ++reg) {
    board.Poke(1, kPage1, static_cast<std::uint8_t>(reg), static_cast<std::uint8_t>(reg + 0x70));
  }
  const std::string text = List(1, kPage1);
  EXPECT_THAT(text,
              StartsWith("slave1 page 1\n      .0 .1 .2 .3 .4 .5 .6 .7 .8 .9 .a .b .c .d .e .f\n"
                         "  00  "));
  EXPECT_THAT(text, HasSubstr("\n  30  a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac ad ae af\n"));
  EXPECT_THAT(text,
              HasSubstr("\n  f0  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n  names\n"));
  EXPECT_THAT(text, Not(HasSubstr("page 0")));
}

TEST_F(RegisterListing, PrintsAllPagesOrThatThereIsNoChip) {
  board.FitChips(1);
  EXPECT_EQ(List(0, std::nullopt), List(0, kPage0) + List(0, kPage1) + List(0, kPage2));
  EXPECT_THAT(List(0, kPage2), StartsWith("master page 2\n"));
  board.SetId(1, 0x55);
  EXPECT_EQ(List(1, std::nullopt), "slave1: not fitted, identification 0x55\n");
}

TEST_F(RegisterListing, NamesEveryRegisterThatHasAName) {
  for (std::uint8_t page = 0; page < kPageCount; ++page) {
    // From the listing: name by register.
    std::vector<std::string> names(kRegistersPerPage);
    for (const std::string& line : Names(0, page)) {
      if (line == "  names") continue;
      const std::string name = line.substr(4, line.find("  ", 4) - 4);
      std::istringstream ranges(line.substr(31));
      for (std::string range; ranges >> range;) {
        const unsigned long first = std::stoul(range, nullptr, 16);
        const unsigned long last = std::stoul(range.substr(range.find('-') + 1), nullptr, 16);
        for (unsigned long reg = first; reg <= last; ++reg) {
          EXPECT_EQ(names.at(reg), "") << range;
          names.at(reg) = name;
        }
      }
    }
    for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
      const char* const name = RegisterNameOf(page, static_cast<std::uint8_t>(reg));
      EXPECT_EQ(names[reg], name == nullptr ? "" : name) << sim::Hex(page) << ' ' << sim::Hex(reg);
    }
  }
}

TEST_F(RegisterListing, ShowsTheRegistersOfEachName) {
  const std::vector<std::string> page1 = Names(0, kPage1);
  EXPECT_THAT(page1, Contains("    system control             00"));
  EXPECT_THAT(page1, Contains("    channel overlay            12 1a 22 2a"));
  EXPECT_THAT(page1, Contains("    window                     30-33 34-37 38-3b 3c-3f"));
  EXPECT_THAT(Names(0, kPage2), Contains("    overlay                    10-5a"));
}

TEST_F(RegisterListing, MarksNothingBeforeAnAttach) {
  board.Poke(0, kPage1, 0x10, 0x94);
  const std::string text = List(0, std::nullopt);
  EXPECT_THAT(text, Not(HasSubstr("*")));
  EXPECT_THAT(text, Not(HasSubstr("->")));
  EXPECT_THAT(text, HasSubstr("\n  10  94 00 "));
}

TEST_F(RegisterListing, MarksNothingWhenNothingChanged) {
  board.Poke(0, kPage1, 0x10, 0x94);
  Attach();
  EXPECT_THAT(List(0, kPage1), Not(HasSubstr("*")));
  EXPECT_EQ(Names(0, kPage1).front(), "  nothing changed since attach");
  EXPECT_THAT(Names(0, kPage1), Contains("    channel display            10 18 20 28"));
}

TEST_F(RegisterListing, MarksChangedBytesAndListsThemWithTheirOldValues) {
  board.Poke(0, kPage1, 0x10, 0x80);
  board.Poke(0, kPage1, 0x3F, 0x11);
  Attach();
  board.Poke(0, kPage1, 0x10, 0x94);
  board.Poke(0, kPage1, 0x38, 0x04);
  board.Poke(0, kPage1, 0x3B, 0x3C);
  board.Poke(0, kPage1, 0x3F, 0x12);
  board.Poke(0, kPage1, 0x40, 0x01);  // has no name
  const std::string text = List(0, kPage1);
  EXPECT_THAT(text, HasSubstr("\n  10  94*00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"));
  EXPECT_THAT(text, HasSubstr("\n  30  00 00 00 00 00 00 00 00 04*00 00 3c*00 00 00 12*\n"));
  EXPECT_THAT(text, HasSubstr("\n  40  01*00 00 "));
  const std::vector<std::string> names = Names(0, kPage1);
  EXPECT_THAT(std::vector(names.begin(), names.begin() + 6),
              ElementsAre("  * changed since attach",
                          "    0x10  channel display 0         80 -> 94 (hold set, decoded set)",
                          "    0x38  window 2                  00 00 00 00 -> 04 00 00 3c",
                          "    0x3C  window 3                  00 00 00 11 -> 00 00 00 12",
                          "    0x40  (no name)                 00 -> 01", "  not changed"));
  EXPECT_THAT(names, Contains("    channel display            18 20 28"));
  EXPECT_THAT(names, Contains("    window                     30-33 34-37"));
}

TEST_F(RegisterListing, CutsLongRunsIntoEightBytesALine) {
  Attach();
  board.Poke(0, kPage2, 0xA6, 0x01);
  board.Poke(0, kPage2, 0xBD, 0x02);
  const std::vector<std::string> names = Names(0, kPage2);
  EXPECT_THAT(
      std::vector(names.begin(), names.begin() + 4),
      ElementsAre(
          "  * changed since attach",
          "    0xA6  motion mask 1             00 00 00 00 00 00 00 00 -> 01 00 00 00 00 00 00 00",
          "    0xB6  motion mask 1             00 00 00 00 00 00 00 00 -> 00 00 00 00 00 00 00 02",
          "  not changed"));
  EXPECT_THAT(names, Contains("    motion mask                86-9d ae-b5 c6-dd e6-fd"));
}

TEST_F(RegisterListing, ShowsTheChipsOwnBitsAsChangedToo) {
  Attach();
  board.SetMotion(6, true);
  EXPECT_THAT(Names(1, kPage1),
              Contains("    0x79  motion status             00 -> 04 (motion 0 -> 4)"));
  EXPECT_EQ(Names(0, kPage1).front(), "  nothing changed since attach");
}

TEST_F(RegisterListing, MarksNothingOnAChipThatWasFittedAfterTheAttach) {
  board.FitChips(1);
  Attach();
  board.FitChips(2);
  board.Poke(1, kPage1, 0x10, 0x94);
  EXPECT_THAT(List(1, std::nullopt), Not(HasSubstr("*")));
  EXPECT_EQ(Names(1, kPage1).front(), "  names");
}

TEST_F(RegisterListing, ShowsMarksInBoldWithColour) {
  Attach();
  board.Poke(0, kPage1, 0x31, 0x5A);
  EXPECT_THAT(List(0, kPage1, true), HasSubstr("\n  30  00 \033[1m5a*\033[0m00 00 "));
  EXPECT_THAT(List(0, kPage1, false), Not(HasSubstr("\033")));
}

}  // namespace
}  // namespace script
