// The root block of a version resource: when the image takes what the system gives.
#include <gmock/gmock.h>

#include "tests/device/image/image_fixture.h"

namespace emulator {
namespace {

using testing::ElementsAre;

// What the version has before a call: the layer writes it, or leaves it alone.
constexpr std::uint32_t kOld = 0xA1B2C3D4;

struct Root {
  const char* name;
  std::uint32_t result;  // of the system's call
  bool has_block;
  std::uint32_t bytes;
  bool taken;
};

class VersionRoot : public ImageTest, public testing::WithParamInterface<Root> {};

TEST_P(VersionRoot, IsTakenWhenTheSystemGivesAWholeOne) {
  const Root& root = GetParam();
  const std::uint32_t block =
      Put(std::vector<std::uint32_t>{0xFEEF04BD, 0x10000, 0x10002, 0x30004});
  const std::uint32_t version = Put(std::vector<std::uint32_t>{kOld, kOld});
  const std::uint32_t info = Put(std::vector<std::uint32_t>{0});
  record_.Answer({.name = "VerQueryValueW",
                  .result = root.result,
                  .words = {{2, root.has_block ? block : 0}, {3, root.bytes}}});
  EXPECT_EQ(Call("Plat_QueryVersionRoot", {info, version}), root.taken ? 1u : 0u);
  EXPECT_THAT(record_.Take(),
              ElementsAre("VerQueryValueW(&, '\\', &, &) = " + std::to_string(root.result)));
  EXPECT_EQ(Word(version), root.taken ? 0x10002u : kOld);
  EXPECT_EQ(Word(version + 4), root.taken ? 0x30004u : kOld);
}

constexpr Root kRoots[] = {
    {"Whole", 1, true, 52, true},          {"JustLongEnough", 1, true, 16, true},
    {"TooShort", 1, true, 15, false},      {"None", 1, false, 52, false},
    {"CallThatFails", 0, true, 52, false}, {"AnythingButOne", 2, true, 52, false},
};
INSTANTIATE_TEST_SUITE_P(All, VersionRoot, testing::ValuesIn(kRoots),
                         [](const auto& root) { return std::string(root.param.name); });

// Neither a block nor a length is taken for granted where the system writes none.
TEST_F(ImageTest, HasNoVersionRootWhereTheSystemWritesHalfOfTheAnswer) {
  const std::uint32_t block =
      Put(std::vector<std::uint32_t>{0xFEEF04BD, 0x10000, 0x10002, 0x30004});
  const std::uint32_t info = Put(std::vector<std::uint32_t>(16, 0));
  using Written = std::vector<std::pair<unsigned, std::uint32_t>>;
  for (const Written& words : {Written{}, Written{{2, block}}, Written{{3, 52}}}) {
    const std::uint32_t version = Put(std::vector<std::uint32_t>{kOld, kOld});
    record_.Answer({.name = "VerQueryValueW", .result = 1, .words = words});
    EXPECT_EQ(Call("Plat_QueryVersionRoot", {info, version}), 0u);
    EXPECT_EQ(Word(version), kOld);
  }
}

}  // namespace
}  // namespace emulator
