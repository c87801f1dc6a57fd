// The hold that brackets every layout change, so that the picture does not roll meanwhile.
#pragma once

#include <cstdint>

// Holds all channels and waits until every chip has settled, 200 polls 5 ms apart at most; a board
// that does not settle is reported on the kernel debug output and the change goes ahead.
void TW_ApplyAntiRolling();

// Takes the hold back and shows all four channels of every chip.
void TW_ReleaseAntiRolling();

inline constexpr unsigned kPollWithoutLimit = 0;

// Polls the settle status of all chips of the board, up to max_polls times, 5 ms apart. False when
// the last poll still found a channel that had not settled.
bool WaitUntilSettled(unsigned max_polls);
