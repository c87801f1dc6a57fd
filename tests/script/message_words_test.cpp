#include "script/message_words.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

#include "VexoCtrlSDK.h"

namespace script {
namespace {

sim::Bytes VideoInfo(std::uint32_t lost, std::initializer_list<std::uint8_t> standards = {}) {
  sim::Bytes record;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    record.push_back(static_cast<std::uint8_t>(lost >> shift));
  }
  record.insert(record.end(), standards);
  record.resize(sizeof(VideoDetectRecord));
  return record;
}

std::string Words(std::uint32_t message, std::uint32_t wparam) {
  return MessageInWords(message, wparam, {}, 16);
}

TEST(MessageInWords, NamesLostChannelsAndStandards) {
  EXPECT_EQ(MessageInWords(0x2403, 0, VideoInfo(0x0020), 16),
            "0x2403 video info: loss mask 0x0020: channel 5 lost; NTSC on 0-4,6-15");
  EXPECT_EQ(MessageInWords(0x2403, 0, VideoInfo(0), 16),
            "0x2403 video info: loss mask 0x0000: no channel lost; NTSC on 0-15");
  EXPECT_EQ(MessageInWords(0x2403, 0, VideoInfo(0x8006, {0, 0, 0, 1, 1, 1, 1, 1, 1, 1}), 16),
            "0x2403 video info: loss mask 0x8006: channels 1-2,15 lost; NTSC on 0,10-14; PAL on "
            "3-9");
}

TEST(MessageInWords, SaysNothingAboutChannelsThatTheBoardLacks) {
  EXPECT_EQ(MessageInWords(0x2403, 0, VideoInfo(0x1, {0, 1}), 4),
            "0x2403 video info: loss mask 0x0001: channel 0 lost; PAL on 1; NTSC on 2-3");
  EXPECT_EQ(MessageInWords(0x2403, 0, VideoInfo(0xF), 4),
            "0x2403 video info: loss mask 0x000F: channels 0-3 lost");
  EXPECT_EQ(MessageInWords(0x2403, 0, VideoInfo(0), 0),
            "0x2403 video info: loss mask 0x0000: no channel lost");
}

TEST(MessageInWords, NamesAStandardThatIsNone) {
  EXPECT_EQ(MessageInWords(0x2403, 0, VideoInfo(0, {2, 9}), 2),
            "0x2403 video info: loss mask 0x0000: no channel lost; no video on 0; standard 9 on 1");
}

TEST(MessageInWords, NamesChannelsInMotion) {
  EXPECT_EQ(Words(0x2404, 0x0004), "0x2404 motion status: mask 0x0004: motion on channel 2");
  EXPECT_EQ(Words(0x2404, 0x8003), "0x2404 motion status: mask 0x8003: motion on channels 0-1,15");
  EXPECT_EQ(Words(0x2404, 0), "0x2404 motion status: mask 0x0000: no motion");
}

TEST(MessageInWords, NamesStatusCodes) {
  EXPECT_EQ(Words(0x2401, 0x1003), "0x2401 status: 0x1003 chip initialization found no chip");
  EXPECT_EQ(Words(0x2401, 0x1004),
            "0x2401 status: 0x1004 chip initialization met a device problem");
  EXPECT_EQ(Words(0x2401, 0x1005), "0x2401 status: 0x1005 chip initialization gave no channel");
  EXPECT_EQ(Words(0x2401, 0x2001),
            "0x2401 status: 0x2001 the video back-end driver could not be opened");
  EXPECT_EQ(Words(0x2401, 0x2002),
            "0x2401 status: 0x2002 the video back-end driver was open already");
  EXPECT_EQ(Words(0x2401, 7), "0x2401 status: 0x0007 (unknown)");
}

TEST(MessageInWords, ReadsTheInitResult) {
  const sim::Bytes four = {4, 0, 0, 0, 1, 0, 0, 0, 0x28, 0x29, 0x2A, 0xFF};
  EXPECT_EQ(MessageInWords(0x2402, 0, four, 16),
            "0x2402 init result: 4 chips, PAL, identification 28 29 2a ff");
  const sim::Bytes one = {1, 0, 0, 0, 2, 0, 0, 0, 0x28, 0, 0, 0};
  EXPECT_EQ(MessageInWords(0x2402, 0, one, 4),
            "0x2402 init result: 1 chip, no video, identification 28 00 00 00");
}

TEST(MessageInWords, ReadsRegisterValues) {
  EXPECT_EQ(MessageInWords(0x2406, 0, {0x03, 0x00, 0xFE, 0x28}, 16),
            "0x2406 register value: master page 0 register 0xFE (chip identification) = 0x28 "
            "(family 5, revision 0)");
  EXPECT_EQ(MessageInWords(0x2406, 0, {0xC0, 0x02, 0x0F, 0x01}, 16),
            "0x2406 register value: slave3 page 2 register 0x0F = 0x01");
  EXPECT_EQ(MessageInWords(0x2406, 0, {0x05, 0x07, 0x00, 0x01}, 16),
            "0x2406 register value: 0x05 page 7 register 0x00 = 0x01");
}

TEST(MessageInWords, NamesTheFieldsOfARegisterValue) {
  EXPECT_EQ(
      MessageInWords(0x2406, 0, {0x0C, 0x01, 0x18, 0x92}, 16),
      "0x2406 register value: slave1 page 1 register 0x18 (channel display 1) = 0x92 (enable, "
      "hold, position 2)");
}

TEST(MessageNames, AreThoseOfThePublicHeader) {
  std::ifstream file(VEXO_SOURCE_DIR "/include/VexoCtrlSDK.h");
  const std::regex define("#define VEXO_MSG_\\w+ (0x[0-9A-F]+)u.*");
  std::set<std::uint32_t> numbers;
  for (std::string line; std::getline(file, line);) {
    std::smatch match;
    if (!std::regex_match(line, match, define)) continue;
    numbers.insert(static_cast<std::uint32_t>(std::stoul(match[1], nullptr, 16)));
  }
  EXPECT_EQ(numbers.size(), 6u);
  std::set<std::uint32_t> named;
  for (const std::string_view name : MessageNames()) named.insert(FindMessage(name).value());
  EXPECT_EQ(named, numbers);
  EXPECT_EQ(FindMessage("video-info"), VEXO_MSG_VIDEO_INFO);
  EXPECT_EQ(FindMessage("video info"), std::nullopt);
}

TEST(MessageInWords, ReadsTheChipVersionAndUnknownMessages) {
  EXPECT_EQ(Words(0x2405, 0x01010101), "0x2405 chip version: 0x01010101");
  EXPECT_EQ(Words(0x0400, 5), "0x0400 no message of the library, wParam 0x00000005");
}

TEST(MessageInWords, LivesWithoutARecord) {
  EXPECT_EQ(Words(0x2402, 0), "0x2402 init result without its record");
  EXPECT_EQ(Words(0x2403, 0), "0x2403 video info without its record");
  EXPECT_EQ(Words(0x2406, 0), "0x2406 register value without its record");
}

}  // namespace
}  // namespace script
