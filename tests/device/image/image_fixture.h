// The image on the emulated device, with all that it asks of the system in a record.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "device/emulator/linker_map.h"
#include "device/emulator/machine.h"
#include "sim/world.h"
#include "tests/device/image/system_record.h"

namespace emulator {

inline std::string ImagePath() {
  const char* const named = std::getenv("VEXO_IMAGE");
  return named != nullptr ? named : VEXO_DEFAULT_IMAGE;
}

class ImageTest : public testing::Test {
 protected:
  static constexpr std::uint32_t kModule = 0x83F00400;  // no address of the image
  static constexpr std::uint32_t kDetach = 0;
  static constexpr std::uint32_t kAttach = 1;

  ImageTest() {
    sim::ResetWorld();
    sim::World& world = sim::TheWorld();
    world.nvram.MakeDefault(static_cast<std::uint8_t>(4 * world.board.FittedCount()));
  }
  // First: threads that are left may be in the image.
  void TearDown() override { sim::ResetWorld(); }

  // A function or a record that the linker's map has, exported or not.
  std::uint32_t AddressOf(const std::string& name) const {
    static const std::optional<LinkerMap> map = LinkerMap::Beside(Path());
    if (!map) throw std::runtime_error("there is no map beside " + Path());
    const LinkedSection* section = map->FindPlain(name);
    if (section == nullptr) section = map->Find(name);
    if (section == nullptr) throw std::runtime_error("the image has no " + name);
    return section->address - machine_.Image().PreferredBase() + machine_.Base();
  }
  std::uint32_t Call(const std::string& function, std::span<const std::uint32_t> arguments) {
    return machine_.Call(AddressOf(function), arguments);
  }
  std::uint32_t Call(const std::string& function,
                     std::initializer_list<std::uint32_t> arguments = {}) {
    return Call(function, std::span(arguments.begin(), arguments.size()));
  }

  // ---- What hosts do ----------------------------------------------------------------------------

  std::uint32_t Entry(std::uint32_t reason) {
    return machine_.Call(machine_.AddressOf(""), std::array<std::uint32_t, 3>{kModule, reason, 0});
  }
  // Binds a window of its own.
  void Bind() {
    const auto window = static_cast<std::uint32_t>(sim::TheWorld().windows.Create());
    EXPECT_EQ(Call("VEXOAPI_Initialize", {window}), 0u);
  }
  std::uint32_t Command(std::uint32_t code) {
    constexpr std::uint32_t kBytes = 64;
    const std::array<std::uint8_t, kBytes> record{};
    const Process::Lease cpu(machine_);
    const std::uint32_t lent = cpu->Lend(record.data(), kBytes, true, 1);
    return cpu->Call(AddressOf("VEXOAPI_CommandProc"), std::array<std::uint32_t, 2>{code, lent});
  }

  // ---- Memory of the guest ---------------------------------------------------------------------

  std::uint32_t Put(const void* data, std::size_t bytes) {
    const std::uint32_t address = machine_.Heap().Allocate(static_cast<std::uint32_t>(bytes));
    if (bytes != 0) std::memcpy(At(address), data, bytes);
    return address;
  }
  std::uint32_t Put(const std::string& text) { return Put(text.c_str(), text.size() + 1); }
  std::uint32_t Put(const std::u16string& text) { return Put(text.c_str(), 2 * (text.size() + 1)); }
  std::uint32_t Put(const std::vector<std::uint32_t>& words) {
    return Put(words.data(), 4 * words.size());
  }
  // What lies at an address of the heap.
  std::uint8_t* At(std::uint32_t address) {
    return machine_.Heap().Pages().Data() + (address - kHeapAddress);
  }
  std::uint32_t Word(std::uint32_t address) {
    std::uint32_t word = 0;
    std::memcpy(&word, At(address), sizeof word);
    return word;
  }
  std::u16string Units(std::uint32_t address, std::size_t count) {
    std::u16string units(count, u'\0');
    std::memcpy(units.data(), At(address), 2 * count);
    return units;
  }

  static std::string Path() { return ImagePath(); }

  Machine machine_{PeImage::Load(Path())};
  SystemRecord record_{machine_};
};

}  // namespace emulator
