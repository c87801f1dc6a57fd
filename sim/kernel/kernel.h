// Threads, objects and virtual time.
//
// Library threads are real threads, but one runs at a time, and it hands over only where it
// sleeps, waits or sends (or, when asked for, at bus cycles). Time jumps to the next thing that is
// due. When nothing can ever run again, the main host thread gets a Deadlock exception.
//
// A kernel that is open to a program has that program's own threads as host threads: they come in
// for a call and go out again.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/platform.h"
#include "sim/trace.h"

namespace sim {

struct Deadlock : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class World;

class Kernel {
 public:
  explicit Kernel(World& world);
  ~Kernel();  // ends the threads that are left

  // ---- Virtual time -------------------------------------------------------------------------

  std::uint32_t Now() const { return now_ms_; }  // ms, wrapping at 2^32
  By Current() const { return by_; }             // who is running
  std::uint32_t Ticks();                         // Now, read from the clock where there is one

  // Chooses among threads that could run by this seed; 0: the default order, host first.
  void SetSeed(std::uint64_t seed);
  std::uint64_t Seed() const;
  // One bus cycle in `one_in` hands over to another thread, which may be one whose
  // time has not come (time then jumps). 0: never.
  void SetPreemption(unsigned one_in);
  // How much of the virtual time a bus cycle takes, in which its thread does nothing else. 0: none.
  void SetCycleTime(std::uint32_t ns) { cycle_ns_ = ns; }
  void AtBusCycle() {
    if (preempt_one_in_ != 0 || cycle_ns_ != 0 || watch_) BusCycleWork();
  }

  // Virtual time without the wrap.
  std::uint64_t NowUnwrapped() const;
  // The same, with what the bus cycles of this millisecond have taken.
  std::uint64_t Microseconds() const { return NowUnwrapped() * 1000 + cycles_ns_ / 1000; }

  // Called now and then, in whatever thread runs: before each pause, and within a thousand bus
  // cycles. What it throws ends what the main host thread does, and comes out there. None: never.
  void SetWatch(std::function<void()> watch);
  // For what takes long without either: asks the watch now.
  void Watch();

  // Makes time pass as something else does, such as a clock. Called in the thread that has the
  // turn, wherever time is about to move to `due`; returns when it may. That is `due`, or a time
  // before it, at which a pump of the main host thread then ends early; one that would be no later
  // than now, or when it does not pump, is none. It does not throw. Not asked in a kernel that is
  // open to a program. None: time jumps.
  void SetPacer(std::function<std::uint64_t(std::uint64_t due)> pacer);

  // ---- Host threads -------------------------------------------------------------------------

  // Starts another host thread. It first runs when the calling thread next sleeps, waits or pumps.
  // What its body throws comes out of the main host thread's next pause.
  unsigned StartHostThread(std::function<void()> body);
  bool HostThreadDone(unsigned id) const;
  // The host thread pumps its messages while `ms` pass, and gives how many it handled. The windows
  // are the main host thread's: any other has none to pump and is idle.
  unsigned Pump(std::uint32_t ms);
  struct Message {
    PlatWindow window;  // 0: to the thread
    std::uint32_t message;
    std::uintptr_t wparam;
    std::intptr_t lparam;
  };
  struct MessageChoice {
    std::uint32_t first = 0;
    std::uint32_t last = ~std::uint32_t{0};
    bool take = true;  // else it stays where it is
  };
  // What a program's own loop takes: answers what was sent to the windows of the calling thread,
  // and takes the first message posted to it or to them, none when there is none. Its procedure is
  // not called.
  std::optional<Message> TakeMessage(const MessageChoice& choice);
  // Until there is something for the calling thread to answer or take, or the time has passed.
  void AwaitMessage(std::uint32_t ms);
  // To a thread that has looked for messages before; others have no queue, which is an error.
  bool PostThreadMessage(std::uint32_t thread_id, std::uint32_t message, std::uintptr_t wparam,
                         std::intptr_t lparam);
  // The window is the calling thread's for as long as that lives. All others are the main host
  // thread's.
  void OwnWindow(PlatWindow window);
  // Threads that CreateThread starts are a program's: what one of them does may wake any other.
  // Else they are the library's, which wake nobody but by what they release.
  void LetThreadsWakeOthers();
  // Like Pump with no messages handled: the host is busy elsewhere.
  void Idle(std::uint32_t ms);

  // ---- Threads of a program -------------------------------------------------------------------

  enum class Pace : std::uint8_t {
    Virtual,  // time passes while a host thread is inside and can go on, and jumps
    Real,     // time is the clock's
  };
  // From now on threads of the program come and go, and the main host thread, which calls this, is
  // outside. Its windows' procedure runs in that thread alone. A thread that cannot go on waits:
  // another may come in and help.
  void OpenToProgram(Pace pace);
  bool OpenToProgram() const;
  // Any thread that is outside: waits for its turn, in order of arrival, and is a host thread until
  // it leaves. It leaves and enters again around the host's own code, such as a window procedure.
  void Enter();
  void Leave();
  // Threads of the program that are inside, or wait to come in, besides the one that asks.
  unsigned OtherVisitors() const;
  // Told, inside, when a thread of the program waits for what nothing that is known can bring.
  std::function<void(const std::string&)> on_stuck;
  // Nobody goes on any more: for the end of the process. False when a thread does not stop.
  bool StopForGood();

  // For a board under another system's kernel, which has the threads and the clock: the time, and
  // who is running.
  void SetClock(std::uint64_t now_ms, By by);

  // ---- What platform.h needs ------------------------------------------------------------------

  PlatHandle CreateMutex(const std::u16string& name);
  PlatHandle CreateEvent(const std::u16string* name, bool manual_reset, bool signalled);
  std::uint32_t Wait(PlatHandle handle, std::uint32_t timeout_ms);
  bool ReleaseMutex(PlatHandle handle);
  bool CloseHandle(PlatHandle handle);
  PlatHandle CreateThread(PlatThreadProc proc, void* argument, std::uint32_t* thread_id);
  bool GetExitCodeThread(PlatHandle handle, std::uint32_t* exit_code);
  bool TerminateThread(PlatHandle handle, std::uint32_t exit_code);
  // Ends a thread that CreateThread started, as the end of its process does; nothing of it is in
  // the trace. What has ended already is left alone.
  void EndThread(std::uint32_t thread_id);
  bool SetThreadQuantum(PlatHandle handle, std::uint32_t quantum_ms);
  std::uint32_t CurrentThreadId() const;
  void Sleep(std::uint32_t ms);
  std::uint32_t LastError() const;  // of the calling thread
  void SetLastError(std::uint32_t error);
  bool SendMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                   std::intptr_t lparam, std::uint32_t timeout_ms);
  bool PostMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                   std::intptr_t lparam);

  PlatHandle LoadModule(const std::u16string& name);
  // A handle value that no object has or had, for devices that keep their own handles.
  PlatHandle NewHandleValue();

  // ---- The back side ----------------------------------------------------------------------------

  // Signals an event, as another process could.
  bool SetEvent(PlatHandle handle);
  // The window is gone: sends that wait for it fail, posted messages are dropped.
  void WindowDestroyed(PlatWindow window);

  // ---- For tests --------------------------------------------------------------------------------

  // Whether a thread holds the named mutex.
  bool MutexHeld(const std::u16string& name) const;
  // How often the owning thread holds it.
  unsigned MutexDepth(const std::u16string& name) const;
  std::uint32_t ThreadQuantum(PlatHandle handle) const;  // 0: never set
  unsigned OpenHandles() const;                          // mutexes, events, threads
  unsigned OpenModules() const;
  unsigned LiveThreads() const;  // library threads that have not ended

 private:
  static constexpr unsigned kCyclesToWatch = 1000;
  void BusCycleWork();
  struct Impl;
  std::unique_ptr<Impl> impl_;
  std::uint32_t now_ms_ = 0;
  By by_ = By::Host;
  unsigned preempt_one_in_ = 0;
  std::uint32_t cycle_ns_ = 0;
  std::uint32_t cycles_ns_ = 0;  // of bus cycles, less than a millisecond when it is read
  std::function<void()> watch_;
  unsigned cycles_to_watch_ = kCyclesToWatch;
  std::function<std::uint64_t(std::uint64_t)> pacer_;
};

}  // namespace sim
