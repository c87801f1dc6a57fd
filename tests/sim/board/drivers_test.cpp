// Stream drivers.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

using DriverCalls = PlatformTest;

PlatHandle Open(const char16_t* name) {
  return Plat_OpenDriver(name, kPlatReadWrite, kPlatNoSharing, kPlatOpenExisting);
}

TEST_F(DriverCalls, CameraAndBackEndArePresentOthersAreNot) {
  const PlatHandle camera = Open(u"CAM1:");
  const PlatHandle back_end = Open(u"VBE1:");
  EXPECT_NE(camera, kPlatInvalidHandle);
  EXPECT_NE(camera, kPlatNoHandle);
  EXPECT_NE(back_end, camera);
  EXPECT_EQ(world().drivers.OpenCount(), 2u);
  EXPECT_EQ(Open(u"COM1:"), kPlatInvalidHandle);
  EXPECT_EQ(Plat_LastError(), 2u);
  EXPECT_TRUE(Plat_CloseDriver(camera));
  EXPECT_FALSE(Plat_CloseDriver(camera));
  EXPECT_EQ(world().drivers.OpenCount(), 1u);
}

TEST_F(DriverCalls, AnAbsentDriverGivesTheInvalidHandleANullOneZero) {
  world().drivers.Set("CAM1:", Drivers::State::Absent);
  EXPECT_EQ(Open(u"CAM1:"), kPlatInvalidHandle);
  world().drivers.Set("cam1:", Drivers::State::Null);
  EXPECT_EQ(Open(u"CAM1:"), kPlatNoHandle);
  world().drivers.Set("CAM1:", Drivers::State::Present);
  EXPECT_NE(Open(u"CAM1:"), kPlatNoHandle);
}

TEST_F(DriverCalls, CallsAreTraced) {
  const PlatHandle camera = Open(u"CAM1:");
  const Bytes input = {1, 2, 3};
  EXPECT_TRUE(Plat_ControlDriver(camera, 0x220860, nullptr, 0));
  EXPECT_TRUE(Plat_ControlDriver(camera, 0x220864, input.data(), 3));
  EXPECT_TRUE(Plat_CloseDriver(camera));
  const auto opens = Details<OpenEvent>();
  ASSERT_EQ(opens.size(), 1u);
  EXPECT_EQ(opens[0].name, "CAM1:");
  EXPECT_EQ(opens[0].access, 0xC0000000u);
  EXPECT_EQ(opens[0].share, 0u);
  EXPECT_EQ(opens[0].disposition, 3u);
  EXPECT_TRUE(opens[0].ok);
  const auto controls = Details<IoctlEvent>();
  ASSERT_EQ(controls.size(), 2u);
  EXPECT_EQ(controls[0].name, "CAM1:");
  EXPECT_EQ(controls[0].code, 0x220860u);
  EXPECT_TRUE(controls[0].in.empty());
  EXPECT_TRUE(controls[0].ok);
  EXPECT_EQ(controls[1].in, input);
  const auto closes = Details<CloseEvent>();
  ASSERT_EQ(closes.size(), 1u);
  EXPECT_EQ(closes[0].name, "CAM1:");
  EXPECT_TRUE(closes[0].ok);
}

TEST_F(DriverCalls, CallsOnABadHandleAreTracedAndFail) {
  EXPECT_FALSE(Plat_ControlDriver(kPlatInvalidHandle, 1, nullptr, 0));
  world().drivers.Set("VBE1:", Drivers::State::Absent);
  Open(u"VBE1:");
  EXPECT_FALSE(Plat_ControlDriver(kPlatInvalidHandle, 2, nullptr, 0));
  EXPECT_EQ(Plat_LastError(), 6u);
  EXPECT_FALSE(Plat_CloseDriver(kPlatInvalidHandle));
  EXPECT_FALSE(Details<OpenEvent>().at(0).ok);
  const auto controls = Details<IoctlEvent>();
  ASSERT_EQ(controls.size(), 2u);
  EXPECT_EQ(controls[0].name, "");
  EXPECT_FALSE(controls[0].ok);
  EXPECT_EQ(controls[1].name, "VBE1:");
  EXPECT_FALSE(controls[1].ok);
  const auto closes = Details<CloseEvent>();
  ASSERT_EQ(closes.size(), 1u);
  EXPECT_EQ(closes[0].name, "VBE1:");
  EXPECT_FALSE(closes[0].ok);
}

TEST_F(DriverCalls, WithALengthButNoBytesFail) {
  const PlatHandle camera = Open(u"CAM1:");
  EXPECT_FALSE(Plat_ControlDriver(camera, 0x220860, nullptr, 1));
  EXPECT_EQ(Plat_LastError(), 87u);
  const auto controls = Details<IoctlEvent>();
  ASSERT_EQ(controls.size(), 1u);
  EXPECT_EQ(controls[0].name, "CAM1:");
  EXPECT_TRUE(controls[0].in.empty());
  EXPECT_FALSE(controls[0].ok);
}

TEST_F(DriverCalls, OnTheInvalidHandleAreNamedAfterTheFailedOpenThatIsNotClosedYet) {
  world().drivers.Set("CAM1:", Drivers::State::Absent);
  world().drivers.Set("VBE1:", Drivers::State::Absent);
  Open(u"VBE1:");
  Open(u"CAM1:");
  const Bytes input = {7};
  EXPECT_FALSE(Plat_ControlDriver(kPlatInvalidHandle, 1, input.data(), 1));
  EXPECT_FALSE(Plat_CloseDriver(kPlatInvalidHandle));
  EXPECT_FALSE(Plat_ControlDriver(kPlatInvalidHandle, 2, nullptr, 0));
  EXPECT_FALSE(Plat_CloseDriver(kPlatInvalidHandle));
  EXPECT_FALSE(Plat_CloseDriver(kPlatInvalidHandle));
  const auto controls = Details<IoctlEvent>();
  ASSERT_EQ(controls.size(), 2u);
  EXPECT_EQ(controls[0].name, "CAM1:");
  EXPECT_EQ(controls[0].in, input);
  EXPECT_EQ(controls[1].name, "VBE1:");
  std::vector<std::string> closed;
  for (const CloseEvent& event : Details<CloseEvent>()) closed.push_back(event.name);
  EXPECT_EQ(closed, (std::vector<std::string>{"CAM1:", "VBE1:", ""}));
}

TEST_F(DriverCalls, OnAClosedHandleBelongToNoDriver) {
  const PlatHandle back_end = Open(u"VBE1:");
  EXPECT_TRUE(Plat_CloseDriver(back_end));
  world().drivers.Set("CAM1:", Drivers::State::Absent);
  Open(u"CAM1:");
  EXPECT_FALSE(Plat_ControlDriver(back_end, 3, nullptr, 0));
  EXPECT_FALSE(Plat_CloseDriver(back_end));
  ASSERT_EQ(Details<IoctlEvent>().size(), 1u);
  EXPECT_EQ(Details<IoctlEvent>()[0].name, "");
  ASSERT_EQ(Details<CloseEvent>().size(), 2u);
  EXPECT_EQ(Details<CloseEvent>()[1].name, "");
  EXPECT_FALSE(Details<CloseEvent>()[1].ok);
}

}  // namespace
}  // namespace sim
