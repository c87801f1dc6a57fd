// The exports that bind the host window, tell the version and turn the diagnostics on and off.
#include <array>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "report/diagnostics.h"
#include "report/library_state.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"

namespace {

using Strings = std::vector<std::string>;

constexpr PlatWindow kNoWindow = 0x666;  // a handle that is none

class Exports : public test::LibraryTest {
 protected:
  // As in a second process: another one has the library.
  void AttachAsSecondProcess() {
    world().faults.Set(sim::Fault::EventExists, true);
    harness::Entry(1);
    ASSERT_EQ(world().faults.Hits(sim::Fault::EventExists), 1u);
    Mark();
  }
};

// Holds: VexoCtrlSDK.h "A host loads the library"
// Holds: VexoWindow "A window handle of the host (HWND)."
// Holds: VEXOAPI_Initialize "Binds the host window that gets the messages above."
// Holds: VEXOAPI_Initialize "Returns VEXO_OK, or VEXO_ERROR_UNINITIALIZED."
TEST_F(Exports, InitializeBindsTheWindow) {
  harness::Entry(1);
  const PlatWindow window = world().windows.Create();
  EXPECT_EQ(harness::Initialize(window), 0);
  EXPECT_EQ(g_library.g_host_wnd, window);
}

TEST_F(Exports, InitializeMovesToANewWindow) {
  AttachAndBind();
  const PlatWindow window = world().windows.Create();
  EXPECT_EQ(harness::Initialize(window), 0);
  EXPECT_EQ(g_library.g_host_wnd, window);
}

// Holds: Result codes "VEXO_ERROR_UNINITIALIZED: the library is not initialized"
// Holds: VEXOAPI_Initialize "Returns VEXO_OK, or VEXO_ERROR_UNINITIALIZED."
TEST_F(Exports, InitializeBeforeAttachIsRefused) {
  EXPECT_EQ(harness::Initialize(world().windows.Create()), -6);
  EXPECT_EQ(g_library.g_host_wnd, 0u);
}

// Hosts have never seen a failure here; they notice by the -8 of the first command.
// Holds: VEXOAPI_Initialize "A handle that is no window also gives VEXO_OK but binds"
TEST_F(Exports, InitializeWithAnInvalidWindowAnswersDoneAndBindsNothing) {
  harness::Entry(1);
  Mark();
  EXPECT_EQ(harness::Initialize(kNoWindow), 0);
  EXPECT_EQ(Debug(), (Strings{"[VEXOSDK]: ", ">> VEXOAPI_Initialize Invalid window handle \r\n"}));
  EXPECT_EQ(g_library.g_host_wnd, 0u);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), -8);
}

TEST_F(Exports, InitializeWithAnInvalidWindowKeepsTheOneThatIsBound) {
  AttachAndBind();
  const PlatWindow bound = g_library.g_host_wnd;
  for (const PlatWindow window : {PlatWindow{0}, kNoWindow}) {
    EXPECT_EQ(harness::Initialize(window), 0);
    EXPECT_EQ(g_library.g_host_wnd, bound);
  }
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
}

TEST_F(Exports, TheInvalidWindowIsToldAtLevelFour) {
  harness::Entry(1);
  g_debug.level_threshold = 4;
  Mark();
  harness::Initialize(kNoWindow);
  EXPECT_EQ(Debug().size(), 2u);
  g_debug.level_threshold = 5;
  Mark();
  harness::Initialize(kNoWindow);
  EXPECT_EQ(Debug(), Strings{});
}

// Holds: VEXOAPI_Uninitialize "Forgets the host window."
TEST_F(Exports, UninitializeForgetsTheWindowAndNothingElse) {
  AttachAndBind();
  const std::size_t from = world().trace.Mark();
  harness::Uninitialize();
  EXPECT_EQ(g_library.g_host_wnd, 0u);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_EQ(test::Texts(world().trace, from),
            (Strings{"call VEXOAPI_Uninitialize", "return VEXOAPI_Uninitialize"}));
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), -8);
  harness::Initialize(world().windows.Create());
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
}

TEST_F(Exports, UninitializeBeforeAttachDoesNothing) {
  g_library.g_host_wnd = 0x10;
  harness::Uninitialize();
  EXPECT_EQ(g_library.g_host_wnd, 0x10u);
}

// Holds: VEXOAPI_GetVersion "Copies the library's version ("1."
// Holds: VEXOAPI_GetVersion "Returns the length in units without the terminator"
TEST_F(Exports, GetVersionCopiesTheTextWithItsEnd) {
  harness::Entry(1);
  std::array<char16_t, 20> buffer;
  buffer.fill(u'#');
  EXPECT_EQ(VEXOAPI_GetVersion(buffer.data()), 10);
  EXPECT_EQ(std::u16string(buffer.data(), 12), std::u16string(u"1. 0. 1. 6\0#", 12));
}

// Holds: VEXOAPI_GetVersion "Copies the library's version ("1."
TEST_F(Exports, GetVersionWithoutABufferGivesTheLength) {
  harness::Entry(1);
  EXPECT_EQ(VEXOAPI_GetVersion(nullptr), 10);
}

// Holds: VEXOAPI_GetVersion "Returns the length in units without the terminator"
TEST_F(Exports, GetVersionOfALibraryWithoutAVersionCopiesAnEmptyText) {
  world().files.Remove("\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL");
  harness::Entry(1);
  char16_t buffer[20] = u"before";
  EXPECT_EQ(VEXOAPI_GetVersion(buffer), 0);
  EXPECT_EQ(buffer[0], u'\0');
}

// Holds: VEXOAPI_GetVersion "Returns the length in units without the terminator"
TEST_F(Exports, GetVersionBeforeAttachGivesZeroAndWritesNothing) {
  char16_t buffer[20] = u"before";
  g_library.g_version_text[0] = u'9';
  EXPECT_EQ(VEXOAPI_GetVersion(buffer), 0);
  EXPECT_EQ(std::u16string(buffer), u"before");
}

// Holds: VEXOAPI_SetEnableDebug "Turns the levelled diagnostics on (non-zero) or off."
TEST_F(Exports, TheSwitchesTakeAnyValue) {
  harness::Entry(1);
  for (const std::uint32_t value : {0u, 1u, 0xFFFFFFFFu, 0x80000000u}) {
    harness::SetEnableDebug(value);
    harness::SetEnableOutputMsg(~value);
    EXPECT_EQ(g_debug.debug_output, value);
    EXPECT_EQ(g_debug.output_message, ~value);
  }
}

TEST_F(Exports, TheSwitchesDoNothingBeforeAttach) {
  harness::SetEnableDebug(0);
  harness::SetEnableOutputMsg(0);
  EXPECT_EQ(g_debug.debug_output, 1u);
  EXPECT_EQ(g_debug.output_message, 1u);
}

// Holds: Result codes "VEXO_ERROR_UNINITIALIZED: the library is not initialized"
TEST_F(Exports, ASecondProcessIsRefusedByAllOfThem) {
  AttachAsSecondProcess();
  char16_t buffer[20] = u"before";
  EXPECT_EQ(harness::Initialize(world().windows.Create()), -6);
  EXPECT_EQ(g_library.g_host_wnd, 0u);
  EXPECT_EQ(VEXOAPI_GetVersion(buffer), 0);
  EXPECT_EQ(std::u16string(buffer), u"before");
  EXPECT_EQ(harness::TextCommandProc("vexo init"), -6);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), -8);
  harness::SetEnableDebug(0);
  harness::SetEnableOutputMsg(0);
  EXPECT_EQ(g_debug.debug_output, 1u);
  EXPECT_EQ(g_debug.output_message, 1u);
  // Last, because it keeps the lock.
  sim::Bytes mask(24, 0xFF);
  EXPECT_EQ(harness::SetMotionInfo(0, 0, &mask), -6);
}

}  // namespace
