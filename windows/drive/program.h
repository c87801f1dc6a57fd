// A recorder that runs, as somebody at its screen has it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace drive {

class Program {
 public:
  // Starts recorder.exe of a folder, in that folder; what it writes to standard error goes to a
  // file there.
  explicit Program(const std::wstring& folder);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void Press(WPARAM key) const;
  std::string Title() const;
  // Waits until the title begins so, or has this in it.
  void AwaitTitle(const std::string& begin) const;
  void AwaitInTitle(const std::string& part) const;
  // Waits until it has ended; its exit status.
  DWORD AwaitEnd() const;
  // Waits until the kit tells its control port.
  std::uint16_t Port() const;
  // What it has written to standard error.
  std::string Texts() const;

 private:
  void TellState() const;

  std::wstring texts_;  // the file
  HANDLE process_ = nullptr;
  DWORD process_id_ = 0;
  HWND window_ = nullptr;
};

}  // namespace drive
