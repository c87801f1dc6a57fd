// What the display shows and which channels take part.
#pragma once

#include <cstdint>

#include "chip/video_state.h"
#include "platform/platform.h"

inline constexpr std::uint8_t kViewLive = 1;
inline constexpr std::uint8_t kViewPlayback = 2;

inline constexpr std::uint32_t kAllChannels = 0xFFFFFFFFu;

// A mask that is kept for each of the two views.
struct ViewMasks {
  std::uint32_t live = 0;
  std::uint32_t playback = 0;
};

struct DisplayState {
  std::uint8_t view = kViewLive;             // live or playback
  std::uint8_t live_split = kSplitNone;      // last live split mode
  std::uint8_t play_split = kSplitNone;      // last playback split mode
  std::uint32_t g_view_mode = 0;             // the dispatcher's word; nothing here reads it
  std::uint32_t live_mask = kAllChannels;    // bit n: channel n shown in live display
  std::uint32_t record_mask = kAllChannels;  // bit n: channel n recorded
  std::uint32_t play_mask = kAllChannels;    // bit n: channel n shown in playback
  ViewMasks blank_mask;                      // last applied; bit n: channel n blanked
  ViewMasks bit0_mask;                       // last applied
  std::uint8_t split_option = 0;             // of the last text-path live split
  std::uint8_t selected_channel = 0;         // full-screen channel of the text path
  std::uint16_t bit6_mask = 0;               // bit n: channel n frozen by the text path
  PlatHandle wait_event = kPlatNoHandle;     // never signalled: paces the settle polls
};
extern DisplayState g_display;

// Whether a channel mask has a channel. Registers and masks know sixteen; others are in none.
constexpr bool HasChannel(std::uint32_t mask, unsigned channel) {
  return channel < kChannelsMax && ((mask >> channel) & 1u) != 0;
}

// The slot of a mask pair that the current view uses.
inline std::uint32_t& MaskOfView(ViewMasks& masks) {
  return g_display.view == kViewLive ? masks.live : masks.playback;
}
