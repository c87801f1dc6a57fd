/*
 * The thread that calls the library, and what it has done.
 *
 * Every call of the library is made by this one thread, never by the window's. A command takes
 * from a millisecond to a second and a half, text commands may wait for a broken chip without an
 * end; meanwhile the library's own thread sends messages to the window and waits for the answer,
 * 5000 ms at most. So the window's thread does nothing but answer. It is also the reason why ending
 * the monitor is safe here: VEXO_CMD_STOP_MONITOR gives the library's thread some twenty
 * milliseconds to end by itself; when it waits for a window whose own thread is in that call, it
 * cannot, and is ended by force in the middle of whatever it did.
 */
#ifndef RECORDER_BOARD_H
#define RECORDER_BOARD_H

#include <windows.h>

#include "VexoCtrlSDK.h"

/* What the window asks for. The argument is named where there is one. */
typedef enum Request {
  REQUEST_INITIALIZE,   /* the chips, again */
  REQUEST_INITIALIZED,  /* somebody else has: how many chips */
  REQUEST_LAYOUT,       /* how many pictures */
  REQUEST_NEXT,         /* the next page; in the motion set-up the next channel */
  REQUEST_PLAYBACK,     /* playback, or back to live display */
  REQUEST_MOTION,       /* the motion set-up, or out of it */
  REQUEST_MOTION_LEVEL, /* the next sensitivity, as a preview */
  REQUEST_MOTION_AREA,  /* the whole picture or its lower half, as a preview */
  REQUEST_MOTION_KEEP,  /* keeps what the preview shows */
  REQUEST_END           /* stops everything */
} Request;

typedef enum BoardState {
  BOARD_STARTING,
  BOARD_NO_LIBRARY,    /* cannot be loaded: `error` */
  BOARD_UNINITIALIZED, /* another process has the library */
  BOARD_NO_CHIPS,      /* they cannot be initialized; the window asks again later */
  BOARD_LIVE,
  BOARD_PLAYBACK,
  BOARD_MOTION,
  BOARD_ENDED
} BoardState;

typedef struct BoardStatus {
  BoardState state;
  DWORD error;
  unsigned channels;
  unsigned windows; /* pictures on the screen; 0: the board has no layouts */
  unsigned first;   /* channels on the screen; in the motion set-up its channel */
  unsigned last;
  unsigned motion_level;
  int motion_lower_half;
  int motion_preview; /* not kept yet */
  uint32_t last_code; /* the last command and its result */
  int last_result;
} BoardStatus;

/* Starts the thread, which binds the window and initializes the chips. It posts `changed` to the
 * window whenever the status has changed. Returns 0 when there can be no thread. */
int Board_Start(HWND window, UINT changed);

void Board_Ask(Request request, unsigned argument);

void Board_GetStatus(BoardStatus* status);

/* After BOARD_ENDED: waits for the thread's last steps and frees the library. */
void Board_Finish(void);

#endif /* RECORDER_BOARD_H */
