// What every playback split has in common, whichever path asks for it.
#pragma once

#include <array>
#include <cstdint>

#include "chip/registers.h"
#include "display/window_tables.h"

// Both flags live from one request to the next.
struct PlaybackState {
  std::uint8_t full_picture = 0;     // the last single picture was asked for full screen
  std::uint8_t centred_picture = 0;  // the last single picture was shown as a centred window
};
extern PlaybackState g_playback;

// The whole screen, and the window of a centred picture, at the current video standard.
WindowRect FullPicture();
WindowRect CentredPicture();

// ---- Single steps -----------------------------------------------------------------------------

// Enables all channels for decoded pictures, none in front.
void ShowDecodedChannels();

// Puts a channel in front of the others. A channel that the board lacks is left alone.
void BringToFront(std::uint8_t channels, std::uint8_t channel);

// Brackets of a layout change. Begin shuts the decoded input of the four chips, so that no viewer
// sees windows move; Finish lets the windows settle, then opens it again.
void BeginPlayLayout(std::uint8_t mode);
void FinishPlayLayout(std::uint8_t mode);

// Writes the paths of a chip's second to fourth channel; first_channel: its first one's number.
void WriteDecodedPaths(std::uint8_t chip, std::uint8_t first_channel);

// Opens the path of a chip's first channel.
void OpenDecodedInput(std::uint8_t chip, std::uint8_t first_channel);

// Values of the display source (as at initialization), display mode and channel overlay registers.
inline constexpr std::uint8_t kSourceDefault = 0x02;
inline constexpr std::uint8_t kModeSingle = 0x00;
inline constexpr std::uint8_t kModeSplit = 0x04;
inline constexpr std::uint8_t kOverlaySingle = 0x00;

// Writes the channel overlay register of all channels.
void WriteOverlays(std::uint8_t value);

inline constexpr std::uint8_t kPatternRegisters = 4;
using PlayPattern = std::array<std::uint8_t, kPatternRegisters>;

// Writes a pattern to all channels; the pattern of a mode's small windows likewise.
void WritePatternToAll(const PlayPattern& pattern);
void WritePatternToAll(std::uint8_t mode);

// Writes the window kind of a mode's small windows, to all channels or to one.
void WriteWindowKindToAll(std::uint8_t mode);
void WriteWindowKind(std::uint8_t channel, std::uint8_t mode);

// Resets the window kind of the first channel of each chip.
void ResetFirstWindowKind();

// Writes window kind and scaler control of a mode to the four channels of a chip, or of all.
void WriteWindowKindAndScaler(std::uint8_t chip, std::uint8_t mode);

// Writes the rectangle of a window to a channel.
void PlacePlayChannel(std::uint8_t channel, std::uint8_t mode, std::uint8_t window);

// ---- Whole layouts ------------------------------------------------------------------------------

// Window that each channel takes, kNoWindow for a hidden one.
inline constexpr std::uint8_t kNoWindow = 0xFF;
using WindowOfChannel = std::array<std::uint8_t, kChannelsMax>;

// Writes the rectangles of all channels of the board, lowest channel first.
void PlaceChannels(std::uint8_t channels, std::uint8_t mode, const WindowOfChannel& window_of);

// The 2 x 2, or the centred picture when its flag is set. list: the channels of the windows (one,
// or four), for what is not a rectangle.
void ShowPlay2x2(std::uint8_t channels, const std::uint8_t* list, const WindowOfChannel& window_of);

// A large window and small ones, modes 2, 3 and 5. list: one channel a window; entries that are not
// below `channels` leave their window empty.
void ShowPlayLargeAndSmall(std::uint8_t channels, std::uint8_t mode, const std::uint8_t* list);
