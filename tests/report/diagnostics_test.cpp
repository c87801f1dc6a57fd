// The four print operations, their switches and the system's error texts.
#include "report/diagnostics.h"

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

#include "harness/host.h"
#include "tests/support/library_test.h"

namespace {

constexpr std::uint32_t kAccessDenied = 5;  // the simulated PC has a text for it
constexpr std::uint32_t kNoSuchError = 12345;
constexpr const char* kAccessDeniedText = "Access is denied.\r\n";

using Strings = std::vector<std::string>;

class Diagnostics : public test::LibraryTest {
 protected:
  void Attach() {
    harness::Entry(1);
    Mark();
  }
};

// No text, so that formatting it crashes.
const char16_t* Unreadable() { return reinterpret_cast<const char16_t*>(std::uintptr_t{2}); }

TEST_F(Diagnostics, AtLoadBothSwitchesAreOnTheThresholdIsTwoAndNoModuleHasAName) {
  EXPECT_EQ(g_debug.debug_output, 1u);
  EXPECT_EQ(g_debug.output_message, 1u);
  EXPECT_EQ(g_debug.level_threshold, 2);
  VexoDbg_PrintLevel(1, u"below");
  VexoDbg_PrintLevel(2, u"level");
  VexoDbg_Print(u"plain");
  EXPECT_EQ(Debug(), (Strings{"[]: ", "level", "[]: ", "plain"}));
}

TEST_F(Diagnostics, AttachSetsSwitchesThresholdAndNames) {
  g_debug.debug_output = 0;
  g_debug.output_message = 0;
  g_debug.level_threshold = 7;
  harness::Entry(1);
  EXPECT_EQ(g_debug.debug_output, 1u);
  EXPECT_EQ(g_debug.output_message, 1u);
  EXPECT_EQ(g_debug.level_threshold, 0);
  EXPECT_EQ(std::u16string(g_debug.print_name), u"VexoCtrlSDK");
  EXPECT_EQ(std::u16string(g_debug.level_name), u"VEXOSDK");
}

TEST_F(Diagnostics, PlainPrintWritesPrefixAndMessageApart) {
  Attach();
  VexoDbg_Print(u">> %s %d %x 0x%08X \r\n", u"words", -7, 0xAB, 0x1F005u);
  EXPECT_EQ(Debug(), (Strings{"[VexoCtrlSDK]: ", ">> words -7 ab 0x0001F005 \r\n"}));
}

TEST_F(Diagnostics, LevelledPrintHasANameOfItsOwn) {
  Attach();
  VexoDbg_PrintLevel(2, u"level %u\r\n", 4000000000u);
  EXPECT_EQ(Debug(), (Strings{"[VEXOSDK]: ", "level 4000000000\r\n"}));
}

TEST_F(Diagnostics, RawPrintHasNoPrefix) {
  Attach();
  VexoDbg_PrintRaw(u"%02X ", 0x0A);
  EXPECT_EQ(Debug(), Strings{"0A "});
}

// Holds: VEXOAPI_SetEnableOutputMsg "Turns the plain diagnostics and the register"
TEST_F(Diagnostics, WithOutputMessagesOffOnlyLevelledPrintsAreWritten) {
  Attach();
  harness::SetEnableOutputMsg(0);
  Mark();
  VexoDbg_Print(u"plain");
  VexoDbg_PrintRaw(u"raw");
  VexoDbg_PrintLastError(kAccessDenied);
  EXPECT_EQ(Debug(), Strings{});
  VexoDbg_PrintLevel(0, u"level");
  EXPECT_EQ(Debug(), (Strings{"[VEXOSDK]: ", "level"}));
}

// Holds: VEXOAPI_SetEnableDebug "Turns the levelled diagnostics on (non-zero) or off."
TEST_F(Diagnostics, WithDebugOffOnlyLevelledPrintsAreSilent) {
  Attach();
  harness::SetEnableDebug(0);
  Mark();
  VexoDbg_PrintLevel(4, u"level");
  EXPECT_EQ(Debug(), Strings{});
  VexoDbg_Print(u"plain");
  VexoDbg_PrintRaw(u"raw");
  VexoDbg_PrintLastError(kAccessDenied);
  EXPECT_EQ(Debug(), (Strings{"[VexoCtrlSDK]: ", "plain", "raw", "[VexoCtrlSDK]: ",
                              "************           Error Msg : Access is denied.\r\n \n"}));
}

// Holds: VEXOAPI_SetEnableOutputMsg "Turns the plain diagnostics and the register"
TEST_F(Diagnostics, AnyNonZeroValueTurnsOutputOn) {
  Attach();
  for (const std::uint32_t on : {1u, 2u, 0x100u, 0x80000000u}) {
    harness::SetEnableDebug(on);
    harness::SetEnableOutputMsg(on);
    Mark();
    VexoDbg_Print(u"p");
    VexoDbg_PrintLevel(0, u"l");
    EXPECT_EQ(DebugText(), "[VexoCtrlSDK]: p[VEXOSDK]: l") << on;
  }
}

TEST_F(Diagnostics, ALevelBelowTheThresholdIsNotPrinted) {
  struct Case {
    std::int32_t threshold;
    std::int32_t level;
    bool printed;
  };
  Attach();
  for (const Case& c : {Case{0, -1, false}, Case{0, INT32_MIN, false}, Case{0, 0, true},
                        Case{0, 2, true}, Case{0, 4, true}, Case{2, 1, false}, Case{2, 2, true},
                        Case{-3, -3, true}, Case{-3, -4, false}}) {
    VexoDbg_SetLevelThreshold(c.threshold);
    Mark();
    VexoDbg_PrintLevel(c.level, u"x");
    EXPECT_EQ(!Debug().empty(), c.printed) << c.level << " with threshold " << c.threshold;
  }
}

TEST_F(Diagnostics, AClosedGateLeavesTheArgumentsAlone) {
  Attach();
  VexoDbg_PrintLevel(-1, u"%s", Unreadable());
  VexoDbg_SetDebugOutput(0);
  VexoDbg_PrintLevel(4, u"%s", Unreadable());
  VexoDbg_SetOutputMessage(0);
  VexoDbg_Print(u"%s", Unreadable());
  VexoDbg_PrintRaw(u"%s", Unreadable());
  EXPECT_EQ(Debug(), Strings{});
}

TEST_F(Diagnostics, MessagesOf1023UnitsAreWrittenWhole) {
  Attach();
  const std::u16string longest(1023, u'x');
  VexoDbg_Print(u"%s", longest.c_str());
  EXPECT_EQ(Debug(), (Strings{"[VexoCtrlSDK]: ", std::string(1023, 'x')}));
}

TEST_F(Diagnostics, LongerMessagesAreCut) {
  Attach();
  VexoDbg_Print(u"%s", std::u16string(1024, u'x').c_str());
  EXPECT_EQ(Debug(), (Strings{"[VexoCtrlSDK]: ", std::string(1023, 'x')}));
}

TEST_F(Diagnostics, NamesOfMoreThan31UnitsAreCut) {
  VexoDbg_SetPrintName(std::u16string(40, u'p').c_str());
  VexoDbg_SetLevelName(std::u16string(32, u'l').c_str());
  VexoDbg_Print(u"");
  VexoDbg_PrintLevel(2, u"");
  EXPECT_EQ(DebugText(), "[" + std::string(31, 'p') + "]: [" + std::string(31, 'l') + "]: ");
}

TEST_F(Diagnostics, NamesAreCopiedNotKept) {
  char16_t name[] = u"one";
  VexoDbg_SetPrintName(name);
  VexoDbg_SetLevelName(u"two");
  name[0] = u'X';
  VexoDbg_Print(u"");
  VexoDbg_PrintLevel(2, u"");
  EXPECT_EQ(DebugText(), "[one]: [two]: ");
}

TEST_F(Diagnostics, NamesAreCopiedAsFarAsTheyGo) {
  std::u16string longer(40, u'x');
  longer[3] = u'\0';
  const std::u16string wanted = u"xxx" + std::u16string(kModuleNameUnits - 3, u'\0');
  VexoDbg_SetPrintName(longer.c_str());
  VexoDbg_SetLevelName(longer.c_str());
  EXPECT_EQ(std::u16string(g_debug.print_name, kModuleNameUnits), wanted);
  EXPECT_EQ(std::u16string(g_debug.level_name, kModuleNameUnits), wanted);
}

TEST_F(Diagnostics, ErrorPrintPutsTheSystemsTextIntoAPlainPrint) {
  Attach();
  VexoDbg_PrintLastError(kAccessDenied);
  EXPECT_EQ(Debug(), (Strings{"[VexoCtrlSDK]: ",
                              "************           Error Msg : Access is denied.\r\n \n"}));
}

TEST_F(Diagnostics, AnErrorWithoutATextPrintsNothing) {
  Attach();
  VexoDbg_PrintLastError(kNoSuchError);
  EXPECT_EQ(Debug(), Strings{});
}

TEST_F(Diagnostics, WithOutputMessagesOffAnErrorsTextIsNotEvenAskedFor) {
  Attach();
  harness::SetEnableOutputMsg(0);
  VexoDbg_PrintLastError(kAccessDenied);
  EXPECT_EQ(world().system_text_asks, 0u);
  harness::SetEnableOutputMsg(1);
  VexoDbg_PrintLastError(kAccessDenied);
  EXPECT_EQ(world().system_text_asks, 1u);
}

TEST_F(Diagnostics, GetErrorTextCopiesTheTextAndFreesTheSystemsCopy) {
  char16_t text[kDebugTextUnits];
  const std::uint32_t length = VexoDbg_GetErrorText(kAccessDenied, text);
  EXPECT_EQ(sim::ToUtf8(text), kAccessDeniedText);
  EXPECT_EQ(length, std::string(kAccessDeniedText).size());
  EXPECT_EQ(world().allocations, 0u);
}

TEST_F(Diagnostics, GetErrorTextWithoutABufferGivesTheLengthAlone) {
  EXPECT_EQ(VexoDbg_GetErrorText(kAccessDenied, nullptr), std::string(kAccessDeniedText).size());
  EXPECT_EQ(world().allocations, 0u);
}

TEST_F(Diagnostics, GetErrorTextFillsItsBufferAndCutsWhatIsLonger) {
  constexpr std::size_t kMost = kDebugTextUnits - 1;
  for (const std::size_t units : {kMost - 1, kMost, kMost + 1, 3 * kMost}) {
    world().system_texts[kNoSuchError] = std::string(units, 'x');
    std::vector<char16_t> text(kDebugTextUnits + 1, u'!');
    const std::size_t length = std::min(units, kMost);
    EXPECT_EQ(VexoDbg_GetErrorText(kNoSuchError, text.data()), length);
    EXPECT_EQ(VexoDbg_GetErrorText(kNoSuchError, nullptr), length);
    EXPECT_EQ(std::u16string(text.data()), std::u16string(length, u'x'));
    EXPECT_EQ(text.back(), u'!');
    EXPECT_EQ(world().allocations, 0u);
  }
}

TEST_F(Diagnostics, GetErrorTextOfAnEmptyTextIsEmptyAndLeavesWhatIsBehindIt) {
  world().system_texts[kNoSuchError] = "";
  char16_t text[kDebugTextUnits] = u"before";
  EXPECT_EQ(VexoDbg_GetErrorText(kNoSuchError, text), 0u);
  EXPECT_EQ(std::u16string(text, 7), std::u16string(u"\0efore\0", 7));
  EXPECT_EQ(VexoDbg_GetErrorText(kNoSuchError, nullptr), 0u);
  EXPECT_EQ(world().allocations, 0u);
}

TEST_F(Diagnostics, ErrorPrintCutsATextThatFillsTheLine) {
  Attach();
  world().system_texts[kNoSuchError] = std::string(kDebugTextUnits, 'x');
  VexoDbg_PrintLastError(kNoSuchError);
  ASSERT_EQ(Debug().size(), 2u);
  const std::string before = "************           Error Msg : ";
  EXPECT_EQ(Debug()[1], before + std::string(kDebugTextUnits - 1 - before.size(), 'x'));
}

TEST_F(Diagnostics, GetErrorTextWithoutATextGivesZeroAndLeavesTheBuffer) {
  char16_t text[kDebugTextUnits] = u"before";
  EXPECT_EQ(VexoDbg_GetErrorText(kNoSuchError, text), 0u);
  EXPECT_EQ(std::u16string(text), u"before");
}

// The network's texts are loaded and then not searched: hosts have always seen no text for them.
TEST_F(Diagnostics, NetmsgIsLoadedAndAskedInVain) {
  constexpr PlatHandle kHandleStep = 4;
  const PlatHandle before = world().kernel.NewHandleValue();
  EXPECT_EQ(VexoDbg_GetErrorText(kNoSuchError, nullptr), 0u);
  EXPECT_EQ(world().system_text_asks, 2u);
  // One handle was given out in between, the module's, and it is closed again.
  EXPECT_EQ(world().kernel.NewHandleValue(), before + 2 * kHandleStep);
  EXPECT_EQ(world().kernel.OpenModules(), 0u);
}

TEST_F(Diagnostics, AModuleThatCouldNotBeLoadedIsNotFreed) {
  constexpr std::uint32_t kNoSuchText = 317;
  world().faults.Set(sim::Fault::Module, true);
  EXPECT_EQ(VexoDbg_GetErrorText(kNoSuchError, nullptr), 0u);
  EXPECT_EQ(world().system_text_asks, 2u);
  EXPECT_EQ(world().kernel.LastError(), kNoSuchText) << "no bad handle was closed";
}

TEST_F(Diagnostics, ATextOfTheSystemNeedsNoModule) {
  const PlatHandle before = world().kernel.NewHandleValue();
  EXPECT_NE(VexoDbg_GetErrorText(kAccessDenied, nullptr), 0u);
  EXPECT_EQ(world().system_text_asks, 1u);
  EXPECT_EQ(world().kernel.NewHandleValue(), before + 4);
}

}  // namespace
