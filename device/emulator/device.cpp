#include "device/emulator/device.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "files/input.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kGranule = 0x10000;
// A process has 32 MB: the program at the bottom, libraries from the top down.
constexpr std::uint32_t kProgramBase = 0x00010000;
constexpr std::uint32_t kSlotEnd = 0x02000000;
constexpr std::size_t kMostFileBytes = std::size_t{32} << 20;

std::string FromRoot(const std::string& path) { return path.find('\\') == 0 ? path : '\\' + path; }

}  // namespace

void ShowVersionsOf(const Card& card) {
  namespace fs = std::filesystem;
  sim::Files& known = sim::TheWorld().files;
  while (!known.All().empty()) known.Remove(std::string(known.All().begin()->first));
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(card.Folder())) {
    const std::string ending = sim::ToLower(entry.path().extension().string());
    if (!entry.is_regular_file() || (ending != ".dll" && ending != ".exe")) continue;
    const ImageKind kind = ending == ".exe" ? ImageKind::Program : ImageKind::Library;
    try {
      const PeImage image = PeImage::Load(entry.path().string(), kind);
      if (!image.Version()) continue;
      sim::VersionFile file;
      file.version = *image.Version();
      known.Set(card.PathOf(entry.path()), file);
    } catch (const BadImage&) {
      continue;  // it has none that could be read
    }
  }
}

Device::Device(const std::string& card, DeviceOptions options)
    : card_(card), options_(std::move(options)), next_base_(kSlotEnd) {
  sim::World& world = sim::TheWorld();
  world.nvram.MakeDefault(static_cast<std::uint8_t>(kChannelsPerChip * world.board.FittedCount()));
  world.kernel.LetThreadsWakeOthers();
  world.windows.procedure = [this](PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                                   std::intptr_t lparam) {
    windows_.Receive({window, message, wparam, lparam});
  };
}

Device::~Device() { sim::ResetWorld(); }

std::uint32_t Device::Run(const std::string& program, const std::string& arguments) {
  try {
    programs_.push_back(std::make_unique<Program>(*this, FromRoot(program), next_process_ += 2));
  } catch (const LoaderRefusal& refusal) {
    Tell(std::string(refusal.what()) + ": error " + std::to_string(refusal.error));
    throw;
  }
  Program& first = *programs_.back();
  const std::uint32_t code = first.Run(sim::ToUtf16(arguments));
  if (on_end) on_end(first);
  for (const auto& each : programs_) {
    if (each->Fault()) throw harness::ImageFault(*each->Fault());
  }
  return code;
}

void Device::Tell(const std::string& line) {
  Plat_KernelDebugOutput(sim::ToUtf16("loader: " + line + "\r\n").c_str());
}

PeImage Device::Read(const std::filesystem::path& file, ImageKind kind) const {
  constexpr std::uint16_t kThumb = 0x01C2;
  PeImage image;
  try {
    image = PeImage::Parse(files::ReadBytes(file.string(), kMostFileBytes), kind);
  } catch (const files::FileError& error) {
    throw BadImage(error.what());
  }
  if (options_.thumb_alone && image.MachineNumber() != kThumb) {
    throw BadImage("machine " + sim::Hex(image.MachineNumber(), 4) + ", and the system takes " +
                   sim::Hex(kThumb, 4) + " alone");
  }
  return image;
}

std::uint32_t Device::BaseFor(const std::string& path, const PeImage& image, ImageKind kind) {
  if (kind == ImageKind::Program) {
    if (!image.Relocatable() && image.PreferredBase() != kProgramBase) {
      throw BadImage("wants to lie at " + sim::Hex(image.PreferredBase(), 8) +
                     " and has no relocations");
    }
    return kProgramBase;
  }
  const auto known = places_.find(sim::ToLower(path));
  if (known != places_.end()) return known->second.base;
  const std::uint32_t bytes = (image.Bytes() + kGranule - 1) / kGranule * kGranule;
  std::uint32_t base = image.PreferredBase();
  const bool free = !options_.base_taken && base >= kSlotEnd && base < kImageLimit &&
                    bytes <= kImageLimit - base &&
                    std::none_of(places_.begin(), places_.end(), [=](const auto& other) {
                      const Place& place = other.second;
                      return base < place.base + place.bytes && place.base < base + bytes;
                    });
  if (!free) {
    if (bytes > next_base_ - kSlotEnd / 2) throw BadImage("no room in the process");
    base = next_base_ -= bytes;
  }
  places_[sim::ToLower(path)] = {base, bytes};
  return base;
}

std::shared_ptr<GuestPages> Device::Shared(const std::string& path, const PeImage& image,
                                           std::size_t section) {
  if (options_.unshared) return nullptr;
  std::weak_ptr<GuestPages>& known = shared_[{sim::ToLower(path), section}];
  if (auto pages = known.lock()) return pages;
  const ImageSection& of = image.Sections()[section];
  auto pages = std::make_shared<GuestPages>(of.bytes);
  const std::vector<std::uint8_t> content = image.At(places_.at(sim::ToLower(path)).base);
  std::memcpy(pages->Data(), &content[of.rva], of.bytes);
  known = pages;
  return pages;
}

// ---- Processes ----------------------------------------------------------------------------------

Program& Device::Start(const std::string& path, const std::u16string& command_line,
                       std::uint32_t* handle) {
  auto made = std::make_unique<Program>(*this, FromRoot(path), next_process_ += 2);
  Program& program = *made;
  sim::Kernel& kernel = sim::TheWorld().kernel;
  const PlatHandle end = kernel.CreateEvent(nullptr, true, false);
  *handle = static_cast<std::uint32_t>(end);
  programs_.push_back(std::move(made));
  process_of_[*handle] = &program;
  kernel.StartHostThread([this, &program, &kernel, command_line, end] {
    program.Run(command_line);
    if (on_end) on_end(program);
    kernel.SetEvent(end);
  });
  return program;
}

unsigned Device::NumberOf(const Program& program) const {
  const auto found = std::find_if(programs_.begin(), programs_.end(),
                                  [&program](const auto& one) { return one.get() == &program; });
  return static_cast<unsigned>(found - programs_.begin()) + 1;
}

const Program* Device::ProcessOf(std::uint32_t handle) const {
  const auto found = process_of_.find(handle);
  return found == process_of_.end() ? nullptr : found->second;
}

}  // namespace emulator
