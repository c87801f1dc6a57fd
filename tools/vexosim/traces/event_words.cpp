#include "tools/vexosim/traces/event_words.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "script/command_table.h"
#include "script/command_words.h"
#include "script/message_words.h"
#include "script/words.h"
#include "sim/text.h"
#include "tools/vexosim/traces/events.h"

namespace vexosim {
namespace {

std::string Text(std::string_view text) { return files::Printable(text, 400); }

std::string Number(const sim::CallEvent& call, std::size_t index) {
  return index < call.args.size() ? std::to_string(call.args[index]) : "?";
}

std::string Unless(bool ok) { return ok ? "" : ", failed"; }

std::string ReasonInWords(const sim::CallEvent& call) {
  const std::int64_t reason = call.args.empty() ? -1 : call.args.front();
  return reason == 1 ? "attach" : reason == 0 ? "detach" : "reason " + Number(call, 0);
}

// Header and keyword of a text command.
std::string Keywords(std::string_view line) {
  const std::vector<std::string> words = [&] {
    std::vector<std::string> found;
    std::string word;
    for (const char c : line) {
      if (script::kBlanks.find(c) == std::string_view::npos) {
        word += c;
      } else if (!word.empty()) {
        found.push_back(std::move(word));
        word.clear();
      }
    }
    if (!word.empty()) found.push_back(word);
    return found;
  }();
  std::string text;
  for (std::size_t i = 0; i < std::min<std::size_t>(words.size(), 2); ++i) {
    text += (i == 0 ? "" : " ") + Shown(words[i]);
  }
  return text;
}

// A record's bytes up to its last one that is not 0.
std::string BytesInWords(const sim::Bytes& record) {
  const auto last =
      std::find_if(record.rbegin(), record.rend(), [](auto byte) { return byte != 0; });
  const auto length = static_cast<std::size_t>(record.rend() - last);
  if (length == 0) return "all 0";
  return sim::HexBytes(std::span(record).first(length), " ");
}

std::uint32_t CodeOf(const sim::CallEvent& call) {
  return static_cast<std::uint32_t>(call.args.front());
}

// Null when it is the call of no command that there is.
const script::CommandKind* CommandOf(const sim::CallEvent& call) {
  if (call.fn != "VEXOAPI_CommandProc" || call.args.empty()) return nullptr;
  return script::FindCommand(CodeOf(call));
}

// By the fields of the command, or by its bytes where the fields are not all that there is.
std::string RecordInWords(const script::CommandKind* command, const sim::Bytes& record) {
  std::string bytes = "record " + BytesInWords(record);
  if (command == nullptr || std::count(record.begin(), record.end(), 0) == std::ssize(record)) {
    return bytes;
  }
  std::string text;
  std::vector<script::FieldBytes> fields;
  for (const script::RecordField& field : command->fields) {
    if (record.size() < field.offset + field.Bytes()) return bytes;
    const auto begin = record.begin() + static_cast<std::ptrdiff_t>(field.offset);
    const auto end = begin + static_cast<std::ptrdiff_t>(field.Bytes());
    fields.push_back({&field, sim::Bytes(begin, end)});
    if (field.flow == script::Flow::Out) continue;
    text += (text.empty() ? "" : ", ") + script::FieldInWords(field, record);
  }
  sim::Bytes told = script::RecordOf(fields);
  told.resize(record.size());
  return text.empty() || told != record ? bytes : text;
}

struct InWords {
  unsigned channels;

  std::string operator()(const sim::CallEvent& e) const { return CallInWords(e); }
  std::string operator()(const sim::ReturnEvent& e) const {
    std::string text = e.value ? "= " + std::to_string(*e.value) : std::string("= nothing");
    if (e.text) text += " \"" + Text(*e.text) + '"';
    return text;
  }
  std::string operator()(const sim::DebugEvent& e) const {
    return (e.kernel ? "! " : "| ") + Text(e.text);
  }
  std::string operator()(const sim::MessageEvent& e) const {
    std::string text = "> " + script::MessageInWords(e, channels);
    if (e.post) return text + (e.ok ? " (posted)" : " (not posted)");
    return text + (e.ok ? "" : " (not answered)");
  }
  std::string operator()(const sim::LockEvent& e) const {
    return (e.unlock ? "unlock " : "lock ") + Shown(e.name) + Unless(e.ok);
  }
  std::string operator()(const sim::SleepEvent& e) const {
    if (e.ms == std::numeric_limits<std::uint32_t>::max()) return "wait without end";
    return (e.wait ? "wait " : "sleep ") + std::to_string(e.ms) + " ms";
  }
  std::string operator()(const sim::OpenEvent& e) const {
    return "open " + Shown(e.name) + ", access " + sim::Hex(e.access, 8) + ", share " +
           std::to_string(e.share) + ", disposition " + std::to_string(e.disposition) +
           Unless(e.ok);
  }
  std::string operator()(const sim::IoctlEvent& e) const {
    return "ioctl " + Shown(e.name) + ' ' + sim::Hex(e.code, 8) + " with " +
           (e.in.empty() ? "nothing" : sim::HexBytes(e.in, " ")) + Unless(e.ok);
  }
  std::string operator()(const sim::CloseEvent& e) const {
    return "close " + Shown(e.name) + Unless(e.ok);
  }
  std::string operator()(const sim::NvramEvent& e) const {
    std::string text = "nvram " + Shown(e.op);
    if (e.length != 0) {
      text += " block " + std::to_string(e.block) + " offset " + std::to_string(e.offset) + ", " +
              std::to_string(e.length) + " bytes";
    }
    if (!e.data.empty()) text += ": " + sim::HexBytes(e.data, " ");
    return text + Unless(e.ok);
  }
  std::string operator()(const sim::MapEvent& e) const {
    return "map " + sim::Hex(e.physical, 8) + ", " + std::to_string(e.length) + " bytes" +
           (e.cached ? ", cached" : "") + Unless(e.ok);
  }
  std::string operator()(const sim::UnmapEvent& e) const {
    return "unmap " + std::string(WindowName(e.window));
  }
  std::string operator()(const sim::ThreadEvent& e) const {
    return "thread " + Shown(e.what) +
           (e.what == "start" ? "" : " with code " + sim::Hex(e.code, 8));
  }
  std::string operator()(const sim::LineEvent& e) const { return "line " + Text(e.text); }
};

}  // namespace

std::string CallName(const sim::CallEvent& call) {
  std::string fn = Shown(call.fn);
  if (call.fn == "DllMain") return fn + ' ' + ReasonInWords(call);
  if (call.fn == "VEXOAPI_CommandProc" && !call.args.empty()) {
    const script::CommandKind* const command = CommandOf(call);
    return fn + ' ' + sim::Hex(CodeOf(call), 4) +
           (command == nullptr ? "" : ' ' + std::string(command->name));
  }
  if (call.text) return fn + ' ' + Keywords(*call.text);
  return fn;
}

std::string CallInWords(const sim::CallEvent& call) {
  if (call.text) return Shown(call.fn) + " \"" + Text(*call.text) + '"';
  std::string text = CallName(call);
  if (call.valid) {
    text += ' ' + Number(call, 0) + (*call.valid ? "" : ", no window");
  } else if (call.fn == "VEXOAPI_SetMotionInfo") {
    text += " channel " + Number(call, 0) + ", level " + Number(call, 1);
  } else if (call.fn != "DllMain" && call.fn != "VEXOAPI_CommandProc" && !call.args.empty()) {
    text += ' ' + Number(call, 0);
  }
  if (call.record) text += ", " + RecordInWords(CommandOf(call), *call.record);
  return text;
}

std::vector<std::string> ResultInWords(const sim::CallEvent& call, const sim::ReturnEvent& result,
                                       unsigned channels) {
  const bool changed = result.record && result.record != call.record;
  if (CommandOf(call) != nullptr && result.value) {
    const sim::Bytes sent = call.record.value_or(sim::Bytes());
    const sim::Bytes returned = result.record.value_or(sim::Bytes());
    std::vector<std::string> lines =
        script::ReturnInWords(CodeOf(call), sent, returned, *result.value, channels);
    if (changed && lines.size() == 1) lines.back() += ", record " + BytesInWords(returned);
    return lines;
  }
  std::string text = EventInWords(result, channels);
  if (changed) text += ", record " + BytesInWords(*result.record);
  return {text};
}

std::string EventInWords(const sim::EventDetail& detail, unsigned channels) {
  return std::visit(InWords{channels}, detail);
}

std::string_view ThreadName(sim::By by) { return by == sim::By::Host ? "host" : "worker"; }

std::string_view WindowName(sim::BusWindow window) {
  constexpr std::array<std::string_view, 3> kNames = {"select", "address", "data"};
  return kNames[static_cast<std::size_t>(window)];
}

}  // namespace vexosim
