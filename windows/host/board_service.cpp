#include "board_service.h"

#include <cstdio>

#include "board_host.h"
#include "platform/platform.h"
#include "sim/world.h"
#include "windows_api.h"

namespace host {

std::atomic<std::uint64_t> g_accesses;
std::atomic<std::uint64_t> g_wide_accesses;

namespace {

CRITICAL_SECTION& Section() {
  static CRITICAL_SECTION section = [] {
    CRITICAL_SECTION made;
    InitializeCriticalSection(&made);
    return made;
  }();
  return section;
}

AccessStamp (*g_stamp)() = [] { return AccessStamp{}; };
const AccessTap* g_tap = nullptr;

constexpr std::uint32_t kPhysical[] = {0x06600000, 0x06400000, 0x06200000};

volatile std::uint8_t* Address(int window) {
  return sim::BusWindows::Address(static_cast<sim::BusWindow>(window));
}

int Map(std::uint32_t physical, std::uint32_t bytes, std::uint32_t cached) {
  const BoardLock lock;
  if (Plat_MapBusWindow(physical, bytes, cached != 0) == nullptr) return -1;
  for (int window = 0; window < 3; ++window) {
    if (kPhysical[window] == physical) return window;
  }
  return -1;
}

void Unmap(int window) {
  const BoardLock lock;
  Plat_UnmapBusWindow(window < 0 ? nullptr : Address(window), 4);
}

// The window of an access, none when nothing is mapped there.
std::optional<sim::BusWindow> Count(sim::World& world, int window, unsigned bytes,
                                    sim::Report::Access access) {
  ++g_accesses;
  if (bytes != 1) ++g_wide_accesses;
  const auto found = window < 0 ? std::nullopt : world.bus_windows.Find(Address(window));
  if (!found) {
    world.reports.Add({.kind = sim::ReportKind::UnmappedAccess, .access = access});
  }
  return found;
}

void Store(int window, std::uint32_t value, unsigned bytes) {
  const BoardLock lock;
  sim::World& world = sim::TheWorld();
  const auto found = Count(world, window, bytes, sim::Report::Access::Write);
  if (g_tap != nullptr) return g_tap->store(window, value, bytes);
  if (!found) return;
  const AccessStamp stamp = g_stamp();
  world.board.SetTime(stamp.now_ms);
  world.trace.AddCycle(stamp.now_ms, stamp.worker ? sim::By::Worker : sim::By::Host, false, *found,
                       static_cast<std::uint8_t>(value));
  world.board.Store(*found, value, bytes);
}

std::uint8_t Load(int window, unsigned bytes) {
  const BoardLock lock;
  sim::World& world = sim::TheWorld();
  const auto found = Count(world, window, bytes, sim::Report::Access::Read);
  if (g_tap != nullptr) return g_tap->load(window, bytes);
  if (!found) return 0xFF;
  const AccessStamp stamp = g_stamp();
  world.board.SetTime(stamp.now_ms);
  const std::uint8_t value = world.board.Load(*found, bytes);
  world.trace.AddCycle(stamp.now_ms, stamp.worker ? sim::By::Worker : sim::By::Host, true, *found,
                       value);
  return value;
}

void Refuse(const char* reason, const std::uint8_t* code) {
  std::fprintf(stderr, "bus access at %p: %s:", static_cast<const void*>(code), reason);
  for (int i = 0; i < 12; ++i) std::fprintf(stderr, " %02X", code[i]);
  std::fprintf(stderr, "\n");
  std::fflush(stderr);
  TerminateProcess(GetCurrentProcess(), 3);
}

std::uint32_t NvramInit() {
  const BoardLock lock;
  return Plat_NvramInit();
}
std::uint32_t NvramDeinit() {
  const BoardLock lock;
  return Plat_NvramDeinit();
}
std::uint32_t NvramRead(std::uint32_t block, void* request) {
  const BoardLock lock;
  return Plat_NvramRead(block, static_cast<PlatNvramRequest*>(request));
}
std::uint32_t NvramWrite(std::uint32_t block, void* request) {
  const BoardLock lock;
  return Plat_NvramWrite(block, static_cast<PlatNvramRequest*>(request));
}

constexpr BoardHost kBoardHost = {Map,       Unmap,       Store,     Load,      Refuse,
                                  NvramInit, NvramDeinit, NvramRead, NvramWrite};

}  // namespace

void SetAccessTap(const AccessTap* tap) { g_tap = tap; }
void SetAccessStamp(AccessStamp (*stamp)()) { g_stamp = stamp; }

BoardLock::BoardLock() { EnterCriticalSection(&Section()); }
BoardLock::~BoardLock() { LeaveCriticalSection(&Section()); }

}  // namespace host

extern "C" __declspec(dllexport) const BoardHost* VexoBoardHost() { return &host::kBoardHost; }
