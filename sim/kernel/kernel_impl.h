// Inside the kernel: its threads and objects. Only the kernel's own files include this.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sim/kernel/kernel.h"
#include "sim/world.h"

namespace sim {

inline constexpr std::uint64_t kNever = ~std::uint64_t{0};  // a due time that does not come

inline constexpr std::uint32_t kErrorAccessDenied = 5;
inline constexpr std::uint32_t kErrorInvalidHandle = 6;
inline constexpr std::uint32_t kErrorNotEnoughMemory = 8;
inline constexpr std::uint32_t kErrorNotOwner = 288;
inline constexpr std::uint32_t kErrorInvalidWindow = 1400;
inline constexpr std::uint32_t kErrorInvalidThread = 1444;
inline constexpr std::uint32_t kErrorTimeout = 1460;

// Unwinds a thread that was ended from outside. No std::exception, so that nobody takes it for one.
struct ThreadEnded {};

using SteadyTime = std::chrono::steady_clock::time_point;

// Where a parked thread waits for its turn.
class Turn {
 public:
  void Give() {
    {
      const std::lock_guard lock(mutex_);
      given_ = true;
    }
    wake_.notify_one();
  }
  void Await() {
    std::unique_lock lock(mutex_);
    wake_.wait(lock, [this] { return given_; });
    given_ = false;
  }
  // False when the time comes first.
  bool AwaitUntil(SteadyTime time) {
    std::unique_lock lock(mutex_);
    return wake_.wait_until(lock, time, [this] { return given_; }) && std::exchange(given_, false);
  }

 private:
  std::mutex mutex_;
  std::condition_variable wake_;
  bool given_ = false;
};

struct Thread;

// What a handle stands for.
struct Object : std::enable_shared_from_this<Object> {
  enum class Kind : std::uint8_t { Mutex, Event, Module, Thread };
  explicit Object(Kind of_kind) : kind(of_kind) {}
  virtual ~Object() = default;
  // The result of a wait when the object is there for the taking, which takes it; else nothing.
  virtual std::optional<std::uint32_t> TryTake(Thread& taker) = 0;

  const Kind kind;
  std::u16string name;          // empty: unnamed
  unsigned handles = 0;         // open ones
  std::deque<Thread*> waiters;  // in order of arrival
};

struct Mutex : Object {
  static constexpr Kind kKind = Kind::Mutex;
  Mutex() : Object(kKind) {}
  std::optional<std::uint32_t> TryTake(Thread& taker) override;
  Thread* owner = nullptr;
  unsigned depth = 0;      // acquisitions of the owner
  bool abandoned = false;  // the last owner ended; nobody took it since
};

struct EventObject : Object {
  static constexpr Kind kKind = Kind::Event;
  EventObject() : Object(kKind) {}
  std::optional<std::uint32_t> TryTake(Thread& taker) override;
  bool manual_reset = false;
  bool signalled = false;
};

struct Module : Object {
  Module() : Object(Kind::Module) {}
  std::optional<std::uint32_t> TryTake(Thread&) override { return kPlatWaitFailed; }
};

// The object as what it is, null when it is something else.
template <typename T, typename From>
T* As(From* object) {
  return object != nullptr && object->kind == T::kKind ? static_cast<T*>(object) : nullptr;
}

struct PendingSend;
using PostedMessage = Kernel::Message;

struct Thread : Object {
  static constexpr Kind kKind = Kind::Thread;
  Thread() : Object(kKind) {}
  std::optional<std::uint32_t> TryTake(Thread& taker) override;

  // Fixed at creation.
  By by = By::Host;
  bool main = false;
  unsigned host_id = 0;  // 0: main host thread or library thread
  std::uint32_t id = 0;
  std::function<std::uint32_t()> body;

  // Scheduling.
  Turn turn;
  std::thread os_thread;
  std::uint64_t due = 0;      // when it may run; kNever: when something wakes it
  std::uint64_t yielded = 0;  // behind all that yielded less lately at the same time; 0: did not
  Object* waiting_for = nullptr;
  PendingSend* sending = nullptr;
  bool awaits_message = false;
  std::uint32_t wait_result = kPlatWaitTimeout;
  bool deadlocked = false;  // main host thread: to be told so when it goes on
  bool killed = false;      // must not run any more
  bool outside = false;     // of a program's: in its own code
  bool ended = false;
  std::uint32_t exit_code = kPlatStillActive;

  std::uint32_t last_error = 0;
  std::uint32_t quantum = 0;
  std::vector<std::shared_ptr<Mutex>> owned;
  bool has_queue = false;  // others can post to it; windows can always be posted to
  std::deque<PostedMessage> posts;
};

// A sent message whose sender waits.
struct PendingSend {
  Thread* sender;
  PlatWindow window;
  std::uint32_t message;
  std::uintptr_t wparam;
  std::intptr_t lparam;
  std::uint64_t number = 0;  // of all that were queued
  bool done = false;
  bool ok = false;
};

// What threads that are not inside share with the kernel; all but the first two under the gate.
struct Program {
  Kernel::Pace pace = Kernel::Pace::Virtual;
  SteadyTime start;  // when the kernel's time was 0
  std::mutex gate;
  bool free = true;                               // nobody is inside
  bool stopped = false;                           // for good: nobody goes in any more
  std::condition_variable left;                   // nobody is inside any more
  std::deque<Thread*> arrivals;                   // wait to come in
  std::vector<std::shared_ptr<Thread>> departed;  // ended outside; to be retired
  unsigned visitors = 1;                          // threads of the program that are known
  // A thread of the program ends. None when the kernel is gone.
  std::function<void(const std::shared_ptr<Thread>&)> on_departure;
};

struct Kernel::Impl {
  Impl(Kernel& of, World& in);

  // ---- Scheduling: scheduler.cpp ----------------------------------------------------------------

  std::uint64_t Random(std::uint64_t below);
  std::uint64_t After(std::uint32_t ms) const;  // due time ms from now, kPlatForever: never
  // The current thread gives way until `due`; comes back when it is its turn.
  void Block(std::uint64_t due);
  // Of those that can go on at their time, the one that is next; null when there is none.
  Thread* NextDue();
  // Others that are due now go first.
  void Yield();
  // With a seed: any other thread that is due now may go first.
  void MayYield();
  void PreemptNow(unsigned one_in);
  // Asks the watch. What it throws comes out of the main host thread, whoever runs.
  void AskWatch();
  void Wake(Thread& thread, std::uint32_t result);
  // Who goes on when the current thread does not. Marks the main host thread deadlocked and picks
  // it when it can never go on otherwise.
  Thread& Choose();
  // Before time moves: asks the pacer, which may end the main host thread's pump.
  void Pace();
  // Whether nothing that is known can wake a thread that waits without end.
  bool IsStuck(const Thread& waiting) const;
  bool MainIsStuck() const;
  std::string WhoWaitsForWhat() const;
  // Time moves to the thread's due time, and it is the current one.
  void MakeCurrent(Thread& next);
  // After MakeCurrent: parks this thread, lets `next` run; comes back when it is its turn.
  void SwitchTo(Thread& self, Thread& next);

  // ---- Threads: threads.cpp ---------------------------------------------------------------------

  std::shared_ptr<Thread> StartThread(By by, unsigned host_id, std::function<std::uint32_t()> body);
  void RunThread(Thread& self);
  void AddToLive(Thread& thread);
  void Kill(Thread& victim);         // unwinds it now; no time passes
  void Retire(Thread& thread);       // it ended: its mutexes are abandoned, its waiters go on
  void StopWaiting(Thread& thread);  // takes it off the lists of what it waits for
  void JoinEnded();
  void EndThreads();  // all but the main host thread

  // ---- Objects: objects.cpp ---------------------------------------------------------------------

  PlatHandle Open(std::shared_ptr<Object> object);
  template <typename T>
  std::shared_ptr<T> Find(PlatHandle handle) const {
    const auto found = handles.find(handle);
    if (found == handles.end() || found->second->kind != T::kKind) return nullptr;
    return std::static_pointer_cast<T>(found->second);
  }
  const Mutex* FindNamedMutex(const std::u16string& name) const;
  std::uint32_t Wait(const std::shared_ptr<Object>& object, std::uint32_t timeout_ms);
  // Lets waiters of the object go on while there is something for them to take.
  void ServeWaiters(Object& object);
  void LetGo(Mutex& mutex);
  bool Fail(std::uint32_t error) {
    current->last_error = error;
    return false;
  }

  // ---- Messages: messages.cpp -------------------------------------------------------------------

  unsigned HandleMessages();  // gives how many
  void AnswerInProgram(PendingSend& send);
  Thread& OwnerOf(PlatWindow window) const;
  // The first message that was sent to a window of the thread and may be answered; null for none.
  PendingSend* FirstSendTo(const Thread& thread) const;
  void Queue(PendingSend& send);
  void WakeForMessage(Thread& owner);
  void WakePump();
  unsigned PumpInProgram(std::uint32_t ms);
  void Receive(const PostedMessage& message, bool posted);
  void Handle(const PostedMessage& message, bool posted);
  void Answer(PendingSend& send, bool ok);  // ends a sender's wait
  void TraceMessage(const Thread& sender, bool post, bool ok, const PostedMessage& message);

  // ---- A program's threads: program.cpp ---------------------------------------------------------

  void RefreshClock();
  // These four with the gate held. Nobody was inside: this thread is.
  void TakeTurn(Thread& thread);
  // Who goes on when the thread that is inside does not, null when nobody does.
  Thread* NextOfProgram();
  void PassOn();
  void OnDeparture(const std::shared_ptr<Thread>& thread);

  void BlockInProgram(Thread& self, std::uint64_t due);
  void AwaitTurn(Thread& self, std::uint64_t due);
  void TellWhenStuck(const Thread& self);
  void CloseToProgram();

  Kernel& kernel;
  World& world;
  std::shared_ptr<Program> program;  // none: the threads are the kernel's own

  std::uint64_t now = 0;  // ms; the kernel shows the low 32 bits
  std::uint64_t seed = 0;
  std::uint64_t random_state = 0;
  std::uint64_t yields = 0;

  std::shared_ptr<Thread> main;
  Thread* current = nullptr;
  std::vector<Thread*> live;  // main host thread, other host threads, library threads
  std::vector<std::shared_ptr<Thread>>
      threads;                      // all but the main host thread that have an OS thread
  std::vector<bool> host_done;      // by host thread id
  std::exception_ptr host_failure;  // what a thread's body threw
  std::uint32_t next_thread_id = 0x1001;

  std::map<PlatHandle, std::shared_ptr<Object>> handles;
  std::map<std::u16string, Object*> named;
  PlatHandle next_handle = 0x100;

  bool pumping = false;
  std::deque<PendingSend*> sends;
  std::deque<PendingSend*> handled_sends;  // the window's procedure has them
  std::uint64_t sends_queued = 0;
  std::map<PlatWindow, Thread*> window_owners;  // but for the main host thread's
  bool threads_wake_others = false;
};

}  // namespace sim
