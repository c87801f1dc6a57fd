// The same failures, met by the image on the emulated device.
#include <gtest/gtest.h>

#include "device/emulator/exports.h"
#include "harness/host.h"
#include "tests/api/failure_session.h"
#include "tests/device/image/image_fixture.h"

namespace emulator {
namespace {

using sim::Fault;
using test::Failure;
using test::RunSession;
using test::SessionEnd;

class ImageFailures : public testing::TestWithParam<std::size_t> {
 protected:
  static constexpr unsigned kNumbers = 3;

  Machine machine_{PeImage::Load(ImagePath())};
  ImageInUse in_use_{machine_};
};

TEST_P(ImageFailures, LeaveNothingBrokenAndTheNextSessionWorks) {
  const auto fault = static_cast<Fault>(GetParam());
  const SessionEnd undisturbed = RunSession(std::nullopt);
  const std::uint64_t calls = undisturbed.calls.at(GetParam());
  ASSERT_GE(calls, 1u) << "the session makes no such call";
  for (const std::uint64_t number : test::Numbers(calls, kNumbers)) {
    for (const auto& plan : {sim::Faults::Nth(number), sim::Faults::From(number)}) {
      const Failure failure{fault, plan};
      SCOPED_TRACE(testing::PrintToString(failure));
      test::ExpectGoodEnd(RunSession(failure), undisturbed, failure);
      EXPECT_EQ(machine_.FirstFault(), std::nullopt);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, ImageFailures, testing::Range(std::size_t{0}, sim::kFaults.size()),
                         [](const auto& row) {
                           std::string name(sim::kFaults.at(row.param).word);
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace emulator
