#include <cstdio>
#include <string>
#include <vector>

#include "checks.h"

int main(int count, char** words) {
  const std::vector<std::string> arguments(words + 1, words + count);
  if (!arguments.empty() && arguments[0] == "check") {
    return host::RunChecks(arguments.size() > 1 ? arguments[1] : "");
  }
  if (!arguments.empty() && arguments[0] == "child") {
    return host::RunChild({arguments.begin() + 1, arguments.end()});
  }
  std::fprintf(stderr, "usage: Main check [WORD]\n");
  return 2;
}
