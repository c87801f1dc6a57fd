// The drivers that the library opens.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"

namespace sim {

// The stream drivers of a recorder.
inline constexpr std::array<std::string_view, 2> kDriverNames = {"CAM1:", "VBE1:"};

class Drivers {
 public:
  enum class State { Present, Absent, Null };  // absent: invalid handle, null: zero handle
  // Names compare without regard to case.
  void Set(const std::string& name, State state);
  State Get(const std::string& name) const;

  // What an open yields: `fresh` as the new handle, the invalid handle or 0.
  PlatHandle Open(const std::string& name, PlatHandle fresh);
  // The driver behind an open handle, null when there is none.
  const std::string* Find(PlatHandle handle) const;
  bool Close(PlatHandle handle);
  std::size_t OpenCount() const { return open_.size(); }
  // The driver that a call on a handle is meant for, empty when nobody can tell. For the invalid
  // handle it is the one whose open failed last and that was not closed since.
  std::string NameOf(PlatHandle handle) const;

 private:
  std::map<std::string, State> states_;
  std::map<PlatHandle, std::string> open_;
  std::vector<std::string> failed_;  // opens that gave the invalid handle, which is still in use
};

}  // namespace sim
