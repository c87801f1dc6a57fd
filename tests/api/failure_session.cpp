#include "tests/api/failure_session.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "harness/host.h"
#include "sim/text.h"

namespace test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using sim::Fault;
using sim::Faults;

constexpr const char16_t* kLock = u"CS4_GlobalLock";
constexpr unsigned kChips = 2;
constexpr std::uint32_t kDetach = 0;
constexpr std::uint32_t kAttach = 1;

// ---- What has no end ----------------------------------------------------------------------------

struct ForEver {};

constexpr std::uint64_t kLongestMs = 3'600'000;  // of virtual time
constexpr std::uint64_t kMostPolls = 2'000;      // more than any that ends
constexpr std::uint64_t kMostLoads = 1'000'000;  // of a thread that lets no time pass

void Watch() {
  const sim::World& world = sim::TheWorld();
  if (world.kernel.NowUnwrapped() > kLongestMs || world.polling.Reads() > kMostPolls ||
      world.faults.Calls(Fault::Load) > kMostLoads) {
    throw ForEver{};
  }
}

// ---- What the host does -------------------------------------------------------------------------

sim::World& World() { return sim::TheWorld(); }

int Command(std::uint32_t code, Bytes record = {}) {
  World().polling.Progress();
  return harness::CommandProc(code, &record);
}

int Text(const char* line) {
  World().polling.Progress();
  return harness::TextCommandProc(line);
}

void Pump(std::uint32_t ms) { World().kernel.Pump(ms); }

// A split record: its mode, its option and the channels in order.
Bytes Split(std::uint8_t mode, std::uint8_t option = 0) {
  Bytes record = {0, 0, 0, 0, mode, option};
  for (std::uint8_t channel = 0; channel < 16; ++channel) record.push_back(channel);
  return record;
}

Bytes Mode(std::uint8_t mode) {
  Bytes record = Split(mode);
  record.erase(record.begin());
  record[4] = mode;
  record[3] = 0;
  return record;
}

Bytes MotionMask(std::uint8_t channel) {
  Bytes record(26, 0xA5);
  record[0] = channel;
  record[1] = 2;
  return record;
}

int Bind() { return harness::Initialize(World().windows.Create()); }

void ShowLayouts() {
  for (const int mode : {VEXO_SPLIT_FULL, VEXO_SPLIT_4, VEXO_SPLIT_9}) {
    Command(VEXO_CMD_LIVE_SPLIT, Split(static_cast<std::uint8_t>(mode)));
  }
  Command(VEXO_CMD_PLAY_MODE, Mode(VEXO_SPLIT_4));
  Command(VEXO_CMD_PLAY_SPLIT, Split(VEXO_SPLIT_FULL, 1));
  Command(VEXO_CMD_CHANNEL_MASKS, Bytes(12, 0x7F));
  Command(VEXO_CMD_BLANK_MASK, {0x05, 0, 0, 0});
  Command(VEXO_CMD_BIT0_MASK, {0x0A, 0, 0, 0});
  Command(VEXO_CMD_RESTORE_BLANK);
  Command(VEXO_CMD_LIVE_MODE, Mode(VEXO_SPLIT_9));
}

void DetectMotion() {
  Command(VEXO_CMD_MOTION_MASK, MotionMask(3));
  Command(VEXO_CMD_MOTION_MASK_PREVIEW, MotionMask(4));
  Command(VEXO_CMD_MOTION_SETUP, {1, 2, 3, 4});
  Command(VEXO_CMD_MOTION_CLEAR);
  Command(VEXO_CMD_MOTION_REG, {5, 6, 7});
  Command(VEXO_CMD_READ_REG, {0x03, 1, 0x78, 0});
  Command(VEXO_CMD_WRITE_REG, {0x0C, 2, 0x67, 0x12});
  Command(VEXO_CMD_DUMP_SLAVE1_P2);
}

void SayTexts() {
  for (const char* line :
       {"vexo lsplit 4 0 ", "vexo pip start 0 1 ", "vexo pip stop ", "vexo zoom start ",
        "vexo zoom stop ", "vexo rec 1 0 ", "vexo psplit 1 0 ", "vexo mcell show 0 1 0 ",
        "vexo mcell clear ", "vexo bluescr init ", "vexo bluescr clear ", "vexo rver ",
        "vexo color 0 hue 136 ", "vexo change_vdo ntsc ", "vpb init ", "vpb setp_base 1 2 ",
        "vpb set_wndenable 0 1 ", "vpb uninit ", "no header "}) {
    Text(line);
  }
}

void PlugCables() {
  for (const unsigned channel : {0U, 5U}) {
    World().board.SetCamera(channel, sim::Camera::Off);
    Pump(60);
    World().board.SetMotion(channel, true);
    Pump(60);
    World().board.SetCamera(channel, sim::Camera::Pal);
    World().board.SetMotion(channel, false);
    Pump(60);
  }
  Pump(1000);
}

// ---- The session --------------------------------------------------------------------------------

class Session {
 public:
  explicit Session(const std::optional<Failure>& failure) : failure_(failure) {}

  SessionEnd Run() {
    Start();
    RunToItsEnd([this] { Live(); });
    Command(VEXO_CMD_STOP_MONITOR);
    end_.lock_depth = World().kernel.MutexDepth(kLock);
    end_.failed_releases = World().faults.Hits(Fault::Release);
    Leave();
    RunToItsEnd([] { ComeBack(); });
    Leave();
    Collect();
    LiveNext();
    return end_;
  }

 private:
  void Start() {
    harness::Restart();
    World().trace.SetEnabled(false);
    World().board.FitChips(kChips);
    World().system_texts.clear();
    World().kernel.SetWatch(Watch);
    if (failure_) World().faults.Set(failure_->fault, failure_->plan);
  }

  // What waits for ever is ended, and its cause with it.
  template <typename Life>
  void RunToItsEnd(const Life& life) {
    try {
      life();
    } catch (const ForEver&) {
      end_.waited_for_ever = true;
      World().faults.Set(failure_->fault, false);
    }
  }

  void Live() {
    harness::Entry(kAttach);
    Bind();
    Initialize();
    Pump(100);
    ShowLayouts();
    DetectMotion();
    SetMotion();
    PlugCables();
    Text("vexo init 0 0 ");
    Initialize();
    SayTexts();
    StopAWorkerThatIsStuck();
    InitializeWithoutAThread();
    Initialize();
  }

  // The chips count as ready from before.
  static void ComeBack() {
    harness::Entry(kAttach);
    Bind();
    Command(VEXO_CMD_LIVE_SPLIT, Split(VEXO_SPLIT_9));
    Text("vexo lsplit 1 0 ");
  }

  static void Leave() {
    harness::Uninitialize();
    harness::Entry(kDetach);
  }

  void Initialize() {
    if (Command(VEXO_CMD_INIT, Bytes(24)) == VEXO_ERROR_FAILED) ++end_.keeping_calls;
  }

  void SetMotion() {
    Bytes mask(24, 0x3C);
    const int result = harness::SetMotionInfo(2, 1, &mask);
    if (result == VEXO_ERROR_UNINITIALIZED) ++end_.keeping_calls;
  }

  // A worker that waits for its bit is terminated; one that goes on all the same ends when it
  // comes.
  void StopAWorkerThatIsStuck() {
    World().board.HoldSync(false);
    Initialize();
    World().kernel.StartHostThread([] {
      World().kernel.Idle(300);
      World().board.SetSyncPeriod(20);
    });
    Command(VEXO_CMD_STOP_MONITOR);
    Pump(400);
  }

  // No thread can be made, and the system has no text of the reason.
  void InitializeWithoutAThread() {
    const bool planned = failure_ && failure_->fault == Fault::Thread;
    if (!planned) World().faults.Set(Fault::Thread, true);
    Initialize();
    if (!planned) World().faults.Set(Fault::Thread, false);
  }

  void Collect() {
    sim::World& world = World();
    for (std::size_t i = 0; i < end_.calls.size(); ++i) {
      end_.calls.at(i) = world.faults.Calls(static_cast<Fault>(i));
    }
    if (failure_) {
      end_.hits = world.faults.Hits(failure_->fault);
      world.faults.Set(failure_->fault, false);
    }
    end_.handles = world.kernel.OpenHandles();
    end_.modules = world.kernel.OpenModules();
    end_.threads = world.kernel.LiveThreads();
    end_.allocations = world.allocations;
    end_.drivers = world.drivers.OpenCount();
    for (std::size_t i = 0; i < sim::BusWindows::kCount; ++i) {
      const auto window = static_cast<sim::BusWindow>(i);
      if (world.bus_windows.Find(sim::BusWindows::Address(window))) ++end_.windows;
    }
    const std::u16string mark = u"VEXOSDK";
    const PlatHandle event = world.kernel.CreateEvent(&mark, true, false);
    end_.marked = world.kernel.LastError() == kPlatErrorAlreadyExists;
    world.kernel.CloseHandle(event);
  }

  // In the same process, on a board as at the beginning.
  void LiveNext() {
    sim::World& world = World();
    world.nvram.SetRecord("MDVR", 0, 4 * kChips);
    for (unsigned channel = 0; channel < kChannelsMax; ++channel) {
      world.board.SetCamera(channel, sim::Camera::Ntsc);
    }
    EachRegister([&](unsigned position, std::uint8_t page, std::uint8_t reg) {
      world.board.Poke(position, page, reg, 0);
    });
    for (unsigned position = 0; position < kChips; ++position) {
      world.board.SetId(position, kChipIdTw2835);
    }
    const std::size_t before = world.windows.received.size();
    std::vector<int>& results = end_.next.results;
    results.push_back(harness::Entry(kAttach));
    results.push_back(Bind());
    results.push_back(Command(VEXO_CMD_INIT, Bytes(24)));
    Pump(100);
    results.push_back(Command(VEXO_CMD_CHANNEL_MASKS, Bytes(12, 0xFF)));
    results.push_back(Command(VEXO_CMD_LIVE_MODE, Mode(VEXO_SPLIT_9)));
    results.push_back(Command(VEXO_CMD_STOP_MONITOR));
    end_.next.video_told =
        std::any_of(world.windows.received.begin() + static_cast<std::ptrdiff_t>(before),
                    world.windows.received.end(),
                    [](const auto& message) { return message.message == VEXO_MSG_VIDEO_INFO; });
    world.board.HoldSync(true);  // the one bit that goes with the time
    EachRegister([&](unsigned position, std::uint8_t page, std::uint8_t reg) {
      end_.next.registers.push_back(world.board.Peek(position, page, reg));
    });
  }

  template <typename Function>
  static void EachRegister(const Function& take) {
    for (unsigned position = 0; position < kChips; ++position) {
      for (std::uint8_t page = 0; page < kPageCount; ++page) {
        for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
          take(position, page, static_cast<std::uint8_t>(reg));
        }
      }
    }
  }

  std::optional<Failure> failure_;
  SessionEnd end_;
};

// ---- What must hold -----------------------------------------------------------------------------

bool IsMapping(Fault fault) {
  return fault == Fault::MapSelect || fault == Fault::MapAddress || fault == Fault::MapData;
}

// Chips that cannot be reached are busy for ever; fills and the text command's splits wait for
// them.
bool MayWaitForEver(const Failure& failure) {
  const bool dead = failure.fault == Fault::Load || failure.fault == Fault::Store;
  return IsMapping(failure.fault) || (dead && failure.plan.last != failure.plan.first);
}

std::string Differences(const Bytes& registers, const Bytes& wanted) {
  std::string text;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (registers.at(i) == wanted[i]) continue;
    text += " chip " + std::to_string(i / kRegistersPerPage / kPageCount) + " page " +
            std::to_string(i / kRegistersPerPage % kPageCount) + ' ' +
            sim::Hex(static_cast<std::uint8_t>(i % kRegistersPerPage)) + " is " +
            sim::Hex(registers[i]) + ", not " + sim::Hex(wanted[i]) + ';';
  }
  return text;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Failure& failure) {
  return out << sim::kFaults.at(static_cast<std::size_t>(failure.fault)).word
             << (failure.plan.last == failure.plan.first ? " nth " : " from ")
             << failure.plan.first;
}

SessionEnd RunSession(const std::optional<Failure>& failure) { return Session(failure).Run(); }

std::vector<std::uint64_t> Numbers(std::uint64_t calls, unsigned most) {
  std::vector<std::uint64_t> numbers;
  const std::uint64_t count = std::min<std::uint64_t>(calls, most);
  for (std::uint64_t k = 0; k < count; ++k) {
    numbers.push_back(1 + (count == 1 ? 0 : k * (calls - 1) / (count - 1)));
  }
  return numbers;
}

void ExpectGoodEnd(const SessionEnd& end, const SessionEnd& undisturbed, const Failure& failure) {
  const Fault fault = failure.fault;
  const bool once = failure.plan.last == failure.plan.first;
  EXPECT_GE(end.hits, 1u);
  if (once) {
    EXPECT_EQ(end.hits, 1u);
  }
  if (!MayWaitForEver(failure)) {
    EXPECT_FALSE(end.waited_for_ever);
  }
  EXPECT_EQ(end.lock_depth, end.keeping_calls + end.failed_releases);

  // Who finds the mark there forgets it without closing it.
  const unsigned forgotten = fault == Fault::EventExists ? end.hits : end.marked ? 1 : 0;
  EXPECT_LE(end.handles, undisturbed.handles + forgotten + (fault == Fault::Close ? end.hits : 0));
  EXPECT_EQ(end.modules, 0u);
  // A worker that could not be asked for its exit code is forgotten, and lives on.
  EXPECT_LE(end.threads, fault == Fault::ExitCode ? end.hits : 0);
  EXPECT_EQ(end.allocations, 0u);
  EXPECT_EQ(end.drivers, fault == Fault::DriverClose ? end.hits : 0);
  EXPECT_EQ(end.windows, 0u);

  // The mark of a process that is told of another one, or cannot close it, stays, and refuses
  // whoever comes next.
  if (fault != Fault::EventExists && fault != Fault::Close) {
    EXPECT_FALSE(end.marked);
  }
  if (end.marked) {
    EXPECT_EQ(end.next.results.at(1), VEXO_ERROR_UNINITIALIZED);
  } else {
    EXPECT_EQ(end.next.results, undisturbed.next.results);
    EXPECT_TRUE(end.next.video_told);
    EXPECT_EQ(Differences(end.next.registers, undisturbed.next.registers), "");
  }
}

}  // namespace test
