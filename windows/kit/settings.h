// The settings file beside the kit, VexoDesk.txt: what the board is like, and what is kept where.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "script/parse.h"

namespace kit {

struct Settings {
  std::vector<script::Statement> board;  // lines of the script language
  std::optional<std::uint16_t> port;     // the control port; 0: one that is free
  std::optional<std::uint16_t> page;     // the same
  std::string texts = "console";         // as SetTexts has it
  std::string nvram_file;                // empty: forgotten with the process

  // Runs the board's lines. At the board.
  void MakeBoard() const;
};

// Those of the file beside CEDDK.dll, the defaults when there is none. Throws std::runtime_error,
// "VexoDesk.txt:3: " and what was expected.
Settings ReadSettings();

}  // namespace kit
