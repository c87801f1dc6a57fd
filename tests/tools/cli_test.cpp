#include "tools/vexosim/cli.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <sstream>

#include "script/grammar/text_help.h"
#include "script/run.h"
#include "tests/harness/fake_library.h"
#include "tests/support/temp_path.h"

namespace vexosim {
namespace {

using testing::HasSubstr;

// The command line on the fake library, its outputs caught.
class CommandLine : public harness::FakeLibraryTest {
 protected:
  void SetUp() override {
    harness::FakeLibraryTest::SetUp();
    std::ofstream(script_) << "attach\nwindow\ncommand 0xF005\nexpect return 0\n";
    old_out_ = std::cout.rdbuf(out_.rdbuf());
    old_err_ = std::cerr.rdbuf(err_.rdbuf());
  }
  void TearDown() override {
    std::cout.rdbuf(old_out_);
    std::cerr.rdbuf(old_err_);
    std::remove(script_.c_str());
    harness::FakeLibraryTest::TearDown();
  }

  int Run(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "vexosim");
    out_.str({});
    err_.str({});
    return Main(static_cast<int>(arguments.size()), arguments.data());
  }

  const std::string script_ = test::TempPath("vexosim_cli_test.vexo");
  std::ostringstream out_;
  std::ostringstream err_;

 private:
  std::streambuf* old_out_ = nullptr;
  std::streambuf* old_err_ = nullptr;
};

TEST_F(CommandLine, RunsAScript) {
  EXPECT_EQ(Run({"run", script_.c_str()}), script::kExitDone);
  EXPECT_THAT(out_.str(), HasSubstr("| [Fake]: >> hello"));
  EXPECT_EQ(Run({"run", "--quiet", script_.c_str()}), script::kExitDone);
  EXPECT_EQ(out_.str(), "1 expectation met\n");
}

TEST_F(CommandLine, RunsStandardInput) {
  std::istringstream in("attach\nexpect return 7\n");
  std::streambuf* const old_in = std::cin.rdbuf(in.rdbuf());
  EXPECT_EQ(Run({"run", "-"}), script::kExitUnmet);
  std::cin.rdbuf(old_in);
  EXPECT_THAT(err_.str(), HasSubstr("<stdin>:2: expect return 7: returned 1"));
}

TEST_F(CommandLine, WritesTraceAndPicture) {
  const std::string trace = test::TempPath("vexosim_cli_test.jsonl");
  const std::string picture = test::TempPath("vexosim_cli_test.png");
  EXPECT_EQ(Run({"run", script_.c_str(), "--trace", trace.c_str(), "--picture", picture.c_str(),
                 "--registers", "--seed", "7"}),
            script::kExitDone);
  std::string line;
  std::getline(std::ifstream(trace), line);
  EXPECT_EQ(line, R"({"t":0,"by":"host","ev":"line","text":"seed 7"})");
  EXPECT_TRUE(std::ifstream(picture).is_open());
  EXPECT_THAT(out_.str(), HasSubstr("slave3 page 2"));
  std::remove(trace.c_str());
  std::remove(picture.c_str());
}

TEST_F(CommandLine, RunsEveryVariantOfAScriptOrTheOneThatItIsTold) {
  std::ofstream(script_) << "variants ntsc pal\nattach\nexpect return {7|1}\n";
  EXPECT_EQ(Run({"run", "--quiet", script_.c_str()}), script::kExitUnmet);
  EXPECT_THAT(err_.str(), HasSubstr(script_ + " (ntsc):3: expect return 7: returned 1"));
  EXPECT_EQ(out_.str(), "ntsc: 1 of 1 expectation not met\npal: 1 expectation met\n");
  EXPECT_EQ(Run({"run", "--quiet", "--variant", "pal", script_.c_str()}), script::kExitDone);
  EXPECT_EQ(out_.str(), "pal: 1 expectation met\n");
  EXPECT_EQ(Run({"run", "--variant", "secam", script_.c_str()}), script::kExitWrong);
  EXPECT_THAT(err_.str(), HasSubstr("expected ntsc or pal, found 'secam'"));
}

TEST_F(CommandLine, TracesAndDrawsOneVariantAlone) {
  std::ofstream(script_) << "variants ntsc pal\nattach\n";
  const std::string trace = test::TempPath("vexosim_cli_test.jsonl");
  const std::string picture = test::TempPath("vexosim_cli_test.png");
  EXPECT_EQ(Run({"run", script_.c_str(), "--trace", trace.c_str()}), script::kExitWrong);
  EXPECT_THAT(err_.str(), HasSubstr("choose ntsc or pal (--variant)"));
  EXPECT_EQ(Run({"run", script_.c_str(), "--picture", picture.c_str()}), script::kExitWrong);
  EXPECT_EQ(Run({"run", script_.c_str(), "--trace", trace.c_str(), "--picture", picture.c_str(),
                 "--variant", "ntsc"}),
            script::kExitDone);
  EXPECT_TRUE(std::ifstream(picture).is_open());
  std::remove(trace.c_str());
  std::remove(picture.c_str());
}

TEST_F(CommandLine, GivesStatus2ForAWrongCommandLine) {
  EXPECT_EQ(Run({}), script::kExitWrong);
  EXPECT_EQ(Run({"fly"}), script::kExitWrong);
  EXPECT_EQ(Run({"run"}), script::kExitWrong);
  EXPECT_EQ(Run({"run", script_.c_str(), "--seed", "x"}), script::kExitWrong);
  EXPECT_EQ(Run({"run", script_.c_str(), "--speed", "1"}), script::kExitWrong);
  EXPECT_EQ(Run({"demo", "--color", "blue"}), script::kExitWrong);
  // A base of nothing.
  EXPECT_EQ(Run({"run", script_.c_str(), "--image-base", "0x01E40000"}), script::kExitWrong);
  EXPECT_EQ(Run({"demo", "--image-base", "0x01E40000"}), script::kExitWrong);
}

TEST_F(CommandLine, GivesStatus2ForFilesThatItCannotUse) {
  EXPECT_EQ(Run({"run", "/no/such/script.vexo"}), script::kExitWrong);
  EXPECT_THAT(err_.str(), HasSubstr("cannot read /no/such/script.vexo"));
  EXPECT_EQ(Run({"run", "/"}), script::kExitWrong);
  EXPECT_EQ(Run({"run", script_.c_str(), "--trace", "/no/such/folder/t"}), script::kExitWrong);
  EXPECT_EQ(Run({"run", script_.c_str(), "--picture", "/no/such/folder/p.png"}),
            script::kExitWrong);
}

TEST_F(CommandLine, AcceptsAnEmptyScript) {
  std::ofstream(script_).close();
  EXPECT_EQ(Run({"run", script_.c_str()}), script::kExitDone);
}

TEST_F(CommandLine, PrintsTheManualOfTheTextCommands) {
  EXPECT_EQ(Run({"manual"}), script::kExitDone);
  EXPECT_EQ(out_.str(), script::TextCommandManual());
}

TEST_F(CommandLine, TeachesInItsHelp) {
  EXPECT_EQ(Run({"--help"}), script::kExitDone);
  EXPECT_THAT(out_.str(), HasSubstr("Exit status: 0 done"));
  EXPECT_EQ(Run({"run", "--help"}), script::kExitDone);
  EXPECT_THAT(out_.str(), HasSubstr("camera CH ntsc|pal|off"));
  EXPECT_THAT(out_.str(), HasSubstr("expect message MESSAGE [WPARAM]"));
  EXPECT_EQ(Run({"shell", "--help"}), script::kExitDone);
  EXPECT_THAT(out_.str(), HasSubstr("help lsplit explains a line"));
}

}  // namespace
}  // namespace vexosim
