#include "tools/vexosim/shell/line_history.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "files/input.h"

namespace vexosim {
namespace {

std::optional<std::string> Environment(const char* name) {
  const char* const value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return value;
}

}  // namespace

LineHistory::LineHistory(std::optional<std::string> path) : path_(std::move(path)) {
  if (!path_) return;
  try {
    files::LineInput file(*path_);
    for (std::string line; file.Next(line);) {
      if (!line.empty()) lines_.push_back(line);
    }
  } catch (const files::FileError&) {
    // What is no history is none; what was read of it is kept.
  }
  if (lines_.size() <= kMost) return;
  DropOldest();
  // Each line is appended; what has grown too long is cut here.
  std::ofstream cut(*path_);
  for (const std::string& kept : lines_) cut << kept << '\n';
}

void LineHistory::Add(const std::string& line) {
  if (line.empty() || (!lines_.empty() && lines_.back() == line)) return;
  lines_.push_back(line);
  DropOldest();
  // At once, so that no end of the program loses it; a failure leaves the line in memory.
  if (path_) std::ofstream(*path_, std::ios::app) << line << '\n';
}

void LineHistory::DropOldest() {
  if (lines_.size() <= kMost) return;
  lines_.erase(lines_.begin(), lines_.end() - static_cast<std::ptrdiff_t>(kMost));
}

std::optional<std::string> HistoryPath() {
  if (const auto state = Environment("XDG_STATE_HOME")) {
    std::error_code ignored;  // a file that cannot be written is no error either
    std::filesystem::create_directories(*state, ignored);
    return *state + "/vexosim_history";
  }
  if (const auto home = Environment("HOME")) return *home + "/.vexosim_history";
  return std::nullopt;
}

}  // namespace vexosim
