// The emulated device on toy images: calls, imports, bus windows, threads, and every fault it
// reports.
#include "device/emulator/machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "sim/world.h"
#include "tests/device/emulator/toy_image.h"

namespace emulator {
namespace {

using testing::HasSubstr;

constexpr std::uint32_t kOtherBase = 0x01E40000;
constexpr std::uint32_t kWordAddress = ToyImage::kBase + ToyImage::kWord;

using Code = std::vector<std::uint32_t>;

// Calls the first import with the arguments it was called with, and returns its result.
const Code kCallImport = {
    0xE92D4010,  // push {r4, lr}
    0xE59FC010,  // ldr ip, [pc, #16]
    0xE59CC000,  // ldr ip, [ip]
    0xE1A0E00F,  // mov lr, pc
    0xE12FFF1C,  // bx ip
    0xE8BD4010,  // pop {r4, lr}
    0xE12FFF1E,  // bx lr
    ToyImage::kBase + ToyImage::kData,
};
constexpr std::uint32_t kCallImportSlot = ToyImage::kCode + 0x1C;

class MachineTest : public testing::Test {
 protected:
  void SetUp() override { sim::ResetWorld(); }
  // First: threads that are left may be in the image.
  void TearDown() override { sim::ResetWorld(); }

  Machine& Make(const ToyImage& toy, const MachineOptions& options = {}) {
    machine_ = std::make_unique<Machine>(PeImage::Parse(toy.Bytes()), options);
    return *machine_;
  }
  Machine& MakeCode(const Code& code, const MachineOptions& options = {}) {
    ToyImage toy;
    toy.code = code;
    return Make(toy, options);
  }
  Machine& MakeCallOf(const ToyImport& import, const MachineOptions& options = {}) {
    ToyImage toy;
    toy.code = kCallImport;
    toy.imports = {import};
    toy.relocations = {kCallImportSlot};
    return Make(toy, options);
  }
  std::uint32_t Call(std::initializer_list<std::uint32_t> arguments = {}) {
    return machine_->Call(machine_->AddressOf(""), arguments);
  }

 private:
  std::unique_ptr<Machine> machine_;
};

TEST_F(MachineTest, PassesArgumentsAndReturnsTheResult) {
  MakeCode({0xE0800001, 0xE12FFF1E});  // add r0, r0, r1; bx lr
  EXPECT_EQ(Call({30, 12}), 42u);
  EXPECT_EQ(Call({0xFFFFFFFF, 2}), 1u);
}

TEST_F(MachineTest, PassesTheFifthArgumentOnTheStack) {
  MakeCode({0xE59D0000, 0xE12FFF1E});  // ldr r0, [sp]; bx lr
  EXPECT_EQ(Call({1, 2, 3, 4, 55}), 55u);
}

TEST_F(MachineTest, LetsACallChangeItsArgumentsOnTheStackAndNothingAboveThem) {
  MakeCode({0xE58D0004, 0xE59D0004, 0xE12FFF1E});  // str r0, [sp, #4]; ldr r0, [sp, #4]; bx lr
  EXPECT_EQ(Call({1, 2, 3, 4, 5, 6}), 1u);
  EXPECT_THROW(Call({1, 2, 3, 4, 5}), harness::ImageFault);
}

TEST_F(MachineTest, LetsTheSystemWriteNothingToTheCallersStack) {
  const Machine::Lease cpu(MakeCode({0xE12FFF1E}));
  EXPECT_THROW(cpu->Write(kStackAddress + kStackBytes - 4, 4), harness::ImageFault);
  EXPECT_NO_THROW(cpu->Write(kStackAddress + kStackBytes / 2, 4));
}

TEST_F(MachineTest, CountsTheInstructionsThatRan) {
  // mov r1, #100; 1: subs r1, r1, #1; bne 1b; bx lr
  Machine& machine = MakeCode({0xE3A01064, 0xE2511001, 0x1AFFFFFD, 0xE12FFF1E});
  for (int call = 1; call <= 3; ++call) {
    Call();
    EXPECT_EQ(machine.Instructions(), 202u * static_cast<unsigned>(call));
  }
}

// 1: b 1b
const Code kEndless = {0xEAFFFFFE};

TEST_F(MachineTest, EndsCodeThatRunsOnAndCallsNoSystem) {
  Machine& machine = MakeCode(kEndless, {.instruction_limit = 1'000'000});
  try {
    Call();
    FAIL() << "came back";
  } catch (const harness::ImageFault& fault) {
    EXPECT_THAT(fault.what(), HasSubstr("ran 1000000 instructions without an end, and called no "
                                        "system (in the block at image+0x1000"));
  }
  EXPECT_TRUE(machine.FirstFault());
  // By itself as well.
  MakeCode(kEndless);
  EXPECT_THROW(Call(), harness::ImageFault);
}

TEST_F(MachineTest, AsksTheWatchNowAndThenWhetherCodeMayGoOn) {
  struct Enough {};
  Machine& machine = MakeCode(kEndless);
  unsigned asked = 0;
  sim::TheWorld().kernel.SetWatch([&] {
    if (++asked == 5) throw Enough();
  });
  EXPECT_THROW(Call(), Enough);
  EXPECT_EQ(asked, 5u);
  EXPECT_NEAR(static_cast<double>(machine.Instructions()), 500'000, 10);
  EXPECT_FALSE(machine.FirstFault());
}

TEST_F(MachineTest, AsksTheWatchOnceInManyCallsThatRunLittle) {
  Machine& machine = MakeCode({0xE3A01064, 0xE2511001, 0x1AFFFFFD, 0xE12FFF1E});
  unsigned asked = 0;
  sim::TheWorld().kernel.SetWatch([&] { ++asked; });
  while (machine.Instructions() < 99'000) Call();
  EXPECT_EQ(asked, 0u);
  while (machine.Instructions() < 199'000) Call();
  EXPECT_EQ(asked, 1u);
}

TEST_F(MachineTest, AsksTheWatchAboutCodeThatCallsTheSystemOnAndOn) {
  struct Enough {};
  ToyImage toy;
  // ldr r4, =(slot of the import); mov r5, #65536
  // 1: ldr r12, [r4]; mov lr, pc; bx r12; subs r5, r5, #1; bne 1b
  toy.code = {0xE59F4014, 0xE3A05801, 0xE594C000, 0xE1A0E00F,
              0xE12FFF1C, 0xE2555001, 0x1AFFFFFA, ToyImage::kBase + ToyImage::kData};
  toy.imports = {{"COREDLL.dll", "GetTickCount"}};
  Machine& machine = Make(toy);
  unsigned asked = 0;
  sim::TheWorld().kernel.SetWatch([&] {
    if (++asked == 2) throw Enough();
  });
  EXPECT_THROW(Call(), Enough);
  EXPECT_FALSE(machine.FirstFault());
}

TEST_F(MachineTest, RunsRelocatedCodeAtEachBase) {
  // ldr r1, [pc, #12]; ldr r0, [r1]; add r2, r0, #1; str r2, [r1]; bx lr
  ToyImage toy;
  toy.code = {0xE59F100C, 0xE5910000, 0xE2802001, 0xE5812000, 0xE12FFF1E, kWordAddress};
  toy.relocations = {ToyImage::kCode + 0x14};
  toy.word = 7;
  for (const std::uint32_t base : {ToyImage::kBase, kOtherBase}) {
    Make(toy, {.base = base});
    EXPECT_EQ(Call(), 7u);
    EXPECT_EQ(Call(), 8u);
  }
}

TEST_F(MachineTest, ReloadsWithTheDataOfTheFile) {
  ToyImage toy;
  toy.code = {0xE59F100C, 0xE5910000, 0xE2802001, 0xE5812000, 0xE12FFF1E, kWordAddress};
  toy.relocations = {ToyImage::kCode + 0x14};
  toy.word = 7;
  Machine& machine = Make(toy);
  EXPECT_EQ(Call(), 7u);
  machine.Reload();
  EXPECT_EQ(Call(), 7u);
}

TEST_F(MachineTest, NoticesARelocationThatIsLeftOut) {
  ToyImage toy;
  toy.code = {0xE59F100C, 0xE5910000, 0xE2802001, 0xE5812000, 0xE12FFF1E, kWordAddress};
  toy.relocations = {ToyImage::kCode + 0x14};
  Machine& machine = Make(toy, {.base = kOtherBase});
  machine.Reload(0);
  EXPECT_THROW(Call(), harness::ImageFault);
}

TEST_F(MachineTest, KnowsWhichWordsCodeLoaded) {
  ToyImage toy;
  toy.code = {0xE59F100C, 0xE5910000, 0xE2802001, 0xE5812000, 0xE12FFF1E, kWordAddress};
  Machine& machine = Make(toy);
  Call();
  EXPECT_TRUE(machine.Loaded(ToyImage::kCode + 0x14));
  EXPECT_TRUE(machine.Loaded(ToyImage::kWord));
  EXPECT_FALSE(machine.Loaded(ToyImage::kWord + 4));
  machine.ForgetLoads();
  EXPECT_FALSE(machine.Loaded(ToyImage::kWord));
}

TEST_F(MachineTest, RefusesAnImageThatImportsWhatTheSystemLacks) {
  EXPECT_THROW(MakeCallOf({"COREDLL.dll", "CreateWorld"}), BadImage);
  EXPECT_THROW(MakeCallOf({"CEDDK.dll", "", 7}), BadImage);
  EXPECT_THROW(MakeCallOf({"KERNEL32.dll", "Sleep"}), BadImage);
}

TEST_F(MachineTest, RefusesABaseWhereTheImageCannotBe) {
  for (const std::uint32_t base : {0x00000000u, 0x10008000u, 0x3FFFF000u, 0x40000000u}) {
    EXPECT_THROW(MakeCode({0xE12FFF1E}, {.base = base}), BadImage) << std::hex << base;
  }
}

TEST_F(MachineTest, RefusesAnExportThatIsNotThere) {
  EXPECT_THROW(MakeCode({0xE12FFF1E}).AddressOf("Nobody"), BadImage);
}

// ---- Imports ----------------------------------------------------------------------------------

TEST_F(MachineTest, AnswersAnImportThroughThePlatform) {
  MakeCallOf({"COREDLL.dll", "GetTickCount"});
  EXPECT_EQ(Call(), 0u);
  sim::TheWorld().kernel.Idle(123);
  EXPECT_EQ(Call(), 123u);
}

TEST_F(MachineTest, BindsAnImportWhoseAddressStandsAmongConstants) {
  constexpr std::uint32_t kSlot = ToyImage::kTables + 0x7F0;
  ToyImage toy;
  toy.code = kCallImport;
  toy.code.back() = ToyImage::kBase + kSlot;
  toy.imports = {{"COREDLL.dll", "GetTickCount"}};
  std::vector<std::uint8_t> file = toy.Bytes();
  PutWord(file, ToyImage::InFile(ToyImage::kTables) + 16, kSlot);
  Machine machine(PeImage::Parse(file));
  sim::TheWorld().kernel.Idle(123);
  EXPECT_EQ(machine.Call(machine.AddressOf(""), {}), 123u);
}

TEST_F(MachineTest, GivesAnImportItsArguments) {
  MakeCallOf({"COREDLL.dll", "Sleep"}, {.base = kOtherBase});
  Call({250});
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 250u);
}

TEST_F(MachineTest, ShowsAnObserverEachCallAndReturnsWhatItAnswers) {
  Machine& machine = MakeCallOf({"COREDLL.dll", "Sleep"});
  std::vector<std::string> seen;
  machine.Observe([&seen](const SystemCall& call, Cpu& cpu) {
    seen.push_back(call.import.InWords() + ' ' + std::to_string(cpu.Argument(0)));
    return cpu.Argument(0) == 7 ? 42 : call.handler(cpu);
  });
  EXPECT_EQ(Call({7}), 42u);
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 0u);
  EXPECT_EQ(Call({250}), 0u);
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 250u);
  EXPECT_THAT(seen, testing::ElementsAre("coredll.dll Sleep 7", "coredll.dll Sleep 250"));
  machine.Observe(nullptr);
  EXPECT_EQ(Call({7}), 0u);
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 257u);
}

TEST_F(MachineTest, KeepsTheTwoBadHandlesApart) {
  Machine& machine = MakeCallOf({"COREDLL.dll", "CreateFileW"});
  const auto open = [&machine](const char16_t(&name)[6]) {
    const Machine::Lease cpu(machine);
    const std::uint32_t text = cpu->Lend(name, sizeof(name), false, 2);
    const std::array<std::uint32_t, 7> arguments = {text, 0xC0000000, 0, 0, 3, 0, 0};
    // The toy's own frame lies between the arguments on the stack and the import.
    return cpu->Call(kTrapAddress + kTrapBytes, arguments);
  };
  EXPECT_NE(open(u"CAM1:"), 0u);
  sim::TheWorld().drivers.Set("CAM1:", sim::Drivers::State::Absent);
  EXPECT_EQ(open(u"CAM1:"), 0xFFFFFFFFu);
  sim::TheWorld().drivers.Set("CAM1:", sim::Drivers::State::Null);
  EXPECT_EQ(open(u"CAM1:"), 0u);
}

TEST_F(MachineTest, GivesHeapMemoryThatIsAllInBounds) {
  Machine& machine = MakeCallOf({"COREDLL.dll", "LocalAlloc"});
  const std::uint32_t address = Call({0, 24});
  const Machine::Lease cpu(machine);
  EXPECT_NO_THROW(cpu->Write(address, 24));
  EXPECT_THROW(cpu->Write(address, 25), harness::ImageFault);
  EXPECT_THROW(cpu->Read(address - 1, 1), harness::ImageFault);
  EXPECT_EQ(sim::TheWorld().allocations, 1u);
}

TEST_F(MachineTest, HasNoMemoryWhenThePlatformHasNone) {
  MakeCallOf({"COREDLL.dll", "LocalAlloc"});
  sim::TheWorld().faults.Set(sim::Fault::Allocate, true);
  EXPECT_EQ(Call({0, 24}), 0u);
}

TEST_F(MachineTest, ReportsFreeingWhatWasNotAllocated) {
  MakeCallOf({"COREDLL.dll", "LocalFree"});
  EXPECT_EQ(Call({0}), 0u);
  EXPECT_THROW(Call({kHeapAddress}), harness::ImageFault);
}

TEST_F(MachineTest, ReportsAnImportThatIsGivenABadAddress) {
  MakeCallOf({"COREDLL.dll", "OutputDebugStringW"});
  EXPECT_THROW(Call({0}), harness::ImageFault);
  EXPECT_THROW(Call({0x90000000}), harness::ImageFault);
  EXPECT_THROW(Call({kWordAddress + 1}), harness::ImageFault);
  EXPECT_TRUE(sim::TheWorld().trace.Events().empty());
}

TEST_F(MachineTest, ShowsTheThreadsIdentifierInTheKernelsPage) {
  // ldr r1, [pc, #4]; ldr r0, [r1]; bx lr
  MakeCode({0xE59F1004, 0xE5910000, 0xE12FFF1E, kThreadIdAddress});
  EXPECT_EQ(Call(), Plat_CurrentThreadId());
}

// ---- Bus windows ------------------------------------------------------------------------------

// Maps the select window, stores its argument there and loads what is there.
const Code kMapAndStore = {0xE92D4010, 0xE1A04000, 0xE3A00666, 0xE3A01000, 0xE3A02004,
                           0xE3A03000, 0xE59FC018, 0xE59CC000, 0xE1A0E00F, 0xE12FFF1C,
                           0xE5C04000, 0xE5D00000, 0xE8BD4010, 0xE12FFF1E, 0x10002000};

TEST_F(MachineTest, MakesByteAccessesToAWindowBusCycles) {
  ToyImage toy;
  toy.code = kMapAndStore;
  toy.imports = {{"CEDDK.dll", "", 8}};
  Make(toy);
  EXPECT_EQ(Call({0x5A}), 0xFFu);  // nobody drives the select window
  const sim::Trace& trace = sim::TheWorld().trace;
  ASSERT_EQ(trace.Events().size(), 3u);
  EXPECT_NE(trace.As<sim::MapEvent>(trace.Events()[0]), nullptr);
  EXPECT_EQ(trace.Events()[1].kind, sim::Event::Kind::Store);
  EXPECT_EQ(trace.Events()[1].window, sim::BusWindow::Select);
  EXPECT_EQ(trace.Events()[1].value, 0x5A);
  EXPECT_EQ(trace.Events()[2].kind, sim::Event::Kind::Load);
}

TEST_F(MachineTest, ReportsAccessesThroughAWindowThatCouldNotBeMapped) {
  ToyImage toy;
  toy.code = kMapAndStore;
  toy.imports = {{"CEDDK.dll", "", 8}};
  Make(toy);
  sim::TheWorld().faults.Set(sim::Fault::MapSelect, true);
  EXPECT_EQ(Call({0x5A}), 0xFFu);
  EXPECT_EQ(sim::TheWorld().trace.Cycles(), 0u);
  EXPECT_EQ(sim::TheWorld().reports.Count(sim::ReportKind::UnmappedAccess), 2u);
}

// ---- Faults -----------------------------------------------------------------------------------

struct Wrong {
  const char* name;
  Code code;  // called with the address of four lent bytes that may be read
  const char* why;
};

class MachineFault : public MachineTest, public testing::WithParamInterface<Wrong> {};

TEST_P(MachineFault, EndsTheCallAndIsRemembered) {
  Machine& machine = MakeCode(GetParam().code);
  try {
    const Machine::Lease cpu(machine);
    const std::array<std::uint8_t, 4> bytes = {1, 2, 3, 4};
    const std::uint32_t lent = cpu->Lend(bytes.data(), bytes.size(), false, 4);
    cpu->Call(machine.AddressOf(""), std::array<std::uint32_t, 2>{lent, 7});
    FAIL() << "no fault";
  } catch (const harness::ImageFault& fault) {
    EXPECT_THAT(fault.what(), HasSubstr(GetParam().why));
    EXPECT_EQ(machine.FirstFault(), fault.what());
  }
  machine.Reload();
  EXPECT_EQ(machine.FirstFault(), std::nullopt);
}

constexpr std::uint32_t kBxLr = 0xE12FFF1E;

const Wrong kWrongs[] = {
    // sub r0, sp, #7; then ldr or ldrh
    {"UnalignedWord", {0xE24D0007, 0xE5900000, kBxLr}, "an unaligned access of 4 bytes"},
    {"UnalignedHalf", {0xE24D0007, 0xE1D000B0, kBxLr}, "an unaligned access of 2 bytes"},
    {"UnalignedStoreOfAWord", {0xE24D0007, 0xE5801000, kBxLr}, "an unaligned access of 4 bytes"},
    {"UnalignedStoreOfAHalf", {0xE24D0007, 0xE1C010B0, kBxLr}, "an unaligned access of 2 bytes"},
    {"UnalignedSignedHalf", {0xE24D0007, 0xE1D010F0, kBxLr}, "an unaligned access of 2 bytes"},
    {"UnalignedWords", {0xE24D0006, 0xE890000C, kBxLr}, "an unaligned access of 4 bytes"},  // ldm
    {"UnalignedStoreOfWords", {0xE24D0006, 0xE880000C, kBxLr}, "an unaligned access of 4 bytes"},
    {"UnalignedSwap", {0xE24D0006, 0xE1001091, kBxLr}, "an unaligned access of 4 bytes"},  // swp
    {"StoreToCode", {0xE58F0000, kBxLr, 0, 0}, "a store to "},          // str r0, [pc]
    {"LoadFromNowhere", {0xE3A00209, 0xE5900000, kBxLr}, "no memory"},  // mov r0, #0x90000000
    {"LoadBehindTheRecord", {0xE5D00004, kBxLr}, "out of bounds"},      // ldrb r0, [r0, #4]
    {"LoadBeforeTheRecord", {0xE5500001, kBxLr}, "out of bounds"},      // ldrb r0, [r0, #-1]
    {"WordAcrossTheRecordsEnd", {0xE5900004, kBxLr}, "out of bounds"},  // ldr r0, [r0, #4]
    {"StoreToAConstantRecord", {0xE5C01000, kBxLr}, "read-only"},       // strb r1, [r0]
    {"LoadBehindTheCode", {0xE59F0FF0, kBxLr}, "out of bounds"},        // ldr r0, [pc, #0xFF0]
    {"WordFromABusWindow", {0xE3A0020A, 0xE5900000, kBxLr}, "4 bytes at offset 0 of a bus window"},
    {"HalfToABusWindow", {0xE3A0020A, 0xE1C010B0, kBxLr}, "2 bytes at offset 0 of a bus window"},
    {"ByteBesideABusWindow", {0xE3A0020A, 0xE5D00001, kBxLr}, "1 bytes at offset 1"},
    {"WordThroughNull", {0xE3A00000, 0xE5900000, kBxLr}, "4 bytes at offset 0"},
    {"JumpToNull", {0xE3A00000, 0xE12FFF10}, ""},
    {"JumpOutOfTheImage", {0xE3A00209, 0xE12FFF10}, "a jump to 0x90000000"},
    // add r0, pc, #0x1000 or #0x2000: to data, and to constants
    {"JumpIntoData", {0xE28F0A01, 0xE12FFF10}, "a jump to 0x10002008, where memory does not allow"},
    {"JumpIntoConstants", {0xE28F0A02, 0xE12FFF10}, "a jump to 0x10003008, where memory does not"},
    {"StoreToConstants",
     {0xE28F0A02, 0xE5801000, kBxLr},
     "a store to 0x10003008, which is read-only"},
    {"ChangedR4", {0xE3A04000, kBxLr}, "did not keep r4"},
    {"ChangedR11", {0xE3A0B000, kBxLr}, "did not keep r11"},
    {"MovedStackPointer", {0xE24DD004, kBxLr}, "did not keep the stack pointer"},
    {"DeepStack", {0xE24D1A05, 0xE5810000, kBxLr}, "bytes deep"},       // sub r1, sp, #0x5000
    {"StackOverflow", {0xE24D1801, 0xE5810000, kBxLr}, "a store to "},  // sub r1, sp, #0x10000
    {"StoreToTheCallersStack", {0xE58D1000, kBxLr}, "a store to the caller's stack"},  // [sp]
    {"LoadFromTheCallersStack", {0xE5DD0003, kBxLr}, "a load from the caller's stack"},
    {"LoadBelowTheStackPointer", {0xE51D0004, kBxLr}, "a load from 0x6000FFD8, below the stack"},
    {"StoreBelowTheStackPointer", {0xE50D0004, kBxLr}, "a store to 0x6000FFD8, below the stack"},
    {"LoadBehindAPop",
     {0xE92D0003, 0xE8BD0003, 0xE51D0004, kBxLr},
     "a load from 0x6000FFD8, below"},
    // push {r0, r1}; str r0, [sp, #-8]; add sp, sp, #8
    {"StoreBelowAPush",
     {0xE92D0003, 0xE50D0008, 0xE28DD008, kBxLr},
     "a store to 0x6000FFCC, below the stack"},
    // The same with the words of a whole push; and where a branch comes first.
    {"StoresBelowAPush",
     {0xE92D0003, 0xE50D0008, 0xE50D0004, 0xE58D0000, 0xE28DD008, kBxLr},
     "a store to 0x6000FFCC, below the stack"},
    {"StoresBelowAPushBeforeABranch",
     {0xE92D0003, 0xE50D0008, 0xE50D0004, 0xEAFFFFFF, 0xE28DD008, kBxLr},
     "a store to 0x6000FFCC, below the stack"},
    {"CallOfTheKernel", {0xEF000000, kBxLr}, "exception 2"},  // svc 0
    {"UndefinedInstruction", {0xE7F000F0, kBxLr}, ""},
    {"InstructionOfALaterProcessor", {0xE16F0F10, kBxLr}, ""},       // clz r0, r0
    {"CallOfALaterProcessor", {0xE12FFF30, kBxLr}, ""},              // blx r0
    {"PairOfALaterProcessor", {0xE24D0010, 0xE1C020D0, kBxLr}, ""},  // ldrd r2, [r0]
};

INSTANTIATE_TEST_SUITE_P(Codes, MachineFault, testing::ValuesIn(kWrongs),
                         [](const auto& wrong) { return std::string(wrong.param.name); });

TEST_F(MachineTest, RemembersTheDeepestStack) {
  // sub sp, sp, r0; str r0, [sp]; add sp, sp, r0; bx lr
  Machine& machine = MakeCode({0xE04DD000, 0xE58D0000, 0xE08DD000, kBxLr});
  Call({0x100});
  EXPECT_EQ(machine.DeepestStack(), 0x100u);
  Call({0x40});
  EXPECT_EQ(machine.DeepestStack(), 0x100u);
  EXPECT_NO_THROW(Call({0x2000}));
  EXPECT_THROW(Call({0x2004}), harness::ImageFault);
}

TEST_F(MachineTest, LetsAPushStoreBelowTheStackPointerThatItMoves) {
  // push {r0-r3}; str r0, [sp, #-4]!; str r1, [sp, #-8]!; ldr r2, [sp]; add sp, sp, #12;
  // pop {r0-r3}
  MakeCode({0xE92D000F, 0xE52D0004, 0xE52D1008, 0xE59D2000, 0xE28DD00C, 0xE8BD000F, kBxLr});
  EXPECT_EQ(Call({1, 2, 3, 4}), 1u);
}

TEST_F(MachineTest, ReportsWhatTheSystemIsGivenBelowTheStackPointer) {
  // sub r0, sp, #16 and the call of the import, whose text would be there
  Code code = kCallImport;
  code.insert(code.begin() + 1, 0xE24D0010);
  ToyImage toy;
  toy.code = code;
  toy.imports = {{"COREDLL.dll", "OutputDebugStringW"}};
  Make(toy);
  try {
    Call();
    FAIL() << "no fault";
  } catch (const harness::ImageFault& fault) {
    EXPECT_THAT(fault.what(), HasSubstr("the system is told to use 0x6000FFC4, below the stack"));
  }
}

TEST_F(MachineTest, RefusesAFunctionTableThatDoesNotFit) {
  struct Table {
    std::uint32_t address;
    std::uint32_t packed;  // length in instructions from bit 8 on
    bool good;
  };
  for (const Table& table :
       {Table{0x10001000, 0x40000200, true}, Table{0x10001000, 0, false},
        Table{0x10001000, 0x40000300, false}, Table{0x11001000, 0x40000200, false},
        Table{0x10001000, 0x40000202, true}, Table{0x10001000, 0x40000203, false},
        Table{0x10001000, 0x00000200, false}, Table{0x10001002, 0x40000100, false}}) {
    ToyImage toy;
    toy.code = {kBxLr, kBxLr};
    std::vector<std::uint8_t> file = toy.Bytes();
    PutWord(file, ToyImage::kDirectories + 24, ToyImage::kTables + 0x700);
    PutWord(file, ToyImage::kDirectories + 28, 8);
    PutWord(file, ToyImage::InFile(ToyImage::kTables + 0x700), table.address);
    PutWord(file, ToyImage::InFile(ToyImage::kTables + 0x704), table.packed);
    EXPECT_EQ(!Machine(PeImage::Parse(file)).FirstFault(), table.good)
        << std::hex << table.address << ' ' << table.packed;
  }
}

// ---- Threads ----------------------------------------------------------------------------------

// Starts a thread at +0x48 with 7, which sleeps 5 ms, keeps its argument and ends with 9. At +0x80
// a thread that stores to the select window for ever.
const Code kThreads = {0xE92D4010, 0xE24DD008, 0xE3A00000, 0xE58D0000, 0xE58D0004, 0xE3A01000,
                       0xE59F2020, 0xE3A03007, 0xE59FC014, 0xE59CC000, 0xE1A0E00F, 0xE12FFF1C,
                       0xE28DD008, 0xE8BD4010, 0xE12FFF1E, 0x10002000, 0x10001048, 0xE1A00000,
                       0xE92D4010, 0xE1A04000, 0xE3A00005, 0xE59FC01C, 0xE59CC000, 0xE1A0E00F,
                       0xE12FFF1C, 0xE59F1010, 0xE5814000, 0xE3A00009, 0xE8BD4010, 0xE12FFF1E,
                       0x10002008, 0x10002100, 0xE3A0020A, 0xE5C01000, 0xEAFFFFFD};
constexpr std::size_t kProcWord = 16;
constexpr std::uint32_t kEndlessProc = 0x10001080;

class ImageThreadTest : public MachineTest {
 protected:
  Machine& MakeThreads(Code code = kThreads) {
    ToyImage toy;
    toy.code = std::move(code);
    toy.imports = {{"COREDLL.dll", "CreateThread"}, {"COREDLL.dll", "Sleep"}};
    return Make(toy);
  }
  static std::uint32_t KeptWord(Machine& machine) {
    return Machine::Lease(machine)->ReadWord(kWordAddress);
  }
  static sim::Kernel& Kernel() { return sim::TheWorld().kernel; }
};

TEST_F(ImageThreadTest, RunsAThreadOfTheImageInVirtualTime) {
  Machine& machine = MakeThreads();
  const PlatHandle thread = Call();
  std::uint32_t code = 0;
  EXPECT_TRUE(Plat_GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, kPlatStillActive);
  Kernel().Idle(4);
  EXPECT_EQ(KeptWord(machine), 0u);
  Kernel().Idle(2);
  EXPECT_EQ(KeptWord(machine), 7u);
  EXPECT_TRUE(Plat_GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 9u);
}

TEST_F(ImageThreadTest, EndsAThreadThatSleeps) {
  Machine& machine = MakeThreads();
  const PlatHandle thread = Call();
  Kernel().Idle(1);
  EXPECT_TRUE(Plat_TerminateThread(thread, 33));
  Kernel().Idle(10);
  EXPECT_EQ(KeptWord(machine), 0u);
  EXPECT_EQ(Kernel().LiveThreads(), 0u);
  EXPECT_EQ(machine.FirstFault(), std::nullopt);
  // Its processor is free for the next one.
  Call();
  Kernel().Idle(10);
  EXPECT_EQ(KeptWord(machine), 7u);
}

TEST_F(ImageThreadTest, EndsAThreadInTheMiddleOfABusCycle) {
  Code code = kThreads;
  code[kProcWord] = kEndlessProc;
  Machine& machine = MakeThreads(code);
  Plat_MapBusWindow(0x06600000, 4, false);
  const PlatHandle thread = Call();
  Kernel().SetSeed(1);
  Kernel().SetPreemption(4);
  for (int i = 0; i < 20; ++i) Kernel().Idle(1);
  const std::uint64_t cycles = sim::TheWorld().trace.Cycles();
  EXPECT_GT(cycles, 0u);
  EXPECT_TRUE(Plat_TerminateThread(thread, 33));
  Kernel().Idle(10);
  EXPECT_EQ(sim::TheWorld().trace.Cycles(), cycles);
  EXPECT_EQ(machine.FirstFault(), std::nullopt);
}

TEST_F(ImageThreadTest, BringsAFaultOfAThreadToTheHost) {
  Code code = kThreads;
  code[kProcWord] = 0x90000000;
  Machine& machine = MakeThreads(code);
  Call();
  EXPECT_THROW(Kernel().Idle(1), harness::ImageFault);
  EXPECT_NE(machine.FirstFault(), std::nullopt);
}

}  // namespace
}  // namespace emulator
