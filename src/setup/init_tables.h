// Writing the chips' initialization tables, by channel count and video standard.
#pragma once

// Inputs and scalers, to all chips.
void TW_InitPage0Tables();

// Display, record path and output. A board of 12 channels gets the common registers alone. Ends
// with registers of page 0: record crop and video.
void TW_InitPage1Tables();

// Overlay, boxes and motion, to all chips.
void TW_InitPage2Tables();
