/*
 * VexoDesk: the recorder's board on a PC, for a host program of your own.
 *
 * libVexoCtrlSDK.so holds the library and a simulated board. A program calls the exports of
 * VexoCtrlSDK.h as it does on the device; the functions here are what the device's system does for
 * it: a board, a window with a procedure, time, and messages. One board a process at a time.
 *
 *   VexoDeskOptions options = VEXODESK_DEFAULTS;
 *   options.time = VEXODESK_VIRTUAL;
 *   options.board = "board chips 2\ncamera 5 off";
 *   if (VexoDesk_Open(&options) != VEXODESK_OK) { puts(VexoDesk_Error()); return 1; }
 *   VEXOAPI_Initialize(VexoDesk_CreateWindow(OnMessage, 0));
 *   VEXOAPI_CommandProc(VEXO_CMD_INIT, &record);
 *   VexoDesk_Pump(1000);
 *   VexoDesk_Close();
 *
 * Threads. Any thread may call the exports of VexoCtrlSDK.h and the functions here; those that say
 * so belong to the thread that opened the board, which is the one that the windows belong to. One
 * thread is in the library at a time, as on the device, whose processor is one; a call waits for
 * its turn, and others go on where it sleeps or waits.
 *
 * Time. VEXODESK_REAL is the clock's. VEXODESK_VIRTUAL passes only in VexoDesk_Pump and
 * VexoDesk_Sleep and where the library itself sleeps or waits, and jumps to the next thing that is
 * due: an hour takes a second, and a program with one thread runs the same every time. With
 * several, a thread that waits in the library lets it pass too: its message to a window whose
 * thread does not pump just then runs out at once.
 *
 * Without a board the exports of VexoCtrlSDK.h answer as those of an uninitialized library. A
 * program may end with its board open; its files are then as they are.
 *
 * C99 and C++98 will do. On failure a function returns less than 0 (or null), changes nothing, and
 * VexoDesk_Error says why.
 */
#ifndef VEXODESK_H
#define VEXODESK_H

#include <stddef.h>

#include "VexoCtrlSDK.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Results ------------------------------------------------------------------------------- */

#define VEXODESK_OK 0
#define VEXODESK_ERROR_STATE (-1)    /* a board is open already, or none is              */
#define VEXODESK_ERROR_ARGUMENT (-2) /* an option or argument out of range               */
#define VEXODESK_ERROR_THREAD (-3)   /* not the thread that opened the board             */
#define VEXODESK_ERROR_LINE (-4)     /* no line of the language, or it could not be done */
#define VEXODESK_ERROR_UNMET (-5)    /* an expectation was not met                       */
#define VEXODESK_ERROR_SYSTEM (-6)   /* a file, or the socket of a port                  */
#define VEXODESK_ERROR_BUSY (-7)     /* a call is still under way                        */

/* Why the calling thread's last failing call of a VexoDesk function failed, in words (UTF-8).
 * Valid until its next call. Any thread. */
const char* VexoDesk_Error(void);

/* ---- The board ----------------------------------------------------------------------------- */

#define VEXODESK_VIRTUAL 0u
#define VEXODESK_REAL 1u

#define VEXODESK_ANY_PORT 0xFFFFFFFFu /* one that is free: VexoDesk_ControlPort tells which */

typedef struct VexoDeskOptions {
  uint32_t size;         /* sizeof(VexoDeskOptions)                                              */
  uint32_t time;         /* VEXODESK_VIRTUAL or VEXODESK_REAL                                    */
  uint32_t control_port; /* on 127.0.0.1: 1-65535, VEXODESK_ANY_PORT, or 0: none                 */
  uint32_t page_port;    /* the same for the page, on which a browser shows the board            */
  const char* board;     /* lines of the script language that make the board, a line feed between
                            them, or null: four chips, NTSC on all channels                      */
  const char* texts;     /* file for the library's texts, "-": standard error, or null: nowhere  */
  const char* trace;     /* file for the trace as JSON lines, or null. Both grow with the run    */
} VexoDeskOptions;

#define VEXODESK_DEFAULTS \
  { sizeof(VexoDeskOptions), VEXODESK_VIRTUAL, 0, 0, NULL, NULL, NULL }

/*
 * Makes a board and loads the library: its process attach has run when this returns. The board's
 * lines run before it, which must be such as change the board. The calling thread becomes the one
 * that the windows belong to. Null options are VEXODESK_DEFAULTS. Options are read during the call
 * only. VEXODESK_ERROR_STATE, _ARGUMENT, _LINE or _SYSTEM.
 */
int VexoDesk_Open(const VexoDeskOptions* options);

/*
 * Unloads the library (its process detach runs: stop the monitor first, as on the device) and
 * forgets the board and its windows. Ends the lines and connections of both ports. The thread that
 * opened the board. VEXODESK_ERROR_BUSY while another thread is in a call, and in a window's
 * procedure. VEXODESK_ERROR_SYSTEM when a file could not be written whole: the board is then closed
 * all the same. A new board can be opened afterwards.
 */
int VexoDesk_Close(void);

/* The control port's number, 0 when there is none, or less than 0. Any thread. */
int VexoDesk_ControlPort(void);

/* The same for the page, which is http://127.0.0.1:NUMBER/. Any thread. */
int VexoDesk_PagePort(void);

/*
 * Runs one line of the script language (docs/script-language.md), such as "camera 5 off",
 * "expect register master 0 0x16 0x00" or "picture now.png". Its answer, UTF-8 lines with a line
 * feed between them, goes to answer: capacity bytes with the terminator, what does not fit is cut;
 * null and 0: none wanted. Lines that call the library run it on the calling thread. Lines that
 * are a script's or console's own (undo, break, ...) are refused. Any thread.
 * Returns VEXODESK_OK; VEXODESK_ERROR_LINE, _UNMET or _STATE, and the answer says why; or
 * VEXODESK_ERROR_ARGUMENT for no line, and for a capacity without an answer.
 */
int VexoDesk_Line(const char* line, char* answer, size_t capacity);

/* ---- Windows and time ---------------------------------------------------------------------- */

/*
 * Called with each message of the window, by the thread that opened the board, while it pumps or
 * calls the library. lparam is 0; see VexoCtrlSDK.h for wparam, whose record is readable until the
 * procedure returns (VEXO_MSG_INIT_RESULT: until the library is unloaded), even where its sender
 * has ended meanwhile. It may call anything here, but for VexoDesk_Close, and in VexoCtrlSDK.h, and
 * must return: no exception, no longjmp. The result is dropped.
 */
typedef intptr_t (*VexoDeskProcedure)(VexoWindow window, uint32_t message, uintptr_t wparam,
                                      intptr_t lparam, void* context);

/*
 * A window for VEXOAPI_Initialize, null on failure. procedure may be null: messages are then taken
 * and forgotten. context is handed to it. The thread that opened the board.
 */
VexoWindow VexoDesk_CreateWindow(VexoDeskProcedure procedure, void* context);

/* The window is gone: what was posted to it is dropped, sends to it fail. The thread that opened
 * the board. VEXODESK_ERROR_ARGUMENT for what is no window. */
int VexoDesk_DestroyWindow(VexoWindow window);

/*
 * Handles messages while duration_ms pass; 0: those that are there. Returns how many were
 * handled. The thread that opened the board; a procedure may call it, too.
 */
int VexoDesk_Pump(uint32_t duration_ms);

/* Lets duration_ms pass, and handles no message: the host is busy elsewhere. Any thread. */
int VexoDesk_Sleep(uint32_t duration_ms);

/* Milliseconds since the board was opened, 0 when none is. Any thread. */
uint64_t VexoDesk_Now(void);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VEXODESK_H */
