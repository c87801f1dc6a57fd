#include "recorder.h"

#include <string.h>

void RecorderMessage(Recorder* recorder, uint32_t message, uintptr_t wparam) {
  VideoDetectRecord detect;
  switch (message) {
    case VEXO_MSG_VIDEO_INFO:
      /* The record is the library's, for this call only. */
      memcpy(&detect, (const void*)wparam, sizeof detect);
      recorder->loss = detect.loss_mask;
      ++recorder->told_loss;
      break;
    case VEXO_MSG_MOTION_STATUS:
      recorder->motion = (uint32_t)wparam;
      ++recorder->told_motion;
      break;
    default:
      break;
  }
}

int RecorderStart(Recorder* recorder, VexoWindow window) {
  VexoInitRecord init;
  memset(recorder, 0, sizeof *recorder);
  memset(&init, 0, sizeof init);
  recorder->window = window;
  if (VEXOAPI_Initialize(window) != VEXO_OK) return -1;
  if (VEXOAPI_CommandProc(VEXO_CMD_INIT, &init) != VEXO_OK) return -1;
  recorder->chips = init.chip_count;
  return 0;
}

/* As many of the board's channels as the layout has windows, from the first. */
static void Channels(uint8_t* channels) {
  uint8_t i;
  for (i = 0; i < VEXO_MAX_CHANNELS; ++i) channels[i] = i;
}

static int Layout(Recorder* recorder, uint8_t mode) {
  VexoLiveModeRecord live;
  VexoPlayModeRecord play;
  if (recorder->playing) {
    memset(&play, 0, sizeof play);
    play.mode = mode;
    Channels(play.channels);
    return VEXOAPI_CommandProc(VEXO_CMD_PLAY_MODE, &play);
  }
  memset(&live, 0, sizeof live);
  live.mode = mode;
  Channels(live.channels);
  return VEXOAPI_CommandProc(VEXO_CMD_LIVE_MODE, &live);
}

int RecorderKey(Recorder* recorder, char key) {
  VexoMotionSetupRecord motion;
  switch (key) {
    case '1':
      return Layout(recorder, VEXO_SPLIT_FULL);
    case '4':
      return Layout(recorder, VEXO_SPLIT_4);
    case '9':
      return Layout(recorder, VEXO_SPLIT_9);
    case '6':
      return Layout(recorder, VEXO_SPLIT_16);
    case 'p':
      recorder->playing = !recorder->playing;
      return Layout(recorder, VEXO_SPLIT_4);
    case 'm':
      memset(&motion, 0, sizeof motion);
      motion.timing_low = 3;
      motion.timing_high = 9;
      return VEXOAPI_CommandProc(VEXO_CMD_MOTION_SETUP, &motion);
    case 'c':
      return VEXOAPI_CommandProc(VEXO_CMD_MOTION_CLEAR, NULL);
    default:
      return VEXO_ERROR_PARAMETER;
  }
}

void RecorderStop(Recorder* recorder) {
  VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, NULL);
  VEXOAPI_Uninitialize();
  recorder->window = NULL;
}
