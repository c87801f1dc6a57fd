// What may stand next in a line of the shell.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace script {

struct Completion {
  std::vector<std::string> words;  // those that begin with what is typed of the last word
  std::vector<std::string> hints;  // what is expected where it is no word
};
// `line` is what stands before the cursor.
Completion Complete(std::string_view line);

// The lines that it can become, with one more word each.
std::vector<std::string> CompletedLines(std::string_view line);

// What the Tab key does to it.
struct CompletionStep {
  std::string insert;  // goes to the cursor
  std::string show;    // goes below the line, whole lines; empty when there is nothing to choose
};
CompletionStep CompleteStep(std::string_view line);

}  // namespace script
