#include "script/bring_up.h"

#include "VexoCtrlSDK.h"
#include "script/parse.h"

namespace script {
namespace {

constexpr std::uint32_t kBringUpMs = 300;  // until the worker has told the host what it sees

}  // namespace

std::string BringUp(Interpreter& session, const BringUpOptions& options) {
  const auto prepare = [&](const std::string& line) { session.Prepare(*ParseLine(line, true)); };
  const unsigned channels = options.chips * kChannelsPerChip;
  prepare("pump on");
  prepare("board chips " + std::to_string(options.chips));
  if (options.pal) {
    prepare("camera all pal");
    prepare("nvram record MDVR " + std::to_string(VEXO_VIDEO_PAL) + ' ' + std::to_string(channels));
  }
  std::string what = "A board of " + std::to_string(channels) + " channels with " +
                     (options.pal ? "PAL" : "NTSC") + " cameras, ";
  if (options.bare) {
    what += "the library not attached: attach, window, command 0xF001.";
  } else {
    prepare("attach");
    prepare("window");
    prepare("command 0xF001");
    const std::int64_t result = session.State().returned.value_or(VEXO_OK);
    prepare("run " + std::to_string(kBringUpMs));
    what += result == VEXO_OK ? "initialized; the worker runs."
                              : "initialization returned " + std::to_string(result) + '.';
  }
  session.KeepWhatRan();
  return what;
}

}  // namespace script
