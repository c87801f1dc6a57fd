#include "device/check/ce/stored_settings.h"

#include "device/check/log_line.h"
#include "device/program/program_api.h"

namespace check {
namespace {

constexpr CeDword kBlock = 1;

// What the memory's library takes.
struct Request {
  std::uint32_t offset;
  std::uint32_t length;
  std::uint8_t* buffer;
  std::uint32_t reserved;
};

using Function = CeDword (*)();
using Transfer = CeDword (*)(CeDword block, void* request);

// Runs a transfer with the library loaded for it by name, so that the program starts without it.
bool Run(const wchar_t* transfer, std::uint8_t* bytes, std::uint32_t length) {
  HINSTANCE__* const module = LoadLibraryW(L"ExtRtcNVramCtl.dll");
  if (module == nullptr) return false;
  const auto begin = reinterpret_cast<Function>(GetProcAddressW(module, L"RTCNVRAM_Init"));
  const auto end = reinterpret_cast<Function>(GetProcAddressW(module, L"RTCNVRAM_DeInit"));
  const auto run = reinterpret_cast<Transfer>(GetProcAddressW(module, transfer));
  bool done = false;
  if (begin != nullptr && end != nullptr && run != nullptr && begin() == 0) {
    Request request = {0, length, bytes, 0};
    done = run(kBlock, &request) == 0;
    end();
  }
  FreeLibrary(module);
  return done;
}

}  // namespace

bool StoredSettings::Read(std::uint8_t* bytes) { return Run(L"RTCNVRAM_Read", bytes, kBytes); }
bool StoredSettings::Write(std::uint8_t* bytes) { return Run(L"RTCNVRAM_Write", bytes, kBytes); }

void StoredSettings::Remember() {
  known_ = Read(bytes_);
  LogLine line(system_, 0, "nvram");
  line.Text(known_ ? "stored" : "unknown");
  if (known_) line.Bytes(bytes_, kBytes);
  line.Write();
  if (known_ && !Write(bytes_)) LogLine(system_, 0, "nvram").Text("unwritable").Write();
}

void StoredSettings::Restore() {
  std::uint8_t now[kBytes] = {};
  if (!known_) return;
  bool same = Read(now);
  for (unsigned i = 0; i < kBytes; ++i) same = same && now[i] == bytes_[i];
  if (same) return;
  changed_ = true;
  const bool back = Write(bytes_);
  LogLine(system_, 0, "nvram").Text(back ? "restored" : "lost").Bytes(now, kBytes).Write();
}

void StoredSettings::Finish() {
  Restore();
  if (known_ && !changed_) LogLine(system_, 0, "nvram").Text("kept").Bytes(bytes_, kBytes).Write();
}

}  // namespace check
