// Comparing runs of the image with runs of the library, and the tool's options for it.
#include "tools/vexosim/compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "device/emulator/exports.h"
#include "harness/host.h"
#include "script/run.h"
#include "tests/device/emulator/toy_image.h"
#include "tests/support/temp_path.h"
#include "tools/vexosim/cli.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace vexosim {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

ScriptOutcome Outcome() { return {0, "", {R"({"ev":"a"})", R"({"ev":"b"})"}}; }

TEST(Compare, FindsNoDifferenceBetweenEqualOutcomes) {
  EXPECT_THAT(Difference(Outcome(), Outcome()), IsEmpty());
}

TEST(Compare, ShowsTheFirstEventThatDiffers) {
  ScriptOutcome other = Outcome();
  other.trace[1] = R"({"ev":"c"})";
  EXPECT_THAT(
      Difference(Outcome(), other),
      testing::AllOf(HasSubstr("event 2"), HasSubstr(R"({"ev":"b"})"), HasSubstr(R"({"ev":"c"})")));
}

TEST(Compare, ShowsAnEventThatIsMissingOrTooMany) {
  ScriptOutcome other = Outcome();
  other.trace.pop_back();
  EXPECT_THAT(Difference(Outcome(), other), HasSubstr("image:   none"));
  EXPECT_THAT(Difference(other, Outcome()), HasSubstr("library: none"));
}

TEST(Compare, ShowsOtherComplaintsAndAnotherStatus) {
  ScriptOutcome other = Outcome();
  other.status = 1;
  other.complaints = "warning: contention";
  EXPECT_THAT(Difference(Outcome(), other),
              testing::AllOf(HasSubstr("exit status: 0 and 1"), HasSubstr("warning: contention")));
}

// An image whose every function returns 1.
class ImageCompareTest : public testing::Test {
 protected:
  static constexpr const char* kExports[] = {"?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z",
                                             "VEXOAPI_CommandProc",
                                             "VEXOAPI_GetVersion",
                                             "VEXOAPI_Initialize",
                                             "VEXOAPI_SetEnableDebug",
                                             "VEXOAPI_SetEnableOutputMsg",
                                             "VEXOAPI_TextCommandProc",
                                             "VEXOAPI_Uninitialize"};

  void TearDown() override {
    harness::Restart();
    std::remove(image_.c_str());
    std::remove(script_.c_str());
  }

  static emulator::ToyImage Toy() {
    emulator::ToyImage toy;
    toy.code = {0xE3A00001, 0xE12FFF1E};  // mov r0, #1; bx lr
    for (const char* name : kExports) toy.exports[name] = 0;
    return toy;
  }
  static void Write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
  // Compares the toy on a script.
  int Compare(const emulator::ToyImage& toy, const std::string& script) {
    const std::vector<std::uint8_t> bytes = toy.Bytes();
    Write(image_, std::string(bytes.begin(), bytes.end()));
    Write(script_, script);
    CompareOptions options;
    options.image = image_;
    options.scripts = {script_};
    options.relocations = true;
    return CompareImage(options, out_, err_);
  }

  const std::string image_ = test::TempPath("toy.dll");
  const std::string script_ = test::TempPath("toy.vexo");
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(ImageCompareTest, FindsAnImageEqualInWhatAScriptTouches) {
  // Before an attach the switches do nothing.
  EXPECT_EQ(Compare(Toy(), "debug 1\noutput 1\nunbind\n"), script::kExitDone) << out_.str();
  EXPECT_THAT(out_.str(), HasSubstr("1 scripts with 6 events at 2 bases: the same traces"));
}

TEST_F(ImageCompareTest, FindsAnImageThatDoesLess) {
  EXPECT_EQ(Compare(Toy(), "attach\n"), script::kExitUnmet);
  EXPECT_THAT(out_.str(), HasSubstr("loaded at 0x10000000: event 2"));
  EXPECT_THAT(out_.str(), HasSubstr("loaded at 0x01E40000: event 2"));
}

TEST_F(ImageCompareTest, ComparesEveryVariantOfAScript) {
  EXPECT_EQ(Compare(Toy(), "variants a b\ndebug 1\nonly b attach\n"), script::kExitUnmet);
  EXPECT_THAT(out_.str(), HasSubstr("toy.vexo (b): loaded at 0x10000000: event "));
  EXPECT_THAT(out_.str(), Not(HasSubstr("toy.vexo (a)")));
  EXPECT_EQ(Compare(Toy(), "variants a b\ndebug {1|2}\n"), script::kExitDone) << out_.str();
  EXPECT_THAT(out_.str(), HasSubstr("1 scripts with 4 events at 2 bases: the same traces"));
}

TEST_F(ImageCompareTest, ListsRelocationsThatDoNotMatter) {
  // Loads a word through a relocated address; a second relocated word is never loaded.
  emulator::ToyImage toy = Toy();
  toy.code = {0xE59F1008,
              0xE5910000,
              0xE3A00001,
              0xE12FFF1E,
              emulator::ToyImage::kBase + emulator::ToyImage::kWord,
              emulator::ToyImage::kBase};
  toy.relocations = {emulator::ToyImage::kCode + 0x10, emulator::ToyImage::kCode + 0x14};
  EXPECT_EQ(Compare(toy, "debug 1\n"), script::kExitDone) << out_.str();
  EXPECT_THAT(out_.str(), HasSubstr("relocation 1 at image+0x1014: no script loads its word"));
  EXPECT_THAT(out_.str(), HasSubstr("2 relocations: 1 matter, 1 belong"));
}

TEST_F(ImageCompareTest, NamesRelocationsThatDoNotMatterWhenThereIsAMap) {
  emulator::ToyImage toy = Toy();
  toy.code.push_back(emulator::ToyImage::kBase + emulator::ToyImage::kWord);
  toy.relocations = {emulator::ToyImage::kCode + 8};
  const std::string map = test::TempPath("toy.map");
  Write(map,
        "Linker script and memory map\n .text._Z3Onev 0x10001000 0xc one.obj\n"
        " .bss.g_word 0x10002100 0x4 one.obj\n");
  EXPECT_EQ(Compare(toy, "debug 1\n"), script::kExitDone) << out_.str();
  std::remove(map.c_str());
  EXPECT_THAT(out_.str(),
              HasSubstr("relocation 0 at image+0x1008, One() -> g_word: no script loads its word"));
}

TEST_F(ImageCompareTest, RefusesAFileThatIsNoImage) {
  Write(image_, "MZ");
  CompareOptions options;
  options.image = image_;
  EXPECT_EQ(CompareImage(options, out_, err_), script::kExitWrong);
  EXPECT_THAT(err_.str(), HasSubstr("ends before"));
}

TEST_F(ImageCompareTest, RefusesAScriptThatIsWrong) {
  EXPECT_EQ(Compare(Toy(), "debug 1\nfly\n"), script::kExitWrong);
  EXPECT_THAT(err_.str(), HasSubstr("toy.vexo:2: unknown: 'fly'"));
  EXPECT_THAT(out_.str(), IsEmpty());
}

TEST_F(ImageCompareTest, RefusesAScriptThatItCannotRead) {
  const std::vector<std::uint8_t> bytes = Toy().Bytes();
  Write(image_, std::string(bytes.begin(), bytes.end()));
  CompareOptions options;
  options.image = image_;
  for (const char* path : {"/no/such/script.vexo", "/"}) {
    options.scripts = {path};
    EXPECT_EQ(CompareImage(options, out_, err_), script::kExitWrong) << path;
    EXPECT_THAT(err_.str(), HasSubstr(std::string("cannot read ") + path + ": "));
  }
}

TEST_F(ImageCompareTest, LendsARecordAtAnOddAddress) {
  emulator::ToyImage toy = Toy();
  toy.code = {0xE2010007, 0xE12FFF1E};  // and r0, r1, #7; bx lr
  emulator::Machine machine(emulator::PeImage::Parse(toy.Bytes()));
  const emulator::ImageInUse in_use(machine);
  harness::Restart();
  sim::Bytes record(4);
  EXPECT_EQ(harness::CommandProc(0xF001, &record), 1);
}

TEST_F(ImageCompareTest, LendsARecordInWholeWordsWhenToldTo) {
  emulator::ToyImage toy = Toy();
  toy.code = {0xE2010007, 0xE12FFF1E};  // and r0, r1, #7; bx lr
  emulator::Machine machine(emulator::PeImage::Parse(toy.Bytes()), {.lends_aligned = true});
  const emulator::ImageInUse in_use(machine);
  harness::Restart();
  sim::Bytes record(4);
  EXPECT_EQ(harness::CommandProc(0xF001, &record), 0);
}

TEST_F(ImageCompareTest, ComplainsOfACallThatKeepsMemory) {
  emulator::ToyImage toy = Toy();
  // push {r4, lr}; mov r0, #0; mov r1, #8; ldr ip, [pc, #16]; ldr ip, [ip]; mov lr, pc; bx ip;
  // pop {r4, lr}; bx lr
  toy.code = {0xE92D4010, 0xE3A00000, 0xE3A01008, 0xE59FC010, 0xE59CC000,
              0xE1A0E00F, 0xE12FFF1C, 0xE8BD4010, 0xE12FFF1E, 0x10002000};
  toy.imports = {{"COREDLL.dll", "LocalAlloc"}};
  toy.relocations = {emulator::ToyImage::kCode + 0x24};
  EXPECT_EQ(Compare(toy, "debug 1\n"), script::kExitUnmet);
  EXPECT_THAT(out_.str(), HasSubstr("the call left allocated blocks: 1"));
}

// A library that takes odd records alone, or whole words alone, is not the same for all hosts.
TEST_F(ImageCompareTest, RunsTheSecondBaseWithRecordsInWholeWords) {
  emulator::ToyImage toy = Toy();
  toy.code = {0xE2010007, 0xE12FFF1E};
  EXPECT_EQ(Compare(toy, "command 0xF001\n"), script::kExitUnmet);
  EXPECT_THAT(out_.str(), HasSubstr(R"("value":1)"));
  EXPECT_THAT(out_.str(), HasSubstr(R"("value":0)"));
}

TEST_F(ImageCompareTest, ReturnsToTheLinkedLibraryAfterTheImage) {
  {
    emulator::Machine machine(emulator::PeImage::Parse(Toy().Bytes()));
    const emulator::ImageInUse in_use(machine);
    harness::Restart();
    EXPECT_EQ(harness::TextCommandProc("x"), 1);
    EXPECT_GT(machine.Instructions(), 0u);
  }
  harness::Restart();
  EXPECT_NE(harness::TextCommandProc("x"), 1);
}

TEST_F(ImageCompareTest, FailsTheRunOfAScriptForAFault) {
  emulator::ToyImage toy = Toy();
  toy.code = {0xE3A00209, 0xE5900000, 0xE12FFF1E};  // loads from nowhere
  emulator::Machine machine(emulator::PeImage::Parse(toy.Bytes()));
  const emulator::ImageInUse in_use(machine);
  script::RunOptions options;
  options.machine = &machine;
  TerminalSurroundings around;
  std::istringstream script("output 1\nexpect cycles 0\n");
  EXPECT_EQ(script::RunScript(script, "toy", options, around, out_, err_), script::kExitUnmet);
  EXPECT_THAT(err_.str(), HasSubstr("toy:1: output 1: a load from 0x90000000"));
}

// The command line, on the toy and a script of one line.
class ImageOptionsTest : public ImageCompareTest {
 protected:
  void SetUp() override {
    const std::vector<std::uint8_t> bytes = Toy().Bytes();
    Write(image_, std::string(bytes.begin(), bytes.end()));
    Write(script_, "text \"x\"\nexpect return 1\n");  // the library answers something else
  }
  // Exit status, with both outputs in out_ and err_.
  int Main(std::vector<const char*> words) {
    words.insert(words.begin(), "vexosim");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = vexosim::Main(static_cast<int>(words.size()), words.data());
    out_ << testing::internal::GetCapturedStdout();
    err_ << testing::internal::GetCapturedStderr();
    return status;
  }
};

TEST_F(ImageOptionsTest, RunsAScriptOnTheImage) {
  EXPECT_EQ(Main({"run", script_.c_str()}), script::kExitUnmet);
  EXPECT_EQ(Main({"run", "--image", image_.c_str(), script_.c_str()}), script::kExitDone)
      << err_.str();
  EXPECT_THAT(out_.str(), HasSubstr("image: 2 instructions, 0 bytes of stack"));
}

TEST_F(ImageOptionsTest, LoadsTheImageWhereItIsTold) {
  EXPECT_EQ(Main({"run", "--image", image_.c_str(), "--image-base", "0x01E40000", script_.c_str()}),
            script::kExitDone)
      << err_.str();
  EXPECT_EQ(Main({"run", "--image", image_.c_str(), "--image-base", "0x100", script_.c_str()}),
            script::kExitWrong);
  EXPECT_THAT(err_.str(), HasSubstr("cannot be loaded at 0x00000100"));
}

TEST_F(ImageOptionsTest, RefusesAnImageThatIsNotThere) {
  EXPECT_EQ(Main({"run", "--image", "/nonexistent.dll", script_.c_str()}), script::kExitWrong);
  EXPECT_THAT(err_.str(), HasSubstr("cannot read /nonexistent.dll"));
}

TEST_F(ImageOptionsTest, ComparesTheImageWithTheLibrary) {
  EXPECT_EQ(Main({"compare", image_.c_str(), script_.c_str()}), script::kExitUnmet);
  EXPECT_THAT(out_.str(), HasSubstr("exit status: 1 and 0"));
}

}  // namespace
}  // namespace vexosim
