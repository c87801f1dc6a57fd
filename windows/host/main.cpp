#include <cstdio>
#include <string>
#include <vector>

#include "compare.h"

int main(int count, char** words) {
  const std::vector<std::string> arguments(words + 1, words + count);
  if (!arguments.empty() && arguments[0] == "compare") {
    return host::Compare({arguments.begin() + 1, arguments.end()});
  }
  std::fprintf(stderr, "usage: Main compare SCRIPT...\n");
  return 2;
}
