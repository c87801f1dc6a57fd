// Version resources, and the memory that holds them.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kErrorFileNotFound = 2;
constexpr std::uint32_t kErrorNotEnoughMemory = 8;
constexpr std::uint32_t kErrorNoResource = 1812;
constexpr std::uint32_t kVersionInfoBytes = 0x2F4;

// What the reader finds at the start of the information; the rest of it is zero.
struct VersionInfo {
  std::array<char, 4> tag;
  std::uint32_t has_root;
  PlatFileVersion version;
};
constexpr std::array<char, 4> kTag = {'V', 'E', 'R', 'S'};

std::uint32_t Pair(std::uint16_t high, std::uint16_t low) {
  return static_cast<std::uint32_t>(high) << 16 | low;
}

bool Fail(std::uint32_t error) {
  sim::TheWorld().kernel.SetLastError(error);
  return false;
}

}  // namespace

std::uint32_t Plat_VersionInfoSize(const char16_t* path) {
  sim::World& world = sim::TheWorld();
  const std::string name = sim::ToUtf8(path);
  world.files.asked.push_back(name);
  const bool fails = world.faults.Fires(sim::Fault::VersionSize);
  if (!fails && world.files.Find(name) != nullptr) return kVersionInfoBytes;
  Fail(kErrorFileNotFound);
  return 0;
}

bool Plat_ReadVersionInfo(const char16_t* path, std::uint32_t size_bytes, void* buffer) {
  sim::World& world = sim::TheWorld();
  const bool fails = world.faults.Fires(sim::Fault::VersionRead);
  const sim::VersionFile* file = world.files.Find(sim::ToUtf8(path));
  if (file == nullptr) return Fail(kErrorFileNotFound);
  if (fails || file->state == sim::VersionFile::State::Unreadable || buffer == nullptr ||
      size_bytes < sizeof(VersionInfo)) {
    return Fail(kErrorNoResource);
  }
  const auto& v = file->version;
  const VersionInfo info = {kTag,
                            file->state == sim::VersionFile::State::NoRoot ? 0u : 1u,
                            {Pair(v[0], v[1]), Pair(v[2], v[3])}};
  std::memset(buffer, 0, std::min(size_bytes, kVersionInfoBytes));
  std::memcpy(buffer, &info, sizeof(info));
  return true;
}

bool Plat_QueryVersionRoot(const void* buffer, PlatFileVersion* version) {
  const bool fails = sim::TheWorld().faults.Fires(sim::Fault::VersionQuery);
  if (fails || buffer == nullptr) return Fail(kErrorNoResource);
  VersionInfo info;
  std::memcpy(&info, buffer, sizeof(info));
  if (info.tag != kTag || info.has_root == 0) return Fail(kErrorNoResource);
  *version = info.version;
  return true;
}

void* Plat_Allocate(std::uint32_t size_bytes) {
  sim::World& world = sim::TheWorld();
  void* memory = world.faults.Fires(sim::Fault::Allocate) ? nullptr : std::malloc(size_bytes);
  if (memory == nullptr) {
    Fail(kErrorNotEnoughMemory);
    return nullptr;
  }
  ++world.allocations;
  return memory;
}

void Plat_Free(void* memory) {
  if (memory == nullptr) return;
  --sim::TheWorld().allocations;
  std::free(memory);
}
