#include "device/emulator/card.h"

#include <algorithm>
#include <system_error>
#include <vector>

#include "sim/text.h"

namespace emulator {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Parts(const std::string& path) {
  std::vector<std::string> parts(1);
  for (const char c : path) {
    if (c == '\\' || c == '/') {
      if (!parts.back().empty()) parts.emplace_back();
    } else {
      parts.back().push_back(c);
    }
  }
  if (parts.back().empty()) parts.pop_back();
  return parts;
}

// The entry of that name in any case; the first by its bytes, should there be several.
std::optional<fs::path> Entry(const fs::path& folder, const std::string& name) {
  std::error_code error;
  std::optional<fs::path> found;
  const std::string wanted = sim::ToLower(name);
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const bool fits = sim::ToLower(entry.path().filename().string()) == wanted;
    if (fits && (!found || entry.path() < *found)) found = entry.path();
  }
  return found;
}

}  // namespace

std::optional<fs::path> Card::Place(const std::string& path) const {
  const std::vector<std::string> parts = Parts(path);
  // Nothing leads out of the folder.
  const bool leads_out =
      std::any_of(parts.begin(), parts.end(), [](const std::string& part) { return part == ".."; });
  if (parts.empty() || leads_out) return std::nullopt;
  fs::path at = folder_;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto entry = Entry(at, parts[i]);
    const bool last = i + 1 == parts.size();
    if (!entry && last) return at / parts[i];
    if (!entry || (!last && !fs::is_directory(*entry))) return std::nullopt;
    at = *entry;
  }
  return at;
}

std::optional<fs::path> Card::Find(const std::string& path) const {
  auto place = Place(path);
  std::error_code error;
  if (!place || !fs::is_regular_file(*place, error)) return std::nullopt;
  return place;
}

std::string Card::PathOf(const fs::path& file) const {
  std::string path = '\\' + file.lexically_relative(folder_).generic_string();
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('\\') + 1); }
std::string NameOf(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

}  // namespace emulator
