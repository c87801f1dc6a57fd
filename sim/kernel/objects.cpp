// Mutexes, events, handles, and waiting for them.
#include <algorithm>
#include <utility>

#include "sim/kernel/kernel_impl.h"

namespace sim {

// ---- What a wait takes ------------------------------------------------------------------------

std::optional<std::uint32_t> Mutex::TryTake(Thread& taker) {
  if (owner != nullptr && owner != &taker) return std::nullopt;
  if (owner == nullptr) {
    owner = &taker;
    taker.owned.push_back(std::static_pointer_cast<Mutex>(shared_from_this()));
  }
  ++depth;
  return std::exchange(abandoned, false) ? kPlatWaitAbandoned : kPlatWaitSignalled;
}

std::optional<std::uint32_t> EventObject::TryTake(Thread&) {
  if (!signalled) return std::nullopt;
  signalled = manual_reset;
  return kPlatWaitSignalled;
}

std::optional<std::uint32_t> Thread::TryTake(Thread&) {
  if (!ended) return std::nullopt;
  return kPlatWaitSignalled;
}

void Kernel::Impl::ServeWaiters(Object& object) {
  while (!object.waiters.empty()) {
    const std::size_t place = seed == 0 ? 0 : Random(object.waiters.size());
    Thread& waiter = *object.waiters[place];
    const auto result = object.TryTake(waiter);
    if (!result) return;
    object.waiters.erase(object.waiters.begin() + static_cast<std::ptrdiff_t>(place));
    Wake(waiter, *result);
  }
}

std::uint32_t Kernel::Impl::Wait(const std::shared_ptr<Object>& object, std::uint32_t timeout_ms) {
  Thread& self = *current;
  if (self.killed) return kPlatWaitFailed;
  if (const auto result = object->TryTake(self)) return *result;
  if (timeout_ms == 0) return kPlatWaitTimeout;
  self.wait_result = kPlatWaitTimeout;
  self.waiting_for = object.get();
  object->waiters.push_back(&self);
  Block(After(timeout_ms));
  StopWaiting(self);
  return self.wait_result;
}

// ---- Handles ----------------------------------------------------------------------------------

PlatHandle Kernel::Impl::Open(std::shared_ptr<Object> object) {
  ++object->handles;
  const PlatHandle handle = kernel.NewHandleValue();
  handles.emplace(handle, std::move(object));
  return handle;
}

PlatHandle Kernel::NewHandleValue() {
  impl_->next_handle += 4;  // the two low bits of a handle are the system's
  return impl_->next_handle;
}

bool Kernel::CloseHandle(PlatHandle handle) {
  const auto found = impl_->handles.find(handle);
  if (found == impl_->handles.end()) return impl_->Fail(kErrorInvalidHandle);
  Object& object = *found->second;
  if (--object.handles == 0 && !object.name.empty()) impl_->named.erase(object.name);
  impl_->handles.erase(found);
  return true;
}

PlatHandle Kernel::LoadModule(const std::u16string&) {
  return impl_->Open(std::make_shared<Module>());
}

unsigned Kernel::OpenModules() const {
  unsigned count = 0;
  for (const auto& [handle, object] : impl_->handles) {
    if (object->kind == Object::Kind::Module) ++count;
  }
  return count;
}

unsigned Kernel::OpenHandles() const {
  return static_cast<unsigned>(impl_->handles.size()) - OpenModules();
}

// ---- Mutexes and events -----------------------------------------------------------------------

namespace {

// A fresh object of the name, or the one that is there already; null when that is of another kind.
template <typename T>
std::shared_ptr<T> MakeNamed(std::map<std::u16string, Object*>& named, const std::u16string& name,
                             bool* existed) {
  *existed = false;
  if (name.empty()) return std::make_shared<T>();
  const auto found = named.find(name);
  if (found == named.end()) {
    auto object = std::make_shared<T>();
    object->name = name;
    named[name] = object.get();
    return object;
  }
  *existed = true;
  if (found->second->kind != T::kKind) return nullptr;
  return std::static_pointer_cast<T>(found->second->shared_from_this());
}

}  // namespace

PlatHandle Kernel::CreateMutex(const std::u16string& name) {
  if (impl_->world.faults.Fires(Fault::Mutex)) {
    SetLastError(kErrorNotEnoughMemory);
    return kPlatNoHandle;
  }
  bool existed = false;
  const auto mutex = MakeNamed<Mutex>(impl_->named, name, &existed);
  if (mutex == nullptr) {
    SetLastError(kErrorInvalidHandle);
    return kPlatNoHandle;
  }
  SetLastError(existed ? kPlatErrorAlreadyExists : 0);
  return impl_->Open(mutex);
}

PlatHandle Kernel::CreateEvent(const std::u16string* name, bool manual_reset, bool signalled) {
  bool existed = false;
  const auto event =
      MakeNamed<EventObject>(impl_->named, name == nullptr ? std::u16string() : *name, &existed);
  if (event == nullptr) {
    SetLastError(kErrorInvalidHandle);
    return kPlatNoHandle;
  }
  if (!existed) {
    event->manual_reset = manual_reset;
    event->signalled = signalled;
  }
  // The fault: another process has an event of that name.
  if (!event->name.empty() && impl_->world.faults.Fires(Fault::EventExists)) existed = true;
  SetLastError(existed ? kPlatErrorAlreadyExists : 0);
  return impl_->Open(event);
}

bool Kernel::SetEvent(PlatHandle handle) {
  const auto event = impl_->Find<EventObject>(handle);
  if (event == nullptr) return impl_->Fail(kErrorInvalidHandle);
  event->signalled = true;
  impl_->ServeWaiters(*event);
  return true;
}

std::uint32_t Kernel::Wait(PlatHandle handle, std::uint32_t timeout_ms) {
  const auto found = impl_->handles.find(handle);
  if (found == impl_->handles.end() || found->second->kind == Object::Kind::Module) {
    impl_->world.Record(LockEvent{false, "", false});
    SetLastError(kErrorInvalidHandle);
    return kPlatWaitFailed;
  }
  const std::shared_ptr<Object> object = found->second;  // may be closed meanwhile
  const auto* mutex = As<const Mutex>(object.get());
  if (mutex == nullptr) {
    impl_->world.Record(SleepEvent{true, timeout_ms});
    return impl_->Wait(object, timeout_ms);
  }
  impl_->MayYield();
  const std::uint32_t result = impl_->Wait(object, timeout_ms);
  const bool ok = result == kPlatWaitSignalled || result == kPlatWaitAbandoned;
  impl_->world.Record(LockEvent{false, ToUtf8(mutex->name.c_str()), ok});
  return result;
}

void Kernel::Impl::LetGo(Mutex& mutex) {
  std::erase_if(mutex.owner->owned, [&mutex](const auto& owned) { return owned.get() == &mutex; });
  mutex.owner = nullptr;
  ServeWaiters(mutex);
}

bool Kernel::ReleaseMutex(PlatHandle handle) {
  const auto mutex = impl_->Find<Mutex>(handle);
  const bool ok = mutex != nullptr && mutex->owner == impl_->current;
  impl_->world.Record(LockEvent{true, mutex == nullptr ? "" : ToUtf8(mutex->name.c_str()), ok});
  if (mutex == nullptr) return impl_->Fail(kErrorInvalidHandle);
  if (!ok) return impl_->Fail(kErrorNotOwner);
  if (--mutex->depth == 0) impl_->LetGo(*mutex);
  return true;
}

const Mutex* Kernel::Impl::FindNamedMutex(const std::u16string& name) const {
  const auto found = named.find(name);
  return found == named.end() ? nullptr : As<const Mutex>(found->second);
}

bool Kernel::MutexHeld(const std::u16string& name) const {
  const Mutex* mutex = impl_->FindNamedMutex(name);
  return mutex != nullptr && mutex->owner != nullptr;
}

unsigned Kernel::MutexDepth(const std::u16string& name) const {
  const Mutex* mutex = impl_->FindNamedMutex(name);
  return mutex == nullptr ? 0 : mutex->depth;
}

std::uint32_t Kernel::LastError() const { return impl_->current->last_error; }
void Kernel::SetLastError(std::uint32_t error) { impl_->current->last_error = error; }

}  // namespace sim
