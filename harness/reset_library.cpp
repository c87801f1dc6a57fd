#include "harness/reset_library.h"

#include <tuple>

#include "api/worker.h"
#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/window_tables.h"
#include "motion/motion_state.h"
#include "report/diagnostics.h"
#include "report/library_state.h"
#include "setup/video_detection.h"
#include "text/back_end_text.h"
#include "text/color_settings.h"
#include "text/tokenizer.h"

namespace harness {
namespace {

auto Records() {
  return std::tie(g_library, g_debug, g_worker, g_bus, g_video, g_video_detect, g_display, g_layout,
                  g_playback, g_motion, g_tokenizer, g_color, g_back_end);
}

// As they were loaded, before anything ran: not what the headers say of them, so that tests see
// what the library's own binary begins with.
const auto g_loaded =
    std::apply([](const auto&... record) { return std::tuple(record...); }, Records());

}  // namespace

void ResetLibraryState() { Records() = g_loaded; }

}  // namespace harness
