// The system's calls that a program needs besides those of the library.
#pragma once

#include "ce_api.h"

struct CeWindowClass {
  unsigned style;
  CeLong (*procedure)(HWND__* window, unsigned message, CeUnsigned wparam, CeLong lparam);
  int class_bytes;
  int window_bytes;
  HINSTANCE__* instance;
  void* icon;
  void* cursor;
  void* background;
  const wchar_t* menu;
  const wchar_t* name;
};

struct CeMessage {
  HWND__* window;
  unsigned message;
  CeUnsigned wparam;
  CeLong lparam;
  CeDword time;
  int x;
  int y;
};

struct CeProcess {
  void* process;
  void* thread;
  CeDword process_id;
  CeDword thread_id;
};

inline constexpr CeDword kCeRead = 0x80000000;
inline constexpr CeDword kCeWrite = 0x40000000;
inline constexpr CeDword kCeShareRead = 1;
inline constexpr CeDword kCeCreateAlways = 2;
inline constexpr CeDword kCeOpenExisting = 3;
inline constexpr CeDword kCeOrdinaryFile = 0x80;
inline constexpr unsigned kCeTakeMessage = 1;    // PeekMessageW
inline constexpr CeDword kCeStillRunning = 258;  // WaitForSingleObject
// What stands for the running process where a handle is asked for.
inline constexpr std::uintptr_t kCeThisProcess = 0x42;
inline constexpr std::uintptr_t kCeNoFile = 0xFFFFFFFF;

extern "C" {

HINSTANCE__* LoadLibraryW(const wchar_t* name);
void* GetProcAddressW(HINSTANCE__* module, const wchar_t* name);
CeDword GetModuleFileNameW(HINSTANCE__* module, wchar_t* path, CeDword units);
int ReadFile(void* file, void* to, CeDword bytes, CeDword* read, _OVERLAPPED* overlapped);
int WriteFile(void* file, const void* from, CeDword bytes, CeDword* written,
              _OVERLAPPED* overlapped);
int FlushFileBuffers(void* file);
CeDword GetFileSize(void* file, CeDword* high);
unsigned short RegisterClassW(const CeWindowClass* window_class);
HWND__* CreateWindowExW(CeDword extended_style, const wchar_t* class_name, const wchar_t* title,
                        CeDword style, int x, int y, int width, int height, HWND__* parent,
                        void* menu, HINSTANCE__* instance, void* parameter);
int DestroyWindow(HWND__* window);
CeLong DefWindowProcW(HWND__* window, unsigned message, CeUnsigned wparam, CeLong lparam);
int PeekMessageW(CeMessage* message, HWND__* window, unsigned first, unsigned last, unsigned how);
CeLong DispatchMessageW(const CeMessage* message);
int QueryPerformanceCounter(std::uint64_t* count);
int QueryPerformanceFrequency(std::uint64_t* per_second);
int CreateProcessW(const wchar_t* path, const wchar_t* command_line,
                   _SECURITY_ATTRIBUTES* process_security, _SECURITY_ATTRIBUTES* thread_security,
                   int inherit, CeDword flags, void* environment, wchar_t* directory, void* startup,
                   CeProcess* process);
int GetExitCodeProcess(void* process, CeDword* code);
int TerminateProcess(void* process, CeDword code);

}  // extern "C"
