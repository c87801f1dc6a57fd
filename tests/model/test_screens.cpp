// The blue screen, and the fill engine that draws it.
#include "tests/model/reference_model.h"

namespace test {

void ReferenceModel::FillRect(int chip, int x, int y, int w, int h) {
  for (int reg = 0; reg < 4; ++reg) Write(chip, 2, reg, 0xFF);
  const int first_line = 10 * y;
  const int last_line = y + h == 0 ? 0 : 10 * (y + h) - 1;
  Write(chip, 2, 0x07, first_line);
  Write(chip, 2, 0x08, last_line);
  Write(chip, 2, 0x09, (first_line / 256 * 4 + last_line / 256) | 2);
  const int middle = 4 * x + w / 4 * 16;
  if (w >= 4) FillColumns(chip, 4 * x, middle);
  if (w % 4 != 0) FillColumns(chip, middle, 4 * (x + w) - 1);
}

void ReferenceModel::FillColumns(int chip, int first, int last) {
  Write(chip, 2, 0x05, first);
  Write(chip, 2, 0x06, last);
  Write(chip, 2, 0x0A, 0xC0);  // bit 7 starts the engine and is its own from then on
  for (int i = 0; i < fill_busy; ++i) accesses.push_back(R(chip, 2, 0x0A, 0xC0));
  Read(chip, 2, 0x0A);
}

void ReferenceModel::BlueScreenInit() {
  LiveSplitDirect(0, 0, 0);
  All1Each(0x11, 0x04);
  FillRect(kMaster, 0, 0, 45, 31);
  for (int k = 0; k < 16; ++k) Write(kMaster, 2, 0x10 + 5 * k, 0x00);
}

void ReferenceModel::BlueScreenClear() {
  FillRect(kMaster, 0, 0, 45, 31);
  All1Each(0x11, 0x02);
}

}  // namespace test
