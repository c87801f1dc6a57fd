/*
 * VexoCtrlSDK: drives the TW2835 video chips of a mobile digital video recorder.
 *
 * A host loads the library, binds its main window with VEXOAPI_Initialize, and then sends binary
 * commands (VEXOAPI_CommandProc) or text lines (VEXOAPI_TextCommandProc). The library answers with
 * result codes and tells the host about video loss and motion by window messages.
 *
 * A host's life: load, VEXOAPI_Initialize, VEXO_CMD_INIT, commands and messages,
 * VEXO_CMD_STOP_MONITOR, VEXOAPI_Uninitialize, unload. Unloading does not stop the monitor, whose
 * code is then gone. docs/host-programs.md tells it with examples.
 *
 * All multi-byte fields are little-endian. Records belong to the caller: the library reads and
 * writes them only during the call, and they need no particular alignment. Reserved bytes are
 * neither read nor written.
 *
 * C89 and C++98 will do, also without <stdint.h>, as the compilers of Windows CE 5 are.
 */
#ifndef VEXOCTRLSDK_H
#define VEXOCTRLSDK_H

#if defined(_MSC_VER) && _MSC_VER < 1600 /* these have no <stdint.h> */
typedef unsigned __int8 uint8_t;
typedef unsigned __int16 uint16_t;
typedef unsigned __int32 uint32_t;
#else
#include <stdint.h>
#endif

/* One UTF-16 unit: on Windows what its own functions take. */
#ifdef _WIN32
#include <stddef.h> /* C has wchar_t from here */
typedef wchar_t VexoChar16;
#elif defined(__cplusplus) && __cplusplus >= 201103L
typedef char16_t VexoChar16;
#else
typedef uint16_t VexoChar16;
#endif

/* Stops the compiler when a record is not laid out as below. */
#if defined(__cplusplus) && (__cplusplus >= 201103L || (defined(_MSC_VER) && _MSC_VER >= 1900))
#define VEXO_ASSERT_SIZE(type, bytes) static_assert(sizeof(type) == (bytes), #type)
#elif !defined(__cplusplus) && defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define VEXO_ASSERT_SIZE(type, bytes) _Static_assert(sizeof(type) == (bytes), #type)
#else
#define VEXO_ASSERT_SIZE(type, bytes) \
  typedef char VexoSizeOf##type[sizeof(type) == (bytes) ? 1 : -1]
#endif

/* A window handle of the host (HWND). */
typedef void* VexoWindow;

/* ---- Result codes ------------------------------------------------------------------------- */

#define VEXO_OK 0                     /* done; some operations hand through a positive value   */
#define VEXO_ERROR_FAILED (-1)        /* unknown code, refused in this mode, or failed         */
#define VEXO_ERROR_NO_HEADER (-4)     /* text line without a known header word                 */
#define VEXO_ERROR_PARAMETER (-5)     /* required record missing, or argument out of range     */
#define VEXO_ERROR_UNINITIALIZED (-6) /* the library is not initialized in this process; here  */
                                      /* VEXOAPI_CommandProc answers VEXO_ERROR_NOT_READY      */
#define VEXO_ERROR_NOT_READY (-8)     /* no host window, chips not ready, or unknown board     */

/* ---- Command codes of VEXOAPI_CommandProc --------------------------------------------------- */

#define VEXO_CMD_INIT 0xF001u                /* VexoInitRecord, in and out                      */
#define VEXO_CMD_STOP_MONITOR 0xF002u        /* no record                                       */
#define VEXO_CMD_READ_REG 0xF003u            /* VexoRegRecord, in and out                       */
#define VEXO_CMD_WRITE_REG 0xF004u           /* VexoRegRecord                                   */
#define VEXO_CMD_LIVE_SPLIT 0xF005u          /* VexoSplitRecord                                 */
#define VEXO_CMD_PLAY_SPLIT 0xF006u          /* VexoSplitRecord                                 */
#define VEXO_CMD_MOTION_MASK 0xF007u         /* VexoMotionMaskRecord; its mask is transformed   */
#define VEXO_CMD_CHANNEL_MASKS 0xF008u       /* VexoChannelMasksRecord                          */
#define VEXO_CMD_LIVE_MODE 0xF009u           /* VexoLiveModeRecord                              */
#define VEXO_CMD_PLAY_MODE 0xF00Au           /* VexoPlayModeRecord                              */
#define VEXO_CMD_BLANK_MASK 0xF00Bu          /* VexoMaskRecord                                  */
#define VEXO_CMD_BIT0_MASK 0xF00Cu           /* VexoMaskRecord                                  */
#define VEXO_CMD_RESTORE_BLANK 0xF00Du       /* no record                                       */
#define VEXO_CMD_MOTION_SETUP 0xF00Eu        /* VexoMotionSetupRecord                           */
#define VEXO_CMD_MOTION_CLEAR 0xF00Fu        /* no record                                       */
#define VEXO_CMD_MOTION_MASK_PREVIEW 0xF010u /* VexoMotionMaskRecord; its mask is transformed   */
#define VEXO_CMD_MOTION_REG 0xF011u          /* VexoMotionRegRecord                             */

/* Register dumps to the debug output: 0xFF00 + 4 * page + chip position; no record. */
#define VEXO_CMD_DUMP_MASTER_P0 0xFF00u
#define VEXO_CMD_DUMP_SLAVE1_P0 0xFF01u
#define VEXO_CMD_DUMP_SLAVE2_P0 0xFF02u
#define VEXO_CMD_DUMP_SLAVE3_P0 0xFF03u
#define VEXO_CMD_DUMP_MASTER_P1 0xFF04u
#define VEXO_CMD_DUMP_SLAVE1_P1 0xFF05u
#define VEXO_CMD_DUMP_SLAVE2_P1 0xFF06u
#define VEXO_CMD_DUMP_SLAVE3_P1 0xFF07u
#define VEXO_CMD_DUMP_MASTER_P2 0xFF08u
#define VEXO_CMD_DUMP_SLAVE1_P2 0xFF09u
#define VEXO_CMD_DUMP_SLAVE2_P2 0xFF0Au
#define VEXO_CMD_DUMP_SLAVE3_P2 0xFF0Bu

/* ---- Shared values -------------------------------------------------------------------------- */

#define VEXO_MAX_CHIPS 4
#define VEXO_MAX_CHANNELS 16
#define VEXO_MOTION_MASK_BYTES 24

/* Chip select codes: which chip a register access goes to. Reading with ALL is not supported. */
#define VEXO_CHIP_MASTER 0x03u
#define VEXO_CHIP_SLAVE1 0x0Cu
#define VEXO_CHIP_SLAVE2 0x30u
#define VEXO_CHIP_SLAVE3 0xC0u
#define VEXO_CHIP_ALL 0xFFu

/* Video standards. */
#define VEXO_VIDEO_NTSC 0
#define VEXO_VIDEO_PAL 1
#define VEXO_VIDEO_NONE 2

/* Split modes. 4-channel boards have 0 and 1, 8-channel boards 0 to 4, 16-channel boards all. */
#define VEXO_SPLIT_FULL 0 /* one picture             */
#define VEXO_SPLIT_4 1    /* 2 x 2                   */
#define VEXO_SPLIT_6 2    /* one large, five small   */
#define VEXO_SPLIT_8 3    /* one large, seven small  */
#define VEXO_SPLIT_9 4    /* 3 x 3                   */
#define VEXO_SPLIT_13 5   /* one large, twelve small */
#define VEXO_SPLIT_16 6   /* 4 x 4                   */

/* ---- Parameter records ---------------------------------------------------------------------- */

/* VEXO_CMD_INIT. Read: bytes 0-3. Written: bytes 12-23 (all zero when initialization fails). */
typedef struct VexoInitRecord {
  uint16_t reserved1;              /*  0 in: passed on, ignored                                */
  uint16_t reserved2;              /*  2 in: passed on, ignored                                */
  uint8_t reserved3[8];            /*  4                                                       */
  uint32_t chip_count;             /* 12 out: chips found, 1-4; four channels each             */
  uint32_t video_standard;         /* 16 out: VEXO_VIDEO_..., or a stored byte treated as PAL  */
  uint8_t chip_id[VEXO_MAX_CHIPS]; /* 20 out: identification of master, slave 1, 2, 3          */
} VexoInitRecord;

/* VEXO_CMD_READ_REG (reads bytes 0-2, writes byte 3), VEXO_CMD_WRITE_REG (reads bytes 0-3) and
 * VEXO_MSG_REG_VALUE. */
typedef struct VexoRegRecord {
  uint8_t chip_select; /* 0 VEXO_CHIP_...           */
  uint8_t page;        /* 1 register page, 0-2      */
  uint8_t reg;         /* 2 register number         */
  uint8_t value;       /* 3 value read or to write  */
} VexoRegRecord;

/* VEXO_CMD_LIVE_SPLIT (reads byte 4 and, from byte 6, one byte a window of the mode) and
 * VEXO_CMD_PLAY_SPLIT (reads byte 5 too; in mode 0 without the option up to as many list bytes as
 * the board has channels; refuses modes 2, 3 and 5, which VEXO_CMD_PLAY_MODE lays out).
 *
 * A number not below the board's channel count shows nothing. List channels in ascending order:
 * live splits of 8 and 16 channels, and the playback modes 0 (centred), 1 and 4 of every board, go
 * through the channels from 0 up, and an entry out of order or without a channel empties its window
 * and all later ones.
 * Only the 3 x 3 page of 16 channels that begins with 9 goes around. In live display, here and in
 * VEXO_CMD_LIVE_MODE, channels 0 and 1 then have windows 7 and 8, and entries 7 and 8 are not read.
 * In playback, here and in VEXO_CMD_PLAY_MODE, channel 0 has window 7 when entry 7 is 0, and
 * channel 1 has window 8 when entry 8 is 0: 9 to 15, 0, 0 shows channel 1, and 9 to 15, 0, 1 hides
 * it. */
typedef struct VexoSplitRecord {
  uint8_t reserved[4];                 /* 0                                       */
  uint8_t mode;                        /* 4 VEXO_SPLIT_...                        */
  uint8_t option;                      /* 5 playback only: full picture in mode 0 */
  uint8_t channels[VEXO_MAX_CHANNELS]; /* 6 channel of each window, 0-15          */
} VexoSplitRecord;

/* VEXO_CMD_MOTION_MASK and VEXO_CMD_MOTION_MASK_PREVIEW. Read: all 26 bytes (byte 0 alone when the
 * channel is refused). Written: the mask, left as it was sent to the chip: the bits of each byte
 * reversed, then the two bytes of each row exchanged. */
typedef struct VexoMotionMaskRecord {
  uint8_t channel;                      /*  0 below the channel count                   */
  uint8_t level;                        /*  1 sensitivity, 0-3                          */
  uint8_t mask[VEXO_MOTION_MASK_BYTES]; /*  2 12 rows of 16 cells, two bytes a row      */
} VexoMotionMaskRecord;

/* VEXO_CMD_CHANNEL_MASKS. Read: all 12 bytes. Bit n stands for channel n. */
typedef struct VexoChannelMasksRecord {
  uint32_t live_display; /* 0 channels shown in live display */
  uint32_t record;       /* 4 channels that are recorded     */
  uint32_t play_display; /* 8 channels shown in playback     */
} VexoChannelMasksRecord;

/* VEXO_CMD_LIVE_MODE. Read: byte 4 and, from byte 5, one byte a window of the mode. Answers VEXO_OK
 * also when the board lacks the mode: the view is then changed and the split is not. */
typedef struct VexoLiveModeRecord {
  uint8_t reserved[4];                 /* 0                                */
  uint8_t mode;                        /* 4 VEXO_SPLIT_...                 */
  uint8_t channels[VEXO_MAX_CHANNELS]; /* 5 channel of each window, 0-15   */
} VexoLiveModeRecord;

/* VEXO_CMD_PLAY_MODE. Read: byte 5 and, from byte 6, one byte a window of the mode (in mode 0,
 * which shows a centred picture, up to as many as the board has channels). Answers VEXO_OK also
 * when the board lacks the mode: the view is then changed and the split is not. Otherwise all
 * channels are blank afterwards; VEXO_CMD_PLAY_SPLIT or VEXO_CMD_RESTORE_BLANK shows them. */
typedef struct VexoPlayModeRecord {
  uint8_t reserved[5];                 /* 0                                */
  uint8_t mode;                        /* 5 VEXO_SPLIT_...                 */
  uint8_t channels[VEXO_MAX_CHANNELS]; /* 6 channel of each window, 0-15   */
} VexoPlayModeRecord;

/* VEXO_CMD_BLANK_MASK and VEXO_CMD_BIT0_MASK. Read: all 4 bytes. */
typedef struct VexoMaskRecord {
  uint32_t mask; /* 0 bit n: channel n */
} VexoMaskRecord;

/* VEXO_CMD_MOTION_SETUP. Read: all 4 bytes. */
typedef struct VexoMotionSetupRecord {
  uint8_t cell_type;   /* 0 look of the cell boxes, 0-4                       */
  uint8_t timing_low;  /* 1 low half of the shared parameter: 0-11, else 3    */
  uint8_t timing_high; /* 2 high half of the shared parameter: 0-11, else 9   */
  uint8_t channel;     /* 3 channel shown full screen with its cells          */
} VexoMotionSetupRecord;

/* VEXO_CMD_MOTION_REG. Read: all 3 bytes. */
typedef struct VexoMotionRegRecord {
  uint8_t channel; /* 0 channel, 0-15            */
  uint8_t high;    /* 1 high half of the value   */
  uint8_t low;     /* 2 low half of the value    */
} VexoMotionRegRecord;

/* ---- Host window messages -------------------------------------------------------------------- */

/*
 * The monitor, a thread that VEXO_CMD_INIT starts, reads the cameras once in each period of the
 * master's sync bit (page 1, register 0xAB, bit 4), and sends to the window that is bound then:
 *
 * VEXO_MSG_VIDEO_INFO after its first reading, and whenever the loss mask is not the one that it
 * told last. Another standard alone is no news.
 *
 * VEXO_MSG_MOTION_STATUS whenever the motion mask is not the one that it told last, 0 at first; and
 * an unchanged one, 0 too, again every 900 ms: those count from the first reading without a change
 * after the last repeat, and a change in between does not start them anew.
 *
 * It sends with a limit of 5000 ms, and reads nothing meanwhile. Told is what it tried to tell: a
 * VEXO_MSG_VIDEO_INFO that nobody answers, or that finds no window, is not sent again until the
 * mask changes or VEXO_CMD_INIT starts a monitor anew.
 *
 * Sent messages are handled by the window's thread where it takes messages. The procedure may call
 * the library. Where it ends the monitor, with VEXO_CMD_STOP_MONITOR or VEXO_CMD_INIT, the record
 * of the monitor's message is gone: read it before. In the VEXO_MSG_REG_VALUE of another thread's
 * VEXO_CMD_READ_REG, which holds the lock, a command of the procedure and that send wait for each
 * other until the 5000 ms are over.
 */
#define VEXO_MSG_STATUS 0x2401u        /* wParam: VEXO_STATUS_...                                */
#define VEXO_MSG_INIT_RESULT 0x2402u   /* wParam: address of a VideoState, valid while loaded    */
#define VEXO_MSG_VIDEO_INFO 0x2403u    /* wParam: address of a VideoDetectRecord, for the call   */
#define VEXO_MSG_MOTION_STATUS 0x2404u /* wParam: 16-bit mask, bit n: motion on channel n */
#define VEXO_MSG_CHIP_VERSION 0x2405u  /* wParam: byte p: 1 when chip p was found; 0 before init */
#define VEXO_MSG_REG_VALUE 0x2406u     /* wParam: address of a VexoRegRecord, for the call       */

/* Codes of VEXO_MSG_STATUS. */
#define VEXO_STATUS_DETECT_ERROR 0x1003u     /* chip initialization found no chip               */
#define VEXO_STATUS_DEVICE_PROBLEM 0x1004u   /* chip initialization met a device problem        */
#define VEXO_STATUS_NOT_DETECTED 0x1005u     /* chip initialization gave no channel             */
#define VEXO_STATUS_VBE_OPEN_FAILED 0x2001u  /* the video back-end driver could not be opened   */
#define VEXO_STATUS_VBE_ALREADY_OPEN 0x2002u /* the video back-end driver was open already      */

/* VEXO_MSG_INIT_RESULT: the same as bytes 12-23 of VexoInitRecord. */
typedef struct VideoState {
  uint32_t chip_count;             /* 0 chips found                                              */
  uint32_t video_standard;         /* 4 VEXO_VIDEO_..., or another stored byte: treated as PAL   */
  uint8_t chip_id[VEXO_MAX_CHIPS]; /* 8 identification of master, slave 1, slave 2, slave 3      */
} VideoState;

/* VEXO_MSG_VIDEO_INFO. Go by loss_mask: a channel in it may still show NTSC or PAL. */
typedef struct VideoDetectRecord {
  uint32_t loss_mask;                  /* 0 bit n: channel n has no video                   */
  uint8_t standard[VEXO_MAX_CHANNELS]; /* 4 VEXO_VIDEO_... of each channel; 0 where no chip */
} VideoDetectRecord;

VEXO_ASSERT_SIZE(VexoChar16, 2);
VEXO_ASSERT_SIZE(VexoInitRecord, 24);
VEXO_ASSERT_SIZE(VexoRegRecord, 4);
VEXO_ASSERT_SIZE(VexoSplitRecord, 22);
VEXO_ASSERT_SIZE(VexoMotionMaskRecord, 26);
VEXO_ASSERT_SIZE(VexoChannelMasksRecord, 12);
VEXO_ASSERT_SIZE(VexoLiveModeRecord, 21);
VEXO_ASSERT_SIZE(VexoPlayModeRecord, 22);
VEXO_ASSERT_SIZE(VexoMaskRecord, 4);
VEXO_ASSERT_SIZE(VexoMotionSetupRecord, 4);
VEXO_ASSERT_SIZE(VexoMotionRegRecord, 3);
VEXO_ASSERT_SIZE(VideoState, 12);
VEXO_ASSERT_SIZE(VideoDetectRecord, 20);

/* ---- Exports ------------------------------------------------------------------------------ */

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Threads. "Any thread" says that a call may be made beside other calls. Two ask for more, since
 * they reach the chips without the lock: VEXO_CMD_BLANK_MASK and VEXOAPI_TextCommandProc. So does
 * the monitor: where a reading of it falls between the bus cycles of a call, either may go astray.
 *
 * Times are those of the pauses that the library asks for; a system with a coarse timer makes them
 * longer.
 */

/*
 * Binds the host window that gets the messages above. Any thread.
 * Returns VEXO_OK, or VEXO_ERROR_UNINITIALIZED. A handle that is no window also gives VEXO_OK but
 * binds nothing; the commands then go on answering VEXO_ERROR_NOT_READY.
 */
int VEXOAPI_Initialize(VexoWindow window);

/* Forgets the host window. Stops nothing: send VEXO_CMD_STOP_MONITOR first. Any thread. */
void VEXOAPI_Uninitialize(void);

/*
 * Copies the library's version ("1. 0. 1. 6") with its terminator into buffer, which holds at
 * least 20 units; null copies nothing. Returns the length in units without the terminator, 0 when
 * the library is not initialized or has no version resource. Any thread.
 */
int VEXOAPI_GetVersion(VexoChar16* buffer);

/* Turns the levelled diagnostics on (non-zero) or off. Any thread. */
void VEXOAPI_SetEnableDebug(uint32_t enable);

/* Turns the plain diagnostics and the register dumps on (non-zero) or off. Any thread. */
void VEXOAPI_SetEnableOutputMsg(uint32_t enable);

/*
 * Runs one binary command. Only the low 16 bits of code count; parameter is the record named
 * beside the code, or null where none is needed.
 * Returns VEXO_OK or the operation's own result; VEXO_ERROR_FAILED for an unknown code or a failed
 * operation; VEXO_ERROR_PARAMETER for a missing record or a refused argument;
 * VEXO_ERROR_NOT_READY when the library is not initialized, no window is bound, or the chips are
 * not ready.
 * VEXO_OK comes back although nothing was done from VEXO_CMD_READ_REG (value 0) and
 * VEXO_CMD_WRITE_REG while the chips are not ready and for a page above 2; from VEXO_CMD_MOTION_REG
 * for a channel above 15; from VEXO_CMD_STOP_MONITOR when nothing runs. It comes back although a
 * part was not done: the level of VEXO_CMD_MOTION_MASK and its preview above 3; the split of
 * VEXO_CMD_LIVE_MODE and VEXO_CMD_PLAY_MODE that the board lacks (12 channels lack all of the
 * former and refuse the latter); the split of VEXO_CMD_MOTION_SETUP in playback; the blanking of
 * VEXO_CMD_CHANNEL_MASKS on 12 channels.
 * VEXO_CMD_INIT answers VEXO_OK also when the monitor could not be started.
 *
 * Any thread, but for VEXO_CMD_BLANK_MASK: commands wait for "CS4_GlobalLock" without a limit, and
 * that one writes its registers after it has given the lock back, so no other call may reach the
 * chips meanwhile. An unknown code, VEXO_CMD_INIT without a record and a failed VEXO_CMD_INIT
 * return with that lock still held by the calling thread. While the library is not initialized or
 * no window is bound, a command answers at once.
 *
 * Once it has the lock, a command takes its bus cycles, VEXO_CMD_INIT also what "CAM1:", the NVRAM
 * and the version of the host's file take, and besides:
 *   VEXO_CMD_INIT          440 ms, and 21 more at most when a monitor must be ended first
 *   VEXO_CMD_STOP_MONITOR  up to 21 ms
 *   VEXO_CMD_READ_REG      up to 5000 ms: it sends VEXO_MSG_REG_VALUE
 *   VEXO_CMD_PLAY_SPLIT    50 ms
 *   VEXO_CMD_PLAY_MODE     100 ms; 50 ms in modes 2, 3 and 5 and where the board lacks the mode
 *   any other              nothing
 * VEXO_CMD_INIT, VEXO_CMD_LIVE_SPLIT, VEXO_CMD_LIVE_MODE and VEXO_CMD_MOTION_SETUP hold the picture
 * until the chips have settled: up to 995 ms more, 200 polls with 5 ms between them.
 * VEXO_CMD_INIT makes 1776, 2450, 2009 or 3798 bus cycles on 4, 8, 12 or 16 channels with NTSC
 * cameras, any other some 1200 at most; each poll makes four for each chip.
 *
 * VEXO_CMD_STOP_MONITOR, and VEXO_CMD_INIT likewise, asks the monitor to end and waits for it: some
 * 5 ms at most where it is between two readings. After 20 ms it terminates the thread. That happens
 * where the sync bit was never set, and where the monitor is in a send that is not answered
 * meanwhile; when the window's own thread calls this, in its procedure or not, none is. The record
 * of a VEXO_MSG_VIDEO_INFO that the window still gets is then gone: do not read it.
 */
int VEXOAPI_CommandProc(uint32_t code, void* parameter);

/*
 * Runs one line of text: at most 255 characters, zero-terminated, read only, tokens separated and
 * ended by single blanks, commas or line feeds; two of them in a row end the line, and what a
 * command does not take is not read. Takes no lock: one thread at a time, and beside it neither a
 * command nor VEXOAPI_SetMotionInfo.
 * Returns VEXO_OK for a line that is a command, whatever came of it: also when the chips are not
 * ready, a word behind the first one of a "vexo" command is unknown, the driver of a "vpb" command
 * is closed, or the operation refuses a number, finds no chip, or fails. VEXO_ERROR_FAILED for a
 * rejected or longer line; VEXO_ERROR_NO_HEADER for a line without a known header word and for
 * null; or VEXO_ERROR_UNINITIALIZED.
 * "vexo init" takes 1240 ms, up to 995 ms more until the chips have settled, and up to 5000 ms for
 * the VEXO_MSG_VIDEO_INFO that it sends; "vexo rr", "vexo rver", and "vpb init" when the driver is
 * open or cannot be opened, take up to 5000 ms for theirs; "vexo psplit 0" and "1" 50 ms. "vexo
 * lsplit", "mpip stop" and "bluescr" wait for the chips without a limit. Any other does not wait.
 */
int VEXOAPI_TextCommandProc(const char* line);

#ifdef __cplusplus
} /* extern "C" */
#endif

/*
 * Stores and programs the motion level (0-3) and cell mask (24 bytes, read only; 12 rows, columns
 * 8-15 before columns 0-7) of a channel. Does nothing while the chips are not ready, for a channel
 * of 16 or more, and for a null mask. A channel below 16 that the board lacks is stored and not
 * programmed, and so is a level above 3.
 * Any thread: waits for "CS4_GlobalLock" without a limit, as commands do.
 * Returns VEXO_OK, or VEXO_ERROR_UNINITIALIZED with that lock still held by the calling thread.
 * The DLL exports it under its C++ name alone, VEXO_EXPORT_SET_MOTION_INFO, which is what
 * Microsoft's C++ compilers ask for. C and the C++ of g++ and clang ask for other names;
 * libVexoCtrlSDK.dll.a, the desktop's import library, leads those here too, and the Linux library
 * has them. Where neither is at hand, as in C for the device, take its address by that name.
 */
int VEXOAPI_SetMotionInfo(uint8_t channel, uint8_t level, uint8_t* mask);

/* ---- Loading by hand ------------------------------------------------------------------------ */

/* Each export's name, for GetProcAddress (on Windows CE: of TEXT(name)) or dlsym. */
#define VEXO_EXPORT_INITIALIZE "VEXOAPI_Initialize"
#define VEXO_EXPORT_UNINITIALIZE "VEXOAPI_Uninitialize"
#define VEXO_EXPORT_GET_VERSION "VEXOAPI_GetVersion"
#define VEXO_EXPORT_SET_ENABLE_DEBUG "VEXOAPI_SetEnableDebug"
#define VEXO_EXPORT_SET_ENABLE_OUTPUT_MSG "VEXOAPI_SetEnableOutputMsg"
#define VEXO_EXPORT_COMMAND_PROC "VEXOAPI_CommandProc"
#define VEXO_EXPORT_TEXT_COMMAND_PROC "VEXOAPI_TextCommandProc"
#ifdef _WIN64
#define VEXO_EXPORT_SET_MOTION_INFO "?VEXOAPI_SetMotionInfo@@YAHEEPEAE@Z"
#elif defined(_WIN32)
#define VEXO_EXPORT_SET_MOTION_INFO "?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z"
#else
#define VEXO_EXPORT_SET_MOTION_INFO "VEXOAPI_SetMotionInfo"
#endif

/* Each export's type. They have C's calling convention, not WINAPI, which differs in 32 bits. */
typedef int (*VexoInitializeFunction)(VexoWindow window);
typedef void (*VexoUninitializeFunction)(void);
typedef int (*VexoGetVersionFunction)(VexoChar16* buffer);
typedef void (*VexoSetEnableDebugFunction)(uint32_t enable);
typedef void (*VexoSetEnableOutputMsgFunction)(uint32_t enable);
typedef int (*VexoCommandProcFunction)(uint32_t code, void* parameter);
typedef int (*VexoTextCommandProcFunction)(const char* line);
typedef int (*VexoSetMotionInfoFunction)(uint8_t channel, uint8_t level, uint8_t* mask);

#endif /* VEXOCTRLSDK_H */
