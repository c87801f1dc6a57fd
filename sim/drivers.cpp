#include "sim/world.h"

namespace sim {

void Drivers::Set(const std::string& name, State state) { states_[ToLower(name)] = state; }

Drivers::State Drivers::Get(const std::string& name) const {
  const std::string key = ToLower(name);
  const auto found = states_.find(key);
  if (found != states_.end()) return found->second;
  return key == "cam1:" || key == "vbe1:" ? State::Present : State::Absent;
}

PlatHandle Drivers::Open(const std::string& name, PlatHandle fresh) {
  const State state = Get(name);
  if (state == State::Present) {
    open_[fresh] = name;
    return fresh;
  }
  last_failed_ = name;
  return state == State::Null ? kPlatNoHandle : kPlatInvalidHandle;
}

const std::string* Drivers::Find(PlatHandle handle) const {
  const auto found = open_.find(handle);
  return found == open_.end() ? nullptr : &found->second;
}

bool Drivers::Close(PlatHandle handle) { return open_.erase(handle) != 0; }

}  // namespace sim
