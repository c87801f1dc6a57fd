// Window messages to the host. Failures are printed and otherwise ignored.
#pragma once

#include <cstdint>

// Sends a message to the host window and waits for it to be handled, 5000 ms at most. What wparam
// points to need live no longer than the call.
void VexoSDK_SendHostMessage(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam);

// Posts a message to the host window. What wparam points to must live on.
void VexoSDK_PostHostMessage(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam);
