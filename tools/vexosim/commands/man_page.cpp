#include "tools/vexosim/commands/man_page.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace vexosim {
namespace {

constexpr const char* kSurroundings =
    ".SH ENVIRONMENT\n"
    ".TP\n.B NO_COLOR\nIf it is not empty, nothing is in colour unless \\fB\\-\\-color always\\fR "
    "says so.\n"
    ".TP\n.B TERM\nA terminal of the type \\fBdumb\\fR gets no colours and edits lines itself.\n"
    ".TP\n.B XDG_STATE_HOME\nThe folder of the shell's history.\n"
    ".SH FILES\n"
    ".TP\n.I \\(ti/.vexosim_history\nThe lines typed in the shell.\n";

// Text that troff prints as it stands.
std::string Escaped(std::string_view text) {
  std::string escaped;
  bool begins = true;  // a line, where a full stop would be a request
  for (const char c : text) {
    if (begins && c == '.') escaped += "\\&";
    begins = c == '\n';
    switch (c) {
      case '\\':
        escaped += "\\e";
        break;
      case '-':
        escaped += "\\-";
        break;
      case '\'':
        escaped += "\\(aq";
        break;
      case '`':
        escaped += "\\(ga";
        break;
      case '^':
        escaped += "\\(ha";
        break;
      case '~':
        escaped += "\\(ti";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string Bold(std::string_view text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(std::string_view text) { return "\\fI" + Escaped(text) + "\\fR"; }

// Lines as they stand.
std::string Lines(std::string_view text) {
  return text.empty() ? "" : ".nf\n" + Escaped(text) + "\n.fi\n";
}

// Sorted as the command line has them.
std::vector<const CLI::Option*> Positionals(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<const CLI::Option*> Options(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::string Usage(const CLI::App& program, const CLI::App& command) {
  std::string usage = Bold(program.get_name() + ' ' + command.get_name());
  if (Options(command).size() > 1) usage += " [" + Italic("OPTIONS") + ']';
  for (const CLI::Option* const option : Positionals(command)) {
    const bool many = option->get_items_expected_max() > 1;
    const std::string name = Italic(option->get_name()) + (many ? " ..." : "");
    usage += option->get_required() ? ' ' + name : " [" + name + ']';
  }
  return usage + '\n';
}

std::string Explained(const CLI::Option& option) {
  std::string term;
  if (option.get_positional()) {
    term = Italic(option.get_name());
  } else {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back(Bold('-' + name));
    for (const std::string& name : option.get_lnames()) names.push_back(Bold("--" + name));
    term = CLI::detail::join(names, ", ");
    const bool has_value = option.get_items_expected_max() > 0;
    if (has_value && !option.get_type_name().empty()) term += ' ' + Italic(option.get_type_name());
  }
  std::string text = Escaped(option.get_description());
  if (!option.get_default_str().empty()) text += "; default: " + Bold(option.get_default_str());
  return ".TP\n" + term + '\n' + text + '\n';
}

std::string Explained(const CLI::App& program, const CLI::App& command) {
  std::string text = ".SS " + Escaped(command.get_name()) + '\n' + Usage(program, command) +
                     ".PP\n" + Escaped(command.get_description()) + ".\n";
  for (const CLI::Option* const option : Positionals(command)) text += Explained(*option);
  for (const CLI::Option* const option : Options(command)) {
    if (option != command.get_help_ptr()) text += Explained(*option);
  }
  const std::string footer = CLI::detail::trim_copy(command.get_footer());
  return footer.empty() ? text : text + ".PP\n" + Lines(footer);
}

// A paragraph with its title.
std::string Section(const std::string& paragraph) {
  const std::size_t colon = paragraph.find(':');
  std::string title = paragraph.substr(0, colon);
  std::string text = colon == std::string::npos ? "" : paragraph.substr(colon + 1);
  std::transform(title.begin(), title.end(), title.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  text.erase(0, text.find_first_not_of(text.starts_with('\n') ? "\n" : " "));
  return ".SH " + Escaped(title) + '\n' + Lines(text);
}

std::string Sections(const std::string& footer) {
  std::istringstream lines(footer);
  std::string sections;
  std::string paragraph;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) {
      paragraph += (paragraph.empty() ? "" : "\n") + line;
    } else if (!paragraph.empty()) {
      sections += Section(std::exchange(paragraph, {}));
    }
  }
  return paragraph.empty() ? sections : sections + Section(paragraph);
}

}  // namespace

std::string ManPage(const CLI::App& program) {
  const auto commands =
      program.get_subcommands([](const CLI::App* app) { return !app->get_name().empty(); });
  const std::string description = program.get_description();
  std::string brief = description.substr(0, description.find_first_of(":.\n"));
  brief.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(brief.front())));
  std::string page =
      ".\\\" Made by: vexosim manual --man\n"
      ".TH VEXOSIM 1 \"\" VexoCtrlSDK \"User Commands\"\n"
      ".SH NAME\n" +
      Escaped(program.get_name()) + " \\- " + Escaped(brief) + "\n.SH SYNOPSIS\n";
  for (const CLI::App* const command : commands) page += Usage(program, *command) + ".br\n";
  page += Bold(program.get_name() + " --help") + "\n.SH DESCRIPTION\n" + Escaped(description) +
          "\n.PP\nEach command explains itself with " + Bold("--help") + ".\n.SH COMMANDS\n";
  for (const CLI::App* const command : commands) page += Explained(program, *command);
  return page + Sections(program.get_footer()) + kSurroundings;
}

}  // namespace vexosim
