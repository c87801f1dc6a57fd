/*
 * What the recorder uses of the device's system, declared here, so that a compiler without the
 * system's SDK can look at the recorder's sources. With an SDK leave this folder out.
 *
 * Types, values and names are those of Windows CE 5 for ARM: wide characters of 16 bits, one
 * calling convention, functions that take texts exported in their wide form alone.
 */
#ifndef RECORDER_CE_WINDOWS_H
#define RECORDER_CE_WINDOWS_H

#include <stddef.h>

#define UNDER_CE 500
#define WINAPI
#define CALLBACK

typedef int BOOL;
typedef unsigned short WORD;
typedef unsigned short ATOM;
typedef unsigned int UINT;
typedef unsigned long DWORD;
typedef long LONG;
typedef UINT WPARAM;
typedef LONG LPARAM;
typedef LONG LRESULT;
typedef unsigned int UINT_PTR;
typedef void* LPVOID;
typedef wchar_t* LPWSTR;
typedef const wchar_t* LPCWSTR;

typedef void* HANDLE;
typedef void* HGDIOBJ;
typedef struct HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef struct HWND__* HWND;
typedef struct HMENU__* HMENU;
typedef struct HICON__* HICON;
typedef HICON HCURSOR;
typedef struct HBRUSH__* HBRUSH;

#define TRUE 1
#define FALSE 0
#define INFINITE 0xFFFFFFFF
#define ERROR_PROC_NOT_FOUND 127L

/* ---- Threads, objects, modules -------------------------------------------------------------- */

typedef struct SECURITY_ATTRIBUTES SECURITY_ATTRIBUTES;
typedef struct CRITICAL_SECTION {
  unsigned int LockCount;
  HANDLE OwnerThread;
  HANDLE hCrit;
  DWORD needtrap;
  DWORD dwContentions;
} CRITICAL_SECTION;
typedef DWORD (*LPTHREAD_START_ROUTINE)(LPVOID argument);
typedef int (*FARPROC)();

HANDLE CreateThread(SECURITY_ATTRIBUTES* security, DWORD stack, LPTHREAD_START_ROUTINE start,
                    LPVOID argument, DWORD flags, DWORD* thread_id);
BOOL EventModify(HANDLE event, DWORD what);
#define EVENT_SET 3
#define SetEvent(event) EventModify((event), EVENT_SET)
HANDLE CreateEventW(SECURITY_ATTRIBUTES* security, BOOL manual_reset, BOOL set, LPCWSTR name);
HANDLE CreateMutexW(SECURITY_ATTRIBUTES* security, BOOL owned, LPCWSTR name);
BOOL ReleaseMutex(HANDLE mutex);
DWORD WaitForSingleObject(HANDLE object, DWORD limit_ms);
BOOL CloseHandle(HANDLE object);
void InitializeCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);
void DeleteCriticalSection(CRITICAL_SECTION* section);
DWORD GetLastError(void);
HMODULE LoadLibraryW(LPCWSTR name);
BOOL FreeLibrary(HMODULE module);
FARPROC GetProcAddressW(HMODULE module, LPCWSTR name);

/* ---- Windows and messages ------------------------------------------------------------------- */

#define WM_DESTROY 0x0002
#define WM_CLOSE 0x0010
#define WM_KEYDOWN 0x0100
#define WM_TIMER 0x0113
#define WM_APP 0x8000
#define VK_ESCAPE 0x1B
#define VK_UP 0x26
#define VK_RIGHT 0x27
#define WS_CAPTION 0x00C00000L
#define WS_SYSMENU 0x00080000L
#define PM_NOREMOVE 0x0000
#define BLACK_BRUSH 4

typedef LRESULT (*WNDPROC)(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
typedef struct WNDCLASSW {
  UINT style;
  WNDPROC lpfnWndProc;
  int cbClsExtra;
  int cbWndExtra;
  HINSTANCE hInstance;
  HICON hIcon;
  HCURSOR hCursor;
  HBRUSH hbrBackground;
  LPCWSTR lpszMenuName;
  LPCWSTR lpszClassName;
} WNDCLASSW;
typedef struct POINT {
  LONG x;
  LONG y;
} POINT;
typedef struct MSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;
  POINT pt;
} MSG;
typedef void (*TIMERPROC)(HWND window, UINT message, UINT_PTR timer, DWORD time);

ATOM RegisterClassW(const WNDCLASSW* description);
HWND CreateWindowExW(DWORD extended, LPCWSTR name, LPCWSTR title, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID argument);
BOOL ShowWindow(HWND window, int show);
BOOL DestroyWindow(HWND window);
BOOL SetWindowTextW(HWND window, LPCWSTR text);
LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last);
BOOL PeekMessageW(MSG* message, HWND window, UINT first, UINT last, UINT what);
BOOL TranslateMessage(const MSG* message);
LRESULT DispatchMessageW(const MSG* message);
BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
BOOL PostThreadMessageW(DWORD thread_id, UINT message, WPARAM wparam, LPARAM lparam);
void PostQuitMessage(int status);
UINT_PTR SetTimer(HWND window, UINT_PTR timer, UINT ms, TIMERPROC procedure);
BOOL KillTimer(HWND window, UINT_PTR timer);
HGDIOBJ GetStockObject(int object);
int wsprintfW(LPWSTR text, LPCWSTR format, ...);

#endif /* RECORDER_CE_WINDOWS_H */
