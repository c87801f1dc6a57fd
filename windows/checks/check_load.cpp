// Loading and unloading again and again: what is left.

#include <array>
#include <iostream>
#include <map>

#include "VexoCtrlSDK.h"
#include "checks.h"
#include "host.h"

namespace checks {
namespace {

struct Holdings {
  std::map<std::string, int> handles;  // by kind of object
  int threads = 0;
  int mappings = 0;  // regions of memory that are not free
  std::size_t image_bytes = 0;
};

// The kind of a handle's object, empty for a value that is no handle.
std::string KindOf(HANDLE handle) {
  constexpr ULONG kTypeInformation = 2;
  using Query = LONG(NTAPI*)(HANDLE handle, ULONG what, void* buffer, ULONG bytes, ULONG* used);
  static const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryObject")));
  DWORD flags = 0;
  if (!GetHandleInformation(handle, &flags)) return {};
  struct {
    USHORT length;
    USHORT capacity;
    const wchar_t* text;
    std::array<std::uint8_t, 1024> rest;
  } type;
  if (query(handle, kTypeInformation, &type, sizeof(type), nullptr) != 0) return "unknown";
  std::string kind;  // in ASCII
  for (std::size_t i = 0; i < type.length / sizeof(wchar_t); ++i) {
    kind += static_cast<char>(type.text[i]);
  }
  return kind;
}

Holdings Count() {
  Holdings holdings;
  for (std::uintptr_t value = 4; value < 0x10000; value += 4) {
    const std::string kind = KindOf(reinterpret_cast<HANDLE>(value));
    if (!kind.empty()) ++holdings.handles[kind];
  }
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread = {};
  thread.dwSize = sizeof(thread);
  for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread)) {
    if (thread.th32OwnerProcessID == GetCurrentProcessId()) ++holdings.threads;
  }
  CloseHandle(snapshot);
  MEMORY_BASIC_INFORMATION region = {};
  const void* last = nullptr;
  for (char* at = nullptr; VirtualQuery(at, &region, sizeof(region)) != 0;
       at = static_cast<char*>(region.BaseAddress) + region.RegionSize) {
    if (region.State == MEM_FREE) continue;
    if (region.AllocationBase != last) ++holdings.mappings;
    last = region.AllocationBase;
    if (region.Type == MEM_IMAGE) holdings.image_bytes += region.RegionSize;
  }
  return holdings;
}

// Does it `times` after a few that warm up the system; each may leave so many events.
template <typename Action>
void Leaves(int times, int events_each, const Action& action) {
  for (int i = 0; i < 5; ++i) action();
  Holdings before = Count();
  for (int i = 0; i < times; ++i) action();
  Holdings after = Count();
  std::cout << "  " << times << " times:";
  for (const auto& [kind, count] : after.handles) {
    const int more = count - before.handles[kind];
    if (more != 0) std::cout << ' ' << kind << " handles +" << more << ',';
  }
  std::cout << " threads " << before.threads << " -> " << after.threads << ", mappings "
            << before.mappings << " -> " << after.mappings << ", image bytes " << before.image_bytes
            << " -> " << after.image_bytes << std::endl;
  before.handles["Event"] += times * events_each;
  for (const auto& [kind, count] : after.handles) {
    RequireEqual(count, before.handles[kind], "the number of handles of kind " + kind);
  }
  RequireEqual(after.threads, before.threads, "the number of threads");
  RequireEqual(after.mappings, before.mappings, "the number of mappings");
  RequireEqual(after.image_bytes, before.image_bytes, "the size of all images");
}

void NothingLeft() {
  Leaves(1000, 0, [] { const Library library; });
}

void CommandsLeaveNothing() {
  Window window;
  Leaves(100, 0, [&] {
    const Library library;
    library.initialize(window.Handle());
    library.text_command_proc("vexo rver ");
    library.text_command_proc("vpb init ");
    library.text_command_proc("vpb uninit ");
    library.command_proc(VEXO_CMD_STOP_MONITOR, nullptr);
  });
}

// Two events are never closed: the one that paces the splits, made at each initialization, and the
// one that paces the worker.
void InitializationLeavesTwoEvents() {
  Window window;
  std::size_t messages = 0;
  Leaves(30, 2, [&] {
    const Library library;
    VexoInitRecord record = {};
    library.initialize(window.Handle());
    RequireEqual(library.command_proc(VEXO_CMD_INIT, &record), VEXO_OK, "0xF001");
    RequireSoon([&] { return window.Messages().size() > messages; }, "the worker's first message");
    RequireEqual(library.command_proc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK, "0xF002");
    messages = window.Messages().size();
  });
}

// The second process's handle of the mark is dropped without being closed.
void RefusedLoadLeavesTheMark() {
  const Signal mark(L"VEXOSDK");
  Leaves(100, 1, [] { const Library library; });
}

constexpr std::array kChecks = {
    Check{"a thousand loads and unloads leave nothing", NothingLeft},
    Check{"loads with commands leave nothing", CommandsLeaveNothing},
    Check{"a load with an initialization and a worker leaves their two events, and nothing else",
          InitializationLeavesTwoEvents},
    Check{"a refused load leaves a handle of the instance's mark, and nothing else",
          RefusedLoadLeavesTheMark},
};

}  // namespace

std::span<const Check> LoadChecks() { return kChecks; }

}  // namespace checks
