/*
 * A small recorder: the main program of a machine with VexoCtrlSDK, as a Windows CE 5 program.
 *
 * The window's thread shows what is, takes keys, and answers the library's messages; board.c calls
 * the library. The window's title tells what is shown, which cameras are lost, where there is
 * motion, and the last command with its result.
 */
#include <string.h>
#include <windows.h>

#include "VexoCtrlSDK.h"
#include "board.h"

#define MSG_BOARD_CHANGED (WM_APP + 0)

#define TIMER_INITIALIZE 1 /* chips that did not answer are asked again */
#define TIMER_END 2        /* a board that does not end is left behind */
#define INITIALIZE_MS 2000
#define END_MS 10000

#define TITLE_UNITS 256

/* What the device's system hands to the program is in wide characters, the desktop's is not. */
#ifdef UNDER_CE
typedef LPWSTR CommandLine;
#else
typedef LPSTR CommandLine;
#endif

/* What the library has told. */
static struct {
  uint32_t loss_mask;
  uint32_t motion_mask;
  uint32_t status; /* VEXO_STATUS_..., 0: none */
} g_told;

/* ---- The title ---------------------------------------------------------------------------- */

static int WriteMotion(wchar_t* text, const BoardStatus* status) {
  return wsprintfW(text, L"motion %u, level %u, %s%s", status->first, status->motion_level,
                   status->motion_lower_half ? L"lower half" : L"whole",
                   status->motion_preview ? L" (preview)" : L"");
}

static int WriteState(wchar_t* text, const BoardStatus* status) {
  switch (status->state) {
    case BOARD_STARTING:
      return wsprintfW(text, L"starting");
    case BOARD_NO_LIBRARY:
      return wsprintfW(text, L"VexoCtrlSDK.dll cannot be loaded: error %lu", status->error);
    case BOARD_UNINITIALIZED:
      return wsprintfW(text, L"uninitialized: another process has the library");
    case BOARD_NO_CHIPS:
      return wsprintfW(text, L"no chips");
    case BOARD_LIVE:
    case BOARD_PLAYBACK:
      if (status->windows == 0)
        return wsprintfW(text, L"%u channels: no layouts", status->channels);
      return wsprintfW(text, L"%s %u: %u-%u", status->state == BOARD_LIVE ? L"live" : L"playback",
                       status->windows, status->first, status->last);
    case BOARD_MOTION:
      return WriteMotion(text, status);
    default:
      return wsprintfW(text, L"ended");
  }
}

static void ShowTitle(HWND window) {
  wchar_t text[TITLE_UNITS];
  BoardStatus status;
  int length;
  Board_GetStatus(&status);
  length = WriteState(text, &status);
  length += wsprintfW(text + length, L" | lost %04X | motion %04X | 0x%04X = %d", g_told.loss_mask,
                      g_told.motion_mask, status.last_code, status.last_result);
  if (g_told.status != 0) wsprintfW(text + length, L" | status 0x%04X", g_told.status);
  SetWindowTextW(window, text);
}

/* ---- Keys --------------------------------------------------------------------------------- */

typedef struct Key {
  WPARAM key;
  Request request;
  unsigned argument;
} Key;

static const Key kKeys[] = {
    {'1', REQUEST_LAYOUT, 1},      {'4', REQUEST_LAYOUT, 4},         {'6', REQUEST_LAYOUT, 6},
    {'8', REQUEST_LAYOUT, 8},      {'9', REQUEST_LAYOUT, 9},         {'3', REQUEST_LAYOUT, 13},
    {'0', REQUEST_LAYOUT, 16},     {VK_RIGHT, REQUEST_NEXT, 0},      {'P', REQUEST_PLAYBACK, 0},
    {'M', REQUEST_MOTION, 0},      {VK_UP, REQUEST_MOTION_LEVEL, 0}, {'A', REQUEST_MOTION_AREA, 0},
    {'K', REQUEST_MOTION_KEEP, 0},
};

static void TakeKey(HWND window, WPARAM key) {
  size_t i;
  if (key == VK_ESCAPE) {
    PostMessageW(window, WM_CLOSE, 0, 0);
    return;
  }
  for (i = 0; i < sizeof(kKeys) / sizeof(kKeys[0]); ++i) {
    if (kKeys[i].key == key) Board_Ask(kKeys[i].request, kKeys[i].argument);
  }
}

/* ---- Messages ----------------------------------------------------------------------------- */

/* VEXO_MSG_VIDEO_INFO and VEXO_MSG_MOTION_STATUS are sent by the library's own thread, which waits
 * until this returns: it looks at no camera meanwhile. After 5000 ms it gives up, and a
 * VEXO_MSG_VIDEO_INFO that was given up does not come again before the mask changes. So: take what
 * is needed, call nothing of the library, wait for nobody. A record is gone when this returns. */
static void TakeVideoInfo(HWND window, const VideoDetectRecord* record) {
  g_told.loss_mask = record->loss_mask;
  ShowTitle(window);
}

/* Comes with each change, and again every 900 ms. */
static void TakeMotion(HWND window, uint32_t mask) {
  if (mask == g_told.motion_mask) return;
  g_told.motion_mask = mask;
  ShowTitle(window);
}

/* The next two are posted by the text command "vexo init" alone; VEXO_CMD_INIT answers in its
 * record. */
static void TakeStatus(HWND window, uint32_t status) {
  g_told.status = status;
  ShowTitle(window);
}

static void TakeInitResult(HWND window, const VideoState* state) {
  g_told.status = 0;
  Board_Ask(REQUEST_INITIALIZED, state->chip_count);
  ShowTitle(window);
}

static void BoardChanged(HWND window) {
  BoardStatus status;
  Board_GetStatus(&status);
  ShowTitle(window);
  if (status.state == BOARD_NO_CHIPS) SetTimer(window, TIMER_INITIALIZE, INITIALIZE_MS, NULL);
  if (status.state == BOARD_ENDED) {
    Board_Finish();
    DestroyWindow(window);
  }
}

static void TakeTimer(HWND window, WPARAM timer) {
  KillTimer(window, timer);
  if (timer == TIMER_INITIALIZE) Board_Ask(REQUEST_INITIALIZE, 0);
  /* A call does not come back. The end of the process is all that is left. */
  if (timer == TIMER_END) DestroyWindow(window);
}

static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case VEXO_MSG_VIDEO_INFO:
      TakeVideoInfo(window, (const VideoDetectRecord*)wparam);
      return 0;
    case VEXO_MSG_MOTION_STATUS:
      TakeMotion(window, (uint32_t)wparam);
      return 0;
    case VEXO_MSG_STATUS:
      TakeStatus(window, (uint32_t)wparam);
      return 0;
    case VEXO_MSG_INIT_RESULT:
      TakeInitResult(window, (const VideoState*)wparam);
      return 0;
    case MSG_BOARD_CHANGED:
      BoardChanged(window);
      return 0;
    case WM_KEYDOWN:
      TakeKey(window, wparam);
      return 0;
    case WM_TIMER:
      TakeTimer(window, wparam);
      return 0;
    case WM_CLOSE: /* the window goes when the board has ended, not before */
      Board_Ask(REQUEST_END, 0);
      SetTimer(window, TIMER_END, END_MS, NULL);
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window, message, wparam, lparam);
  }
}

static HWND MakeWindow(HINSTANCE instance, int show) {
  WNDCLASSW description;
  HWND window;
  memset(&description, 0, sizeof(description));
  description.lpfnWndProc = Procedure;
  description.hInstance = instance;
  description.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
  description.lpszClassName = L"VexoRecorder";
  if (RegisterClassW(&description) == 0) return NULL;
  window = CreateWindowExW(0, L"VexoRecorder", L"starting", WS_CAPTION | WS_SYSMENU, 0, 0, 480, 240,
                           NULL, NULL, instance, NULL);
  if (window != NULL) ShowWindow(window, show);
  return window;
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, CommandLine arguments, int show) {
  MSG message;
  const HWND window = MakeWindow(instance, show);
  (void)previous;
  (void)arguments;
  if (window == NULL || !Board_Start(window, MSG_BOARD_CHANGED)) return 1;
  while (GetMessageW(&message, NULL, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return 0;
}
