// The host's window: a real one, whose procedure notes what the library tells it.
#pragma once

#include <cstdint>
#include <functional>

#include "windows_api.h"

namespace host {

// Where a message came from.
enum class Origin { Queue, OwnThread, OtherThread };

// Called by the window procedure for messages of the library.
using MessageSink =
    std::function<void(std::uint32_t message, std::uintptr_t wparam, Origin origin)>;
void SetMessageSink(MessageSink sink);

HWND MakeWindow();

// Handles what is in the queue, and sent messages.
void DispatchMessages();

// Waits for the event or for messages, which it handles. False when the event was signalled.
bool WaitOrDispatch(HANDLE event);

}  // namespace host
