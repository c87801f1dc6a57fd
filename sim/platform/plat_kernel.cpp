// Kernel objects, threads, time and window messages on the simulated kernel.
#include <string>

#include "platform/platform.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kErrorNotEnoughMemory = 8;

sim::Kernel& TheKernel() { return sim::TheWorld().kernel; }

// A call that is to fail goes on with no handle, and fails as it does with one that is none.
PlatHandle Unless(sim::Fault fault, PlatHandle handle) {
  return sim::TheWorld().faults.Fires(fault) ? kPlatNoHandle : handle;
}

}  // namespace

std::uint32_t g_shared_word = 1;

PlatHandle Plat_CreateMutex(const char16_t* name) {
  return TheKernel().CreateMutex(name == nullptr ? std::u16string() : name);
}

PlatHandle Plat_CreateEvent(const char16_t* name, bool manual_reset, bool signalled) {
  if (sim::TheWorld().faults.Fires(sim::Fault::Event)) {
    TheKernel().SetLastError(kErrorNotEnoughMemory);
    return kPlatNoHandle;
  }
  if (name == nullptr) return TheKernel().CreateEvent(nullptr, manual_reset, signalled);
  const std::u16string text = name;
  return TheKernel().CreateEvent(&text, manual_reset, signalled);
}

std::uint32_t Plat_Wait(PlatHandle object, std::uint32_t timeout_ms) {
  return TheKernel().Wait(Unless(sim::Fault::Wait, object), timeout_ms);
}

bool Plat_ReleaseMutex(PlatHandle mutex) {
  return TheKernel().ReleaseMutex(Unless(sim::Fault::Release, mutex));
}

bool Plat_CloseHandle(PlatHandle handle) {
  return TheKernel().CloseHandle(Unless(sim::Fault::Close, handle));
}

PlatHandle Plat_CreateThread(PlatThreadProc proc, void* argument, std::uint32_t* thread_id) {
  return TheKernel().CreateThread(proc, argument, thread_id);
}

bool Plat_GetExitCodeThread(PlatHandle thread, std::uint32_t* exit_code) {
  return TheKernel().GetExitCodeThread(Unless(sim::Fault::ExitCode, thread), exit_code);
}

bool Plat_TerminateThread(PlatHandle thread, std::uint32_t exit_code) {
  return TheKernel().TerminateThread(thread, exit_code);
}

bool Plat_SetThreadQuantum(PlatHandle thread, std::uint32_t quantum_ms) {
  return TheKernel().SetThreadQuantum(Unless(sim::Fault::Quantum, thread), quantum_ms);
}

std::uint32_t Plat_CurrentThreadId() { return TheKernel().CurrentThreadId(); }
void Plat_Sleep(std::uint32_t duration_ms) { TheKernel().Sleep(duration_ms); }
std::uint32_t Plat_TickCount() { return TheKernel().Ticks(); }
std::uint32_t Plat_LastError() { return TheKernel().LastError(); }
void Plat_DisableThreadCalls(PlatHandle) { ++sim::TheWorld().thread_calls_off; }

bool Plat_IsWindow(PlatWindow window) { return sim::TheWorld().windows.Exists(window); }

bool Plat_SendMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                      std::intptr_t lparam, std::uint32_t timeout_ms) {
  return TheKernel().SendMessage(window, message, wparam, lparam, timeout_ms);
}

bool Plat_PostMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                      std::intptr_t lparam) {
  return TheKernel().PostMessage(window, message, wparam, lparam);
}
