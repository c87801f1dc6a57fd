// Parts of the PC tool that this host does without: picture files and the terminal.
#include <stdexcept>

#include "sim/screen.h"
#include "tools/vexosim/terminal.h"

namespace sim {

void WritePng(const Image& /*image*/, const std::string& path) {
  throw std::runtime_error(path + ": this host writes no pictures");
}

Image ReadPng(const std::string& path) {
  throw std::runtime_error(path + ": this host reads no pictures");
}

}  // namespace sim

namespace vexosim {

void Progress::Update(const std::string& /*text*/) {}
void Progress::Clear() {}
bool Progress::OnTerminal() { return false; }
bool Interrupted() { return false; }

}  // namespace vexosim
