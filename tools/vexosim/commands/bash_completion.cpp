#include "tools/vexosim/commands/bash_completion.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>
#include <vector>

namespace vexosim {
namespace {

constexpr const char* kBegin =
    R"(# Completes vexosim in bash: source this file, or put it, as vexosim, where the completions of the
# system are (/usr/share/bash-completion/completions). Made by: vexosim completion bash

# Words that begin with what is typed.
_vexosim_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
}

# Files with this ending, or any, and folders.
_vexosim_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <({
    compgen -f -X "${1:+!*.$1}" -- "$cur"
    compgen -d -- "$cur"
  } | sort -u)
}

)";

constexpr const char* kMain = R"(
_vexosim() {
  local cur="${COMP_WORDS[COMP_CWORD]}" before="${COMP_WORDS[COMP_CWORD - 1]}"
  local command="${COMP_WORDS[1]}" options valued i arguments=0
  COMPREPLY=()
  # --color=auto comes as three words.
  [[ "$before" != "=" ]] || before="${COMP_WORDS[COMP_CWORD - 2]}"
  [[ "$cur" != "=" ]] || cur=""
)";

constexpr const char* kCount = R"(
  # The arguments before this word that are neither options nor theirs.
  for ((i = 2; i < COMP_CWORD; ++i)); do
    if [[ "$valued" == *" ${COMP_WORDS[i]} "* ]]; then
      [[ "${COMP_WORDS[++i]}" != "=" ]] || ((++i))
    elif [[ "${COMP_WORDS[i]}" != -?* ]]; then
      ((++arguments))
    fi
  done

)";

constexpr const char* kEnd = R"(}

complete -F _vexosim vexosim
)";

// What the arguments with these names end with.
const std::map<std::string, std::string> kEndings = {
    {"SCRIPT", "vexo"}, {"IMAGE", "DLL"}, {"TRACE", "jsonl"}};

bool IsChoice(std::string_view type) {
  return !type.empty() && std::all_of(type.begin(), type.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || c == '-' || c == '|';
  });
}

std::string Files(const std::string& ending) {
  std::string pattern;  // in small letters and in capitals
  for (const char c : ending) {
    const auto letter = static_cast<unsigned char>(c);
    pattern += {'[', static_cast<char>(std::tolower(letter)),
                static_cast<char>(std::toupper(letter)), ']'};
  }
  return pattern.empty() ? "_vexosim_files" : "_vexosim_files '" + pattern + '\'';
}

// What completes the value of an option, or an argument.
std::string Completer(const CLI::Option& option) {
  std::string type = option.get_type_name();
  if (IsChoice(type)) {
    std::replace(type.begin(), type.end(), '|', ' ');
    return "_vexosim_words '" + type + '\'';
  }
  constexpr std::string_view kFile = "FILE";
  if (type.starts_with("FILE.")) return Files(type.substr(kFile.size() + 1));
  if (type == kFile) return Files("");
  if (!option.get_positional()) return ":";
  const auto ending = kEndings.find(option.get_name());
  return Files(ending == kEndings.end() ? "" : ending->second);
}

std::vector<std::string> Names(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back('-' + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

std::string OptionsOf(const CLI::App& command) {
  std::vector<std::string> all;
  std::string valued;
  for (const CLI::Option* const option : command.get_options()) {
    for (const std::string& name : Names(*option)) {
      all.push_back(name);
      if (option->get_items_expected_max() > 0) valued += ' ' + name;
    }
  }
  return "    " + command.get_name() + ")\n      options='" + CLI::detail::join(all, " ") +
         "'\n      valued='" + valued + " '\n      ;;\n";
}

std::string ValuesOf(const CLI::App& command) {
  std::string rows;
  for (const CLI::Option* const option : command.get_options()) {
    if (option->get_positional() || option->get_items_expected_max() == 0) continue;
    std::vector<std::string> patterns;
    for (const std::string& name : Names(*option)) {
      patterns.push_back('\'' + command.get_name() + ' ' + name + '\'');
    }
    rows += "    " + CLI::detail::join(patterns, " | ") + ") " + Completer(*option) + " ;;\n";
  }
  return rows;
}

std::string ArgumentsOf(const CLI::App& command) {
  std::string rows;
  unsigned number = 0;
  for (const CLI::Option* const option : command.get_options()) {
    if (!option->get_positional()) continue;
    const bool many = option->get_items_expected_max() > 1;
    const std::string which = many ? " '*" : ' ' + std::to_string(number++) + '\'';
    rows += "    '" + command.get_name() + which + ") " + Completer(*option) + " ;;\n";
  }
  return rows;
}

}  // namespace

std::string BashCompletion(const CLI::App& program) {
  std::vector<std::string> first;
  std::string options;
  std::string values;
  std::string arguments;
  for (const CLI::App* const command :
       program.get_subcommands([](const CLI::App* app) { return !app->get_name().empty(); })) {
    first.push_back(command->get_name());
    options += OptionsOf(*command);
    values += ValuesOf(*command);
    arguments += ArgumentsOf(*command);
  }
  for (const CLI::Option* const option : program.get_options()) {
    for (const std::string& name : Names(*option)) first.push_back(name);
  }
  return std::string(kBegin) +
         "# An argument: the subcommand and how many are before it.\n"
         "_vexosim_argument() {\n  case \"$1\" in\n" +
         arguments + "  esac\n}\n" + kMain +
         "  if ((COMP_CWORD == 1)); then\n    _vexosim_words '" + CLI::detail::join(first, " ") +
         "'\n    return\n  fi\n  case \"$command\" in\n" + options + "    *) return ;;\n  esac\n" +
         kCount + "  case \"$command $before\" in\n" + values +
         "    *)\n      if [[ \"$cur\" == -* ]]; then\n        _vexosim_words \"$options\"\n"
         "      else\n        _vexosim_argument \"$command $arguments\"\n      fi\n      ;;\n"
         "  esac\n" +
         kEnd;
}

}  // namespace vexosim
