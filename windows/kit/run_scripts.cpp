#include "run_scripts.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "board.h"
#include "desk/console/board_surroundings.h"
#include "exports.h"
#include "files/exit_status.h"
#include "files/file_error.h"
#include "harness/host.h"
#include "script/run.h"
#include "sim/picture/png.h"

namespace kit {
namespace {

namespace fs = std::filesystem;

// The simulated kernel sees to who is at the board.
class VirtualTime : public desk::BoardAccess {
 public:
  void Enter() override {}
  void Leave() override {}
  void LetTimePass(std::uint32_t ms) override { sim::TheWorld().kernel.Pump(ms); }
};

int RunVariant(const script::Script& script, const fs::path& trace_file) {
  std::ofstream trace(trace_file, std::ios::binary);
  script::RunOptions options;
  options.quiet = true;
  options.trace = &trace;
  VirtualTime time;
  desk::BoardSurroundings around(time);
  const int status = script::RunScript(script, options, around, std::cout, std::cerr);
  for (const auto& [path, image] : around.TakePictures()) sim::WritePng(image, path);
  trace.close();
  if (!trace) throw files::FileError("cannot write " + trace_file.string());
  return status;
}

int RunOne(const fs::path& path, const fs::path& traces) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw files::FileError("cannot read " + path.string());
  int status = files::kExitDone;
  for (const script::Script& script : script::ParseScript(in, path.filename().string())) {
    std::string name = path.stem().string();
    if (!script.variant.empty()) name += "." + script.variant;
    status = std::max(status, RunVariant(script, traces / (name + ".jsonl")));
  }
  return status;
}

}  // namespace

int RunScripts(int count, const char* const* words) {
  std::vector<fs::path> scripts(words, words + count);
  const auto option = std::find(scripts.begin(), scripts.end(), "--traces");
  if (scripts.end() - option != 2 || option == scripts.begin()) {
    std::cerr << "usage: VexoRun SCRIPT... --traces FOLDER" << std::endl;
    return files::kExitWrong;
  }
  const fs::path traces = scripts.back();
  scripts.erase(option, scripts.end());
  SetBoardKind(Kind::Virtual);
  UseMappedExports();
  int status = files::kExitDone;
  for (const fs::path& script : scripts) {
    try {
      status = std::max(status, RunOne(script, traces));
    } catch (const std::exception& error) {
      std::cerr << error.what() << std::endl;
      status = files::kExitWrong;
    }
  }
  harness::Restart();  // the system ends threads before anybody can wait for them
  return status;
}

}  // namespace kit
