// The simulated PC as a script leaves it.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "script/run.h"
#include "sim/world.h"
#include "tests/harness/fake_library.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace script {

class BoardScriptTest : public harness::FakeLibraryTest {
 protected:
  static sim::World& After(const std::string& script) {
    std::istringstream in(script);
    std::ostringstream out;
    std::ostringstream err;
    vexosim::TerminalSurroundings around;
    EXPECT_EQ(RunScript(in, "s.vexo", {}, around, out, err), kExitDone) << err.str();
    return sim::TheWorld();
  }
};

}  // namespace script
