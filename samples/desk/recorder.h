/* A small recorder on VexoCtrlSDK: what it knows of its cameras, and the keys of its front. */
#ifndef RECORDER_H
#define RECORDER_H

#include "VexoCtrlSDK.h"

typedef struct Recorder {
  VexoWindow window;
  unsigned chips;     /* that the library found; four channels each  */
  uint32_t loss;      /* bit n: channel n has no video               */
  uint32_t motion;    /* bit n: motion on channel n                  */
  unsigned told_loss; /* how often the library told of either        */
  unsigned told_motion;
  int playing;
} Recorder;

/* What the window does with the library's messages. */
void RecorderMessage(Recorder* recorder, uint32_t message, uintptr_t wparam);

/* Binds the window and starts the chips and the monitor. 0, or -1: there is no picture. */
int RecorderStart(Recorder* recorder, VexoWindow window);

/* '1' one picture, '4' 2 x 2, '9' 3 x 3, '6' 4 x 4; 'p' playback and back; 'm' motion cells of
 * channel 0, 'c' without. 0, or what the library answered. */
int RecorderKey(Recorder* recorder, char key);

/* Stops the monitor and lets go of the window. */
void RecorderStop(Recorder* recorder);

#endif
