// Host window messages in words.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "sim/trace.h"

namespace script {

// For example "0x2403 video info: loss mask 0x0020: channel 5 lost; NTSC on 0-4,6-15".
// record: what wparam points to, empty where it is no address. channels: how many the board has;
// the messages themselves do not say.
std::string MessageInWords(std::uint32_t message, std::uint32_t wparam, const sim::Bytes& record,
                           unsigned channels);

// The same from the trace.
std::string MessageInWords(const sim::MessageEvent& event, unsigned channels);

// The messages by name, with hyphens ("video-info"), and the number of one; none for an unknown
// one.
std::span<const std::string_view> MessageNames();
std::optional<std::uint32_t> FindMessage(std::string_view name);

// "NTSC", "PAL", "no video", or the number.
std::string StandardInWords(std::uint32_t standard);

}  // namespace script
