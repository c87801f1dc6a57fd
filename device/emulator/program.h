// A program of the card in a process of its own.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "device/emulator/loader.h"
#include "device/emulator/process.h"

namespace emulator {

class Device;

// The process ends itself; unwinds its thread.
struct ProcessEnded {
  std::uint32_t code;
};

inline constexpr std::uint32_t kStillActive = 259;

class OpenFile;

class Program : public Process {
 public:
  // Loads it with all that it needs. Throws LoaderRefusal.
  Program(Device& device, const std::string& path, std::uint32_t id);
  ~Program() override;

  Program* AsProgram() override { return this; }
  Device& OfDevice() const { return device_; }
  Loader& Modules() { return loader_; }
  // Calls the entries of its libraries and its own in this thread, to the end of the process. The
  // command line has the arguments alone. Returns the exit code, which is kStillActive before.
  std::uint32_t Run(const std::u16string& command_line);
  std::uint32_t ExitCode() const { return exit_code_; }
  const std::string& Path() const { return path_; }

  std::map<std::uint32_t, std::unique_ptr<OpenFile>> files;  // by handle
  std::map<std::u16string, std::uint32_t> window_classes;    // procedures by name in small letters

 protected:
  void ThreadLeft(const Cpu& cpu) override;

 private:
  void CloseAll();
  std::uint32_t RunEntry(Cpu& cpu, const std::u16string& command_line);

  Device& device_;
  Loader loader_;
  std::string path_;
  std::uint32_t exit_code_ = kStillActive;
};

// The program that calls; a call of a library alone is a fault.
Program& CallingProgram(const Cpu& cpu);

}  // namespace emulator
