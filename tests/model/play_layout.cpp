// The split variants of playback: what each layout writes for its list of channels.
#include "tests/model/reference_model.h"

namespace test {

// ---- Steps --------------------------------------------------------------------------------------

void ReferenceModel::Paths(bool open) {
  for (int p = 0; p < 4; ++p) {
    Write(kChips.at(static_cast<std::size_t>(p)), 1, 0x16, (open ? 0x90 : 0x10) + 4 * p);
  }
}

void ReferenceModel::PatternToAll(const std::array<int, 4>& pattern) {
  for (int p = 0; p < 4; ++p) {
    for (int i = 0; i < 4; ++i) {
      Write(kAll, 0, 0x86 + 0x10 * p + i, pattern.at(static_cast<std::size_t>(i)));
    }
  }
}

void ReferenceModel::Pattern(int channel, const std::array<int, 4>& pattern) {
  for (int i = 0; i < 4; ++i) {
    Write(ChipOf(channel), 0, 0x86 + 0x10 * (channel % 4) + i,
          pattern.at(static_cast<std::size_t>(i)));
  }
}

void ReferenceModel::KindsAndCodes(int chip, int code) {
  for (int p = 0; p < 4; ++p) {
    Write(chip, 0, 0x85 + 0x10 * p, 0x00);
    Write(chip, 0, 0x80 + 0x10 * p, 0x40 * p + code);
  }
}

void ReferenceModel::Front(int channel) {
  if (channel < channels) Control(channel, 0xD4);
}

// Shuts the decoded input and brings its pattern for the windows of a mode.
void ReferenceModel::BeginPlay(int display_mode, int mode) {
  All1(0x06, display_mode);
  Paths(false);
  All1Each(0x10, 0x94, 1);
  if (mode == 6) Write(kAll, 0, 0x85, 0x00);
  PatternToAll(DecodedWindowOf(mode, 0).pattern);
}

void ReferenceModel::EndPlay(int overlay) {
  Pause50();
  All1Each(0x12, overlay);
  Paths(true);
}

// ---- Layouts ------------------------------------------------------------------------------------

int ReferenceModel::PlayVariant(int mode, int option, const Channels& list) {
  if (full_picture) All1(0x0C, 0x00);
  full_picture = mode == 0 && option != 0;
  centred_picture = mode == 0 && option == 0;
  const int normalised = centred_picture ? 1 : mode;
  if (normalised > HighestMode(channels)) return -5;
  if (normalised == 0) PlayFull(list);
  if (normalised == 1) Play2x2(list);
  if (IsLargeAndSmall(normalised)) PlayLargeAndSmall(normalised, list);
  if (normalised == 4) Play3x3(list);
  if (normalised == 6) Play4x4(list);
  play_split = normalised;
  return 0;
}

void ReferenceModel::PlayFull(const Channels& list) {
  BeginPlay(0x00, 0);
  for (int p = 0; p < 4; ++p) Window(kAll, p, FullPictureRect(Ntsc()));
  Front(list.at(0));
  All1(0x0D, 0x00);
  All1(0x0E, 0x00);
  All1(0x0C, 0xC0);
  if (channels != 8) KindsAndCodes(kAll, 0);
  EndPlay(0x00);
}

void ReferenceModel::Play2x2(const Channels& list) {
  BeginPlay(0x04, 1);

  const int windows_given = centred_picture ? channels : 4;
  int j = 0;
  for (int c = 0; c < channels; ++c) {
    if (j < windows_given && c == list.at(static_cast<std::size_t>(j))) {
      Place(c, centred_picture ? CentredPictureRect(Ntsc()) : Tile(1, j));
      ++j;
    } else {
      Place(c, kHidden);
    }
  }

  const std::size_t in_front = centred_picture ? 1 : 4;
  for (std::size_t k = 0; k < in_front; ++k) Front(list.at(k));

  int chip = kAll;
  if (channels > 4) {
    chip = ChipOf(channels - 1);
    for (std::size_t k = 0; k < in_front; ++k) {
      if (list.at(k) < channels) chip = ChipOf(list.at(k));  // the last one stays
    }
  }
  KindsAndCodes(chip, 1);
  EndPlay(0x20);
}

void ReferenceModel::PlayLargeAndSmall(int mode, const Channels& list) {
  All1Each(0x12, mode == 2 ? 0x00 : 0x20);
  All1Each(0x10, 0x94, 1);
  if (list.at(0) < channels) {
    Pattern(list[0], DecodedWindowOf(mode, 0).pattern);
    Place(list[0], Tile(mode, 0));
    Kind(list[0], DecodedWindowOf(mode, 0).kind);
  }
  const auto count = static_cast<std::size_t>(kWindows.at(static_cast<std::size_t>(mode)));
  for (std::size_t k = 1; k < count; ++k) {
    if (list.at(k) < channels) Pattern(list[k], DecodedWindowOf(mode, 1).pattern);
  }
  for (std::size_t k = 1; k < count; ++k) {
    if (list[k] < channels) Place(list[k], Tile(mode, static_cast<int>(k)));
  }
  for (std::size_t k = 1; k < count; ++k) {
    if (list[k] < channels) Kind(list[k], DecodedWindowOf(mode, 1).kind);
  }
}

void ReferenceModel::Play3x3(const Channels& list) {
  BeginPlay(0x04, 4);

  const bool second_page = channels == 16 && list.at(0) == 9;
  std::size_t j = 0;
  for (int c = 0; c < channels; ++c) {
    if (j < 9 && c == list.at(j)) {
      Place(c, Tile(4, static_cast<int>(j)));
      ++j;
    } else if (second_page && c == 0 && list.at(7) == 0) {
      Place(0, Tile(4, 7));
    } else if (second_page && c == 1 && list.at(8) == 0) {  // 0, though the channel is 1
      Place(1, Tile(4, 8));
    } else {
      Place(c, kHidden);
    }
  }

  for (std::size_t k = 0; k < 9; ++k) {
    if (list.at(k) < channels) Kind(list[k], DecodedWindowOf(4, 1).kind);
  }
  EndPlay(0x20);
}

void ReferenceModel::Play4x4(const Channels& list) {
  BeginPlay(0x04, 6);
  for (int k = 0; k < 16; ++k) {
    const int c = list.at(static_cast<std::size_t>(k));
    if (c < 16) Place(c, Tile(6, k));
  }
  for (int p = 0; p < 4; ++p) Write(kAll, 0, 0x85 + 0x10 * p, DecodedWindowOf(6, 1).kind);
  EndPlay(0x20);
}

}  // namespace test
