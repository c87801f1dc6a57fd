// What each function of the device's platform layer asks of the system, and what it makes of each
// answer. The system's answers are given here, so that all of them come, also those that no
// simulated board has.
#include <gmock/gmock.h>

#include "tests/device/image/image_fixture.h"

namespace emulator {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

// An argument: a number, or memory with this content, whose words are looked at afterwards.
struct Argument {
  std::uint32_t number = 0;
  std::u16string wide = {};
  std::vector<std::uint32_t> words = {};
};
Argument Number(std::uint32_t number) { return {.number = number}; }
Argument Wide(const std::u16string& text) { return {.wide = text}; }
Argument Words(const std::vector<std::uint32_t>& words) { return {.words = words}; }

// What a place has before a call: the layer writes it, or leaves it alone.
constexpr std::uint32_t kOld = 0xA1B2C3D4;

struct Row {
  const char* name;
  const char* function;
  std::vector<Argument> arguments;
  std::vector<GivenAnswer> answers;  // one for each call of the system
  std::vector<std::string> calls;    // as they are recorded
  std::uint32_t result = 0;
  std::vector<std::uint32_t> words = {};  // of the arguments that are words, afterwards
};

class SystemCalls : public ImageTest, public testing::WithParamInterface<Row> {
 protected:
  std::uint32_t Put(const Argument& argument) {
    if (!argument.wide.empty()) return ImageTest::Put(argument.wide);
    if (!argument.words.empty()) return ImageTest::Put(argument.words);
    return argument.number;
  }
};

TEST_P(SystemCalls, AreMadeAndTheirResultIsGivenBack) {
  const Row& row = GetParam();
  for (const GivenAnswer& answer : row.answers) record_.Answer(answer);
  std::vector<std::uint32_t> arguments;
  for (const Argument& argument : row.arguments) arguments.push_back(Put(argument));
  const std::uint32_t result = Call(row.function, arguments);
  EXPECT_EQ(result, row.result);
  EXPECT_THAT(record_.Take(), ElementsAreArray(row.calls));
  EXPECT_EQ(record_.AnswersLeft(), 0u);
  std::vector<std::uint32_t> words;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    for (std::uint32_t k = 0; k < row.arguments[i].words.size(); ++k) {
      words.push_back(Word(arguments[i] + 4 * k));
    }
  }
  EXPECT_EQ(words, row.words);
}

std::string NameOf(const testing::TestParamInfo<Row>& row) { return row.param.name; }

// ---- Kernel objects -----------------------------------------------------------------------------

const Row kObjectRows[] = {
    {"Mutex",
     "Plat_CreateMutex",
     {Wide(u"a lock")},
     {{.name = "CreateMutexW", .result = 0x4711}},
     {"CreateMutexW(0, 0, 'a lock') = mutex1"},
     0x4711},
    {"NoMutex",
     "Plat_CreateMutex",
     {Wide(u"a lock")},
     {{.name = "CreateMutexW", .result = 0}},
     {"CreateMutexW(0, 0, 'a lock') = 0"},
     0},
    // The last error is cleared first: the system leaves it alone where it makes a new event.
    {"EventWithManualReset",
     "Plat_CreateEvent",
     {Wide(u"a mark"), Number(1), Number(0)},
     {{.name = "CreateEventW", .result = 0x4711}},
     {"SetLastError(0)", "CreateEventW(0, 1, 0, 'a mark') = event1"},
     0x4711},
    {"EventThatIsSignalled",
     "Plat_CreateEvent",
     {Number(0), Number(0), Number(1)},
     {{.name = "CreateEventW", .result = 0x4711}},
     {"SetLastError(0)", "CreateEventW(0, 0, 1, 0) = event1"},
     0x4711},
    {"NoEvent",
     "Plat_CreateEvent",
     {Number(0), Number(0), Number(0)},
     {{.name = "CreateEventW", .result = 0}},
     {"SetLastError(0)", "CreateEventW(0, 0, 0, 0) = 0"},
     0},
    {"Wait",
     "Plat_Wait",
     {Number(0x44), Number(250)},
     {{.name = "WaitForSingleObject", .result = 0x102}},
     {"WaitForSingleObject(68, 250) = 258"},
     0x102},
    {"WaitThatFails",
     "Plat_Wait",
     {Number(0x44), Number(0xFFFFFFFF)},
     {{.name = "WaitForSingleObject", .result = 0xFFFFFFFF}},
     {"WaitForSingleObject(68, 0xFFFFFFFF) = 0xFFFFFFFF"},
     0xFFFFFFFF},
    {"Release",
     "Plat_ReleaseMutex",
     {Number(0x44)},
     {{.name = "ReleaseMutex", .result = 2}},
     {"ReleaseMutex(68) = 2"},
     1},
    {"ReleaseThatFails",
     "Plat_ReleaseMutex",
     {Number(0x44)},
     {{.name = "ReleaseMutex", .result = 0}},
     {"ReleaseMutex(68) = 0"},
     0},
    {"Close",
     "Plat_CloseHandle",
     {Number(0x44)},
     {{.name = "CloseHandle", .result = 2}},
     {"CloseHandle(68) = 2"},
     1},
    {"CloseThatFails",
     "Plat_CloseHandle",
     {Number(0x44)},
     {{.name = "CloseHandle", .result = 0}},
     {"CloseHandle(68) = 0"},
     0},
};
INSTANTIATE_TEST_SUITE_P(Objects, SystemCalls, testing::ValuesIn(kObjectRows), NameOf);

// ---- Threads and time ---------------------------------------------------------------------------

const Row kThreadRows[] = {
    {"Thread",
     "Plat_CreateThread",
     {Number(0x1230), Number(0x4560), Words({kOld})},
     {{.name = "CreateThread", .result = 0x4711, .words = {{5, 0x51}}}},
     {"CreateThread(0, 0, 4656, 17760, 0, &) = thread1"},
     0x4711,
     {0x51}},
    {"NoThread",
     "Plat_CreateThread",
     {Number(0x1230), Number(0x4560), Words({kOld})},
     {{.name = "CreateThread", .result = 0}},
     {"CreateThread(0, 0, 4656, 17760, 0, &) = 0"},
     0,
     {0}},
    {"ExitCode",
     "Plat_GetExitCodeThread",
     {Number(0x44), Words({kOld})},
     {{.name = "GetExitCodeThread", .result = 2, .words = {{1, 259}}}},
     {"GetExitCodeThread(68, &) = 2"},
     1,
     {259}},
    {"NoExitCode",
     "Plat_GetExitCodeThread",
     {Number(0x44), Words({kOld})},
     {{.name = "GetExitCodeThread", .result = 0}},
     {"GetExitCodeThread(68, &) = 0"},
     0,
     {0}},
    {"Terminate",
     "Plat_TerminateThread",
     {Number(0x44), Number(0xFFFF0000)},
     {{.name = "TerminateThread", .result = 2}},
     {"TerminateThread(68, 0xFFFF0000) = 2"},
     1},
    {"TerminateThatFails",
     "Plat_TerminateThread",
     {Number(0x44), Number(1)},
     {{.name = "TerminateThread", .result = 0}},
     {"TerminateThread(68, 1) = 0"},
     0},
    {"Quantum",
     "Plat_SetThreadQuantum",
     {Number(0x44), Number(2)},
     {{.name = "CeSetThreadQuantum", .result = 2}},
     {"CeSetThreadQuantum(68, 2) = 2"},
     1},
    {"QuantumThatFails",
     "Plat_SetThreadQuantum",
     {Number(0x44), Number(2)},
     {{.name = "CeSetThreadQuantum", .result = 0}},
     {"CeSetThreadQuantum(68, 2) = 0"},
     0},
    {"Sleep", "Plat_Sleep", {Number(200)}, {{.name = "Sleep"}}, {"Sleep(200)"}, 0},
    {"TickCount",
     "Plat_TickCount",
     {},
     {{.name = "GetTickCount", .result = 0x80000001}},
     {"GetTickCount() = 0x80000001"},
     0x80000001},
    {"LastError",
     "Plat_LastError",
     {},
     {{.name = "GetLastError", .result = 0x80000001}},
     {"GetLastError() = 0x80000001"},
     0x80000001},
};
INSTANTIATE_TEST_SUITE_P(Threads, SystemCalls, testing::ValuesIn(kThreadRows), NameOf);

// ---- Window messages ----------------------------------------------------------------------------

const Row kWindowRows[] = {
    {"Window",
     "Plat_IsWindow",
     {Number(0x44)},
     {{.name = "IsWindow", .result = 2}},
     {"IsWindow(68) = 2"},
     1},
    {"NoWindow",
     "Plat_IsWindow",
     {Number(0x44)},
     {{.name = "IsWindow", .result = 0}},
     {"IsWindow(68) = 0"},
     0},
    {"Send",
     "Plat_SendMessage",
     {Number(0x44), Number(0x2403), Number(3), Number(4), Number(5000)},
     {{.name = "SendMessageTimeout", .result = 2, .words = {{6, 7}}}},
     {"SendMessageTimeout(68, 9219, 3, 4, 0, 5000, &) = 2"},
     1},
    {"SendThatFails",
     "Plat_SendMessage",
     {Number(0x44), Number(0x2403), Number(3), Number(4), Number(5000)},
     {{.name = "SendMessageTimeout", .result = 0}},
     {"SendMessageTimeout(68, 9219, 3, 4, 0, 5000, &) = 0"},
     0},
    {"Post",
     "Plat_PostMessage",
     {Number(0x44), Number(0x2403), Number(3), Number(4)},
     {{.name = "PostMessageW", .result = 2}},
     {"PostMessageW(68, 9219, 3, 4) = 2"},
     1},
    {"PostThatFails",
     "Plat_PostMessage",
     {Number(0x44), Number(0x2403), Number(3), Number(4)},
     {{.name = "PostMessageW", .result = 0}},
     {"PostMessageW(68, 9219, 3, 4) = 0"},
     0},
};
INSTANTIATE_TEST_SUITE_P(Windows, SystemCalls, testing::ValuesIn(kWindowRows), NameOf);

// ---- Bus windows, NVRAM, drivers ----------------------------------------------------------------

const Row kDeviceRows[] = {
    {"Map",
     "Plat_MapBusWindow",
     {Number(0x06600000), Number(4), Number(0)},
     {{.name = "MmMapIoSpace", .result = 0xA0000000}},
     {"MmMapIoSpace(0x06600000, 0, 4, 0) = window1"},
     0xA0000000},
    {"MapCached",
     "Plat_MapBusWindow",
     {Number(0x06600000), Number(4), Number(1)},
     {{.name = "MmMapIoSpace", .result = 0xA0000000}},
     {"MmMapIoSpace(0x06600000, 0, 4, 1) = window1"},
     0xA0000000},
    {"MapThatFails",
     "Plat_MapBusWindow",
     {Number(0x06600000), Number(4), Number(0)},
     {{.name = "MmMapIoSpace", .result = 0}},
     {"MmMapIoSpace(0x06600000, 0, 4, 0) = 0"},
     0},
    {"Unmap",
     "Plat_UnmapBusWindow",
     {Number(0xA0000000), Number(4)},
     {{.name = "MmUnmapIoSpace"}},
     {"MmUnmapIoSpace(0xA0000000, 4)"},
     0},
    {"NvramInit",
     "Plat_NvramInit",
     {},
     {{.name = "RTCNVRAM_Init", .result = 7}},
     {"RTCNVRAM_Init() = 7"},
     7},
    {"NvramRead",
     "Plat_NvramRead",
     {Number(1), Number(0x4560)},
     {{.name = "RTCNVRAM_Read", .result = 7}},
     {"RTCNVRAM_Read(1, 17760) = 7"},
     7},
    {"NvramWrite",
     "Plat_NvramWrite",
     {Number(1), Number(0x4560)},
     {{.name = "RTCNVRAM_Write", .result = 7}},
     {"RTCNVRAM_Write(1, 17760) = 7"},
     7},
    {"NvramDeinit",
     "Plat_NvramDeinit",
     {},
     {{.name = "RTCNVRAM_DeInit", .result = 7}},
     {"RTCNVRAM_DeInit() = 7"},
     7},
    {"OpenDriver",
     "Plat_OpenDriver",
     {Wide(u"CAM1:"), Number(0xC0000000), Number(1), Number(3)},
     {{.name = "CreateFileW", .result = 0x4711}},
     {"CreateFileW('CAM1:', 0xC0000000, 1, 0, 3, 0, 0) = driver1"},
     0x4711},
    {"OpenDriverThatFails",
     "Plat_OpenDriver",
     {Wide(u"CAM1:"), Number(0xC0000000), Number(0), Number(3)},
     {{.name = "CreateFileW", .result = 0xFFFFFFFF}},
     {"CreateFileW('CAM1:', 0xC0000000, 0, 0, 3, 0, 0) = 0xFFFFFFFF"},
     0xFFFFFFFF},
    {"ControlDriver",
     "Plat_ControlDriver",
     {Number(0x44), Number(0x220860), Number(0x4560), Number(12)},
     {{.name = "DeviceIoControl", .result = 2, .words = {{6, 0}}}},
     {"DeviceIoControl(68, 0x00220860, 17760, 12, 0, 0, &, 0) = 2"},
     1},
    {"ControlDriverThatFails",
     "Plat_ControlDriver",
     {Number(0x44), Number(0x220860), Number(0), Number(0)},
     {{.name = "DeviceIoControl", .result = 0}},
     {"DeviceIoControl(68, 0x00220860, 0, 0, 0, 0, &, 0) = 0"},
     0},
    {"CloseDriver",
     "Plat_CloseDriver",
     {Number(0x44)},
     {{.name = "CloseHandle", .result = 2}},
     {"CloseHandle(68) = 2"},
     1},
    {"CloseDriverThatFails",
     "Plat_CloseDriver",
     {Number(0xFFFFFFFF)},
     {{.name = "CloseHandle", .result = 0}},
     {"CloseHandle(0xFFFFFFFF) = 0"},
     0},
};
INSTANTIATE_TEST_SUITE_P(Devices, SystemCalls, testing::ValuesIn(kDeviceRows), NameOf);

// ---- Version resources, memory, modules ---------------------------------------------------------

const Row kModuleRows[] = {
    {"VersionSize",
     "Plat_VersionInfoSize",
     {Wide(u"\\A.DLL")},
     {{.name = "GetFileVersionInfoSizeW", .result = 0x2F4, .words = {{1, 0}}}},
     {"GetFileVersionInfoSizeW('\\A.DLL', &) = 756"},
     0x2F4},
    {"NoVersionSize",
     "Plat_VersionInfoSize",
     {Wide(u"\\A.DLL")},
     {{.name = "GetFileVersionInfoSizeW", .result = 0}},
     {"GetFileVersionInfoSizeW('\\A.DLL', &) = 0"},
     0},
    {"ReadVersion",
     "Plat_ReadVersionInfo",
     {Wide(u"\\A.DLL"), Number(756), Number(0x4560)},
     {{.name = "GetFileVersionInfoW", .result = 1}},
     {"GetFileVersionInfoW('\\A.DLL', 0, 756, 17760) = 1"},
     1},
    {"ReadVersionThatFails",
     "Plat_ReadVersionInfo",
     {Wide(u"\\A.DLL"), Number(756), Number(0x4560)},
     {{.name = "GetFileVersionInfoW", .result = 0}},
     {"GetFileVersionInfoW('\\A.DLL', 0, 756, 17760) = 0"},
     0},
    {"ReadVersionThatGivesAnythingButOne",
     "Plat_ReadVersionInfo",
     {Wide(u"\\A.DLL"), Number(756), Number(0x4560)},
     {{.name = "GetFileVersionInfoW", .result = 2}},
     {"GetFileVersionInfoW('\\A.DLL', 0, 756, 17760) = 2"},
     0},
    {"Allocate",
     "Plat_Allocate",
     {Number(756)},
     {{.name = "LocalAlloc", .result = 0x4710}},
     {"LocalAlloc(0, 756) = block1"},
     0x4710},
    {"NoMemory",
     "Plat_Allocate",
     {Number(756)},
     {{.name = "LocalAlloc", .result = 0}},
     {"LocalAlloc(0, 756) = 0"},
     0},
    {"Free", "Plat_Free", {Number(0x4710)}, {{.name = "LocalFree"}}, {"LocalFree(18192) = 0"}, 0},
    {"DataModule",
     "Plat_LoadDataModule",
     {Wide(u"netmsg.dll")},
     {{.name = "LoadLibraryExW", .result = 0x4711}},
     {"LoadLibraryExW('netmsg.dll', 0, 1) = module1"},
     0x4711},
    {"NoDataModule",
     "Plat_LoadDataModule",
     {Wide(u"netmsg.dll")},
     {{.name = "LoadLibraryExW", .result = 0}},
     {"LoadLibraryExW('netmsg.dll', 0, 1) = 0"},
     0},
};
INSTANTIATE_TEST_SUITE_P(Modules, SystemCalls, testing::ValuesIn(kModuleRows), NameOf);

// ---- Calls without a result of ours -------------------------------------------------------------

struct Effect {
  const char* name;
  const char* function;
  Argument argument;
  GivenAnswer answer;
  const char* call;
};

class SystemEffects : public ImageTest, public testing::WithParamInterface<Effect> {};

TEST_P(SystemEffects, AreAskedForOnce) {
  const Effect& effect = GetParam();
  record_.Answer(effect.answer);
  Call(effect.function,
       {effect.argument.wide.empty() ? effect.argument.number : Put(effect.argument.wide)});
  EXPECT_THAT(record_.Take(), ElementsAre(effect.call));
}

const Effect kEffects[] = {
    {"ThreadCallsOff",
     "Plat_DisableThreadCalls",
     Number(0x44),
     {.name = "DisableThreadLibraryCalls", .result = 1},
     "DisableThreadLibraryCalls(68) = 1"},
    {"FreeModule",
     "Plat_FreeModule",
     Number(0x44),
     {.name = "FreeLibrary", .result = 1},
     "FreeLibrary(68) = 1"},
    {"FreeSystemText",
     "Plat_FreeSystemText",
     Number(0x4710),
     {.name = "LocalFree"},
     "LocalFree(18192) = 0"},
    {"DebugOutput",
     "Plat_DebugOutput",
     Wide(u"a %s text"),
     {.name = "OutputDebugStringW"},
     "OutputDebugStringW('a %s text')"},
    // What is in the text is no format.
    {"KernelDebugOutput",
     "Plat_KernelDebugOutput",
     Wide(u"a %s text"),
     {.name = "NKDbgPrintfW"},
     "NKDbgPrintfW('%s', 'a %s text')"},
};
INSTANTIATE_TEST_SUITE_P(All, SystemEffects, testing::ValuesIn(kEffects),
                         [](const auto& effect) { return std::string(effect.param.name); });

TEST_F(ImageTest, KnowsItsThreadWithoutACall) {
  EXPECT_EQ(Call("Plat_CurrentThreadId"), Plat_CurrentThreadId());
  EXPECT_THAT(record_.Take(), ElementsAre());
}

}  // namespace
}  // namespace emulator
