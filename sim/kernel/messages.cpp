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

void Kernel::Impl::Handle(const PostedMessage& message, bool posted) {
  const bool number = MessageRecordBytes(message.message) == 0;
  world.windows.Receive({kernel.now_ms_, message.message,
                         number ? static_cast<std::uint32_t>(message.wparam) : 0,
                         TakeRecord(message.message, message.wparam), posted});
  if (world.windows.procedure) world.windows.procedure(message.message, message.wparam);
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

void Kernel::Impl::HandleMessages() {
  // Sent messages go before posted ones.
  while (!sends.empty() && !world.windows.deaf) Answer(*sends.front(), true);
  while (!posts.empty()) {
    const PostedMessage message = posts.front();
    posts.pop_front();
    Handle(message, true);
  }
}

// ---- Kernel -----------------------------------------------------------------------------------

void Kernel::Pump(std::uint32_t ms) {
  if (impl_->current != impl_->main.get()) {
    Idle(ms);
    return;
  }
  impl_->HandleMessages();
  impl_->pumping = true;
  try {
    Idle(ms);
  } catch (...) {
    impl_->pumping = false;
    throw;
  }
  impl_->pumping = false;
}

bool Kernel::SendMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                         std::intptr_t lparam, std::uint32_t timeout_ms) {
  Thread& self = *impl_->current;
  const PostedMessage content{window, message, wparam, lparam};
  if (self.killed) return false;
  if (impl_->world.faults.Fires(Fault::Send) || !impl_->world.windows.Exists(window)) {
    impl_->TraceMessage(self, false, false, content);
    return impl_->Fail(kErrorInvalidWindow);
  }
  // The windows are the main host thread's: its own messages need no turn.
  if (!impl_->world.windows.deaf && (impl_->pumping || self.main)) {
    impl_->TraceMessage(self, false, true, content);
    impl_->Handle(content, false);
    impl_->MayYield();
    return true;
  }
  PendingSend send{&self, window, message, wparam, lparam};
  // What the main host thread sends to itself in vain, it cannot answer later either.
  if (!self.main) impl_->sends.push_back(&send);
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
  if (impl_->pumping) {
    impl_->Handle(content, true);
  } else {
    impl_->posts.push_back(content);
  }
  return true;
}

void Kernel::WindowDestroyed(PlatWindow window) {
  std::erase_if(impl_->posts, [window](const PostedMessage& m) { return m.window == window; });
  const std::deque<PendingSend*> waiting = impl_->sends;
  for (PendingSend* send : waiting) {
    if (send->window == window) impl_->Answer(*send, false);
  }
}

}  // namespace sim
