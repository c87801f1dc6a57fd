#include "display/display_state.h"

DisplayState g_display;
