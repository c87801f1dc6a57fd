#include "sim/board/nvram.h"

#include <algorithm>

namespace sim {
namespace {

constexpr std::size_t kRecordBytes = 6;  // magic, video standard, channel count
constexpr std::size_t kMagicBytes = 4;
constexpr std::uint32_t kRecordBlock = 1;

bool Inside(const Bytes& content, std::uint32_t block, std::uint32_t offset, std::uint32_t length) {
  return block == kRecordBlock && offset <= content.size() && length <= content.size() - offset;
}

}  // namespace

void Nvram::SetBlank() {
  content_.assign(kRecordBytes, 0xFF);
  made_ = true;
}

void Nvram::SetRecord(const std::string& magic, std::uint8_t standard, std::uint8_t channels) {
  content_.assign(kRecordBytes, 0);
  std::copy_n(magic.begin(), std::min(magic.size(), kMagicBytes), content_.begin());
  content_[kMagicBytes] = standard;
  content_[kMagicBytes + 1] = channels;
  made_ = true;
}

void Nvram::MakeDefault(std::uint8_t channels) {
  if (!made_) SetRecord("MDVR", 0, channels);
}

bool Nvram::Read(std::uint32_t block, std::uint32_t offset, std::uint32_t length,
                 std::uint8_t* buffer) {
  if (failure_ == Failure::Read) {
    ++hits_;
    return false;
  }
  if (!Inside(content_, block, offset, length)) return false;
  std::copy_n(content_.begin() + offset, length, buffer);
  return true;
}

bool Nvram::Write(std::uint32_t block, std::uint32_t offset, std::uint32_t length,
                  const std::uint8_t* buffer) {
  if (failure_ == Failure::Write) {
    ++hits_;
    return false;
  }
  if (!Inside(content_, block, offset, length)) return false;
  std::copy_n(buffer, length, content_.begin() + offset);
  return true;
}

}  // namespace sim
