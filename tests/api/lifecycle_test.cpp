// Attach and detach: what the library takes from the platform, in which order, and gives back.
#include "api/lifecycle.h"

#include <ctime>

#include "VexoCtrlSDK.h"
#include "api/worker.h"
#include "chip/register_bus.h"
#include "harness/host.h"
#include "report/diagnostics.h"
#include "report/library_state.h"
#include "tests/api/trace_lines.h"
#include "tests/support/at_events.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;

constexpr const char* kDllPath = "\\DLL\\VexoCtrlSDK.DLL";
constexpr const char* kFlashPath = "\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL";
constexpr const char* kWindowsPath = "\\Windows\\VexoCtrlSDK.DLL";
constexpr const char* kPlain = "debug [VexoCtrlSDK]: ";
constexpr const char* kLevel = "debug [VEXOSDK]: ";

class Lifecycle : public test::LibraryTest {
 protected:
  // The events between call and return of the entry.
  Lines EntryLines(std::uint32_t reason) {
    const std::size_t from = world().trace.Mark();
    EXPECT_EQ(harness::Entry(reason), 1);
    Lines lines = test::Texts(world().trace, from);
    EXPECT_EQ(lines.front(), "call DllMain");
    EXPECT_EQ(lines.back(), "return DllMain 1");
    return {lines.begin() + 1, lines.end() - 1};
  }
  // The same without the build banner.
  Lines AttachLines() {
    Lines lines = EntryLines(1);
    return {lines.begin() + 2, lines.end()};
  }
  Lines Maps() { return test::Texts(world().trace, 0, "map "); }
};

// ---- Attach ----------------------------------------------------------------------------------

TEST_F(Lifecycle, AtLoadNothingIsSet) {
  EXPECT_EQ(g_library.g_module, 0u);
  EXPECT_EQ(g_library.g_initialized, 0u);
  EXPECT_EQ(g_library.g_host_wnd, 0u);
  EXPECT_EQ(g_library.g_cs4_lock, 0u);
  EXPECT_EQ(g_library.g_instance_event, 0u);
  for (const char16_t unit : g_library.g_version_text) EXPECT_EQ(unit, u'\0');
}

TEST_F(Lifecycle, AttachMapsTheWindowsInOrderAndTellsItsVersion) {
  EXPECT_EQ(AttachLines(),
            (Lines{"map 06600000 4 uncached", "map 06400000 4 uncached", "map 06200000 4 uncached",
                   "nvram init", kPlain, "debug >> VEXO SDK Version : 1. 0. 1. 6\\r\\n"}));
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_NE(g_library.g_module, 0u);
  EXPECT_EQ(g_library.g_host_wnd, 0u);
  EXPECT_EQ(world().thread_calls_off, 1u);
  EXPECT_EQ(world().kernel.OpenHandles(), 2u);  // the lock and the event
  EXPECT_FALSE(world().kernel.MutexHeld(u"CS4_GlobalLock"));
}

TEST_F(Lifecycle, AttachBeginsWithTheBuildBanner) {
  harness::Entry(1);
  ASSERT_GE(Debug().size(), 2u);
  EXPECT_EQ(Debug()[0], "[VexoCtrlSDK]: ");
  const std::string banner = Debug()[1];
  std::tm built = {};
  const char* end = strptime(banner.c_str(), ">> build : %b %e %Y %H:%M:%S", &built);
  ASSERT_NE(end, nullptr) << banner;
  EXPECT_STREQ(end, "\r\n");
  EXPECT_EQ(banner.size(), std::string(">> build : Feb  9 2009 20:43:38\r\n").size());
}

TEST_F(Lifecycle, AttachMakesTheNamedObjects) {
  harness::Entry(1);
  // Asking for them again opens what is there.
  const std::u16string event = u"VEXOSDK";
  world().kernel.CreateMutex(u"CS4_GlobalLock");
  EXPECT_EQ(world().kernel.LastError(), kPlatErrorAlreadyExists);
  world().kernel.CreateEvent(&event, true, false);
  EXPECT_EQ(world().kernel.LastError(), kPlatErrorAlreadyExists);
}

TEST_F(Lifecycle, TheInstanceEventIsManualResetAndNotSignalled) {
  harness::Entry(1);
  const PlatHandle event = g_library.g_instance_event;
  EXPECT_EQ(world().kernel.Wait(event, 0), kPlatWaitTimeout);
  world().kernel.SetEvent(event);
  EXPECT_EQ(world().kernel.Wait(event, 0), kPlatWaitSignalled);
  EXPECT_EQ(world().kernel.Wait(event, 0), kPlatWaitSignalled);
}

TEST_F(Lifecycle, ASecondProcessStaysUninitializedAndMapsNothing) {
  world().faults.Set(sim::Fault::EventExists, true);
  EXPECT_EQ(AttachLines(), (Lines{kPlain, "debug >> Error Load DLL, Already Register !! \\r\\n",
                                  kPlain, "debug >> VEXO SDK Version : 1. 0. 1. 6\\r\\n"}));
  EXPECT_EQ(world().faults.Hits(sim::Fault::EventExists), 1u);
  EXPECT_EQ(g_library.g_initialized, 0u);
  EXPECT_NE(g_library.g_module, 0u);
  EXPECT_EQ(harness::Initialize(world().windows.Create()), -6);
  EXPECT_EQ(VEXOAPI_GetVersion(nullptr), 0);
}

// The mark of the first process must outlive a second one that comes and goes.
TEST_F(Lifecycle, ASecondProcessForgetsTheEventWithoutClosingIt) {
  world().faults.Set(sim::Fault::EventExists, true);
  harness::Entry(1);
  EXPECT_EQ(g_library.g_instance_event, 0u);
  EXPECT_EQ(world().kernel.OpenHandles(), 2u);
  harness::Entry(0);
  EXPECT_EQ(world().kernel.OpenHandles(), 1u);  // only the lock's was closed
}

TEST_F(Lifecycle, AttachingTwiceLeavesTheLibraryUninitialized) {
  AttachAndBind();
  harness::Entry(1);
  EXPECT_EQ(g_library.g_initialized, 0u);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), -8);
}

TEST_F(Lifecycle, WithoutAMutexAttachSaysSoToTheKernelAndGoesOn) {
  world().faults.Set(sim::Fault::Mutex, true);
  harness::Entry(1);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Mutex), 1u);
  // The wording is what people look for, though the lock is no RTC's.
  EXPECT_EQ(KernelDebug(), Lines{"<VexoCtrlSDK.DLL> Error : Failed to create RTC mutex.\r\n"});
  EXPECT_EQ(g_library.g_cs4_lock, 0u);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_EQ(Maps().size(), 3u);
}

// The missing mutex is the first of which anything is heard.
TEST_F(Lifecycle, AttachForgetsWhatWasBeforeItAsksForAnything) {
  world().faults.Set(sim::Fault::Mutex, true);
  g_library.g_module = 1;
  g_library.g_initialized = 1;
  g_library.g_instance_event = 1;
  g_library.g_host_wnd = 1;
  unsigned told = 0;
  const test::AtEvents watch([&told](const sim::Event&, const sim::EventDetail* detail) {
    const auto* debug = std::get_if<sim::DebugEvent>(detail);
    if (debug == nullptr || !debug->kernel) return;
    ++told;
    EXPECT_EQ(g_library.g_module, 0u);
    EXPECT_EQ(g_library.g_initialized, 0u);
    EXPECT_EQ(g_library.g_instance_event, 0u);
    EXPECT_EQ(g_library.g_host_wnd, 0u);
  });
  VexoSDK_Attach();
  EXPECT_EQ(told, 1u);
}

TEST_F(Lifecycle, NoSwitchGatesTheMissingMutex) {
  world().faults.Set(sim::Fault::Mutex, true);
  VexoDbg_SetDebugOutput(0);
  VexoDbg_SetOutputMessage(0);
  VexoSDK_Attach();
  EXPECT_EQ(KernelDebug(), Lines{"<VexoCtrlSDK.DLL> Error : Failed to create RTC mutex.\r\n"});
  EXPECT_EQ(Debug(), Lines{});
}

// ---- Bus windows -----------------------------------------------------------------------------

TEST_F(Lifecycle, WithoutTheSelectWindowAttachStopsThere) {
  world().faults.Set(sim::Fault::MapSelect, true);
  EXPECT_EQ(AttachLines(), (Lines{"map 06600000 4 uncached failed", kLevel,
                                  "debug >> ERROR TW2835 BASE REGISTER!!!\\r\\n", kPlain,
                                  "debug >> VEXO SDK Version : 1. 0. 1. 6\\r\\n"}));
  EXPECT_EQ(world().faults.Hits(sim::Fault::MapSelect), 1u);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_EQ(g_bus.select, nullptr);
  EXPECT_EQ(g_bus.address, nullptr);
  EXPECT_EQ(g_bus.data, nullptr);
}

TEST_F(Lifecycle, WithoutTheAddressWindowAttachStopsThere) {
  world().faults.Set(sim::Fault::MapAddress, true);
  EXPECT_EQ(AttachLines(), (Lines{"map 06600000 4 uncached", "map 06400000 4 uncached failed",
                                  kLevel, "debug >> ERROR TW2835 ACS BASE REGISTER!!!\\r\\n",
                                  kPlain, "debug >> VEXO SDK Version : 1. 0. 1. 6\\r\\n"}));
  EXPECT_EQ(world().faults.Hits(sim::Fault::MapAddress), 1u);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_NE(g_bus.select, nullptr);
  EXPECT_EQ(g_bus.address, nullptr);
  EXPECT_EQ(g_bus.data, nullptr);
}

TEST_F(Lifecycle, TheLibraryIsInitializedBeforeItsWindowsAndItsVersionClearedBehindTheNvram) {
  g_library.g_version_text[0] = u'9';
  unsigned seen = 0;
  const test::AtEvents watch([&seen](const sim::Event&, const sim::EventDetail* detail) {
    if (std::get_if<sim::MapEvent>(detail) == nullptr &&
        std::get_if<sim::NvramEvent>(detail) == nullptr) {
      return;
    }
    ++seen;
    EXPECT_EQ(g_library.g_initialized, 1u);
    EXPECT_EQ(g_library.g_version_text[0], u'9');
  });
  VexoSDK_Attach();
  EXPECT_EQ(seen, 4u);
  EXPECT_EQ(g_library.g_version_text[0], u'\0');
}

// The address window is tested twice and the data window never: its failure stays silent.
TEST_F(Lifecycle, WithoutTheDataWindowAttachGoesOnInSilence) {
  world().faults.Set(sim::Fault::MapData, true);
  EXPECT_EQ(AttachLines(), (Lines{"map 06600000 4 uncached", "map 06400000 4 uncached",
                                  "map 06200000 4 uncached failed", "nvram init", kPlain,
                                  "debug >> VEXO SDK Version : 1. 0. 1. 6\\r\\n"}));
  EXPECT_EQ(world().faults.Hits(sim::Fault::MapData), 1u);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_NE(g_bus.select, nullptr);
  EXPECT_NE(g_bus.address, nullptr);
  EXPECT_EQ(g_bus.data, nullptr);
}

TEST_F(Lifecycle, AFailedMappingIsToldAtLevelTwo) {
  VexoDbg_SetLevelThreshold(3);
  world().faults.Set(sim::Fault::MapSelect, true);
  VexoSDK_Attach();
  EXPECT_EQ(Debug(), Lines{});
  world().faults.Set(sim::Fault::MapSelect, false);
  world().faults.Set(sim::Fault::MapAddress, true);
  VexoSDK_Detach();
  VexoSDK_Attach();
  EXPECT_EQ(Debug(), Lines{});
  VexoDbg_SetLevelThreshold(2);
  VexoSDK_Detach();
  VexoSDK_Attach();
  EXPECT_EQ(Debug().size(), 2u);
}

// ---- Version ---------------------------------------------------------------------------------

TEST_F(Lifecycle, TheVersionIsLookedForInThreePlacesInOrder) {
  struct Case {
    const char* present;  // null: nowhere
    Lines asked;
    const char* printed;
  };
  const Case cases[] = {
      {kDllPath, {kDllPath}, ">> VEXO SDK Version : 9. 12. 345. 6789\r\n"},
      {kFlashPath, {kDllPath, kFlashPath}, ">> VEXO SDK Version : 9. 12. 345. 6789\r\n"},
      {kWindowsPath,
       {kDllPath, kFlashPath, kWindowsPath},
       ">> VEXO SDK Version : 9. 12. 345. 6789\r\n"},
      {nullptr, {kDllPath, kFlashPath, kWindowsPath}, ">> VEXO SDK Version : \r\n"},
  };
  for (const Case& c : cases) {
    harness::Restart();
    world().files.Remove(kFlashPath);
    if (c.present != nullptr) {
      world().files.Set(c.present, {sim::VersionFile::State::Present, {9, 12, 345, 6789}});
    }
    harness::Entry(1);
    EXPECT_EQ(world().files.asked, c.asked);
    EXPECT_EQ(test::Texts(world().trace).at(test::Texts(world().trace).size() - 2),
              "debug " + std::string(c.printed, std::string(c.printed).size() - 2) + "\\r\\n");
    EXPECT_EQ(world().allocations, 0u);
  }
}

// A file that has version information ends the search, readable or not.
TEST_F(Lifecycle, AnUnreadableVersionEndsTheSearchAllTheSame) {
  for (const auto state : {sim::VersionFile::State::Unreadable, sim::VersionFile::State::NoRoot}) {
    harness::Restart();
    world().files.Set(kDllPath, {state, {9, 9, 9, 9}});
    harness::Entry(1);
    EXPECT_EQ(world().files.asked, Lines{kDllPath});
    EXPECT_EQ(VEXOAPI_GetVersion(nullptr), 0);
    EXPECT_EQ(world().allocations, 0u);
  }
}

TEST_F(Lifecycle, ReadVersionAnswersWhetherThereIsASize) {
  EXPECT_EQ(VexoSDK_ReadVersion(u"\\DLL\\VexoCtrlSDK.DLL"), 0);
  world().files.Set(kDllPath, {sim::VersionFile::State::Present, {1, 2, 3, 4}});
  EXPECT_EQ(VexoSDK_ReadVersion(u"\\DLL\\VexoCtrlSDK.DLL"), 1);
  EXPECT_EQ(std::u16string(g_library.g_version_text), u"1. 2. 3. 4");
  world().files.Set(kDllPath, {sim::VersionFile::State::Present, {1, 65535, 3, 65535}});
  EXPECT_EQ(VexoSDK_ReadVersion(u"\\DLL\\VexoCtrlSDK.DLL"), 1);
  EXPECT_EQ(std::u16string(g_library.g_version_text), u"1. 65535. 3. 65535");
  // What the text has no room for is left out.
  world().files.Set(kDllPath, {sim::VersionFile::State::Present, {65535, 65535, 65535, 65535}});
  EXPECT_EQ(VexoSDK_ReadVersion(u"\\DLL\\VexoCtrlSDK.DLL"), 1);
  EXPECT_EQ(std::u16string(g_library.g_version_text), u"65535. 65535. 65535");
  world().files.Set(kDllPath, {sim::VersionFile::State::Unreadable, {}});
  EXPECT_EQ(VexoSDK_ReadVersion(u"\\DLL\\VexoCtrlSDK.DLL"), 1);
  EXPECT_EQ(g_library.g_version_text[0], u'\0');
}

TEST_F(Lifecycle, ReadVersionClearsTheTextBeforeItAsks) {
  VexoSDK_ReadVersion(u"\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL");
  EXPECT_EQ(std::u16string(g_library.g_version_text), u"1. 0. 1. 6");
  EXPECT_EQ(VexoSDK_ReadVersion(u"\\nowhere.dll"), 0);
  for (const char16_t unit : g_library.g_version_text) EXPECT_EQ(unit, u'\0');
}

TEST_F(Lifecycle, WithoutMemoryTheVersionStaysEmpty) {
  world().faults.Set(sim::Fault::Allocate, true);
  EXPECT_EQ(VexoSDK_ReadVersion(u"\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL"), 1);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Allocate), 1u);
  EXPECT_EQ(g_library.g_version_text[0], u'\0');
}

TEST_F(Lifecycle, AttachItselfClearsTheVersionText) {
  g_library.g_version_text[0] = u'9';
  VexoSDK_Attach();
  EXPECT_EQ(g_library.g_version_text[0], u'\0');
}

// ---- Detach and the other reasons ------------------------------------------------------------

TEST_F(Lifecycle, DetachClearsAllOfTheVersionText) {
  AttachAndBind();
  for (char16_t& unit : g_library.g_version_text) unit = u'9';
  harness::Entry(0);
  for (const char16_t unit : g_library.g_version_text) EXPECT_EQ(unit, u'\0');
}

TEST_F(Lifecycle, DetachGivesBackWhatAttachTook) {
  AttachAndBind();
  EXPECT_EQ(EntryLines(0), (Lines{"unmap select", "unmap address", "unmap data", "nvram deinit"}));
  EXPECT_EQ(g_library.g_module, 0u);
  EXPECT_EQ(g_library.g_initialized, 0u);
  EXPECT_EQ(g_library.g_host_wnd, 0u);
  EXPECT_EQ(g_library.g_instance_event, 0u);
  EXPECT_EQ(g_library.g_version_text[0], u'\0');
  EXPECT_EQ(g_bus.select, nullptr);
  EXPECT_EQ(g_bus.address, nullptr);
  EXPECT_EQ(g_bus.data, nullptr);
  EXPECT_EQ(world().kernel.OpenHandles(), 0u);
}

TEST_F(Lifecycle, DetachClosesTheMarkBeforeTheWindowsAndTheLockBehindThem) {
  AttachAndBind();
  Lines seen;
  const test::AtEvents watch([&](const sim::Event&, const sim::EventDetail* detail) {
    const auto* nvram = std::get_if<sim::NvramEvent>(detail);
    if (nvram == nullptr && std::get_if<sim::UnmapEvent>(detail) == nullptr) return;
    EXPECT_EQ(g_library.g_module, 0u);
    EXPECT_EQ(g_library.g_initialized, 0u);
    EXPECT_EQ(g_library.g_host_wnd, 0u);
    EXPECT_EQ(g_library.g_instance_event, 0u);
    EXPECT_NE(g_library.g_version_text[0], u'\0');  // the last to go
    seen.push_back((nvram == nullptr ? "window, open: " : "nvram, open: ") +
                   std::to_string(world().kernel.OpenHandles()));
  });
  harness::Entry(0);
  // The handle that is still open while the windows go is the lock's.
  EXPECT_EQ(seen,
            (Lines{"window, open: 1", "window, open: 1", "window, open: 1", "nvram, open: 0"}));
}

TEST_F(Lifecycle, DetachUnmapsOnlyWhatIsMapped) {
  world().faults.Set(sim::Fault::MapAddress, true);
  harness::Entry(1);
  EXPECT_EQ(EntryLines(0), (Lines{"unmap select", "nvram deinit"}));
}

TEST_F(Lifecycle, DetachClosesNoLockWhereNoneCouldBeMade) {
  world().faults.Set(sim::Fault::Mutex, true);
  AttachAndBind();
  ASSERT_EQ(world().faults.Hits(sim::Fault::Mutex), 1u);
  world().kernel.SetLastError(0);
  harness::Entry(0);
  EXPECT_EQ(world().kernel.LastError(), 0u);  // no handle was refused
  EXPECT_EQ(world().kernel.OpenHandles(), 0u);
}

// Only an attach without a new load sees this: a reloaded library begins with zeros and takes its
// lock again.
TEST_F(Lifecycle, TheLocksStaleHandleSurvivesDetachAndTheNextAttachTakesNoNewOne) {
  AttachAndBind();
  const PlatHandle lock = g_library.g_cs4_lock;
  harness::Entry(0);
  EXPECT_EQ(g_library.g_cs4_lock, lock);
  AttachAndBind();
  EXPECT_EQ(g_library.g_cs4_lock, lock);
  EXPECT_EQ(world().kernel.OpenHandles(), 1u);  // the event alone
  const std::size_t from = world().trace.Mark();
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
  EXPECT_EQ(test::Texts(world().trace, from),
            (Lines{"call VEXOAPI_CommandProc", "lock  failed", "unlock  failed",
                   "return VEXOAPI_CommandProc 0"}));
}

TEST_F(Lifecycle, AttachingAgainNeedsANewWindow) {
  AttachAndBind();
  harness::Entry(0);
  harness::Entry(1);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), -8);
}

// Holds: VexoCtrlSDK.h "Unloading does not stop the monitor"
TEST_F(Lifecycle, DetachDoesNotStopTheWorker) {
  PretendBoard(4);
  VexoSDK_StartWorker();
  harness::Entry(0);
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
  EXPECT_NE(g_worker.thread, 0u);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  // It goes on polling, now without windows.
  world().kernel.Pump(20);
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
  EXPECT_GT(world().reports.Count(sim::ReportKind::UnmappedAccess), 0u);
  ExpectReports();
}

TEST_F(Lifecycle, LowMemoryIsTold) {
  harness::Entry(1);
  EXPECT_EQ(EntryLines(6), (Lines{kPlain, "debug >> DLL_MEMORY_LOW\\r\\n"}));
  EXPECT_EQ(g_library.g_initialized, 1u);
}

TEST_F(Lifecycle, EveryOtherReasonDoesNothing) {
  harness::Entry(1);
  for (const std::uint32_t reason : {2u, 3u, 4u, 5u, 7u, 0x10001u, 0xFFFFFFFFu}) {
    EXPECT_EQ(EntryLines(reason), Lines{}) << reason;
  }
  EXPECT_EQ(g_library.g_initialized, 1u);
}

TEST_F(Lifecycle, TheSharedWordIsOneAndStaysSo) {
  EXPECT_EQ(g_shared_word, 1u);
  StartBoard(4);
  harness::Entry(0);
  EXPECT_EQ(g_shared_word, 1u);
}

}  // namespace
