#include "device/ceimage/function_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/device/ceimage/elf_builder.h"

namespace ceimage {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::uint32_t kText = kTestBase + 0x1000;
constexpr std::uint32_t kPush = 0xE92D4010;      // push {r4, lr}
constexpr std::uint32_t kPushOne = 0xE52DE004;   // push {lr}
constexpr std::uint32_t kPushIfEq = 0x092D4010;  // pusheq {r4, lr}
constexpr std::uint32_t kRoom = 0xE24DD008;      // sub sp, sp, #8
constexpr std::uint32_t kRoomByR3 = 0xE04DD003;  // sub sp, sp, r3
constexpr std::uint32_t kCopySp = 0xE1A0C00D;    // mov ip, sp
constexpr std::uint32_t kMove = 0xE1A00001;      // mov r0, r1
constexpr std::uint32_t kReturn = 0xE12FFF1E;    // bx lr

// A file with only this code; functions as (first word, words).
ElfFile Code(const std::vector<std::uint32_t>& words,
             const std::vector<std::pair<std::uint32_t, std::uint32_t>>& functions) {
  ElfFile elf;
  elf.sections = {{".text", kFlagsCode, kText, static_cast<std::uint32_t>(words.size() * 4), true,
                   Words(words)}};
  elf.symbols = {{"image_base", kTestBase, 0, 0, true}, {"$a", kText, 0, 0, true}};
  for (const auto& [first, count] : functions) {
    elf.symbols.push_back(
        {"f" + std::to_string(first), kText + first * 4, count * 4, kElfFunction, true});
  }
  return elf;
}

std::vector<FunctionEntry> Find(const ElfFile& elf) {
  return FindFunctions(elf, PlaceSections(elf));
}

std::string RefusalOf(const ElfFile& elf) {
  try {
    Find(elf);
  } catch (const Refusal& refusal) {
    return refusal.what();
  }
  return "taken";
}

auto Entry(std::uint32_t offset, std::uint32_t instructions, std::uint32_t prolog) {
  return ::testing::AllOf(::testing::Field(&FunctionEntry::offset, offset),
                          ::testing::Field(&FunctionEntry::instructions, instructions),
                          ::testing::Field(&FunctionEntry::prolog, prolog));
}

TEST(FunctionTable, CountsTheInstructionsThatSaveRegistersAndMakeRoom) {
  EXPECT_THAT(Find(Code({kPush, kRoom, kMove, kReturn, kPushOne, kReturn, kCopySp, kPush, kRoom,
                         kRoom, kReturn},
                        {{0, 4}, {4, 2}, {6, 5}})),
              ElementsAre(Entry(0x1000, 4, 2), Entry(0x1010, 2, 1), Entry(0x1018, 5, 4)));
}

TEST(FunctionTable, LeavesOutFunctionsThatDoNotMoveTheStack) {
  EXPECT_THAT(Find(Code({kMove, kReturn}, {{0, 2}})), IsEmpty());
}

TEST(FunctionTable, BeginsWhereAFunctionFirstMovesTheStack) {
  EXPECT_THAT(Find(Code({kMove, kPush, kMove, kReturn}, {{0, 4}})),
              ElementsAre(Entry(0x1004, 3, 1)));
}

TEST(FunctionTable, RefusesFunctionsThatMoveTheStackTwice) {
  for (const std::uint32_t again : {kPush, kPushOne, kPushIfEq, kRoom, kRoomByR3}) {
    EXPECT_THAT(RefusalOf(Code({kPush, kMove, again, kReturn}, {{0, 4}})),
                HasSubstr("f0 moves the stack at instruction 2"))
        << Hex(again);
  }
}

TEST(FunctionTable, TakesDataBetweenCodeForNoInstruction) {
  ElfFile elf = Code({kPush, kReturn, kPush, kMove}, {{0, 4}});
  EXPECT_THAT(RefusalOf(elf), HasSubstr("instruction 2"));
  elf.symbols.push_back({"$d", kText + 8, 0, 0, true});
  EXPECT_THAT(Find(elf), ElementsAre(Entry(0x1000, 4, 1)));
  elf.symbols.push_back({"$a.1", kText + 8, 0, 0, true});  // the last mark counts
  EXPECT_THAT(RefusalOf(elf), HasSubstr("instruction 2"));
}

TEST(FunctionTable, TakesTheLongestOfAFunctionsNames) {
  ElfFile elf = Code({kPush, kMove, kReturn}, {{0, 3}});
  elf.symbols.push_back({"alias", kText, 0, kElfFunction, true});
  EXPECT_THAT(Find(elf), ElementsAre(Entry(0x1000, 3, 1)));
  std::swap(elf.symbols[2], elf.symbols[3]);
  EXPECT_THAT(Find(elf), ElementsAre(Entry(0x1000, 3, 1)));
}

TEST(FunctionTable, RefusesWhatIsNoWholeArmFunction) {
  const ElfFile elf = Code({kPush, kMove, kReturn, kReturn}, {{0, 3}});
  const auto with = [&](const ElfSymbol& symbol) {
    ElfFile changed = elf;
    changed.symbols.push_back(symbol);
    return RefusalOf(changed);
  };
  EXPECT_THAT(with({"thumb", kText + 13, 2, kElfFunction, true}), HasSubstr("thumb is Thumb code"));
  EXPECT_THAT(with({"$t", kText + 12, 0, 0, true}), HasSubstr("Thumb code at 0x1000100c"));
  EXPECT_THAT(with({"empty", kText + 12, 0, kElfFunction, true}),
              HasSubstr("empty is of unknown length"));
  EXPECT_THAT(with({"odd", kText + 12, 2, kElfFunction, true}),
              HasSubstr("odd is of unknown length"));
  EXPECT_THAT(with({"inside", kText + 8, 4, kElfFunction, true}), HasSubstr("inside overlaps"));
  EXPECT_THAT(with({"outside", kText + 16, 4, kElfFunction, true}),
              HasSubstr("outside lies in no code"));
  EXPECT_EQ(with({"other", kText + 12, 4, kElfFunction, true}), "taken");
}

TEST(FunctionTable, PacksAnEntryIntoTwoWords) {
  EXPECT_EQ(EncodeFunctions({{0x1000, 4, 2}, {0x2000, 0x3FFFFF, 255}}, kTestBase),
            Words({0x10001000, 0x40000402, 0x10002000, 0x7FFFFFFF}));
}

TEST(FunctionTable, RefusesWhatAnEntryCannotHold) {
  EXPECT_THROW(EncodeFunctions({{0x1000, 0x400000, 1}}, kTestBase), Refusal);
  EXPECT_THROW(EncodeFunctions({{0x1000, 300, 256}}, kTestBase), Refusal);
}

}  // namespace
}  // namespace ceimage
