// Who is told what happens to a session as it runs.
#pragma once

#include <string>

namespace script {

// Called in the thread that runs, and not while lines run again unseen, but for OnKept.
class SessionObserver {
 public:
  virtual ~SessionObserver() = default;

  // A text or a message of the board, as it is printed.
  virtual void OnPrinted(const std::string& /*line*/) {}
  // The action that began last is over, and is kept as this line: one that let time pass may have
  // been shorter or longer than it said when it began.
  virtual void OnKept(const std::string& /*line*/) {}
  virtual void OnStopped(const std::string& /*what*/) {}
  virtual void OnContinued() {}
  // Time was turned back, and what was stopped before is not any more.
  virtual void OnTurnedBack() {}
};

}  // namespace script
