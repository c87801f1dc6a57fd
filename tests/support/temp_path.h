// Files that tests write: ctest runs several tests at once, each in a process of its own.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace test {

// A path for a file of this process alone.
inline std::string TempPath(const std::string& name) {
  return testing::TempDir() + "vexo_" + std::to_string(getpid()) + "_" + name;
}

}  // namespace test
