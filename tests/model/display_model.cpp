#include "tests/model/display_model.h"

#include <cstddef>
#include <sstream>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "platform/platform.h"

namespace test {
namespace {

// "04 5A 01 3C; 5A B0 01 3C" and so on.
std::vector<Rect> ParseRects(const std::string& text) {
  std::vector<Rect> rects;
  std::istringstream in(text);
  std::string one;
  while (std::getline(in, one, ';')) {
    std::istringstream bytes(one);
    Rect rect{};
    for (int& byte : rect) bytes >> std::hex >> byte;
    rects.push_back(rect);
  }
  return rects;
}

std::vector<Rect> SixteenRects(const std::array<int, 5>& y) {
  constexpr std::array<int, 5> kX = {0x04, 0x2F, 0x5A, 0x85, 0xB0};
  std::vector<Rect> rects;
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      rects.push_back({kX[column], kX[column + 1], y[row], y[row + 1]});
    }
  }
  return rects;
}

constexpr std::array<const char*, 6> kNtsc = {
    "04 B0 01 77",
    "04 5A 01 3C; 5A B0 01 3C; 04 5A 3C 77; 5A B0 3C 77",
    "04 77 02 50; 77 B0 02 29; 77 B0 29 50; 04 3D 50 76; 3D 77 50 76; 77 B0 50 76",
    "04 85 02 59; 85 B0 02 1F; 85 B0 1F 3C; 85 B0 3C 59; 04 2F 59 76; 2F 5A 59 76; 5A 85 59 76; "
    "85 B0 59 76",
    "04 3D 02 29; 3D 77 02 29; 77 B0 02 29; 04 3D 29 50; 3D 77 29 50; 77 B0 29 50; 04 3D 50 76; "
    "3D 77 50 76; 77 B0 50 76",
    "2F 85 1F 59; 04 2F 02 1F; 2F 5A 02 1F; 5A 85 02 1F; 85 B0 02 1F; 04 2F 1F 3C; 85 B0 1F 3C; "
    "04 2F 3C 59; 85 B0 3C 59; 04 2F 59 76; 2F 5A 59 76; 5A 85 59 76; 85 B0 59 76"};

constexpr std::array<const char*, 6> kPal = {
    "04 B0 01 8E",
    "04 5A 02 48; 5A B0 02 48; 04 5A 48 8E; 5A B0 48 8E",
    "04 76 02 5F; 76 B0 02 31; 76 B0 31 5F; 04 3D 5F 8E; 3D 76 5F 8E; 76 B0 5F 8E",
    "04 85 02 6B; 85 B0 02 25; 85 B0 25 48; 85 B0 48 6B; 04 2F 6B 8E; 2F 5A 6B 8E; 5A 85 6B 8E; "
    "85 B0 6B 8E",
    "04 3D 02 31; 3D 76 02 31; 76 B0 02 31; 04 3D 31 5F; 3D 76 31 5F; 76 B0 31 5F; 04 3D 5F 8E; "
    "3D 76 5F 8E; 76 B0 5F 8E",
    "2F 85 25 6B; 04 2F 02 25; 2F 5A 02 25; 5A 85 02 25; 85 B0 02 25; 04 2F 25 48; 85 B0 25 48; "
    "04 2F 48 6B; 85 B0 48 6B; 04 2F 6B 8E; 2F 5A 6B 8E; 5A 85 6B 8E; 85 B0 6B 8E"};

// Whether a chip select code addresses the chip at a position.
bool Addresses(int chip, int position) { return (chip & (3 << (2 * position))) != 0; }

std::string Difference(const std::vector<Access>& actual, const std::vector<Access>& expected) {
  std::ostringstream out;
  std::size_t i = 0;
  while (i < actual.size() && i < expected.size() && actual[i] == expected[i]) ++i;
  if (i == actual.size() && i == expected.size()) return {};
  out << "access " << i << " of " << actual.size() << " (expected " << expected.size() << "): ";
  if (i < actual.size()) {
    out << actual[i];
  } else {
    out << "missing";
  }
  out << ", expected ";
  if (i < expected.size()) {
    out << expected[i];
  } else {
    out << "none";
  }
  return out.str();
}

}  // namespace

std::vector<Rect> DefaultRects(int mode, bool ntsc) {
  if (mode == 6) {
    return ntsc ? SixteenRects({0x02, 0x1F, 0x3C, 0x59, 0x76})
                : SixteenRects({0x02, 0x25, 0x48, 0x6B, 0x8E});
  }
  return ParseRects((ntsc ? kNtsc : kPal).at(static_cast<std::size_t>(mode)));
}

int ChipOf(int channel) {
  if (channel <= 3) return kMaster;
  if (channel <= 7) return kSlave1;
  return channel <= 11 ? kSlave2 : kSlave3;
}

DisplayModel::DisplayModel(int channel_count, int video_standard, const RegisterImage& registers)
    : channels(channel_count),
      chips(channel_count / 4),
      standard(video_standard),
      image(registers) {
  for (int mode = 0; mode < 7; ++mode) {
    windows.at(static_cast<std::size_t>(mode)) = DefaultRects(mode, video_standard == 0);
  }
}

int DisplayModel::Read(int chip, int page, int reg) {
  int value = 0xFF;
  for (int p = 0; p < 4; ++p) {
    if (chip == kChips.at(static_cast<std::size_t>(p)) && p < chips) {
      value = image.at(static_cast<std::size_t>(p))
                  .at(static_cast<std::size_t>(page))
                  .at(static_cast<std::size_t>(reg));
    }
  }
  accesses.push_back(R(chip, page, reg, value));
  return value;
}

void DisplayModel::Write(int chip, int page, int reg, int value) {
  for (int p = 0; p < chips; ++p) {
    if (!Addresses(chip, p)) continue;
    image.at(static_cast<std::size_t>(p))
        .at(static_cast<std::size_t>(page))
        .at(static_cast<std::size_t>(reg)) = static_cast<std::uint8_t>(value);
  }
  accesses.push_back(W(chip, page, reg, value));
}

void DisplayModel::Scale(int channel, int code) {
  struct Ratio {
    int high;
    int low;
  };
  constexpr std::array<Ratio, 7> kRatios = {{{0xFF, 0xFF},
                                             {0x7F, 0xFF},
                                             {0xAA, 0xAA},
                                             {0xBF, 0xFD},
                                             {0x55, 0x55},
                                             {-1, -1},
                                             {0x3F, 0xFF}}};
  const Ratio ratio = kRatios.at(static_cast<std::size_t>(code));
  const int first = 0x81 + 0x10 * (channel % 4);
  Write(ChipOf(channel), 0, first, ratio.high);
  Write(ChipOf(channel), 0, first + 1, ratio.low);
  Write(ChipOf(channel), 0, first + 2, ratio.high);
  Write(ChipOf(channel), 0, first + 3, ratio.low);
}

void DisplayModel::Layout(int chip, int position, int code) {
  Write(chip, 0, 0x80 + 0x10 * position, position * 0x40 + code);
}

void DisplayModel::Window(int chip, int position, const Rect& rect) {
  for (int i = 0; i < 4; ++i) {
    Write(chip, 1, 0x30 + 4 * position + i, rect.at(static_cast<std::size_t>(i)));
  }
}

void DisplayModel::Poll(int most_polls) {
  for (int poll = 0; most_polls == 0 || poll < most_polls; ++poll) {
    const bool busy = chips != 0 && (busy_polls == kNever || poll < busy_polls);
    for (int p = 0; p < chips; ++p) {
      const int status = image.at(static_cast<std::size_t>(p))[1][0x04];
      accesses.push_back(
          R(kChips.at(static_cast<std::size_t>(p)), 1, 0x04, busy ? status | 0x0F : status));
    }
    if (!busy) return;
  }
}

void DisplayModel::ApplyAntiRolling() {
  for (int n = 0; n < 4; ++n) {
    const int old = Read(kMaster, 1, 0x10 + 8 * n);
    Write(kAll, 1, 0x10 + 8 * n, ((old & 0xFC) | 0x10) + n);
  }
  Poll(200);
}

void DisplayModel::ReleaseAntiRolling() {
  for (int p = 0; p < chips; ++p) {
    const int chip = kChips.at(static_cast<std::size_t>(p));
    for (int n = 0; n < 4; ++n) {
      const int old = Read(chip, 1, 0x10 + 8 * n);
      Write(chip, 1, 0x10 + 8 * n, ((old & 0x2C) | 0xC0) + n);
    }
  }
}

void DisplayModel::LiveSplit(int mode, const Channels& list) {
  ApplyAntiRolling();
  if (channels == 4) {
    LiveSplit4(mode, list);
  } else {
    LiveSplitByScan(mode, list);
  }
  ReleaseAntiRolling();
  if (standard == 1) Write(kAll, 0, 0xC5, mode == 0 ? 0xFF : 0xF0);
}

void DisplayModel::LiveSplit4(int mode, const Channels& list) {
  for (int n = 0; n < 4; ++n) Scale(n, mode);  // code 0 in mode 0, 1 in mode 1
  for (int n = 0; n < 4; ++n) Write(kAll, 0, 0x80 + 0x10 * n, 0x40 * n + mode);
  if (mode == 0) {
    for (int n = 0; n < 4; ++n) {
      Window(kMaster, n, n == list.at(0) ? windows[0][0] : Rect{0, 0, 0, 0});
    }
    for (int n = 0; n < 4; ++n) Write(kAll, 1, 0x10 + 8 * n, (n == list.at(0) ? 0xC0 : 0x80) + n);
    return;
  }
  for (std::size_t k = 0; k < 4; ++k) {
    if (list.at(k) < 4) Window(kMaster, list[k], windows[1][k]);
  }
}

void DisplayModel::LiveSplitByScan(int mode, const Channels& list) {
  const auto count = static_cast<std::size_t>(kWindows.at(static_cast<std::size_t>(mode)));
  constexpr std::array<int, 7> kSmallScale = {0, 1, 4, 6, 4, 6, 6};
  constexpr std::array<int, 7> kLargeScale = {0, 1, 2, 3, 4, 1, 6};
  constexpr std::array<int, 7> kSmallCode = {0x0, 0x1, 0xA, 0xF, 0xA, 0xF, 0xF};
  constexpr std::array<int, 7> kLargeCode = {0x0, 0x1, 0x0, 0x0, 0xA, 0x5, 0xF};
  const auto m = static_cast<std::size_t>(mode);

  if (mode == 2 || mode == 3 || mode == 5) {
    for (std::size_t k = 0; k < count; ++k) {
      const int c = list.at(k);
      if (c >= channels) continue;
      Scale(c, k == 0 ? kLargeScale.at(m) : kSmallScale.at(m));
      Layout(ChipOf(c), c % 4, k == 0 ? kLargeCode.at(m) : kSmallCode.at(m));
    }
  } else {
    for (int n = 0; n < channels; ++n) Scale(n, kSmallScale.at(m));
  }
  if (mode <= 1) {
    for (int n = 0; n < 4; ++n) Write(kAll, 0, 0x80 + 0x10 * n, 0x40 * n + mode);
  }

  std::size_t k = 0;
  for (int n = 0; n < channels; ++n) {
    if (k == count) continue;
    if (n == list.at(k)) {
      Window(ChipOf(n), n % 4, windows.at(m)[k]);
      if (mode == 4) Layout(ChipOf(n), n % 4, 0xA);
      if (mode == 6) Layout(ChipOf(n), n % 4, 0xF);
      ++k;
    } else if (channels == 16 && mode == 4 && list[0] == 9 && n < 2) {
      Window(kMaster, n, windows[4][n == 0 ? 7 : 8]);
      Layout(kMaster, n, 0xA);
    } else {
      Window(ChipOf(n), n % 4, {0, 0, 0, 0});
    }
  }
}

void DisplayModel::AttributeMask(std::uint32_t mask, int bit) {
  for (int n = 0; n < channels; ++n) {
    const int reg = 0x11 + 8 * (n % 4);
    const int old = Read(ChipOf(n), 1, reg);
    const bool set = n < 16 && (mask & (1u << n)) != 0;
    Write(ChipOf(n), 1, reg, set ? old | bit : old & ~bit & 0xFF);
  }
}

void DisplayModel::RecordMask(std::uint32_t mask) {
  for (int n = 0; n < channels; ++n) {
    Write(ChipOf(n), 1, 0x61 + 3 * (n % 4), (mask & (1u << n)) != 0 ? 0x00 : 0x04);
  }
}

// ---- The fixture ------------------------------------------------------------------------------

void DisplayTest::UseBoard(int channels, int standard) {
  harness::Restart();  // a test may use one board after another
  PretendBoard(channels, standard);
  world().board.HoldSync(false);  // its bit would change while an operation waits
  g_display.wait_event = Plat_CreateEvent(nullptr, false, false);
  channels_ = channels;
  standard_ = standard;
  Scribble(1);
}

void DisplayTest::Scribble(unsigned seed) {
  unsigned state = seed * 2654435761u + 12345u;
  for (unsigned position = 0; position < 4; ++position) {
    for (std::uint8_t page = 0; page < 3; ++page) {
      for (unsigned reg = 0; reg < 256; ++reg) {
        state = state * 1664525u + 1013904223u;
        world().board.Poke(position, page, static_cast<std::uint8_t>(reg),
                           static_cast<std::uint8_t>(state >> 24));
      }
    }
  }
  Mark();
  from_ = world().trace.Mark();
}

DisplayModel DisplayTest::Model() { return {channels_, standard_, Image()}; }

void DisplayTest::ExpectLike(const DisplayModel& model) {
  const std::string difference = Difference(Accesses(), model.accesses);
  EXPECT_TRUE(difference.empty()) << difference;
  const RegisterImage actual = Image();
  for (std::size_t position = 0; position < 4; ++position) {
    for (std::size_t page = 0; page < 3; ++page) {
      for (std::size_t reg = 0; reg < 256; ++reg) {
        // While the chips have not settled, the low nibble of the settle status is theirs.
        if (page == 1 && reg == 0x04) continue;
        ASSERT_EQ(+actual[position][page][reg], +model.image[position][page][reg])
            << "chip " << position << ", page " << page << ", register 0x" << std::hex << reg;
      }
    }
  }
}

void DisplayTest::ExpectUntouched() {
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(DebugText(), "");
  EXPECT_TRUE(KernelDebug().empty());
}

void DisplayTest::ExpectPrinted(const std::string& text) {
  EXPECT_EQ(Debug(), (std::vector<std::string>{"[VexoCtrlSDK]: ", text}));
}

std::vector<std::uint32_t> DisplayTest::Waits() {
  std::vector<std::uint32_t> waits;
  const sim::Trace& trace = world().trace;
  for (std::size_t i = from_; i < trace.Events().size(); ++i) {
    const auto* sleep = trace.As<sim::SleepEvent>(trace.Events()[i]);
    if (sleep != nullptr && sleep->wait) waits.push_back(sleep->ms);
  }
  return waits;
}

std::string NameOf(const ::testing::TestParamInfo<BoardCase>& info) {
  const int standard = info.param.standard;
  return std::to_string(info.param.channels) + "Channels" +
         (standard == 0   ? std::string("Ntsc")
          : standard == 1 ? std::string("Pal")
                          : "Standard" + std::to_string(standard));
}

}  // namespace test
