#include "harness/reset_library.h"

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

void ResetLibraryState() {
  g_library = {};
  g_debug = {};
  g_worker = {};
  g_bus = {};
  g_video = {};
  g_video_detect = {};
  g_display = {};
  g_layout = {};
  g_playback = {};
  g_motion = {};
  g_tokenizer = {};
  g_color = {};
  g_back_end = {};
}

}  // namespace harness
