// The folder that stands for the device's file system: \NAME on the device is FOLDER/NAME.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace emulator {

class Card {
 public:
  explicit Card(std::filesystem::path folder) : folder_(std::move(folder)) {}

  const std::filesystem::path& Folder() const { return folder_; }
  // The file of a path on the device, none when it is not there. Case does not matter, and a path
  // without a leading backslash begins at the root too: the system has no current folder.
  std::optional<std::filesystem::path> Find(const std::string& path) const;
  // Where a file of that path is, or would be made; none when its folder is not there.
  std::optional<std::filesystem::path> Place(const std::string& path) const;
  // The path on the device of a file in the folder.
  std::string PathOf(const std::filesystem::path& file) const;

 private:
  std::filesystem::path folder_;
};

// "\DLL\A.DLL": of a path on the device the folder, with its last backslash, and the file's name.
std::string FolderOf(const std::string& path);
std::string NameOf(const std::string& path);

}  // namespace emulator
