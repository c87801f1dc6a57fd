// A recorder's program that runs for long: desk_soak virtual|real SECONDS [SEED]. Random keys and
// cables, and after each whether the host knows what it must. Says how much memory it took.
//
// What the library loses by its contract is done on purpose, too: a host that answers nothing for
// eleven seconds is not told of a cable, and is told of the next.
#include <malloc.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>

#include "VexoDesk.h"

namespace {

// Two rising edges of the sync bit, and time for the messages. The clock's time needs patience.
constexpr std::uint32_t kTellsWithin = 100;
constexpr std::uint32_t kPatience = 5000;
constexpr std::uint32_t kSendLimit = 5000;
constexpr std::uint32_t kMotionRepeat = 900;

unsigned long g_wrong = 0;

void Check(bool right, const std::string& what) {
  if (right || g_wrong++ >= 10) return;
  std::fprintf(stderr, "desk_soak: at %llu ms: %s\n",
               static_cast<unsigned long long>(VexoDesk_Now()), what.c_str());
}

struct Told {
  std::uint32_t loss = 0;
  std::uint32_t motion = 0;
  unsigned long loss_messages = 0;
  unsigned long motion_messages = 0;
};

std::intptr_t OnMessage(VexoWindow, std::uint32_t message, std::uintptr_t wparam, std::intptr_t,
                        void* context) {
  auto& told = *static_cast<Told*>(context);
  if (message == VEXO_MSG_VIDEO_INFO) {
    VideoDetectRecord record;
    std::memcpy(&record, reinterpret_cast<const void*>(wparam), sizeof record);
    told.loss = record.loss_mask;
    ++told.loss_messages;
  } else if (message == VEXO_MSG_MOTION_STATUS) {
    told.motion = static_cast<std::uint32_t>(wparam);
    ++told.motion_messages;
  }
  return 0;
}

class Soak {
 public:
  Soak(bool real, unsigned long seed) : real_(real), random_(seed) {}

  bool Begin() {
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.time = real_ ? VEXODESK_REAL : VEXODESK_VIRTUAL;
    VexoInitRecord init = {};
    if (VexoDesk_Open(&options) != VEXODESK_OK ||
        VEXOAPI_Initialize(VexoDesk_CreateWindow(OnMessage, &told_)) != VEXO_OK ||
        VEXOAPI_CommandProc(VEXO_CMD_INIT, &init) != VEXO_OK) {
      std::fprintf(stderr, "desk_soak: there is no board: %s\n", VexoDesk_Error());
      return false;
    }
    Pump(kTellsWithin);
    Check(told_.loss_messages == 1, "the first mask was not told");
    return true;
  }

  void Step() {
    ++steps_;
    Key();
    switch (random_() % 4) {
      case 0:
        return Cables();
      case 1:
        return Motion();
      case 2:
        return Quiet();
      default:
        if (random_() % (real_ ? 200 : 50) == 0) return Busy();
    }
  }

  bool End() {
    Check(VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, nullptr) == VEXO_OK, "the monitor goes on");
    Check(VexoDesk_Close() == VEXODESK_OK, VexoDesk_Error());
    std::printf(
        "%lu keys; messages: %lu of video loss for %lu cables, %lu of motion for %lu "
        "changes; %lu lost while the host was busy; %lu wrong\n",
        steps_, told_.loss_messages, cables_, told_.motion_messages, motions_, lost_, g_wrong);
    return g_wrong == 0;
  }

 private:
  void Pump(std::uint32_t ms) { Check(VexoDesk_Pump(ms) >= 0, VexoDesk_Error()); }

  // Pumps until the host knows; in virtual time as long as it must take at most.
  template <typename Knows>
  void PumpUntil(const Knows& knows) {
    Pump(kTellsWithin);
    if (!real_) return;
    const std::uint64_t end = VexoDesk_Now() + kPatience;
    while (!knows() && VexoDesk_Now() < end) Pump(10);
  }

  void Line(const std::string& line) {
    Check(VexoDesk_Line(line.c_str(), nullptr, 0) == VEXODESK_OK, VexoDesk_Error());
  }

  std::uint8_t Below(unsigned most) { return static_cast<std::uint8_t>(random_() % most); }

  // What the user does with the recorder.
  void Key() {
    VexoSplitRecord split = {};
    split.mode = Below(7);
    split.option = Below(2);
    VexoLiveModeRecord live = {};
    live.mode = split.mode;
    VexoPlayModeRecord play = {};
    play.mode = split.mode;
    for (std::uint8_t i = 0; i < VEXO_MAX_CHANNELS; ++i) {
      split.channels[i] = live.channels[i] = play.channels[i] = i;
    }
    VexoMotionSetupRecord setup = {Below(5), Below(12), Below(12), Below(16)};
    VexoMotionMaskRecord mask = {};
    mask.channel = Below(16);
    mask.level = Below(4);
    for (std::uint8_t& byte : mask.mask) byte = Below(256);
    VexoChannelMasksRecord masks = {0xFFFF, 0xFFFF, 0xFFFF};
    VexoMaskRecord blank = {Below(256)};
    VexoMotionRegRecord box = {Below(16), Below(16), Below(16)};
    switch (random_() % 10) {
      case 0:
        return Command(VEXO_CMD_LIVE_MODE, &live);
      case 1:
        return Command(VEXO_CMD_PLAY_MODE, &play);
      case 2:
        return Command(VEXO_CMD_LIVE_SPLIT, &split);
      case 3:
        return Command(VEXO_CMD_PLAY_SPLIT, &split);
      case 4:
        return Command(VEXO_CMD_MOTION_SETUP, &setup);
      case 5:
        return Command(VEXO_CMD_MOTION_MASK, &mask);
      case 6:
        return Command(VEXO_CMD_CHANNEL_MASKS, &masks);
      case 7:
        return Command(VEXO_CMD_BLANK_MASK, &blank);
      case 8:
        return Command(VEXO_CMD_MOTION_REG, &box);
      default:
        return Command(VEXO_CMD_MOTION_CLEAR, nullptr);
    }
  }

  static void Command(std::uint32_t code, void* record) {
    const int result = VEXOAPI_CommandProc(code, record);
    Check(result == VEXO_OK || result == VEXO_ERROR_FAILED || result == VEXO_ERROR_PARAMETER,
          "command " + std::to_string(code) + " answers " + std::to_string(result));
  }

  // One to three cables are pulled or put back.
  std::uint32_t PlugCables() {
    std::uint32_t changed = 0;
    for (unsigned count = 1 + Below(3); count != 0; --count) changed |= 1u << Below(16);
    for (unsigned channel = 0; channel < 16; ++channel) {
      if ((changed >> channel & 1u) == 0) continue;
      loss_ ^= 1u << channel;
      Line("camera " + std::to_string(channel) + (loss_ >> channel & 1u ? " off" : " ntsc"));
    }
    ++cables_;
    return changed;
  }

  void Cables() {
    const unsigned long before = told_.loss_messages;
    PlugCables();
    PumpUntil([this] { return told_.loss == loss_; });
    Check(told_.loss == loss_, "the host was not told of a cable");
    // At the clock's pace several cables may fall on both sides of an edge.
    const unsigned long came = told_.loss_messages - before;
    Check(real_ ? came >= 1 : came == 1, std::to_string(came) + " messages of a cable");
  }

  void Motion() {
    const unsigned channel = Below(16);
    motion_ ^= 1u << channel;
    Line("motion " + std::to_string(channel) + (motion_ >> channel & 1u ? " on" : " off"));
    ++motions_;
    PumpUntil([this] { return told_.motion == motion_; });
    Check(told_.motion == motion_, "the host was not told of motion");
  }

  // Nothing changes: motion is told again, video loss is not.
  void Quiet() {
    const Told before = told_;
    // For its expectations the console keeps the texts since a line last let time pass.
    Line("run " + std::to_string(kMotionRepeat + kTellsWithin));
    PumpUntil([&] { return told_.motion_messages != before.motion_messages; });
    Check(told_.motion_messages > before.motion_messages, "motion was not told again");
    Check(told_.loss_messages == before.loss_messages, "a mask of video loss was told again");
    Check(told_.motion == motion_ && told_.loss == loss_, "another mask was told");
  }

  // Nobody answers for longer than the library waits.
  void Busy() {
    const unsigned long before = told_.loss_messages;
    PlugCables();
    // The library may be telling of motion first.
    Check(VexoDesk_Sleep(2 * kSendLimit + 10 * kTellsWithin) == VEXODESK_OK, VexoDesk_Error());
    PumpUntil([] { return true; });
    Check(told_.loss_messages == before, "a mask came that nobody had answered");
    ++lost_;
    Cables();
  }

  const bool real_;
  std::mt19937_64 random_;
  Told told_;
  std::uint32_t loss_ = 0;
  std::uint32_t motion_ = 0;
  unsigned long steps_ = 0;
  unsigned long cables_ = 0;
  unsigned long motions_ = 0;
  unsigned long lost_ = 0;
};

struct Memory {
  std::size_t heap = mallinfo2().uordblks;
  std::size_t resident = 0;

  Memory() {
    std::size_t total = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    resident *= 4096;
  }
};

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    std::fprintf(stderr, "usage: desk_soak virtual|real SECONDS [SEED]\n");
    return 2;
  }
  const bool real = std::strcmp(arguments[1], "real") == 0;
  const std::uint64_t end = std::strtoull(arguments[2], nullptr, 10) * 1000;
  Soak soak(real, count > 3 ? std::strtoul(arguments[3], nullptr, 10) : 1);
  const auto begin = std::chrono::steady_clock::now();
  if (!soak.Begin()) return 1;
  // What is there once it runs is there at the end.
  while (VexoDesk_Now() < end / 4) soak.Step();
  const Memory early;
  while (VexoDesk_Now() < end) soak.Step();
  const Memory late;
  constexpr std::size_t kNoGrowth = std::size_t{64} << 10;
  Check(late.heap <= early.heap + kNoGrowth, "the heap grew");
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::printf(
      "%.0f s of %s time in %.1f s; heap %zu KiB after a quarter, %zu KiB at the end; "
      "resident %zu and %zu KiB\n",
      static_cast<double>(end) / 1000, real ? "real" : "virtual", took.count(), early.heap / 1024,
      late.heap / 1024, early.resident / 1024, late.resident / 1024);
  return soak.End() ? 0 : 1;
}
