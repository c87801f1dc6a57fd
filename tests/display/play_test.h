// A board in playback.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/display/display_test.h"

namespace test {

class PlayTest : public DisplayTest {
 protected:
  // A scribbled board in playback view, with masks and a stored mode that no operation leaves.
  void UsePlayback(int channels, int standard = 0);
  // The same, as a full or centred picture leaves its flags behind.
  void UsePlaybackAfter(int channels, int full_picture, int centred_picture);
  // Calls the split variant of a channel count.
  static std::int32_t CallPlaySplit(int channels, int mode, int option, const Channels& list);
  // Scribbles anew, marks, and gives a model of board and state as they are now.
  ReferenceModel Begin();
  // A model of board and state as they are now; marks as well.
  ReferenceModel Next();
  // Accesses, registers, pauses (their place among the accesses included), prints, flags, masks and
  // the stored mode are the model's.
  void ExpectPlayed(const ReferenceModel& model);
  // Pauses since the last Begin() or Next(), with the number of accesses before each.
  std::vector<Pause> Pauses();

 private:
  unsigned seed_ = 0;
  std::size_t from_ = 0;
};

}  // namespace test
