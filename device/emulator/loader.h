// The system's loader, for one process: which file a name means, what an image needs, the addresses
// of what it imports, and the calls of DLL entries.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/emulator/process.h"

namespace emulator {

class Device;

inline constexpr std::uint32_t kErrorFileNotFound = 2;
inline constexpr std::uint32_t kErrorModuleNotFound = 126;
inline constexpr std::uint32_t kErrorProcedureNotFound = 127;
inline constexpr std::uint32_t kErrorBadImage = 193;
inline constexpr std::uint32_t kErrorEntryFailed = 1114;

// What the loader does not take: the error that the caller gets, and why, for the debug output.
struct LoaderRefusal : std::runtime_error {
  LoaderRefusal(std::uint32_t number, const std::string& text)
      : std::runtime_error(text), error(number) {}
  std::uint32_t error;
};

struct Module {
  std::string path;              // on the device; of the system's own the name alone
  LoadedImage* image = nullptr;  // null: the system's own
  std::uint32_t handle = 0;
  unsigned references = 0;
  bool attached = false;       // its entry was called, and not yet for the end
  bool thread_calls = true;    // its entry hears of threads
  std::vector<Module*> needs;  // what it imports from
};

class Loader {
 public:
  Loader(Device& device, Process& process) : device_(device), process_(process) {}

  // The program itself with all that it needs. Throws LoaderRefusal.
  Module& LoadProgram(const std::string& path);
  // A library by name or path, one reference more. Throws LoaderRefusal; then nothing has changed.
  Module& Load(const std::string& name);
  // Calls the entries of what came lately, each behind what it needs. False when one refuses.
  bool Attach(Cpu& cpu, bool at_start);
  // One reference less; without any its entry is called and it goes.
  void Free(Cpu& cpu, Module& module);
  // At the end of the process.
  void DetachAll(Cpu& cpu);
  // A thread begins (2) or ends (3), and runs on this processor.
  void TellThread(Cpu& cpu, std::uint32_t reason);

  // By handle, 0 for the program; null when there is none.
  Module* Find(std::uint32_t handle);
  // The address of an export; none when there is none.
  std::optional<std::uint32_t> Export(const Module& module, const std::string& name);
  std::optional<std::uint32_t> Export(const Module& module, std::uint32_t ordinal);

 private:
  std::string PathOf(const std::string& name) const;
  Module* Loaded(const std::string& name);
  Module& LoadFile(const std::string& path, ImageKind kind);
  Module& Need(const std::string& name);
  void Bind(Module& module);
  std::uint32_t AddressOf(const Module& from, const ImageImport& import);
  void Release(Cpu* cpu, Module& module);
  std::uint32_t CallEntry(Cpu& cpu, const Module& module, std::uint32_t reason, bool lasting);

  Device& device_;
  Process& process_;
  std::vector<std::unique_ptr<Module>> modules_;  // each behind what it needs
};

}  // namespace emulator
