#include "device/ceimage/bytes.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace ceimage {
namespace {

constexpr std::size_t kMostText = 1024;  // else the texts of a damaged file would fill the memory

}  // namespace

std::string Hex(std::uint32_t value) {
  std::array<char, 8> digits = {};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16);
  return "0x" + std::string(digits.data(), result.ptr);
}

ByteView Part(ByteView bytes, std::size_t offset, std::size_t size) {
  if (offset > bytes.size() || size > bytes.size() - offset) {
    throw Refusal("The file is cut off or damaged: " + std::to_string(size) + " bytes at " +
                  std::to_string(offset) + " of " + std::to_string(bytes.size()) + ".");
  }
  return bytes.subspan(offset, size);
}

std::uint8_t Get8(ByteView bytes, std::size_t offset) { return Part(bytes, offset, 1)[0]; }

std::uint16_t Get16(ByteView bytes, std::size_t offset) {
  const ByteView part = Part(bytes, offset, 2);
  return static_cast<std::uint16_t>(part[0] | part[1] << 8);
}

std::uint32_t Get32(ByteView bytes, std::size_t offset) {
  return Get16(bytes, offset) | static_cast<std::uint32_t>(Get16(bytes, offset + 2)) << 16;
}

std::string GetText(ByteView bytes, std::size_t offset) {
  const ByteView rest = Part(bytes, offset, offset > bytes.size() ? 0 : bytes.size() - offset);
  const ByteView most = rest.first(std::min(rest.size(), kMostText + 1));
  const auto end = std::find(most.begin(), most.end(), std::uint8_t{0});
  if (end == most.end() && most.size() > kMostText) {
    throw Refusal("A text of more than " + std::to_string(kMostText) + " characters at " +
                  std::to_string(offset) + ".");
  }
  if (end == most.end()) throw Refusal("A text without an end at " + std::to_string(offset) + ".");
  return {most.begin(), end};
}

void Put32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
  Part(bytes, offset, 4);
  for (unsigned i = 0; i < 4; ++i) bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

void Append16(Bytes& bytes, std::uint32_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value));
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

void Append32(Bytes& bytes, std::uint32_t value) {
  Append16(bytes, value);
  Append16(bytes, value >> 16);
}

void Append(Bytes& bytes, ByteView more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void AppendText(Bytes& bytes, std::string_view text, std::size_t size) {
  if (text.size() > size) throw Refusal("Too long: " + std::string(text));
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.resize(bytes.size() + size - text.size());
}

std::uint32_t AlignUp(std::uint32_t value, std::uint32_t alignment) {
  return (value + alignment - 1) / alignment * alignment;
}

void Align(Bytes& bytes, std::uint32_t alignment) {
  bytes.resize(AlignUp(static_cast<std::uint32_t>(bytes.size()), alignment));
}

}  // namespace ceimage
