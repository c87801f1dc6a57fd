#include "settings.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "board.h"
#include "desk/console/board_surroundings.h"
#include "lines.h"
#include "script/session.h"

namespace kit {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "VexoDesk.txt";

fs::path FolderOfKit() {
  static const int here = 0;
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<const wchar_t*>(&here), &module);
  wchar_t name[MAX_PATH];
  GetModuleFileNameW(module, name, MAX_PATH);
  return fs::path(name).parent_path();
}

// Names of files are from the folder of the settings.
std::string FileBeside(const fs::path& folder, const std::string& name) {
  return (folder / fs::path(std::u8string(name.begin(), name.end()))).string();
}

void ReadOwnLine(std::vector<std::string> words, const fs::path& folder, Settings& settings) {
  script::Arguments arguments(words);
  arguments.Take("desk");
  const auto port = [&] {
    constexpr std::uint32_t kMost = 65535;
    return arguments.Take("any")
               ? std::uint16_t{0}
               : static_cast<std::uint16_t>(arguments.Number("a port 1 to 65535 or any", 1, kMost));
  };
  if (arguments.Take("port")) {
    settings.port = port();
  } else if (arguments.Take("page")) {
    settings.page = port();
  } else if (arguments.Take("texts")) {
    const std::string where = arguments.Text("console, none or the name of a file");
    settings.texts = where == "console" || where == "none" ? where : FileBeside(folder, where);
  } else if (arguments.Take("nvram")) {
    settings.nvram_file = FileBeside(folder, arguments.Text("the name of a file"));
  } else {
    arguments.Expected("port, page, texts or nvram");
  }
  arguments.End();
}

void ReadLine(const std::string& line, const fs::path& folder, Settings& settings) {
  const std::vector<std::string> words = script::SplitWords(line);
  if (words.empty()) return;
  if (words.front() == "desk") return ReadOwnLine(words, folder, settings);
  RefuseForSystem(line);
  auto statement = script::ParseLine(line, false);
  if (statement->group != script::LineGroup::Board) {
    throw script::Malformed("expected a line that makes the board, found '" + line + "'");
  }
  settings.board.push_back(std::move(*statement));
}

}  // namespace

void Settings::MakeBoard() const {
  class NoAccess : public desk::BoardAccess {
    void Enter() override {}
    void Leave() override {}
    void LetTimePass(std::uint32_t) override {}
  };
  NoAccess access;
  std::ostringstream nowhere;
  desk::BoardSurroundings around(access);
  script::Session session(nowhere, around);
  for (const script::Statement& statement : board) statement.step(session);
}

Settings ReadSettings() {
  Settings settings;
  const fs::path folder = FolderOfKit();
  std::ifstream file(folder / kName);
  if (!file && fs::exists(folder / kName)) {
    throw std::runtime_error(std::string(kName) + " cannot be read");
  }
  std::string line;
  for (unsigned number = 1; std::getline(file, line); ++number) {
    try {
      ReadLine(line, folder, settings);
    } catch (const std::exception& error) {
      throw std::runtime_error(std::string(kName) + ":" + std::to_string(number) + ": " +
                               error.what());
    }
  }
  return settings;
}

}  // namespace kit
