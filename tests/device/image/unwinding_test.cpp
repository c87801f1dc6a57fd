// The image's function table and code: from whatever instruction, the caller can be found as the
// system finds it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "device/emulator/exports.h"
#include "device/emulator/machine.h"
#include "script/run.h"
#include "tests/device/emulator/call_shadow.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace emulator {
namespace {

PeImage TheImage() {
  const char* const named = std::getenv("VEXO_IMAGE");
  return PeImage::Load(named != nullptr ? named : VEXO_DEFAULT_IMAGE);
}

std::vector<std::filesystem::path> Scripts() {
  std::vector<std::filesystem::path> scripts;
  for (const char* folder : {"/tests/scripts", "/tests/image_scripts"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(VEXO_SOURCE_DIR + std::string(folder))) {
      if (entry.path().extension() == ".vexo") scripts.push_back(entry.path());
    }
  }
  std::sort(scripts.begin(), scripts.end());
  return scripts;
}

int RunScript(const std::filesystem::path& path, const Machine& machine) {
  std::ifstream script(path);
  script::RunOptions options;
  options.machine = &machine;
  vexosim::PictureStyle style;
  vexosim::TerminalSurroundings around(style);
  std::ostringstream out;
  std::ostringstream err;
  const int status = script::RunScript(script, path.filename().string(), options, around, out, err);
  if (status != script::kExitDone) std::cout << out.str() << err.str();
  return status;
}

// The compiler's own division has two instructions of arithmetic between the restoring of registers
// and the return, where nothing can fail.
constexpr std::uint32_t kMultiply = 0xE0030092;  // mul r3, r2, r0
constexpr std::uint32_t kSubtract = 0xE0411003;  // sub r1, r1, r3

TEST(ImageUnwinding, FindsEveryCallerFromWhateverInstructionAScriptRuns) {
  constexpr unsigned kEvery = 101;
  Machine machine(TheImage());
  CallShadow shadow(machine, kEvery);
  const ImageInUse in_use(machine);
  for (const std::filesystem::path& path : Scripts()) {
    EXPECT_EQ(RunScript(path, machine), script::kExitDone) << path;
  }
  std::cout << shadow.Samples() << " samples of " << machine.Instructions() << " instructions, at "
            << shadow.Places() << " places in " << shadow.Functions() << " of "
            << machine.Image().FunctionCount() << " functions: " << shadow.Calls()
            << " callers found\n";
  for (const auto& [address, difference] : shadow.Differences()) {
    const std::uint32_t instruction = Machine::Lease(machine)->ReadWord(address);
    EXPECT_TRUE(instruction == kMultiply || instruction == kSubtract) << difference;
  }
  EXPECT_LE(shadow.Differences().size(), 2u);
  // All but a few that report what no script brings about.
  EXPECT_GE(shadow.Functions(), machine.Image().FunctionCount() * 98 / 100);
}

}  // namespace
}  // namespace emulator
