// The lines typed in the shell, kept in a file from one session to the next.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vexosim {

class LineHistory {
 public:
  static constexpr std::size_t kMost = 1000;

  // Reads the file, one line each; without a path, or when the file cannot be used, lines are
  // kept for this run alone.
  explicit LineHistory(std::optional<std::string> path);

  // Keeps a line, unless it is the last one again.
  void Add(const std::string& line);
  // Oldest first, kMost at most.
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  void DropOldest();

  std::optional<std::string> path_;
  std::vector<std::string> lines_;
};

// vexosim_history in the folder for state of the user's environment, .vexosim_history in the home
// folder; none when there is neither.
std::optional<std::string> HistoryPath();

}  // namespace vexosim
