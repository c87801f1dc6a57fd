// Debug outputs, system error texts, formatting.
#include "ce_api.h"
#include "platform/platform.h"

namespace {

const wchar_t* Wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }
wchar_t* Wide(char16_t* text) { return reinterpret_cast<wchar_t*>(text); }

}  // namespace

void Plat_DebugOutput(const char16_t* text) { OutputDebugStringW(Wide(text)); }
void Plat_KernelDebugOutput(const char16_t* text) { NKDbgPrintfW(L"%s", Wide(text)); }

char16_t* Plat_SystemText(std::uint32_t error_code, PlatHandle module) {
  wchar_t* text = nullptr;
  // With this flag the buffer argument is where the address of the system's own buffer goes.
  const CeDword units = FormatMessageW(
      kCeAllocateText | kCeTextFromSystem, reinterpret_cast<const void*>(module), error_code,
      GetSystemDefaultLangID(), reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  return units == 0 ? nullptr : reinterpret_cast<char16_t*>(text);
}

void Plat_FreeSystemText(char16_t* text) { LocalFree(text); }

PlatHandle Plat_LoadDataModule(const char16_t* name) {
  return reinterpret_cast<PlatHandle>(
      LoadLibraryExW(Wide(name), nullptr, kCeLoadWithoutReferences));
}

void Plat_FreeModule(PlatHandle module) { FreeLibrary(reinterpret_cast<HINSTANCE__*>(module)); }

std::size_t Plat_FormatV(char16_t* buffer, std::size_t capacity, const char16_t* format,
                         std::va_list arguments) {
  if (capacity == 0) return 0;
  const std::size_t room = capacity - 1;
  const int length = _vsnwprintf(Wide(buffer), room, Wide(format), arguments);
  // A negative length says that the text was cut; neither then nor when it just fits is it ended.
  const std::size_t end = length < 0 || static_cast<std::size_t>(length) > room
                              ? room
                              : static_cast<std::size_t>(length);
  buffer[end] = u'\0';
  return end;
}

void Plat_WidenAnsi(const char* text, char16_t* buffer, std::size_t capacity) {
  constexpr int kWholeText = -1;  // with its terminator
  if (capacity == 0) return;
  buffer[0] = u'\0';  // what stays when the text cannot be converted
  MultiByteToWideChar(kCeAnsiCodePage, 0, text, kWholeText, Wide(buffer),
                      static_cast<int>(capacity));
  buffer[capacity - 1] = u'\0';
}
