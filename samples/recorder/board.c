#include "board.h"

#include <string.h>

#include "layouts.h"
#include "library.h"

#define MSG_REQUEST (WM_APP + 1) /* wParam: the request, lParam: its argument */

#define MOTION_LEVELS 4u
#define MOTION_CELLS_BOX 1u /* look of the cells */
#define MOTION_TIMING_LOW 3u
#define MOTION_TIMING_HIGH 9u

typedef struct MotionSetting {
  unsigned level;
  int lower_half;
} MotionSetting;

static struct {
  Library library;
  HWND window;
  UINT changed;
  HANDLE thread;
  DWORD thread_id;
  HANDLE ready; /* the thread takes requests */
  CRITICAL_SECTION lock;
  BoardStatus published; /* under the lock */
} g_board;

/* The thread's own. */
static BoardStatus g_status;
static struct {
  const Layout* layout; /* null: the board has none */
  unsigned first;
  int playback;                            /* else live display; also below the motion set-up */
  MotionSetting motion[VEXO_MAX_CHANNELS]; /* kept; a product stores them */
  MotionSetting preview;
} g_view;

/* ---- Status ------------------------------------------------------------------------------- */

static void Publish(void) {
  EnterCriticalSection(&g_board.lock);
  g_board.published = g_status;
  LeaveCriticalSection(&g_board.lock);
  PostMessageW(g_board.window, g_board.changed, 0, 0);
}

static void SetState(BoardState state) {
  g_status.state = state;
  Publish();
}

static void ShowView(void) {
  g_status.windows = 0;
  if (g_view.layout != NULL) {
    g_status.windows = g_view.layout->windows;
    g_status.first = g_view.first;
    g_status.last = Layout_LastChannel(g_view.layout, g_status.channels, g_view.first);
  }
  SetState(g_view.playback ? BOARD_PLAYBACK : BOARD_LIVE);
}

static void ShowMotion(unsigned channel, int preview) {
  g_status.first = channel;
  g_status.last = channel;
  g_status.motion_level = g_view.preview.level;
  g_status.motion_lower_half = g_view.preview.lower_half;
  g_status.motion_preview = preview;
  SetState(BOARD_MOTION);
}

/* ---- Commands ----------------------------------------------------------------------------- */

static int Command(uint32_t code, void* record) {
  g_status.last_code = code;
  g_status.last_result = g_board.library.command_proc(code, record);
  return g_status.last_result;
}

/* A VEXO_CMD_INIT that fails comes back with the library's lock still held by this thread. This
 * thread could go on, for the lock is recursive; the bus's other drivers, other threads and other
 * processes could not. There is a release for each time it was taken. */
static void GiveBackLock(void) {
  const HANDLE lock = CreateMutexW(NULL, FALSE, L"CS4_GlobalLock");
  if (lock == NULL) return;
  ReleaseMutex(lock); /* refused, and no harm done, when this thread does not hold it */
  CloseHandle(lock);
}

static int PlayLayout(const Layout* layout, unsigned channels, unsigned first) {
  VexoPlayModeRecord mode;
  VexoSplitRecord split;
  int result;
  memset(&mode, 0, sizeof(mode));
  mode.mode = layout->mode;
  Layout_List(layout, channels, first, mode.channels);
  result = Command(VEXO_CMD_PLAY_MODE, &mode);
  if (result != VEXO_OK) return result;
  /* The switch leaves all channels blank, so that no half-built picture is seen. It shows a single
   * picture in the middle of the screen; this one fills it. */
  if (layout->mode != VEXO_SPLIT_FULL) return Command(VEXO_CMD_RESTORE_BLANK, NULL);
  memset(&split, 0, sizeof(split));
  split.mode = layout->mode;
  split.option = 1;
  Layout_List(layout, channels, first, split.channels);
  return Command(VEXO_CMD_PLAY_SPLIT, &split);
}

static int LiveLayout(const Layout* layout, unsigned channels, unsigned first) {
  VexoSplitRecord split;
  memset(&split, 0, sizeof(split));
  split.mode = layout->mode;
  Layout_List(layout, channels, first, split.channels);
  return Command(VEXO_CMD_LIVE_SPLIT, &split);
}

static int BackToLive(const Layout* layout, unsigned channels, unsigned first) {
  VexoLiveModeRecord mode;
  memset(&mode, 0, sizeof(mode));
  mode.mode = layout->mode;
  Layout_List(layout, channels, first, mode.channels);
  return Command(VEXO_CMD_LIVE_MODE, &mode);
}

/* ---- Requests ----------------------------------------------------------------------------- */

/* The chips are as an initialization leaves them. */
static void TakeChips(unsigned chips) {
  unsigned n;
  g_status.channels = chips * (VEXO_MAX_CHANNELS / VEXO_MAX_CHIPS);
  g_view.layout = Layout_Largest(g_status.channels);
  g_view.first = 0;
  g_view.playback = 0;
  for (n = 0; n < VEXO_MAX_CHANNELS; ++n) {
    g_view.motion[n].level = 1;
    g_view.motion[n].lower_half = 0;
  }
  ShowView();
}

static void Initialize(void) {
  VexoInitRecord record;
  memset(&record, 0, sizeof(record));
  if (Command(VEXO_CMD_INIT, &record) != VEXO_OK) {
    GiveBackLock();
    SetState(BOARD_NO_CHIPS);
    return;
  }
  TakeChips(record.chip_count);
}

static void ShowLayout(const Layout* layout, unsigned first) {
  const unsigned channels = g_status.channels;
  const int result =
      g_view.playback ? PlayLayout(layout, channels, first) : LiveLayout(layout, channels, first);
  if (result == VEXO_OK) {
    g_view.layout = layout;
    g_view.first = first;
  }
  ShowView();
}

static void TogglePlayback(void) {
  const int result = g_view.playback ? BackToLive(g_view.layout, g_status.channels, g_view.first)
                                     : PlayLayout(g_view.layout, g_status.channels, g_view.first);
  if (result == VEXO_OK) g_view.playback = !g_view.playback;
  ShowView();
}

/* Gives a mask to the chip, for good or as a preview. The library changes the record's mask, so
 * each call has a fresh one. */
static int SendMask(uint32_t code, unsigned channel, const MotionSetting* setting) {
  VexoMotionMaskRecord record;
  memset(&record, 0, sizeof(record));
  record.channel = (uint8_t)channel;
  record.level = (uint8_t)setting->level;
  memset(record.mask, 0xFF, sizeof(record.mask));
  if (setting->lower_half) memset(record.mask, 0, sizeof(record.mask) / 2); /* the upper rows */
  return Command(code, &record);
}

static void BeginMotion(unsigned channel) {
  VexoMotionSetupRecord record;
  record.cell_type = MOTION_CELLS_BOX;
  record.timing_low = MOTION_TIMING_LOW;
  record.timing_high = MOTION_TIMING_HIGH;
  record.channel = (uint8_t)channel;
  if (Command(VEXO_CMD_MOTION_SETUP, &record) != VEXO_OK) {
    ShowView();
    return;
  }
  g_view.preview = g_view.motion[channel];
  ShowMotion(channel, 0);
}

/* A preview that nobody has kept goes: the chip gets what was kept. */
static void DropPreview(unsigned channel) {
  if (g_status.motion_preview) {
    SendMask(VEXO_CMD_MOTION_MASK, channel, &g_view.motion[channel]);
  }
}

static void EndMotion(unsigned channel) {
  DropPreview(channel);
  Command(VEXO_CMD_MOTION_CLEAR, NULL);
  ShowLayout(g_view.layout, g_view.first);
}

static void PreviewMotion(unsigned channel) {
  const int result = SendMask(VEXO_CMD_MOTION_MASK_PREVIEW, channel, &g_view.preview);
  ShowMotion(channel, result == VEXO_OK);
}

static void HandleInMotion(Request request) {
  const unsigned channel = g_status.first;
  switch (request) {
    case REQUEST_MOTION:
      EndMotion(channel);
      break;
    case REQUEST_NEXT:
      DropPreview(channel);
      BeginMotion((channel + 1) % g_status.channels);
      break;
    case REQUEST_MOTION_LEVEL:
      g_view.preview.level = (g_view.preview.level + 1) % MOTION_LEVELS;
      PreviewMotion(channel);
      break;
    case REQUEST_MOTION_AREA:
      g_view.preview.lower_half = !g_view.preview.lower_half;
      PreviewMotion(channel);
      break;
    case REQUEST_MOTION_KEEP:
      if (SendMask(VEXO_CMD_MOTION_MASK, channel, &g_view.preview) == VEXO_OK) {
        g_view.motion[channel] = g_view.preview;
        ShowMotion(channel, 0);
      }
      break;
    default:
      break; /* no layouts in here */
  }
}

static void HandleInView(Request request, unsigned argument) {
  const Layout* layout;
  const unsigned channels = g_status.channels;
  if (g_view.layout == NULL) return;
  switch (request) {
    case REQUEST_LAYOUT:
      layout = Layout_Find(argument, channels);
      if (layout != NULL) ShowLayout(layout, 0);
      break;
    case REQUEST_NEXT:
      ShowLayout(g_view.layout, Layout_NextPage(g_view.layout, channels, g_view.first));
      break;
    case REQUEST_PLAYBACK:
      TogglePlayback();
      break;
    case REQUEST_MOTION: /* the library shows cells in live display only */
      if (!g_view.playback) BeginMotion(g_view.first);
      break;
    default:
      break;
  }
}

static void Handle(Request request, unsigned argument) {
  const BoardState state = g_status.state;
  if (state == BOARD_NO_CHIPS &&
      (request == REQUEST_INITIALIZE || request == REQUEST_INITIALIZED)) {
    Initialize();
  } else if (request == REQUEST_INITIALIZED) {
    TakeChips(argument);
  } else if (state == BOARD_MOTION) {
    HandleInMotion(request);
  } else if (state == BOARD_LIVE || state == BOARD_PLAYBACK) {
    HandleInView(request, argument);
  }
}

/* ---- The thread --------------------------------------------------------------------------- */

static void Open(void) {
  const DWORD error = Library_Load(&g_board.library);
  if (error != 0) {
    g_status.error = error;
    SetState(BOARD_NO_LIBRARY);
  } else if (g_board.library.initialize(g_board.window) == VEXO_ERROR_UNINITIALIZED) {
    SetState(BOARD_UNINITIALIZED);
  } else {
    Initialize();
  }
}

/* The monitor first: its thread may not outlive the window that it sends to, nor the library that
 * it runs in. */
static void Close(void) {
  const BoardState state = g_status.state;
  if (state != BOARD_NO_LIBRARY && state != BOARD_UNINITIALIZED) {
    Command(VEXO_CMD_STOP_MONITOR, NULL);
    g_board.library.uninitialize();
  }
  SetState(BOARD_ENDED);
}

static DWORD WINAPI Run(LPVOID unused) {
  MSG message;
  (void)unused;
  PeekMessageW(&message, NULL, WM_APP, WM_APP, PM_NOREMOVE); /* makes the thread's queue */
  SetEvent(g_board.ready);
  Open();
  while (GetMessageW(&message, NULL, 0, 0) > 0) {
    if (message.message != MSG_REQUEST) continue;
    if ((Request)message.wParam == REQUEST_END) break;
    Handle((Request)message.wParam, (unsigned)message.lParam);
  }
  Close();
  return 0;
}

int Board_Start(HWND window, UINT changed) {
  g_board.window = window;
  g_board.changed = changed;
  InitializeCriticalSection(&g_board.lock);
  g_board.ready = CreateEventW(NULL, TRUE, FALSE, NULL);
  if (g_board.ready == NULL) return 0;
  g_board.thread = CreateThread(NULL, 0, Run, NULL, 0, &g_board.thread_id);
  if (g_board.thread == NULL) return 0;
  WaitForSingleObject(g_board.ready, INFINITE);
  return 1;
}

void Board_Ask(Request request, unsigned argument) {
  PostThreadMessageW(g_board.thread_id, MSG_REQUEST, (WPARAM)request, (LPARAM)argument);
}

void Board_GetStatus(BoardStatus* status) {
  EnterCriticalSection(&g_board.lock);
  *status = g_board.published;
  LeaveCriticalSection(&g_board.lock);
}

void Board_Finish(void) {
  WaitForSingleObject(g_board.thread, INFINITE);
  CloseHandle(g_board.thread);
  CloseHandle(g_board.ready);
  /* Only now: VEXO_MSG_INIT_RESULT, which is posted, points into the library. */
  Library_Free(&g_board.library);
  DeleteCriticalSection(&g_board.lock);
}
