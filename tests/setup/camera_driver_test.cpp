#include "setup/camera_driver.h"

#include "tests/setup/setup_test.h"

namespace test {
namespace {

class CameraDriver : public SetupTest {};

TEST_F(CameraDriver, IsHaltedBy0AndResumedByAnythingElse) {
  struct Row {
    std::uint32_t resume;
    std::uint32_t code;
  };
  for (const Row& row : {Row{0, 0x220864}, Row{1, 0x220860}, Row{2, 0x220860}, Row{0x100, 0x220860},
                         Row{0x80000000, 0x220860}}) {
    Mark();
    EXPECT_EQ(VexoProc_CameraControl(row.resume), 1);
    const auto requests = Events<sim::IoctlEvent>();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].code, row.code);
    EXPECT_EQ(requests[0].name, "CAM1:");
    EXPECT_TRUE(requests[0].in.empty());
    EXPECT_TRUE(requests[0].ok);
  }
}

TEST_F(CameraDriver, IsOpenedToReadAndWriteWithoutSharingAndClosedAgain) {
  Mark();
  VexoProc_CameraControl(0);
  const auto opened = Events<sim::OpenEvent>();
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(opened[0].name, "CAM1:");
  EXPECT_EQ(opened[0].access, 0xC0000000u);
  EXPECT_EQ(opened[0].share, 0u);
  EXPECT_EQ(opened[0].disposition, 3u);  // open existing
  EXPECT_TRUE(opened[0].ok);
  EXPECT_EQ(Flow(), (std::vector<std::string>{"open CAM1:", "control 220864 ok", "close"}));
  EXPECT_EQ(world().drivers.OpenCount(), 0u);
}

TEST_F(CameraDriver, ThatIsAbsentGetsTheRequestOnItsInvalidHandleAllTheSame) {
  world().drivers.Set("CAM1:", sim::Drivers::State::Absent);
  Mark();
  EXPECT_EQ(VexoProc_CameraControl(0), 0);  // the close fails as well
  EXPECT_EQ(VexoProc_CameraControl(1), 0);
  EXPECT_EQ(Flow(),
            (std::vector<std::string>{"open CAM1:", "control 220864 failed", "close failed",
                                      "open CAM1:", "control 220860 failed", "close failed"}));
  EXPECT_EQ(DebugText(), "");
}

TEST_F(CameraDriver, ThatGivesAZeroHandleGetsNoRequest) {
  world().drivers.Set("CAM1:", sim::Drivers::State::Null);
  Mark();
  EXPECT_EQ(VexoProc_CameraControl(0), 0);
  EXPECT_EQ(VexoProc_CameraControl(1), 0);
  EXPECT_EQ(Flow(), (std::vector<std::string>{"open CAM1:", "open CAM1:"}));
  EXPECT_EQ(DebugText(), "");
}

}  // namespace
}  // namespace test
