#include "tools/vexosim/listing/call_stack.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <span>
#include <string_view>

#include "sim/text.h"

namespace vexosim {
namespace {

constexpr int kMostFrames = 64;

// The calling thread's return addresses in this program, as its file has them.
std::string AddressesInFile() {
  std::array<void*, kMostFrames> frames{};
  const int count = backtrace(frames.data(), kMostFrames);
  Dl_info own{};
  dladdr(reinterpret_cast<void*>(&LibraryStack), &own);
  std::string addresses;
  for (int i = 0; i < count; ++i) {
    void* const frame = frames.at(static_cast<std::size_t>(i));
    Dl_info info{};
    if (dladdr(frame, &info) == 0 || info.dli_fbase != own.dli_fbase) continue;
    const auto offset = static_cast<std::uint32_t>(static_cast<const char*>(frame) -
                                                   static_cast<char*>(own.dli_fbase));
    // The call, not the instruction behind it.
    addresses += ' ' + sim::Hex(offset - 1, 8);
  }
  return addresses;
}

std::string Line(std::FILE* in) {
  std::string line;
  for (int c = std::fgetc(in); c != EOF && c != '\n'; c = std::fgetc(in)) {
    line += static_cast<char>(c);
  }
  return line;
}

std::string Without(std::string_view part, std::string text) {
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part)) {
    text.erase(at, part.size());
  }
  return text;
}

struct Frame {
  std::string function;
  std::string place;
};

// The tool gives the innermost function that was inlined at an address the name of the one that it
// was inlined into.
void NameInlined(std::span<Frame> frames) {
  if (frames.size() < 2 || frames.front().function != frames.back().function) return;
  frames.front().function = "inlined";
}

std::vector<std::string> InWords(const std::vector<Frame>& frames) {
  std::vector<std::string> lines;
  lines.reserve(frames.size());
  for (const Frame& frame : frames) lines.push_back(frame.function + " (" + frame.place + ')');
  return lines;
}

}  // namespace

std::vector<std::string> LibraryStack() {
  // Where the library's sources lie, in the names that the compiler noted.
  constexpr std::string_view kLibrary = "/src/";
  const std::string addresses = AddressesInFile();
  if (addresses.empty()) return {};
  const std::string command = "addr2line -a -f -C -i -e /proc/" + std::to_string(getpid()) +
                              "/exe" + addresses + " 2>/dev/null";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> tool(popen(command.c_str(), "r"), pclose);
  if (tool == nullptr) return {};
  std::vector<Frame> frames;
  std::size_t address = 0;  // where the frames of the last address begin
  for (;;) {
    std::string line = Line(tool.get());
    if (line.starts_with("0x") || line.empty()) {
      NameInlined(std::span(frames).subspan(address));
      address = frames.size();
      if (line.empty()) return InWords(frames);
      line = Line(tool.get());
    }
    const std::string function = Without("(anonymous namespace)::", line);
    const std::string place = Line(tool.get());
    const std::size_t library = place.rfind(kLibrary);
    if (library != std::string::npos) {
      const std::string in_library = place.substr(library + kLibrary.size());
      frames.push_back(
          {function.substr(0, function.find('(')), in_library.substr(0, in_library.find(' '))});
    } else if (!frames.empty()) {
      return InWords(frames);  // the host
    }
  }
}

}  // namespace vexosim
