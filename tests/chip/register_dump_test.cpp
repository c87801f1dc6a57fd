// The listing of a register page: every text, every bus cycle, and what goes between them.
#include "chip/register_dump.h"

#include <algorithm>

#include "chip/registers.h"
#include "harness/host.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;

// One of the twelve listings.
struct Dump {
  std::uint8_t position;
  std::uint8_t page;
  std::uint8_t chip;         // chip select code
  const char* select;        // byte on the select window
  const char* announcement;  // with line ends as the trace shows them
  const char* header;
};

constexpr Dump kDumps[] = {
    {0, 0, 0x03, "FC", "==>> READ MASTER PAGE0 \\r\\n", "==>> MASTER PAGE0\\r\\n==>> [00] "},
    {1, 0, 0x0C, "F3", "==>> READ SLAVE1 PAGE0 \\r\\n", "==>> SLAVE1 PAGE0\\r\\n==>> [00] "},
    {2, 0, 0x30, "CF", "==>> READ SLAVE2 PAGE0 \\r\\n", "==>> SLAVE2 PAGE0\\r\\n==>> [00] "},
    {3, 0, 0xC0, "3F", "==>> READ SLAVE3 PAGE0 \\r\\n", "==>> SLAVE3 PAGE0\\r\\n==>> [00] "},
    {0, 1, 0x03, "FD", "==>> READ MASTER PAGE1 \\r\\n", "==>> MASTER PAGE1\\r\\n==>> [00] "},
    {1, 1, 0x0C, "F7", "==>> READ SLAVE1 PAGE1 \\r\\n", "==>> SLAVE1 PAGE1\\r\\n==>> [00] "},
    {2, 1, 0x30, "DF", "==>> READ SLAVE2 PAGE1 \\r\\n", "==>> SLAVE2 PAGE1\\r\\n==>> [00] "},
    {3, 1, 0xC0, "7F", "==>> READ SLAVE3 PAGE1 \\r\\n", "==>> SLAVE3 PAGE1\\r\\n==>> [00] "},
    {0, 2, 0x03, "FE", "==>> READ MASTER PAGE2 \\r\\n", "==>> MASTER PAGE2\\r\\n==>> [00] "},
    {1, 2, 0x0C, "FB", "==>> READ SLAVE1 PAGE2 \\r\\n", "==>> SLAVE1 PAGE2\\r\\n==>> [00] "},
    {2, 2, 0x30, "EF", "==>> READ SLAVE2 PAGE2 \\r\\n", "==>> SLAVE2 PAGE2\\r\\n==>> [00] "},
    {3, 2, 0xC0, "BF", "==>> READ SLAVE3 PAGE2 \\r\\n", "==>> SLAVE3 PAGE2\\r\\n==>> [00] "},
};

constexpr unsigned kReads = 256;
constexpr unsigned kCyclesOfARead = 4;
// Announcement 2, opening 2, line starts 15, blanks 64, values 256, closing 1.
constexpr std::size_t kDebugWrites = 340;

std::string Hex(int value) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  return {kDigits[(value >> 4) & 0xF], kDigits[value & 0xF]};
}

class RegisterDump : public test::LibraryTest {
 protected:
  // Reading every register of a page meets many that no one named; this is the one reader that
  // may.
  RegisterDump() { ExpectReports(); }

  // A board whose registers are all different from their neighbours.
  void Start(unsigned chips) {
    world().board.FitChips(chips);
    AttachAndBind();
    for (unsigned position = 0; position < chips; ++position) {
      for (unsigned page = 0; page < kPageCount; ++page) {
        for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
          world().board.Poke(position, static_cast<std::uint8_t>(page),
                             static_cast<std::uint8_t>(reg), Content(position, page, reg));
        }
      }
    }
    Restart();
  }

  static std::uint8_t Content(unsigned position, unsigned page, unsigned reg) {
    return static_cast<std::uint8_t>(0x5A + 7 * reg + 0x11 * position + 0x45 * page);
  }

  void Restart() {
    Mark();
    from_ = world().trace.Mark();
  }
  Lines Events(const std::string& prefix = "") { return test::Texts(world().trace, from_, prefix); }

  // The accesses of a listing of a chip's page, with the registers as they are.
  std::vector<test::Access> Reads(const Dump& dump) {
    std::vector<test::Access> reads;
    reads.reserve(kReads);
    for (int reg = 0; reg < 256; ++reg) {
      reads.push_back(test::R(dump.chip, dump.page, reg, Register(dump.position, dump.page, reg)));
    }
    return reads;
  }

  // The whole listing as events of the trace, with the registers as they are.
  Lines Listing(const Dump& dump) {
    const std::string rule(65, '=');
    Lines lines = {"debug [VexoCtrlSDK]: ", std::string("debug ") + dump.announcement};
    for (int reg = 0; reg < 256; ++reg) {
      if (reg == 0) {
        lines.push_back("debug " + rule + "\\r\\n ");
        lines.push_back(std::string("debug ") + dump.header);
      } else if (reg % 16 == 0) {
        lines.push_back("debug \\r\\n==>> [" + Hex(reg) + "] ");
      }
      if (reg % 4 == 0) lines.push_back("debug   ");
      const std::string value = Hex(Register(dump.position, dump.page, reg));
      lines.push_back(std::string("select<-") + dump.select);
      lines.push_back("address<-" + Hex(reg));
      lines.push_back("data->" + value);
      lines.push_back("select<-FF");
      lines.push_back("debug " + value + " ");
    }
    lines.push_back("debug \\r\\n" + rule + "\\r\\n ");
    return lines;
  }

 private:
  std::size_t from_ = 0;
};

class RegisterDumps : public RegisterDump, public ::testing::WithParamInterface<Dump> {};

TEST_P(RegisterDumps, IsAnAnnouncementABannerSixteenLinesAndABanner) {
  const Dump& dump = GetParam();
  Start(4);
  EXPECT_EQ(TW_DumpRegisters(dump.position, dump.page), 0);
  EXPECT_EQ(Events(), Listing(dump));
  EXPECT_EQ(Debug().size(), kDebugWrites);
}

TEST_P(RegisterDumps, ReadsEachRegisterOnceInAscendingOrder) {
  const Dump& dump = GetParam();
  Start(4);
  EXPECT_EQ(TW_DumpRegisters(dump.position, dump.page), 0);
  EXPECT_EQ(Accesses(), Reads(dump));
  EXPECT_EQ(Cycles(), kReads * kCyclesOfARead);
  EXPECT_EQ(Elapsed(), 0u);
  EXPECT_EQ(Messages(), std::vector<std::uint32_t>{});
}

// Holds: VEXOAPI_SetEnableOutputMsg "Turns the plain diagnostics and the register"
TEST_P(RegisterDumps, ReadsEverythingAndPrintsNothingWithTheOutputOff) {
  const Dump& dump = GetParam();
  Start(4);
  harness::SetEnableOutputMsg(0);
  Restart();
  EXPECT_EQ(TW_DumpRegisters(dump.position, dump.page), 0);
  EXPECT_EQ(Debug(), Lines{});
  EXPECT_EQ(KernelDebug(), Lines{});
  EXPECT_EQ(Accesses(), Reads(dump));
  EXPECT_EQ(Cycles(), kReads * kCyclesOfARead);

  harness::SetEnableOutputMsg(1);
  Restart();
  EXPECT_EQ(TW_DumpRegisters(dump.position, dump.page), 0);
  EXPECT_EQ(Debug().size(), kDebugWrites);
}

TEST_P(RegisterDumps, IsNotGatedByTheSwitchOfTheLevelledPrints) {
  const Dump& dump = GetParam();
  Start(4);
  harness::SetEnableDebug(0);
  Restart();
  EXPECT_EQ(TW_DumpRegisters(dump.position, dump.page), 0);
  EXPECT_EQ(Events(), Listing(dump));
}

// An empty position drives nothing onto the bus.
TEST_P(RegisterDumps, ListsWhatTheBusReturnsForAChipThatIsNotFitted) {
  const Dump& dump = GetParam();
  Start(dump.position);  // the chips before it alone
  EXPECT_EQ(TW_DumpRegisters(dump.position, dump.page), 0);
  EXPECT_EQ(Events(), Listing(dump));
  EXPECT_EQ(Cycles(), kReads * kCyclesOfARead);
  const Lines values = Events("data->");
  ASSERT_EQ(values.size(), kReads);
  for (std::size_t reg = 0; reg < values.size(); ++reg) {
    const bool identification = dump.page == kPage0 && reg == kChipId.first;
    EXPECT_EQ(values[reg], identification ? "data->00" : "data->FF") << reg;
  }
}

INSTANTIATE_TEST_SUITE_P(Chips, RegisterDumps, ::testing::ValuesIn(kDumps), [](const auto& dump) {
  return std::to_string(dump.param.position) + "Page" + std::to_string(dump.param.page);
});

TEST_F(RegisterDump, TheSecondLineBeginsWithItsRegisterNumberTwoBlanksAndTheValue) {
  Start(4);
  world().board.Poke(0, 2, 0x10, 0xC7);
  EXPECT_EQ(TW_DumpRegisters(0, 2), 0);
  const Lines debug = Debug();
  const auto line = std::find(debug.begin(), debug.end(), "\r\n==>> [10] ");
  ASSERT_LT(line, debug.end() - 2);
  EXPECT_EQ(line[1], "  ");
  EXPECT_EQ(line[2], "C7 ");
}

TEST_F(RegisterDump, ShowsValuesAsTwoUpperCaseHexadecimalDigits) {
  Start(4);
  constexpr std::uint8_t kValues[] = {0x00, 0x05, 0x0A, 0xAB, 0xCD, 0xEF, 0xFF, 0x10};
  for (std::uint8_t i = 0; i < 8; ++i)
    world().board.Poke(1, 2, static_cast<std::uint8_t>(0xF8 + i), kValues[i]);
  EXPECT_EQ(TW_DumpRegisters(1, 2), 0);
  const std::string text = DebugText();
  const std::string rule(65, '=');
  const std::string end = "  00 05 0A AB   CD EF FF 10 \r\n" + rule + "\r\n ";
  ASSERT_GT(text.size(), end.size());
  EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST_F(RegisterDump, AsTheHostReadsIt) {
  AttachAndBind();
  for (unsigned reg = 0; reg < 256; ++reg) {
    world().board.Poke(0, 2, static_cast<std::uint8_t>(reg), static_cast<std::uint8_t>(reg));
  }
  Mark();
  EXPECT_EQ(TW_DumpRegisters(0, 2), 0);
  const std::string rule(65, '=');
  std::string expected =
      "[VexoCtrlSDK]: ==>> READ MASTER PAGE2 \r\n" + rule + "\r\n ==>> MASTER PAGE2\r\n==>> [00] ";
  for (int line = 0; line < 16; ++line) {
    if (line > 0) expected += "\r\n==>> [" + Hex(16 * line) + "] ";
    for (int group = 0; group < 4; ++group) {
      expected += "  ";
      for (int k = 0; k < 4; ++k) expected += Hex(16 * line + 4 * group + k) + " ";
    }
  }
  expected += "\r\n" + rule + "\r\n ";
  EXPECT_EQ(DebugText(), expected);
}

}  // namespace
