// Finding callers by the function table, in toy functions that call each other.
#include "device/emulator/unwind.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "device/emulator/machine.h"
#include "sim/world.h"
#include "tests/device/emulator/call_shadow.h"
#include "tests/device/emulator/toy_image.h"

namespace emulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

using Code = std::vector<std::uint32_t>;

constexpr std::uint32_t kTable = ToyImage::kTables + 0x700;
constexpr std::uint32_t kNop = 0xE1A00000;
constexpr std::uint32_t kBxLr = 0xE12FFF1E;
// Calls the function at +0x20 with registers of its own, which stands in the table.
const Code kCaller = {
    0xE92D4FF0,  // push {r4-r11, lr}
    0xE3A04044,  // mov r4, #0x44
    0xE3A05055,  // mov r5, #0x55
    0xE3A0B0BB,  // mov r11, #0xBB
    0xEB000002,  // bl +0x20
    0xE8BD4FF0,  // pop {r4-r11, lr}
    0xE12FFF1E,  // bx lr
    0xE1A00000,
};
constexpr std::uint32_t kCallee = ToyImage::kBase + ToyImage::kCode + 0x20;

struct Entry {
  std::uint32_t address = 0;
  std::uint32_t prolog = 0;        // instructions
  std::uint32_t instructions = 0;  // all
};

std::uint32_t Packed(const Entry& entry) {
  return 0x40000000 | entry.instructions << 8 | entry.prolog;
}

PeImage ImageOf(const Code& callee, std::vector<Entry> entries) {
  ToyImage toy;
  toy.code = kCaller;
  toy.code.insert(toy.code.end(), callee.begin(), callee.end());
  entries.insert(entries.begin(), {ToyImage::kBase + ToyImage::kCode, 1, 7});
  std::vector<std::uint8_t> file = toy.Bytes();
  PutWord(file, ToyImage::kDirectories + 24, kTable);
  PutWord(file, ToyImage::kDirectories + 28, static_cast<std::uint32_t>(8 * entries.size()));
  for (std::size_t i = 0; i < entries.size(); ++i) {
    PutWord(file, ToyImage::InFile(kTable) + 8 * i, entries[i].address);
    PutWord(file, ToyImage::InFile(kTable) + 8 * i + 4, Packed(entries[i]));
  }
  return PeImage::Parse(file);
}

class UnwindTest : public testing::Test {
 protected:
  void SetUp() override { sim::ResetWorld(); }
  void TearDown() override { sim::ResetWorld(); }

  // What differs when every instruction of a run is unwound.
  static std::map<std::uint32_t, std::string> DifferencesOf(const Code& callee,
                                                            const std::vector<Entry>& entries) {
    Machine machine(ImageOf(callee, entries));
    CallShadow shadow(machine, 1);
    EXPECT_EQ(machine.FirstFault(), std::nullopt);
    machine.Call(machine.AddressOf(""), std::vector<std::uint32_t>{1, 2, 3});
    EXPECT_EQ(shadow.Places(), machine.Instructions());
    return shadow.Differences();
  }
};

struct Function {
  const char* name;
  Code code;
  std::uint32_t prolog;
};

const Function kFunctions[] = {
    {"PushAndPop", {0xE92D4030, 0xE3A04001, 0xE8BD4030, kBxLr}, 1},
    {"PushOfOneRegister", {0xE52DE004, 0xE3A0E001, 0xE49DE004, kBxLr}, 1},
    {"RoomBehindThePush", {0xE92D4010, 0xE24DD008, 0xE3A04001, 0xE28DD008, 0xE8BD4010, kBxLr}, 2},
    // sub sp, sp, #0x800; sub sp, sp, #12
    {"RoomInTwoSteps",
     {0xE92D4010, 0xE24DDB02, 0xE24DD00C, 0xE3A04001, 0xE28DDB02, 0xE28DD00C, 0xE8BD4010, kBxLr},
     3},
    // push {r0-r3}; push {r4, lr}; and behind the pop the room of the arguments
    {"ArgumentsOnTheStack", {0xE92D000F, 0xE92D4010, 0xE3A04001, 0xE8BD4010, 0xE28DD010, kBxLr}, 2},
    {"CopyOfTheStackPointer", {0xE1A0C00D, 0xE92D4010, 0xE3A04001, 0xE8BD4010, kBxLr}, 2},
    {"ReturnByThePop", {0xE92D4030, 0xE3A05001, 0xE8BD8030}, 1},             // pop {r4, r5, pc}
    {"ReturnByThePopOfOneRegister", {0xE52DE004, kNop, 0xE49DF004}, 1},      // ldr pc, [sp], #4
    {"ReturnByAMove", {0xE92D4010, 0xE3A04001, 0xE8BD4010, 0xE1A0F00E}, 1},  // mov pc, lr
};

TEST_F(UnwindTest, FindsTheCallersFromEachInstructionOfAFunction) {
  for (const Function& function : kFunctions) {
    const auto instructions = static_cast<std::uint32_t>(function.code.size());
    EXPECT_THAT(DifferencesOf(function.code, {{kCallee, function.prolog, instructions}}), IsEmpty())
        << function.name;
  }
}

TEST_F(UnwindTest, FindsTheCallerOfALeafInLr) {
  EXPECT_THAT(DifferencesOf({0xE3A00001, kBxLr}, {}), IsEmpty());
}

TEST_F(UnwindTest, FindsTheCallerInLrBeforeAFunctionFirstMovesTheStack) {
  // cmp r0, #0; bxeq lr; and the entry begins at the push
  EXPECT_THAT(DifferencesOf({0xE3500000, 0x012FFF1E, 0xE92D4010, 0xE3A04001, 0xE8BD4010, kBxLr},
                            {{kCallee + 8, 1, 4}}),
              IsEmpty());
}

TEST_F(UnwindTest, IsMisledByAWrongPrologLength) {
  const Code code = {0xE92D4010, 0xE24DD008, 0xE3A04001, 0xE28DD008, 0xE8BD4010, kBxLr};
  // From the body alone: an epilog says itself what is left.
  EXPECT_THAT(DifferencesOf(code, {{kCallee, 1, 6}}),
              ElementsAre(Pair(kCallee + 8, HasSubstr("image+0x1028: "))));
}

TEST_F(UnwindTest, IsMisledByAnEpilogThatIsNotWhole) {
  // Between the pop and the return something else: and r0, r0, #255
  EXPECT_THAT(
      DifferencesOf({0xE92D4010, 0xE3A04001, 0xE8BD4010, 0xE20000FF, kBxLr}, {{kCallee, 1, 5}}),
      ElementsAre(Pair(kCallee + 12, HasSubstr("image+0x102C: "))));
}

TEST_F(UnwindTest, IsMisledByAJumpToAnotherFunctionBehindThePop) {
  EXPECT_THAT(DifferencesOf({0xE92D4010, 0xE3A04001, 0xE8BD4010, 0xEAFFFFFF, 0xE92D4020, 0xE3A05001,
                             0xE8BD4020, kBxLr},
                            {{kCallee, 1, 4}, {kCallee + 16, 1, 4}}),
              ElementsAre(Pair(kCallee + 12, HasSubstr("image+0x102C: "))));
}

TEST_F(UnwindTest, IsMisledByASavedRegistersPlaceThatIsUsedOtherwise) {
  // push {r4, r5, lr}; str r0, [sp]; add sp, sp, #8; pop {lr}; bx lr
  EXPECT_THAT(DifferencesOf({0xE92D4030, 0xE58D0000, 0xE3A00000, 0xE28DD008, 0xE49DE004, kBxLr},
                            {{kCallee, 1, 6}}),
              ElementsAre(Pair(kCallee + 8, HasSubstr("r4 of caller 1 is 0x00000001"))));
}

TEST_F(UnwindTest, RefusesAPrologThatCannotBeUndone) {
  // sub sp, sp, r3 with nothing in r3
  EXPECT_THAT(DifferencesOf({0xE3A03000, 0xE92D4010, 0xE04DD003, kNop, 0xE8BD4010, kBxLr},
                            {{kCallee + 4, 2, 5}}),
              ElementsAre(Pair(kCallee + 12, HasSubstr("the prolog's instruction 0xE04DD003 at "
                                                       "image+0x1028 cannot be undone"))));
}

TEST_F(UnwindTest, RefusesAFunctionThatCallsAndIsNotInTheTable) {
  // mov r12, lr; bl +0x30; mov lr, r12; bx lr; and a leaf
  EXPECT_THAT(
      DifferencesOf({0xE1A0C00E, 0xEB000001, 0xE1A0E00C, kBxLr, kBxLr}, {}),
      ElementsAre(Pair(kCallee + 8, HasSubstr("pc of caller 1")),
                  Pair(kCallee + 16, HasSubstr("calls others, and is not in the function table"))));
}

TEST_F(UnwindTest, FindsAFunctionByHalving) {
  const Code code(12, kBxLr);
  const PeImage file = ImageOf(code, {{kCallee, 1, 2}, {kCallee + 8, 0, 1}, {kCallee + 16, 2, 4}});
  LoadedImage image(file, ToyImage::kBase, "image");
  image.Fill();
  const auto begin = [&image](std::uint32_t address) -> std::uint32_t {
    const auto found = FindFunction(image, address);
    return found ? found->begin : 0;
  };
  constexpr std::uint32_t kCode = ToyImage::kBase + ToyImage::kCode;
  EXPECT_EQ(begin(kCode - 4), 0u);
  EXPECT_EQ(begin(kCode), kCode);
  EXPECT_EQ(begin(kCode + 24), kCode);
  EXPECT_EQ(begin(kCode + 28), 0u);  // behind its end
  EXPECT_EQ(begin(kCallee), kCallee);
  EXPECT_EQ(begin(kCallee + 4), kCallee);
  EXPECT_EQ(begin(kCallee + 8), kCallee + 8);
  EXPECT_EQ(begin(kCallee + 12), 0u);
  EXPECT_EQ(begin(kCallee + 28), kCallee + 16);
  EXPECT_EQ(begin(kCallee + 32), 0u);
  EXPECT_EQ(FindFunction(image, kCallee + 16)->body, kCallee + 24);
  EXPECT_EQ(FindFunction(image, kCallee + 16)->end, kCallee + 32);
}

}  // namespace
}  // namespace emulator
