#include "script/message_words.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "script/register_words.h"
#include "script/words.h"
#include "sim/kernel/message_records.h"
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

// What a message says.
struct Content {
  std::uint32_t wparam;
  const sim::Bytes& record;
  unsigned channels;  // of the board
};

struct StatusWords {
  std::uint32_t code;
  const char* words;
};

constexpr std::array kStatuses = {
    StatusWords{VEXO_STATUS_DETECT_ERROR, "chip initialization found no chip"},
    StatusWords{VEXO_STATUS_DEVICE_PROBLEM, "chip initialization met a device problem"},
    StatusWords{VEXO_STATUS_NOT_DETECTED, "chip initialization gave no channel"},
    StatusWords{VEXO_STATUS_VBE_OPEN_FAILED, "the video back-end driver could not be opened"},
    StatusWords{VEXO_STATUS_VBE_ALREADY_OPEN, "the video back-end driver was open already"},
};

std::string Status(const Content& content) {
  const std::string text = sim::Hex(content.wparam, 4) + ' ';
  for (const StatusWords& status : kStatuses) {
    if (status.code == content.wparam) return text + status.words;
  }
  return text + "(unknown)";
}

std::string InitResult(const Content& content) {
  const std::uint32_t chips = Word(content.record, offsetof(VideoState, chip_count));
  return std::to_string(chips) + (chips == 1 ? " chip, " : " chips, ") +
         StandardInWords(Word(content.record, offsetof(VideoState, video_standard))) +
         ", identification " +
         sim::HexBytes(std::span(content.record)
                           .subspan(offsetof(VideoState, chip_id), sizeof(VideoState::chip_id)),
                       " ");
}

std::string VideoInfo(const Content& content) {
  const std::uint8_t* standards = &content.record[offsetof(VideoDetectRecord, standard)];
  const std::uint32_t lost = Word(content.record, offsetof(VideoDetectRecord, loss_mask));
  std::string text = "loss mask " + sim::Hex(lost, 4) + ": ";
  text += lost == 0
              ? "no channel lost"
              : ChannelList(lost, std::max(content.channels, unsigned{kChannelsMax})) + " lost";
  // A lost channel may still carry the standard it had; it says nothing about a picture.
  std::uint32_t left = Below(std::min(content.channels, unsigned{kChannelsMax})) & ~lost;
  while (left != 0) {
    const std::uint8_t standard = standards[std::countr_zero(left)];
    std::uint32_t same = 0;
    for (unsigned channel = 0; channel < kChannelsMax; ++channel) {
      if (((left >> channel) & 1U) != 0 && standards[channel] == standard) same |= 1U << channel;
    }
    text += "; " + StandardInWords(standard) + " on " + sim::BitList(same, kChannelsMax);
    left &= ~same;
  }
  return text;
}

std::string MotionStatus(const Content& content) {
  return "mask " + sim::Hex(content.wparam, 4) + ": " +
         (content.wparam == 0 ? "no motion" : "motion on " + ChannelList(content.wparam, 32));
}

std::string ChipVersion(const Content& content) { return sim::Hex(content.wparam, 8); }

std::string ChipInWords(std::uint8_t select) {
  if (select == kChipAll) return "all chips";
  for (std::size_t position = 0; position < kChipByPosition.size(); ++position) {
    if (kChipByPosition[position] == select) return std::string(ChipWords()[position]);
  }
  return sim::Hex(select);
}

std::string RegisterValue(const Content& content) {
  VexoRegRecord record;
  std::memcpy(&record, content.record.data(), sizeof record);
  std::string text = ChipInWords(record.chip_select) + " page " + std::to_string(record.page) +
                     " register " + sim::Hex(record.reg);
  if (FindRegister(record.page, record.reg) != nullptr) {
    text += " (" + RegisterLabel(record.page, record.reg) + ')';
  }
  text += " = " + sim::Hex(record.value);
  const std::string fields = FieldsInWords(record.page, record.reg, record.value);
  return fields.empty() ? text : text + " (" + fields + ')';
}

struct MessageWords {
  std::uint32_t message;
  std::string_view name;  // with hyphens, as scripts have it
  std::string (*words)(const Content& content);
};

constexpr std::array kMessages = {
    MessageWords{VEXO_MSG_STATUS, "status", Status},
    MessageWords{VEXO_MSG_INIT_RESULT, "init-result", InitResult},
    MessageWords{VEXO_MSG_VIDEO_INFO, "video-info", VideoInfo},
    MessageWords{VEXO_MSG_MOTION_STATUS, "motion-status", MotionStatus},
    MessageWords{VEXO_MSG_CHIP_VERSION, "chip-version", ChipVersion},
    MessageWords{VEXO_MSG_REG_VALUE, "register-value", RegisterValue},
};

std::string Meaning(std::uint32_t message, const Content& content) {
  for (const MessageWords& row : kMessages) {
    if (row.message != message) continue;
    const bool whole = content.record.size() >= sim::MessageRecordBytes(message);
    std::string name(row.name);
    std::replace(name.begin(), name.end(), '-', ' ');
    return name + (whole ? ": " + row.words(content) : " without its record");
  }
  return "no message of the library, wParam " + sim::Hex(content.wparam, 8);
}

}  // namespace

std::span<const std::string_view> MessageNames() {
  static constexpr auto kNames = [] {
    std::array<std::string_view, kMessages.size()> names;
    std::transform(kMessages.begin(), kMessages.end(), names.begin(),
                   [](const MessageWords& row) { return row.name; });
    return names;
  }();
  return kNames;
}

std::optional<std::uint32_t> FindMessage(std::string_view name) {
  for (const MessageWords& row : kMessages) {
    if (row.name == name) return row.message;
  }
  return std::nullopt;
}

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
  return sim::Hex(message, 4) + ' ' + Meaning(message, {wparam, record, channels});
}

std::string MessageInWords(const sim::MessageEvent& event, unsigned channels) {
  return MessageInWords(event.message, event.wparam.value_or(0),
                        event.record.value_or(sim::Bytes{}), channels);
}

}  // namespace script
