// Debug outputs, system error texts, formatting.
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/platform.h"
#include "sim/platform/wide_format.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kErrorModuleNotFound = 126;
constexpr std::uint32_t kErrorNoSuchText = 317;

}  // namespace

void Plat_DebugOutput(const char16_t* text) {
  sim::TheWorld().Record(sim::DebugEvent{false, sim::ToUtf8(text)});
}

void Plat_KernelDebugOutput(const char16_t* text) {
  sim::TheWorld().Record(sim::DebugEvent{true, sim::ToUtf8(text)});
}

// The module is never searched: the system's own texts are asked for, whatever the source.
char16_t* Plat_SystemText(std::uint32_t error_code, PlatHandle) {
  sim::World& world = sim::TheWorld();
  ++world.system_text_asks;
  const bool fails = world.faults.Fires(sim::Fault::Text);
  const auto found = world.system_texts.find(error_code);
  if (fails || found == world.system_texts.end()) {
    world.kernel.SetLastError(kErrorNoSuchText);
    return nullptr;
  }
  const std::u16string text = sim::ToUtf16(found->second);
  const std::size_t bytes = (text.size() + 1) * sizeof(char16_t);
  void* copy = std::malloc(bytes);
  if (copy == nullptr) return nullptr;
  ++world.allocations;
  return static_cast<char16_t*>(std::memcpy(copy, text.c_str(), bytes));
}

void Plat_FreeSystemText(char16_t* text) {
  if (text == nullptr) return;
  --sim::TheWorld().allocations;
  std::free(text);
}

PlatHandle Plat_LoadDataModule(const char16_t* name) {
  sim::Kernel& kernel = sim::TheWorld().kernel;
  const bool fails = sim::TheWorld().faults.Fires(sim::Fault::Module);
  if (!fails && sim::ToLower(sim::ToUtf8(name)) == "netmsg.dll") return kernel.LoadModule(name);
  kernel.SetLastError(kErrorModuleNotFound);
  return kPlatNoHandle;
}

void Plat_FreeModule(PlatHandle module) { sim::TheWorld().kernel.CloseHandle(module); }

std::size_t Plat_FormatV(char16_t* buffer, std::size_t capacity, const char16_t* format,
                         std::va_list arguments) {
  return sim::WideFormatV(buffer, capacity, format, arguments);
}

// The ANSI code page here is Latin-1: a byte is its own code point.
void Plat_WidenAnsi(const char* text, char16_t* buffer, std::size_t capacity) {
  if (capacity == 0) return;
  std::size_t length = 0;
  for (; length + 1 < capacity && text[length] != 0; ++length) {
    buffer[length] = static_cast<unsigned char>(text[length]);
  }
  buffer[length] = 0;
}
