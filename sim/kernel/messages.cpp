// Window messages: sent ones, whose sender waits, and posted ones.
#include <algorithm>
#include <cstring>
#include <utility>

#include "sim/kernel/kernel_impl.h"
#include "sim/kernel/message_records.h"

namespace sim {
namespace {

Bytes TakeRecord(std::uint32_t message, std::uintptr_t wparam) {
  const std::size_t bytes = MessageRecordBytes(message);
  if (wparam == 0 || bytes == 0) return {};
  Bytes record(bytes);
  std::memcpy(record.data(), reinterpret_cast<const void*>(wparam), bytes);
  return record;
}

}  // namespace

void Kernel::Impl::TraceMessage(const Thread& sender, bool post, bool ok,
                                const PostedMessage& message) {
  MessageEvent event;
  event.post = post;
  event.message = message.message;
  event.lparam = static_cast<std::uint32_t>(message.lparam);
  event.ok = ok;
  if (MessageRecordBytes(message.message) == 0) {
    event.wparam = static_cast<std::uint32_t>(message.wparam);
  } else {
    event.record = TakeRecord(message.message, message.wparam);
  }
  world.trace.Add(kernel.now_ms_, sender.by, std::move(event));
}

void Kernel::Impl::Receive(const PostedMessage& message, bool posted) {
  const bool number = MessageRecordBytes(message.message) == 0;
  world.windows.Receive({kernel.now_ms_, message.message,
                         number ? static_cast<std::uint32_t>(message.wparam) : 0,
                         static_cast<std::uint32_t>(message.lparam),
                         TakeRecord(message.message, message.wparam), posted});
}

void Kernel::Impl::Handle(const PostedMessage& message, bool posted) {
  Receive(message, posted);
  if (!world.windows.procedure) return;
  world.windows.procedure(message.window, message.message, message.wparam, message.lparam);
}

void Kernel::Impl::Answer(PendingSend& send, bool ok) {
  const PostedMessage message{send.window, send.message, send.wparam, send.lparam};
  TraceMessage(*send.sender, false, ok, message);
  if (ok) Handle(message, false);
  send.done = true;
  send.ok = ok;
  std::erase(sends, &send);
  send.sender->sending = nullptr;
  send.sender->due = now;
}

// In a program the window's own thread runs the procedure, and others go on meanwhile: its sender
// may give up, or end, before the procedure is through.
void Kernel::Impl::AnswerInProgram(PendingSend& send) {
  const PostedMessage message{send.window, send.message, send.wparam, send.lparam};
  const std::uint64_t number = send.number;
  std::erase(sends, &send);
  handled_sends.push_back(&send);
  Handle(message, false);
  const auto still = std::find_if(handled_sends.begin(), handled_sends.end(),
                                  [=](const PendingSend* one) { return one->number == number; });
  if (still == handled_sends.end()) return;
  PendingSend& answered = **still;
  handled_sends.erase(still);
  TraceMessage(*answered.sender, false, true, message);
  answered.done = true;
  answered.ok = true;
  answered.sender->sending = nullptr;
  answered.sender->due = now;
}

unsigned Kernel::Impl::HandleMessages() {
  unsigned handled = 0;
  // Sent messages go before posted ones.
  while (!sends.empty() && !world.windows.deaf) {
    if (program != nullptr) {
      AnswerInProgram(*sends.front());
    } else {
      Answer(*sends.front(), true);
    }
    ++handled;
  }
  while (!main->posts.empty()) {
    const PostedMessage message = main->posts.front();
    main->posts.pop_front();
    Handle(message, true);
    ++handled;
  }
  return handled;
}

// Messages that come meanwhile wake the window's thread, which handles them itself.
unsigned Kernel::Impl::PumpInProgram(std::uint32_t ms) {
  const std::uint64_t end = now + ms;
  const bool outer = pumping;
  unsigned handled = HandleMessages();
  pumping = true;
  if (ms == 0) Yield();
  while (now < end) {
    Block(end);
    handled += HandleMessages();
  }
  if (ms == 0) handled += HandleMessages();
  pumping = outer;
  return handled;
}

void Kernel::Impl::Queue(PendingSend& send) {
  send.number = ++sends_queued;
  sends.push_back(&send);
  if (!world.windows.deaf) WakeForMessage(OwnerOf(send.window));
}

Thread& Kernel::Impl::OwnerOf(PlatWindow window) const {
  const auto found = window_owners.find(window);
  return found == window_owners.end() ? *main : *found->second;
}

PendingSend* Kernel::Impl::FirstSendTo(const Thread& thread) const {
  if (world.windows.deaf) return nullptr;
  const auto found = std::find_if(sends.begin(), sends.end(), [&](const PendingSend* send) {
    return &OwnerOf(send->window) == &thread;
  });
  return found == sends.end() ? nullptr : *found;
}

void Kernel::Impl::WakeForMessage(Thread& owner) {
  if (owner.awaits_message && owner.due > now) owner.due = now;
  if (&owner == main.get()) WakePump();
}

// The window's thread takes what came while it pumps.
void Kernel::Impl::WakePump() {
  if (program != nullptr && pumping && !main->outside && main->due > now) main->due = now;
}

// ---- Kernel -----------------------------------------------------------------------------------

unsigned Kernel::Pump(std::uint32_t ms) {
  if (impl_->current != impl_->main.get()) {
    Idle(ms);
    return 0;
  }
  if (impl_->program != nullptr) return impl_->PumpInProgram(ms);
  const unsigned handled = impl_->HandleMessages();
  impl_->pumping = true;
  try {
    Idle(ms);
  } catch (...) {
    impl_->pumping = false;
    throw;
  }
  impl_->pumping = false;
  return handled;
}

std::optional<Kernel::Message> Kernel::TakeMessage(const MessageChoice& choice) {
  Thread& self = *impl_->current;
  self.has_queue = true;
  while (PendingSend* const send = impl_->FirstSendTo(self)) impl_->AnswerInProgram(*send);
  const auto found =
      std::find_if(self.posts.begin(), self.posts.end(), [&choice](const Message& message) {
        return choice.first <= message.message && message.message <= choice.last;
      });
  if (found == self.posts.end()) return std::nullopt;
  const Message message = *found;
  if (!choice.take) return message;
  self.posts.erase(found);
  if (message.window != 0) impl_->Receive(message, true);
  return message;
}

void Kernel::AwaitMessage(std::uint32_t ms) {
  Thread& self = *impl_->current;
  if (!self.posts.empty() || impl_->FirstSendTo(self) != nullptr) return;
  self.awaits_message = true;
  impl_->Block(impl_->After(ms));
  impl_->StopWaiting(self);
}

bool Kernel::PostThreadMessage(std::uint32_t thread_id, std::uint32_t message,
                               std::uintptr_t wparam, std::intptr_t lparam) {
  const auto found = std::find_if(
      impl_->live.begin(), impl_->live.end(),
      [thread_id](const Thread* thread) { return thread->id == thread_id && thread->has_queue; });
  if (found == impl_->live.end()) return impl_->Fail(kErrorInvalidThread);
  (*found)->posts.push_back({0, message, wparam, lparam});
  impl_->WakeForMessage(**found);
  return true;
}

void Kernel::OwnWindow(PlatWindow window) { impl_->window_owners[window] = impl_->current; }
void Kernel::LetThreadsWakeOthers() { impl_->threads_wake_others = true; }

bool Kernel::SendMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                         std::intptr_t lparam, std::uint32_t timeout_ms) {
  Thread& self = *impl_->current;
  const PostedMessage content{window, message, wparam, lparam};
  if (self.killed) return false;
  if (impl_->world.faults.Fires(Fault::Send) || !impl_->world.windows.Exists(window)) {
    impl_->TraceMessage(self, false, false, content);
    return impl_->Fail(kErrorInvalidWindow);
  }
  // What a thread sends to its own windows needs no turn.
  const bool own = &impl_->OwnerOf(window) == &self;
  const bool takes_it = impl_->pumping && impl_->program == nullptr;
  if (!impl_->world.windows.deaf && (takes_it || own)) {
    impl_->TraceMessage(self, false, true, content);
    impl_->Handle(content, false);
    impl_->MayYield();
    return true;
  }
  PendingSend send{&self, window, message, wparam, lparam};
  // What a thread sends to itself in vain, it cannot answer later either.
  if (!own) impl_->Queue(send);
  self.sending = &send;
  impl_->Block(impl_->After(timeout_ms));
  impl_->StopWaiting(self);
  if (!send.done) impl_->TraceMessage(self, false, false, content);
  if (send.ok) return true;
  return impl_->Fail(send.done ? kErrorInvalidWindow : kErrorTimeout);
}

bool Kernel::PostMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                         std::intptr_t lparam) {
  const PostedMessage content{window, message, wparam, lparam};
  const bool ok = !impl_->world.faults.Fires(Fault::Post) && impl_->world.windows.Exists(window);
  impl_->TraceMessage(*impl_->current, true, ok, content);
  if (!ok) return impl_->Fail(kErrorInvalidWindow);
  if (impl_->pumping && impl_->program == nullptr) {
    impl_->Handle(content, true);
  } else {
    Thread& owner = impl_->OwnerOf(window);
    owner.posts.push_back(content);
    impl_->WakeForMessage(owner);
  }
  return true;
}

void Kernel::WindowDestroyed(PlatWindow window) {
  std::erase_if(impl_->OwnerOf(window).posts,
                [window](const PostedMessage& m) { return m.window == window; });
  const std::deque<PendingSend*> waiting = impl_->sends;
  for (PendingSend* send : waiting) {
    if (send->window == window) impl_->Answer(*send, false);
  }
  impl_->window_owners.erase(window);
}

}  // namespace sim
