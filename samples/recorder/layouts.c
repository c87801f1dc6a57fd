#include "layouts.h"

#include <stddef.h>

#define LAYOUTS (sizeof(kLayouts) / sizeof(kLayouts[0]))
#define NO_CHANNEL 0xFFu

static const Layout kLayouts[] = {
    {VEXO_SPLIT_FULL, 1, 4}, {VEXO_SPLIT_4, 4, 4},    {VEXO_SPLIT_6, 6, 8},    {VEXO_SPLIT_8, 8, 8},
    {VEXO_SPLIT_9, 9, 8},    {VEXO_SPLIT_13, 13, 16}, {VEXO_SPLIT_16, 16, 16},
};

/* A board of three chips has a register for everything and a layout for nothing. */
static int HasLayouts(unsigned channels) {
  return channels == 4 || channels == 8 || channels == 16;
}

const Layout* Layout_Find(unsigned windows, unsigned channels) {
  size_t i;
  for (i = 0; i < LAYOUTS; ++i) {
    if (kLayouts[i].windows != windows) continue;
    return HasLayouts(channels) && channels >= kLayouts[i].least_channels ? &kLayouts[i] : NULL;
  }
  return NULL;
}

const Layout* Layout_Largest(unsigned channels) {
  const Layout* largest = NULL;
  size_t i;
  for (i = 0; i < LAYOUTS; ++i) {
    const Layout* layout = Layout_Find(kLayouts[i].windows, channels);
    if (layout != NULL) largest = layout;
  }
  return largest;
}

unsigned Layout_NextPage(const Layout* layout, unsigned channels, unsigned first) {
  if (first + layout->windows >= channels) return 0;
  first += layout->windows;
  if (first + layout->windows > channels) first = channels - layout->windows;
  return first;
}

unsigned Layout_LastChannel(const Layout* layout, unsigned channels, unsigned first) {
  const unsigned end = first + layout->windows;
  return (end < channels ? end : channels) - 1;
}

void Layout_List(const Layout* layout, unsigned channels, unsigned first,
                 uint8_t list[VEXO_MAX_CHANNELS]) {
  unsigned i;
  for (i = 0; i < VEXO_MAX_CHANNELS; ++i) {
    const int shows = i < layout->windows && first + i < channels;
    list[i] = (uint8_t)(shows ? first + i : NO_CHANNEL);
  }
}
