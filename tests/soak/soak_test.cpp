// A board that runs on and on, with cables, motion, commands and faults as they come: nothing
// grows, the tick count passes its end unnoticed, and the host is told what it is promised.
//
// VEXO_SOAK_DAYS is how many days of the board's time the run takes (365 and more by hand), and
// VEXO_SOAK_SEED makes it the one that failed.
#include <malloc.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <random>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "harness/host.h"
#include "tests/soak/monitor_model.h"
#include "tests/support/library_test.h"

namespace {

#if defined(__has_feature)  // clang has it, which makes the builds with sanitizers
constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kSanitized = false;
#endif
constexpr double kDays = kSanitized ? 0.05 : 0.75;
constexpr std::uint64_t kDayMs = 86'400'000;
constexpr std::uint64_t kTicksEnd = std::uint64_t{1} << 32;
constexpr std::uint32_t kSyncMs = 20;
constexpr std::uint32_t kSendLimitMs = 5'000;

class Soak : public test::LibraryTest {
 protected:
  Soak() {
    ExpectReports();  // registers that are read while several chips are selected
    world().trace.SetEnabled(false);
  }

  unsigned Pick(unsigned below) { return static_cast<unsigned>(random_() % below); }
  std::uint8_t PickByte() { return static_cast<std::uint8_t>(Pick(256)); }

  // The clock begins half of the run before its end.
  void Start(std::uint64_t seed, std::uint64_t run_ms) {
    random_.seed(seed);
    const std::uint64_t before = std::min(run_ms / 2, kTicksEnd / 2);
    world().kernel.SetClock(kTicksEnd - before, sim::By::Host);
    world().board.SetSyncPeriod(kSyncMs);
    AttachAndBind();
    Reinitialize();
    start_ms_ = world().kernel.NowUnwrapped();
  }

  std::uint64_t Ran() const { return sim::TheWorld().kernel.NowUnwrapped() - start_ms_; }

  // ---- What happens -----------------------------------------------------------------------------

  void Reinitialize() {
    EXPECT_EQ(Command(VEXO_CMD_INIT, std::vector<std::uint8_t>(24)), VEXO_OK);
    EXPECT_EQ(last_record[12], kChipsMax);
    ++initializations_;
    world().windows.received.clear();
    model_.Start();
    Watch(500);  // its first message has waited for the host
  }

  void ChangeCameras() {
    constexpr std::array kCameras = {sim::Camera::Ntsc, sim::Camera::Pal, sim::Camera::Off};
    for (unsigned n = 1 + Pick(3); n > 0; --n) {
      world().board.SetCamera(Pick(kChannelsMax), kCameras[Pick(3)]);
      world().board.SetWeak(Pick(kChannelsMax), Pick(4) == 0);
    }
    for (unsigned n = Pick(4); n > 0; --n)
      world().board.SetMotion(Pick(kChannelsMax), Pick(2) == 0);
  }

  void RunCommand() {
    std::vector<std::uint8_t> list(22);
    for (std::uint8_t k = 0; k < kChannelsMax; ++k) list[6u + k] = k;
    list[4] = static_cast<std::uint8_t>(Pick(7));
    const std::array<std::uint32_t, 5> codes = {VEXO_CMD_LIVE_SPLIT, VEXO_CMD_CHANNEL_MASKS,
                                                VEXO_CMD_BIT0_MASK, VEXO_CMD_RESTORE_BLANK,
                                                VEXO_CMD_MOTION_CLEAR};
    const std::uint32_t code = codes[Pick(codes.size())];
    EXPECT_EQ(Command(code, list), VEXO_OK) << std::hex << code;
  }

  void RunText() {
    constexpr std::array kTexts = {"vexo clrbar 1 ", "vexo color 3 bri 100 ", "vexo lsplit 4 0 ",
                                   "vexo nonsense "};
    const int result = harness::TextCommandProc(kTexts[Pick(kTexts.size())]);
    EXPECT_TRUE(result == VEXO_OK || result == VEXO_ERROR_FAILED);
  }

  // Something that keeps messages from coming, and the time until all of that is over.
  void Fault() {
    const auto pass = [this] { world().kernel.Pump(Pick(3 * kSendLimitMs)); };
    switch (Pick(4)) {
      case 0:
        world().windows.deaf = true;
        ChangeCameras();
        pass();
        world().windows.deaf = false;
        break;
      case 1:
        world().faults.Set(sim::Fault::Send, true);
        ChangeCameras();
        pass();
        world().faults.Set(sim::Fault::Send, false);
        break;
      case 2:  // the host is busy elsewhere
        world().kernel.Idle(Pick(3 * kSendLimitMs));
        break;
      default:
        harness::Uninitialize();
        pass();
        harness::Initialize(world().windows.Create());
        break;
    }
    world().kernel.Pump(kSendLimitMs + 1'000);
    world().windows.received.clear();
    model_.Resume(LossMask(), MotionMask());
  }

  void Restart() {
    EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), VEXO_OK);
    EXPECT_EQ(world().kernel.LiveThreads(), 0u);
    world().kernel.Pump(Pick(2'000));
    EXPECT_TRUE(world().windows.received.empty()) << "a message of nobody";
    Reinitialize();
  }

  void Step() {
    const unsigned what = Pick(100);
    if (what == 0) Fault();
    if (what == 1) Restart();
    if (what >= 2 && what < 12) RunCommand();
    if (what >= 12 && what < 18) RunText();
    if (what >= 18 && what < 60) ChangeCameras();
    Watch(500 + Pick(Pick(20) == 0 ? 600'000 : 30'000));
  }

  // ---- What must be ----------------------------------------------------------------------------

  std::uint32_t LossMask() {
    std::uint32_t mask = 0;
    for (unsigned n = 0; n < kChannelsMax; ++n) {
      const sim::ChannelInput& input = world().board.Input(n);
      if (input.lost || input.weak) mask |= 1u << n;
    }
    return mask;
  }
  std::uint32_t MotionMask() {
    std::uint32_t mask = 0;
    for (unsigned n = 0; n < kChannelsMax; ++n) {
      if (world().board.Input(n).motion) mask |= 1u << n;
    }
    return mask;
  }

  static std::string InWords(const std::vector<sim::ReceivedMessage>& messages) {
    std::string words;
    for (const sim::ReceivedMessage& message : messages) {
      words += sim::Hex(message.message, 4) + " at " + std::to_string(message.t) + " ms, ";
      for (const std::uint8_t byte : message.record) words += sim::Hex(byte) + ' ';
    }
    return words;
  }

  void Watch(std::uint32_t ms) {
    auto& received = world().windows.received;
    // What came while a command ran is of the time before it.
    const std::uint32_t from = world().kernel.Now();
    world().kernel.Pump(ms);
    world().kernel.Pump(0);
    const std::string wrong =
        model_.Check(LossMask(), MotionMask(), from, world().kernel.Now(), received);
    EXPECT_EQ(wrong, "") << "in what came from " << from << " ms on: " << InWords(received);
    received.clear();
    EXPECT_EQ(world().kernel.LiveThreads(), 1u);
    EXPECT_FALSE(world().kernel.MutexHeld(u"CS4_GlobalLock"));
  }

  // Each initialization leaves two events open, and that is all that stays.
  void CheckNothingGrows() {
    constexpr std::size_t kBytesOfAnEvent = 1024;  // with its list of waiters
    constexpr std::size_t kSlack = 256 * 1024;     // containers that keep their room
    const unsigned handles = world().kernel.OpenHandles() - 2 * initializations_;
    const struct mallinfo2 heap_now = mallinfo2();
    const std::size_t heap = heap_now.uordblks + heap_now.hblkhd;
    if (first_handles_ == 0) {
      first_handles_ = handles;
      first_heap_ = heap;
      first_initializations_ = initializations_;
    }
    EXPECT_EQ(handles, first_handles_);
    EXPECT_EQ(world().trace.Events().size(), 0u);
    const std::size_t events = 2 * kBytesOfAnEvent * (initializations_ - first_initializations_);
    // A sanitizer has a heap of its own.
    EXPECT_TRUE(kSanitized || heap <= first_heap_ + events + kSlack) << heap;
  }

  test::MonitorModel model_{kSyncMs};
  unsigned initializations_ = 0;

 private:
  std::mt19937_64 random_;
  std::uint64_t start_ms_ = 0;
  unsigned first_handles_ = 0;
  std::size_t first_heap_ = 0;
  unsigned first_initializations_ = 0;
};

TEST_F(Soak, NothingGrowsAndNoMessageIsMissingOrTooMuchWhateverTheTickCount) {
  const char* const days = std::getenv("VEXO_SOAK_DAYS");
  const char* const given = std::getenv("VEXO_SOAK_SEED");
  const auto run_ms = static_cast<std::uint64_t>(
      (days == nullptr ? kDays : std::strtod(days, nullptr)) * static_cast<double>(kDayMs));
  const std::uint64_t seed =
      given == nullptr ? std::random_device()() : std::strtoull(given, nullptr, 0);
  Start(seed, run_ms);
  std::uint64_t told = 0;  // whole tens of days
  for (unsigned steps = 0; Ran() < run_ms; ++steps) {
    Step();
    if (steps % 100 == 99) CheckNothingGrows();
    if (HasFailure()) {
      FAIL() << "on day " << Ran() / kDayMs << "; it fails again with VEXO_SOAK_SEED=" << seed;
    }
    if (Ran() / (10 * kDayMs) > told) {
      told = Ran() / (10 * kDayMs);
      std::cout << 10 * told << " days, " << model_.Videos() << " loss masks, " << model_.Motions()
                << " motion masks, " << initializations_ << " initializations" << std::endl;
    }
  }
  EXPECT_GT(world().kernel.NowUnwrapped(), kTicksEnd);
  EXPECT_GT(model_.Videos(), 10u);
  EXPECT_GT(model_.Motions(), run_ms / 2'000);
}

}  // namespace
