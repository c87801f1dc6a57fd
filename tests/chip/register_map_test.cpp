// The register map, and its page in docs/ that must say the same.

#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

#include "chip/registers.h"

namespace {

std::string Hex(unsigned value) {
  std::ostringstream out;
  out << "0x" << std::hex << std::uppercase << std::setw(2) << std::setfill('0') << value;
  return out.str();
}

// The table of docs/register-map.md.
std::string RegisterMapTable() {
  std::ostringstream out;
  out << "| page | register | bytes | per channel | name |\n|---|---|---|---|---|\n";
  for (const RegisterName& run : kRegisterNames) {
    out << "| " << +run.page << " | " << Hex(run.base) << " | " << +run.length << " | "
        << (run.count > 1 ? "+ " + Hex(run.stride) : std::string()) << " | " << run.name << " |\n";
  }
  return out.str();
}

TEST(RegisterMap, IsWhatItsDocumentSays) {
  std::ifstream file(VEXO_SOURCE_DIR "/docs/register-map.md");
  ASSERT_TRUE(file.is_open());
  std::ostringstream content;
  content << file.rdbuf();
  EXPECT_NE(content.str().find(RegisterMapTable()), std::string::npos)
      << "docs/register-map.md lacks this table:\n"
      << RegisterMapTable();
}

TEST(RegisterMap, NamesStayOnTheirPage) {
  for (const RegisterName& run : kRegisterNames) {
    EXPECT_LT(run.page, kPageCount) << run.name;
    EXPECT_LE(run.base + run.stride * (run.count - 1) + run.length, kRegistersPerPage) << run.name;
    EXPECT_TRUE(run.count == 1 || run.stride >= run.length) << run.name;
  }
}

TEST(RegisterMap, GivesTheNarrowestNameOfARegister) {
  EXPECT_STREQ(RegisterNameOf(0, 0x91), "scaler vertical ratio");
  EXPECT_STREQ(RegisterNameOf(0, 0x85), "playback window kind");
  EXPECT_STREQ(RegisterNameOf(1, 0x29), "channel attribute");
  EXPECT_STREQ(RegisterNameOf(1, 0x05), "display");
  EXPECT_STREQ(RegisterNameOf(1, 0x3F), "window");
  EXPECT_STREQ(RegisterNameOf(2, 0x9D), "motion mask");
  EXPECT_STREQ(RegisterNameOf(2, 0x9E), "motion");
  EXPECT_EQ(RegisterNameOf(0, 0xFF), nullptr);
  EXPECT_EQ(RegisterNameOf(1, 0xB0), nullptr);
  EXPECT_EQ(RegisterNameOf(3, 0x10), nullptr);
}

}  // namespace
