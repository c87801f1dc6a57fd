// NVRAM and stream drivers.
#include "platform/platform.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kErrorFileNotFound = 2;
constexpr std::uint32_t kErrorInvalidHandle = 6;
constexpr std::uint32_t kErrorInvalidParameter = 87;

std::uint32_t RecordSwitch(const char* op, sim::Fault fault) {
  sim::World& world = sim::TheWorld();
  sim::NvramEvent event;
  event.op = op;
  event.ok = !world.faults.Fires(fault);
  world.Record(event);
  return event.ok ? 0 : world.nvram.failed_result;
}

std::uint32_t Transfer(const char* op, sim::Fault fault, std::uint32_t block,
                       const PlatNvramRequest* request) {
  sim::World& world = sim::TheWorld();
  const bool fails = world.faults.Fires(fault);
  sim::NvramEvent event;
  event.op = op;
  event.block = block;
  if (request != nullptr && request->buffer != nullptr) {
    const bool write = event.op == "write";
    event.offset = request->offset;
    event.length = request->length;
    const std::uint32_t offset = request->offset;
    const std::uint32_t length = request->length;
    event.ok = !fails && request->reserved == 0 &&
               (write ? world.nvram.Write(block, offset, length, request->buffer)
                      : world.nvram.Read(block, offset, length, request->buffer));
    // A failed read has no data; a failed write shows what should have been written.
    if (event.ok || write) event.data.assign(request->buffer, request->buffer + request->length);
  }
  world.Record(event);
  return event.ok ? 0 : world.nvram.failed_result;
}

}  // namespace

std::uint32_t Plat_NvramInit() { return RecordSwitch("init", sim::Fault::NvramInit); }
std::uint32_t Plat_NvramDeinit() { return RecordSwitch("deinit", sim::Fault::NvramDeinit); }

std::uint32_t Plat_NvramRead(std::uint32_t block, PlatNvramRequest* request) {
  return Transfer("read", sim::Fault::NvramRead, block, request);
}

std::uint32_t Plat_NvramWrite(std::uint32_t block, PlatNvramRequest* request) {
  return Transfer("write", sim::Fault::NvramWrite, block, request);
}

PlatHandle Plat_OpenDriver(const char16_t* name, std::uint32_t access, std::uint32_t share,
                           std::uint32_t disposition) {
  sim::World& world = sim::TheWorld();
  const std::string driver = sim::ToUtf8(name);
  const PlatHandle handle = world.faults.Fires(sim::Fault::DriverOpen)
                                ? kPlatInvalidHandle
                                : world.drivers.Open(driver, world.kernel.NewHandleValue());
  const bool ok = handle != kPlatNoHandle && handle != kPlatInvalidHandle;
  world.Record(sim::OpenEvent{driver, access, share, disposition, ok});
  if (!ok) world.kernel.SetLastError(kErrorFileNotFound);
  return handle;
}

bool Plat_ControlDriver(PlatHandle driver, std::uint32_t code, const void* input,
                        std::uint32_t input_bytes) {
  sim::World& world = sim::TheWorld();
  sim::IoctlEvent event;
  // A length without bytes is nothing that a driver could read.
  const bool readable = input != nullptr || input_bytes == 0;
  event.ok = !world.faults.Fires(sim::Fault::DriverControl) &&
             world.drivers.Find(driver) != nullptr && readable;
  event.name = world.drivers.NameOf(driver);
  event.code = code;
  if (input != nullptr) {
    const auto* bytes = static_cast<const std::uint8_t*>(input);
    event.in.assign(bytes, bytes + input_bytes);
  }
  world.Record(event);
  if (!event.ok) {
    world.kernel.SetLastError(readable ? kErrorInvalidHandle : kErrorInvalidParameter);
  }
  return event.ok;
}

bool Plat_CloseDriver(PlatHandle driver) {
  sim::World& world = sim::TheWorld();
  const std::string name = world.drivers.NameOf(driver);
  const bool ok = !world.faults.Fires(sim::Fault::DriverClose) && world.drivers.Close(driver);
  world.Record(sim::CloseEvent{name, ok});
  if (!ok) world.kernel.SetLastError(kErrorInvalidHandle);
  return ok;
}
