#include "script/message_words.h"

#include <algorithm>
#include <bit>
#include <span>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "sim/text.h"

namespace script {
namespace {

std::uint32_t Word(const sim::Bytes& record, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value |= std::uint32_t{record[offset + i]} << (8 * i);
  return value;
}

std::string ChannelList(std::uint32_t mask, unsigned channels) {
  const std::string list = sim::BitList(mask, channels);
  const bool several = list.find_first_of(",-") != std::string::npos;
  return (several ? "channels " : "channel ") + list;
}

std::uint32_t Below(unsigned channels) {
  return channels >= 32 ? 0xFFFFFFFFU : (1U << channels) - 1;
}

std::string Status(std::uint32_t code) {
  std::string text = "status: " + sim::Hex(code, 4);
  switch (code) {
    case VEXO_STATUS_DETECT_ERROR:
      return text + " chip initialization found no chip";
    case VEXO_STATUS_DEVICE_PROBLEM:
      return text + " chip initialization met a device problem";
    case VEXO_STATUS_NOT_DETECTED:
      return text + " chip initialization gave no channel";
    case VEXO_STATUS_VBE_OPEN_FAILED:
      return text + " the video back-end driver could not be opened";
    case VEXO_STATUS_VBE_ALREADY_OPEN:
      return text + " the video back-end driver was open already";
    default:
      return text + " (unknown)";
  }
}

std::string InitResult(const sim::Bytes& record) {
  const std::uint32_t chips = Word(record, 0);
  return "init result: " + std::to_string(chips) + (chips == 1 ? " chip, " : " chips, ") +
         StandardInWords(Word(record, 4)) + ", identification " +
         sim::HexBytes(std::span(record).subspan(8, 4), " ");
}

std::string VideoInfo(const sim::Bytes& record, unsigned channels) {
  const std::uint32_t lost = Word(record, 0);
  std::string text = "video info: loss mask " + sim::Hex(lost, 4) + ": ";
  text += lost == 0 ? "no channel lost"
                    : ChannelList(lost, std::max(channels, unsigned{kChannelsMax})) + " lost";
  // A lost channel may still carry the standard it had; it says nothing about a picture.
  std::uint32_t left = Below(std::min(channels, unsigned{kChannelsMax})) & ~lost;
  while (left != 0) {
    const auto lowest = static_cast<unsigned>(std::countr_zero(left));
    const std::uint8_t standard = record[4 + lowest];
    std::uint32_t same = 0;
    for (unsigned channel = lowest; channel < kChannelsMax; ++channel) {
      if (((left >> channel) & 1U) != 0 && record[4 + channel] == standard) same |= 1U << channel;
    }
    text += "; " + StandardInWords(standard) + " on " + sim::BitList(same, kChannelsMax);
    left &= ~same;
  }
  return text;
}

std::string MotionStatus(std::uint32_t mask) {
  return "motion status: mask " + sim::Hex(mask, 4) + ": " +
         (mask == 0 ? "no motion" : "motion on " + ChannelList(mask, 32));
}

std::string RegisterValue(const sim::Bytes& record) {
  std::string chip = sim::Hex(record[0]);
  switch (record[0]) {
    case kChipMaster:
      chip = "master";
      break;
    case kChipSlave1:
      chip = "slave1";
      break;
    case kChipSlave2:
      chip = "slave2";
      break;
    case kChipSlave3:
      chip = "slave3";
      break;
    case kChipAll:
      chip = "all chips";
      break;
    default:
      break;
  }
  std::string text = "register value: " + chip + " page " + std::to_string(record[1]) +
                     " register " + sim::Hex(record[2]);
  if (const char* name = RegisterNameOf(record[1], record[2]))
    text += " (" + std::string(name) + ')';
  return text + " = " + sim::Hex(record[3]);
}

std::string Meaning(std::uint32_t message, std::uint32_t wparam, const sim::Bytes& record,
                    unsigned channels) {
  switch (message) {
    case VEXO_MSG_STATUS:
      return Status(wparam);
    case VEXO_MSG_INIT_RESULT:
      if (record.size() >= sizeof(VideoState)) return InitResult(record);
      return "init result without its record";
    case VEXO_MSG_VIDEO_INFO:
      if (record.size() >= sizeof(VideoDetectRecord)) return VideoInfo(record, channels);
      return "video info without its record";
    case VEXO_MSG_MOTION_STATUS:
      return MotionStatus(wparam);
    case VEXO_MSG_CHIP_VERSION:
      return "chip version: " + sim::Hex(wparam, 8);
    case VEXO_MSG_REG_VALUE:
      if (record.size() >= sizeof(VexoRegRecord)) return RegisterValue(record);
      return "register value without its record";
    default:
      return "no message of the library, wParam " + sim::Hex(wparam, 8);
  }
}

}  // namespace

std::string StandardInWords(std::uint32_t standard) {
  switch (standard) {
    case VEXO_VIDEO_NTSC:
      return "NTSC";
    case VEXO_VIDEO_PAL:
      return "PAL";
    case VEXO_VIDEO_NONE:
      return "no video";
    default:
      return "standard " + std::to_string(standard);
  }
}

std::string MessageInWords(std::uint32_t message, std::uint32_t wparam, const sim::Bytes& record,
                           unsigned channels) {
  return sim::Hex(message, 4) + ' ' + Meaning(message, wparam, record, channels);
}

std::string MessageInWords(const sim::MessageEvent& event, unsigned channels) {
  return MessageInWords(event.message, event.wparam.value_or(0),
                        event.record.value_or(sim::Bytes{}), channels);
}

}  // namespace script
