// Traces and captures in files of a test.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temp_path.h"
#include "tools/vexosim/traces/events.h"

namespace vexosim {

class TempFile {
 public:
  explicit TempFile(const std::string& name, const std::string& text = "")
      : path_(test::TempPath(name)) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TempFile() { std::remove(path_.c_str()); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// "store select 0xFC" of each cycle that a capture has.
std::vector<std::string> CyclesOf(const std::string& path, const CaptureColumns& columns = {});

// What is wrong with a file, without its path; empty when all of it can be read.
std::string WrongWith(const std::string& name, const std::string& text,
                      const CaptureColumns& columns = {});

}  // namespace vexosim
