// What the board's own DLLs give the library: bus windows and NVRAM.
#include <fstream>
#include <iterator>
#include <optional>

#include "board.h"
#include "crossing.h"
#include "files/output.h"
#include "io_pages.h"
#include "lines.h"
#include "settings.h"

namespace kit {
namespace {

constexpr std::uint32_t kNvramBlock = 1;

std::string g_nvram_file;  // none: forgotten with the process

PlatBusWindow Address(int window) {
  if (window < 0) return nullptr;
  return sim::BusWindows::Address(static_cast<sim::BusWindow>(window));
}

void Store(int window, std::uint32_t value, unsigned) {
  const AtBoard at_board;
  GoOut([&] { Plat_StoreByte(Address(window), static_cast<std::uint8_t>(value)); });
}

std::uint8_t Load(int window, unsigned) {
  const AtBoard at_board;
  return GoOut([&] { return Plat_LoadByte(Address(window)); });
}

void RefuseAccess(const char* reason, const std::uint8_t* code) {
  constexpr std::size_t kBytes = 12;
  Refuse("a bus access is no byte's plain move: " + std::string(reason) + ": " +
         sim::HexBytes({code, kBytes}, " "));
}

// What was stored in an earlier run.
void ReadNvramFile(sim::Nvram& nvram) {
  std::ifstream file(g_nvram_file, std::ios::binary);
  if (!file) return;  // there was none
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (bytes.size() != nvram.Content().size()) {
    throw std::runtime_error(g_nvram_file + ": expected the " +
                             std::to_string(nvram.Content().size()) +
                             " bytes of a stored setting, found " + std::to_string(bytes.size()));
  }
  nvram.Write(kNvramBlock, 0, static_cast<std::uint32_t>(bytes.size()),
              reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

void WriteNvramFile(const sim::Nvram& nvram) {
  try {
    files::OutputFile file(g_nvram_file);
    const sim::Bytes& content = nvram.Content();
    file.Stream().write(reinterpret_cast<const char*>(content.data()),
                        static_cast<std::streamsize>(content.size()));
    file.Commit();
  } catch (const std::exception& error) {
    Say(error.what());
  }
}

void MakeBoard(const Settings& settings) {
  const AtBoard at_board;
  sim::World& world = sim::TheWorld();
  world.trace.SetEnabled(false);
  world.windows.keep_received = false;
  settings.MakeBoard();
  world.nvram.MakeDefault(static_cast<std::uint8_t>(kChannelsPerChip * world.board.FittedCount()));
  g_nvram_file = settings.nvram_file;
  if (!g_nvram_file.empty()) ReadNvramFile(world.nvram);
  world.at_attach = sim::TakeSnapshot(world.board);
  SetTexts(settings.texts);
}

void MakeAsSettingsSay() {
  try {
    const Settings settings = ReadSettings();
    MakeBoard(settings);
    if (settings.port) OpenPort(*settings.port);
    if (settings.page) OpenPage(*settings.page);
  } catch (const std::exception& error) {
    Refuse(error.what());
  }
}

}  // namespace

void SwitchOn() {
  static const bool on = (MakeAsSettingsSay(), true);
  static_cast<void>(on);
}

void OpenPages() {
  if (!OpenIoPages({Store, Load, RefuseAccess})) {
    Refuse("the system gives no pages for the bus windows: error " +
           std::to_string(GetLastError()));
  }
}

void* MapWindow(DWORD physical, DWORD bytes, bool cached) {
  const AtBoard at_board;
  if (Plat_MapBusWindow(static_cast<std::uint32_t>(physical), static_cast<std::uint32_t>(bytes),
                        cached) == nullptr) {
    if (BoardKind() == Kind::Real)
      Say("the bus window at " + sim::Hex(physical, 8) + " cannot be mapped");
    SetLastError(static_cast<DWORD>(sim::TheWorld().kernel.LastError()));
    return nullptr;
  }
  return IoPage(
      static_cast<unsigned>(*sim::BusWindows::AtPhysical(static_cast<std::uint32_t>(physical))));
}

void UnmapWindow(void* address, DWORD bytes) {
  const AtBoard at_board;
  const std::optional<unsigned> window = WindowAt(address);
  Plat_UnmapBusWindow(window ? Address(static_cast<int>(*window)) : nullptr,
                      static_cast<std::uint32_t>(bytes));
}

DWORD ReadNvram(DWORD block, void* request) {
  const AtBoard at_board;
  return Plat_NvramRead(static_cast<std::uint32_t>(block), static_cast<PlatNvramRequest*>(request));
}

DWORD WriteNvram(DWORD block, void* request) {
  const AtBoard at_board;
  const std::uint32_t result =
      Plat_NvramWrite(static_cast<std::uint32_t>(block), static_cast<PlatNvramRequest*>(request));
  if (result == 0 && !g_nvram_file.empty()) WriteNvramFile(sim::TheWorld().nvram);
  return result;
}

}  // namespace kit
