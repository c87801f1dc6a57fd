// Virtual time and whose turn it is.
#include <algorithm>
#include <set>
#include <utility>

#include "sim/kernel/kernel_impl.h"

namespace sim {

std::uint64_t Kernel::Impl::Random(std::uint64_t below) {
  // SplitMix64: the same numbers on every machine.
  random_state += 0x9E3779B97F4A7C15u;
  std::uint64_t z = random_state;
  z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
  z = (z ^ z >> 27) * 0x94D049BB133111EBu;
  return (z ^ z >> 31) % below;
}

std::uint64_t Kernel::Impl::After(std::uint32_t ms) const {
  return ms == kPlatForever ? kNever : now + ms;
}

bool Kernel::Impl::MainIsStuck() const {
  // Another host thread may do anything; library threads only release what they own.
  for (const Thread* thread : live) {
    const bool may_wake = thread->by == By::Host || threads_wake_others;
    if (!thread->main && may_wake && thread->due != kNever) return false;
  }
  return IsStuck(*main);
}

bool Kernel::Impl::IsStuck(const Thread& waiting) const {
  if (waiting.due != kNever) return false;
  std::set<const Thread*> seen;
  const Thread* thread = &waiting;
  while (seen.insert(thread).second) {
    const auto* mutex = As<const Mutex>(thread->waiting_for);
    const auto* other = As<const Thread>(thread->waiting_for);
    thread = mutex != nullptr ? mutex->owner : other;
    if (thread == nullptr) return true;  // nobody signals an event
    if (thread->due != kNever) return false;
  }
  return true;
}

Thread& Kernel::Impl::Choose() {
  if (MainIsStuck()) {
    main->deadlocked = true;
    main->due = now;
    return *main;
  }
  if (kernel.pacer_) Pace();
  Thread* const next = NextDue();
  return next == nullptr ? *main : *next;
}

void Kernel::Impl::Pace() {
  std::uint64_t due = kNever;
  for (const Thread* thread : live) due = std::min(due, thread->due);
  if (due == kNever || due <= now || program != nullptr) return;
  const std::uint64_t reached = kernel.pacer_(due);
  // Strictly between two moments when something happens: a pump that was that long from its
  // beginning ends there too, whatever the seed.
  if (pumping && now < reached && reached < due) main->due = reached;
}

Thread* Kernel::Impl::NextDue() {
  // Whoever is late is as due as whoever is due now.
  const auto due = [this](const Thread& thread) { return std::max(thread.due, now); };
  Thread* best = nullptr;
  std::uint64_t count = 0;
  for (Thread* thread : live) {
    if (thread->due == kNever) continue;
    if (best == nullptr || due(*thread) < due(*best)) {
      best = thread;
      count = 1;
    } else if (due(*thread) == due(*best)) {
      ++count;
      if (seed == 0 && thread->yielded < best->yielded) best = thread;
    }
  }
  if (seed == 0 || count <= 1) return best;
  std::uint64_t skip = Random(count);
  for (Thread* thread : live) {
    if (thread->due != kNever && due(*thread) == due(*best) && skip-- == 0) return thread;
  }
  return best;
}

void Kernel::Impl::MakeCurrent(Thread& next) {
  if (next.due > now) {
    now = next.due;
    kernel.now_ms_ = static_cast<std::uint32_t>(now);
    world.board.SetTime(kernel.now_ms_);
  }
  next.due = now;
  next.yielded = 0;
  current = &next;
  kernel.by_ = next.by;
}

void Kernel::Impl::SwitchTo(Thread& self, Thread& next) {
  if (&next != &self) {
    next.turn.Give();
    self.turn.Await();
  }
  if (self.killed) throw ThreadEnded{};
  if (!self.main) return;
  if (host_failure) {
    StopWaiting(self);
    std::rethrow_exception(std::exchange(host_failure, nullptr));
  }
  if (std::exchange(self.deadlocked, false)) {
    const std::string text = WhoWaitsForWhat();
    StopWaiting(self);
    throw Deadlock(text);
  }
}

void Kernel::Impl::AskWatch() {
  Thread& self = *current;
  if (self.killed) return;
  try {
    kernel.watch_();
  } catch (...) {
    if (self.main) throw;
    if (!host_failure) host_failure = std::current_exception();
    self.due = now;
    main->due = now;
    MakeCurrent(*main);
    SwitchTo(self, *main);
  }
}

void Kernel::Impl::Block(std::uint64_t due) {
  Thread& self = *current;
  if (self.killed) return;  // it unwinds: no more pauses
  if (kernel.watch_) AskWatch();
  if (program != nullptr) return BlockInProgram(self, due);
  self.due = due;
  Thread& next = Choose();
  MakeCurrent(next);
  SwitchTo(self, next);
}

void Kernel::Impl::Yield() {
  current->yielded = ++yields;
  Block(now);
}

void Kernel::Impl::MayYield() {
  if (seed != 0) Block(now);
}

void Kernel::Impl::PreemptNow(unsigned one_in) {
  Thread& self = *current;
  if (self.killed || Random(one_in) != 0) return;
  std::vector<Thread*> others;
  for (Thread* thread : live) {
    if (thread != &self && thread->due != kNever) others.push_back(thread);
  }
  if (others.empty()) return;
  self.due = now;
  Thread& next = *others[Random(others.size())];
  if (kernel.pacer_ && next.due > now) kernel.pacer_(next.due);
  MakeCurrent(next);
  SwitchTo(self, next);
}

void Kernel::Impl::Wake(Thread& thread, std::uint32_t result) {
  thread.wait_result = result;
  thread.waiting_for = nullptr;
  thread.due = now;
}

std::string Kernel::Impl::WhoWaitsForWhat() const {
  const auto name = [](const Thread& thread) {
    if (thread.main) return std::string("the main host thread");
    if (thread.host_id != 0) return "host thread " + std::to_string(thread.host_id);
    return "library thread " + std::to_string(thread.id);
  };
  std::string text = "nothing can wake the main host thread:";
  for (const Thread* thread : live) {
    text += (thread == live.front() ? " " : "; ") + name(*thread);
    if (const auto* mutex = As<const Mutex>(thread->waiting_for)) {
      text += " waits for the mutex \"" + ToUtf8(mutex->name.c_str()) + "\"";
      if (mutex->owner != nullptr) text += " that " + name(*mutex->owner) + " holds";
    } else if (const auto* other = As<const Thread>(thread->waiting_for)) {
      text += " waits for the end of " + name(*other);
    } else if (thread->waiting_for != nullptr) {
      const std::string event = ToUtf8(thread->waiting_for->name.c_str());
      text += event.empty() ? " waits for an event" : " waits for the event \"" + event + "\"";
    } else if (thread->sending != nullptr) {
      text += " waits for the answer to a message";
    } else if (thread->awaits_message) {
      text += " waits for a message";
    } else {
      text += " sleeps";
    }
    if (thread->due != kNever && !thread->main) {
      text += " until " + std::to_string(thread->due) + " ms";
    }
  }
  return text;
}

// ---- Kernel -----------------------------------------------------------------------------------

void Kernel::SetSeed(std::uint64_t seed) {
  impl_->seed = seed;
  impl_->random_state = seed;
}

std::uint64_t Kernel::Seed() const { return impl_->seed; }

void Kernel::SetPreemption(unsigned one_in) { preempt_one_in_ = one_in; }

void Kernel::SetWatch(std::function<void()> watch) {
  watch_ = std::move(watch);
  cycles_to_watch_ = kCyclesToWatch;
}

void Kernel::SetPacer(std::function<std::uint64_t(std::uint64_t due)> pacer) {
  pacer_ = std::move(pacer);
}

void Kernel::Watch() {
  if (watch_) impl_->AskWatch();
}

void Kernel::BusCycleWork() {
  if (watch_ && --cycles_to_watch_ == 0) {
    cycles_to_watch_ = kCyclesToWatch;
    impl_->AskWatch();
  }
  if (preempt_one_in_ != 0) impl_->PreemptNow(preempt_one_in_);
  constexpr std::uint32_t kMillisecond = 1'000'000;  // ns
  cycles_ns_ += cycle_ns_;
  if (cycles_ns_ < kMillisecond) return;
  const std::uint32_t ms = cycles_ns_ / kMillisecond;
  cycles_ns_ %= kMillisecond;
  Idle(ms);  // others may have been waiting
}

void Kernel::Sleep(std::uint32_t ms) {
  impl_->world.Record(SleepEvent{false, ms});
  Idle(ms);
}

void Kernel::Idle(std::uint32_t ms) {
  if (ms == 0) {
    impl_->Yield();
  } else {
    impl_->Block(impl_->After(ms));
  }
}

}  // namespace sim
