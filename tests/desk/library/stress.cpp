// Many calls from several threads of a program at once, with the monitor running and cables coming
// and going: desk_stress virtual|real [CALLS [THREADS [SEED]]]. Says how many calls a second that
// was.
//
// Each thread writes and reads registers of its own, so that it sees when another gets between.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "VexoDesk.h"

namespace {

std::atomic<unsigned long> g_wrong = 0;

void Check(bool right, const char* what) {
  if (right || g_wrong++ >= 10) return;
  std::fprintf(stderr, "desk_stress: %s\n", what);
}

// Of the chip's picture settings, which no layout writes.
constexpr std::uint8_t kFirstRegister = 0x06;
constexpr std::uint8_t kChips[] = {VEXO_CHIP_MASTER, VEXO_CHIP_SLAVE1, VEXO_CHIP_SLAVE2,
                                   VEXO_CHIP_SLAVE3};

class Caller {
 public:
  Caller(unsigned number, unsigned long seed)
      : chip_(kChips[number % 4]),
        reg_(static_cast<std::uint8_t>(kFirstRegister + number / 4 % 4)),
        random_(seed * 1000 + number) {}

  void Call() {
    switch (random_() % 16) {
      case 0:
        return Layout(VEXO_CMD_LIVE_SPLIT);
      case 1:
        return Layout(VEXO_CMD_PLAY_SPLIT);
      case 2:
        return Text();
      case 3:
        return Line();
      case 4:
        return Motion();
      case 5:
        return Version();
      default:
        return Register();
    }
  }

 private:
  void Layout(std::uint32_t code) {
    VexoSplitRecord record = {};
    record.mode = static_cast<std::uint8_t>(random_() % 7);
    record.option = static_cast<std::uint8_t>(random_() % 2);
    for (std::uint8_t i = 0; i < VEXO_MAX_CHANNELS; ++i) record.channels[i] = i;
    VEXOAPI_CommandProc(code, &record);  // some are refused in playback, or by it
  }

  void Text() {
    static std::mutex one_at_a_time;  // as the header asks
    const std::lock_guard lock(one_at_a_time);
    Check(VEXOAPI_TextCommandProc("vexo lsplit 1 0 1 2 3 ") == VEXO_OK, "a text line failed");
  }

  void Line() {
    const std::string line =
        "camera " + std::to_string(random_() % 16) + (random_() % 2 == 0 ? " off" : " ntsc");
    Check(VexoDesk_Line(line.c_str(), nullptr, 0) == VEXODESK_OK, VexoDesk_Error());
  }

  void Motion() {
    std::uint8_t mask[VEXO_MOTION_MASK_BYTES] = {};
    Check(VEXOAPI_SetMotionInfo(static_cast<std::uint8_t>(random_() % 16), 1, mask) == VEXO_OK,
          "the motion info failed");
  }

  void Version() {
    VexoChar16 text[20] = {};
    Check(VEXOAPI_GetVersion(text) == 10 && text[0] == '1' && text[9] == '6',
          "the version is another");
  }

  void Register() {
    VexoRegRecord record = {chip_, 0, reg_, static_cast<std::uint8_t>(random_())};
    const std::uint8_t written = record.value;
    Check(VEXOAPI_CommandProc(VEXO_CMD_WRITE_REG, &record) == VEXO_OK, "a write failed");
    record.value = static_cast<std::uint8_t>(~written);
    Check(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record) == VEXO_OK, "a read failed");
    Check(record.value == written, "a register reads otherwise than it was written");
  }

  const std::uint8_t chip_;
  const std::uint8_t reg_;
  std::mt19937_64 random_;
};

struct Heard {
  unsigned long video = 0;
  unsigned long motion = 0;
  unsigned long others = 0;
};

std::intptr_t OnMessage(VexoWindow, std::uint32_t message, std::uintptr_t wparam, std::intptr_t,
                        void* context) {
  auto& heard = *static_cast<Heard*>(context);
  switch (message) {
    case VEXO_MSG_VIDEO_INFO: {
      VideoDetectRecord record;
      std::memcpy(&record, reinterpret_cast<const void*>(wparam), sizeof record);
      Check(record.standard[0] <= VEXO_VIDEO_NONE, "a record of video loss is none");
      ++heard.video;
      break;
    }
    case VEXO_MSG_MOTION_STATUS:
      ++heard.motion;
      break;
    default:
      ++heard.others;
  }
  return 0;
}

unsigned long Number(char** arguments, int count, int at, unsigned long otherwise) {
  return at < count ? std::strtoul(arguments[at], nullptr, 10) : otherwise;
}

}  // namespace

int main(int count, char** arguments) {
  const bool real = count > 1 && std::strcmp(arguments[1], "real") == 0;
  constexpr int kFirst = 2;
  const unsigned long calls = Number(arguments, count, kFirst, 20'000);
  const auto threads = static_cast<unsigned>(Number(arguments, count, kFirst + 1, 4));
  const unsigned long seed = Number(arguments, count, kFirst + 2, 1);

  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.time = real ? VEXODESK_REAL : VEXODESK_VIRTUAL;
  Heard heard;
  VexoInitRecord init = {};
  if (VexoDesk_Open(&options) != VEXODESK_OK ||
      VEXOAPI_Initialize(VexoDesk_CreateWindow(OnMessage, &heard)) != VEXO_OK ||
      VEXOAPI_CommandProc(VEXO_CMD_INIT, &init) != VEXO_OK) {
    std::fprintf(stderr, "desk_stress: there is no board: %s\n", VexoDesk_Error());
    return 1;
  }
  VEXOAPI_SetEnableDebug(0);
  VEXOAPI_SetEnableOutputMsg(0);

  const auto begin = std::chrono::steady_clock::now();
  std::atomic<unsigned> running = threads;
  std::vector<std::thread> callers;
  for (unsigned number = 0; number < threads; ++number) {
    callers.emplace_back([&, number] {
      Caller caller(number, seed);
      for (unsigned long i = number; i < calls; i += threads) caller.Call();
      --running;
    });
  }
  while (running != 0) Check(VexoDesk_Pump(1) >= 0, VexoDesk_Error());
  for (std::thread& caller : callers) caller.join();
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;

  const std::uint64_t now = VexoDesk_Now();
  Check(VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, nullptr) == VEXO_OK, "the monitor goes on");
  Check(VexoDesk_Close() == VEXODESK_OK, VexoDesk_Error());
  Check(heard.others != 0, "no register value was told");
  std::printf(
      "%lu calls of %u threads in %s time: %.2f s, %.0f a second; %llu ms of the board's; "
      "messages: %lu of video loss, %lu of motion, %lu others; %lu wrong\n",
      calls, threads, real ? "real" : "virtual", took.count(),
      static_cast<double>(calls) / took.count(), static_cast<unsigned long long>(now), heard.video,
      heard.motion, heard.others, g_wrong.load());
  return g_wrong == 0 ? 0 : 1;
}
