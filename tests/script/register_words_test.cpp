#include "script/register_words.h"

#include <gtest/gtest.h>

namespace script {
namespace {

TEST(RegisterWords, NameARegisterWithItsPositionWhereTheNameRepeats) {
  EXPECT_EQ(RegisterLabel(kPage1, 0x00), "system control");
  EXPECT_EQ(RegisterLabel(kPage1, 0x38), "window 2");
  EXPECT_EQ(RegisterLabel(kPage1, 0x3B), "window 2");
  EXPECT_EQ(RegisterLabel(kPage1, 0x40), "(no name)");
  EXPECT_EQ(RegisterLabel(0xFF, 0x00), "(no name)");
}

TEST(RegisterWords, TellTheFieldsThatAreSet) {
  EXPECT_EQ(FieldsInWords(kPage1, 0x10, 0x92), "enable, hold, position 2");
  EXPECT_EQ(FieldsInWords(kPage1, 0x18, 0xD7), "enable, front, hold, decoded, position 3");
  EXPECT_EQ(FieldsInWords(kPage1, 0x10, 0x80), "enable");
  EXPECT_EQ(FieldsInWords(kPage1, 0x10, 0x02), "position 2");
  EXPECT_EQ(FieldsInWords(kPage1, 0x10, 0x28), "") << "bits of no field";
  EXPECT_EQ(FieldsInWords(kPage1, 0x10, 0x00), "");
}

TEST(RegisterWords, ShowZeroWhereARegisterHasOnlyNumbers) {
  EXPECT_EQ(FieldsInWords(kPage0, 0x80, 0x00), "position 0, filter y 0, filter x 0");
  EXPECT_EQ(FieldsInWords(kPage0, 0x90, 0x44), "position 1, filter y 1, filter x 0");
}

TEST(RegisterWords, TellNoFieldsWhereThereAreNone) {
  EXPECT_EQ(FieldsInWords(kPage1, 0x30, 0xFF), "");
  EXPECT_EQ(FieldsInWords(kPage1, 0x40, 0xFF), "");
  EXPECT_EQ(FieldsInWords(0xFF, 0x00, 0xFF), "");
}

TEST(RegisterWords, LeaveAFieldWithGapsInItsPlace) {
  EXPECT_EQ(FieldsInWords(kPage1, 0x0C, 0xAC), "on, area 0x2C");
  EXPECT_EQ(FieldMost(kZoomArea), 0x3D);
  EXPECT_EQ(WithFieldValue(kZoomArea, 0xC2, 0x2C), 0xEE);
}

TEST(RegisterWords, ReadAndSetFields) {
  EXPECT_EQ(FieldValue(kPositionOfPath, 0x80), 2);
  EXPECT_EQ(FieldMost(kPositionOfPath), 3);
  EXPECT_EQ(WithFieldValue(kPositionOfPath, 0xFF, 1), 0x7F);
  EXPECT_EQ(FieldMost(kDisplayHold), 1);
  EXPECT_EQ(WithFieldValue(kDisplayHold, 0x82, 1), 0x92);
  for (const Register& run : kRegisters) {
    for (const Field& field : FieldsOf(run.page, run.first)) {
      const std::uint8_t all = WithFieldValue(field, 0, FieldMost(field));
      EXPECT_EQ(all, field.bits) << run.name << ": " << field.name;
      EXPECT_EQ(FieldValue(field, all), FieldMost(field)) << run.name << ": " << field.name;
    }
  }
}

TEST(RegisterWords, NameTheChipsOfASelectByte) {
  const std::pair<std::uint8_t, std::string_view> kCases[] = {
      {0xFC, "master"}, {0xF7, "slave1"},  {0xEF, "slave2"},      {0x3F, "slave3"},
      {0x55, "all"},    {0xF5, "several"}, {kSelectIdle, "none"},
  };
  for (const auto& [select, chip] : kCases) EXPECT_EQ(ChipOfSelect(select), chip) << +select;
}

TEST(RegisterWords, TellAnAccess) {
  sim::RegisterAccess access;
  access.select = 0xFD;  // master, page 1
  access.reg = 0x30;
  access.value = 0x04;
  EXPECT_EQ(AccessInWords(access), "w master page 1 0x30 window 0 = 0x04");
  access.reg = 0x10;
  access.value = 0x92;
  EXPECT_EQ(AccessInWords(access),
            "w master page 1 0x10 channel display 0 = 0x92 (enable, hold, position 2)");
  access.read = true;
  access.by = sim::By::Worker;
  EXPECT_EQ(AccessInWords(access),
            "r master page 1 0x10 channel display 0 = 0x92 (enable, hold, position 2)");
}

TEST(RegisterWords, TellAnAccessToNoChipOrToSeveral) {
  sim::RegisterAccess access;
  access.reg = 0x10;
  access.value = 0x02;
  EXPECT_EQ(AccessInWords(access), "w none page - 0x10 (no name) = 0x02");
  access.select = 0xF5;
  EXPECT_EQ(AccessInWords(access), "w 0xF5 page - 0x10 (no name) = 0x02");
}

}  // namespace
}  // namespace script
