// The whole emulated device: a card, the processes of its programs, and what they have in common.
// It stands upon the simulated PC as it is when the device is made.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "device/emulator/card.h"
#include "device/emulator/program.h"
#include "device/emulator/windows.h"

namespace emulator {

// What may be wrong with a device's system.
struct DeviceOptions {
  std::set<std::string> without_imports = {};  // names that its libraries lack; #8: an ordinal
  bool thumb_alone = false;                    // its loader takes machine 0x01C2 and no other
  bool unshared = false;                       // each process has its own copy of a shared section
  bool base_taken = false;                     // a library cannot lie where it wants
};

// The files whose version programs can ask for are those of the card and no others.
void ShowVersionsOf(const Card& card);

class Device {
 public:
  explicit Device(const std::string& card, DeviceOptions options = {});
  // Ends the threads that are left, and with them the simulated PC.
  ~Device();
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  // Runs a program of the card until it ends, and returns its exit code. This thread is its first
  // one. Throws LoaderRefusal, harness::ImageFault, and whatever the platform throws.
  std::uint32_t Run(const std::string& program, const std::string& arguments);

  // ---- For its programs -------------------------------------------------------------------------

  const Card& Files() const { return card_; }
  bool Lacks(const std::string& name) const { return options_.without_imports.contains(name); }
  // Writes a line to the system's own debug output.
  static void Tell(const std::string& line);
  // Throws BadImage, also for a machine number that the system does not take.
  PeImage Read(const std::filesystem::path& file, ImageKind kind) const;
  // Where an image goes: a library has the same place in every process. Throws BadImage.
  std::uint32_t BaseFor(const std::string& path, const PeImage& image, ImageKind kind);
  // The memory of a shared section, with its first content; null when nothing is shared.
  std::shared_ptr<GuestPages> Shared(const std::string& path, const PeImage& image,
                                     std::size_t section);
  std::uint32_t NewModuleHandle() { return next_module_ += 0x400; }

  // A program in a second process, whose first thread is another host thread; the handle is
  // signalled at its end. Throws LoaderRefusal.
  Program& Start(const std::string& path, const std::u16string& command_line,
                 std::uint32_t* handle);
  // By handle, null when there is none.
  const Program* ProcessOf(std::uint32_t handle) const;
  // All that were started, in order; they stay when they have ended.
  const std::vector<std::unique_ptr<Program>>& Programs() const { return programs_; }
  unsigned NumberOf(const Program& program) const;  // from 1
  std::function<void(const Program&)> on_end;       // hears of each that has ended

  DeviceWindows& Windows() { return windows_; }

 private:
  Card card_;
  DeviceOptions options_;
  DeviceWindows windows_;
  std::vector<std::unique_ptr<Program>> programs_;
  std::map<std::uint32_t, const Program*> process_of_;  // by handle
  struct Place {
    std::uint32_t base = 0;
    std::uint32_t bytes = 0;
  };
  std::map<std::string, Place> places_;  // of libraries, by path in small letters
  std::uint32_t next_base_;
  std::map<std::pair<std::string, std::size_t>, std::weak_ptr<GuestPages>> shared_;
  std::uint32_t next_module_ = 0x83F00000;  // a module's handle is no address that code may use
  std::uint32_t next_process_ = 0x22000000;
};

}  // namespace emulator
