#include "sim/kernel/files.h"

#include "sim/text.h"

namespace sim {

Files::Files() {
  Set("\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL", {VersionFile::State::Present, {1, 0, 1, 6}});
  Set("\\Windows\\Main.exe", {VersionFile::State::Present, {1, 0, 0, 0}});
}

void Files::Set(const std::string& path, const VersionFile& file) { files_[ToLower(path)] = file; }

void Files::Remove(const std::string& path) { files_.erase(ToLower(path)); }

const VersionFile* Files::Find(const std::string& path) const {
  const auto found = files_.find(ToLower(path));
  return found == files_.end() ? nullptr : &found->second;
}

}  // namespace sim
