// Threads of a program, which come in and go out as they like.
#include <algorithm>
#include <utility>

#include "sim/kernel/kernel_impl.h"

namespace sim {
namespace {

constexpr std::chrono::seconds kLongestStop{1};

std::uint64_t Milliseconds(std::chrono::steady_clock::duration time) {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

// What a thread of the program is to the kernel, as long as both are there. When it ends, what it
// holds is abandoned.
struct Visit {
  std::weak_ptr<Program> program;
  std::shared_ptr<Thread> thread;

  Visit() = default;
  ~Visit() {
    const std::shared_ptr<Program> open = program.lock();
    if (open == nullptr) return;
    const std::lock_guard gate(open->gate);
    if (open->on_departure) open->on_departure(thread);
  }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;
};
thread_local Visit t_visit;

Thread& ThisThread(const std::shared_ptr<Program>& program) {
  if (t_visit.program.lock() != program) {
    t_visit.program = program;
    t_visit.thread = std::make_shared<Thread>();
    t_visit.thread->outside = true;
    const std::lock_guard gate(program->gate);
    ++program->visitors;
  }
  return *t_visit.thread;
}

}  // namespace

void Kernel::Impl::RefreshClock() {
  if (program == nullptr || program->pace != Pace::Real) return;
  now = std::max(now, Milliseconds(std::chrono::steady_clock::now() - program->start));
  kernel.now_ms_ = static_cast<std::uint32_t>(now);
  world.board.SetTime(kernel.now_ms_);
}

void Kernel::Impl::TakeTurn(Thread& thread) {
  program->free = false;
  RefreshClock();
  if (std::exchange(thread.outside, false)) {
    thread.due = now;
    AddToLive(thread);
  }
  MakeCurrent(thread);
}

Thread* Kernel::Impl::NextOfProgram() {
  if (program->stopped) return nullptr;
  RefreshClock();
  for (const std::shared_ptr<Thread>& thread : std::exchange(program->departed, {})) {
    Retire(*thread);
  }
  for (Thread* thread : std::exchange(program->arrivals, {})) {
    thread->outside = false;
    thread->due = now;
    thread->yielded = ++yields;
    AddToLive(*thread);
  }
  Thread* const next = NextDue();
  if (next == nullptr) return nullptr;
  if (program->pace == Pace::Real) return next->due <= now ? next : nullptr;
  // Time stands while all of the program's threads are in their own code, or wait for one that is.
  const bool goes_on = std::any_of(live.begin(), live.end(), [this](const Thread* thread) {
    return thread->by == By::Host && !IsStuck(*thread);
  });
  return goes_on ? next : nullptr;
}

void Kernel::Impl::PassOn() {
  Thread* const next = NextOfProgram();
  if (next != nullptr) {
    MakeCurrent(*next);
    next->turn.Give();
    return;
  }
  current = nullptr;
  program->free = true;
  program->left.notify_all();
}

void Kernel::Impl::OnDeparture(const std::shared_ptr<Thread>& thread) {
  --program->visitors;
  if (thread == main) return;
  program->departed.push_back(thread);
  if (program->free && !program->stopped) PassOn();  // somebody may wait for what it held
}

void Kernel::Impl::BlockInProgram(Thread& self, std::uint64_t due) {
  self.due = due;
  TellWhenStuck(self);
  {
    const std::lock_guard gate(program->gate);
    Thread* const next = NextOfProgram();
    if (next == &self) return MakeCurrent(self);
    if (next == nullptr) {
      current = nullptr;
      program->free = true;
      program->left.notify_all();
    } else {
      MakeCurrent(*next);
      next->turn.Give();
    }
  }
  AwaitTurn(self, due);
}

// At the clock's pace a thread comes back by itself when its time has come and nobody is inside;
// whoever is inside then lets it in when it gives way.
void Kernel::Impl::AwaitTurn(Thread& self, std::uint64_t due) {
  bool given = false;
  if (program->pace == Pace::Real && due != kNever) {
    given = self.turn.AwaitUntil(program->start + std::chrono::milliseconds(due));
    if (!given) {
      const std::lock_guard gate(program->gate);
      if (program->free && !program->stopped) {
        TakeTurn(self);
        given = true;
      }
    }
  } else {
    self.turn.Await();
    given = true;
  }
  if (!given) self.turn.Await();
  if (self.killed) throw ThreadEnded{};
}

void Kernel::Impl::TellWhenStuck(const Thread& self) {
  if (!kernel.on_stuck || self.by != By::Host || !IsStuck(self)) return;
  {
    const std::lock_guard gate(program->gate);
    if (program->visitors > 1) return;  // another may help
  }
  kernel.on_stuck(WhoWaitsForWhat());
}

// The kernel ends; the calling thread is inside, or nobody is.
void Kernel::Impl::CloseToProgram() {
  const std::lock_guard gate(program->gate);
  program->on_departure = nullptr;
  program->stopped = true;
  if (current == nullptr) TakeTurn(*main);
}

// ---- Kernel -----------------------------------------------------------------------------------

void Kernel::OpenToProgram(Pace pace) {
  impl_->program = std::make_shared<Program>();
  Program& program = *impl_->program;
  program.pace = pace;
  program.start = std::chrono::steady_clock::now() - std::chrono::milliseconds(impl_->now);
  program.on_departure = [this](const std::shared_ptr<Thread>& thread) {
    impl_->OnDeparture(thread);
  };
  t_visit.program = impl_->program;
  t_visit.thread = impl_->main;
  const std::lock_guard gate(program.gate);
  program.free = false;
  impl_->main->outside = true;
  std::erase(impl_->live, impl_->main.get());
  impl_->PassOn();
}

bool Kernel::OpenToProgram() const { return impl_->program != nullptr; }

void Kernel::Enter() {
  Program& program = *impl_->program;
  Thread& self = ThisThread(impl_->program);
  {
    std::unique_lock gate(program.gate);
    if (program.free && !program.stopped) {
      impl_->TakeTurn(self);
    } else {
      program.arrivals.push_back(&self);
      gate.unlock();
      self.turn.Await();
    }
  }
  if (self.id == 0) self.id = impl_->next_thread_id++;
}

void Kernel::Leave() {
  const std::lock_guard gate(impl_->program->gate);
  Thread& self = *impl_->current;
  self.outside = true;
  self.due = kNever;
  std::erase(impl_->live, &self);
  impl_->PassOn();
}

unsigned Kernel::OtherVisitors() const {
  const std::lock_guard gate(impl_->program->gate);
  const auto inside = std::count_if(
      impl_->live.begin(), impl_->live.end(),
      [this](const Thread* thread) { return thread != impl_->current && thread->by == By::Host; });
  return static_cast<unsigned>(inside) + static_cast<unsigned>(impl_->program->arrivals.size());
}

bool Kernel::StopForGood() {
  Program& program = *impl_->program;
  std::unique_lock gate(program.gate);
  program.stopped = true;
  return program.left.wait_for(gate, kLongestStop, [&program] { return program.free; });
}

std::uint32_t Kernel::Ticks() {
  impl_->RefreshClock();
  return now_ms_;
}

void Kernel::SetClock(std::uint64_t now_ms, By by) {
  impl_->now = now_ms;
  now_ms_ = static_cast<std::uint32_t>(now_ms);
  impl_->world.board.SetTime(now_ms_);
  by_ = by;
}

}  // namespace sim
