#include <algorithm>
#include <array>
#include <cctype>

#include "device/verdict/causes.h"
#include "files/printable.h"
#include "sim/text.h"

namespace verdict {
namespace {

using plan::Entry;
using plan::EntryKind;

constexpr std::int64_t kErrorFileNotFound = 2;
constexpr std::int64_t kErrorModuleNotFound = 126;
constexpr std::int64_t kErrorProcedureNotFound = 127;
constexpr std::int64_t kErrorBadExeFormat = 193;

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

std::string Text(const Entry& entry, std::size_t index = 0) {
  return files::Printable(entry.texts[index]);
}

std::string Error(std::int64_t number) { return "error " + std::to_string(number); }

std::optional<Cause> BadPlan(const Evidence& evidence) {
  const Entry* const wrong = evidence.First(EntryKind::Wrong);
  if (wrong == nullptr) return std::nullopt;
  return Cause{"plan-damaged",
               "The check program could not read its plan: line " +
                   std::to_string(wrong->plan_line) + ": " + Text(*wrong) +
                   ". Nothing was sent to the board.",
               "Copy VexoCheck.plan to the card again, as it is, and compare the sizes."};
}

std::optional<Cause> Absent(const Evidence& evidence) {
  for (const Entry* entry : evidence.All(EntryKind::Absent)) {
    const std::string name = Lower(entry->texts.front());
    const std::string what =
        Text(*entry) + " is not there (" + Error(entry->numbers.front()) + ").";
    if (name.ends_with(".plan")) {
      return Cause{"plan-absent", what, "Copy VexoCheck.plan into the folder of VexoCheck.exe."};
    }
    if (name.ends_with("vexoctrlsdk.dll")) {
      return Cause{"library-absent", what,
                   "Copy VexoCtrlSDK.DLL into the folder of VexoCheck.exe, or into \\DLL\\, "
                   "\\NAND FLASH\\MDVR\\ or \\Windows\\."};
    }
    if (name.ends_with(".dll")) {
      return Cause{"component-absent", what + " The loader refuses the library without it.",
                   "Copy it from the recorder's system to \\Windows\\, or have the system built "
                   "with it."};
    }
  }
  return std::nullopt;
}

std::optional<Cause> MissingImport(const Evidence& evidence) {
  const auto missing = evidence.All(EntryKind::Missing);
  if (missing.empty()) return std::nullopt;
  std::string names;
  for (const Entry* entry : missing) {
    names += (names.empty() ? "" : ", ") + Text(*entry, 1) + " of " + Text(*entry);
  }
  return Cause{
      "import-missing",
      "This system lacks what the library imports: " + names + ". The loader refuses the library.",
      "Have the system built with the component that exports it; docs/device.md names "
      "what is imported. Without it this library cannot be loaded."};
}

std::optional<Cause> Refused(const Evidence& evidence) {
  const Entry* const refused = evidence.First(EntryKind::Refused);
  if (refused == nullptr) return std::nullopt;
  const Entry* const file = evidence.First(EntryKind::File);
  const std::int64_t error = refused->numbers.front();
  const std::string what = "The loader refuses the library with " + Error(error);
  if (error == kErrorBadExeFormat && file != nullptr) {
    const std::int64_t machine = file->numbers[1];
    if (machine != 0x1C0 && machine != 0x1C2) {
      return Cause{"not-for-arm",
                   what + ": the file is for processor " +
                       sim::Hex(static_cast<std::uint64_t>(machine), 3) + ", not for ARM.",
                   "Take the library of the package's device folder, not that of a desktop kit."};
    }
    return Cause{"machine-number",
                 what + ": it does not take processor " +
                     sim::Hex(static_cast<std::uint64_t>(machine), 3) + ".",
                 machine == 0x1C0 ? "Take the library, and the check program, of the folder whose "
                                    "processor is 0x1C2 (thumb): the code is the same."
                                  : "Take the library, and the check program, of the folder whose "
                                    "processor is 0x1C0 (arm): the code is the same."};
  }
  if (error == kErrorModuleNotFound || error == kErrorFileNotFound) {
    return Cause{"module-not-found",
                 what +
                     ": it, or a library that it needs, was not found, though the check "
                     "program found them.",
                 "Look whether another VexoCtrlSDK.DLL stands in \\Windows\\ or in the system's "
                 "own files; restart the device and try again."};
  }
  if (error == kErrorProcedureNotFound) {
    return Cause{"import-unresolved",
                 what +
                     ": a function that it imports was not found, though the check program "
                     "found all of them.",
                 "Send the log: the loader of this system looks for imports in another way."};
  }
  return Cause{"refused", what + ".",
               "Look at the debug port for what the loader says, and send it with the log."};
}

std::optional<Cause> MissingExport(const Evidence& evidence) {
  std::string names;
  for (const Entry* entry : evidence.All(EntryKind::Export)) {
    if (entry->numbers.front() == 0) names += (names.empty() ? "" : ", ") + Text(*entry);
  }
  if (names.empty()) return std::nullopt;
  const Entry* const path = evidence.First(EntryKind::Path);
  return Cause{"export-missing",
               "The library that was loaded" + (path ? " from " + Text(*path) : "") +
                   " does not export " + names + ".",
               "It is another file than the package's: remove it, copy the package's, and compare "
               "its size."};
}

// "1.0.1.6" and "1. 0. 1. 6" are the same.
std::string Digits(std::string_view text) {
  std::string digits(text);
  std::erase(digits, ' ');
  return digits;
}

std::optional<Cause> OtherVersion(const Evidence& evidence) {
  const Entry* const begin = evidence.First(EntryKind::Begin);
  const Entry* const version = evidence.First(EntryKind::Version);
  if (begin == nullptr || version == nullptr) return std::nullopt;
  if (Digits(begin->texts.front()) == Digits(version->texts.front())) return std::nullopt;
  return Cause{
      "other-version",
      "The library's version is \"" + Text(*version) + "\", the check program's \"" + Text(*begin) +
          "\".",
      "Remove other files of this name from \\DLL\\, \\NAND FLASH\\MDVR\\ and \\Windows\\: "
      "the system takes the first that it finds."};
}

std::optional<Cause> SecondLoad(const Evidence& evidence) {
  const Entry* const loaded = evidence.First(EntryKind::Loaded);
  const Entry* const again = evidence.First(EntryKind::Again);
  if (loaded == nullptr || again == nullptr) return std::nullopt;
  if (loaded->numbers.front() == again->numbers.front()) return std::nullopt;
  return Cause{"second-load",
               "Loading the library a second time in one process gave " +
                   sim::Hex(static_cast<std::uint64_t>(again->numbers.front())) + " instead of " +
                   sim::Hex(static_cast<std::uint64_t>(loaded->numbers.front())) + ".",
               "Load the library once in the host, and keep its handle."};
}

std::optional<Cause> SecondProcess(const Evidence& evidence) {
  const Entry* const process = evidence.First(EntryKind::Process);
  if (process == nullptr) return std::nullopt;
  const std::string_view how = process->texts.front();
  const auto number = static_cast<unsigned>(process->numbers.front());
  if (how == "refused") {
    return Cause{"process-refused",
                 "A second process could not be started (" + Error(number) + ").",
                 "Free memory on the device and try again. The library itself is not concerned."};
  }
  if (how == "hung") {
    return Cause{"process-hung",
                 "A second process that loads the library did not end within " +
                     std::to_string(number) + " ms.",
                 "Only one process may use the library: start no second one, and send the log."};
  }
  if (number == plan::kChildAsItShould) return std::nullopt;
  if ((number & plan::kChildLoaded) == 0) {
    return Cause{"process-without-library", "A second process could not load the library.",
                 "Free memory on the device and try again; the first process is not concerned."};
  }
  if ((number & plan::kChildUninitialized) == 0) {
    return Cause{"two-users",
                 "A second process was let into the library beside the first one: it does not see "
                 "the event by which the first one has it.",
                 "Never run two programs with the library on this system: both would drive the "
                 "chips. Send the log."};
  }
  if (number == (plan::kChildAsItShould & ~plan::kChildSharesMemory)) {
    return Cause{"not-shared",
                 "Each process has a copy of its own of the section that all that load the library "
                 "should share: this loader does not share it.",
                 "The library works without: it tells processes apart by an event. A host that "
                 "counts on that section must not. Send the log."};
  }
  return Cause{"second-process",
               "A second process did not find the library as it should: exit code " +
                   std::to_string(number) + ", expected " + std::to_string(plan::kChildAsItShould) +
                   ".",
               "Run one program with the library at a time, and send the log."};
}

std::optional<Cause> NoWindow(const Evidence& evidence) {
  const Entry* const window = evidence.First(EntryKind::Window);
  if (window == nullptr || window->numbers.front() != 0) return std::nullopt;
  return Cause{"no-window", "The check program could not make a window.",
               "The system has no windows, or no memory for one: start the program when the "
               "device's own shell is up."};
}

std::optional<Cause> Stopped(const Evidence& evidence) {
  if (evidence.log.Whole() || evidence.log.entries.empty()) return std::nullopt;
  const auto open =
      std::find_if(evidence.outcomes.begin(), evidence.outcomes.end(), [](const Outcome& outcome) {
        return outcome.called != nullptr && outcome.returned == nullptr;
      });
  if (open != evidence.outcomes.end()) {
    if (open->step->action.kind == plan::ActionKind::Wait) {
      return Cause{
          "log-cut",
          "The log ends in a pause, in which no call was made: " + StepInWords(*open->step) + ".",
          "Was the device switched off, or the program ended? Let it come to its end."};
    }
    const bool text = open->step->action.kind == plan::ActionKind::Text;
    return Cause{"hang",
                 "The log ends in a call that did not come back: " + StepInWords(*open->step) + ".",
                 std::string(text ? "Some text lines wait for the chips without a limit: a chip "
                                    "that never settles, or one that is not there, holds them. "
                                  : "") +
                     "Look at the debug port for the last line of the library, start the device "
                     "again, and send both."};
  }
  const Entry& last = evidence.log.entries.back();
  if (last.kind == EntryKind::Loading) {
    return Cause{"hang-in-load",
                 "The log ends while the library was loaded: its attach did not "
                 "come back, or the loader did not.",
                 "Look at the debug port: the library prints lines while it is loaded. Send both."};
  }
  return Cause{"log-cut",
               "The log has no end; its last line is line " + std::to_string(last.line) + " (" +
                   std::string(plan::WordOf(last.kind)) + ").",
               "Let the program come to its end, and see that the card has room."};
}

std::optional<Cause> NvramLost(const Evidence& evidence) {
  for (const Entry* entry : evidence.All(EntryKind::Nvram)) {
    if (entry->texts.front() == "lost") {
      return Cause{"nvram-lost",
                   "The stored settings were changed and could not be put back: the NVRAM does "
                   "not take what is written.",
                   "Look at the NVRAM's supply and write protection, and at ExtRtcNVramCtl.dll."};
    }
    if (entry->texts.front() == "unwritable") {
      return Cause{"nvram-unwritable",
                   "The NVRAM can be read, but does not take what is written: the check wrote back "
                   "what it had read, and that failed.",
                   "Look at the NVRAM's supply and write protection, and at ExtRtcNVramCtl.dll: a "
                   "setting that the host stores is lost."};
    }
    if (entry->texts.front() == "unknown") {
      return Cause{
          "nvram-unreadable", "The stored settings cannot be read.",
          "Look whether ExtRtcNVramCtl.dll is the one of this board, and its NVRAM there."};
    }
  }
  return std::nullopt;
}

// Each keeps the library from being loaded, so that nothing else can be told.
constexpr std::array kStops = {BadPlan, Absent, MissingImport, Refused};
constexpr std::array kOthers = {MissingExport, OtherVersion, SecondLoad, SecondProcess,
                                NoWindow,      Stopped,      NvramLost};

}  // namespace

std::vector<Cause> LoaderCauses(const Evidence& evidence) {
  for (const auto rule : kStops) {
    if (auto cause = rule(evidence)) return {std::move(*cause)};
  }
  std::vector<Cause> causes;
  for (const auto rule : kOthers) {
    if (auto cause = rule(evidence)) causes.push_back(std::move(*cause));
  }
  return causes;
}

}  // namespace verdict
