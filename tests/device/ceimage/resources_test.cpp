#include "device/ceimage/resources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/device/ceimage/elf_builder.h"

namespace ceimage {
namespace {

using ::testing::HasSubstr;

std::string RefusalOf(const Bytes& file) {
  try {
    ReadResources(file);
  } catch (const Refusal& refusal) {
    return refusal.what();
  }
  return "taken";
}

TEST(Resources, AreReadWithTypeNameLanguageAndContent) {
  const auto resources = ReadResources(ResourceFile({{16, 1, 0x409}, {10, 7, 0}}));
  ASSERT_EQ(resources.size(), 2u);
  EXPECT_EQ(resources[0].type, 16);
  EXPECT_EQ(resources[0].name, 1);
  EXPECT_EQ(resources[0].language, 0x409);
  EXPECT_EQ(resources[0].content, (Bytes{16, 17, 18, 19, 20}));
  EXPECT_EQ(resources[1].type, 10);
  EXPECT_EQ(resources[1].content, (Bytes{10, 11, 12, 13, 14}));
}

TEST(Resources, ThatAreNotUnderstoodAreRefused) {
  EXPECT_THAT(RefusalOf({}), HasSubstr("empty"));
  EXPECT_THAT(RefusalOf(ResourceFile({})), HasSubstr("empty"));
  EXPECT_THAT(RefusalOf(ResourceFile({{16, 0, 0}})), HasSubstr("name is a text"));
  Bytes other = ResourceFile({{16, 1, 0}});
  other[10] = 1;  // the first entry's type
  EXPECT_THAT(RefusalOf(other), HasSubstr("no resource file"));
  Bytes longer = ResourceFile({{16, 1, 0}});
  longer[36] = 36;  // the second entry's header
  EXPECT_THAT(RefusalOf(longer), HasSubstr("unknown form"));
  Bytes short_content = ResourceFile({{16, 1, 0}});
  short_content.resize(short_content.size() - 4);
  EXPECT_THAT(RefusalOf(short_content), HasSubstr("cut off"));
}

TEST(Resources, BecomeATreeOfThreeLevels) {
  constexpr std::uint32_t kAt = 0x5000;
  const Bytes tree = EncodeResources(ReadResources(ResourceFile({{16, 1, 0x409}})), kAt);
  const std::uint32_t directory = 0x80000000;
  const std::uint32_t one = 1u << 16;                                // one entry with a number
  Bytes wanted = Words({0,        0, 0, one, 16,    directory | 24,  //
                        0,        0, 0, one, 1,     directory | 48,  //
                        0,        0, 0, one, 0x409, 72,              //
                        kAt + 88, 5, 0, 0});
  Append(wanted, Bytes{16, 17, 18, 19, 20, 0, 0, 0});
  EXPECT_EQ(tree, wanted);
}

TEST(Resources, LieInTheTreeByTypeThenNameThenLanguage) {
  const Bytes tree = EncodeResources(
      ReadResources(ResourceFile({{16, 2, 1}, {16, 1, 2}, {10, 1, 1}, {16, 1, 1}})), 0);
  const auto entry = [&](std::uint32_t at, std::uint32_t index) {
    return Get32(tree, at + 16 + index * 8 + 4) & 0x7FFFFFFF;
  };
  const auto number = [&](std::uint32_t at, std::uint32_t index) {
    return Get32(tree, at + 16 + index * 8);
  };
  EXPECT_EQ(number(0, 0), 10u);
  EXPECT_EQ(number(0, 1), 16u);
  const std::uint32_t names = entry(0, 1);
  EXPECT_EQ(Get16(tree, names + 14), 2);
  EXPECT_EQ(number(names, 0), 1u);
  EXPECT_EQ(number(names, 1), 2u);
  const std::uint32_t languages = entry(names, 0);
  EXPECT_EQ(number(languages, 0), 1u);
  EXPECT_EQ(number(languages, 1), 2u);
  EXPECT_EQ(Get8(tree, Get32(tree, entry(languages, 1))), 16);
  EXPECT_EQ(Get8(tree, Get32(tree, entry(entry(entry(0, 0), 0), 0))), 10);
}

TEST(Resources, OfTheSameTypeNameAndLanguageAreRefused) {
  const auto resources = ReadResources(ResourceFile({{16, 1, 1}, {16, 1, 1}}));
  EXPECT_THROW(EncodeResources(resources, 0), Refusal);
}

}  // namespace
}  // namespace ceimage
