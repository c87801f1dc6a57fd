#include "tests/harness/fake_library.h"

#include <cstdio>

#include "harness/export_table.h"
#include "harness/host.h"
#include "platform/platform.h"
#include "sim/text.h"
#include "sim/world.h"

namespace harness {
namespace {

constexpr std::uint8_t kMasterPage1 = 0xFD;  // select byte
constexpr std::uint8_t kAllPage1 = 0x55;

PlatBusWindow g_select;
PlatBusWindow g_address;
PlatBusWindow g_data;
PlatWindow g_window;

void Note(const std::string& call) { TheFake().calls.push_back(call); }

int DllEntry(PlatHandle, std::uint32_t reason, void*) {
  Note("dll_entry " + std::to_string(reason));
  if (reason == 1) {
    g_select = Plat_MapBusWindow(0x06600000, 4, false);
    g_address = Plat_MapBusWindow(0x06400000, 4, false);
    g_data = Plat_MapBusWindow(0x06200000, 4, false);
  }
  return 1;
}

int FakeInitialize(VexoWindow window) {
  const auto handle = reinterpret_cast<PlatWindow>(window);
  const bool exists = Plat_IsWindow(handle);
  Note(exists ? "initialize window" : "initialize invalid");
  if (exists) g_window = handle;
  return 0;
}

void FakeUninitialize() { Note("uninitialize"); }

int FakeGetVersion(VexoChar16* buffer) {
  Note(buffer == nullptr ? "get_version null" : "get_version");
  if (buffer != nullptr) std::char_traits<char16_t>::copy(buffer, u"1. 2. 3. 4", 11);
  return 10;
}

void FakeSetEnableDebug(std::uint32_t enable) { Note("debug " + std::to_string(enable)); }
void FakeSetEnableOutput(std::uint32_t enable) { Note("output " + std::to_string(enable)); }

void Write(std::uint8_t select, std::uint8_t reg, std::uint8_t value) {
  Plat_StoreByte(g_select, select);
  Plat_StoreByte(g_address, reg);
  Plat_StoreByte(g_data, value);
  Plat_StoreByte(g_select, 0xFF);
}

void Print(const std::string& text) { Plat_DebugOutput(sim::ToUtf16(text).c_str()); }

void Dump() {
  const std::string rule(65, '=');
  Print("[Fake]: ");
  Print("==>> READ SLAVE3 PAGE2 \r\n");
  Print(rule + "\r\n ");
  Print("==>> SLAVE3 PAGE2\r\n==>> [00] ");
  for (unsigned reg = 0; reg < 256; ++reg) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", reg);
    if (reg != 0 && reg % 16 == 0) Print("\r\n==>> [" + std::string(digits) + "] ");
    if (reg % 4 == 0) Print("  ");
    Print(std::string(digits) + ' ');
  }
  Print("\r\n" + rule + "\r\n ");
}

int FakeCommandProc(std::uint32_t code, void* parameter) {
  auto* record = static_cast<std::uint8_t*>(parameter);
  Note("command_proc " + sim::Hex(code) + ' ' +
       (record == nullptr ? "null" : sim::HexBytes({record, 4})));
  if (record != nullptr) record[63] = 0x99;
  const std::uint8_t value[4] = {0x03, 0x00, 0xFE, 0x28};
  switch (code) {
    case kFakePrint:
      Plat_DebugOutput(u"[Fake]: ");
      Plat_DebugOutput(u">> hello\r\n");
      return 0;
    case kFakeKernel:
      Plat_KernelDebugOutput(u"kernel\n");
      return 0;
    case kFakeWrite:
      Write(kMasterPage1, 0x30, 0x5A);
      return 0;
    case kFakeSend:
      Plat_SendMessage(g_window, 0x2406, reinterpret_cast<std::uintptr_t>(value), 0, 5000);
      return 0;
    case kFakeMotion:
      Plat_SendMessage(g_window, 0x2404, 4, 0, 5000);
      return 0;
    case kFakePost:
      Plat_PostMessage(g_window, 0x2401, 0x1003, 0);
      return 0;
    case kFakeLparam:
      Plat_PostMessage(g_window, 0x2401, 0x1004, 7);
      return 0;
    case kFakeHang:
      Plat_Wait(Plat_CreateEvent(nullptr, false, false), kPlatForever);
      return 0;
    case kFakeContend:
      Plat_StoreByte(g_select, kAllPage1);
      Plat_StoreByte(g_address, 0x30);
      Plat_LoadByte(g_data);
      Plat_StoreByte(g_select, 0xFF);
      return 0;
    case kFakeDump:
      Dump();
      return 0;
    default:
      return -1;
  }
}

int FakeSetMotionInfo(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
  Note("set_motion_info " + std::to_string(channel) + ' ' + std::to_string(level) + ' ' +
       sim::HexBytes({mask, 24}));
  return 0;
}

int FakeTextCommandProc(const char* line) {
  Note("text_command_proc " + std::string(line));
  return -4;
}

void FakeReset() {
  ++TheFake().resets;
  g_select = g_address = g_data = nullptr;
  g_window = 0;
}

}  // namespace

FakeLibrary& TheFake() {
  static FakeLibrary fake;
  return fake;
}

void FakeLibraryTest::SetUp() {
  TheFake() = {};
  UseExports({DllEntry, FakeInitialize, FakeUninitialize, FakeGetVersion, FakeSetEnableDebug,
              FakeSetEnableOutput, FakeCommandProc, FakeSetMotionInfo, FakeTextCommandProc,
              FakeReset});
  Restart();
}

void FakeLibraryTest::TearDown() {
  UseExports(LinkedExports());
  Restart();
}

}  // namespace harness
