// The text entry.
#include "VexoCtrlSDK.h"
#include "support/library_test.h"
#include "tests/api/trace_lines.h"
#include "tools/vexosim/host.h"

namespace {

using Texts = std::vector<std::string>;

class TextFrontEnd : public test::LibraryTest {};

TEST_F(TextFrontEnd, BeforeAttachEveryLineIsRefusedWithoutAWord) {
  EXPECT_EQ(vexosim::TextCommandProc("vexo init 0 0 "), -6);
  EXPECT_EQ(vexosim::TextCommandProc("nonsense"), -6);
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(TextFrontEnd, ALineWithoutAKnownHeaderIsToldAndRefused) {
  vexosim::Entry(1);
  for (const char* line : {"", "nonsense 1 2 3 "}) {
    Mark();
    EXPECT_EQ(vexosim::TextCommandProc(line), -4) << line;
    EXPECT_EQ(Debug(), (Texts{"[VexoCtrlSDK]: ", ">> Command Not Found Header!\r\n"})) << line;
  }
}

TEST_F(TextFrontEnd, TheRefusalGoesByTheOutputMessageSwitch) {
  vexosim::Entry(1);
  vexosim::SetEnableOutputMsg(0);
  Mark();
  EXPECT_EQ(vexosim::TextCommandProc("nonsense"), -4);
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(TextFrontEnd, NeedsNoWindowAndTakesNoLock) {
  vexosim::Entry(1);
  const std::size_t from = world().trace.Mark();
  vexosim::TextCommandProc("nonsense");
  EXPECT_EQ(test::Texts(world().trace, from),
            (Texts{"call VEXOAPI_TextCommandProc",
                   "debug [VexoCtrlSDK]: ", "debug >> Command Not Found Header!\\r\\n",
                   "return VEXOAPI_TextCommandProc -4"}));
}

}  // namespace
