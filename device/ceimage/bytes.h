// Little-endian numbers in byte strings, and how the tool refuses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ceimage {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

// Something in the input that the tool does not understand, or that the image cannot have.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string Hex(std::uint32_t value);

// All of these refuse what lies outside of the bytes.
ByteView Part(ByteView bytes, std::size_t offset, std::size_t size);
std::uint8_t Get8(ByteView bytes, std::size_t offset);
std::uint16_t Get16(ByteView bytes, std::size_t offset);
std::uint32_t Get32(ByteView bytes, std::size_t offset);
std::string GetText(ByteView bytes, std::size_t offset);  // up to its zero

void Put32(Bytes& bytes, std::size_t offset, std::uint32_t value);

void Append16(Bytes& bytes, std::uint32_t value);
void Append32(Bytes& bytes, std::uint32_t value);
void Append(Bytes& bytes, ByteView more);
void AppendText(Bytes& bytes, std::string_view text, std::size_t size);  // filled up with zeros

std::uint32_t AlignUp(std::uint32_t value, std::uint32_t alignment);
void Align(Bytes& bytes, std::uint32_t alignment);  // with zeros

}  // namespace ceimage
