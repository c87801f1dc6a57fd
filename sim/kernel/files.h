// Files whose version can be asked for.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace sim {

// A file with a version resource.
struct VersionFile {
  enum class State { Present, Unreadable, NoRoot };  // size known; reading fails; no root block
  State state = State::Present;
  std::array<std::uint16_t, 4> version{};
  bool operator==(const VersionFile&) const = default;
};

// Paths compare without regard to case.
class Files {
 public:
  Files();  // the library's and the host's default files
  void Set(const std::string& path, const VersionFile& file);
  void Remove(const std::string& path);
  const VersionFile* Find(const std::string& path) const;
  // By path in small letters.
  const std::map<std::string, VersionFile>& All() const { return files_; }
  // Paths whose size was asked, in order.
  std::vector<std::string> asked;

 private:
  std::map<std::string, VersionFile> files_;
};

}  // namespace sim
