#include "turns.h"

#include <algorithm>

#include "sim/world.h"
#include "window.h"

namespace host {

Turns g_turns;

namespace {

void CloseEvents(const Turns::Thread& thread) {
  CloseHandle(thread.go);
  CloseHandle(thread.answered);
}

void GiveEvents(Turns::Thread& thread) {
  thread.go = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  thread.answered = CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

}  // namespace

Turns::Turns() {
  GiveEvents(threads_.emplace_back());
  current_ = &threads_.front();
}

Turns::~Turns() {
  for (const Thread& thread : threads_) CloseEvents(thread);
}

void Turns::Start() {
  now_ = 0;
  yields_ = 0;
  threads_.front().due = 0;
  threads_.front().yielded = 0;
  current_ = &threads_.front();
}

Turns::Thread& Turns::Choose() {
  const auto due = [this](const Thread& thread) { return std::max(thread.due, now_); };
  Thread* best = &threads_.front();
  for (Thread& thread : threads_) {
    if (due(thread) < due(*best) || (due(thread) == due(*best) && thread.yielded < best->yielded)) {
      best = &thread;
    }
  }
  return *best;
}

void Turns::MakeCurrent(Thread& next) {
  now_ = std::max(now_, next.due);
  next.due = now_;
  next.yielded = 0;
  current_ = &next;
  sim::TheWorld().board.SetTime(Now());
}

bool Turns::PassOn(Thread& self) {
  Thread& next = Choose();
  MakeCurrent(next);
  if (&next == &self) return false;
  SetEvent(next.go);
  return true;
}

namespace {

// The simulated kernel's own time follows: events of the script are stamped by it.
void FollowWithKernel(std::uint32_t now) {
  sim::Kernel& kernel = sim::TheWorld().kernel;
  if (now != kernel.Now()) kernel.Idle(now - kernel.Now());
}

}  // namespace

void Turns::Pause(std::uint32_t ms) {
  Thread& self = *current_;
  if (ms == 0) self.yielded = ++yields_;
  self.due = now_ + ms;
  if (PassOn(self)) WaitForSingleObject(self.go, INFINITE);
  if (!self.worker) FollowWithKernel(Now());
}

void Turns::TakeAnswers() {
  for (Thread& thread : threads_) {
    if (!thread.sending) continue;
    while (WaitOrDispatch(thread.answered)) {
    }
    thread.sending = false;
    thread.due = now_;
  }
}

void Turns::Pump(std::uint32_t ms, bool deaf) {
  Thread& self = *current_;
  if (!deaf) {
    TakeAnswers();
    DispatchMessages();
  }
  if (ms == 0) self.yielded = ++yields_;
  self.due = now_ + ms;
  pumping_ = !deaf;
  if (PassOn(self)) {
    if (deaf) {
      WaitForSingleObject(self.go, INFINITE);
    } else {
      while (WaitOrDispatch(self.go)) {
      }
    }
  }
  pumping_ = false;
  FollowWithKernel(Now());
}

Turns::Thread* Turns::Make() {
  Thread& thread = threads_.emplace_back();
  GiveEvents(thread);
  thread.worker = true;
  thread.due = now_;
  return &thread;
}

void Turns::Begin(Thread* thread) { WaitForSingleObject(thread->go, INFINITE); }

void Turns::End() {
  Thread* const self = current_;
  threads_.remove_if([&](const Thread& thread) {
    if (&thread != self) return false;
    CloseEvents(thread);
    return true;
  });
  Thread& next = Choose();
  MakeCurrent(next);
  SetEvent(next.go);
}

void Turns::Remove(Thread* thread) {
  threads_.remove_if([&](const Thread& one) {
    if (&one != thread) return false;
    CloseEvents(one);
    return true;
  });
}

Turns::Thread* Turns::Find(HANDLE real) {
  for (Thread& thread : threads_) {
    if (thread.worker && thread.real == real) return &thread;
  }
  return nullptr;
}

Turns::Thread* Turns::Sender() {
  for (Thread& thread : threads_) {
    if (thread.sending) return &thread;
  }
  return nullptr;
}

Turns::Thread* Turns::BeginSend(std::uint32_t timeout_ms) {
  Thread& self = *current_;
  self.sending = true;
  self.handled = false;
  self.due = now_ + timeout_ms;
  if (!PassOn(self)) SetEvent(self.go);  // nobody has anything to do until it gives up
  return &self;
}

bool Turns::Expired(const Thread* thread) const {
  return WaitForSingleObject(thread->go, 0) == WAIT_OBJECT_0;
}

void Turns::Answered(Thread* thread) {
  SetEvent(thread->answered);
  WaitForSingleObject(thread->go, INFINITE);
}

}  // namespace host
