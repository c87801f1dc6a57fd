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
namespace {

// The records as they were loaded, before anything ran: not what the headers say of them, so that
// tests see what the library's own binary begins with.
const LibraryState g_loaded_library = g_library;
const DebugSettings g_loaded_debug = g_debug;
const WorkerState g_loaded_worker = g_worker;
const BusWindows g_loaded_bus = g_bus;
const VideoStateBlock g_loaded_video = g_video;
const VideoDetectState g_loaded_video_detect = g_video_detect;
const DisplayState g_loaded_display = g_display;
const LayoutState g_loaded_layout = g_layout;
const PlaybackState g_loaded_playback = g_playback;
const MotionState g_loaded_motion = g_motion;
const TokenizerState g_loaded_tokenizer = g_tokenizer;
const ColorState g_loaded_color = g_color;
const BackEndState g_loaded_back_end = g_back_end;

}  // namespace

void ResetLibraryState() {
  g_library = g_loaded_library;
  g_debug = g_loaded_debug;
  g_worker = g_loaded_worker;
  g_bus = g_loaded_bus;
  g_video = g_loaded_video;
  g_video_detect = g_loaded_video_detect;
  g_display = g_loaded_display;
  g_layout = g_loaded_layout;
  g_playback = g_loaded_playback;
  g_motion = g_loaded_motion;
  g_tokenizer = g_loaded_tokenizer;
  g_color = g_loaded_color;
  g_back_end = g_loaded_back_end;
}

}  // namespace harness
