// What the display operations should do to the chips, told a second time: a register file of its
// own, window tables of its own, and the steps as straight code. Nothing here calls the library.
#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/library_test.h"

namespace test {

inline constexpr int kAll = 0xFF;  // chip select of a broadcast
inline constexpr int kMaster = 0x03;
inline constexpr int kSlave1 = 0x0C;
inline constexpr int kSlave2 = 0x30;
inline constexpr int kSlave3 = 0xC0;
inline constexpr std::array<int, 4> kChips = {kMaster, kSlave1, kSlave2, kSlave3};

inline constexpr int kNever = -1;  // of busy_polls: the chips do not settle

using Rect = std::array<int, 4>;  // x start, x end, y start, y end
using Channels = std::vector<std::uint8_t>;

// Windows of a split mode, in window order.
std::vector<Rect> DefaultRects(int mode, bool ntsc);
inline constexpr std::array<int, 7> kWindows = {1, 4, 6, 8, 9, 13, 16};

// Chip select code of the chip that carries a channel; everything above 11 is slave 3.
int ChipOf(int channel);

class DisplayModel {
 public:
  DisplayModel(int channel_count, int video_standard, const RegisterImage& registers);

  int channels;
  int chips;
  int standard;
  int busy_polls = 0;  // polls that find the chips busy after a hold, or kNever
  std::array<std::vector<Rect>, 7> windows;
  RegisterImage image;
  std::vector<Access> accesses;

  int Read(int chip, int page, int reg);
  void Write(int chip, int page, int reg, int value);

  // Scale codes to the ratio registers: vertical and horizontal alike.
  void Scale(int channel, int code);
  void Layout(int chip, int position, int code);
  void Window(int chip, int position, const Rect& rect);

  // Polls the settle status until it is clear, most_polls at most (0: without limit).
  void Poll(int most_polls);
  void ApplyAntiRolling();
  void ReleaseAntiRolling();
  // The split of boards with 4, 8 and 16 channels; the list holds an entry a window.
  void LiveSplit(int mode, const Channels& list);
  // Sets or clears a bit of every channel's attribute register.
  void AttributeMask(std::uint32_t mask, int bit);
  void RecordMask(std::uint32_t mask);

 private:
  void LiveSplit4(int mode, const Channels& list);
  void LiveSplitByScan(int mode, const Channels& list);
};

// A board whose registers hold bytes that no operation leaves there, so that a bit that is lost or
// brought in shows.
class DisplayTest : public LibraryTest {
 protected:
  // Attached, with the video state of an initialized board, and marked.
  void UseBoard(int channels, int standard = 0);
  // New bytes in all registers of all fitted chips, and a mark.
  void Scribble(unsigned seed);
  // A model of the board as it is now.
  DisplayModel Model();

  // The accesses since the mark and the registers are the model's.
  void ExpectLike(const DisplayModel& model);
  // No access and no text since the mark.
  void ExpectUntouched();
  // Exactly this one plain print since the mark.
  void ExpectPrinted(const std::string& text);
  // Lengths of the timed waits since the mark.
  std::vector<std::uint32_t> Waits();

 private:
  int channels_ = 0;
  int standard_ = 0;
  std::size_t from_ = 0;
};

// Parameter of tests that run on several boards.
struct BoardCase {
  int channels;
  int standard;
};
inline void PrintTo(const BoardCase& board, std::ostream* out) {
  *out << board.channels << " channels, standard " << board.standard;
}
std::string NameOf(const ::testing::TestParamInfo<BoardCase>& info);

}  // namespace test
