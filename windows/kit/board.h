// The one board of the process: who is at it, what time it is, and what the kit says.
#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"
#include "sim/world.h"
#include "windows_api.h"

namespace kit {

// ---- What the kit says --------------------------------------------------------------------------

// A sentence on standard error, and for a debugger.
void Say(const std::string& sentence);

inline constexpr unsigned kExitRefused = 3;
// Says why the program cannot go on with this board, and ends the process.
[[noreturn]] void Refuse(const std::string& sentence);

// ---- Who is at it -------------------------------------------------------------------------------

// Real: the system's threads and clock, one thread at the board at a time. Virtual: the simulated
// kernel's, which sees to that itself.
enum class Kind { Real, Virtual };
Kind BoardKind();
void SetBoardKind(Kind kind);

// One at a time is at the real board, and the board knows who and when. Not recursive.
void EnterBoard();
void LeaveBoard();

class AtBoard {
 public:
  AtBoard() { EnterBoard(); }
  ~AtBoard() { LeaveBoard(); }
  AtBoard(const AtBoard&) = delete;
  AtBoard& operator=(const AtBoard&) = delete;
};

// While it lives the thread, which was at the board, is not.
class AwayFromBoard {
 public:
  AwayFromBoard() { LeaveBoard(); }
  ~AwayFromBoard() { EnterBoard(); }
  AwayFromBoard(const AwayFromBoard&) = delete;
  AwayFromBoard& operator=(const AwayFromBoard&) = delete;
};

// The calling thread is one that the library started.
void BecomeWorker();
bool IsWorker();

// ---- Texts --------------------------------------------------------------------------------------

// Where the library's texts go: "console", which is standard error, "none", or a file. Throws
// std::runtime_error.
void SetTexts(const std::string& where);
// At the board.
void ShowText(std::string_view utf8);

// ---- Devices ------------------------------------------------------------------------------------

// Makes the board as the settings file says; once. What is wrong ends the process, with a sentence.
void SwitchOn();

void OpenPages();  // for the bus windows; once
void* MapWindow(DWORD physical, DWORD bytes, bool cached);
void UnmapWindow(void* address, DWORD bytes);
DWORD ReadNvram(DWORD block, void* request);
DWORD WriteNvram(DWORD block, void* request);

}  // namespace kit
