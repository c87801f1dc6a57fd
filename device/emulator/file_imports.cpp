// Files of the card.
#include "device/emulator/device.h"
#include "device/emulator/imports.h"
#include "device/emulator/open_file.h"
#include "device/emulator/program.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kNoHandle = 0xFFFFFFFF;
constexpr std::uint32_t kErrorPathNotFound = 3;
constexpr std::uint32_t kErrorAccessDenied = 5;
constexpr std::uint32_t kErrorFileExists = 80;
constexpr std::uint32_t kErrorInvalidParameter = 87;
constexpr std::uint32_t kErrorAlreadyExists = 183;

enum Disposition : std::uint32_t {
  kCreateNew = 1,
  kCreateAlways = 2,
  kOpenExisting = 3,
  kOpenAlways = 4,
  kTruncateExisting = 5,
};

OpenFile* FileOf(const Cpu& cpu, std::uint32_t handle) {
  auto& files = CallingProgram(cpu).files;
  const auto found = files.find(handle);
  return found == files.end() ? nullptr : found->second.get();
}

// Which bytes went is written even where it was none.
std::uint32_t ReadFile(Cpu& cpu) {
  OpenFile* const file = FileOf(cpu, cpu.Argument(0));
  const std::uint32_t bytes = cpu.Argument(2);
  Expect(cpu, cpu.Argument(3) != 0 && cpu.Argument(4) == 0, "no place for a count, or overlapped");
  cpu.WriteWord(cpu.Argument(3), 0);
  if (file == nullptr) return Fail(kErrorInvalidHandle);
  if (bytes == 0) return 1;
  const auto count = file->Read({cpu.Write(cpu.Argument(1), bytes), bytes});
  if (!count) return Fail(kErrorAccessDenied);
  cpu.WriteWord(cpu.Argument(3), *count);
  return 1;
}

std::uint32_t WriteFile(Cpu& cpu) {
  OpenFile* const file = FileOf(cpu, cpu.Argument(0));
  const std::uint32_t bytes = cpu.Argument(2);
  Expect(cpu, cpu.Argument(3) != 0 && cpu.Argument(4) == 0, "no place for a count, or overlapped");
  cpu.WriteWord(cpu.Argument(3), 0);
  if (file == nullptr) return Fail(kErrorInvalidHandle);
  if (bytes == 0) return 1;
  const auto count = file->Write({cpu.Read(cpu.Argument(1), bytes), bytes});
  if (!count) return Fail(kErrorAccessDenied);
  cpu.WriteWord(cpu.Argument(3), *count);
  return 1;
}

std::uint32_t FlushFileBuffers(Cpu& cpu) {
  return FileOf(cpu, cpu.Argument(0)) != nullptr ? 1 : Fail(kErrorInvalidHandle);
}

std::uint32_t GetFileSize(Cpu& cpu) {
  const OpenFile* const file = FileOf(cpu, cpu.Argument(0));
  if (cpu.Argument(1) != 0) cpu.WriteWord(cpu.Argument(1), 0);
  const auto bytes = file == nullptr ? std::nullopt : file->Bytes();
  if (bytes) return *bytes;
  Fail(kErrorInvalidHandle);
  return kNoHandle;
}

constexpr Import kFileImports[] = {
    {kCoreDll, "ReadFile", 0, ReadFile},
    {kCoreDll, "WriteFile", 0, WriteFile},
    {kCoreDll, "FlushFileBuffers", 0, FlushFileBuffers},
    {kCoreDll, "GetFileSize", 0, GetFileSize},
};

}  // namespace

std::span<const Import> FileImports() { return kFileImports; }

std::uint32_t OpenCardFile(Cpu& cpu, const std::string& path) {
  constexpr std::uint32_t kRead = 0x80000000;
  constexpr std::uint32_t kWrite = 0x40000000;
  Program& program = CallingProgram(cpu);
  const std::uint32_t access = cpu.Argument(1);
  const std::uint32_t disposition = cpu.Argument(4);
  Expect(cpu, cpu.Argument(3) == 0 && cpu.Argument(6) == 0, "a secured file, or one like another");
  const auto fail = [](std::uint32_t error) {
    Fail(error);
    return kNoHandle;
  };
  if (disposition < kCreateNew || disposition > kTruncateExisting) {
    return fail(kErrorInvalidParameter);
  }
  const Card& card = program.OfDevice().Files();
  const auto place = card.Place(path);
  if (!place) return fail(kErrorPathNotFound);
  const bool there = card.Find(path).has_value();
  const bool must_be_there = disposition == kOpenExisting || disposition == kTruncateExisting;
  if (!there && must_be_there) return fail(kErrorFileNotFound);
  if (there && disposition == kCreateNew) return fail(kErrorFileExists);
  auto file = OpenFile::Open(
      *place, {.read = (access & kRead) != 0,
               .write = (access & kWrite) != 0,
               .create = !must_be_there,
               .truncate = disposition == kCreateAlways || disposition == kTruncateExisting});
  if (file == nullptr) return fail(kErrorAccessDenied);
  sim::Kernel& kernel = sim::TheWorld().kernel;
  const bool told = there && (disposition == kCreateAlways || disposition == kOpenAlways);
  kernel.SetLastError(told ? kErrorAlreadyExists : 0);
  const std::uint32_t handle = GuestHandle(cpu, kernel.NewHandleValue());
  program.files[handle] = std::move(file);
  return handle;
}

bool CloseCardFile(const Cpu& cpu, std::uint32_t handle) {
  Program* const program = cpu.Owner().AsProgram();
  return program != nullptr && program->files.erase(handle) != 0;
}

}  // namespace emulator
