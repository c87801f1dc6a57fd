#include "device/check/ce/shared_word.h"

#include "device/check/ce/paths.h"
#include "device/check/image_reader.h"

namespace check {
namespace {

constexpr std::uint32_t kMark = 0x0F1E2D3C;
constexpr std::uint32_t kPageBytes = 0x1000;

}  // namespace

// A module's handle need not be its address, which is told by that of an export.
volatile std::uint32_t* FindSharedWord(HINSTANCE__* library) {
  Path path;
  GetModuleFileNameW(library, path.Room(), Path::kUnits);
  const FileContent content = ReadWhole(path.Get(), kMostImage);
  if (content.text == nullptr) return nullptr;
  const ImageReader reader(reinterpret_cast<const std::uint8_t*>(content.text), content.bytes);
  const std::uint32_t shared = reader.SharedOffset();
  const std::uint32_t exported = reader.ExportOffset("VEXOAPI_Initialize");
  LocalFree(content.text);
  const auto address =
      reinterpret_cast<std::uintptr_t>(GetProcAddressW(library, L"VEXOAPI_Initialize"));
  if (shared == 0 || exported == 0 || address == 0) return nullptr;
  const std::uintptr_t base = (address - exported) & ~std::uintptr_t{kPageBytes - 1};
  return reinterpret_cast<volatile std::uint32_t*>(base + shared);
}

SharedMark::SharedMark(HINSTANCE__* library) : word_(FindSharedWord(library)) {
  if (word_ == nullptr) return;
  before_ = *word_;
  *word_ = kMark;
}

SharedMark::~SharedMark() {
  if (word_ != nullptr) *word_ = before_;
}

bool SeesSharedMark(HINSTANCE__* library) {
  const volatile std::uint32_t* const word = FindSharedWord(library);
  return word != nullptr && *word == kMark;
}

}  // namespace check
