#include "tools/vexosim/card_script.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>

#include "files/input.h"
#include "files/printable.h"
#include "script/parse.h"
#include "sim/text.h"

namespace vexosim {
namespace {

struct Key {
  std::string_view word;
  std::uint32_t code;
};
constexpr std::array kKeys = {Key{"enter", 0x0D}, Key{"esc", 0x1B},   Key{"left", 0x25},
                              Key{"up", 0x26},    Key{"right", 0x27}, Key{"down", 0x28}};

// The system's number of a key: that of a letter or digit is its character.
std::uint32_t ReadKey(script::Arguments& arguments) {
  const std::string word = sim::ToLower(std::string(arguments.Peek()));
  const auto* const named = std::find_if(kKeys.begin(), kKeys.end(),
                                         [&word](const Key& key) { return key.word == word; });
  const bool plain = word.size() == 1 && std::isalnum(static_cast<unsigned char>(word[0])) != 0;
  if (named == kKeys.end() && !plain) {
    arguments.Expected("a letter, a digit, enter, esc, left, up, right or down");
  }
  arguments.Take(arguments.Peek());
  return named != kKeys.end() ? named->code : static_cast<std::uint32_t>(std::toupper(word[0]));
}

void Start(emulator::Device& device, const std::string& program, const std::string& arguments,
           const std::string& where) {
  try {
    std::uint32_t handle = 0;
    device.Start(program, sim::ToUtf16(arguments), &handle);
  } catch (const emulator::LoaderRefusal& refusal) {
    throw script::ScriptError(where + program + " was not loaded: " + refusal.what() + " (error " +
                              std::to_string(refusal.error) + ')');
  }
}

}  // namespace

CardScript::CardScript(const std::string& file) {
  constexpr std::size_t kMostOfAMessage = 2000;
  files::LineInput input(file);
  for (std::string text; input.Next(text);) {
    const std::string where = file + ':' + std::to_string(input.Number()) + ": ";
    try {
      Add(text, where);
    } catch (const script::Malformed& error) {
      throw script::ScriptError(where + files::PrintableLines(error.what(), kMostOfAMessage));
    }
  }
}

void CardScript::Add(const std::string& text, const std::string& where) {
  const std::vector<std::string> words = script::SplitWords(text);
  script::Arguments arguments{words};
  if (arguments.Take("wait")) {
    const std::uint32_t ms = arguments.Number("a time in ms");
    steps_.emplace_back(
        [ms](script::Session& session, emulator::Device&) { session.World().kernel.Idle(ms); });
  } else if (arguments.Take("key")) {
    const std::uint32_t key = ReadKey(arguments);
    steps_.emplace_back([key, where](script::Session&, emulator::Device& device) {
      if (device.Windows().PressKey(key)) return;
      throw script::ScriptError(where + "no window is shown that could take the key");
    });
  } else if (arguments.Take("start")) {
    const std::string program = arguments.Text("a program");
    std::string line;
    while (!arguments.AtEnd()) line += (line.empty() ? "" : " ") + arguments.Text("an argument");
    steps_.emplace_back(
        [=](script::Session&, emulator::Device& device) { Start(device, program, line, where); });
  } else if (auto statement = script::ParseLine(text, true)) {
    if (statement->group != script::LineGroup::Board) {
      throw script::Malformed("expected a line that changes the board, found '" + statement->text +
                              "': the program calls the library");
    }
    if (steps_.empty()) {
      board_.push_back(std::move(statement->step));
    } else {
      steps_.emplace_back([step = std::move(statement->step)](
                              script::Session& session, emulator::Device&) { step(session); });
    }
    return;
  }
  arguments.End();
}

void CardScript::MakeBoard(script::Session& session) const {
  for (const auto& step : board_) step(session);
}

void CardScript::Play(script::Session& session, emulator::Device& device) const {
  if (steps_.empty()) return;
  session.World().kernel.StartHostThread([&session, &device, steps = steps_] {
    for (const Step& step : steps) step(session, device);
  });
}

}  // namespace vexosim
