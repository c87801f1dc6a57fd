// The messages that the library sends to a host window, and the records that they carry.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "VexoCtrlSDK.h"

namespace sim {

struct HostMessage {
  std::uint32_t message;
  std::size_t record_bytes;  // of what wParam points to; 0: wParam is a number
};

inline constexpr std::array kHostMessages = {
    HostMessage{VEXO_MSG_STATUS, 0},
    HostMessage{VEXO_MSG_INIT_RESULT, sizeof(VideoState)},
    HostMessage{VEXO_MSG_VIDEO_INFO, sizeof(VideoDetectRecord)},
    HostMessage{VEXO_MSG_MOTION_STATUS, 0},
    HostMessage{VEXO_MSG_CHIP_VERSION, 0},
    HostMessage{VEXO_MSG_REG_VALUE, sizeof(VexoRegRecord)},
};

// None of the library's messages: null.
constexpr const HostMessage* FindHostMessage(std::uint32_t message) {
  for (const HostMessage& row : kHostMessages) {
    if (row.message == message) return &row;
  }
  return nullptr;
}

// Size of the record that a message's wParam points to; 0 where it is a number.
constexpr std::size_t MessageRecordBytes(std::uint32_t message) {
  const HostMessage* row = FindHostMessage(message);
  return row == nullptr ? 0 : row->record_bytes;
}

}  // namespace sim
