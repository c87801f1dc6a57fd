// Version resources, and the memory that holds them.
#include "ce_api.h"
#include "platform/platform.h"

std::uint32_t Plat_VersionInfoSize(const char16_t* path) {
  CeDword zero = 0;
  return GetFileVersionInfoSizeW(reinterpret_cast<const wchar_t*>(path), &zero);
}

bool Plat_ReadVersionInfo(const char16_t* path, std::uint32_t size_bytes, void* buffer) {
  return GetFileVersionInfoW(reinterpret_cast<const wchar_t*>(path), 0, size_bytes, buffer) == 1;
}

bool Plat_QueryVersionRoot(const void* buffer, PlatFileVersion* version) {
  void* value = nullptr;
  unsigned length = 0;
  if (VerQueryValueW(buffer, L"\\", &value, &length) != 1) return false;
  if (value == nullptr || length < sizeof(CeFixedFileInfo)) return false;
  const auto* info = static_cast<const CeFixedFileInfo*>(value);
  *version = {static_cast<std::uint32_t>(info->file_version_ms),
              static_cast<std::uint32_t>(info->file_version_ls)};
  return true;
}

void* Plat_Allocate(std::uint32_t size_bytes) { return LocalAlloc(kCeFixedMemory, size_bytes); }
void Plat_Free(void* memory) { LocalFree(memory); }
