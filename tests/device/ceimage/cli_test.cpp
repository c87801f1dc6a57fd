// The command line of ceimage: its status and its one sentence for whatever is wrong, and what it
// leaves behind.
#include "device/ceimage/cli.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "device/ceimage/import_library.h"
#include "device/ceimage/pe_image.h"
#include "device/emulator/pe_image.h"
#include "files/exit_status.h"
#include "tests/device/ceimage/elf_builder.h"
#include "tests/support/temp_path.h"

namespace ceimage {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

// Words of it in capitals are files of the folder.
struct CommandLine {
  const char* name;
  std::vector<std::string> arguments;
  int status;
  const char* sentence;  // part of it
};

void PrintTo(const CommandLine& line, std::ostream* out) { *out << line.name; }

class CeimageCommandLine : public ::testing::TestWithParam<CommandLine> {
 protected:
  void SetUp() override {
    fs::create_directory(folder_);
    Write("ELF", SmallLibrary().Build());
    Write("RES", ResourceFile({{16, 1, 0x409}}));
    Write("TEXT", {'t', 'e', 'x', 't'});
    Write("OLD", {'o', 'l', 'd'});
    ElfBuilder twice = SmallLibrary();
    twice.relocations.push_back(twice.relocations[4]);
    Write("TWICE", twice.Build());
    fs::create_symlink("ELF", folder_ + "/LINK");
    old_out_ = std::cout.rdbuf(out_.rdbuf());
    old_err_ = std::cerr.rdbuf(err_.rdbuf());
  }
  void TearDown() override {
    std::cout.rdbuf(old_out_);
    std::cerr.rdbuf(old_err_);
    fs::remove_all(folder_);
  }

  void Write(const std::string& name, const Bytes& bytes) const {
    std::ofstream(folder_ + '/' + name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  Bytes Read(const std::string& name) const {
    std::ifstream file(folder_ + '/' + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::size_t Files() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  int Run(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"ceimage"};
    for (const std::string& word : arguments) {
      const bool file = !word.empty() && std::isupper(static_cast<unsigned char>(word[0])) != 0;
      words.push_back(file ? folder_ + '/' + word : word);
    }
    std::vector<const char*> argv;
    argv.reserve(words.size());
    for (const std::string& word : words) argv.push_back(word.c_str());
    return Main(static_cast<int>(argv.size()), argv.data());
  }

  const std::string folder_ = test::TempPath("ceimage");
  std::ostringstream out_;
  std::ostringstream err_;

 private:
  std::streambuf* old_out_ = nullptr;
  std::streambuf* old_err_ = nullptr;
};

TEST_F(CeimageCommandLine, MakesAnImageThatTheLoaderTakes) {
  EXPECT_EQ(Run({"ELF", "-r", "RES", "-o", "NEW", "-m", "thumb"}), files::kExitDone) << err_.str();
  EXPECT_EQ(emulator::PeImage::Parse(Read("NEW")).Exports().size(), 2u);
  EXPECT_EQ(Run({"ELF", "-r", "RES", "-o", "OLD"}), files::kExitDone) << err_.str();
  EXPECT_EQ(emulator::PeImage::Parse(Read("OLD")).Exports().size(), 2u);
}

TEST_F(CeimageCommandLine, WritesWhatHostsAreLinkedWithBesideTheImage) {
  EXPECT_EQ(Run({"ELF", "-r", "RES", "-o", "NEW", "-m", "thumb", "-i", "LIB", "-d", "DEF"}),
            files::kExitDone)
      << err_.str();
  const Exports exports = {"dll", {"one", "two"}};
  EXPECT_EQ(Read("LIB"), MakeImportLibrary(exports, kMachineThumb));
  const Bytes definition = Read("DEF");
  EXPECT_EQ(std::string(definition.begin(), definition.end()), MakeDefinition(exports));
}

TEST_F(CeimageCommandLine, TellsItsExitStatusesInItsHelp) {
  EXPECT_EQ(Run({"--help"}), files::kExitDone);
  EXPECT_THAT(out_.str(), HasSubstr("Exit status: 0 done, 2 "));
}

TEST_P(CeimageCommandLine, GivesItsStatusAndOneSentenceAndLeavesTheFilesAsTheyAre) {
  const CommandLine& line = GetParam();
  const Bytes elf = Read("ELF");
  const std::size_t files = Files();
  EXPECT_EQ(Run(line.arguments), line.status);
  const std::string said = err_.str();
  EXPECT_THAT(said, HasSubstr("ceimage: "));
  EXPECT_THAT(said, HasSubstr(line.sentence));
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_EQ(Files(), files);
  EXPECT_EQ(Read("ELF"), elf);
  EXPECT_EQ(Read("OLD"), (Bytes{'o', 'l', 'd'}));
}

constexpr int kWrong = files::kExitWrong;

const CommandLine kLines[] = {
    {"Nothing", {}, kWrong, "required"},
    {"NoResources", {"ELF", "-o", "NEW"}, kWrong, "--resource is required"},
    {"NoOutput", {"ELF", "-r", "RES"}, kWrong, "--output is required"},
    {"UnknownOption", {"ELF", "-r", "RES", "-o", "NEW", "--fast"}, kWrong, "--fast"},
    {"TwoInputs", {"ELF", "ELF", "-r", "RES", "-o", "NEW"}, kWrong, "not expected"},
    {"UnknownMachine", {"ELF", "-r", "RES", "-o", "NEW", "-m", "mips"}, kWrong, "mips"},
    {"EmptyInput", {"", "-r", "RES", "-o", "NEW"}, kWrong, "name of a file to read"},
    {"EmptyResources", {"ELF", "-r", "", "-o", "NEW"}, kWrong, "name of a file to read"},
    {"EmptyOutput", {"ELF", "-r", "RES", "-o", ""}, kWrong, "name of a file to write"},
    {"MissingInput", {"NONE", "-r", "RES", "-o", "NEW"}, kWrong, "No such file"},
    {"FolderAsInput", {"/", "-r", "RES", "-o", "OLD"}, kWrong, "cannot read /: it is a folder"},
    {"EndlessInput", {"/dev/zero", "-r", "RES", "-o", "OLD"}, kWrong, "more than 64 MiB"},
    {"TextAsInput", {"TEXT", "-r", "RES", "-o", "OLD"}, kWrong, "TEXT: This is no ELF file."},
    {"TextAsResources", {"ELF", "-r", "TEXT", "-o", "OLD"}, kWrong, "cut off"},
    {"RelocationTwice",
     {"TWICE", "-r", "RES", "-o", "OLD"},
     kWrong,
     "two relocations at 0x10002008"},
    {"OutputOverTheInput", {"ELF", "-r", "RES", "-o", "ELF"}, kWrong, "cannot write"},
    {"OutputOverTheInputByALink", {"ELF", "-r", "RES", "-o", "LINK"}, kWrong, "the same file"},
    {"OutputOverTheResources", {"ELF", "-r", "RES", "-o", "RES"}, kWrong, "cannot write"},
    {"ImportLibraryOverTheInput",
     {"ELF", "-r", "RES", "-o", "OLD", "-i", "ELF"},
     kWrong,
     "cannot write"},
    {"ImportLibraryOverTheImage",
     {"ELF", "-r", "RES", "-o", "OLD", "-i", "OLD"},
     kWrong,
     "cannot write"},
    {"DefinitionOverTheImportLibrary",
     {"ELF", "-r", "RES", "-o", "NEW", "-i", "OLD", "-d", "OLD"},
     kWrong,
     "cannot write"},
    {"EmptyImportLibrary",
     {"ELF", "-r", "RES", "-o", "NEW", "-i", ""},
     kWrong,
     "name of a file to write"},
    {"DefinitionOnAFullDisk",
     {"ELF", "-r", "RES", "-o", "NEW", "-d", "/dev/full"},
     kWrong,
     "No space left on device"},
    {"OutputInNoFolder", {"ELF", "-r", "RES", "-o", "NO/image"}, kWrong, "No such file"},
    {"OutputIntoAFolder", {"ELF", "-r", "RES", "-o", "/"}, kWrong, "it is a folder"},
    {"FullDisk", {"ELF", "-r", "RES", "-o", "/dev/full"}, kWrong, "No space left on device"},
};
INSTANTIATE_TEST_SUITE_P(Wrong, CeimageCommandLine, ::testing::ValuesIn(kLines),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace ceimage
