// What the playback operations should do to the chips and to the state, told a second time in the
// manner of the display model. The model calls nothing of the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/model/display_model.h"

namespace test {

inline constexpr int kLive = 1;
inline constexpr int kPlayback = 2;

// A pause, and how many accesses came before it.
struct Pause {
  std::size_t after;
  std::uint32_t ms;
  bool operator==(const Pause&) const = default;
};

// The registers that make a decoded picture's window.
struct DecodedWindow {
  std::array<int, 4> pattern;
  int kind;
};
DecodedWindow DecodedWindowOf(int mode, int window);

// Highest mode of a board's variant; -1 where there is none.
int HighestPlayMode(int channels);

class PlayModel : public DisplayModel {
 public:
  explicit PlayModel(const DisplayModel& board) : DisplayModel(board) {}

  int view = kPlayback;
  bool full_picture = false;
  bool centred_picture = false;
  int split = 0;                         // the stored mode
  std::uint32_t live_blank = 0;          // blank mask last applied in live view,
  std::uint32_t play_blank = 0;          // and in playback
  std::uint32_t play_mask = 0xFFFFFFFF;  // channels shown in playback
  std::vector<Pause> pauses;
  std::vector<std::string> printed;  // plain prints

  // The split variant of the board's channel count: 0 or -5.
  int Variant(int mode, int option, const Channels& list);
  // The entry of the binary command; null: no list.
  int Split(int mode, int option, const Channels* list);
  void ResetOverlay();
  // The switch into playback, its record as mode (byte 5) and list (from byte 6) ...
  int SwitchToPlayback(int mode, const Channels& list);
  // ... and the steps of the board's own.
  int SwitchVariant(int mode, const Channels& list);

  // ---- Steps ----
  void Sleep(std::uint32_t ms) { pauses.push_back({accesses.size(), ms}); }
  void All1(int reg, int value) { Write(kAll, 1, reg, value); }
  // A page 1 register of all four channels, stride 8, to all chips; the value plus step * position.
  void All1Each(int reg, int value, int step = 0);
  // The first path register of the four chip codes: 0x10 + 4p, open with bit 7.
  void Paths(bool open);
  void PatternToAll(const std::array<int, 4>& pattern);
  void Pattern(int channel, const std::array<int, 4>& pattern);
  void Kind(int channel, int kind) { Write(ChipOf(channel), 0, 0x85 + 0x10 * (channel % 4), kind); }
  // Window kind 0 and path code to the four positions of a chip code.
  void KindsAndCodes(int chip, int code);
  void Rectangle(int channel, const Rect& rect) { Window(ChipOf(channel), channel % 4, rect); }
  void Front(int channel);
  void Blank(std::uint32_t mask);
  Rect FullRect() const;
  Rect CentredRect() const;

 private:
  void Full(const Channels& list);
  void TwoByTwo(const Channels& list);
  void LargeAndSmall(int mode, const Channels& list);
  void Nine(const Channels& list);
  void Sixteen(const Channels& list);
  void Tail(int overlay);
};

// A board in playback, whose results are compared with a model's.
class PlayTest : public DisplayTest {
 protected:
  // A scribbled board in playback view, with masks and a stored mode that no operation leaves.
  void UsePlayback(int channels, int standard = 0);
  // The same, as a full or centred picture leaves its flags behind.
  void UsePlaybackAfter(int channels, int full_picture, int centred_picture);
  // Calls the split variant of a channel count.
  static std::int32_t CallPlaySplit(int channels, int mode, int option, const Channels& list);
  // The rectangle that a channel's window registers hold.
  Rect RectOf(int channel);
  // Scribbles anew, marks, and gives a model of board and state as they are now.
  PlayModel Begin();
  // A model of board and state as they are now; marks as well.
  PlayModel Next();
  // Accesses, registers, pauses (their place among the accesses included), prints, flags, masks and
  // the stored mode are the model's.
  void ExpectPlayed(const PlayModel& model);
  // Pauses since the last Begin() or Next(), with the number of accesses before each.
  std::vector<Pause> Pauses();

 private:
  unsigned seed_ = 0;
  std::size_t from_ = 0;
};

}  // namespace test
