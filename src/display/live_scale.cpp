#include "display/live_scale.h"

#include <array>

#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "report/diagnostics.h"

namespace {

struct ScaleRatio {
  bool defined;
  std::uint8_t high;
  std::uint8_t low;
};

// By scale code: ratio times 0x10000.
constexpr std::array<ScaleRatio, 7> kRatios = {{
    {true, 0xFF, 0xFF},  // 1/1
    {true, 0x7F, 0xFF},  // 1/2
    {true, 0xAA, 0xAA},  // 2/3
    {true, 0xBF, 0xFD},  // 3/4
    {true, 0x55, 0x55},  // 1/3
    {},                  // Quirk: no such code
    {true, 0x3F, 0xFF},  // 1/4
}};

// Layout bits of the record modes.
constexpr std::array<std::uint8_t, 3> kRecordLayouts = {0x00, 0x10, 0x30};

const ScaleRatio* FindRatio(std::uint8_t code) {
  return code < kRatios.size() && kRatios[code].defined ? &kRatios[code] : nullptr;
}

// Writes a ratio to the scaler of a channel.
template <const ChannelRegister<2>& kOf>
void WriteRatio(std::uint8_t channel, const ScaleRatio& ratio) {
  const std::uint8_t chip = TW_GetChipSelect(channel);
  const std::uint8_t position = ChannelPosition(channel);
  Write(chip, kOf.At(position, 0), ratio.high);
  Write(chip, kOf.At(position, 1), ratio.low);
}

}  // namespace

void TW_SetLiveScaleX(std::uint8_t channel, std::uint8_t vertical_code,
                      std::uint8_t horizontal_code) {
  const ScaleRatio* vertical = FindRatio(vertical_code);
  if (vertical == nullptr) {
    VexoDbg_Print(u">> TW_SetLiveScaleX INVALID V SCALE (%d)!!\r\n", vertical_code);
    return;
  }
  WriteRatio<kScalerVertical>(channel, *vertical);

  // Quirk: a refused horizontal code does not take the vertical ratio back.
  const ScaleRatio* horizontal = FindRatio(horizontal_code);
  if (horizontal == nullptr) {
    VexoDbg_Print(u">> TW_SetLiveScaleX INVALID H SCALE (%d)!!\r\n", horizontal_code);
    return;
  }
  WriteRatio<kScalerHorizontal>(channel, *horizontal);
}

void TW_SetLiveScaleY(std::uint8_t channel, std::uint8_t record_mode) {
  if (record_mode >= kRecordLayouts.size()) {
    VexoDbg_Print(u">> TW_SetLiveScaleY INVALID RECORD MODE (%d)!!\r\n", record_mode);
    return;
  }
  const std::uint8_t position = ChannelPosition(channel);
  Write(TW_GetChipSelect(channel), kRecordLayout, position,
        static_cast<std::uint8_t>((position << 6) | kRecordLayouts[record_mode]));
}

void TW_SetInputRegs(std::uint8_t channel, std::uint8_t hue, std::uint8_t saturation,
                     std::uint8_t contrast, std::uint8_t brightness) {
  const bool every = channel == g_video.max_channel;
  const unsigned first = every ? 0u : channel;
  const unsigned last = every ? g_video.max_channel : channel + 1u;
  for (unsigned n = first; n < last; ++n) {
    const auto c = static_cast<std::uint8_t>(n);
    const std::uint8_t chip = TW_GetChipSelect(c);
    const std::uint8_t position = ChannelPosition(c);
    Write(chip, kInputHue, position, hue);
    Write(chip, kInputSaturation, position, saturation);
    Write(chip, kInputContrast, position, contrast);
    Write(chip, kInputBrightness, position, brightness);
  }
}
