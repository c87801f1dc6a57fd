// How a program ends: its status, and what it says when something stops it.
#include "files/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <new>
#include <sstream>
#include <stdexcept>

#include "files/exit_status.h"
#include "files/output.h"
#include "files/standard_output.h"
#include "tests/support/temp_path.h"

namespace files {
namespace {

using testing::ExitedWithCode;

void End(const std::function<int()>& run) { std::exit(RunProgram("tool", run)); }

TEST(Program, EndsWithTheStatusOfItsRun) {
  for (const int status : {kExitDone, kExitUnmet, kExitWrong}) {
    EXPECT_EXIT(End([=] { return status; }), ExitedWithCode(status), "^$");
  }
}

TEST(Program, TellsOfEveryExceptionAndEndsWithStatus2) {
  EXPECT_EXIT(End([]() -> int { throw std::runtime_error("a reason"); }), ExitedWithCode(2),
              "^tool: a reason\n$");
  EXPECT_EXIT(End([]() -> int { throw std::bad_alloc(); }), ExitedWithCode(2),
              "^tool: there is not enough memory\n$");
  EXPECT_EXIT(End([]() -> int { throw 7; }), ExitedWithCode(2), "^tool: ended by ");
}

// Runs with standard output replaced: by a file, by a pipe that nobody reads, by nothing.
void RunInto(int descriptor, const std::string& text) {
  if (descriptor < 0) {
    close(STDOUT_FILENO);
  } else {
    dup2(descriptor, STDOUT_FILENO);
  }
  End([&] {
    std::cout << text;
    return kExitUnmet;
  });
}

TEST(Program, TellsOfStandardOutputThatCannotBeWritten) {
  const int full = open("/dev/full", O_WRONLY);
  EXPECT_EXIT(RunInto(full, "text"), ExitedWithCode(2),
              "^tool: cannot write standard output: No space left on device\n$");
  EXPECT_EXIT(RunInto(full, std::string(100000, 'x')), ExitedWithCode(2),
              "^tool: cannot write standard output");
  EXPECT_EXIT(RunInto(full, ""), ExitedWithCode(1), "^$");
  close(full);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  EXPECT_EXIT(RunInto(ends[1], "text"), ExitedWithCode(2),
              "^tool: cannot write standard output: Broken pipe\n$");
  close(ends[1]);
  EXPECT_EXIT(RunInto(-1, "text"), ExitedWithCode(2),
              "^tool: cannot write standard output: Bad file descriptor\n$");
  EXPECT_EXIT(RunInto(-1, ""), ExitedWithCode(1), "^$");
}

TEST(Program, PrintsIntoNoFileThatItOpensWhileStandardOutputIsClosed) {
  const std::string path = test::TempPath("program");
  const auto run = [&] {
    close(STDOUT_FILENO);
    End([&] {
      OutputFile file(path);
      file.Stream() << "content";
      std::cout << "printed" << std::flush;
      file.Commit();
      return kExitDone;
    });
  };
  EXPECT_EXIT(run(), ExitedWithCode(2), "cannot write standard output");
  std::string content;
  std::getline(std::ifstream(path), content);
  EXPECT_EQ(content, "content");
  std::remove(path.c_str());
}

TEST(StandardOutput, IsFinishedWhenAllOfItIsWritten) {
  std::ostringstream out;
  std::ostringstream err;
  out << "text";
  EXPECT_EQ(FinishOutput(out, err, "tool", kExitUnmet), kExitUnmet);
  out.setstate(std::ios::badbit);
  EXPECT_EQ(FinishOutput(out, err, "tool", kExitUnmet), kExitWrong);
  EXPECT_EQ(err.str(), "tool: cannot write standard output\n");
}

}  // namespace
}  // namespace files
