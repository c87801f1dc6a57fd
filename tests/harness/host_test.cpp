#include "harness/host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sim/world.h"
#include "tests/harness/fake_library.h"

namespace harness {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Host : public FakeLibraryTest {
 protected:
  // The only call and the only return in the trace.
  const sim::CallEvent& Call() { return Only<sim::CallEvent>(); }
  const sim::ReturnEvent& Return() { return Only<sim::ReturnEvent>(); }

 private:
  template <typename T>
  const T& Only() {
    static const T none{};
    const T* found = nullptr;
    const sim::Trace& trace = sim::TheWorld().trace;
    for (const sim::Event& event : trace.Events()) {
      if (const T* detail = trace.As<T>(event)) {
        EXPECT_EQ(found, nullptr) << "more than one";
        found = detail;
      }
    }
    EXPECT_NE(found, nullptr);
    return found == nullptr ? none : *found;
  }
};

TEST_F(Host, RecordsTheDllEntryAsDllMainWithItsReason) {
  EXPECT_EQ(Entry(6), 1);
  EXPECT_EQ(Call().fn, "DllMain");
  EXPECT_THAT(Call().args, ElementsAre(6));
  EXPECT_EQ(Return().fn, "DllMain");
  EXPECT_EQ(Return().value, 1);
  EXPECT_EQ(Return().record, std::nullopt);
}

TEST_F(Host, MakesTheDefaultSettingsAtTheFirstAttachOnly) {
  sim::TheWorld().board.FitChips(3);
  Entry(6);
  EXPECT_THAT(sim::TheWorld().nvram.Content(), IsEmpty());
  Entry(1);
  EXPECT_EQ(sim::TheWorld().nvram.Content().back(), 12);
  sim::TheWorld().board.FitChips(1);
  Entry(1);
  EXPECT_EQ(sim::TheWorld().nvram.Content().back(), 12);
}

TEST_F(Host, RemembersTheRegistersAsEachAttachFindsThem) {
  sim::World& world = sim::TheWorld();
  world.board.FitChips(2);
  world.board.Poke(1, kPage2, 0x86, 0x12);
  Entry(6);
  EXPECT_FALSE(world.at_attach.has_value());
  Entry(1);
  ASSERT_TRUE(world.at_attach.has_value());
  ASSERT_TRUE(world.at_attach->chips[1].has_value());
  EXPECT_EQ((*world.at_attach->chips[1])[kPage2][0x86], 0x12);
  EXPECT_EQ((*world.at_attach->chips[1])[kPage0][kChipId.first], 0x28);
  EXPECT_FALSE(world.at_attach->chips[2].has_value());
  world.board.Poke(1, kPage2, 0x86, 0x34);
  Entry(0);
  EXPECT_EQ((*world.at_attach->chips[1])[kPage2][0x86], 0x12);
  Entry(1);
  EXPECT_EQ((*world.at_attach->chips[1])[kPage2][0x86], 0x34);
  Restart();
  EXPECT_FALSE(sim::TheWorld().at_attach.has_value());
}

TEST_F(Host, RecordsTheWindowHandle) {
  const PlatWindow window = sim::TheWorld().windows.Create();
  EXPECT_EQ(Initialize(window), 0);
  EXPECT_EQ(Call().fn, "VEXOAPI_Initialize");
  EXPECT_THAT(Call().args, ElementsAre(static_cast<std::int64_t>(window)));
  EXPECT_EQ(Call().valid, true);
}

TEST_F(Host, RecordsThatAHandleIsNoWindow) {
  Initialize(0xBAD0);
  EXPECT_THAT(Call().args, ElementsAre(0xBAD0));
  EXPECT_EQ(Call().valid, false);
}

TEST_F(Host, RecordsNoValueForExportsWithoutAResult) {
  Uninitialize();
  EXPECT_EQ(Return().fn, "VEXOAPI_Uninitialize");
  EXPECT_EQ(Return().value, std::nullopt);
  EXPECT_EQ(Return().record, std::nullopt);
  EXPECT_EQ(Return().text, std::nullopt);
}

TEST_F(Host, RecordsTheSwitches) {
  SetEnableDebug(7);
  EXPECT_EQ(Call().fn, "VEXOAPI_SetEnableDebug");
  EXPECT_THAT(Call().args, ElementsAre(7));
  sim::TheWorld().trace.Clear();
  SetEnableOutputMsg(8);
  EXPECT_EQ(Call().fn, "VEXOAPI_SetEnableOutputMsg");
  EXPECT_THAT(Call().args, ElementsAre(8));
}

TEST_F(Host, PadsTheRecordOfACommandTo64BytesAndRecordsWhatItBecame) {
  sim::Bytes record = {0x11, 0x22};
  sim::Bytes before = record;
  EXPECT_EQ(CommandProc(0xF00E, &record), -1);
  before.resize(64);
  EXPECT_EQ(Call().record, before);
  EXPECT_THAT(Call().args, ElementsAre(0xF00E));
  ASSERT_EQ(record.size(), 64U);
  EXPECT_EQ(record[63], 0x99);
  EXPECT_EQ(Return().record, record);
  EXPECT_EQ(Return().value, -1);
}

TEST_F(Host, RecordsNoRecordForANullOne) {
  CommandProc(0xF00E, nullptr);
  EXPECT_EQ(Call().record, std::nullopt);
  EXPECT_EQ(Return().record, std::nullopt);
}

TEST_F(Host, RecordsChannelLevelAndMaskOfMotionInfo) {
  sim::Bytes mask(24, 0x0F);
  EXPECT_EQ(SetMotionInfo(3, 2, &mask), 0);
  EXPECT_EQ(Call().fn, "VEXOAPI_SetMotionInfo");
  EXPECT_THAT(Call().args, ElementsAre(3, 2));
  EXPECT_EQ(Call().record, sim::Bytes(24, 0x0F));
  EXPECT_EQ(Return().record, sim::Bytes(24, 0x0F));
}

TEST_F(Host, RecordsTheVersionText) {
  int length = 0;
  EXPECT_EQ(GetVersion(false, &length), "1. 2. 3. 4");
  EXPECT_EQ(length, 10);
  EXPECT_THAT(Call().args, IsEmpty());
  EXPECT_EQ(Return().value, 10);
  EXPECT_EQ(Return().text, "1. 2. 3. 4");
}

TEST_F(Host, RecordsNoTextWithoutAVersionBuffer) {
  int length = 0;
  EXPECT_EQ(GetVersion(true, &length), std::nullopt);
  EXPECT_EQ(length, 10);
  EXPECT_EQ(Return().text, std::nullopt);
}

TEST_F(Host, RecordsATextLineAndNoArguments) {
  EXPECT_EQ(TextCommandProc("vexo"), -4);
  EXPECT_EQ(Call().fn, "VEXOAPI_TextCommandProc");
  EXPECT_THAT(Call().args, IsEmpty());
  EXPECT_EQ(Call().text, "vexo");
  EXPECT_EQ(Call().record, std::nullopt);
  EXPECT_EQ(Return().value, -4);
}

TEST_F(Host, RecordsTheBytesOfALineThatIsNoText) {
  TextCommandProc("a\xFF");
  EXPECT_EQ(Call().record, (sim::Bytes{'a', 0xFF}));
}

TEST_F(Host, RecordsATextLineAsFarAsTheLibrarySeesIt) {
  TextCommandProc(std::string("ab\0cd", 5));
  EXPECT_EQ(Call().text, "ab");
  EXPECT_EQ(Call().record, std::nullopt);
}

}  // namespace
}  // namespace harness
