#include "chip/video_state.h"

VideoStateBlock g_video;
