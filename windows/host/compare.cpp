#include "compare.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "board_service.h"
#include "script_imports.h"
#include "scripts.h"
#include "sim/trace_json.h"

namespace host {
namespace {

// What a text says after one of these words is its build's or the system's own: cut to `units`.
struct OwnPart {
  std::string_view after;
  std::size_t units;
};
constexpr OwnPart kOwnParts[] = {
    {">> build : ", std::string::npos},  // date and time
    {"[THREAD_ID 0x", 8},
};

// A text of the system that another system words differently.
constexpr std::string_view kNoMemory = "Not enough memory.";
constexpr std::string_view kNoMemoryOnThePc =
    "Not enough storage is available to process this command.";

std::string WithoutOwnParts(std::string text) {
  if (const std::size_t found = text.find(kNoMemory); found != std::string::npos) {
    text.replace(found, kNoMemory.size(), kNoMemoryOnThePc);
  }
  for (const OwnPart& part : kOwnParts) {
    const std::size_t found = text.find(part.after);
    if (found == std::string::npos) continue;
    text.replace(found + part.after.size(), part.units, "...");
  }
  return text;
}

std::string InWords(const sim::Trace& trace, const sim::Event& event) {
  nlohmann::ordered_json json = sim::EventToJson(trace, event);
  if (json.contains("text")) json["text"] = WithoutOwnParts(json["text"].get<std::string>());
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

bool Equal(const sim::Trace& a, const sim::Event& x, const sim::Trace& b, const sim::Event& y) {
  if (x.t != y.t || x.by != y.by || x.kind != y.kind) return false;
  if (x.kind != sim::Event::Kind::Other) return x.window == y.window && x.value == y.value;
  return InWords(a, x) == InWords(b, y);
}

bool Equal(const sim::ReceivedMessage& x, const sim::ReceivedMessage& y) {
  return x.t == y.t && x.message == y.message && x.wparam == y.wparam && x.record == y.record &&
         x.posted == y.posted;
}

class Comparison {
 public:
  Comparison(const RunResult& linked, const RunResult& loaded) : pc_(linked), dll_(loaded) {}

  std::vector<std::string> Differences() {
    for (const std::string& complaint : dll_.complaints) Add("through the DLL: " + complaint);
    for (const std::string& complaint : pc_.complaints) Add("on the PC: " + complaint);
    Actions();
    Events();
    Messages();
    Registers();
    Reports();
    return found_;
  }

 private:
  void Add(const std::string& text) {
    if (found_.size() < kMost) found_.push_back(text);
  }

  void Actions() {
    const std::size_t count = std::min(pc_.actions.size(), dll_.actions.size());
    for (std::size_t i = 0; i < count; ++i) {
      const ActionResult& x = pc_.actions[i];
      const ActionResult& y = dll_.actions[i];
      if (x.returned == y.returned) continue;
      const auto number = [](const auto& value) {
        return value ? std::to_string(*value) : std::string("nothing");
      };
      Add("line " + std::to_string(x.line) + ": " + x.text + ": " + number(x.returned) +
          " on the PC, " + number(y.returned) + " through the DLL");
    }
    if (pc_.actions.size() != dll_.actions.size()) Add("not as many actions");
  }

  // Calls, returns and the caller's records, bus cycles, debug texts, messages, waits: in order,
  // each at its time and by its thread.
  void Events() {
    const auto& x = pc_.trace.Events();
    const auto& y = dll_.trace.Events();
    const std::size_t count = std::min(x.size(), y.size());
    for (std::size_t i = 0; i < count; ++i) {
      if (Equal(pc_.trace, x[i], dll_.trace, y[i])) continue;
      Add("event " + std::to_string(i) + " of" + ActionAt(i) + ":\n    PC  " +
          InWords(pc_.trace, x[i]) + "\n    DLL " + InWords(dll_.trace, y[i]));
      return;
    }
    if (x.size() != y.size()) {
      Add(std::to_string(x.size()) + " events on the PC, " + std::to_string(y.size()) +
          " through the DLL; the next is " +
          (x.size() > count ? InWords(pc_.trace, x[count]) : InWords(dll_.trace, y[count])));
    }
  }

  std::string ActionAt(std::size_t event) const {
    std::string text = " no action";
    for (const ActionResult& action : pc_.actions) {
      if (action.first_event > event) break;
      text = " line " + std::to_string(action.line) + " (" + action.text + ')';
    }
    return text;
  }

  void Messages() {
    if (!std::equal(pc_.received.begin(), pc_.received.end(), dll_.received.begin(),
                    dll_.received.end(),
                    [](const auto& x, const auto& y) { return Equal(x, y); })) {
      Add("the window got other messages: " + std::to_string(pc_.received.size()) + " on the PC, " +
          std::to_string(dll_.received.size()) + " through the DLL");
    }
  }

  void Registers() {
    if (pc_.registers.chips != dll_.registers.chips) Add("the registers differ at the end");
  }

  // What the board noticed: reads of several chips at once, accesses without a window.
  void Reports() {
    if (pc_.reports != dll_.reports) Add("the board noticed something else");
  }

  static constexpr std::size_t kMost = 5;
  const RunResult& pc_;
  const RunResult& dll_;
  std::vector<std::string> found_;
};

// Prints its line; false when something differs.
bool CompareOne(const script::Script& script) {
  const RunResult linked = RunOn(Side::Linked, script.statements);
  const RunResult loaded = RunOn(Side::Loaded, script.statements);
  const std::vector<std::string> differences = Comparison(linked, loaded).Differences();
  if (differences.empty()) {
    std::cout << script.name << ": the same: " << loaded.actions.size() << " actions, "
              << loaded.trace.Events().size() << " events, " << loaded.checks << " expectations met"
              << std::endl;
    return true;
  }
  std::cout << script.name << ": DIFFERENT" << std::endl;
  for (const std::string& difference : differences) std::cout << "  " << difference << std::endl;
  return false;
}

// All variants of a script; false when something differs.
bool CompareAll(const std::string& path) {
  std::ifstream in(path);
  if (!in) {
    std::cout << path << ": cannot be read" << std::endl;
    return false;
  }
  bool same = true;
  for (const script::Script& script :
       script::ParseScript(in, path.substr(path.find_last_of("/\\") + 1))) {
    same = CompareOne(script) && same;
  }
  return same;
}

}  // namespace

int Compare(const std::vector<std::string>& scripts) {
  unsigned different = 0;
  for (const std::string& script : scripts) {
    try {
      if (!CompareAll(script)) ++different;
    } catch (const std::exception& error) {
      std::cout << script << ": " << error.what() << std::endl;
      ++different;
    }
  }
  if (g_posts_to_nobody != 0) {
    std::cout << g_posts_to_nobody
              << " posts to no window: the system queues them to the thread, the PC refuses"
              << std::endl;
  }
  std::cout << scripts.size() - different << " of " << scripts.size()
            << " scripts the same through the DLL; " << g_accesses << " bus accesses, "
            << g_wide_accesses << " wider than a byte" << std::endl;
  return scripts.empty() || different != 0 || g_wide_accesses != 0 ? 1 : 0;
}

}  // namespace host
