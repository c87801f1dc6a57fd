#include "sim/platform/wide_format.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "platform/platform.h"
#include "sim/world.h"

namespace sim {
namespace {

std::string Cut(std::size_t capacity, const char16_t* format, ...) {
  std::array<char16_t, 256> buffer;
  buffer.fill(u'~');
  std::va_list arguments;
  va_start(arguments, format);
  const std::size_t length = Plat_FormatV(buffer.data(), capacity, format, arguments);
  va_end(arguments);
  EXPECT_EQ(buffer[capacity], u'~');
  if (capacity == 0) return "nothing";
  std::string text = ToUtf8(buffer.data());
  EXPECT_EQ(text.size(), length);
  return text;
}

template <typename... Arguments>
std::string Format(const char16_t* format, Arguments... arguments) {
  return Cut(255, format, arguments...);
}

TEST(WideFormat, FormatsSignedNumbers) {
  EXPECT_EQ(Format(u"%d", 0), "0");
  EXPECT_EQ(Format(u"%d", -2147483647 - 1), "-2147483648");
  EXPECT_EQ(Format(u"%i", 42), "42");
  EXPECT_EQ(Format(u"%5d|", 42), "   42|");
  EXPECT_EQ(Format(u"%-5d|", 42), "42   |");
  EXPECT_EQ(Format(u"%05d", -42), "-0042");
  EXPECT_EQ(Format(u"%-05d|", 42), "42   |");
  EXPECT_EQ(Format(u"%+d % d", 7, 7), "+7  7");
  EXPECT_EQ(Format(u"%6.3d", 7), "   007");
  EXPECT_EQ(Format(u"%06.3d", 7), "   007");
  EXPECT_EQ(Format(u"%.0d|", 0), "|");
  EXPECT_EQ(Format(u"%*d|%-*d|", 4, 1, 4, 2), "   1|2   |");
  EXPECT_EQ(Format(u"%*d|", -4, 1), "1   |");
  EXPECT_EQ(Format(u"%.*d", 3, 1), "001");
}

TEST(WideFormat, FormatsUnsignedNumbers) {
  EXPECT_EQ(Format(u"%u", 0xFFFFFFFFu), "4294967295");
  EXPECT_EQ(Format(u"%x %X", 0xABCu, 0xABCu), "abc ABC");
  EXPECT_EQ(Format(u"0x%08X", 0x1003u), "0x00001003");
  EXPECT_EQ(Format(u"0x%02x", 5u), "0x05");
  EXPECT_EQ(Format(u"%#x %#X %#x", 10u, 10u, 0u), "0xa 0XA 0");
  EXPECT_EQ(Format(u"%#06x", 10u), "0x000a");
  EXPECT_EQ(Format(u"%o %#o", 8u, 8u), "10 010");
  EXPECT_EQ(Format(u"%x", 0u), "0");
}

TEST(WideFormat, KnowsTheSizesOfNumbers) {
  EXPECT_EQ(Format(u"%hd %hu %hx", 0x18000, 0x18000, -1), "-32768 32768 ffff");
  EXPECT_EQ(Format(u"%ld %lu %lX", -1, 4000000000u, 0xFu), "-1 4000000000 F");
  EXPECT_EQ(Format(u"%I64d %I64u", std::int64_t{-5000000000}, std::uint64_t{5000000000}),
            "-5000000000 5000000000");
  EXPECT_EQ(Format(u"%llx %I32u", std::uint64_t{0x123456789A}, 7u), "123456789a 7");
  EXPECT_EQ(Format(u"%I64d", std::int64_t{-9223372036854775807} - 1), "-9223372036854775808");
}

TEST(WideFormat, FormatsTexts) {
  EXPECT_EQ(Format(u"[%s]: ", u"VEXOSDK"), "[VEXOSDK]: ");
  EXPECT_EQ(Format(u"%8s|%-8s|", u"abc", u"abc"), "     abc|abc     |");
  EXPECT_EQ(Format(u"%.2s", u"abc"), "ab");
  EXPECT_EQ(Format(u"%ls %ws", u"a", u"b"), "a b");
  EXPECT_EQ(Format(u"%S %hs", "narrow", "short"), "narrow short");
  EXPECT_EQ(Format(u"%s|%7s", static_cast<const char16_t*>(nullptr),
                   static_cast<const char16_t*>(nullptr)),
            "(null)| (null)");
  EXPECT_EQ(Format(u"%S", static_cast<const char*>(nullptr)), "(null)");
  EXPECT_EQ(Format(u"%c%c%3c", u'a', u'b', u'c'), "ab  c");
  EXPECT_EQ(Format(u"%p", reinterpret_cast<void*>(0x1A2B)), "00001A2B");
}

TEST(WideFormat, KeepsWhatIsNoConversion) {
  EXPECT_EQ(Format(u"100%% sure"), "100% sure");
  EXPECT_EQ(Format(u"%y %5"), "%y %5");
  EXPECT_EQ(Format(u"end %"), "end %");
  EXPECT_EQ(Format(u""), "");
}

TEST(WideFormat, CutsWhatDoesNotFit) {
  EXPECT_EQ(Cut(4, u"%s", u"abcdef"), "abc");
  EXPECT_EQ(Cut(4, u"%d", 123), "123");
  EXPECT_EQ(Cut(1, u"abc"), "");
  EXPECT_EQ(Cut(0, u"abc"), "nothing");
}

TEST(WideFormat, FormatsSeveralArgumentsInOrder) {
  EXPECT_EQ(Format(u"%d. %d. %d. %d %s 0x%08X", 1, 0, 1, 6, u"x", 0xF0000001u),
            "1. 0. 1. 6 x 0xF0000001");
}

}  // namespace
}  // namespace sim
