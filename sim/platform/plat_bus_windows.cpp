// The bus windows: mapping, and byte access as cycles of the simulated bus.
#include <array>

#include "platform/platform.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kErrorInvalidAddress = 487;
constexpr std::uint8_t kIdleBus = 0xFF;

// By window.
constexpr std::array kMappingFaults = {sim::Fault::MapSelect, sim::Fault::MapAddress,
                                       sim::Fault::MapData};
static_assert(kMappingFaults.size() == sim::BusWindows::kCount);

bool CanBeMapped(sim::BusWindow window) {
  return !sim::TheWorld().faults.Fires(kMappingFaults.at(static_cast<std::size_t>(window)));
}

void ReportUnmapped(sim::Report::Access access) {
  sim::TheWorld().reports.Add({.kind = sim::ReportKind::UnmappedAccess, .access = access});
}

void NotePolling(sim::World& world, bool load, sim::BusWindow window, std::uint8_t value) {
  if (world.kernel.Current() == sim::By::Host) world.polling.OnCycle(load, window, value);
}

// Accesses that meet no window take their place among the cycles all the same: who polls there
// polls for ever.
std::uint8_t LoadNothing(sim::World& world) {
  ReportUnmapped(sim::Report::Access::Read);
  NotePolling(world, true, sim::BusWindow::Data, kIdleBus);
  world.kernel.AtBusCycle();
  return kIdleBus;
}

}  // namespace

PlatBusWindow Plat_MapBusWindow(std::uint32_t physical, std::uint32_t length_bytes, bool cached) {
  sim::World& world = sim::TheWorld();
  const auto window = sim::BusWindows::AtPhysical(physical);
  const bool ok = window && CanBeMapped(*window);
  world.Record(sim::MapEvent{physical, length_bytes, cached, ok});
  if (!ok) {
    world.kernel.SetLastError(kErrorInvalidAddress);
    return nullptr;
  }
  world.bus_windows.Map(*window);
  return sim::BusWindows::Address(*window);
}

void Plat_UnmapBusWindow(PlatBusWindow window, std::uint32_t) {
  sim::World& world = sim::TheWorld();
  const auto found = world.bus_windows.Find(window);
  if (!found) {
    ReportUnmapped(sim::Report::Access::Unmap);
    return;
  }
  world.bus_windows.Unmap(*found);
  world.Record(sim::UnmapEvent{*found});
}

void Plat_StoreByte(PlatBusWindow window, std::uint8_t value) {
  sim::World& world = sim::TheWorld();
  const auto found = world.bus_windows.Find(window);
  if (!found) {
    ReportUnmapped(sim::Report::Access::Write);
    return;
  }
  // What the processor did is told and traced also when no chip takes it.
  if (!world.faults.Fires(sim::Fault::Store)) {
    world.board.Store(*found, value);  // before anybody hears of it
  }
  NotePolling(world, false, *found, value);
  world.trace.AddCycle(world.kernel.Now(), world.kernel.Current(), false, *found, value);
  world.kernel.AtBusCycle();
}

std::uint8_t Plat_LoadByte(PlatBusWindow window) {
  sim::World& world = sim::TheWorld();
  const auto found = world.bus_windows.Find(window);
  if (!found) return LoadNothing(world);
  const std::uint8_t value =
      world.faults.Fires(sim::Fault::Load) ? kIdleBus : world.board.Load(*found);
  NotePolling(world, true, *found, value);
  world.trace.AddCycle(world.kernel.Now(), world.kernel.Current(), true, *found, value);
  world.kernel.AtBusCycle();
  return value;
}
