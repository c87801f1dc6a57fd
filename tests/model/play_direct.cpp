// The text path's playback split: consecutive channels from a first one on.
#include <algorithm>

#include "tests/model/reference_model.h"

namespace test {

void ReferenceModel::PlaySplitDirect(int mode, int first) {
  centred_picture = mode == 0;
  play_split = mode == 0 ? 1 : mode;
  if (mode != 0 && channels == 4) All1(0x0C, 0x00);
  if (mode == 0) CentredDirect(first);
  if (mode == 1) TwoByTwoDirect(first);
  if (IsLargeAndSmall(mode)) PlayLargeAndSmallDirect(mode, first);
  if (mode == 4) ThreeByThreeDirect(first);
  if (mode == 6) FourByFourDirect();
}

void ReferenceModel::CentredDirect(int first) {
  BeginPlay(0x04, 1);
  for (int c = 0; c < channels; ++c) Place(c, c < first ? kHidden : CentredPictureRect(Ntsc()));
  Front(first);
  Close2x2Direct(std::min(first, channels - 1));
}

void ReferenceModel::TwoByTwoDirect(int first) {
  BeginPlay(0x04, 1);
  for (int c = 0; c < channels; ++c) {
    const int k = (c - first % channels + channels) % channels;
    Place(c, k < 4 ? Tile(1, k) : kHidden);
  }
  for (int k = 0; k < 4; ++k) Front(Nth(first, k));
  Close2x2Direct(Nth(first, 3));
}

void ReferenceModel::Close2x2Direct(int last_channel) {
  KindsAndCodes(channels == 4 ? kAll : ChipOf(last_channel), 1);
  EndPlay(0x20);
}

void ReferenceModel::PlayLargeAndSmallDirect(int mode, int first) {
  Channels list;
  for (int k = 0; k < kWindows.at(static_cast<std::size_t>(mode)); ++k) {
    list.push_back(static_cast<std::uint8_t>(Nth(first, k)));
  }
  PlayLargeAndSmall(mode, list);
}

void ReferenceModel::ThreeByThreeDirect(int first) {
  All1Each(0x12, 0x20);
  All1(0x06, 0x00);
  All1Each(0x10, 0x94, 1);
  for (int p = 0; p < 4; ++p) Window(kAll, p, kHidden);
  Write(kAll, 0, 0x85, 0x00);
  PatternToAll(DecodedWindowOf(4, 0).pattern);
  const int count = std::min(9, channels);
  for (int k = 0; k < count; ++k) Place(Nth(first, k), Tile(4, k));
  for (int k = 0; k < count; ++k) Kind(Nth(first, k), DecodedWindowOf(4, k).kind);
}

void ReferenceModel::FourByFourDirect() {
  All1Each(0x12, 0x20);
  All1(0x06, 0x00);
  All1Each(0x10, 0x94, 1);
  Write(kAll, 0, 0x85, 0x00);
  PatternToAll(DecodedWindowOf(6, 0).pattern);
  for (int p = 0; p < 4; ++p) Window(kAll, p, kHidden);
  for (int c = 0; c < (channels == 16 ? 16 : 8); ++c) Place(c, Tile(6, c));
  for (int p = 0; p < 4; ++p) Write(kAll, 0, 0x85 + 0x10 * p, DecodedWindowOf(6, 1).kind);
}

}  // namespace test
