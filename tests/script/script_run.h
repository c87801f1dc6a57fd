// Scripts run on a library whose doings are known.
#pragma once

#include <sstream>
#include <string>

#include "script/run.h"
#include "tests/harness/fake_library.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace script {

class ScriptRunTest : public harness::FakeLibraryTest {
 protected:
  int Run(const std::string& script) {
    std::istringstream in(script);
    out_.str({});
    err_.str({});
    harness::TheFake().calls.clear();
    vexosim::TerminalSurroundings around(style_);
    return RunScript(in, "s.vexo", options_, around, out_, err_);
  }
  // Runs attach, window and the lines.
  int RunBound(const std::string& lines) { return Run("attach\nwindow\n" + lines); }
  std::string Out() const { return out_.str(); }
  std::string Err() const { return err_.str(); }

  RunOptions options_;
  vexosim::PictureStyle style_;

 private:
  std::ostringstream out_;
  std::ostringstream err_;
};

}  // namespace script
