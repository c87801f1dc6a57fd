/* The recorder at the desk. Its keys are the words of the command line:
 *
 *   recorder [--page] [--real [PORT]] KEY...        for example: recorder 4 9 p 1 p 6
 *
 * In virtual time it is over at once. With --real each key has its second, and at the end it stays
 * until its input ends; PORT is then the control port on 127.0.0.1, through which cables are pulled
 * and pictures are made meanwhile, and --page opens the page for a browser. The last picture is
 * recorder.png. */
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "VexoDesk.h"
#include "recorder.h"

static intptr_t OnMessage(VexoWindow window, uint32_t message, uintptr_t wparam, intptr_t lparam,
                          void* context) {
  Recorder* recorder = context;
  const uint32_t loss = recorder->loss;
  (void)window;
  (void)lparam;
  RecorderMessage(recorder, message, wparam);
  if (recorder->loss != loss) {
    printf("%6lu ms: no video on %04x\n", (unsigned long)VexoDesk_Now(), (unsigned)recorder->loss);
  }
  return 0;
}

/* Whether standard input has come to its end, or said something. */
static int InputEnded(void) {
  struct pollfd input;
  input.fd = STDIN_FILENO;
  input.events = POLLIN;
  return poll(&input, 1, 0) != 0;
}

int main(int count, char** arguments) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  Recorder recorder;
  char answer[200];
  int next = 1;
  int status = 0;

  if (next < count && strcmp(arguments[next], "--page") == 0) {
    options.page_port = VEXODESK_ANY_PORT;
    ++next;
  }
  if (next < count && strcmp(arguments[next], "--real") == 0) {
    options.time = VEXODESK_REAL;
    ++next;
    if (next < count && strlen(arguments[next]) > 1) {
      options.control_port = (uint32_t)strtoul(arguments[next++], NULL, 10);
    }
  }
  if (VexoDesk_Open(&options) != VEXODESK_OK) {
    fprintf(stderr, "recorder: %s\n", VexoDesk_Error());
    return 1;
  }
  if (VexoDesk_PagePort() > 0) {
    printf("http://127.0.0.1:%d/\n", VexoDesk_PagePort());
    fflush(stdout);
  }
  if (RecorderStart(&recorder, VexoDesk_CreateWindow(OnMessage, &recorder)) != 0) {
    fprintf(stderr, "recorder: the chips do not start\n");
    return 1;
  }
  printf("%u channels\n", 4 * recorder.chips);
  for (; next < count; ++next) {
    const int result = RecorderKey(&recorder, arguments[next][0]);
    printf("%6lu ms: key %c: %d\n", (unsigned long)VexoDesk_Now(), arguments[next][0], result);
    if (result != VEXO_OK) status = 1;
    VexoDesk_Pump(1000);
  }
  while (options.time == VEXODESK_REAL && !InputEnded()) VexoDesk_Pump(100);
  if (VexoDesk_Line("picture recorder.png", answer, sizeof answer) != VEXODESK_OK) {
    fprintf(stderr, "recorder: %s\n", answer);
    status = 1;
  }
  RecorderStop(&recorder);
  if (VexoDesk_Close() != VEXODESK_OK) {
    fprintf(stderr, "recorder: %s\n", VexoDesk_Error());
    status = 1;
  }
  return status;
}
