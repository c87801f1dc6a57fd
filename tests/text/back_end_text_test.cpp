#include "text/back_end_text.h"

#include <ostream>
#include <string>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"
#include "text/tokenizer.h"

namespace test {
namespace {

using Strings = std::vector<std::string>;

constexpr std::uint32_t kInvalidHandleError = 6;

// Little-endian 32-bit slots.
sim::Bytes Slots(std::initializer_list<std::uint32_t> values) {
  sim::Bytes bytes;
  for (const std::uint32_t value : values) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
      bytes.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFF));
    }
  }
  return bytes;
}

class BackEnd : public LibraryTest {
 protected:
  BackEnd() {
    AttachAndBind();
    Look();
  }

  // From here on the functions below look.
  void Look() {
    from_ = world().trace.Mark();
    Mark();
  }

  // A line through the text entry, and through the parser itself.
  static int Text(const std::string& line) { return harness::TextCommandProc(line); }
  static int Parse(const std::string& line) { return VPB_ParseText(line.c_str()); }

  void Open() {
    ASSERT_EQ(Parse("vpb init "), 1);
    Look();
  }

  std::vector<sim::IoctlEvent> Requests() { return Events<sim::IoctlEvent>(); }
  template <typename T>
  std::vector<T> Events() {
    std::vector<T> found;
    const sim::Trace& trace = world().trace;
    for (std::size_t i = from_; i < trace.Events().size(); ++i) {
      if (const T* event = trace.As<T>(trace.Events()[i])) found.push_back(*event);
    }
    return found;
  }
  // Everything that happened.
  Strings Happened() { return Texts(world().trace, from_); }

  // One request with this record, and nothing else at all.
  void ExpectRequest(std::uint32_t code, const sim::Bytes& in, bool ok = true) {
    const std::vector<sim::IoctlEvent> requests = Requests();
    EXPECT_EQ(Happened().size(), 1u);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].name, "VBE1:");
    EXPECT_EQ(requests[0].code, code) << std::hex << requests[0].code;
    EXPECT_EQ(requests[0].in, in);
    EXPECT_EQ(requests[0].ok, ok);
  }

 private:
  std::size_t from_ = 0;
};

// ---- Every request ----------------------------------------------------------------------------

struct RequestCase {
  std::string line;  // as typed, without the separator at the end
  std::uint32_t code;
  sim::Bytes in;
  int tokens;

  std::string SubCommand() const {
    const std::string rest = line.substr(4);
    return rest.substr(0, rest.find(' '));
  }
};
void PrintTo(const RequestCase& c, std::ostream* out) { *out << c.line; }

std::vector<RequestCase> AllRequests() {
  return {
      {"vpb trans on", 0x224800, {}, 2},
      {"vpb trans off", 0x224804, {}, 2},
      {"vpb blen on 200", 0x224808, {200}, 3},
      {"vpb blen off", 0x22480C, {}, 2},
      {"vpb setp 1 2 3 4 5 6 7 8 9 10", 0x224810, Slots({1, 2, 7, 8, 9, 10, 3, 4, 5, 6}), 11},
      {"vpb default", 0x224814, {}, 1},
      {"vpb setp_base 11 12", 0x224828, Slots({11, 12, 0, 0, 0, 0, 0, 0, 0, 0}), 3},
      {"vpb setp_vdo 21 22 23 24", 0x22482C, Slots({0, 0, 0, 0, 0, 0, 21, 22, 23, 24}), 5},
      {"vpb setp_bmp 31 32 33 34", 0x224830, Slots({0, 0, 31, 32, 33, 34, 0, 0, 0, 0}), 5},
      {"vpb set_osd 41 42 43 44 45 46", 0x224850, Slots({41, 42, 43, 44, 45, 46}), 7},
      {"vpb set_vdownd 51 52 53 54", 0x224854, Slots({51, 52, 53, 54}), 5},
      {"vpb set_bmpwnd 61 62", 0x224858, Slots({61, 62}), 3},
      {"vpb set_wndcfg 1 2 3 4 5 6 7 8", 0x22485C, Slots({0, 0, 2, 3, 4, 5, 6, 7, 8, 1}), 9},
      {"vpb set_bmpcfg 1 2 3 4 5 6 7 8", 0x224860, Slots({2, 3, 4, 5, 6, 7, 8, 1}), 9},
      {"vpb set_curcfg 1 2 3 4 5 6 7 8", 0x224864, Slots({1, 2, 3, 4, 5, 6, 7, 8}), 9},
      {"vpb set_wndenable 3 1", 0x224868, Slots({3, 1}), 3},
      {"vpb set_wndpos 7 8 9", 0x22486C, Slots({7, 8, 9}), 4},
      {"vpb set_wndsize 7 8 9", 0x224878, Slots({7, 8, 9}), 4},
  };
}

// The same with numbers that do not fit a byte, and with negative ones.
std::vector<RequestCase> WideRequests() {
  constexpr std::uint32_t kMinus1 = 0xFFFFFFFF;
  constexpr std::uint32_t kMinus300 = 0xFFFFFED4;
  return {
      {"vpb blen on 300", 0x224808, {44}, 3},
      {"vpb blen on -1", 0x224808, {0xFF}, 3},
      {"vpb blen on 256", 0x224808, {0}, 3},
      {"vpb setp -1 256 300 -300 65536 2147483647 -2147483648 1000 70000 511", 0x224810,
       Slots({kMinus1, 256, 0x80000000, 1000, 70000, 511, 300, kMinus300, 65536, 0x7FFFFFFF}), 11},
      {"vpb setp_base -1 65536", 0x224828, Slots({kMinus1, 65536, 0, 0, 0, 0, 0, 0, 0, 0}), 3},
      {"vpb setp_vdo -1 256 -300 70000", 0x22482C,
       Slots({0, 0, 0, 0, 0, 0, kMinus1, 256, kMinus300, 70000}), 5},
      {"vpb setp_bmp -1 256 -300 70000", 0x224830,
       Slots({0, 0, kMinus1, 256, kMinus300, 70000, 0, 0, 0, 0}), 5},
      {"vpb set_osd -1 256 -300 70000 305419896 -2147483648", 0x224850,
       Slots({kMinus1, 256, kMinus300, 70000, 0x12345678, 0x80000000}), 7},
      {"vpb set_vdownd -1 256 -300 70000", 0x224854, Slots({kMinus1, 256, kMinus300, 70000}), 5},
      {"vpb set_bmpwnd -300 305419896", 0x224858, Slots({kMinus300, 0x12345678}), 3},
      {"vpb set_wndcfg 300 256 -1 -300 70000 65536 511 305419896", 0x22485C,
       Slots({0, 0, 256, kMinus1, kMinus300, 70000, 65536, 511, 0x12345678, 44}), 9},
      {"vpb set_wndcfg -1 -1 -1 -1 -1 -1 -1 -1", 0x22485C,
       Slots({0, 0, kMinus1, kMinus1, kMinus1, kMinus1, kMinus1, kMinus1, kMinus1, 0xFF}), 9},
      {"vpb set_bmpcfg 257 258 259 260 -1 -300 305419896 511", 0x224860,
       Slots({2, 3, 4, 0xFF, 0xD4, 0x78, 0xFF, 1}), 9},
      {"vpb set_curcfg 257 258 259 260 -1 -300 305419896 511", 0x224864,
       Slots({1, 2, 3, 4, 0xFF, 0xD4, 0x78, 0xFF}), 9},
      {"vpb set_wndenable 300 255", 0x224868, Slots({44, 1}), 3},
      {"vpb set_wndpos 300 -1 256", 0x22486C, Slots({44, 0xFF, 0}), 4},
      {"vpb set_wndsize -300 70000 511", 0x224878, Slots({0xD4, 0x70, 0xFF}), 4},
  };
}

class BackEndRequest : public BackEnd, public ::testing::WithParamInterface<RequestCase> {};

// Holds: Video back-end: vpb "Requests to the stream driver "VBE1:"."
// Holds: Video back-end: vpb "An input record is 32-bit slots"
// Holds: vpb trans on "Request 0x224800, no input."
// Holds: vpb trans off "Request 0x224804, no input."
// Holds: vpb blen on "Request 0x224808, one byte."
// Holds: vpb blen off "Request 0x22480C, no input."
// Holds: vpb setp "Request 0x224810, slots A B G H I J C D E F."
// Holds: vpb default "Request 0x224814, no input."
// Holds: vpb setp_base "Request 0x224828, slots A B 0 0 0 0 0 0 0 0."
// Holds: vpb setp_vdo "Request 0x22482C, slots 0 0 0 0 0 0 A B C D."
// Holds: vpb setp_bmp "Request 0x224830, slots 0 0 A B C D 0 0 0 0."
// Holds: vpb set_osd "Request 0x224850, slots A to F."
// Holds: vpb set_vdownd "Request 0x224854, slots A to D."
// Holds: vpb set_bmpwnd "Request 0x224858, slots A B."
// Holds: vpb set_wndcfg "Request 0x22485C, slots 0 0 B C D E F G H A"
// Holds: vpb set_bmpcfg "Request 0x224860, slots B C D E F G H A"
// Holds: vpb set_curcfg "Request 0x224864, slots A to H"
// Holds: vpb set_wndenable "Request 0x224868, slots WINDOW and 0 or 1."
// Holds: vpb set_wndpos "Request 0x22486C, slots as typed"
// Holds: vpb set_wndsize "Request 0x224878, slots as typed"
// Holds: Video back-end: vpb "`A`: a 32-bit number"
// Holds: Video back-end: vpb "`LEVEL`: 0 to 255"
// Holds: Video back-end: vpb "`WINDOW`: 0 to 255"
// Holds: Video back-end: vpb "`Y`: 0 to 255"
// Holds: Video back-end: vpb "`WIDTH`: 0 to 255"
// Holds: Video back-end: vpb "`HEIGHT`: 0 to 255"
TEST_P(BackEndRequest, IsSentWithItsControlCodeAndRecordAndReturnsItsTokenCount) {
  Open();
  EXPECT_EQ(Parse(GetParam().line + " "), GetParam().tokens);
  ExpectRequest(GetParam().code, GetParam().in);
}

TEST_P(BackEndRequest, SucceedsThroughTheTextEntryWithoutAWord) {
  Open();
  EXPECT_EQ(Text(GetParam().line + " "), 0);
  const std::vector<sim::IoctlEvent> requests = Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].code, GetParam().code);
  EXPECT_EQ(requests[0].in, GetParam().in);
  EXPECT_EQ(Happened().size(), 3u) << "call, request, return";
}

// Holds: VEXOAPI_TextCommandProc "Returns VEXO_OK for a line that is a command"
// Holds: Text commands "0: done; or accepted without effect"
// Holds: Video back-end: vpb "Each is skipped while the driver is closed"
TEST_P(BackEndRequest, BeforeInitIsNotSentAndStillReturnsItsTokenCount) {
  EXPECT_EQ(Parse(GetParam().line + " "), GetParam().tokens);
  EXPECT_EQ(Happened(), Strings{});
}

TEST_P(BackEndRequest, AfterUninitIsNotSentAndStillReturnsItsTokenCount) {
  Open();
  EXPECT_EQ(Parse("vpb uninit "), 1);
  Look();
  EXPECT_EQ(Parse(GetParam().line + " "), GetParam().tokens);
  EXPECT_EQ(Happened(), Strings{});
}

TEST_P(BackEndRequest, AfterAFailedOpenGoesToTheInvalidHandleAndFailsWithoutAWord) {
  world().drivers.Set("VBE1:", sim::Drivers::State::Absent);
  Open();
  EXPECT_EQ(Parse(GetParam().line + " "), GetParam().tokens);
  ExpectRequest(GetParam().code, GetParam().in, false);
}

// Holds: Text commands "A last word without a separator after it is dropped"
TEST_P(BackEndRequest, IsRejectedAndNotSentWhenAnyOfItsTokensIsMissing) {
  Open();
  std::string line = GetParam().line;
  while (line != "vpb") {
    // Its last token lacks the separator, and is dropped.
    EXPECT_EQ(Parse(line), 0) << line;
    EXPECT_EQ(Text(line), -1) << line;
    line.resize(line.rfind(' '));
    // It is not there at all, or empty.
    if (line == "vpb") break;
    EXPECT_EQ(Parse(line + " "), 0) << line;
    EXPECT_EQ(Parse(line + "  1 1 1 1 1 1 1 1 1 1 1 "), 0) << line;
    EXPECT_EQ(Text(line + " "), -1) << line;
  }
  EXPECT_TRUE(Requests().empty());
  EXPECT_EQ(DebugText(), "") << "a rejected line is not told";
  EXPECT_TRUE(Messages().empty());
}

// Holds: Text commands "More than a command takes is not read either."
TEST_P(BackEndRequest, TakesNoNoticeOfWhatFollowsIt) {
  Open();
  EXPECT_EQ(Parse(GetParam().line + " 77 extra "), GetParam().tokens);
  ExpectRequest(GetParam().code, GetParam().in);
}

// Holds: Text commands "`VEXOAPI_TextCommandProc` runs one line"
TEST_P(BackEndRequest, MayBeTypedWithCommasAndALineFeed) {
  Open();
  std::string line = GetParam().line;
  for (char& character : line) {
    if (character == ' ') character = ',';
  }
  EXPECT_EQ(Parse(line + "\n"), GetParam().tokens);
  ExpectRequest(GetParam().code, GetParam().in);
}

std::string NameOfRequest(const ::testing::TestParamInfo<RequestCase>& request) {
  std::string name = std::to_string(request.index);
  if (request.index < 10) name.insert(0, "0");
  name += "_" + request.param.SubCommand();
  return name;
}
INSTANTIATE_TEST_SUITE_P(All, BackEndRequest, ::testing::ValuesIn(AllRequests()), NameOfRequest);
INSTANTIATE_TEST_SUITE_P(Wide, BackEndRequest, ::testing::ValuesIn(WideRequests()), NameOfRequest);

// ---- Words and numbers ------------------------------------------------------------------------

class BackEndText : public BackEnd {};

TEST_F(BackEndText, TransMaybeIsRejectedAndSendsNothing) {
  Open();
  EXPECT_EQ(Parse("vpb trans maybe "), 0);
  EXPECT_EQ(Happened(), Strings{});
  EXPECT_EQ(Parse("vpb trans on "), 2);
  ExpectRequest(0x224800, {});
}

TEST_F(BackEndText, NothingIsReadBehindAnUnknownFirstWord) {
  Open();
  const std::string read = "vpb nonsense ";
  EXPECT_EQ(Parse(read + "default "), 0);
  EXPECT_EQ(Happened(), Strings{});
  EXPECT_EQ(g_tokenizer.position, read.size());
}

TEST_F(BackEndText, BlenOnWithoutANumberIsRejected) {
  Open();
  EXPECT_EQ(Parse("vpb blen on "), 0);
  EXPECT_EQ(Happened(), Strings{});
}

TEST_F(BackEndText, SetpSendsItsNumbersInTheDriversOrder) {
  Open();
  EXPECT_EQ(Parse("vpb setp 1 2 3 4 5 6 7 8 9 10 "), 11);
  ExpectRequest(0x224810, Slots({1, 2, 7, 8, 9, 10, 3, 4, 5, 6}));
}

// Holds: Text commands "A number is cut to the width that its operation takes"
// Holds: Video back-end: vpb "`X`: 0 to 255"
TEST_F(BackEndText, SetWndposCuts300To44) {
  Open();
  EXPECT_EQ(Parse("vpb set_wndpos 300 1 2 "), 4);
  ExpectRequest(0x22486C, Slots({44, 1, 2}));
}

// Holds: Video back-end: vpb "`ON`: 0 off"
TEST_F(BackEndText, SetWndenableSendsAFlagOfTheLowByte) {
  Open();
  struct Case {
    const char* typed;
    std::uint32_t sent;
  };
  for (const Case& c : {Case{"0", 0}, Case{"1", 1}, Case{"2", 1}, Case{"128", 1}, Case{"255", 1},
                        Case{"256", 0}, Case{"257", 1}, Case{"512", 0}, Case{"-1", 1},
                        Case{"-256", 0}, Case{"65536", 0}, Case{"on", 0}}) {
    SCOPED_TRACE(c.typed);
    Look();
    EXPECT_EQ(Parse(std::string("vpb set_wndenable 9 ") + c.typed + " "), 3);
    ExpectRequest(0x224868, Slots({9, c.sent}));
  }
}

TEST_F(BackEndText, OnAndOffAreExactWords) {
  Open();
  for (const char* word : {"ON", "On", "OFF", "Off", "o", "of", "offf", "on1", "onn", "1", "0",
                           "on\r", "\ton", "maybe", "default"}) {
    for (const char* sub_command : {"trans", "blen"}) {
      const std::string line = std::string("vpb ") + sub_command + " " + word + " 5 ";
      EXPECT_EQ(Parse(line), 0) << line;
      EXPECT_EQ(Text(line), -1) << line;
    }
  }
  EXPECT_TRUE(Requests().empty());
  EXPECT_EQ(DebugText(), "");
}

TEST_F(BackEndText, BlenOffTakesNoNumber) {
  Open();
  EXPECT_EQ(Parse("vpb blen off 5 "), 2);
  ExpectRequest(0x22480C, {});
}

TEST_F(BackEndText, NumbersAreDecimalWithASignAndEndAtTheFirstOtherCharacter) {
  Open();
  EXPECT_EQ(Parse("vpb set_osd +5 0x10 12abc x 007 -0 "), 7);
  ExpectRequest(0x224850, Slots({5, 0, 12, 0, 7, 0}));
}

// Holds: Text commands "-1: rejected: the first word is not the header"
TEST_F(BackEndText, UnknownSubCommandsAreRejectedAndSendNothing) {
  Open();
  for (const char* word : {"nonsense", "TRANS", "Trans", "tran", "transs", "set", "setp_",
                           "setp_bas", "setp_vdo1", "set_wnd", "set_wndposs", "init\r", "Init",
                           "INIT", "uninit\r", "inits", "vpb", "0", "lsplit"}) {
    const std::string line = std::string("vpb ") + word + " 1 2 3 4 5 6 7 8 9 10 ";
    EXPECT_EQ(Parse(line), 0) << line;
    EXPECT_EQ(Text(line), -1) << line;
  }
  EXPECT_TRUE(Requests().empty());
  EXPECT_TRUE(Events<sim::OpenEvent>().empty());
  EXPECT_TRUE(Events<sim::CloseEvent>().empty());
  EXPECT_EQ(DebugText(), "");
  EXPECT_TRUE(MessageEvents().empty());
}

TEST_F(BackEndText, AMissingSubCommandIsRejectedWithoutAWord) {
  for (const char* line : {"vpb ", "vpb,", "vpb\n", "vpb  init ", "vpb init", "vpb ,init "}) {
    EXPECT_EQ(Parse(line), 0) << line;
    EXPECT_EQ(Text(line), -1) << line;
  }
  EXPECT_EQ(DebugText(), "");
  EXPECT_TRUE(Events<sim::OpenEvent>().empty());
}

TEST_F(BackEndText, AnyOtherHeaderIsToldAndRejected) {
  Open();
  for (const char* line :
       {"", " ", "vpb", " vpb trans on ", "VPB trans on ", "Vpb trans on ", "vpbx trans on ",
        "xvpb trans on ", "vp trans on ", "vpb\ttrans on ", "trans on ", "my vpb trans on "}) {
    Look();
    EXPECT_EQ(Parse(line), 0) << line;
    EXPECT_EQ(Debug(), (Strings{"[VexoCtrlSDK]: ", ">> Parse VPB TEXT Not Found Header!\r\n"}))
        << line;
    EXPECT_EQ(Happened().size(), 2u) << line;
  }
}

TEST_F(BackEndText, ALongerWordWithTheHeaderInItReachesTheParserAndIsRejectedThere) {
  for (const char* line : {"vpbx init ", "my vpb init ", "vpb"}) {
    Look();
    EXPECT_EQ(Text(line), -1) << line;
    EXPECT_EQ(Debug(), (Strings{"[VexoCtrlSDK]: ", ">> Parse VPB TEXT Not Found Header!\r\n"}))
        << line;
    EXPECT_TRUE(Events<sim::OpenEvent>().empty());
  }
}

TEST_F(BackEndText, TheHeaderTextGoesByTheOutputMessageSwitch) {
  harness::SetEnableOutputMsg(0);
  EXPECT_EQ(Parse("nonsense "), 0);
  EXPECT_EQ(Debug(), Strings{});
  harness::SetEnableOutputMsg(1);
  EXPECT_EQ(Parse("nonsense "), 0);
  EXPECT_EQ(Debug().size(), 2u);
}

TEST_F(BackEndText, NeedsNoReadyChipAndTouchesNone) {
  world().board.FitChips(0);
  EXPECT_EQ(Text("vpb init "), 0);
  EXPECT_EQ(Text("vpb default "), 0);
  EXPECT_EQ(Text("vpb uninit "), 0);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_TRUE(Events<sim::LockEvent>().empty()) << "no text command takes the lock";
}

// ---- Opening and closing ----------------------------------------------------------------------

class BackEndDriver : public BackEnd {
 protected:
  // One status message to the host, sent, with its three values.
  void ExpectStatus(std::uint32_t status) {
    const std::vector<sim::MessageEvent> events = MessageEvents();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_FALSE(events[0].post);
    EXPECT_TRUE(events[0].ok);
    EXPECT_EQ(events[0].message, 0x2401u);
    EXPECT_EQ(events[0].wparam, status);
    EXPECT_EQ(events[0].lparam, 0u);
  }
};

// Holds: Video back-end: vpb "Requests to the stream driver "VBE1:"."
// Holds: vpb init "Opens the driver"
TEST_F(BackEndDriver, InitOpensItForReadingAndWritingAlone) {
  EXPECT_EQ(Parse("vpb init "), 1);
  EXPECT_EQ(Happened(), (Strings{"open VBE1:"}));
  const std::vector<sim::OpenEvent> opens = Events<sim::OpenEvent>();
  ASSERT_EQ(opens.size(), 1u);
  EXPECT_EQ(opens[0].name, "VBE1:");
  EXPECT_EQ(opens[0].access, 0xC0000000u);
  EXPECT_EQ(opens[0].share, 0u);
  EXPECT_EQ(opens[0].disposition, 3u);
  EXPECT_TRUE(opens[0].ok);
  EXPECT_EQ(world().drivers.OpenCount(), 1u);
  EXPECT_EQ(*world().drivers.Find(g_back_end.driver), "VBE1:");
}

// Holds: Host window messages "VEXO_MSG_STATUS: wParam: VEXO_STATUS_..."
// Holds: Host window messages "VEXO_STATUS_VBE_ALREADY_OPEN: the video back-end driver"
// Holds: vpb init "Opens the driver"
TEST_F(BackEndDriver, OpenedTwiceTellsTheHostAndKeepsTheFirstHandle) {
  Open();
  const PlatHandle first = g_back_end.driver;
  EXPECT_EQ(Parse("vpb init "), 1);
  ExpectStatus(0x2002);
  EXPECT_EQ(Happened(), (Strings{"send 2401 8194"}));
  EXPECT_EQ(g_back_end.driver, first);
  EXPECT_EQ(world().drivers.OpenCount(), 1u);
  Look();
  EXPECT_EQ(Parse("vpb default "), 1);
  ExpectRequest(0x224814, {});
}

// Holds: vpb uninit "Closes the driver"
TEST_F(BackEndDriver, UninitClosesIt) {
  Open();
  EXPECT_EQ(Parse("vpb uninit "), 1);
  EXPECT_EQ(Happened(), (Strings{"close VBE1:"}));
  EXPECT_EQ(g_back_end.driver, kPlatNoHandle);
  EXPECT_EQ(world().drivers.OpenCount(), 0u);
}

// Holds: vpb uninit "Closes the driver"
TEST_F(BackEndDriver, UninitTwiceAndBeforeInitDoesNothingAndReturns1) {
  world().kernel.SetLastError(0);
  EXPECT_EQ(Parse("vpb uninit "), 1);
  Open();
  EXPECT_EQ(Parse("vpb uninit "), 1);
  Look();
  EXPECT_EQ(Parse("vpb uninit "), 1);
  EXPECT_EQ(Happened(), Strings{});
  EXPECT_EQ(world().kernel.LastError(), 0u) << "no bad handle was closed";
}

TEST_F(BackEndDriver, CanBeOpenedAgainAfterUninit) {
  Open();
  Parse("vpb uninit ");
  Look();
  EXPECT_EQ(Parse("vpb init "), 1);
  EXPECT_EQ(Happened(), (Strings{"open VBE1:"}));
  Look();
  EXPECT_EQ(Parse("vpb default "), 1);
  ExpectRequest(0x224814, {});
}

// Holds: Host window messages "VEXO_STATUS_VBE_OPEN_FAILED: the video back-end driver"
// Holds: vpb init "Opens the driver"
TEST_F(BackEndDriver, FailedOpenTellsTheHostAndKeepsTheInvalidHandle) {
  world().drivers.Set("VBE1:", sim::Drivers::State::Absent);
  EXPECT_EQ(Parse("vpb init "), 1);
  EXPECT_EQ(Happened(), (Strings{"open VBE1: failed", "send 2401 8193"}));
  ExpectStatus(0x2001);
  EXPECT_EQ(g_back_end.driver, kPlatInvalidHandle);
  EXPECT_EQ(DebugText(), "");
}

// Holds: vpb init "An open that failed counts as open until vpb uninit"
TEST_F(BackEndDriver, AfterAFailedOpenInitSaysAlreadyOpenAndDoesNotTryAgain) {
  world().drivers.Set("VBE1:", sim::Drivers::State::Absent);
  Open();
  world().drivers.Set("VBE1:", sim::Drivers::State::Present);
  EXPECT_EQ(Parse("vpb init "), 1);
  ExpectStatus(0x2002);
  EXPECT_TRUE(Events<sim::OpenEvent>().empty());
  EXPECT_EQ(g_back_end.driver, kPlatInvalidHandle);
}

// Holds: vpb init "An open that failed counts as open until vpb uninit"
// Holds: vpb uninit "Closes the driver"
TEST_F(BackEndDriver, AfterAFailedOpenUninitClosesTheInvalidHandleAndInitOpensAgain) {
  world().drivers.Set("VBE1:", sim::Drivers::State::Absent);
  Open();
  world().kernel.SetLastError(0);
  EXPECT_EQ(Parse("vpb uninit "), 1);
  EXPECT_EQ(world().kernel.LastError(), kInvalidHandleError) << "the close was tried";
  EXPECT_EQ(g_back_end.driver, kPlatNoHandle);
  EXPECT_EQ(Happened(), (Strings{"close VBE1: failed"})) << "and its failure is not told";
  Look();
  world().drivers.Set("VBE1:", sim::Drivers::State::Present);
  EXPECT_EQ(Parse("vpb init "), 1);
  EXPECT_EQ(Happened(), (Strings{"open VBE1:"}));
}

TEST_F(BackEndDriver, ThatGivesHandle0StaysClosedWithoutAMessage) {
  world().drivers.Set("VBE1:", sim::Drivers::State::Null);
  EXPECT_EQ(Parse("vpb init "), 1);
  EXPECT_EQ(Happened(), (Strings{"open VBE1: failed"}));
  EXPECT_EQ(g_back_end.driver, kPlatNoHandle);
  EXPECT_TRUE(MessageEvents().empty());
  Look();
  EXPECT_EQ(Parse("vpb trans on "), 2) << "requests are skipped, as before init";
  EXPECT_EQ(Parse("vpb uninit "), 1);
  EXPECT_EQ(Happened(), Strings{});
  EXPECT_EQ(Parse("vpb init "), 1);
  EXPECT_EQ(Happened(), (Strings{"open VBE1: failed"})) << "it is opened anew, not open already";
}

// Holds: Video back-end: vpb "Each is skipped while the driver is closed"
TEST_F(BackEndDriver, ADriverThatRefusesRequestsIsNotToldAndStaysOpen) {
  Open();
  const PlatHandle handle = g_back_end.driver;
  world().drivers.Close(handle);  // from behind: the handle is worth nothing any more
  EXPECT_EQ(Parse("vpb set_bmpwnd 1 2 "), 3);
  const std::vector<sim::IoctlEvent> requests = Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_FALSE(requests[0].ok);
  EXPECT_EQ(Happened().size(), 1u);
  EXPECT_EQ(g_back_end.driver, handle);
}

TEST_F(BackEndDriver, TheHandleIsForgottenThoughTheCloseFails) {
  Open();
  world().drivers.Close(g_back_end.driver);
  EXPECT_EQ(Parse("vpb uninit "), 1);
  EXPECT_EQ(g_back_end.driver, kPlatNoHandle);
  ASSERT_EQ(Events<sim::CloseEvent>().size(), 1u);
  EXPECT_FALSE(Events<sim::CloseEvent>()[0].ok);
  EXPECT_EQ(Happened().size(), 1u) << "and its failure is not told";
}

TEST_F(BackEndDriver, InitAndUninitAreToldThroughTheTextEntryAsSuccess) {
  EXPECT_EQ(Text("vpb init "), 0);
  EXPECT_EQ(Text("vpb init "), 0);
  EXPECT_EQ(Text("vpb uninit "), 0);
  EXPECT_EQ(Text("vpb uninit "), 0);
  world().drivers.Set("VBE1:", sim::Drivers::State::Absent);
  EXPECT_EQ(Text("vpb init "), 0) << "a failed open is told by message alone";
}

TEST_F(BackEndDriver, IsNotOpenedOrClosedByAnythingElse) {
  ASSERT_EQ(Command(VEXO_CMD_INIT, std::vector<std::uint8_t>(24)), 0);
  ASSERT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
  for (const sim::OpenEvent& event : Events<sim::OpenEvent>()) EXPECT_NE(event.name, "VBE1:");
  Open();
  harness::Uninitialize();
  harness::Entry(0);
  EXPECT_NE(g_back_end.driver, kPlatNoHandle);
  EXPECT_TRUE(Events<sim::CloseEvent>().empty());
}

}  // namespace
}  // namespace test
