// The command lock: paths that keep it, threads and processes that end with it.
#include <array>
#include <memory>
#include <thread>

#include "VexoCtrlSDK.h"
#include "checks.h"
#include "host.h"

namespace checks {
namespace {

constexpr const wchar_t* kLockName = L"CS4_GlobalLock";
constexpr std::uint32_t kUnknownDump = VEXO_CMD_DUMP_SLAVE3_P2 + 1;

// Whether nobody has the lock.
bool LockIsFree() {
  const HANDLE lock = CreateMutexW(nullptr, FALSE, kLockName);
  const DWORD result = WaitForSingleObject(lock, 0);
  if (result != WAIT_TIMEOUT) ReleaseMutex(lock);
  CloseHandle(lock);
  return result != WAIT_TIMEOUT;
}

// `keep` runs in a thread that then ends without giving the lock back; a command of another thread
// waits for that and goes on.
template <typename Keep, typename Next>
void HandsOn(const Keep& keep, const Next& next) {
  const HANDLE end = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const HANDLE kept = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::thread first([&] {
    keep();
    SetEvent(kept);
    WaitForSingleObject(end, INFINITE);
  });
  WaitForSingleObject(kept, INFINITE);
  const bool free = LockIsFree();
  std::atomic<bool> done = false;
  std::thread second([&] {
    next();
    done = true;
  });
  Sleep(100);
  const bool early = done;
  SetEvent(end);
  first.join();
  second.join();
  CloseHandle(end);
  CloseHandle(kept);
  Require(!free, "the lock was not kept");
  Require(!early, "the other thread did not wait");
}

// A command that keeps the lock, and its result.
void CommandKeeps(std::uint32_t code, bool with_record, int result) {
  Window window;
  Library library;
  library.initialize(window.Handle());
  int found = 0;
  int next = 1;
  HandsOn(
      [&] {
        VexoInitRecord record = {};
        found = library.command_proc(code, with_record ? &record : nullptr);
      },
      [&] { next = library.command_proc(VEXO_CMD_STOP_MONITOR, nullptr); });
  RequireEqual(found, result, "the result of the command that keeps the lock");
  RequireEqual(next, VEXO_OK, "the result of the next");
  // The next one gave it back.
  Require(LockIsFree(), "the lock is still kept");
}

void MissingRecord() { CommandKeeps(VEXO_CMD_INIT, false, VEXO_ERROR_PARAMETER); }
void FailedInitialization() {
  Board("board chips 0");
  CommandKeeps(VEXO_CMD_INIT, true, VEXO_ERROR_FAILED);
}
void UnknownCommand() { CommandKeeps(kUnknownCommand, true, VEXO_ERROR_FAILED); }
void UnknownDump() { CommandKeeps(kUnknownDump, true, VEXO_ERROR_FAILED); }

// In a process of its own: the refused load leaves the mark there.
void UninitializedMotionSetter() {
  const Signal mark(L"VEXOSDK");
  Child child(L"role motion-setter");
  RequireEqual(child.Wait(), 0u, "the other process's exit status");
}

void KilledProcess() {
  // The lock lives on with this handle, as with the bus's other drivers.
  const std::unique_ptr<void, decltype(&CloseHandle)> lock(CreateMutexW(nullptr, FALSE, kLockName),
                                                           CloseHandle);
  Signal ready(L"VexoTestLockKept");
  {
    Child first(L"role keep-lock");
    ready.Await();
    Require(!LockIsFree(), "the other process has not kept the lock");
    first.Kill();
  }
  Child next(L"role after-killed");
  RequireEqual(next.Wait(), 0u, "the next process's exit status");
}

constexpr std::array kChecks = {
    Check{"a lock kept by an initialization without a record goes on to the next thread",
          MissingRecord},
    Check{"a lock kept by a failed initialization goes on to the next thread",
          FailedInitialization},
    Check{"a lock kept by an unknown command goes on to the next thread", UnknownCommand},
    Check{"a lock kept by an unknown dump goes on to the next thread", UnknownDump},
    Check{"a lock kept by the motion setter of an uninitialized library goes on to the next thread",
          UninitializedMotionSetter},
    Check{"a process killed with the lock does not stop the next one", KilledProcess},
};

}  // namespace

std::span<const Check> LockChecks() { return kChecks; }

int MotionSetterKeepsLock() {
  Library library;
  std::array<std::uint8_t, VEXO_MOTION_MASK_BYTES> mask{};
  int first = 0;
  int second = 0;
  HandsOn([&] { first = library.set_motion_info(0, 1, mask.data()); },
          [&] { second = library.set_motion_info(0, 1, mask.data()); });
  RequireEqual(first, VEXO_ERROR_UNINITIALIZED, "the first result");
  RequireEqual(second, VEXO_ERROR_UNINITIALIZED, "the second result");
  return 0;
}

}  // namespace checks
