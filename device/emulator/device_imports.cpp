// Bus windows, NVRAM, stream drivers, version resources.
#include <array>
#include <cstring>

#include "device/emulator/imports.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr const char* kDriverKitDll = "ceddk.dll";
constexpr const char* kNvramDll = "extrtcnvramctl.dll";

// ---- Bus windows ------------------------------------------------------------------------------

constexpr std::uint32_t kMapOrdinal = 8;
constexpr std::uint32_t kUnmapOrdinal = 9;

std::uint32_t MapIoSpace(Cpu& cpu) {
  if (cpu.Argument(1) != 0) cpu.Fault("a physical address beyond 4 GB");
  volatile std::uint8_t* const window =
      Plat_MapBusWindow(cpu.Argument(0), cpu.Argument(2), (cpu.Argument(3) & 0xFF) != 0);
  if (window == nullptr) return 0;
  for (unsigned page = 0; page < sim::BusWindows::kCount; ++page) {
    if (Process::WindowAt(Process::PortAddress(page)) == window) {
      return Process::PortAddress(page);
    }
  }
  cpu.Fault("a bus window without a page");
}

std::uint32_t UnmapIoSpace(Cpu& cpu) {
  Plat_UnmapBusWindow(Process::WindowAt(cpu.Argument(0)), cpu.Argument(1));
  return 0;
}

// ---- NVRAM ------------------------------------------------------------------------------------

std::uint32_t Transfer(Cpu& cpu, std::uint32_t (*transfer)(std::uint32_t, PlatNvramRequest*),
                       bool write) {
  const std::uint32_t block = cpu.Argument(0);
  const std::uint32_t address = cpu.Argument(1);
  if (address == 0) return transfer(block, nullptr);
  PlatNvramRequest request{cpu.ReadWord(address), cpu.ReadWord(address + 4), nullptr,
                           cpu.ReadWord(address + 12)};
  const std::uint32_t buffer = cpu.ReadWord(address + 8);
  if (buffer != 0) {
    // The NVRAM library takes the buffer as writable for both.
    request.buffer = write ? const_cast<std::uint8_t*>(cpu.Read(buffer, request.length))
                           : cpu.Write(buffer, request.length);
  }
  return transfer(block, &request);
}

std::uint32_t NvramInit(Cpu&) { return Plat_NvramInit(); }
std::uint32_t NvramDeinit(Cpu&) { return Plat_NvramDeinit(); }
std::uint32_t NvramRead(Cpu& cpu) { return Transfer(cpu, Plat_NvramRead, false); }
std::uint32_t NvramWrite(Cpu& cpu) { return Transfer(cpu, Plat_NvramWrite, true); }

// ---- Stream drivers ---------------------------------------------------------------------------

std::uint32_t CreateFile(Cpu& cpu) {
  const std::string path = Narrow(cpu, cpu.Argument(0));
  if (!path.ends_with(':')) return OpenCardFile(cpu, path);
  if (cpu.Argument(3) != 0 || cpu.Argument(5) != 0 || cpu.Argument(6) != 0) {
    cpu.Fault("a driver opened with security, attributes or a model");
  }
  const std::u16string name = cpu.WideText(cpu.Argument(0));
  const PlatHandle handle =
      Plat_OpenDriver(name.c_str(), cpu.Argument(1), cpu.Argument(2), cpu.Argument(4));
  if (handle != kPlatNoHandle && handle != kPlatInvalidHandle) {
    cpu.Owner().drivers.insert(handle);
  }
  return GuestHandle(cpu, handle);
}

std::uint32_t ControlDriver(Cpu& cpu) {
  const std::uint32_t input = cpu.Argument(2);
  const std::uint32_t input_bytes = cpu.Argument(3);
  const std::uint32_t returned = cpu.Argument(6);
  if (cpu.Argument(4) != 0 || cpu.Argument(5) != 0 || cpu.Argument(7) != 0) {
    cpu.Fault("a driver request with an output or overlapped");
  }
  // The system writes the count even where nothing is returned.
  if (returned == 0) cpu.Fault("a driver request without a place for the returned count");
  cpu.WriteWord(returned, 0);
  // The record goes to the driver where it lies, which reads it word by word.
  if (input % 4 != 0) cpu.Fault("a driver's record at " + sim::Hex(input, 8) + ", not of words");
  const void* const record = input == 0 ? nullptr : cpu.Read(input, input_bytes);
  return Plat_ControlDriver(HostHandle(cpu.Argument(0)), cpu.Argument(1), record, input_bytes) ? 1
                                                                                               : 0;
}

std::uint32_t LoadLibraryEx(Cpu& cpu) {
  constexpr std::uint32_t kDataAlone = 1;
  Expect(cpu, cpu.Argument(1) == 0 && cpu.Argument(2) == kDataAlone, "a module loaded to be run");
  return GuestHandle(cpu, Plat_LoadDataModule(cpu.WideText(cpu.Argument(0)).c_str()));
}

std::uint32_t FreeLibrary(Cpu& cpu) {
  if (FreeProgramModule(cpu, cpu.Argument(0))) return 1;
  Plat_FreeModule(HostHandle(cpu.Argument(0)));
  return 1;
}

// ---- Version resources ------------------------------------------------------------------------

// Where the system keeps the fixed information in what it reads.
constexpr std::uint32_t kFixedInfoOffset = 0x28;
constexpr std::uint32_t kFixedInfoSignature = 0xFEEF04BD;
constexpr std::uint32_t kFixedInfoBytes = 52;

std::uint32_t VersionInfoSize(Cpu& cpu) {
  const std::u16string path = cpu.WideText(cpu.Argument(0));
  if (cpu.Argument(1) != 0) cpu.WriteWord(cpu.Argument(1), 0);
  return Plat_VersionInfoSize(path.c_str());
}

std::uint32_t ReadVersionInfo(Cpu& cpu) {
  const std::u16string path = cpu.WideText(cpu.Argument(0));
  const std::uint32_t bytes = cpu.Argument(2);
  Expect(cpu, cpu.Argument(3) % 4 == 0, "version information that is not at a whole word");
  return Plat_ReadVersionInfo(path.c_str(), bytes, cpu.Write(cpu.Argument(3), bytes)) ? 1 : 0;
}

std::uint32_t QueryVersion(Cpu& cpu) {
  const std::uint32_t buffer = cpu.Argument(0);
  if (cpu.WideText(cpu.Argument(1)) != u"\\") cpu.Fault("a version block other than the root");
  std::uint8_t* const info = cpu.Write(buffer, kFixedInfoOffset + kFixedInfoBytes);
  PlatFileVersion version{};
  if (!Plat_QueryVersionRoot(info, &version)) return 0;
  const std::array<std::uint32_t, 4> fixed = {kFixedInfoSignature, 0x00010000,
                                              version.most_significant, version.least_significant};
  std::memcpy(info + kFixedInfoOffset, fixed.data(), sizeof(fixed));
  cpu.WriteWord(cpu.Argument(2), buffer + kFixedInfoOffset);
  cpu.WriteWord(cpu.Argument(3), kFixedInfoBytes);
  return 1;
}

constexpr Import kDeviceImports[] = {
    {kDriverKitDll, nullptr, kMapOrdinal, MapIoSpace},
    {kDriverKitDll, nullptr, kUnmapOrdinal, UnmapIoSpace},
    {kNvramDll, "RTCNVRAM_Init", 0, NvramInit},
    {kNvramDll, "RTCNVRAM_DeInit", 0, NvramDeinit},
    {kNvramDll, "RTCNVRAM_Read", 0, NvramRead},
    {kNvramDll, "RTCNVRAM_Write", 0, NvramWrite},
    {kCoreDll, "CreateFileW", 0, CreateFile},
    {kCoreDll, "DeviceIoControl", 0, ControlDriver},
    {kCoreDll, "LoadLibraryExW", 0, LoadLibraryEx},
    {kCoreDll, "FreeLibrary", 0, FreeLibrary},
    {kCoreDll, "GetFileVersionInfoSizeW", 0, VersionInfoSize},
    {kCoreDll, "GetFileVersionInfoW", 0, ReadVersionInfo},
    {kCoreDll, "VerQueryValueW", 0, QueryVersion},
};

}  // namespace

std::span<const Import> DeviceImports() { return kDeviceImports; }

}  // namespace emulator
