// Beginning and end of threads.
#include <algorithm>
#include <system_error>
#include <utility>

#include "sim/kernel/kernel_impl.h"

namespace sim {

Kernel::Impl::Impl(Kernel& of, World& in) : kernel(of), world(in) {
  main = std::make_shared<Thread>();
  main->main = true;
  main->id = next_thread_id++;
  current = main.get();
  live.push_back(main.get());
}

void Kernel::Impl::EndThreads() {
  const auto ours = [](const Thread* thread) { return thread->os_thread.joinable(); };
  for (;;) {
    const auto last = std::find_if(live.rbegin(), live.rend(), ours);
    if (last == live.rend()) break;
    Kill(**last);
  }
  JoinEnded();
}

std::shared_ptr<Thread> Kernel::Impl::StartThread(By by, unsigned host_id,
                                                  std::function<std::uint32_t()> body) {
  JoinEnded();
  auto thread = std::make_shared<Thread>();
  thread->by = by;
  thread->host_id = host_id;
  thread->id = next_thread_id++;
  thread->body = std::move(body);
  thread->due = now;
  try {
    thread->os_thread = std::thread([this, self = thread.get()] { RunThread(*self); });
  } catch (const std::system_error&) {
    return nullptr;
  }
  threads.push_back(thread);
  AddToLive(*thread);
  return thread;
}

// The main host thread stands first, host threads before library threads, each in order of
// creation or arrival.
void Kernel::Impl::AddToLive(Thread& thread) {
  if (thread.main) {
    live.insert(live.begin(), &thread);
    return;
  }
  const auto place = thread.by == By::Worker
                         ? live.end()
                         : std::find_if(live.begin(), live.end(),
                                        [](const Thread* t) { return t->by == By::Worker; });
  live.insert(place, &thread);
}

void Kernel::Impl::RunThread(Thread& self) {
  self.turn.Await();
  if (self.killed) return;
  bool terminated_itself = false;
  std::uint32_t code = 0;
  try {
    code = self.body();
  } catch (const ThreadEnded&) {
    if (!self.ended) return;  // the thread that ended this one goes on
    terminated_itself = true;
  } catch (...) {
    if (!host_failure) host_failure = std::current_exception();
    main->due = now;  // to be told at once
  }
  if (!terminated_itself) {
    self.exit_code = code;
    if (self.by == By::Worker) world.Record(ThreadEvent{"end", code});
  }
  if (self.host_id != 0) host_done[self.host_id - 1] = true;
  Retire(self);
  if (program != nullptr) {
    const std::lock_guard gate(program->gate);
    PassOn();
    return;
  }
  Thread& next = Choose();
  MakeCurrent(next);
  next.turn.Give();
}

void Kernel::Impl::StopWaiting(Thread& thread) {
  if (thread.waiting_for != nullptr) std::erase(thread.waiting_for->waiters, &thread);
  if (thread.sending != nullptr) {
    std::erase(sends, thread.sending);
    std::erase(handled_sends, thread.sending);
  }
  thread.waiting_for = nullptr;
  thread.sending = nullptr;
  thread.awaits_message = false;
}

void Kernel::Impl::Retire(Thread& thread) {
  thread.ended = true;
  std::erase(live, &thread);
  std::erase_if(window_owners, [&thread](const auto& window) { return window.second == &thread; });
  for (const std::shared_ptr<Mutex>& mutex : std::exchange(thread.owned, {})) {
    mutex->owner = nullptr;
    mutex->depth = 0;
    mutex->abandoned = true;
    ServeWaiters(*mutex);
  }
  ServeWaiters(thread);
}

void Kernel::Impl::Kill(Thread& victim) {
  StopWaiting(victim);
  victim.killed = true;
  // It has its turn once more, to unwind.
  Thread* const self = std::exchange(current, &victim);
  kernel.by_ = victim.by;
  victim.turn.Give();
  victim.os_thread.join();
  current = self;
  kernel.by_ = self->by;
  if (victim.host_id != 0) host_done[victim.host_id - 1] = true;
  Retire(victim);
  JoinEnded();
}

void Kernel::Impl::JoinEnded() {
  std::erase_if(threads, [this](const std::shared_ptr<Thread>& thread) {
    if (!thread->ended || thread.get() == current) return false;
    if (thread->os_thread.joinable()) thread->os_thread.join();
    return true;
  });
}

// ---- Kernel -----------------------------------------------------------------------------------

Kernel::Kernel(World& world) : impl_(std::make_unique<Impl>(*this, world)) {}
Kernel::~Kernel() {
  if (impl_->program != nullptr) impl_->CloseToProgram();
  impl_->EndThreads();
}

unsigned Kernel::StartHostThread(std::function<void()> body) {
  impl_->host_done.push_back(false);
  const auto id = static_cast<unsigned>(impl_->host_done.size());
  const auto thread = impl_->StartThread(By::Host, id, [body = std::move(body)] {
    body();
    return 0u;
  });
  if (thread == nullptr) throw std::runtime_error("a host thread could not be started");
  return id;
}

bool Kernel::HostThreadDone(unsigned id) const {
  return id != 0 && id <= impl_->host_done.size() && impl_->host_done[id - 1];
}

PlatHandle Kernel::CreateThread(PlatThreadProc proc, void* argument, std::uint32_t* thread_id) {
  const auto thread = impl_->world.faults.Fires(Fault::Thread)
                          ? nullptr
                          : impl_->StartThread(By::Worker, 0, [=] { return proc(argument); });
  if (thread == nullptr) {
    SetLastError(kErrorNotEnoughMemory);
    return kPlatNoHandle;
  }
  if (thread_id != nullptr) *thread_id = thread->id;
  impl_->world.Record(ThreadEvent{"start", 0});
  return impl_->Open(thread);
}

bool Kernel::GetExitCodeThread(PlatHandle handle, std::uint32_t* exit_code) {
  const auto thread = impl_->Find<Thread>(handle);
  if (thread == nullptr) return impl_->Fail(kErrorInvalidHandle);
  *exit_code = thread->exit_code;
  return true;
}

bool Kernel::TerminateThread(PlatHandle handle, std::uint32_t exit_code) {
  const auto thread = impl_->Find<Thread>(handle);
  if (thread == nullptr) return impl_->Fail(kErrorInvalidHandle);
  if (thread->ended) return impl_->Fail(kErrorAccessDenied);
  impl_->world.Record(ThreadEvent{"terminate", exit_code});
  if (impl_->world.faults.Fires(Fault::Terminate)) return true;
  thread->exit_code = exit_code;
  if (thread.get() != impl_->current) {
    impl_->Kill(*thread);
    return true;
  }
  thread->killed = true;
  thread->ended = true;
  throw ThreadEnded{};
}

void Kernel::EndThread(std::uint32_t thread_id) {
  const auto found =
      std::find_if(impl_->live.begin(), impl_->live.end(), [this, thread_id](const Thread* thread) {
        return thread->id == thread_id && thread != impl_->current;
      });
  if (found != impl_->live.end()) impl_->Kill(**found);
}

bool Kernel::SetThreadQuantum(PlatHandle handle, std::uint32_t quantum_ms) {
  const auto thread = impl_->Find<Thread>(handle);
  if (thread == nullptr) return impl_->Fail(kErrorInvalidHandle);
  thread->quantum = quantum_ms;
  return true;
}

std::uint32_t Kernel::ThreadQuantum(PlatHandle handle) const {
  const auto thread = impl_->Find<Thread>(handle);
  return thread == nullptr ? 0 : thread->quantum;
}

std::uint64_t Kernel::NowUnwrapped() const { return impl_->now; }

std::uint32_t Kernel::CurrentThreadId() const { return impl_->current->id; }

unsigned Kernel::LiveThreads() const {
  return static_cast<unsigned>(std::count_if(impl_->live.begin(), impl_->live.end(),
                                             [](const Thread* t) { return t->by == By::Worker; }));
}

}  // namespace sim
