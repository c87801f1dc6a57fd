// What the whole library asks of the system, in order: when it is loaded, binds a host, starts its
// worker, stops it, and goes; and that it gives back what it took.
#include <gmock/gmock.h>

#include "VexoCtrlSDK.h"
#include "tests/device/image/image_fixture.h"

namespace emulator {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr std::uint32_t kLowMemory = 6;
constexpr std::uint32_t kAlreadyExists = 183;

// Texts are in the traces; here they would hide the rest.
const std::set<std::string> kTexts = {"OutputDebugStringW", "_vsnwprintf", "MultiByteToWideChar"};
const std::set<std::string> kMemory = {"LocalAlloc", "LocalFree"};

constexpr const char* kOwnFile = "\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL";

class ImageLife : public ImageTest {
 protected:
  void SetUp() override {
    sim::Files& files = sim::TheWorld().files;
    while (!files.All().empty()) files.Remove(std::string(files.All().begin()->first));
    files.Set(kOwnFile, {.version = {1, 0, 1, 6}});
  }
  std::vector<std::string> Said() {
    std::vector<std::string> texts;
    const sim::Trace& trace = sim::TheWorld().trace;
    for (const sim::Event& event : trace.Events()) {
      if (const auto* text = trace.As<sim::DebugEvent>(event)) texts.push_back(text->text);
    }
    return texts;
  }
};

// ---- Loading and unloading ----------------------------------------------------------------------

TEST_F(ImageLife, BeginsWithTheThreadCallsOfItsOwnModuleTurnedOff) {
  EXPECT_EQ(Entry(kAttach), 1u);
  const std::vector<std::string> calls = record_.Take();
  ASSERT_THAT(calls, Not(IsEmpty()));
  EXPECT_EQ(calls.front(), "DisableThreadLibraryCalls(0x83F00400) = 1");
}

TEST_F(ImageLife, TakesTheSystemsObjectsWindowsAndVersionInOrder) {
  Entry(kAttach);
  EXPECT_THAT(
      record_.TakeOfHost(kTexts),
      ElementsAre("DisableThreadLibraryCalls(0x83F00400) = 1",
                  "CreateMutexW(0, 0, 'CS4_GlobalLock') = mutex1", "SetLastError(0)",
                  "CreateEventW(0, 1, 0, 'VEXOSDK') = event1", "GetLastError() = 0",
                  "MmMapIoSpace(0x06600000, 0, 4, 0) = window1",
                  "MmMapIoSpace(0x06400000, 0, 4, 0) = window2",
                  "MmMapIoSpace(0x06200000, 0, 4, 0) = window3", "RTCNVRAM_Init() = 0",
                  "GetFileVersionInfoSizeW('\\DLL\\VexoCtrlSDK.DLL', &) = 0",
                  "GetFileVersionInfoSizeW('\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL', &) = 756",
                  "LocalAlloc(0, 756) = block1",
                  "GetFileVersionInfoW('\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL', 0, 756, block1) = 1",
                  "VerQueryValueW(block1, '\\', &, &) = 1", "LocalFree(block1) = 0"));
  EXPECT_EQ(Said().back(), ">> VEXO SDK Version : 1. 0. 1. 6\r\n");
}

TEST_F(ImageLife, KnowsItsModuleBeforeItAsksForItsVersion) {
  std::uint32_t module = 0;
  record_.Answer({.name = "GetFileVersionInfoSizeW", .look = [&](const Cpu& cpu) {
                    module = cpu.ReadWord(AddressOf("g_library"));  // its first word
                  }});
  Entry(kAttach);
  EXPECT_EQ(record_.AnswersLeft(), 0u);
  EXPECT_EQ(module, kModule);
}

TEST_F(ImageLife, GoesByClosingTheMarkTheWindowsTheLockAndTheNvramInThisOrder) {
  Entry(kAttach);
  record_.Take();
  EXPECT_EQ(Entry(kDetach), 1u);
  EXPECT_THAT(record_.Take(),
              ElementsAre("CloseHandle(event1) = 1", "MmUnmapIoSpace(window1, 4)",
                          "MmUnmapIoSpace(window2, 4)", "MmUnmapIoSpace(window3, 4)",
                          "CloseHandle(mutex1) = 1", "RTCNVRAM_DeInit() = 0"));
}

TEST_F(ImageLife, OnlySaysThatMemoryIsLow) {
  Entry(kAttach);
  record_.Take();
  EXPECT_EQ(Entry(kLowMemory), 1u);
  EXPECT_THAT(record_.TakeOfHost({"_vsnwprintf"}),
              ElementsAre("OutputDebugStringW('[VexoCtrlSDK]: ')",
                          "OutputDebugStringW('>> DLL_MEMORY_LOW\r\n')"));
}

TEST_F(ImageLife, AsksNothingOfTheSystemForAnyOtherReason) {
  Entry(kAttach);
  record_.Take();
  for (const std::uint32_t reason : {2u, 3u, 7u}) {
    EXPECT_EQ(Entry(reason), 1u);
    EXPECT_THAT(record_.Take(), IsEmpty()) << reason;
  }
}

// The system leaves the last error alone where it makes a new event.
TEST_F(ImageLife, TakesAnOldErrorForNoSecondLoad) {
  sim::TheWorld().kernel.SetLastError(kAlreadyExists);
  record_.Answer({.name = "CreateEventW", .result = 0x4711});
  Entry(kAttach);
  EXPECT_THAT(Said(), Not(testing::Contains(HasSubstr("Already Register"))));
  EXPECT_THAT(record_.Take({"MmMapIoSpace"}), testing::SizeIs(3));
}

// ---- Calls that fail while it is loaded ---------------------------------------------------------

struct Failure {
  const char* name;
  GivenAnswer answer;
  std::vector<std::string> calls;  // from the failing one on
};

class ImageLoad : public ImageLife, public testing::WithParamInterface<Failure> {};

TEST_P(ImageLoad, GoesOnAsFarAsItCanAfterACallThatFails) {
  const Failure& failure = GetParam();
  record_.Answer(failure.answer);
  EXPECT_EQ(Entry(kAttach), 1u);
  EXPECT_EQ(record_.AnswersLeft(), 0u);
  std::vector<std::string> calls = record_.TakeOfHost(kTexts);
  ASSERT_GE(calls.size(), failure.calls.size());
  calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(failure.calls.size()));
  EXPECT_THAT(calls, ElementsAreArray(failure.calls));
  EXPECT_TRUE(machine_.loans.empty());
}

const std::string kSizeOfFirst = "GetFileVersionInfoSizeW('\\DLL\\VexoCtrlSDK.DLL', &) = 0";
const std::string kSize = "GetFileVersionInfoSizeW('\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL', &) = 756";
const std::string kSizeOfLast = "GetFileVersionInfoSizeW('\\Windows\\VexoCtrlSDK.DLL', &) = 0";
const std::string kAllocate = "LocalAlloc(0, 756) = block1";
const std::string kRead =
    "GetFileVersionInfoW('\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL', 0, 756, block1) = ";
const std::string kQuery = "VerQueryValueW(block1, '\\', &, &) = ";
const std::string kFree = "LocalFree(block1) = 0";

const Failure kFailures[] = {
    {"ThreadCalls",
     {.name = "DisableThreadLibraryCalls", .result = 0},
     {"DisableThreadLibraryCalls(0x83F00400) = 0", "CreateMutexW(0, 0, 'CS4_GlobalLock') = mutex1",
      "SetLastError(0)", "CreateEventW(0, 1, 0, 'VEXOSDK') = event1", "GetLastError() = 0",
      "MmMapIoSpace(0x06600000, 0, 4, 0) = window1", "MmMapIoSpace(0x06400000, 0, 4, 0) = window2",
      "MmMapIoSpace(0x06200000, 0, 4, 0) = window3", "RTCNVRAM_Init() = 0", kSizeOfFirst, kSize,
      kAllocate, kRead + '1', kQuery + '1', kFree}},
    {"Mutex",
     {.name = "CreateMutexW", .result = 0},
     {"CreateMutexW(0, 0, 'CS4_GlobalLock') = 0",
      "NKDbgPrintfW('%s', '<VexoCtrlSDK.DLL> Error : Failed to create RTC mutex.\r\n')",
      "SetLastError(0)", "CreateEventW(0, 1, 0, 'VEXOSDK') = event1", "GetLastError() = 0",
      "MmMapIoSpace(0x06600000, 0, 4, 0) = window1", "MmMapIoSpace(0x06400000, 0, 4, 0) = window2",
      "MmMapIoSpace(0x06200000, 0, 4, 0) = window3", "RTCNVRAM_Init() = 0", kSizeOfFirst, kSize,
      kAllocate, kRead + '1', kQuery + '1', kFree}},
    {"EventThatIsOfAnotherProcess",
     {.name = "CreateEventW", .result = 0x4711, .error = kAlreadyExists},
     {"SetLastError(0)", "CreateEventW(0, 1, 0, 'VEXOSDK') = event1", "GetLastError() = 183",
      kSizeOfFirst, kSize, kAllocate, kRead + '1', kQuery + '1', kFree}},
    // It is a mark, no more: the library lives without it.
    {"Event",
     {.name = "CreateEventW", .result = 0, .error = 8},
     {"CreateEventW(0, 1, 0, 'VEXOSDK') = 0", "GetLastError() = 8",
      "MmMapIoSpace(0x06600000, 0, 4, 0) = window1", "MmMapIoSpace(0x06400000, 0, 4, 0) = window2",
      "MmMapIoSpace(0x06200000, 0, 4, 0) = window3", "RTCNVRAM_Init() = 0", kSizeOfFirst, kSize,
      kAllocate, kRead + '1', kQuery + '1', kFree}},
    {"SelectWindow",
     {.name = "MmMapIoSpace", .result = 0},
     {"GetLastError() = 0", "MmMapIoSpace(0x06600000, 0, 4, 0) = 0", kSizeOfFirst, kSize, kAllocate,
      kRead + '1', kQuery + '1', kFree}},
    {"AddressWindow",
     {.name = "MmMapIoSpace", .result = 0, .nth = 2},
     {"MmMapIoSpace(0x06600000, 0, 4, 0) = window1", "MmMapIoSpace(0x06400000, 0, 4, 0) = 0",
      kSizeOfFirst, kSize, kAllocate, kRead + '1', kQuery + '1', kFree}},
    {"DataWindow",
     {.name = "MmMapIoSpace", .result = 0, .nth = 3},
     {"MmMapIoSpace(0x06400000, 0, 4, 0) = window2", "MmMapIoSpace(0x06200000, 0, 4, 0) = 0",
      "RTCNVRAM_Init() = 0", kSizeOfFirst, kSize, kAllocate, kRead + '1', kQuery + '1', kFree}},
    {"Nvram",
     {.name = "RTCNVRAM_Init", .result = 1},
     {"RTCNVRAM_Init() = 1", kSizeOfFirst, kSize, kAllocate, kRead + '1', kQuery + '1', kFree}},
    {"VersionSize",
     {.name = "GetFileVersionInfoSizeW", .result = 0, .nth = 2},
     {kSizeOfFirst, "GetFileVersionInfoSizeW('\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL', &) = 0",
      kSizeOfLast}},
    {"Memory",
     {.name = "LocalAlloc", .result = 0},
     {kSize, "LocalAlloc(0, 756) = 0", "LocalFree(0) = 0"}},
    {"VersionInformation",
     {.name = "GetFileVersionInfoW", .result = 0},
     {kSize, kAllocate, kRead + '0', kFree}},
    {"VersionRoot",
     {.name = "VerQueryValueW", .result = 0},
     {kSize, kAllocate, kRead + '1', kQuery + '0', kFree}},
    {"VersionRootWithoutABlock",
     {.name = "VerQueryValueW", .result = 1, .words = {{2, 0}, {3, 52}}},
     {kSize, kAllocate, kRead + '1', kQuery + '1', kFree}},
};
INSTANTIATE_TEST_SUITE_P(All, ImageLoad, testing::ValuesIn(kFailures),
                         [](const auto& failure) { return std::string(failure.param.name); });

// What was not taken is not given back.
TEST_F(ImageLife, ClosesOnlyWhatItHas) {
  record_.Answer({.name = "CreateMutexW", .result = 0});
  record_.Answer({.name = "CreateEventW", .result = 0, .error = 8});
  record_.Answer({.name = "MmMapIoSpace", .result = 0, .nth = 2});
  Entry(kAttach);
  record_.Take();
  Entry(kDetach);
  EXPECT_THAT(record_.Take(), ElementsAre("MmUnmapIoSpace(window1, 4)", "RTCNVRAM_DeInit() = 0"));
}

// ---- The worker ---------------------------------------------------------------------------------

const std::set<std::string> kThreads = {
    "CreateThread",    "Sleep",       "CeSetThreadQuantum", "GetExitCodeThread",
    "TerminateThread", "CloseHandle", "CreateEventW",       "SetLastError"};

class ImageWorker : public ImageLife {
 protected:
  void SetUp() override {
    ImageLife::SetUp();
    Entry(kAttach);
    Bind();
    record_.Take();
  }
  // Behind what the initialization of the chips asks for.
  std::vector<std::string> SinceTheWorker(std::vector<std::string> calls) {
    const auto first = std::find_if(calls.begin(), calls.end(), [](const std::string& call) {
      return call.starts_with("CreateThread(");
    });
    return {first, calls.end()};
  }
};

TEST_F(ImageWorker, GetsAQuantumOfTwoMillisecondsOnceItHasRun) {
  EXPECT_EQ(Command(VEXO_CMD_INIT), 0u);
  EXPECT_THAT(SinceTheWorker(record_.TakeOfHost(kTexts)),
              ElementsAre("CreateThread(0, 0, &, &, 0, &) = thread1", "Sleep(200)",
                          "CeSetThreadQuantum(thread1, 2) = 1",
                          "CreateFileW('CAM1:', 0xC0000000, 0, 0, 3, 0, 0) = driver2",
                          "DeviceIoControl(driver2, 0x00220860, 0, 0, 0, 0, &, 0) = 1",
                          "CloseHandle(driver2) = 1", "ReleaseMutex(mutex1) = 1"));
}

TEST_F(ImageWorker, IsWaitedForAMillisecondAtATimeAndClosedOnceItHasEnded) {
  Command(VEXO_CMD_INIT);
  sim::TheWorld().kernel.Pump(100);  // the host answers what the worker sends
  record_.Take();
  EXPECT_EQ(Command(VEXO_CMD_STOP_MONITOR), 0u);
  EXPECT_THAT(record_.TakeOfHost(kTexts),
              ElementsAre("WaitForSingleObject(mutex1, 0xFFFFFFFF) = 0",
                          "GetExitCodeThread(thread1, &) = 1", "Sleep(1)",
                          "GetExitCodeThread(thread1, &) = 1", "CloseHandle(thread1) = 1",
                          "ReleaseMutex(mutex1) = 1"));
}

TEST_F(ImageWorker, IsTerminatedAfterTwentyOfThemWhenItDoesNotEnd) {
  Command(VEXO_CMD_INIT);  // it waits for the host, which is here
  record_.Take();
  EXPECT_EQ(Command(VEXO_CMD_STOP_MONITOR), 0u);
  std::vector<std::string> calls = {"WaitForSingleObject(mutex1, 0xFFFFFFFF) = 0"};
  for (int pass = 1; pass <= 20; ++pass) {
    calls.insert(calls.end(), {"GetExitCodeThread(thread1, &) = 1", "Sleep(1)"});
  }
  calls.insert(calls.end(),
               {"GetExitCodeThread(thread1, &) = 1", "TerminateThread(thread1, 0xFFFF0000) = 1",
                "Sleep(1)", "GetExitCodeThread(thread1, &) = 1", "CloseHandle(thread1) = 1",
                "ReleaseMutex(mutex1) = 1"});
  EXPECT_THAT(record_.TakeOfHost(kTexts), ElementsAreArray(calls));
}

TEST_F(ImageWorker, IsClosedAtOnceWhenNothingIsKnownOfIt) {
  Command(VEXO_CMD_INIT);
  record_.Take();
  record_.Answer({.name = "GetExitCodeThread", .result = 0});
  Command(VEXO_CMD_STOP_MONITOR);
  EXPECT_THAT(record_.TakeOfHost(kTexts),
              ElementsAre("WaitForSingleObject(mutex1, 0xFFFFFFFF) = 0",
                          "GetExitCodeThread(thread1, &) = 0", "CloseHandle(thread1) = 1",
                          "ReleaseMutex(mutex1) = 1"));
}

TEST_F(ImageWorker, ThatCannotBeMadeIsToldOfWithTheReasonOfTheCall) {
  record_.Answer({.name = "CreateThread", .result = 0, .error = 5});
  EXPECT_EQ(Command(VEXO_CMD_INIT), 0u);
  const std::vector<std::string> said = Said();
  EXPECT_THAT(said, testing::Contains(HasSubstr("Error Msg : Access is denied.")));
  EXPECT_THAT(SinceTheWorker(record_.TakeOfHost(kTexts)),
              ElementsAre("CreateThread(0, 0, &, &, 0, &) = 0", "GetLastError() = 5",
                          "GetSystemDefaultLangID() = 0xA5A50409",
                          "FormatMessageW(4352, 0, 5, 1033, &, 0, 0) = 19", "LocalFree(text1) = 0",
                          "CreateFileW('CAM1:', 0xC0000000, 0, 0, 3, 0, 0) = driver2",
                          "DeviceIoControl(driver2, 0x00220860, 0, 0, 0, 0, &, 0) = 1",
                          "CloseHandle(driver2) = 1", "ReleaseMutex(mutex1) = 1"));
}

// ---- The video back-end's driver ----------------------------------------------------------------

TEST_F(ImageLife, SendsTheBackEndRequestsWithTheirRecordOrWithNone) {
  Entry(kAttach);
  record_.Take();
  for (const char* line : {"vpb init ", "vpb trans on ", "vpb set_bmpwnd 1 2 ", "vpb uninit "}) {
    EXPECT_EQ(Call("VEXOAPI_TextCommandProc", {Put(std::string(line))}), 0u) << line;
  }
  EXPECT_THAT(record_.Take({"CreateFileW", "DeviceIoControl", "CloseHandle"}),
              ElementsAre("CreateFileW('VBE1:', 0xC0000000, 0, 0, 3, 0, 0) = driver1",
                          "DeviceIoControl(driver1, 0x00224800, 0, 0, 0, 0, &, 0) = 1",
                          "DeviceIoControl(driver1, 0x00224858, &, 8, 0, 0, &, 0) = 1",
                          "CloseHandle(driver1) = 1"));
}

// ---- The heap -----------------------------------------------------------------------------------

struct Operation {
  const char* name;
  std::vector<GivenAnswer> answers;
  std::uint32_t command;  // after an attach; 0: none
  std::vector<std::string> calls;
};

class ImageHeap : public ImageLife, public testing::WithParamInterface<Operation> {};

TEST_P(ImageHeap, HasBackAllThatAnOperationTook) {
  const Operation& operation = GetParam();
  sim::TheWorld().files.Set("\\Windows\\Main.exe", {.version = {1, 0, 0, 0}});
  if (operation.command != 0) {
    Entry(kAttach);
    Bind();
  }
  record_.Take();
  for (const GivenAnswer& answer : operation.answers) record_.Answer(answer);
  if (operation.command != 0) {
    Command(operation.command);
  } else {
    Entry(kAttach);
  }
  EXPECT_EQ(record_.AnswersLeft(), 0u);
  EXPECT_THAT(record_.Take(kMemory), ElementsAreArray(operation.calls));
  EXPECT_TRUE(machine_.loans.empty());
  EXPECT_EQ(sim::TheWorld().allocations, 0u);
}

const Operation kOperations[] = {
    {"Attach", {}, 0, {"LocalAlloc(0, 756) = block1", "LocalFree(block1) = 0"}},
    {"Initialization", {}, VEXO_CMD_INIT, {"LocalAlloc(0, 756) = block2", "LocalFree(block2) = 0"}},
    {"InitializationWithoutTheHostsVersion",
     {{.name = "GetFileVersionInfoW", .result = 0}},
     VEXO_CMD_INIT,
     {"LocalAlloc(0, 756) = block2", "LocalFree(block2) = 0"}},
    {"InitializationWithoutAWorker",
     {{.name = "CreateThread", .result = 0, .error = 5}},
     VEXO_CMD_INIT,
     {"LocalAlloc(0, 756) = block2", "LocalFree(block2) = 0", "LocalFree(text1) = 0"}},
};
INSTANTIATE_TEST_SUITE_P(All, ImageHeap, testing::ValuesIn(kOperations),
                         [](const auto& operation) { return std::string(operation.param.name); });

// ---- The shared word ----------------------------------------------------------------------------

TEST_F(ImageLife, HasOneInTheWordThatProcessesShare) {
  for (const ImageSection& section : machine_.Image().Sections()) {
    if (!section.shared) continue;
    std::uint32_t word = 0;
    const std::vector<std::uint8_t> content = machine_.Image().At(machine_.Base());
    std::memcpy(&word, &content.at(section.rva), sizeof word);
    EXPECT_EQ(word, 1u);
    return;
  }
  FAIL() << "no section is shared";
}

}  // namespace
}  // namespace emulator
