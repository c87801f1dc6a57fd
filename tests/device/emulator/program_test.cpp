// What programs of a card do: second processes, files, memory, time.
#include "device/emulator/program.h"

#include <gmock/gmock.h>

#include "tests/device/emulator/device_fixture.h"

namespace emulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using ProgramTest = DeviceTest;

// ---- Processes ---------------------------------------------------------------------------------

// A library with a word, which its entry counts up at each attach; Value gives it.
ToyProgram Counter(bool shared) {
  ToyProgram library(false);
  library.Image().shared_data = shared;
  const std::uint32_t count = library.Word();
  library.Begin();
  library.Count(count);
  library.Return(Number(1));
  library.Export("Value", library.Begin());
  library.Return(WordAt(count));
  return library;
}

// Loads the counter, and then starts B.exe, which loads it too; returns the exit code of B.exe,
// which is the value that it found.
void PutTwoPrograms(ToyProgram& first, ToyProgram& second) {
  const std::uint32_t name = first.Text(u"\\B.exe");
  const std::uint32_t line = first.Text(u"second");
  const std::uint32_t information = first.Room(16);
  const std::uint32_t code = first.Word();
  first.Image().imports = {{"Counter.dll", "Value"}};
  first.Begin();
  first.Call("CreateProcessW",
             {AddressOf(name), AddressOf(line), Number(0), Number(0), Number(0), Number(0),
              Number(0), Number(0), Number(0), AddressOf(information)});
  first.Call("WaitForSingleObject", {WordAt(information), Number(0xFFFFFFFF)});
  first.Call("GetExitCodeProcess", {WordAt(information), AddressOf(code)});
  first.Return(WordAt(code));
  const std::uint32_t value = second.Word();
  second.Begin();
  second.Call("OutputDebugStringW", {Given(2)});
  second.Call("Sleep", {Number(100)});
  second.Call("Value", {}, value, "Counter.dll");
  second.Return(WordAt(value));
}

TEST_F(ProgramTest, GivesASecondProcessItsOwnCopyOfALibrarysData) {
  ToyProgram first;
  ToyProgram second;
  PutTwoPrograms(first, second);
  Put("A.exe", first);
  Put("B.exe", second);
  Put("Counter.dll", Counter(false));
  EXPECT_EQ(Run(), 1u);
  EXPECT_THAT(Said(), ElementsAre("second"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 100u);
}

TEST_F(ProgramTest, SharesAnImagesSharedSectionBetweenProcesses) {
  ToyProgram first;
  ToyProgram second;
  PutTwoPrograms(first, second);
  Put("A.exe", first);
  Put("B.exe", second);
  // The addresses of imports would be shared too: this library has none.
  Put("Counter.dll", Counter(true));
  EXPECT_EQ(Run(), 2u);
  EXPECT_EQ(Run("A.exe", {.unshared = true}), 1u);
}

TEST_F(ProgramTest, TellsThatASecondProgramIsNotThere) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"\\B.exe");
  const std::uint32_t error = program.Word();
  program.Begin();
  program.Call("CreateProcessW", {AddressOf(name), Number(0), Number(0), Number(0), Number(0),
                                  Number(0), Number(0), Number(0), Number(0), Number(0)});
  program.Call("GetLastError", {}, error);
  program.Return(WordAt(error));
  Put("A.exe", program);
  EXPECT_EQ(Run(), kErrorFileNotFound);
}

TEST_F(ProgramTest, EndsItselfAtOnceAndCallsNoEntry) {
  ToyProgram program;
  program.Image().imports = {{"B.dll", "Nothing"}};
  program.Begin();
  program.Call("TerminateProcess", {Number(0x42), Number(9)});
  program.Return(Number(0));
  Put("A.exe", program);
  ToyProgram library = Library(u"B");
  library.Export("Nothing", ToyImage::kCode);
  Put("B.dll", library);
  EXPECT_EQ(Run(), 9u);
  EXPECT_THAT(Said(), ElementsAre("B attach"));
}

TEST_F(ProgramTest, ClosesWhatAProcessHasOpenAndEndsItsThreadsWithIt) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"a name");
  const std::uint32_t thread = ToyImage::kCode + 0x800;
  program.Begin();
  program.Call("CreateEventW", {Number(0), Number(1), Number(0), AddressOf(name)});
  program.Call("CreateMutexW", {Number(0), Number(0), Number(0)});
  program.Call("CreateThread",
               {Number(0), Number(0), AddressOf(thread), Number(0), Number(0), Number(0)});
  program.Call("Sleep", {Number(10)});
  program.Return(Number(0));
  program.Image().code.resize(0x800 / 4);
  program.Begin();
  program.Call("Sleep", {Number(0xFFFFFFFF)});
  program.Return(Number(0));
  Put("A.exe", program);
  EXPECT_EQ(Run(), 0u);
  EXPECT_EQ(sim::TheWorld().kernel.OpenHandles(), 0u);
  EXPECT_EQ(sim::TheWorld().kernel.LiveThreads(), 0u);
}

TEST_F(ProgramTest, TellsLibrariesOfThreadsUnlessTheyTurnThatOff) {
  const auto run = [this](bool off) {
    ToyProgram program;
    program.Image().imports = {{"B.dll", "Nothing"}};
    const std::uint32_t thread = program.Word();
    program.Begin();
    const std::uint32_t body = ToyImage::kCode + 0x800;
    program.Call("CreateThread",
                 {Number(0), Number(0), AddressOf(body), Number(0), Number(0), Number(0)}, thread);
    program.Call("WaitForSingleObject", {WordAt(thread), Number(0xFFFFFFFF)});
    program.Return(Number(0));
    program.Image().code.resize(0x800 / 4);
    program.Begin();
    program.Return(Number(0));
    Put("A.exe", program);
    ToyProgram library(false);
    const std::uint32_t texts = library.Texts({u"detach", u"attach", u"thread", u"thread end"});
    library.Begin();
    if (off) library.Call("DisableThreadLibraryCalls", {Given(0)});
    library.Say(texts, Given(1));
    library.Return(Number(1));
    library.Export("Nothing", ToyImage::kCode);
    Put("B.dll", library);
    Run();
    return Said();
  };
  EXPECT_THAT(run(false), ElementsAre("attach", "thread", "thread end", "detach"));
  EXPECT_THAT(run(true), ElementsAre("attach", "detach"));
}

TEST_F(ProgramTest, EndsARunThatDoesWhatNoProgramMay) {
  ToyProgram program;
  program.Begin();
  program.Store(ToyImage::kCode, Number(1));
  program.Return(Number(0));
  Put("A.exe", program);
  EXPECT_THROW(Run(), harness::ImageFault);
}

TEST_F(ProgramTest, RefusesADriversRecordThatIsNotOfWords) {
  for (const std::uint32_t misalign : {0u, 2u}) {
    ToyProgram program;
    const std::uint32_t name = program.Text(u"VBE1:");
    const std::uint32_t record = program.Room(16) + misalign;
    const std::uint32_t driver = program.Word();
    program.Begin();
    program.Call("CreateFileW",
                 {AddressOf(name), Number(0xC0000000), Number(0), Number(0), Number(3), Number(0),
                  Number(0)},
                 driver);
    program.Call("DeviceIoControl", {WordAt(driver), Number(1), AddressOf(record), Number(8),
                                     Number(0), Number(0), AddressOf(driver), Number(0)});
    program.Return(Number(0));
    Put("A.exe", program);
    if (misalign == 0) {
      EXPECT_EQ(Run(), 0u);
    } else {
      EXPECT_THROW(Run(), harness::ImageFault);
    }
  }
}

// ---- Files -------------------------------------------------------------------------------------

constexpr std::uint32_t kRead = 0x80000000;
constexpr std::uint32_t kWrite = 0x40000000;

TEST_F(ProgramTest, WritesAFileThatIsThereAtOnceAndReadsItBack) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"\\Log.txt");
  const std::uint32_t text = program.Text(u"ab");
  const std::uint32_t room = program.Room(16);
  const std::uint32_t handle = program.Word();
  const std::uint32_t count = program.Word();
  program.Begin();
  const auto open = [&](std::uint32_t access, std::uint32_t disposition) {
    program.Call("CreateFileW",
                 {AddressOf(name), Number(access), Number(0), Number(0), Number(disposition),
                  Number(0), Number(0)},
                 handle);
  };
  open(kWrite, 2);
  program.Call("WriteFile",
               {WordAt(handle), AddressOf(text), Number(4), AddressOf(count), Number(0)});
  program.Call("FlushFileBuffers", {WordAt(handle)});
  program.Call("CloseHandle", {WordAt(handle)});
  open(kRead, 3);
  program.Call("GetFileSize", {WordAt(handle), Number(0)}, count);
  program.Call("ReadFile",
               {WordAt(handle), AddressOf(room), Number(16), AddressOf(count), Number(0)});
  program.Call("CloseHandle", {WordAt(handle)});
  program.Call("OutputDebugStringW", {AddressOf(room)});
  program.Return(WordAt(count));
  Put("A.exe", program);
  EXPECT_EQ(Run(), 4u);
  EXPECT_EQ(Content("Log.txt"), std::string("a\0b\0", 4));
  EXPECT_THAT(Said(), ElementsAre("ab"));
}

TEST_F(ProgramTest, TellsWhyAFileCannotBeOpened) {
  const auto error = [this](const std::u16string& path, std::uint32_t disposition) {
    ToyProgram program;
    const std::uint32_t name = program.Text(path);
    const std::uint32_t word = program.Word();
    program.Begin();
    program.Call("CreateFileW", {AddressOf(name), Number(kRead), Number(0), Number(0),
                                 Number(disposition), Number(0), Number(0)});
    program.Call("GetLastError", {}, word);
    program.Return(WordAt(word));
    Put("A.exe", program);
    return Run();
  };
  EXPECT_EQ(error(u"\\nobody.txt", 3), 2u);
  EXPECT_EQ(error(u"\\nowhere\\a.txt", 3), 3u);
  EXPECT_EQ(error(u"\\..\\a.txt", 4), 3u);
  EXPECT_EQ(error(u"\\a.EXE", 1), 80u);
  EXPECT_EQ(error(u"\\a.exe", 9), 87u);
  EXPECT_EQ(error(u"\\a.exe", 3), 0u);
}

// ---- Memory -----------------------------------------------------------------------------------

// The record of a message lies on its sender's stack, which the window's thread reads.
TEST_F(ProgramTest, LetsAThreadSeeTheStackOfAnother) {
  ToyProgram program;
  const std::uint32_t place = program.Word();
  const std::uint32_t thread = ToyImage::kCode + 0x800;
  program.Begin();
  program.Call("CreateThread",
               {Number(0), Number(0), AddressOf(thread), Number(0), Number(0), Number(0)});
  program.Call("Sleep", {Number(10)});
  program.StoreByte(place, 7);
  program.Call("memcpy", {AddressOf(place), WordAt(place), Number(1)});
  program.Return(WordAt(place));
  program.Image().code.resize(0x800 / 4);
  program.Begin();
  program.Image().code.push_back(0xE24DD010);  // sub sp, sp, #16
  program.Image().code.push_back(0xE1A0400D);  // mov r4, sp
  program.Store(place, Given(0));
  program.Call("Sleep", {Number(1000)});
  program.Image().code.push_back(0xE28DD010);  // add sp, sp, #16
  program.Return(Number(0));
  Put("A.exe", program);
  EXPECT_EQ(Run() & 0xFF, 7u);
}

// ---- Time --------------------------------------------------------------------------------------

TEST_F(ProgramTest, TellsTimeInMicroseconds) {
  ToyProgram program;
  const std::uint32_t counter = program.Room(8);
  program.Begin();
  program.Call("Sleep", {Number(7)});
  program.Call("QueryPerformanceCounter", {AddressOf(counter)});
  program.Return(WordAt(counter));
  Put("A.exe", program);
  EXPECT_EQ(Run(), 7000u);
}

TEST_F(ProgramTest, LetsTimePassWithEachBusCycleWhenToldHowLongItIs) {
  ToyProgram program;
  program.Image().imports = {{"CEDDK.dll", "", 8}};
  const std::uint32_t counter = program.Room(8);
  const std::uint32_t window = program.Word();
  program.Begin();
  program.CallWord(ToyImage::kData, {Number(0x06200000), Number(0), Number(1), Number(0)}, window);
  for (int cycle = 0; cycle < 30; ++cycle) program.StoreByte(window, 0xFF);
  program.Call("QueryPerformanceCounter", {AddressOf(counter)});
  program.Return(WordAt(counter));
  Put("A.exe", program);
  EXPECT_EQ(Run(), 0u);
  cycle_ns_ = 50'000;
  EXPECT_EQ(Run(), 1500u);
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 1u);
}

TEST_F(ProgramTest, HasTheStackThatItsHeaderAsksFor) {
  constexpr std::size_t kStackReserve = ToyImage::kOptional + 72;
  constexpr std::size_t kStackCommit = ToyImage::kOptional + 76;
  ToyProgram program;
  program.Begin();
  // sub sp, sp, #0x2000; str r0, [sp]; add sp, sp, #0x2000
  for (const std::uint32_t code : {0xE24DDA02u, 0xE58D0000u, 0xE28DDA02u}) {
    program.Image().code.push_back(code);
  }
  program.Return(Number(3));
  std::vector<std::uint8_t> file = program.Bytes();
  for (const std::uint32_t enough : {0u, 0x4000u, 0x10000u}) {
    PutWord(file, kStackReserve, enough);
    Put("A.exe", file);
    EXPECT_EQ(Run(), 3u) << enough;
  }
  const auto refusal = [&](std::uint32_t reserve, std::uint32_t commit) -> std::string {
    PutWord(file, kStackReserve, reserve);
    PutWord(file, kStackCommit, commit);
    Put("A.exe", file);
    try {
      return "ended with " + std::to_string(Run());
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  };
  EXPECT_THAT(refusal(0x2000, 0x1000), HasSubstr("bytes deep, of 8192"));
  EXPECT_THAT(refusal(0x11000, 0x1000), HasSubstr("wants a stack of 69632 bytes"));
  EXPECT_THAT(refusal(0x1000, 0x2000), HasSubstr("more stack at once than at all"));
}

}  // namespace
}  // namespace emulator
