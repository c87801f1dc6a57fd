// Files that are written: whole or not at all, never over what is read, and what a full disk
// leaves.
#include "files/output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <sstream>

#include "tests/support/temp_path.h"

namespace files {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Output : public testing::TestWithParam<Appears> {
 protected:
  void SetUp() override { fs::create_directory(folder_); }
  void TearDown() override { fs::remove_all(folder_); }

  std::string Path(const std::string& name) const { return folder_ + '/' + name; }
  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(Path(name)) << text;
  }
  static std::string Content(const std::string& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  static std::string Complaint(const std::function<void()>& write) {
    try {
      write();
    } catch (const FileError& error) {
      return error.what();
    }
    return {};
  }

  const std::string folder_ = test::TempPath("output");
};

INSTANTIATE_TEST_SUITE_P(Files, Output, testing::Values(Appears::WhenWhole, Appears::AsItGrows),
                         [](const auto& appears) {
                           return appears.param == Appears::WhenWhole ? "WhenWhole" : "AsItGrows";
                         });

TEST_P(Output, IsThereWithAllOfItsContentOnceCommitted) {
  const std::string text(200000, 'x');
  OutputFile file(Path("new"), {}, GetParam());
  file.Stream() << text << "end";
  file.Commit();
  EXPECT_EQ(Content(Path("new")), text + "end");
  EXPECT_THAT(Names(), ElementsAre("new"));
}

TEST_P(Output, LeavesNothingBehindWithoutCommit) {
  { OutputFile(Path("new"), {}, GetParam()).Stream() << "half" << std::flush; }
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_P(Output, ReplacesAnOldFile) {
  Write("old", "long enough to show what is left of it");
  OutputFile file(Path("old"), {}, GetParam());
  file.Stream() << "new";
  file.Commit();
  EXPECT_EQ(Content(Path("old")), "new");
}

TEST_P(Output, BeginsAgain) {
  OutputFile file(Path("new"), {}, GetParam());
  file.Stream() << std::string(100000, 'x') << std::flush << "in the buffer";
  EXPECT_TRUE(file.Restart());
  file.Stream() << "again";
  file.Commit();
  EXPECT_EQ(Content(Path("new")), "again");
}

TEST_P(Output, DoesNotBeginAgainWhereNothingCanBeCalledBack) {
  EXPECT_FALSE(OutputFile("/dev/null", {}, GetParam()).Restart());
  EXPECT_FALSE(OutputFile("/dev/stdout", {}, GetParam()).Restart());
}

TEST_P(Output, RefusesInOneSentenceWhatCannotBeWritten) {
  const auto complaint = [](const std::string& path) {
    return Complaint([&] { OutputFile(path, {}, GetParam()); });
  };
  EXPECT_EQ(complaint(""), "expected the name of a file to write, found ''");
  EXPECT_EQ(complaint(folder_), "cannot write " + folder_ + ": it is a folder");
  EXPECT_EQ(complaint(Path("no/file")),
            "cannot write " + Path("no/file") + ": No such file or directory");
  EXPECT_EQ(complaint(Path(std::string(300, 'n'))).substr(0, 13), "cannot write ");
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_P(Output, RefusesAFileThatIsReadOrWrittenBesides) {
  Write("input", "precious");
  fs::create_symlink(Path("input"), Path("symlink"));
  fs::create_hard_link(Path("input"), Path("hardlink"));
  for (const char* name : {"input", "symlink", "hardlink", "./input"}) {
    EXPECT_THAT(Complaint([&] {
                  OutputFile(Path(name), {"other", Path("input")}, GetParam());
                }),
                HasSubstr("cannot write " + Path(name) + ": "))
        << name;
  }
  EXPECT_THAT(Complaint([&] { OutputFile(Path("symlink"), {Path("input")}, GetParam()); }),
              HasSubstr(Path("input") + " is the same file"));
  // Two outputs of one name, which is not there yet.
  EXPECT_THAT(Complaint([&] { OutputFile(Path("new"), {Path("./new")}, GetParam()); }),
              HasSubstr("is the same file"));
  EXPECT_EQ(Content(Path("input")), "precious");
  EXPECT_EQ(Complaint([] { OutputFile("/dev/null", {"/dev/null"}, GetParam()); }), "");
}

TEST_P(Output, GoesThroughALink) {
  Write("old", "old");
  fs::create_symlink("old", Path("link"));
  OutputFile file(Path("link"), {}, GetParam());
  file.Stream() << "new";
  file.Commit();
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_EQ(Content(Path("old")), "new");
}

TEST_P(Output, KeepsTheRightsOfAnOldFile) {
  Write("old", "old");
  constexpr auto kRights = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  fs::permissions(Path("old"), kRights);
  OutputFile file(Path("old"), {}, GetParam());
  file.Commit();
  EXPECT_EQ(fs::status(Path("old")).permissions(), kRights);
}

TEST_P(Output, DoesNotReplaceAFileThatIsWriteProtected) {
  Write("old", "old");
  fs::permissions(Path("old"), fs::perms::owner_read | fs::perms::others_read);
  fs::permissions(folder_, fs::perms::all);
  const auto write_as_nobody = [&] {
    if (geteuid() == 0 && setuid(65534) != 0) std::exit(3);
    std::cerr << Complaint([&] { OutputFile(Path("old"), {}, GetParam()); });
    std::exit(0);
  };
  EXPECT_EXIT(write_as_nobody(), testing::ExitedWithCode(0), "old: Permission denied");
}

TEST_P(Output, WritesIntoAPipeAndADeviceAndLeavesThemThere) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  std::fstream reader(Path("pipe"));  // for both, so that neither end waits for the other
  {
    OutputFile file(Path("pipe"), {}, GetParam());
    file.Stream() << "through\n";
    file.Commit();
    OutputFile(Path("pipe"), {}, GetParam());  // not committed
  }
  std::string line;
  std::getline(reader, line);
  EXPECT_EQ(line, "through");
  EXPECT_TRUE(fs::is_fifo(Path("pipe")));
  OutputFile("/dev/null", {}, GetParam());
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_P(Output, WritesToStandardOutputInOrderWithWhatElseIsPrinted) {
  std::ostringstream printed;
  std::streambuf* const old = std::cout.rdbuf(printed.rdbuf());
  {
    OutputFile file("/dev/stdout", {}, GetParam());
    std::cout << "one\n";
    file.Stream() << "two\n";
    std::cout << "three\n";
    file.Commit();
  }
  std::cout.rdbuf(old);
  EXPECT_EQ(printed.str(), "one\ntwo\nthree\n");
}

TEST_P(Output, TellsOfAFullDisk) {
  OutputFile file("/dev/full", {}, GetParam());
  file.Stream() << "text";
  EXPECT_EQ(Complaint([&] { file.Commit(); }), "cannot write /dev/full: No space left on device");
}

TEST_P(Output, LeavesTheOldFileOrNoneWhenTheDiskFillsUp) {
  Write("old", "old");
  const auto fill = [&] {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit before = limit;
    limit.rlim_cur = 100000;
    setrlimit(RLIMIT_FSIZE, &limit);
    for (const char* name : {"new", "old"}) {
      if (name == std::string("old") && GetParam() == Appears::AsItGrows) continue;
      OutputFile file(Path(name), {}, GetParam());
      for (int i = 0; i < 10 && file.Stream(); ++i) file.Stream() << std::string(50000, 'x');
      std::cerr << (file.Stream() ? "goes on, " : "stops, ");
      std::cerr << Complaint([&] { file.Commit(); }) << '\n';
    }
    // Half of the counts that a process leaves of its lines would make all that it adds them to
    // unreadable.
    setrlimit(RLIMIT_FSIZE, &before);
    std::exit(0);
  };
  EXPECT_EXIT(fill(), testing::ExitedWithCode(0), "stops, cannot write .*/new: File too large");
  EXPECT_THAT(Names(), ElementsAre("old"));
  EXPECT_EQ(Content(Path("old")), "old");
}

TEST_F(Output, ThatAppearsWhenWholeLeavesTheOldFileUntilThen) {
  Write("old", "old");
  OutputFile file(Path("old"));
  file.Stream() << "new" << std::flush;
  EXPECT_EQ(Content(Path("old")), "old");
  file.Commit();
  EXPECT_EQ(Content(Path("old")), "new");
}

TEST_F(Output, ThatAppearsAsItGrowsCanBeReadMeanwhile) {
  OutputFile file(Path("trace"), {}, Appears::AsItGrows);
  EXPECT_EQ(Content(Path("trace")), "");
  file.Stream() << "one\n" << std::flush;
  EXPECT_EQ(Content(Path("trace")), "one\n");
  EXPECT_TRUE(file.Restart());
  EXPECT_EQ(Content(Path("trace")), "");
}

TEST_F(Output, IsKnownByItsEnding) {
  EXPECT_TRUE(HasEnding("a.png", ".png"));
  EXPECT_TRUE(HasEnding("a/b.PNG", ".png"));
  EXPECT_TRUE(HasEnding("/dev/null", ".png"));
  for (const char* name : {"", "a", ".png", "a.jpg", "apng", "a.png.gz", "/no/such"}) {
    EXPECT_FALSE(HasEnding(name, ".png")) << name;
  }
}

TEST_F(Output, CanBeCheckedLongBeforeItIsWritten) {
  Write("old", "old");
  OutputFile::Check(Path("old"));
  OutputFile::Check(Path("new"));
  OutputFile::Check("/dev/null");
  EXPECT_THAT(Names(), ElementsAre("old"));
  EXPECT_EQ(Content(Path("old")), "old");
  EXPECT_THAT(Complaint([&] { OutputFile::Check(Path("no/file")); }), HasSubstr("No such file"));
  EXPECT_THAT(Complaint([&] { OutputFile::Check(Path("old"), {Path("old")}); }),
              HasSubstr("something else"));
  EXPECT_THAT(Complaint([] { OutputFile::Check(""); }), HasSubstr("expected the name"));
}

}  // namespace
}  // namespace files
