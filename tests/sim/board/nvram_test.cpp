// Battery-backed memory and its platform calls.
#include <array>

#include "tests/sim/fixture.h"

namespace sim {
namespace {

using NvramCalls = PlatformTest;

const Bytes kDefault = {'M', 'D', 'V', 'R', 0, 16};

std::uint32_t Read(std::uint32_t block, std::uint32_t offset, Bytes& bytes) {
  PlatNvramRequest request{offset, static_cast<std::uint32_t>(bytes.size()), bytes.data(), 0};
  return Plat_NvramRead(block, &request);
}

std::uint32_t Write(std::uint32_t block, std::uint32_t offset, Bytes bytes) {
  PlatNvramRequest request{offset, static_cast<std::uint32_t>(bytes.size()), bytes.data(), 0};
  return Plat_NvramWrite(block, &request);
}

TEST_F(NvramCalls, TheDefaultRecordIsMadeOnce) {
  world().nvram.MakeDefault(16);
  EXPECT_EQ(world().nvram.Content(), kDefault);
  world().nvram.MakeDefault(4);
  EXPECT_EQ(world().nvram.Content(), kDefault);
}

TEST_F(NvramCalls, WhatWasSetBeforeIsKept) {
  world().nvram.SetBlank();
  world().nvram.MakeDefault(16);
  EXPECT_EQ(world().nvram.Content(), Bytes(6, 0xFF));
}

TEST_F(NvramCalls, AMagicIsCutOrFilledToFourCharacters) {
  world().nvram.SetRecord("MDVR-long", 1, 8);
  EXPECT_EQ(world().nvram.Content(), (Bytes{'M', 'D', 'V', 'R', 1, 8}));
  world().nvram.SetRecord("ab", 2, 4);
  EXPECT_EQ(world().nvram.Content(), (Bytes{'a', 'b', 0, 0, 2, 4}));
}

TEST_F(NvramCalls, ReadsAndWritesAtAnOffset) {
  world().nvram.MakeDefault(16);
  Bytes record(6);
  EXPECT_EQ(Read(1, 0, record), 0u);
  EXPECT_EQ(record, kDefault);
  EXPECT_EQ(Write(1, 4, {1}), 0u);
  Bytes standard(1);
  EXPECT_EQ(Read(1, 4, standard), 0u);
  EXPECT_EQ(standard, Bytes{1});
}

TEST_F(NvramCalls, NothingBeyondTheRecordOrInOtherBlocks) {
  world().nvram.MakeDefault(16);
  Bytes one(1, 0x55);
  Bytes seven(7);
  EXPECT_NE(Read(1, 6, one), 0u);
  EXPECT_NE(Read(1, 0xFFFFFFFFu, one), 0u);
  EXPECT_NE(Read(1, 0, seven), 0u);
  EXPECT_NE(Read(0, 0, one), 0u);
  EXPECT_NE(Write(2, 0, {1}), 0u);
  EXPECT_NE(Write(1, 6, {1}), 0u);
  EXPECT_NE(Plat_NvramRead(1, nullptr), 0u);
  EXPECT_EQ(one, Bytes{0x55});
  EXPECT_EQ(world().nvram.Content(), kDefault);
  EXPECT_EQ(world().nvram.Hits(), 0u);
}

TEST_F(NvramCalls, FailuresAreProducedAndCounted) {
  world().nvram.MakeDefault(16);
  Bytes bytes(6);
  world().nvram.SetFailure(Nvram::Failure::Read);
  EXPECT_NE(Read(1, 0, bytes), 0u);
  EXPECT_EQ(world().nvram.Hits(), 1u);
  EXPECT_EQ(Write(1, 4, {1}), 0u);
  world().nvram.SetFailure(Nvram::Failure::Write);
  EXPECT_NE(Write(1, 4, {0}), 0u);
  EXPECT_EQ(world().nvram.Hits(), 2u);
  EXPECT_EQ(Read(1, 0, bytes), 0u);
  EXPECT_EQ(bytes[4], 1);
  world().nvram.SetFailure(Nvram::Failure::None);
  EXPECT_EQ(Write(1, 4, {0}), 0u);
}

TEST_F(NvramCalls, EveryCallIsTraced) {
  world().nvram.MakeDefault(16);
  Bytes bytes(2);
  EXPECT_EQ(Plat_NvramInit(), 0u);
  Read(1, 4, bytes);
  Write(1, 4, {1});
  world().nvram.SetFailure(Nvram::Failure::Read);
  Read(1, 4, bytes);
  world().nvram.SetFailure(Nvram::Failure::Write);
  Write(1, 5, {7});
  EXPECT_EQ(Plat_NvramDeinit(), 0u);
  struct Row {
    const char* op;
    std::uint32_t block, offset, length;
    Bytes data;
    bool ok;
  };
  const Row rows[] = {{"init", 0, 0, 0, {}, true},    {"read", 1, 4, 2, {0, 16}, true},
                      {"write", 1, 4, 1, {1}, true},  {"read", 1, 4, 2, {}, false},
                      {"write", 1, 5, 1, {7}, false}, {"deinit", 0, 0, 0, {}, true}};
  const auto events = Details<NvramEvent>();
  ASSERT_EQ(events.size(), std::size(rows));
  for (std::size_t i = 0; i < events.size(); ++i) {
    EXPECT_EQ(events[i].op, rows[i].op) << i;
    EXPECT_EQ(events[i].block, rows[i].block) << i;
    EXPECT_EQ(events[i].offset, rows[i].offset) << i;
    EXPECT_EQ(events[i].length, rows[i].length) << i;
    EXPECT_EQ(events[i].data, rows[i].data) << i;
    EXPECT_EQ(events[i].ok, rows[i].ok) << i;
  }
}

}  // namespace
}  // namespace sim
