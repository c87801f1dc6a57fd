// Debug outputs, system texts and conversions.
#include <gmock/gmock.h>

#include <array>
#include <limits>

#include "tests/sim/fixture.h"

namespace sim {
namespace {

using Texts = PlatformTest;

TEST_F(Texts, EachWriteToADebugOutputIsAnEvent) {
  Plat_DebugOutput(u"[VexoCtrlSDK]: ");
  Plat_DebugOutput(u"gr\u00FC\u00DFe \U0001F4F7\r\n");
  Plat_KernelDebugOutput(u"kernel");
  const auto events = Details<DebugEvent>();
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(events[0].text, "[VexoCtrlSDK]: ");
  EXPECT_FALSE(events[0].kernel);
  EXPECT_EQ(events[1].text,
            "gr\xC3\xBC\xC3\x9F"
            "e \xF0\x9F\x93\xB7\r\n");
  EXPECT_TRUE(events[2].kernel);
  EXPECT_EQ(events[2].text, "kernel");
}

TEST_F(Texts, SystemTextsAreFoundFreedAndCounted) {
  char16_t* text = Plat_SystemText(1460, kPlatNoHandle);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(ToUtf8(text), "This operation returned because the timeout period expired.\r\n");
  EXPECT_EQ(world().allocations, 1u);
  Plat_FreeSystemText(text);
  Plat_FreeSystemText(nullptr);
  EXPECT_EQ(world().allocations, 0u);
  EXPECT_EQ(world().system_text_asks, 1u);
}

TEST_F(Texts, EverySystemTextEndsItsLine) {
  for (const std::uint32_t code : {5u, 6u, 8u, 183u, 1400u, 1460u}) {
    char16_t* text = Plat_SystemText(code, kPlatNoHandle);
    ASSERT_NE(text, nullptr) << code;
    EXPECT_TRUE(ToUtf8(text).ends_with(".\r\n"));
    Plat_FreeSystemText(text);
  }
}

TEST_F(Texts, AModuleIsNeverSearched) {
  const PlatHandle module = Plat_LoadDataModule(u"NETMSG.dll");
  EXPECT_NE(module, kPlatNoHandle);
  EXPECT_EQ(kernel().OpenModules(), 1u);
  EXPECT_EQ(kernel().OpenHandles(), 0u);
  EXPECT_EQ(Plat_SystemText(2100, module), nullptr);
  EXPECT_EQ(world().system_text_asks, 1u);
  EXPECT_EQ(Plat_Wait(module, 0), kPlatWaitFailed);
  Plat_FreeModule(module);
  EXPECT_EQ(kernel().OpenModules(), 0u);
}

TEST_F(Texts, OtherModulesAreNotFound) {
  EXPECT_EQ(Plat_LoadDataModule(u"other.dll"), kPlatNoHandle);
  EXPECT_EQ(Plat_LastError(), 126u);
}

TEST_F(Texts, AnsiTextsAreWidenedAndCut) {
  std::array<char16_t, 4> buffer;
  Plat_WidenAnsi("a\xFC", buffer.data(), buffer.size());
  EXPECT_EQ(std::u16string(buffer.data()), u"a\u00FC");
  Plat_WidenAnsi("abcdef", buffer.data(), buffer.size());
  EXPECT_EQ(std::u16string(buffer.data()), u"abc");
  buffer[0] = u'x';
  Plat_WidenAnsi("abc", buffer.data(), 0);
  EXPECT_EQ(buffer[0], u'x');
}

TEST_F(Texts, ThreadCallsTurnedOffAreCounted) {
  Plat_DisableThreadCalls(1);
  EXPECT_EQ(world().thread_calls_off, 1u);
}

TEST(TextConversion, GoesBothWays) {
  const std::string texts[] = {"",
                               "ascii",
                               "\xC3\xBC",
                               "\xE2\x82\xAC",
                               "\xF0\x9F\x93\xB7",
                               "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF"};
  for (const std::string& text : texts) EXPECT_EQ(ToUtf8(ToUtf16(text).c_str()), text);
  EXPECT_EQ(ToUtf8(nullptr), "");
}

TEST(TextConversion, ReplacesWhatIsNoText) {
  const std::string replacement = "\xEF\xBF\xBD";
  const char16_t lone_high[] = {0xD83D, u'a', 0};
  const char16_t lone_low[] = {0xDCF7, 0};
  EXPECT_EQ(ToUtf8(lone_high), replacement + "a");
  EXPECT_EQ(ToUtf8(lone_low), replacement);
  struct Row {
    const char* bytes;
    const char16_t* text;
  };
  const Row rows[] = {{"\xC3", u"\uFFFD"},  // cut
                      {"\xFF"
                       "a",
                       u"\uFFFDa"},                   // no lead byte
                      {"\x80", u"\uFFFD"},            // no lead byte
                      {"\xC0\xAF", u"\uFFFD\uFFFD"},  // longer than need be
                      {"\xE0\x80\xAF", u"\uFFFD"},
                      {"\xED\xA0\x80", u"\uFFFD"}};  // a surrogate
  for (const Row& row : rows) EXPECT_EQ(ToUtf16(row.bytes), row.text);
}

TEST(TextConversion, LowersAsciiLettersOnly) { EXPECT_EQ(ToLower("AZ[az\xC4"), "az[az\xC4"); }

TEST(TextHelpers, ShowNumbers) {
  EXPECT_EQ(Hex(0), "0x00");
  EXPECT_EQ(Hex(0x2403, 4), "0x2403");
  EXPECT_EQ(Hex(0x12345, 4), "0x12345");
  EXPECT_EQ(HexBytes(std::vector<std::uint8_t>{0, 0xAB, 0x7F}), "00ab7f");
  EXPECT_EQ(HexBytes(std::vector<std::uint8_t>{0, 0xAB}, " "), "00 ab");
}

TEST(TextHelpers, ListBitsAsRanges) {
  EXPECT_EQ(BitList(0, 16), "");
  EXPECT_EQ(BitList(0xFFDF, 16), "0-4,6-15");
  EXPECT_EQ(BitList(0x5, 16), "0,2");
  EXPECT_EQ(BitList(0xFF, 4), "0-3");
  EXPECT_EQ(BitList(std::numeric_limits<std::uint32_t>::max(), 32), "0-31");
}

TEST(TextHelpers, AreCutIntoLines) {
  EXPECT_THAT(TextLines("\r\n a\r\nb\n\nc"), testing::ElementsAre(" a", "b", "c"));
  EXPECT_THAT(TextLines("\r\n"), testing::IsEmpty());
  EXPECT_THAT(TextLines(""), testing::IsEmpty());
  EXPECT_THAT(TextLines("a \r\n \r\n  "), testing::ElementsAre("a "));
}

}  // namespace
}  // namespace sim
