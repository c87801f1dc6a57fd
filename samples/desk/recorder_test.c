/* A unit test of the recorder: no device, no waiting, and every run is the same. */
#include "recorder.h"

#include <stdio.h>
#include <string.h>

#include "VexoDesk.h"

static Recorder g_recorder;
static int g_failed;

#define EXPECT(what)                                                     \
  do {                                                                   \
    if (!(what)) {                                                       \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #what); \
      ++g_failed;                                                        \
    }                                                                    \
  } while (0)

static intptr_t OnMessage(VexoWindow window, uint32_t message, uintptr_t wparam, intptr_t lparam,
                          void* context) {
  (void)window;
  (void)lparam;
  RecorderMessage(context, message, wparam);
  return 0;
}

/* Lines of the script language; the answer says why one fails. */
static int Line(const char* line) {
  char answer[500];
  const int result = VexoDesk_Line(line, answer, sizeof answer);
  if (result != VEXODESK_OK) fprintf(stderr, "%s: %s\n", line, answer);
  return result == VEXODESK_OK;
}

static int Start(const char* board) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.board = board;
  if (VexoDesk_Open(&options) != VEXODESK_OK) {
    fprintf(stderr, "%s\n", VexoDesk_Error());
    ++g_failed;
    return -1;
  }
  return RecorderStart(&g_recorder, VexoDesk_CreateWindow(OnMessage, &g_recorder));
}

static void Stop(void) {
  RecorderStop(&g_recorder);
  EXPECT(VexoDesk_Close() == VEXODESK_OK);
}

static void KnowsWhichCableIsPulled(void) {
  EXPECT(Start("board chips 2") == 0);
  VexoDesk_Pump(100);
  EXPECT(g_recorder.chips == 2 && g_recorder.loss == 0);
  EXPECT(Line("camera 5 off"));
  VexoDesk_Pump(100);
  EXPECT(g_recorder.loss == 1u << 5 && g_recorder.told_loss == 2);
  EXPECT(Line("camera 5 ntsc"));
  VexoDesk_Pump(100);
  EXPECT(g_recorder.loss == 0 && g_recorder.told_loss == 3);
  Stop();
}

static void MissesACableWhileItIsBusyForLong(void) {
  EXPECT(Start(NULL) == 0);
  VexoDesk_Pump(100);
  EXPECT(Line("camera 3 off"));
  VexoDesk_Sleep(6000); /* the library waits for 5000 ms */
  VexoDesk_Pump(1000);
  EXPECT(g_recorder.loss == 0);
  EXPECT(Line("camera 4 off")); /* the next change tells of both */
  VexoDesk_Pump(100);
  EXPECT(g_recorder.loss == (1u << 3 | 1u << 4));
  Stop();
}

static void IsToldOfMotionAgainAndAgain(void) {
  EXPECT(Start(NULL) == 0);
  EXPECT(Line("motion 7 on"));
  VexoDesk_Pump(100);
  EXPECT(g_recorder.motion == 1u << 7);
  g_recorder.told_motion = 0;
  VexoDesk_Pump(60000);
  EXPECT(g_recorder.told_motion >= 60);
  Stop();
}

static void ShowsWhatItsKeysSay(void) {
  EXPECT(Start(NULL) == 0);
  EXPECT(RecorderKey(&g_recorder, '6') == VEXO_OK);
  EXPECT(RecorderKey(&g_recorder, 'p') == VEXO_OK);
  EXPECT(g_recorder.playing);
  EXPECT(RecorderKey(&g_recorder, 'p') == VEXO_OK);
  EXPECT(RecorderKey(&g_recorder, '4') == VEXO_OK);
  EXPECT(RecorderKey(&g_recorder, '?') != VEXO_OK);
  EXPECT(Line("picture layout.png"));
  Stop();
}

static void StartsWithABrokenNvram(void) {
  EXPECT(Start("nvram fail read") == 0);
  VexoDesk_Pump(100);
  EXPECT(g_recorder.chips == 4);
  EXPECT(RecorderKey(&g_recorder, '9') == VEXO_OK);
  Stop();
  EXPECT(Start("nvram fail write\nnvram blank") == 0);
  EXPECT(RecorderKey(&g_recorder, '9') == VEXO_OK);
  Stop();
}

static void SaysThatThereIsNoPicture(void) {
  EXPECT(Start("board chips 0") == -1);
  EXPECT(RecorderKey(&g_recorder, '4') == VEXO_ERROR_NOT_READY);
  EXPECT(VexoDesk_Close() == VEXODESK_OK);
}

int main(void) {
  KnowsWhichCableIsPulled();
  MissesACableWhileItIsBusyForLong();
  IsToldOfMotionAgainAndAgain();
  ShowsWhatItsKeysSay();
  StartsWithABrokenNvram();
  SaysThatThereIsNoPicture();
  printf("%s\n", g_failed == 0 ? "The recorder does what it should." : "The recorder is wrong.");
  return g_failed == 0 ? 0 : 1;
}
