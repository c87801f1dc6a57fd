// The way back to live display, and what is shown in front of it.
#include "tests/model/init_tables.h"
#include "tests/model/reference_model.h"

namespace test {

int ReferenceModel::LiveMode(int mode, const Channels& list) {
  if (view == kLive) printed.push_back(">> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n");
  view = kLive;
  All1Each(0x12, 0x00);
  All1(0x06, 0x00);
  All1(0x0C, 0x00);
  if (HasLayouts(channels)) {
    LiveModeVariant(mode, list);
    Blank(~masks.live);
  }
  RecordMask(masks.record);
  return 0;
}

int ReferenceModel::LiveModeVariant(int mode, const Channels& list) {
  LivePath();
  All1(0x06, Read(kMaster, 1, 0x06) & 0xFB);
  Attributes(0x0A, 0x02);
  if (mode > HighestMode(channels)) return -5;
  LiveSplit(mode, list);
  return 0;
}

void ReferenceModel::ResetLiveDisplay() {
  LivePath();
  if (Read(kMaster, 1, 0x06) != 0) All1(0x06, 0x00);
  Attributes(0x0A, 0x02);
}

void ReferenceModel::LivePath() {
  All1Each(0x10, 0x80, 1);
  All1Each(0x16, 0x00, 1);
  Table(kAll, 0, 0x40, kDecoder);
  All1Each(0x12, 0x00);
}

// ---- Picture in picture -------------------------------------------------------------------------

void ReferenceModel::PipStart(int main, int inset) {
  All1Each(0x10, 0x80, 1);
  for (int c = 0; c < main; ++c) Place(c, kHidden);
  Scale(main, 0);
  Place(main, Tile(0, 0));
  Scale(inset, 6);
  Place(inset, PipInsetRect(Ntsc()));
  Control(inset, 0xC0);
}

void ReferenceModel::MultiPipStart(int channel, int size, const Rect& rect) {
  All1Each(0x10, 0x80, 1);
  if (size == 0) Scale(channel, 6);
  if (size == 1) Scale(channel, 4);
  Scale(channel, size == 2 ? 1 : 6);
  Place(channel, rect);
  Control(channel, 0xC0);
}

void ReferenceModel::MultiPipMove(int channel, const Rect& rect) {
  All1Each(0x10, 0x80, 1);
  Place(channel, rect);
  Control(channel, 0xC0);
}

}  // namespace test
