/* Screen layouts: how many pictures, and which channels a page of them shows. */
#ifndef RECORDER_LAYOUTS_H
#define RECORDER_LAYOUTS_H

#include "VexoCtrlSDK.h"

typedef struct Layout {
  uint8_t mode;            /* VEXO_SPLIT_... */
  unsigned windows;        /* pictures on the screen */
  unsigned least_channels; /* of a board that has it */
} Layout;

/* The layout of so many pictures, null when a board of so many channels has none. */
const Layout* Layout_Find(unsigned windows, unsigned channels);

/* The largest layout of a board, null for a board that has none. */
const Layout* Layout_Largest(unsigned channels);

/* The first channel of the page behind the one that begins with `first`. The last page is a full
 * one; the first one comes behind it. */
unsigned Layout_NextPage(const Layout* layout, unsigned channels, unsigned first);

/* The last channel of the page that begins with `first`. */
unsigned Layout_LastChannel(const Layout* layout, unsigned channels, unsigned first);

/* Fills a record's list. It ascends, as the library asks for; a window without a channel gets a
 * number that no board has, and shows nothing. */
void Layout_List(const Layout* layout, unsigned channels, unsigned first,
                 uint8_t list[VEXO_MAX_CHANNELS]);

#endif /* RECORDER_LAYOUTS_H */
