#include "io_pages.h"

#include <windows.h>

#include "byte_access.h"

namespace kit {
namespace {

constexpr std::size_t kPageBytes = 0x1000;

#ifdef _WIN64
constexpr bool kLongMode = true;
#else
constexpr bool kLongMode = false;
#endif

Bus g_bus;
std::uint8_t* g_pages = nullptr;

ULONG_PTR& InstructionPointer(CONTEXT& context) {
#ifdef _WIN64
  return context.Rip;
#else
  return context.Eip;
#endif
}

ULONG_PTR& Register(CONTEXT& context, unsigned number) {
#ifdef _WIN64
  DWORD64* const registers[] = {&context.Rax, &context.Rcx, &context.Rdx, &context.Rbx,
                                &context.Rsp, &context.Rbp, &context.Rsi, &context.Rdi,
                                &context.R8,  &context.R9,  &context.R10, &context.R11,
                                &context.R12, &context.R13, &context.R14, &context.R15};
  return *registers[number];
#else
  DWORD* const registers[] = {&context.Eax, &context.Ecx, &context.Edx, &context.Ebx,
                              &context.Esp, &context.Ebp, &context.Esi, &context.Edi};
  return reinterpret_cast<ULONG_PTR&>(*registers[number]);
#endif
}

// Replaces the bits of `mask`, `shift` bits up.
void Replace(ULONG_PTR& target, ULONG_PTR mask, unsigned shift, ULONG_PTR value) {
  target = (target & ~(mask << shift)) | (value & mask) << shift;
}

void SetLoaded(CONTEXT& context, const ByteAccess& access, std::uint8_t byte) {
  ULONG_PTR value = byte;
  if (access.sign && byte >= 0x80) value |= ~ULONG_PTR{0xFF};
  ULONG_PTR& target = Register(context, access.reg);
  if (access.target_bytes == 1) {
    Replace(target, 0xFF, access.high_byte ? 8 : 0, value);
  } else if (access.target_bytes == 2) {
    Replace(target, 0xFFFF, 0, value);
  } else {
    // A write of 32 bits clears the upper half.
    target = access.target_bytes == 4 ? static_cast<std::uint32_t>(value) : value;
  }
}

void Emulate(CONTEXT& context, int window, bool write) {
  ULONG_PTR& at = InstructionPointer(context);
  const auto* code = reinterpret_cast<const std::uint8_t*>(at);
  const auto access = DecodeAccess(code, kLongMode);
  if (!access || access->store != write) {
    g_bus.refuse("an instruction that is no plain move", code);
    return;
  }
  if (access->store) {
    std::uint32_t value = access->value;
    if (!access->immediate) {
      const ULONG_PTR source = Register(context, access->reg);
      value = static_cast<std::uint32_t>(access->high_byte ? source >> 8 : source);
    }
    if (access->bytes == 1) value &= 0xFF;
    g_bus.store(window, value, access->bytes);
  } else {
    SetLoaded(context, *access, g_bus.load(window, access->bytes));
  }
  if (access->bytes != 1) g_bus.refuse("an access wider than a byte", code);
  at += access->length;
}

// The library goes on with a null address where a window could not be mapped. The device has
// nothing there that would answer; here such an access must not end the process.
bool IsUnmappedAccess(ULONG_PTR address, ULONG_PTR instruction) {
  if (address >= kPageBytes) return false;
  HMODULE module = nullptr;
  return GetModuleHandleExW(
             GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
             reinterpret_cast<const wchar_t*>(instruction), &module) &&
         module == GetModuleHandleW(L"VexoCtrlSDK.dll");
}

LONG CALLBACK OnFault(EXCEPTION_POINTERS* exception) {
  constexpr ULONG_PTR kRead = 0;
  constexpr ULONG_PTR kWrite = 1;
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || record.NumberParameters < 2) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  const ULONG_PTR kind = record.ExceptionInformation[0];
  const ULONG_PTR address = record.ExceptionInformation[1];
  if (kind != kRead && kind != kWrite) return EXCEPTION_CONTINUE_SEARCH;
  CONTEXT& context = *exception->ContextRecord;
  const ULONG_PTR offset = address - reinterpret_cast<ULONG_PTR>(g_pages);
  int window = -1;
  if (offset < kIoPages * kPageBytes) {
    window = static_cast<int>(offset / kPageBytes);
    if (offset % kPageBytes != 0) {
      g_bus.refuse("an access beside the window's first byte",
                   reinterpret_cast<const std::uint8_t*>(InstructionPointer(context)));
    }
  } else if (!IsUnmappedAccess(address, InstructionPointer(context))) {
    return EXCEPTION_CONTINUE_SEARCH;
  }
  Emulate(context, window, kind == kWrite);
  return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

bool OpenIoPages(const Bus& bus) {
  g_bus = bus;
  g_pages = static_cast<std::uint8_t*>(
      VirtualAlloc(nullptr, kIoPages * kPageBytes, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS));
  return g_pages != nullptr && AddVectoredExceptionHandler(1, OnFault) != nullptr;
}

void* IoPage(unsigned window) { return g_pages + window * kPageBytes; }

std::optional<unsigned> WindowAt(const void* address) {
  const auto offset = reinterpret_cast<ULONG_PTR>(address) - reinterpret_cast<ULONG_PTR>(g_pages);
  if (offset >= kIoPages * kPageBytes) return std::nullopt;
  return static_cast<unsigned>(offset / kPageBytes);
}

}  // namespace kit
