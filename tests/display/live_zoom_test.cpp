#include "display/live_zoom.h"

#include <algorithm>
#include <string>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

// Chip select of the board's zoom chip, 0 where there is none.
int ZoomChipOf(int channels) {
  switch (channels) {
    case 4:
      return kMaster;
    case 8:
      return kSlave1;
    case 16:
      return kSlave3;
    default:
      return 0;
  }
}

class LiveZoom : public DisplayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override {
    UseBoard(GetParam().channels, GetParam().standard);
    chip_ = ZoomChipOf(GetParam().channels);
  }

  // Nothing but the refusal of an operation.
  void ExpectRefused(const std::string& operation) {
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(">> " + operation + " Invalid channel!!\r\n");
    EXPECT_TRUE(KernelDebug().empty());
  }

  // The master's display mode register is `old`, that of the others its complement; and a mark.
  void PokeDisplayMode(unsigned old) {
    for (unsigned p = 0; p < 4; ++p) {
      world().board.Poke(p, 1, 0x06, static_cast<std::uint8_t>((p == 0 ? old : ~old) & 0xFF));
    }
    Mark();
  }

  int chip_ = 0;
};

TEST_P(LiveZoom, AreaIsPreparedOnTheZoomChip) {
  TW_SetLiveZoomArea();
  if (chip_ == 0) return ExpectRefused("TW_SetLiveZoomArea");
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(chip_, 1, 0x0C, 0x3D)}));
  EXPECT_EQ(DebugText(), "");
}

TEST_P(LiveZoom, StartSetsBit2OfEveryChipFromTheMastersValueThenSwitchesOn) {
  for (unsigned old = 0; old < 256; ++old) {
    SCOPED_TRACE(old);
    PokeDisplayMode(old);
    TW_SetLiveZoomStart();
    if (chip_ == 0) {
      ExpectRefused("TW_SetLiveZoomStart");
    } else {
      EXPECT_EQ(Accesses(), (std::vector<Access>{R(kMaster, 1, 0x06, static_cast<int>(old)),
                                                 W(kAll, 1, 0x06, static_cast<int>(old | 0x04)),
                                                 W(chip_, 1, 0x0C, 0x80)}));
      EXPECT_EQ(DebugText(), "");
      for (int p = 0; p < GetParam().channels / 4; ++p) {
        EXPECT_EQ(Register(p, 1, 0x06), old | 0x04) << p;
      }
    }
    if (HasFailure()) return;
  }
}

// Holds: vexo zoom stop "Shows the whole picture again."
TEST_P(LiveZoom, StopClearsBit2OfEveryChipFromTheMastersValueThenSwitchesOff) {
  for (unsigned old = 0; old < 256; ++old) {
    SCOPED_TRACE(old);
    PokeDisplayMode(old);
    TW_SetLiveZoomStop();
    if (chip_ == 0) {
      ExpectRefused("TW_SetLiveZoomStop");
    } else {
      EXPECT_EQ(Accesses(), (std::vector<Access>{R(kMaster, 1, 0x06, static_cast<int>(old)),
                                                 W(kAll, 1, 0x06, static_cast<int>(old & 0xFB)),
                                                 W(chip_, 1, 0x0C, 0x00)}));
      EXPECT_EQ(DebugText(), "");
    }
    if (HasFailure()) return;
  }
}

// Holds: vexo zoom pos "Moves the enlarged part"
// Holds: Chips: vexo "`X`: 0 to 180 display units"
TEST_P(LiveZoom, MoveCutsEveryPositionToTheScreen) {
  const int y_max = GetParam().standard == 1 ? 0x90 : 0x78;
  for (int x = 0; x < 256; ++x) {
    for (const int y : {0, 1, 0x77, 0x78, 0x79, 0x8F, 0x90, 0x91, 0xB4, 0xFF, x}) {
      SCOPED_TRACE(std::to_string(x) + ", " + std::to_string(y));
      Mark();
      TW_SetLiveZoomMove(static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y));
      if (chip_ == 0) {
        ExpectRefused("TW_SetLiveZoomMove");
      } else {
        EXPECT_EQ(Accesses(), (std::vector<Access>{W(chip_, 1, 0x0D, std::min(x, 0xB4)),
                                                   W(chip_, 1, 0x0E, std::min(y, y_max))}));
        EXPECT_EQ(DebugText(), "");
      }
      if (HasFailure()) return;
    }
  }
}

TEST_P(LiveZoom, TouchesNoOtherRegisterOfAnyChip) {
  ReferenceModel model = Model();
  if (chip_ != 0) {
    const int mode = model.image[0][1][0x06];
    model.Write(kAll, 1, 0x06, mode & 0xFB);
    model.Write(chip_, 1, 0x0C, 0x00);
    model.Write(chip_, 1, 0x0D, 0x12);
    model.Write(chip_, 1, 0x0E, 0x34);
  }
  TW_SetLiveZoomArea();
  TW_SetLiveZoomStart();
  TW_SetLiveZoomMove(0x12, 0x34);
  TW_SetLiveZoomStop();
  EXPECT_EQ(Image(), model.image);
}

INSTANTIATE_TEST_SUITE_P(Boards, LiveZoom,
                         ::testing::Values(BoardCase{0, 0}, BoardCase{4, 0}, BoardCase{4, 1},
                                           BoardCase{4, 2}, BoardCase{8, 0}, BoardCase{8, 1},
                                           BoardCase{8, 2}, BoardCase{12, 0}, BoardCase{12, 1},
                                           BoardCase{16, 0}, BoardCase{16, 1}, BoardCase{16, 2}),
                         NameOf);

class LiveZoomEdges : public DisplayTest {};

// Holds: vexo zoom pos "Moves the enlarged part"
// Holds: Chips: vexo "`Y`: 0 to 120 (NTSC)"
TEST_F(LiveZoomEdges, MoveTo255And255StopsAt120LinesForNtscAnd144ForPal) {
  UseBoard(4, 0);
  TW_SetLiveZoomMove(0xFF, 0xFF);
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{W(kMaster, 1, 0x0D, 0xB4), W(kMaster, 1, 0x0E, 0x78)}));
  UseBoard(4, 1);
  TW_SetLiveZoomMove(0xFF, 0xFF);
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{W(kMaster, 1, 0x0D, 0xB4), W(kMaster, 1, 0x0E, 0x90)}));
}

TEST_F(LiveZoomEdges, OnlyStandard1HasThePalLimit) {
  for (int standard = 0; standard < 256; ++standard) {
    UseBoard(8, standard);
    TW_SetLiveZoomMove(0, 0xFF);
    EXPECT_EQ(Register(1, 1, 0x0E), standard == 1 ? 0x90 : 0x78) << standard;
  }
}

TEST_F(LiveZoomEdges, ZoomRegistersOfTheMasterStayOnBoardsOf8And16Channels) {
  for (const int channels : {8, 16}) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    const int zoom_position = channels == 8 ? 1 : 3;
    const RegisterImage before = Image();
    TW_SetLiveZoomArea();
    EXPECT_EQ(Register(zoom_position, 1, 0x0C), 0x3D);
    TW_SetLiveZoomStart();
    EXPECT_EQ(Register(zoom_position, 1, 0x0C), 0x80);
    TW_SetLiveZoomMove(0x21, 0x43);
    EXPECT_EQ(Register(zoom_position, 1, 0x0D), 0x21);
    EXPECT_EQ(Register(zoom_position, 1, 0x0E), 0x43);
    for (const int reg : {0x0C, 0x0D, 0x0E}) {
      for (std::size_t p = 0; p < 4; ++p) {
        if (static_cast<int>(p) == zoom_position) continue;
        EXPECT_EQ(Register(static_cast<int>(p), 1, reg),
                  before[p][1][static_cast<std::size_t>(reg)])
            << p;
      }
    }
  }
}

TEST_F(LiveZoomEdges, RefusesEveryChannelCountBut4And8And16) {
  UseBoard(16);
  for (int channels = 0; channels < 256; ++channels) {
    if (HasLayouts(channels)) continue;
    SCOPED_TRACE(channels);
    g_video.max_channel = static_cast<std::uint8_t>(channels);
    Mark();
    TW_SetLiveZoomArea();
    TW_SetLiveZoomStart();
    TW_SetLiveZoomStop();
    TW_SetLiveZoomMove(1, 2);
    EXPECT_EQ(Cycles(), 0u);
    const std::string name = "[VexoCtrlSDK]: ";
    EXPECT_EQ(Debug(),
              (std::vector<std::string>{name, ">> TW_SetLiveZoomArea Invalid channel!!\r\n", name,
                                        ">> TW_SetLiveZoomStart Invalid channel!!\r\n", name,
                                        ">> TW_SetLiveZoomStop Invalid channel!!\r\n", name,
                                        ">> TW_SetLiveZoomMove Invalid channel!!\r\n"}));
  }
}

TEST_F(LiveZoomEdges, RefusalsGoByTheOutputMessageSwitch) {
  UseBoard(12);
  harness::SetEnableOutputMsg(0);
  Mark();
  TW_SetLiveZoomArea();
  TW_SetLiveZoomStart();
  TW_SetLiveZoomStop();
  TW_SetLiveZoomMove(1, 2);
  ExpectUntouched();
}

TEST_F(LiveZoomEdges, NeedsNeitherTheLiveViewNorAStartedZoom) {
  UseBoard(16);
  g_display.view = 2;
  g_video.g_chip_ready = 0;
  TW_SetLiveZoomMove(5, 6);
  TW_SetLiveZoomStop();
  EXPECT_EQ(Writes().size(), 4u);
  EXPECT_EQ(g_display.view, 2);
}

}  // namespace
}  // namespace test
