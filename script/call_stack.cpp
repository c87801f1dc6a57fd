#include "script/call_stack.h"

#define BOOST_STACKTRACE_USE_ADDR2LINE
#include <boost/stacktrace.hpp>
#include <string_view>

namespace script {

std::vector<std::string> LibraryStack() {
  // Where the library's sources lie, in the names that the compiler noted.
  constexpr std::string_view kLibrary = "/src/";
  std::vector<std::string> lines;
  for (const boost::stacktrace::frame& frame : boost::stacktrace::stacktrace()) {
    const std::string file = frame.source_file();
    const std::size_t place = file.rfind(kLibrary);
    if (place == std::string::npos) {
      if (!lines.empty()) break;  // the host
      continue;                   // the simulated board
    }
    lines.push_back(frame.name() + " (" + file.substr(place + kLibrary.size()) + ':' +
                    std::to_string(frame.source_line()) + ')');
  }
  return lines;
}

}  // namespace script
