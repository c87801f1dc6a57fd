// What the operations should do to the chips and to the state of the display, told a second time: a
// register file of its own, tables of its own, and the steps as straight code. Nothing in this
// folder calls the library or reads its tables.
//
// A test makes a model of the board as it is, runs the same operation on both, and compares. Each
// group below stands in a file of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/model/access.h"
#include "tests/model/board.h"
#include "tests/model/windows.h"

namespace test {

inline constexpr int kNever = -1;  // of busy_polls: the chips do not settle

inline constexpr int kLive = 1;  // views
inline constexpr int kPlayback = 2;

inline constexpr int kBlankBit = 0x04;  // of a channel's attributes
inline constexpr int kBit0 = 0x01;
inline constexpr int kFreezeBit = 0x40;

using Channels = std::vector<std::uint8_t>;

// A pause, and how many accesses came before it.
struct Pause {
  std::size_t after;
  std::uint32_t ms;
  bool operator==(const Pause&) const = default;
};

// The three masks of the host: bit n for channel n, set where it is shown or recorded.
struct HostMasks {
  std::uint32_t live;
  std::uint32_t record;
  std::uint32_t play;
};

class ReferenceModel {
 public:
  ReferenceModel() : ReferenceModel(0, 0, {}) {}  // a board without chips
  ReferenceModel(int channel_count, int video_standard, const RegisterImage& registers);
  // A board at power-on. cameras: 0 NTSC, 1 PAL, 2 off.
  static ReferenceModel AtPowerOn(int fitted_chips, int cameras);

  // ---- The board and what happened on it --------------------------------------------------------

  int channels = 0;
  int chips = 0;
  int standard = 0;    // 0 is NTSC; every other has the windows of PAL
  int busy_polls = 0;  // polls that find the chips busy after a hold, or kNever
  int fill_busy = 0;   // reads that find the fill engine busy after a start
  std::array<std::vector<Rect>, 7> windows;
  RegisterImage image{};
  std::vector<Access> accesses;
  std::vector<Pause> pauses;
  std::vector<std::string> printed;  // plain prints

  // ---- What the library remembers ---------------------------------------------------------------

  int view = kLive;
  std::uint32_t view_word = 0;
  int live_split = 7;  // none yet
  int play_split = 7;
  int split_option = 0;
  int selected_channel = 0;
  bool full_picture = false;
  bool centred_picture = false;
  std::uint32_t live_blank = 0;  // blank mask last applied in live view,
  std::uint32_t play_blank = 0;  // and in playback
  HostMasks masks = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
  std::uint32_t frozen = 0;
  int motion_timing = 0;

  // ---- Registers: reference_model.cpp -----------------------------------------------------------

  void SetStandard(int decided);  // its windows as well
  int Read(int chip, int page, int reg);
  void Write(int chip, int page, int reg, int value);
  // Hexadecimal bytes to consecutive registers.
  void Table(int chip, int page, int first, const std::string& hex);
  void Pause50() { pauses.push_back({accesses.size(), 50}); }
  void All1(int reg, int value) { Write(kAll, 1, reg, value); }
  // A page 1 register of all four channels, stride 8, to all chips; the value plus step * position.
  void All1Each(int reg, int value, int step = 0);

  // Scale codes to the ratio registers: vertical and horizontal alike.
  void Scale(int channel, int code);
  void Layout(int channel, int code);
  void LayoutToAll(int code);
  void Window(int chip, int position, const Rect& rect);
  void Place(int channel, const Rect& rect) { Window(ChipOf(channel), channel % 4, rect); }
  // Display control of a channel, its position added.
  void Control(int channel, int value);

  // ---- Holding the picture and live splits: live_split.cpp --------------------------------------

  // Polls the settle status until it is clear, most_polls at most (0: without limit).
  void Poll(int most_polls);
  void ApplyAntiRolling();
  void ReleaseAntiRolling();
  // The split variant of boards with layouts; the list holds an entry a window.
  void LiveSplit(int mode, const Channels& list);
  // The entry of the binary command: 0, -1 or -5.
  int LiveSplitMode(int mode, const Channels& list);
  // The text path's split.
  void LiveSplitDirect(int mode, int first, int option);

  // ---- The live path: live_mode.cpp -------------------------------------------------------------

  int LiveMode(int mode, const Channels& list);
  // The steps of the board's own: 0 or -5.
  int LiveModeVariant(int mode, const Channels& list);
  void ResetLiveDisplay();

  void PipStart(int main, int inset);
  void PipStop() { All1Each(0x10, 0xC0, 1); }
  void MultiPipStart(int channel, int size, const Rect& rect);
  void MultiPipMove(int channel, const Rect& rect);

  // ---- Masks and the record path: masks.cpp -----------------------------------------------------

  // Sets or clears a bit of every channel's attribute register.
  void AttributeMask(std::uint32_t mask, int bit);
  // The same, kept for the view that is shown.
  void Blank(std::uint32_t mask);
  void RecordMask(std::uint32_t mask);
  // The commands of the host: 0 or -1.
  int ChannelMasks(const HostMasks& given);
  int BlankMask(std::uint32_t mask);
  int Bit0Mask(std::uint32_t mask);
  int RestoreBlank();
  // The text path: position by position, and there chip by chip.
  void ChipMask(std::uint32_t mask, int bit);
  void BlankAll();
  void UnblankAll();
  void UnblankPair(int channel);

  void RecordSetup(int record_mode, int switching);

  // ---- Playback: play_layout.cpp, play_mode.cpp, play_direct.cpp --------------------------------

  // The split variant of the board's channel count: 0 or -5.
  int PlayVariant(int mode, int option, const Channels& list);
  // The entry of the binary command; null: no list.
  int PlaySplit(int mode, int option, const Channels* list);
  void ResetOverlay();
  // The switch into playback, its record as mode (byte 5) and list (from byte 6) ...
  int PlayMode(int mode, const Channels& list);
  // ... and the steps of the board's own.
  int PlayModeVariant(int mode, const Channels& list);
  // The text path's split.
  void PlaySplitDirect(int mode, int first);

  // ---- Initialization: init.cpp, its bytes in init_tables.cpp -----------------------------------

  void DetectChips();
  void DetectVideo();
  void Page0Tables();
  void Page1Tables();
  void Page2Tables();
  void AdjustForHostVersion5();
  // All steps in their order, for a standard and a host whose version asks for nothing.
  void Initialize(int decided_standard);

  // ---- Motion detection and test screens: motion.cpp, test_screens.cpp --------------------------

  void MotionMask(int channel, const std::vector<std::uint8_t>& mask);
  void MotionLevel(int channel, int level);
  void MotionTiming(int value);
  void HideMotionCells();
  void ShowMotionCells(int type, int split, int first);

  void FillRect(int chip, int x, int y, int w, int h);
  void BlueScreenInit();
  void BlueScreenClear();

 private:
  bool Ntsc() const { return standard == 0; }
  const Rect& Tile(int mode, int window) const {
    return windows.at(static_cast<std::size_t>(mode)).at(static_cast<std::size_t>(window));
  }
  void Attributes(int to_clear, int to_set);

  void LiveSplit4(int mode, const Channels& list);
  void LiveSplitByScan(int mode, const Channels& list);
  void PlaceDirect(int mode, int first, int option);
  void FullScreenDirect(int first);
  void LargeAndSmallDirect(int mode, int large, int start);
  void Show(int channel, int mode, int window);
  void ShowWithCode(int channel, int mode, int window);
  void LivePath();

  void Paths(bool open);
  void PatternToAll(const std::array<int, 4>& pattern);
  void Pattern(int channel, const std::array<int, 4>& pattern);
  void Kind(int channel, int kind) { Write(ChipOf(channel), 0, 0x85 + 0x10 * (channel % 4), kind); }
  // Window kind 0 and path code to the four positions of a chip code.
  void KindsAndCodes(int chip, int code);
  void Front(int channel);
  void BeginPlay(int display_mode, int mode);
  void EndPlay(int overlay);
  void PlayFull(const Channels& list);
  void Play2x2(const Channels& list);
  void PlayLargeAndSmall(int mode, const Channels& list);
  void Play3x3(const Channels& list);
  void Play4x4(const Channels& list);

  int Nth(int first, int k) const { return (first + k) % channels; }
  void Close2x2Direct(int last_channel);
  void CentredDirect(int first);
  void TwoByTwoDirect(int first);
  void PlayLargeAndSmallDirect(int mode, int first);
  void ThreeByThreeDirect(int first);
  void FourByFourDirect();

  void InitMotion();

  void Box(int chip, int reg, int position, int value) {
    Write(chip, 2, reg + 8 * position, value);
  }
  void CellsOfOne(int type, int channel);
  void Cells(int type, int split, int first, int count, const Rect& cell);

  void FillColumns(int chip, int first, int last);

  std::array<int, 16> cameras_{};  // at power-on
};

}  // namespace test
