// The register map, and its page in docs/ that must say the same.

#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "chip/register_bus.h"
#include "chip/registers.h"

namespace {

std::string Hex(unsigned value) {
  std::ostringstream out;
  out << "0x" << std::hex << std::uppercase << std::setw(2) << std::setfill('0') << value;
  return out.str();
}

// "0xC0 position: whose picture; 0x03 filter x: samples averaged, less one".
std::string FieldsInWords(const Register& of) {
  std::string text;
  for (const Field& field : of.fields) {
    if (field.name == nullptr) continue;
    if (!text.empty()) text += "<br>";
    text += Hex(field.bits) + " " + field.name + ": " + field.meaning;
  }
  return text;
}

// The table of docs/register-map.md.
std::string RegisterMapTable() {
  std::ostringstream out;
  out << "| page | register | bytes | per channel | name | fields |\n|---|---|---|---|---|---|\n";
  for (const Register& run : kRegisters) {
    out << "| " << +run.page << " | " << Hex(run.first) << " | " << +run.length << " | "
        << (run.count > 1 ? "+ " + Hex(run.stride) : std::string()) << " | " << run.name << " | "
        << FieldsInWords(run) << " |\n";
  }
  return out.str();
}

std::vector<unsigned> NumbersCovered(const Register& of, std::uint8_t page) {
  std::vector<unsigned> numbers;
  for (unsigned number = 0; number < kRegistersPerPage; ++number) {
    if (Covers(of, {page, static_cast<std::uint8_t>(number)})) numbers.push_back(number);
  }
  return numbers;
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
  for (const Register& run : kRegisters) {
    EXPECT_LT(run.page, kPageCount) << run.name;
    EXPECT_LE(run.first + run.stride * (run.count - 1) + run.length, kRegistersPerPage) << run.name;
    EXPECT_TRUE(run.count == 1 || run.stride >= run.length) << run.name;
  }
}

// Fields share no bit, but for one that is a part of the one before it.
TEST(RegisterMap, FieldsHaveTheirOwnBits) {
  for (const Register& run : kRegisters) {
    unsigned taken = 0;
    for (const Field& field : run.fields) {
      if (field.name == nullptr) continue;
      EXPECT_NE(field.bits, 0) << run.name << ": " << field.name;
      const unsigned shared = taken & field.bits;
      EXPECT_TRUE(shared == 0 || shared == field.bits) << run.name << ": " << field.name;
      taken |= field.bits;
    }
  }
}

TEST(RegisterMap, CoversEachPositionAndNothingBetween) {
  struct Case {
    const Register& of;
    std::vector<unsigned> numbers;
  };
  const Case cases[] = {
      {kZoomX, {0x0D}},
      {kRecordQueue, {0x57, 0x58, 0x59, 0x5A}},
      {kBoxColor, {0x67, 0x6F, 0x77, 0x7F}},
      {kMotionLevel, {0x83, 0x84, 0x85, 0xA3, 0xA4, 0xA5, 0xC3, 0xC4, 0xC5, 0xE3, 0xE4, 0xE5}},
  };
  for (const Case& c : cases) {
    for (std::uint8_t page = 0; page <= kPageCount; ++page) {
      const auto expected = page == c.of.page ? c.numbers : std::vector<unsigned>{};
      EXPECT_EQ(NumbersCovered(c.of, page), expected) << c.of.name << " on page " << +page;
    }
  }
}

// What must not compile: the wrong shape of a register in an access.
template <typename... Arguments>
constexpr bool CanWrite(decltype(Write(std::declval<Arguments>()...))*) {
  return true;
}
template <typename... Arguments>
constexpr bool CanWrite(...) {
  return false;
}
using Byte = std::uint8_t;
static_assert(CanWrite<Byte, decltype(kZoomX), Byte>(nullptr));
static_assert(CanWrite<Byte, decltype(kBoxColor), unsigned, Byte>(nullptr));
static_assert(!CanWrite<Byte, decltype(kBoxColor), Byte>(nullptr));          // which of the four?
static_assert(!CanWrite<Byte, decltype(kZoomX), unsigned, Byte>(nullptr));   // there is one
static_assert(!CanWrite<Byte, decltype(kWindow), unsigned, Byte>(nullptr));  // which of its bytes?
static_assert(!CanWrite<Byte, Byte, Byte>(nullptr));                         // of which page?

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
