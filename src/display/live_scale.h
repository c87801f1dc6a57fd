// One channel's scaler and input registers. Channel numbers are not checked: the chip and position
// that a number maps to are programmed.
#pragma once

#include <cstdint>

// Scale codes: the ratio that a picture is shown at. 5 and everything above 6 is refused.
inline constexpr std::uint8_t kScaleFull = 0;
inline constexpr std::uint8_t kScaleHalf = 1;
inline constexpr std::uint8_t kScaleTwoThirds = 2;
inline constexpr std::uint8_t kScaleThreeQuarters = 3;
inline constexpr std::uint8_t kScaleThird = 4;
inline constexpr std::uint8_t kScaleQuarter = 6;

// Sets the scaler ratios. A refused code is printed; a refused horizontal code leaves the vertical
// ratio written.
void TW_SetLiveScaleX(std::uint8_t channel, std::uint8_t vertical_code,
                      std::uint8_t horizontal_code);

// Sets the layout of the channel on the record path: record mode 0, 1 or 2. Others are printed and
// refused.
void TW_SetLiveScaleY(std::uint8_t channel, std::uint8_t record_mode);

// Sets hue, saturation, contrast and brightness; the channel count as channel means every channel.
void TW_SetInputRegs(std::uint8_t channel, std::uint8_t hue, std::uint8_t saturation,
                     std::uint8_t contrast, std::uint8_t brightness);
