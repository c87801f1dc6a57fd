// Files that are read: what they hold, and one sentence for each that cannot be.
#include "files/input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <sstream>

#include "tests/support/temp_path.h"

namespace files {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class InputFile : public testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove_all(path_); }
  void Write(const std::string& text) { std::ofstream(path_, std::ios::binary) << text; }
  // What is said about it; empty when nothing is.
  static std::string Complaint(const std::function<void()>& read) {
    try {
      read();
    } catch (const FileError& error) {
      return error.what();
    }
    return {};
  }

  const std::string path_ = test::TempPath("input");
};

TEST_F(InputFile, IsReadWholeUpToTheLimit) {
  Write(std::string("a\0\r\nb", 5));
  EXPECT_EQ(ReadText(path_, 5), std::string("a\0\r\nb", 5));
  EXPECT_EQ(ReadBytes(path_, 5), (std::vector<std::uint8_t>{'a', 0, '\r', '\n', 'b'}));
  EXPECT_EQ(Complaint([&] { ReadText(path_, 4); }),
            "cannot read " + path_ + ": it has more than 4 bytes");
  Write(std::string(1025, 'x'));
  EXPECT_THAT(Complaint([&] { ReadText(path_, 1024); }), HasSubstr("it has more than 1 KiB"));
  Write("");
  EXPECT_THAT(ReadBytes(path_, 1), IsEmpty());
}

TEST_F(InputFile, IsRefusedInOneSentenceWhenItCannotBeRead) {
  EXPECT_EQ(Complaint([] { ReadText("", 1); }), "expected the name of a file to read, found ''");
  EXPECT_EQ(Complaint([] { ReadText("/", 1); }), "cannot read /: it is a folder");
  EXPECT_EQ(Complaint([&] { ReadText(path_, 1); }),
            "cannot read " + path_ + ": No such file or directory");
  EXPECT_EQ(Complaint([] { ReadText("/dev/null/x", 1); }),
            "cannot read /dev/null/x: Not a directory");
  EXPECT_EQ(Complaint([] { ReadText("/dev/zero", std::uint64_t{16} << 20); }),
            "cannot read /dev/zero: it has more than 16 MiB");
  EXPECT_EQ(Complaint([] { ReadText("no\x1B[2Jfile", 1); }),
            "cannot read no\\x1B[2Jfile: No such file or directory");
  EXPECT_EQ(Complaint([] { OpenInput("/"); }), "cannot read /: it is a folder");
  EXPECT_EQ(Complaint([] { LineInput("/"); }), "cannot read /: it is a folder");
}

TEST_F(InputFile, IsRefusedWhenItIsASocket) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path_.size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, path_.c_str());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(Complaint([&] { ReadText(path_, 1); }), "cannot read " + path_ + ": it is a socket");
  close(socket);
}

TEST_F(InputFile, IsRefusedWhenItMayNotBeRead) {
  Write("secret");
  std::filesystem::permissions(path_, std::filesystem::perms::none);
  const auto read_as_nobody = [&] {
    if (geteuid() == 0 && setuid(65534) != 0) std::exit(3);
    std::cerr << Complaint([&] { ReadText(path_, 100); });
    std::exit(0);
  };
  EXPECT_EXIT(read_as_nobody(), testing::ExitedWithCode(0), "cannot read .*: Permission denied");
}

TEST_F(InputFile, GivesItsLinesWithTheirNumbers) {
  Write("one\n\nthree\r\nno end");
  LineInput lines(path_);
  std::vector<std::string> found;
  for (std::string line; lines.Next(line);) {
    found.push_back(line);
    EXPECT_EQ(lines.Number(), found.size());
  }
  EXPECT_THAT(found, ElementsAre("one", "", "three\r", "no end"));
  EXPECT_EQ(lines.Number(), 4u);
  std::string line = "as it was";
  EXPECT_FALSE(lines.Next(line));
}

TEST_F(InputFile, HasNoLineThatIsTooLong) {
  for (const bool ends : {true, false}) {
    std::istringstream in(std::string("12345\n123456") + (ends ? "\n" : ""));
    LineInput lines(in, "t.jsonl", 5);
    std::string line;
    EXPECT_TRUE(lines.Next(line));
    EXPECT_EQ(line, "12345");
    EXPECT_EQ(Complaint([&] { lines.Next(line); }),
              "cannot read t.jsonl: line 2 has more than 5 bytes");
  }
  LineInput endless("/dev/zero");
  std::string line;
  EXPECT_EQ(Complaint([&] { endless.Next(line); }),
            "cannot read /dev/zero: line 1 has more than 1 MiB");
}

TEST_F(InputFile, KeepsZerosInLines) {
  std::istringstream in(std::string("a\0b\n\0", 5));
  LineInput lines(in, "zeros");
  std::string line;
  ASSERT_TRUE(lines.Next(line));
  EXPECT_EQ(line, std::string("a\0b", 3));
  ASSERT_TRUE(lines.Next(line));
  EXPECT_EQ(line, std::string(1, '\0'));
}

}  // namespace
}  // namespace files
