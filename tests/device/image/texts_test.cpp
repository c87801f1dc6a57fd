// Texts that the image formats, widens and asks the system for, and where they end when they are
// cut.
#include <gmock/gmock.h>

#include "tests/device/image/image_fixture.h"

namespace emulator {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char16_t kOld = u'~';
constexpr std::uint32_t kBehind = 2;  // units that are nobody's, behind a buffer

class ImageTexts : public ImageTest {
 protected:
  // A buffer for a text of this capacity, with old units in it and behind it.
  std::uint32_t Buffer(std::uint32_t capacity) {
    const std::u16string old(capacity + kBehind, kOld);
    return Put(old.data(), 2 * old.size());
  }
  // The text and its terminator as far as they go, then old units.
  static std::u16string Ended(const std::u16string& text, std::uint32_t capacity) {
    std::u16string units = text;
    units.push_back(u'\0');
    units.resize(capacity + kBehind, kOld);
    return units;
  }
};

// ---- Formatting ---------------------------------------------------------------------------------

TEST_F(ImageTexts, AreFormattedAndCutAtEachCapacity) {
  const std::u16string whole = u"no. 42";
  const std::uint32_t format = Put(std::u16string(u"no. %d"));
  const std::uint32_t list = Put(std::vector<std::uint32_t>{42});
  for (std::uint32_t capacity = 1; capacity <= 9; ++capacity) {
    const std::uint32_t buffer = Buffer(capacity);
    const std::u16string text = whole.substr(0, capacity - 1);
    EXPECT_EQ(Call("Plat_FormatV", {buffer, capacity, format, list}), text.size()) << capacity;
    EXPECT_EQ(Units(buffer, capacity + kBehind), Ended(text, capacity)) << capacity;
    EXPECT_THAT(record_.Take(),
                ElementsAre("_vsnwprintf(&, " + std::to_string(capacity - 1) +
                            ", 'no. %d', &) = " + (capacity > whole.size() ? "6" : "0xFFFFFFFF")))
        << capacity;
  }
}

TEST_F(ImageTexts, AreNotFormattedIntoNoRoom) {
  const std::uint32_t buffer = Buffer(0);
  EXPECT_EQ(Call("Plat_FormatV", {buffer, 0, Put(std::u16string(u"text")), 0}), 0u);
  EXPECT_EQ(Units(buffer, kBehind), std::u16string(kBehind, kOld));
  EXPECT_THAT(record_.Take(), IsEmpty());
}

// C libraries differ in what they say of a text that does not fit.
TEST_F(ImageTexts, EndInsideOfTheBufferWhateverLengthTheSystemTells) {
  struct Told {
    std::uint32_t result;
    std::uint32_t length;
  };
  constexpr std::uint32_t kCapacity = 5;
  for (const Told& told : {Told{0, 0}, Told{3, 3}, Told{4, 4}, Told{5, 4}, Told{0x7FFFFFFF, 4},
                           Told{0xFFFFFFFF, 4}, Told{0x80000000, 4}}) {
    const std::uint32_t buffer = Buffer(kCapacity);
    record_.Answer({.name = "_vsnwprintf", .result = told.result});
    EXPECT_EQ(Call("Plat_FormatV", {buffer, kCapacity, Put(std::u16string(u"text")), 0}),
              told.length);
    EXPECT_EQ(Units(buffer, kCapacity + kBehind),
              std::u16string(told.length, kOld) + u'\0' +
                  std::u16string(kCapacity + kBehind - told.length - 1, kOld))
        << told.result;
  }
}

// ---- Widening -----------------------------------------------------------------------------------

TEST_F(ImageTexts, AreWidenedAsAWholeFromTheAnsiCodePage) {
  const std::uint32_t buffer = Buffer(8);
  Call("Plat_WidenAnsi", {Put(std::string("caf\xE9")), buffer, 8});
  // The last unit ends the buffer even where the text ends before.
  EXPECT_EQ(Units(buffer, 8 + kBehind), std::u16string(u"caf\u00E9\0~~\0~~", 10));
  EXPECT_THAT(record_.Take(),
              ElementsAre("MultiByteToWideChar(0, 0, 'caf\xE9', 0xFFFFFFFF, &, 8) = 5"));
}

TEST_F(ImageTexts, AreCutWhenTheyAreWiderThanTheBuffer) {
  const std::uint32_t text = Put(std::string("text"));
  for (std::uint32_t capacity = 1; capacity <= 5; ++capacity) {
    const std::uint32_t buffer = Buffer(capacity);
    Call("Plat_WidenAnsi", {text, buffer, capacity});
    EXPECT_EQ(Units(buffer, capacity + kBehind),
              Ended(std::u16string(u"text").substr(0, capacity - 1), capacity))
        << capacity;
  }
}

TEST_F(ImageTexts, AreEmptyWhenTheyCannotBeWidened) {
  const std::uint32_t buffer = Buffer(4);
  record_.Answer({.name = "MultiByteToWideChar", .result = 0});
  Call("Plat_WidenAnsi", {Put(std::string("text")), buffer, 4});
  EXPECT_EQ(Units(buffer, 4 + kBehind), std::u16string(u"\0~~\0~~", 6));
}

TEST_F(ImageTexts, AreNotWidenedIntoNoRoom) {
  const std::uint32_t buffer = Buffer(0);
  Call("Plat_WidenAnsi", {Put(std::string("text")), buffer, 0});
  EXPECT_EQ(Units(buffer, kBehind), std::u16string(kBehind, kOld));
  EXPECT_THAT(record_.Take(), IsEmpty());
}

// ---- Error texts --------------------------------------------------------------------------------

constexpr std::uint32_t kDenied = 5;
constexpr std::uint32_t kCapacity = 1024;

TEST_F(ImageTexts, OfTheSystemAreAskedForInItsMemoryAndLanguage) {
  const std::uint32_t address = Call("Plat_SystemText", {kDenied, kModule});
  EXPECT_EQ(Units(address, 20), std::u16string(u"Access is denied.\r\n\0", 20));
  EXPECT_THAT(record_.Take(),
              ElementsAre("GetSystemDefaultLangID() = 0xA5A50409",
                          "FormatMessageW(4352, 0x83F00400, 5, 1033, &, 0, 0) = 19"));
  EXPECT_EQ(machine_.loans.size(), 1u);
  Call("Plat_FreeSystemText", {address});
  EXPECT_THAT(record_.Take(), ElementsAre("LocalFree(text1) = 0"));
  EXPECT_TRUE(machine_.loans.empty());
}

// What the system leaves in the place is no text then.
TEST_F(ImageTexts, OfTheSystemAreNoneWhenItGivesNoUnits) {
  record_.Answer({.name = "FormatMessageW", .result = 0, .words = {{4, 0x12345678}}});
  EXPECT_EQ(Call("Plat_SystemText", {kDenied, 0}), 0u);
  record_.Answer({.name = "FormatMessageW", .result = 19});
  sim::TheWorld().system_texts.clear();
  EXPECT_EQ(Call("Plat_SystemText", {kDenied, 0}), 0u);
}

TEST_F(ImageTexts, OfTheSystemAreCutAtTheBuffersEnd) {
  for (const std::uint32_t length : {19u, kCapacity - 2, kCapacity - 1, kCapacity, 3000u}) {
    const std::u16string whole(length, u'x');
    sim::TheWorld().system_texts[kDenied] = std::string(length, 'x');
    const std::uint32_t buffer = Buffer(kCapacity);
    const std::u16string text = whole.substr(0, kCapacity - 1);
    EXPECT_EQ(Call("VexoDbg_GetErrorText", {kDenied, buffer}), text.size()) << length;
    EXPECT_EQ(Units(buffer, kCapacity + kBehind), Ended(text, kCapacity)) << length;
    EXPECT_TRUE(machine_.loans.empty()) << length;
  }
}

const std::set<std::string> kErrorText = {"FormatMessageW", "LoadLibraryExW", "FreeLibrary",
                                          "LocalFree"};

TEST_F(ImageTexts, OfTheSystemAreFreedOnceTheyAreCopied) {
  EXPECT_EQ(Call("VexoDbg_GetErrorText", {kDenied, Buffer(kCapacity)}), 19u);
  EXPECT_THAT(
      record_.Take(kErrorText),
      ElementsAre("FormatMessageW(4352, 0, 5, 1033, &, 0, 0) = 19", "LocalFree(text1) = 0"));
}

TEST_F(ImageTexts, ThatTheSystemLacksAreAskedForWithTheMessageModuleWhichIsFreed) {
  EXPECT_EQ(Call("VexoDbg_GetErrorText", {77777, Buffer(kCapacity)}), 0u);
  EXPECT_THAT(record_.Take(kErrorText),
              ElementsAre("FormatMessageW(4352, 0, 0x00012FD1, 1033, &, 0, 0) = 0",
                          "LoadLibraryExW('netmsg.dll', 0, 1) = module1",
                          "FormatMessageW(4352, module1, 0x00012FD1, 1033, &, 0, 0) = 0",
                          "FreeLibrary(module1) = 1"));
  EXPECT_EQ(sim::TheWorld().kernel.OpenModules(), 0u);
  EXPECT_TRUE(machine_.loans.empty());
}

TEST_F(ImageTexts, OfTheMessageModuleOutliveIt) {
  record_.Answer({.name = "FormatMessageW", .result = 0});
  const std::uint32_t buffer = Buffer(kCapacity);
  EXPECT_EQ(Call("VexoDbg_GetErrorText", {kDenied, buffer}), 19u);
  EXPECT_EQ(Units(buffer, kCapacity + kBehind), Ended(u"Access is denied.\r\n", kCapacity));
  EXPECT_THAT(record_.Take(kErrorText),
              ElementsAre("FormatMessageW(4352, 0, 5, 1033, &, 0, 0) = 0",
                          "LoadLibraryExW('netmsg.dll', 0, 1) = module1",
                          "FormatMessageW(4352, module1, 5, 1033, &, 0, 0) = 19",
                          "FreeLibrary(module1) = 1", "LocalFree(text1) = 0"));
  EXPECT_TRUE(machine_.loans.empty());
}

TEST_F(ImageTexts, NeedNoMessageModule) {
  record_.Answer({.name = "LoadLibraryExW", .result = 0});
  EXPECT_EQ(Call("VexoDbg_GetErrorText", {77777, 0}), 0u);
  EXPECT_THAT(record_.Take(kErrorText),
              ElementsAre("FormatMessageW(4352, 0, 0x00012FD1, 1033, &, 0, 0) = 0",
                          "LoadLibraryExW('netmsg.dll', 0, 1) = 0",
                          "FormatMessageW(4352, 0, 0x00012FD1, 1033, &, 0, 0) = 0"));
}

}  // namespace
}  // namespace emulator
