#include "sim/board/drivers.h"

#include <algorithm>

#include "sim/text.h"

namespace sim {

void Drivers::Set(const std::string& name, State state) { states_[ToLower(name)] = state; }

Drivers::State Drivers::Get(const std::string& name) const {
  const std::string key = ToLower(name);
  const auto found = states_.find(key);
  if (found != states_.end()) return found->second;
  const bool known = std::any_of(kDriverNames.begin(), kDriverNames.end(),
                                 [&](auto driver) { return ToLower(std::string(driver)) == key; });
  return known ? State::Present : State::Absent;
}

PlatHandle Drivers::Open(const std::string& name, PlatHandle fresh) {
  const State state = Get(name);
  if (state == State::Present) {
    open_[fresh] = name;
    return fresh;
  }
  if (state == State::Null) return kPlatNoHandle;
  failed_.push_back(name);
  return kPlatInvalidHandle;
}

const std::string* Drivers::Find(PlatHandle handle) const {
  const auto found = open_.find(handle);
  return found == open_.end() ? nullptr : &found->second;
}

std::string Drivers::NameOf(PlatHandle handle) const {
  if (const std::string* name = Find(handle)) return *name;
  return handle == kPlatInvalidHandle && !failed_.empty() ? failed_.back() : "";
}

bool Drivers::Close(PlatHandle handle) {
  if (handle == kPlatInvalidHandle && !failed_.empty()) failed_.pop_back();
  return open_.erase(handle) != 0;
}

}  // namespace sim
