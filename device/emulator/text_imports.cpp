// Texts: debug outputs, formatting, error texts, and the C functions that the system has.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "device/emulator/imports.h"
#include "sim/world.h"

namespace emulator {
namespace {

std::uint32_t Word(std::int64_t value) { return static_cast<std::uint32_t>(value); }

// ---- Debug outputs and formatting ---------------------------------------------------------------

std::uint32_t OutputDebugString(Cpu& cpu) {
  Plat_DebugOutput(cpu.WideText(cpu.Argument(0)).c_str());
  return 0;
}

std::uint32_t KernelDebugPrint(Cpu& cpu) {
  unsigned index = 1;
  const auto next = [&cpu, &index] { return cpu.Argument(index++); };
  const std::u16string text = FormatForGuest(cpu, cpu.WideText(cpu.Argument(0)), next);
  Plat_KernelDebugOutput(text.c_str());
  return 0;
}

// The system's way: a text that does not fit is cut, has no terminator and the result is -1; one
// that just fits has no terminator either.
std::uint32_t FormatWide(Cpu& cpu) {
  const std::uint32_t buffer = cpu.Argument(0);
  const std::uint32_t units = cpu.Argument(1);
  std::uint32_t list = cpu.Argument(3);
  const auto next = [&cpu, &list] {
    list += 4;
    return cpu.ReadWord(list - 4);
  };
  std::u16string text = FormatForGuest(cpu, cpu.WideText(cpu.Argument(2)), next);
  const bool fits = text.size() <= units;
  const std::size_t length = std::min<std::size_t>(text.size(), units);
  const std::size_t copied = std::min<std::size_t>(text.size() + 1, units);
  if (copied != 0) {
    const auto bytes = static_cast<std::uint32_t>(copied * sizeof(char16_t));
    std::memcpy(cpu.Write(buffer, bytes), text.c_str(), bytes);
  }
  return fits ? static_cast<std::uint32_t>(length) : Word(-1);
}

// At most so many units, with the terminator; what is longer is cut.
std::uint32_t FormatWideText(Cpu& cpu) {
  constexpr std::size_t kMostUnits = 1024;
  unsigned index = 2;
  const auto next = [&cpu, &index] { return cpu.Argument(index++); };
  std::u16string text = FormatForGuest(cpu, cpu.WideText(cpu.Argument(1)), next);
  if (text.size() >= kMostUnits) text.resize(kMostUnits - 1);
  const auto bytes = static_cast<std::uint32_t>((text.size() + 1) * sizeof(char16_t));
  std::memcpy(cpu.Write(cpu.Argument(0), bytes), text.c_str(), bytes);
  return static_cast<std::uint32_t>(text.size());
}

// ---- Error texts ------------------------------------------------------------------------------

constexpr std::uint32_t kLanguage = 0x0409;

// 16 bits; the rest of the register is anything.
std::uint32_t SystemLanguage(Cpu&) { return 0xA5A50000 | kLanguage; }

std::uint32_t FormatMessage(Cpu& cpu) {
  constexpr std::uint32_t kAllocated = 0x0100 | 0x1000;  // in the system's memory, its own texts
  if (cpu.Argument(0) != kAllocated || cpu.Argument(3) != kLanguage || cpu.Argument(6) != 0) {
    cpu.Fault("an error text asked for in another way than the system's own");
  }
  char16_t* const text = Plat_SystemText(cpu.Argument(2), HostHandle(cpu.Argument(1)));
  if (text == nullptr) return 0;
  const auto units = static_cast<std::uint32_t>(std::char_traits<char16_t>::length(text));
  const std::uint32_t bytes = (units + 1) * static_cast<std::uint32_t>(sizeof(char16_t));
  const std::uint32_t address = cpu.Owner().Heap().Allocate(bytes);
  if (address == 0) {
    Plat_FreeSystemText(text);
    return 0;
  }
  cpu.Owner().loans[address] = {text, true};
  std::memcpy(cpu.Write(address, bytes), text, bytes);
  cpu.WriteWord(cpu.Argument(4), address);
  return units;
}

std::uint32_t WidenAnsi(Cpu& cpu) {
  constexpr std::uint32_t kWholeText = ~std::uint32_t{0};
  if (cpu.Argument(0) != 0 || cpu.Argument(1) != 0 || cpu.Argument(3) != kWholeText) {
    cpu.Fault("a conversion of something else than a whole ANSI text");
  }
  const std::string text = cpu.Text(cpu.Argument(2));
  const std::uint32_t room = cpu.Argument(5);
  std::u16string wide(text.size() + 1, u'\0');
  Plat_WidenAnsi(text.c_str(), wide.data(), wide.size());
  const auto copied = static_cast<std::uint32_t>(std::min<std::size_t>(wide.size(), room));
  const auto bytes = static_cast<std::uint32_t>(copied * sizeof(char16_t));
  std::memcpy(cpu.Write(cpu.Argument(4), bytes), wide.data(), bytes);
  return copied == wide.size() ? copied : 0;
}

// ---- C functions --------------------------------------------------------------------------------

std::uint32_t StringLength(Cpu& cpu) { return Word(std::ssize(cpu.Text(cpu.Argument(0)))); }

std::uint32_t CompareStrings(Cpu& cpu) {
  return Word(std::strcmp(cpu.Text(cpu.Argument(0)).c_str(), cpu.Text(cpu.Argument(1)).c_str()));
}

std::uint32_t CompareStringStarts(Cpu& cpu) {
  const std::uint32_t most = cpu.Argument(2);
  return Word(std::strncmp(cpu.Text(cpu.Argument(0), most).c_str(),
                           cpu.Text(cpu.Argument(1), most).c_str(), most));
}

std::uint32_t FindString(Cpu& cpu) {
  const std::uint32_t begin = cpu.Argument(0);
  const std::size_t at = cpu.Text(begin).find(cpu.Text(cpu.Argument(1)));
  return at == std::string::npos ? 0 : begin + static_cast<std::uint32_t>(at);
}

// Decimal digits after blanks and a sign; what does not fit wraps.
std::uint32_t TextToInt(Cpu& cpu) {
  const std::string text = cpu.Text(cpu.Argument(0));
  return static_cast<std::uint32_t>(std::atoi(text.c_str()));
}

std::uint32_t CopyMemory(Cpu& cpu) {
  const std::uint32_t bytes = cpu.Argument(2);
  if (bytes != 0) {
    std::memmove(cpu.Write(cpu.Argument(0), bytes), cpu.Read(cpu.Argument(1), bytes), bytes);
  }
  return cpu.Argument(0);
}

std::uint32_t FillMemory(Cpu& cpu) {
  const std::uint32_t bytes = cpu.Argument(2);
  if (bytes != 0) {
    std::memset(cpu.Write(cpu.Argument(0), bytes), static_cast<int>(cpu.Argument(1) & 0xFF), bytes);
  }
  return cpu.Argument(0);
}

std::uint32_t CompareMemory(Cpu& cpu) {
  const std::uint32_t bytes = cpu.Argument(2);
  if (bytes == 0) return 0;
  return Word(
      std::memcmp(cpu.Read(cpu.Argument(0), bytes), cpu.Read(cpu.Argument(1), bytes), bytes));
}

constexpr Import kTextImports[] = {
    {kCoreDll, "OutputDebugStringW", 0, OutputDebugString},
    {kCoreDll, "NKDbgPrintfW", 0, KernelDebugPrint},
    {kCoreDll, "_vsnwprintf", 0, FormatWide},
    {kCoreDll, "wsprintfW", 0, FormatWideText},
    {kCoreDll, "GetSystemDefaultLangID", 0, SystemLanguage},
    {kCoreDll, "FormatMessageW", 0, FormatMessage},
    {kCoreDll, "MultiByteToWideChar", 0, WidenAnsi},
    {kCoreDll, "strlen", 0, StringLength},
    {kCoreDll, "strcmp", 0, CompareStrings},
    {kCoreDll, "strncmp", 0, CompareStringStarts},
    {kCoreDll, "strstr", 0, FindString},
    {kCoreDll, "atoi", 0, TextToInt},
    {kCoreDll, "memcpy", 0, CopyMemory},
    {kCoreDll, "memmove", 0, CopyMemory},
    {kCoreDll, "memset", 0, FillMemory},
    {kCoreDll, "memcmp", 0, CompareMemory},
};

}  // namespace

std::span<const Import> TextImports() { return kTextImports; }

ImportHandler FindImport(const ImageImport& import) {
  for (const auto& imports : {KernelImports(), LockImports(), DeviceImports(), TextImports(),
                              ModuleImports(), FileImports(), WindowImports(), MessageImports()}) {
    for (const Import& known : imports) {
      const bool named = known.name != nullptr && import.name == known.name;
      const bool numbered =
          known.name == nullptr && import.name.empty() && import.ordinal == known.ordinal;
      if (import.dll == known.dll && (named || numbered)) return known.handler;
    }
  }
  return nullptr;
}

}  // namespace emulator
