// Command lines and files that are wrong: each gives status 2 and one sentence that says what was
// expected and what was found.
#include "tools/vexosim/commands/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "files/exit_status.h"
#include "tests/harness/fake_library.h"
#include "tests/support/temp_path.h"
#include "tools/vexosim/cli.h"

namespace vexosim {
namespace {

using testing::HasSubstr;

// A command line; SCRIPT and FOLDER stand for a script that runs and the folder that it is in.
struct CommandLine {
  const char* name;
  std::vector<std::string> arguments;
  int status;
  const char* sentence;  // part of it
};

void PrintTo(const CommandLine& line, std::ostream* out) { *out << line.name; }

class RefusedCommandLines : public harness::FakeLibraryTest,
                            public testing::WithParamInterface<CommandLine> {
 protected:
  void SetUp() override {
    harness::FakeLibraryTest::SetUp();
    std::filesystem::create_directory(folder_);
    std::ofstream(folder_ + "/script.vexo") << "attach\n";
    std::ofstream(folder_ + "/binary.vexo") << "attach\n"
                                            << '\0'
                                            << "\x7F"
                                               "ELF\n";
    std::ofstream(folder_ + "/long.vexo") << "attach\n# " << std::string(100000, 'x') << '\n';
    std::ofstream(folder_ + "/control.vexo") << "attach\ncamera \x1B[31m2 off\n";
    std::filesystem::create_symlink("script.vexo", folder_ + "/link.vexo");
    old_out_ = std::cout.rdbuf(out_.rdbuf());
    old_err_ = std::cerr.rdbuf(err_.rdbuf());
  }
  void TearDown() override {
    std::cout.rdbuf(old_out_);
    std::cerr.rdbuf(old_err_);
    std::filesystem::remove_all(folder_);
    harness::FakeLibraryTest::TearDown();
  }

  int Run(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"vexosim"};
    for (std::string word : arguments) {
      for (const auto& [from, to] : {std::pair{std::string("SCRIPT"), folder_ + "/script.vexo"},
                                     std::pair{std::string("FOLDER"), folder_}}) {
        if (const auto at = word.find(from); at != std::string::npos) {
          word.replace(at, from.size(), to);
        }
      }
      words.push_back(word);
    }
    std::vector<const char*> argv;
    argv.reserve(words.size());
    for (const std::string& word : words) argv.push_back(word.c_str());
    return Main(static_cast<int>(argv.size()), argv.data());
  }

  const std::string folder_ = test::TempPath("refused_command_lines");
  std::ostringstream out_;
  std::ostringstream err_;

 private:
  std::streambuf* old_out_ = nullptr;
  std::streambuf* old_err_ = nullptr;
};

TEST_P(RefusedCommandLines, GiveTheirStatusAndOneSentence) {
  const CommandLine& line = GetParam();
  EXPECT_EQ(Run(line.arguments), line.status) << err_.str();
  const std::string said = err_.str();
  EXPECT_THAT(said, HasSubstr(line.sentence));
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), line.status == files::kExitDone ? 0 : 1)
      << said;
  EXPECT_EQ(said.find('\x1B'), std::string::npos);
}

constexpr int kDone = files::kExitDone;
constexpr int kWrong = files::kExitWrong;

const CommandLine kSubcommands[] = {
    {"None", {}, kWrong, "vexosim: expected demo, run, shell, serve, compare"},
    {"Empty", {""}, kWrong, "found ''"},
    {"Unknown", {"fly"}, kWrong, "expected demo, run, shell, serve, compare"},
    {"Mistyped", {"rnu"}, kWrong, "found 'rnu'; did you mean run?"},
    {"WithControlBytes", {"\x1B[2J"}, kWrong, "found '\\x1B[2J'"},
    {"UnknownOption", {"run", "SCRIPT", "--speed", "1"}, kWrong, "--speed"},
    {"OneScriptTooMany", {"run", "SCRIPT", "SCRIPT"}, kWrong, "not expected"},
};
INSTANTIATE_TEST_SUITE_P(Subcommands, RefusedCommandLines, testing::ValuesIn(kSubcommands),
                         [](const auto& test) { return std::string(test.param.name); });

const CommandLine kNumbers[] = {
    {"Seed", {"run", "SCRIPT", "--quiet", "--seed", "0x7"}, kDone, ""},
    {"LargestSeed", {"run", "SCRIPT", "--seed", "18446744073709551615"}, kDone, ""},
    {"NegativeSeed", {"run", "SCRIPT", "--seed", "-1"}, kWrong, "found '-1'"},
    {"SeedTooLarge",
     {"run", "SCRIPT", "--seed", "18446744073709551616"},
     kWrong,
     "--seed: expected a whole number from 0 to 18446744073709551615"},
    {"SeedWithRubbish", {"run", "SCRIPT", "--seed", "12x"}, kWrong, "found '12x'"},
    {"EmptySeed", {"run", "SCRIPT", "--seed", ""}, kWrong, "found ''"},
    {"SeedWithoutDigits", {"run", "SCRIPT", "--seed", "0x"}, kWrong, "found '0x'"},
    {"NoSeed", {"run", "SCRIPT", "--seed"}, kWrong, "--seed"},
    {"TooManyChips",
     {"shell", "--chips", "5"},
     kWrong,
     "--chips: expected a whole number from 1 to 4, found '5'"},
    {"NoChips", {"shell", "--chips", "0"}, kWrong, "found '0'"},
    {"Limit", {"shell", "--limit", "2min", "--version"}, kWrong, "--version"},
    {"NegativeLimit",
     {"shell", "--limit", "-1ms"},
     kWrong,
     "--limit: expected a time as 10s: a whole number and ms, s, min, h or d, found '-1ms'"},
    {"LimitWithoutUnit", {"shell", "--limit", "5"}, kWrong, "found '5'"},
    {"LimitWithoutNumber", {"shell", "--limit-real", "s"}, kWrong, "found 's'"},
    {"LimitOfAnotherUnit", {"shell", "--limit", "5weeks"}, kWrong, "found '5weeks'"},
    {"LimitTooLarge", {"shell", "--limit", "300000000000d"}, kWrong, "found '300000000000d'"},
    {"NegativeTime", {"trace", "SCRIPT", "--from", "-1"}, kWrong, "--from: expected a whole"},
    {"CycleTooLong",
     {"shell", "--vcd", "FOLDER/x.vcd", "--cycle-ns", "9999999"},
     kWrong,
     "--cycle-ns: expected a whole number"},
    {"BaseTooLarge",
     {"compare", "x", "SCRIPT", "--image-base", "0x100000000"},
     kWrong,
     "--image-base: expected an address of 32 bits, found '0x100000000'"},
    {"BaseWithoutImage", {"run", "SCRIPT", "--image-base", "0x10000"}, kWrong, "--image"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, RefusedCommandLines, testing::ValuesIn(kNumbers),
                         [](const auto& test) { return std::string(test.param.name); });

const CommandLine kInputs[] = {
    {"NoScript", {"run"}, kWrong, "SCRIPT is required"},
    {"EmptyScriptName", {"run", ""}, kWrong, "SCRIPT: expected a file name, found ''"},
    {"MissingScript", {"run", "FOLDER/none"}, kWrong, "No such file or directory"},
    {"FolderAsScript", {"run", "FOLDER"}, kWrong, "it is a folder"},
    {"EndlessScript", {"run", "/dev/zero"}, kWrong, "cannot read /dev/zero: line 1 has more than"},
    {"BinaryScript",
     {"run", "FOLDER/binary.vexo"},
     kWrong,
     "binary.vexo:2: expected text, found a byte 00"},
    {"ScriptWithALongLine", {"run", "FOLDER/long.vexo"}, kWrong, "line 2 has more than 64 KiB"},
    {"ScriptWithControlBytes", {"run", "FOLDER/control.vexo"}, kWrong, "found '\\x1B[31m2'"},
    {"EmptyImageName", {"run", "SCRIPT", "--image", ""}, kWrong, "expected a file name, found ''"},
    {"MissingImage", {"demo", "--image", "FOLDER/none"}, kWrong, "No such file or directory"},
    {"FolderAsImage", {"run", "SCRIPT", "--image", "FOLDER"}, kWrong, "it is a folder"},
    {"EndlessImage", {"run", "SCRIPT", "--image", "/dev/zero"}, kWrong, "more than 32 MiB"},
    {"TextAsImage", {"run", "SCRIPT", "--image", "SCRIPT"}, kWrong, "no MZ at the start"},
    {"ComparedFolder", {"compare", "FOLDER", "SCRIPT"}, kWrong, "it is a folder"},
    // The base takes one word, so this is a script and an image.
    {"ScriptBehindABase",
     {"compare", "--image-base", "0x10000", "FOLDER/none", "SCRIPT"},
     kWrong,
     "cannot read"},
};
INSTANTIATE_TEST_SUITE_P(Inputs, RefusedCommandLines, testing::ValuesIn(kInputs),
                         [](const auto& test) { return std::string(test.param.name); });

const CommandLine kOutputs[] = {
    {"EmptyTraceName", {"run", "SCRIPT", "--trace", ""}, kWrong, "expected a file name, found ''"},
    {"TraceInNoFolder", {"run", "SCRIPT", "--trace", "FOLDER/no/t"}, kWrong, "No such file"},
    {"TraceIntoAFolder", {"run", "SCRIPT", "--trace", "FOLDER"}, kWrong, "it is a folder"},
    {"TraceOverTheScript", {"run", "SCRIPT", "--trace", "SCRIPT"}, kWrong, "cannot write"},
    {"TraceOverTheScriptByALink",
     {"run", "SCRIPT", "--trace", "FOLDER/link.vexo"},
     kWrong,
     "is the same file"},
    {"TraceOnAFullDisk",
     {"run", "SCRIPT", "--trace", "/dev/full"},
     kWrong,
     "cannot write /dev/full: No space left on device"},
    {"PictureOfAnotherKind",
     {"run", "SCRIPT", "--picture", "a.jpg"},
     kWrong,
     "--picture: expected a file name that ends in .png, found 'a.jpg'"},
    {"DemoPictureOfAnotherKind", {"demo", "--picture", "a.jpg"}, kWrong, "ends in .png"},
    {"EmptyWaveformName", {"shell", "--vcd", ""}, kWrong, "expected a file name, found ''"},
    {"EmptyReplayName", {"replay", "SCRIPT", "-o", ""}, kWrong, "expected a file name, found ''"},
    {"TraceOverTheShellsScript", {"shell", "SCRIPT", "--trace", "SCRIPT"}, kWrong, "cannot write"},
    {"EmptyPictureName", {"run", "SCRIPT", "--picture", ""}, kWrong, "found ''"},
    {"PictureInNoFolder",
     {"run", "SCRIPT", "--picture", "FOLDER/no/p.png"},
     kWrong,
     "No such file"},
    {"DemoPictureInNoFolder", {"demo", "--picture", "FOLDER/no/p.png"}, kWrong, "No such file"},
    {"PictureOnAFullDisk",
     {"run", "SCRIPT", "--picture", "/dev/full"},
     kWrong,
     "cannot write /dev/full: No space left on device"},
    {"PictureOverTheTrace",
     {"run", "SCRIPT", "--picture", "FOLDER/x.png", "--trace", "FOLDER/x.png"},
     kWrong,
     "cannot write"},
};
INSTANTIATE_TEST_SUITE_P(Outputs, RefusedCommandLines, testing::ValuesIn(kOutputs),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(RefusedCommandLines, LeaveTheScriptAsItIsWhenTheyAreRefused) {
  Run({"run", "SCRIPT", "--trace", "FOLDER/link.vexo"});
  std::string line;
  std::getline(std::ifstream(folder_ + "/script.vexo"), line);
  EXPECT_EQ(line, "attach");
}

TEST_F(RefusedCommandLines, EchoControlBytesOfAScriptAsNumbers) {
  std::ofstream(folder_ + "/script.vexo") << "attach\t# \x1B[31mred \xFF\r\n";
  EXPECT_EQ(Run({"run", "SCRIPT"}), kDone);
  EXPECT_THAT(out_.str(), HasSubstr("0 ms  attach\t# \\x1B[31mred \\xFF\n"));
}

TEST_F(RefusedCommandLines, TellWhatEachExitStatusMeansInEveryHelp) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{{"--help"},
                                                                     {"demo", "--help"},
                                                                     {"run", "--help"},
                                                                     {"shell", "--help"},
                                                                     {"compare", "--help"},
                                                                     {"trace", "--help"},
                                                                     {"diff", "--help"},
                                                                     {"replay", "--help"}}) {
    out_.str({});
    EXPECT_EQ(Run(arguments), kDone);
    EXPECT_THAT(out_.str(), HasSubstr("Exit status: 0 ")) << arguments.front();
  }
}

}  // namespace
}  // namespace vexosim
