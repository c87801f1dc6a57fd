// Whose turn it is, and the time of the board, while a script runs through the DLL.
//
// The host and the library's threads are real threads; while a script runs, one of them goes on at
// a time and hands over where it sleeps, waits or sends. The board's time then moves to the next
// thing that is due, exactly as on the PC, so that both runs of a script can be compared event by
// event, however busy the machine is. A parked thread waits for a kernel event and holds nothing,
// so it can be terminated there.
#pragma once

#include <cstdint>
#include <list>

#include "windows_api.h"

namespace host {

class Turns {
 public:
  struct Thread {
    HANDLE go = nullptr;        // its turn comes
    HANDLE answered = nullptr;  // what it sent was handled
    HANDLE real = nullptr;      // the library's handle of it
    std::uint64_t due = 0;      // ms
    std::uint64_t yielded = 0;
    bool worker = false;
    bool sending = false;  // waits for the host to pump
    bool handled = false;  // the window has seen what it sends
  };

  Turns();
  ~Turns();
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

  // A new script: the calling thread is the host, and it is its turn. Time is 0.
  void Start();

  std::uint32_t Now() const { return static_cast<std::uint32_t>(now_); }
  bool IsWorker() const { return current_->worker; }
  bool Pumping() const { return pumping_; }

  // The current thread gives way until `ms` have passed.
  void Pause(std::uint32_t ms);
  // The host pumps its messages meanwhile; a deaf one handles none.
  void Pump(std::uint32_t ms, bool deaf);

  // A library thread: made by its creator, begun and ended by itself, removed by whoever ends it.
  Thread* Make();
  void Begin(Thread* thread);
  void End();
  void Remove(Thread* thread);
  Thread* Find(HANDLE real);
  bool AnyWorker() const { return threads_.size() > 1; }
  // The thread that waits for the host to take its message, null when none does.
  Thread* Sender();

  // The current thread sends what the host does not take now: others go on. A thread that was not
  // answered within the time has its turn again (Expired), one that was asks for it (Answered).
  Thread* BeginSend(std::uint32_t timeout_ms);
  bool Expired(const Thread* thread) const;
  void Answered(Thread* thread);

 private:
  Thread& Choose();
  void MakeCurrent(Thread& next);
  // Gives the turn to whoever is next. False when that is the thread itself.
  bool PassOn(Thread& self);
  void TakeAnswers();

  std::list<Thread> threads_;  // the host first
  Thread* current_ = nullptr;
  std::uint64_t now_ = 0;
  std::uint64_t yields_ = 0;
  bool pumping_ = false;
};

extern Turns g_turns;

}  // namespace host
