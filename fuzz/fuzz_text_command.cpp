// Any bytes as text lines, on boards of every size. The first byte chooses the board; the rest is
// lines of up to 4 KiB, each ended by a zero byte. A line is handed over in a block of its own
// size, so that a read past its end is found.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "VexoCtrlSDK.h"
#include "display/display_state.h"
#include "display/window_tables.h"
#include "harness/host.h"
#include "sim/world.h"
#include "text/tokenizer.h"

namespace {

constexpr std::size_t kLongestLine = 4096;

// The bits of the first byte.
constexpr unsigned kChips = 0x03;  // one less than the board has
constexpr unsigned kPal = 0x04;
constexpr unsigned kNotInitialized = 0x08;
constexpr unsigned kNoBackEnd = 0x10;

void StartBoard(unsigned choice) {
  harness::Restart();
  sim::World& world = sim::TheWorld();
  world.trace.SetEnabled(false);
  world.board.FitChips((choice & kChips) + 1);
  const sim::Camera camera = (choice & kPal) != 0 ? sim::Camera::Pal : sim::Camera::Ntsc;
  for (unsigned n = 0; n < 16; ++n) world.board.SetCamera(n, camera);
  if ((choice & kNoBackEnd) != 0) world.drivers.Set("VBE1:", sim::Drivers::State::Absent);
  harness::Entry(1);
  harness::Initialize(world.windows.Create());
  if ((choice & kNotInitialized) == 0) {
    sim::Bytes record;
    harness::CommandProc(VEXO_CMD_INIT, &record);
    harness::CommandProc(VEXO_CMD_STOP_MONITOR, nullptr);
  }
}

void Require(bool condition) {
  if (!condition) std::abort();
}

void RunLine(const char* text, std::size_t length) {
  const auto line = std::make_unique<char[]>(length + 1);
  std::memcpy(line.get(), text, length);
  line[length] = '\0';
  const int result = VEXOAPI_TextCommandProc(line.get());
  Require(result == VEXO_OK || result == VEXO_ERROR_FAILED || result == VEXO_ERROR_NO_HEADER);
  Require(length <= kLineMax || result == VEXO_ERROR_FAILED);
  Require(g_display.live_split <= kSplitModes && g_display.play_split <= kSplitModes);
  Require(g_tokenizer.length <= kLineMax && g_tokenizer.position <= g_tokenizer.length);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  StartBoard(data[0]);
  const char* text = reinterpret_cast<const char*>(data) + 1;
  const char* end = reinterpret_cast<const char*>(data) + size;
  while (text < end) {
    const auto left = static_cast<std::size_t>(end - text);
    const void* zero = std::memchr(text, '\0', left);
    const std::size_t length =
        zero == nullptr ? left : static_cast<std::size_t>(static_cast<const char*>(zero) - text);
    RunLine(text, std::min(length, kLongestLine));
    text += length + 1;
  }
  return 0;
}
