// What a command of the shell prints.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace test {

// Standard output of the command, which must end with this status.
inline std::string CommandOutput(const std::string& command, int wanted_status = 0) {
  // The shell is wanted: tests hand it pipes and lists.
  std::FILE* const pipe = popen(command.c_str(), "r");  // NOLINT(cert-env33-c)
  if (pipe == nullptr) {
    ADD_FAILURE() << "cannot run " << command;
    return {};
  }
  std::string output;
  char bytes[4096];
  for (std::size_t length = 0; (length = std::fread(bytes, 1, sizeof bytes, pipe)) > 0;) {
    output.append(bytes, length);
  }
  EXPECT_EQ(pclose(pipe), wanted_status << 8) << command << '\n' << output;
  return output;
}

}  // namespace test
