// The entries of playback: the split command, the switch, the reset of the overlay.
#include "tests/model/reference_model.h"

namespace test {

int ReferenceModel::PlaySplit(int mode, int option, const Channels* list) {
  const std::string error = ">> ERROR TW_SetPlaySplitMode ";
  if (view != kPlayback) {
    printed.push_back(error + "CURREENT LIVE MODE!!");
    return -1;
  }
  if (mode >= 7 || list == nullptr) {
    printed.push_back(error + "INVALID PARAM!!");
    return -5;
  }
  if (IsLargeAndSmall(mode)) {
    printed.push_back(error + "NOT SUPPORT SPLIT MODE(" + std::to_string(mode) + ")!!");
    return -5;
  }
  if (!HasLayouts(channels)) return -1;
  const std::uint32_t remembered = play_blank;
  Blank(0xFFFF);
  const bool shown = PlayVariant(mode, option, *list) == 0;
  Blank(shown ? ~masks.play : remembered);
  return shown ? 0 : -1;
}

int ReferenceModel::PlayMode(int mode, const Channels& list) {
  if (view == kPlayback) printed.push_back(">> TW_SetPlaybackModeInfo ALREADY PLAYBACK MODE\r\n");
  view = kPlayback;
  All1(0x0C, 0x00);
  if (!HasLayouts(channels)) return -8;
  PlayModeVariant(mode, list);
  Pause50();
  return 0;
}

int ReferenceModel::PlayModeVariant(int mode, const Channels& list) {
  for (int p = 0; p < chips; ++p) {
    for (int i = 1; i < 4; ++i) {
      Write(kChips.at(static_cast<std::size_t>(p)), 1, 0x16 + 8 * i, 0x10 + 4 * p + i);
    }
  }
  All1(0x01, 0x02);
  const int result = PlayVariant(mode, 0, list);
  if (channels != 16) ResetOverlay();
  if (result == 0) Blank(AllChannels(channels));
  return result;
}

void ReferenceModel::ResetOverlay() {
  if (full_picture) {
    All1Each(0x12, 0x00);
    All1(0x0D, 0x00);
    All1(0x0E, 0x00);
    All1(0x22, 0x00);
    All1(0x2A, 0x00);
    All1(0x06, 0x00);
  } else {
    All1(0x22, 0x60);
    All1(0x2A, 0x60);
    All1(0x06, 0x04);
  }
}

}  // namespace test
