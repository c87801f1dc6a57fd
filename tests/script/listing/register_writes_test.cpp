#include "script/listing/register_writes.h"

#include <gtest/gtest.h>

#include <sstream>

namespace script {
namespace {

constexpr std::uint8_t kMasterPage0 = 0xFC;  // select bytes
constexpr std::uint8_t kSlave3Page2 = 0xBF;
constexpr std::uint8_t kTwoChips = 0xF5;  // master and slave1, page 1

// Bus cycles as the library makes them.
class RegisterWrites : public testing::Test {
 protected:
  void Table(std::uint8_t select, std::uint8_t reg, const sim::Bytes& values,
             sim::By by = sim::By::Host) {
    Cycle(by, sim::BusWindow::Select, select);
    Cycle(by, sim::BusWindow::Address, reg);
    for (const std::uint8_t value : values) Cycle(by, sim::BusWindow::Data, value);
    Cycle(by, sim::BusWindow::Select, kSelectIdle);
  }
  void Write(std::uint8_t select, std::uint8_t reg, std::uint8_t value,
             sim::By by = sim::By::Host) {
    Table(select, reg, {value}, by);
  }
  void Read(std::uint8_t select, std::uint8_t reg, std::uint8_t value) {
    Cycle(sim::By::Host, sim::BusWindow::Select, select);
    Cycle(sim::By::Host, sim::BusWindow::Address, reg);
    trace_.AddCycle(0, sim::By::Host, true, sim::BusWindow::Data, value);
  }
  std::string Text(std::size_t from = 0) const {
    std::ostringstream out;
    PrintWrites(out, trace_, from);
    return out.str();
  }
  sim::Trace trace_;

 private:
  void Cycle(sim::By by, sim::BusWindow window, std::uint8_t value) {
    trace_.AddCycle(0, by, false, window, value);
  }
};

TEST_F(RegisterWrites, NameChipPageAndRegister) {
  Write(kMasterPage0, 0x07, 0x80);
  Write(kSlave3Page2, 0x60, 0xA0);
  EXPECT_EQ(Text(),
            "      w master page 0  0x07      input hue 0               = 0x80\n"
            "      w slave3 page 2  0x60      box control 0             = 0xA0 (enable, look 4)\n");
}

TEST_F(RegisterWrites, ShowOddSelectBytesAndRegistersWithoutName) {
  Write(kTwoChips, 0x10, 0x01);
  Write(kSelectIdle, 0x10, 0x02);
  Write(kMasterPage0, 0xF0, 0x03);
  EXPECT_EQ(Text(),
            "      w 0xF5   page -  0x10      (no name)                 = 0x01\n"
            "      w none   page -  0x10      (no name)                 = 0x02\n"
            "      w master page 0  0xF0      (no name)                 = 0x03\n");
}

TEST_F(RegisterWrites, LeaveReadsOut) {
  Read(kMasterPage0, 0x81, 0x12);
  Write(kMasterPage0, 0x81, 0x12);
  Read(kMasterPage0, 0x82, 0x34);
  Write(kMasterPage0, 0x82, 0x34);
  EXPECT_EQ(Text(),
            "      w master page 0  0x81      scaler vertical ratio 0   = 0x12\n"
            "      w master page 0  0x82      scaler vertical ratio 0   = 0x34\n");
}

TEST_F(RegisterWrites, ShareALineWhenNeighboursHaveOneName) {
  Table(kMasterPage0, 0x81, {0x12, 0x34, 0x56, 0x78});
  EXPECT_EQ(Text(),
            "      w master page 0  0x81-0x82 scaler vertical ratio 0   = 12 34\n"
            "      w master page 0  0x83-0x84 scaler horizontal ratio 0 = 56 78\n");
}

TEST_F(RegisterWrites, DoNotShareALineWhenTheyAreNoNeighbours) {
  Write(kMasterPage0, 0x82, 0x01);
  Write(kMasterPage0, 0x81, 0x02);
  Write(kMasterPage0, 0x81, 0x03);
  EXPECT_EQ(Text(),
            "      w master page 0  0x82      scaler vertical ratio 0   = 0x01\n"
            "      w master page 0  0x81      scaler vertical ratio 0   = 0x02\n"
            "      w master page 0  0x81      scaler vertical ratio 0   = 0x03\n");
}

TEST_F(RegisterWrites, ShortenTables) {
  Table(kSlave3Page2, 0x86, sim::Bytes(24, 0xFF));
  // Thirteen names: one line.
  Table(kMasterPage0, 0x00, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14});
  EXPECT_EQ(Text(),
            "      w slave3 page 2  0x86-0x9D motion mask 0             = "
            "ff ff ff ff ff ff ff ff ... (24 bytes)\n"
            "      w master page 0  0x00-0x0E input 0                   = "
            "00 01 02 03 04 05 06 07 ... (15 bytes)\n");
}

TEST_F(RegisterWrites, SayWhenTheyAreTheWorkers) {
  Write(kMasterPage0, 0x81, 0x01);
  Write(kMasterPage0, 0x82, 0x02, sim::By::Worker);
  EXPECT_EQ(Text(),
            "      w master page 0  0x81      scaler vertical ratio 0   = 0x01\n"
            "      w master page 0  0x82      scaler vertical ratio 0   = 0x02 (worker)\n");
}

TEST_F(RegisterWrites, BeginAtTheGivenPlace) {
  Write(kMasterPage0, 0x81, 0x01);
  const std::size_t mark = trace_.Mark();
  Write(kMasterPage0, 0x91, 0x02);
  EXPECT_EQ(Text(mark), "      w master page 0  0x91      scaler vertical ratio 1   = 0x02\n");
}

}  // namespace
}  // namespace script
