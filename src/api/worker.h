// The worker thread: reports video loss and motion to the host.
#pragma once

#include <cstdint>

#include "platform/platform.h"

// Shared by the controller and the thread.
struct WorkerBlock {
  std::uint32_t running = 0;       // set by the thread when it starts, read by nobody
  std::uint32_t stop_request = 0;  // set by the controller; the thread ends when it sees it
  std::uint32_t thread_id = 0;     // written by the thread
  std::uint32_t exit_code = 0;     // what the thread returns
  std::uint32_t reserved = 0;
};

struct WorkerState {
  WorkerBlock block;
  PlatHandle thread = kPlatNoHandle;  // 0: no thread
  std::uint32_t thread_id = 0;        // as its creation gave it
  std::uint32_t motion_stamp = 0;     // tick that the 900 ms of the repeat count from; 0: the
                                      // next pass without a change sets it
};
extern WorkerState g_worker;

// Starts the thread, after stopping one that runs. Returns 1, or 0 when it could not be created.
std::int32_t VexoSDK_StartWorker();

// Asks the thread to end and waits for it; terminates it after about 20 ms.
void VexoSDK_StopWorker();

// The thread itself; block is a WorkerBlock. Returns the block's exit code, 0xFF00FF00 for a null
// block.
std::uint32_t VexoSDK_WorkerProc(void* block);
