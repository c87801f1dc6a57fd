// Where the system begins the check program.
#include "device/check/ce/device_system.h"
#include "device/check/ce/diagnosis.h"
#include "device/check/log_line.h"
#include "device/check/player.h"

namespace check {
namespace {

constexpr const char* kVersion = "1.0.1.6";
constexpr CeDword kExitAsExpected = 0;
constexpr CeDword kExitNotPlayed = 2;

// Whom the window's messages are for; null: nobody.
Player* g_player = nullptr;

unsigned RecordBytes(unsigned message) {
  switch (message) {
    case VEXO_MSG_INIT_RESULT:
      return sizeof(VideoState);
    case VEXO_MSG_VIDEO_INFO:
      return sizeof(VideoDetectRecord);
    case VEXO_MSG_REG_VALUE:
      return sizeof(VexoRegRecord);
    default:
      return 0;
  }
}

CeLong WindowProcedure(HWND__* window, unsigned message, CeUnsigned wparam, CeLong lparam) {
  const bool ours = VEXO_MSG_STATUS <= message && message <= VEXO_MSG_REG_VALUE;
  if (!ours || g_player == nullptr) return DefWindowProcW(window, message, wparam, lparam);
  Message told = {message, wparam, static_cast<std::uint32_t>(lparam), nullptr, 0};
  if (const unsigned bytes = RecordBytes(message); bytes != 0) {
    told.wparam = 0;
    told.record = reinterpret_cast<const std::uint8_t*>(static_cast<std::uintptr_t>(wparam));
    told.record_bytes = bytes;
  }
  g_player->OnMessage(told);
  return 0;
}

// Plays the plan; what is in the way, null for nothing.
const char* PlayPlan(DeviceSystem& system, Player& player) {
  const FileContent plan = ReadWhole(BesideProgram(L"VexoCheck.plan").Get(), kMostPlan);
  if (plan.text == nullptr) {
    LogLine(system, 0, "absent")
        .Text("VexoCheck.plan")
        .Number(static_cast<std::uint32_t>(plan.error))
        .Write();
    return "There is no plan that could be read, so nothing was sent to the board.";
  }
  g_player = &player;
  const bool played = player.Play(plan.text, plan.bytes);
  g_player = nullptr;
  LocalFree(plan.text);
  return played ? nullptr : "The plan is wrong, so nothing was sent to the board.";
}

const char* CheckAll(DeviceSystem& system, Player& player, HINSTANCE__* instance) {
  const LibraryPlace place = FindLibrary();
  TellFile(system, place);
  TellDrivers(system);
  system.settings.Remember();
  if (!TellLoading(system, place)) return "The system did not load the library.";
  system.UseLibrary(place.name);
  const std::uint32_t window = system.MakeWindow(instance);
  const auto error = static_cast<std::uint32_t>(GetLastError());
  LogLine(system, 0, "window").Hex(window).Write();
  if (window == 0) {
    LogLine(system, 0, "error").Number(error).Write();
    return "The program could not make its window.";
  }
  const char* const trouble = PlayPlan(system, player);
  TellSecondProcess(system, place);
  return trouble;
}

CeDword Run(HINSTANCE__* instance) {
  static DeviceSystem system;  // not on the stack, which grows page by page
  if (!system.OpenLog(BesideProgram(L"VexoCheck.log").Get())) {
    OutputDebugStringW(L"VexoCheck: VexoCheck.log cannot be created beside the program\r\n");
    return kExitNotPlayed;
  }
  LogLine(system, 0, "begin").Text(kVersion).Write();
  LogLine(system, 0, "clock").Number(system.ClockPerSecond()).Write();
  static Player player(system);
  const char* const trouble = CheckAll(system, player, instance);
  system.settings.Finish();
  player.Finish(trouble);
  system.CloseWindow();
  system.CloseLog();
  if (trouble != nullptr) return kExitNotPlayed;
  return player.AsExpected() ? kExitAsExpected : 1;
}

bool IsSecond(const wchar_t* command_line) {
  const wchar_t* word = kSecond;
  while (*word != 0 && *word == *command_line) {
    ++word;
    ++command_line;
  }
  return *word == 0;
}

}  // namespace

std::uint32_t DeviceSystem::MakeWindow(HINSTANCE__* instance) {
  constexpr const wchar_t* kClass = L"VexoCheck";
  CeWindowClass window_class = {};
  window_class.procedure = WindowProcedure;
  window_class.instance = instance;
  window_class.name = kClass;
  if (RegisterClassW(&window_class) == 0) return 0;
  // Never shown: it is there for its messages.
  window_ = CreateWindowExW(0, kClass, kClass, 0, 0, 0, 0, 0, nullptr, nullptr, instance, nullptr);
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window_));
}

}  // namespace check

extern "C" {

// The compiler's, for a call that no object can make.
[[noreturn]] void __cxa_pure_virtual() {
  for (;;) Sleep(1000);
}

int WinMain(HINSTANCE__* instance, HINSTANCE__* /*previous*/, const wchar_t* command_line,
            int /*show*/) {
  const CeDword code = check::IsSecond(command_line) ? check::RunAsSecond() : check::Run(instance);
  return static_cast<int>(code);
}

}  // extern "C"
