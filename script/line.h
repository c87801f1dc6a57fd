// The kinds of script lines: one table, from which lines are parsed and help is printed.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "script/session.h"
#include "script/words.h"

namespace script {

enum class LineGroup {
  Board,   // changes the board at once
  Action,  // calls the library or lets time pass; expectations are about the last one
  Check,
  Output,
  Switch,  // how the session goes on; part of what it is
  Tool,    // about the session, and no part of it
};

// What a parsed line does.
using Step = std::function<void(Session&)>;

struct LineKind {
  LineGroup group;
  std::string_view words;      // what it begins with
  std::string_view arguments;  // as help shows them
  std::string_view help;
  Step (*parse)(Arguments& arguments);  // throws Malformed
  bool goes_on = false;                 // an action that is part of the one before

  std::string Usage() const;
};

std::span<const LineKind> BoardLines();
std::span<const LineKind> ActionLines();
std::span<const LineKind> ExpectLines();
std::span<const LineKind> RegisterLines();
std::span<const LineKind> OutputLines();
std::span<const LineKind> StopLines();
std::span<const LineKind> SessionLines();

// All kinds, in the order of help.
std::vector<const LineKind*> AllLines();

// The kind that a line's words belong to: of those that fit the one with the most words. Throws
// Malformed.
const LineKind& FindLine(std::span<const std::string> words);

// How many words of a line its kind takes up.
std::size_t WordCount(const LineKind& kind);

// Usage of every kind whose first word is this, separated by " | ".
std::string UsagesOf(std::string_view first_word);

// The language on one page.
std::string LanguageHelp();

}  // namespace script
