// The bus windows: mapping, and byte access as cycles of the simulated bus.
#include "platform/platform.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kErrorInvalidAddress = 487;

sim::Fault MappingFault(sim::BusWindow window) {
  switch (window) {
    case sim::BusWindow::Select:
      return sim::Fault::MapSelect;
    case sim::BusWindow::Address:
      return sim::Fault::MapAddress;
    default:
      return sim::Fault::MapData;
  }
}

}  // namespace

PlatBusWindow Plat_MapBusWindow(std::uint32_t physical, std::uint32_t length_bytes, bool cached) {
  sim::World& world = sim::TheWorld();
  const auto window = sim::BusWindows::AtPhysical(physical);
  const bool ok = window && !world.faults.Fires(MappingFault(*window));
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
    world.reports.Add(sim::ReportKind::UnmappedAccess, "unmapping a window that is not mapped");
    return;
  }
  world.bus_windows.Unmap(*found);
  world.Record(sim::UnmapEvent{*found});
}

void Plat_StoreByte(PlatBusWindow window, std::uint8_t value) {
  sim::World& world = sim::TheWorld();
  const auto found = world.bus_windows.Find(window);
  if (!found) {
    world.reports.Add(sim::ReportKind::UnmappedAccess, "a store to a window that is not mapped");
    return;
  }
  world.trace.AddCycle(world.kernel.Now(), world.kernel.Current(), false, *found, value);
  world.board.Store(*found, value);
  world.kernel.AtBusCycle();
}

std::uint8_t Plat_LoadByte(PlatBusWindow window) {
  sim::World& world = sim::TheWorld();
  const auto found = world.bus_windows.Find(window);
  if (!found) {
    world.reports.Add(sim::ReportKind::UnmappedAccess, "a load from a window that is not mapped");
    return 0xFF;
  }
  const std::uint8_t value = world.board.Load(*found);
  world.trace.AddCycle(world.kernel.Now(), world.kernel.Current(), true, *found, value);
  world.kernel.AtBusCycle();
  return value;
}
