#include "tools/vexosim/traces/replay.h"

#include <algorithm>
#include <limits>
#include <span>

#include "VexoCtrlSDK.h"
#include "files/printable.h"
#include "harness/host.h"
#include "script/parse.h"
#include "script/words.h"
#include "sim/text.h"

namespace vexosim {
namespace {

constexpr const char* kVersion = "VEXOAPI_GetVersion";

// A number among the arguments of a call.
std::uint32_t Argument(const sim::CallEvent& call, std::size_t index,
                       std::uint32_t most = std::numeric_limits<std::uint32_t>::max()) {
  if (index >= call.args.size() || call.args[index] < 0 || call.args[index] > most) {
    throw NotReplayable("expected argument " + std::to_string(index + 1) + " of " +
                        files::Printable(call.fn, 40) + " to be a number 0 to " +
                        std::to_string(most));
  }
  return static_cast<std::uint32_t>(call.args[index]);
}

// Without the zeros that the host fills it up with.
std::string RecordBytes(const sim::Bytes& record) {
  const auto last =
      std::find_if(record.rbegin(), record.rend(), [](auto byte) { return byte != 0; });
  const auto length = static_cast<std::size_t>(record.rend() - last);
  return length == 0 ? "" : ' ' + sim::HexBytes(std::span(record).first(length), " ");
}

std::string EntryLine(const sim::CallEvent& call) {
  const std::uint32_t reason = Argument(call, 0);
  if (reason == 0) return "detach";
  if (reason == 1) return "attach";
  if (reason == 6) return "lowmem";
  return "entry " + std::to_string(reason);
}

std::string CommandLine(const sim::CallEvent& call) {
  const std::string line = "command " + sim::Hex(Argument(call, 0), 4);
  if (!call.record) return line + " null";
  if (call.record->size() != harness::kCommandRecordBytes) {
    throw NotReplayable("expected a record of " + std::to_string(harness::kCommandRecordBytes) +
                        " bytes, found " + std::to_string(call.record->size()));
  }
  return line + RecordBytes(*call.record);
}

std::string MotionInfoLine(const sim::CallEvent& call) {
  if (!call.record || call.record->size() != VEXO_MOTION_MASK_BYTES) {
    throw NotReplayable("expected the " + std::to_string(VEXO_MOTION_MASK_BYTES) +
                        " bytes of a motion mask, found " +
                        (call.record ? std::to_string(call.record->size()) : "none"));
  }
  return "motioninfo " + std::to_string(Argument(call, 0, 0xFF)) + ' ' +
         std::to_string(Argument(call, 1, 0xFF)) + ' ' + sim::HexBytes(*call.record, " ");
}

std::string TextLine(const sim::CallEvent& call) {
  if (!call.text) throw NotReplayable("expected the line of a text command, found none");
  // What is no valid text has its bytes beside it.
  return "text " + script::Quoted(call.record
                                      ? std::string(call.record->begin(), call.record->end())
                                      : *call.text);
}

std::string WindowLine(const sim::CallEvent& call) {
  if (!call.valid) {
    throw NotReplayable("expected whether the handle is a window (\"valid\"), found nothing");
  }
  return *call.valid ? "window" : "window invalid";
}

struct Export {
  std::string_view fn;
  std::string (*line)(const sim::CallEvent& call);
};

constexpr Export kExports[] = {
    {"DllMain", EntryLine},
    {"VEXOAPI_Initialize", WindowLine},
    {"VEXOAPI_Uninitialize", [](const sim::CallEvent&) { return std::string("unbind"); }},
    {"VEXOAPI_SetEnableDebug",
     [](const sim::CallEvent& call) { return "debug " + std::to_string(Argument(call, 0)); }},
    {"VEXOAPI_SetEnableOutputMsg",
     [](const sim::CallEvent& call) { return "output " + std::to_string(Argument(call, 0)); }},
    {"VEXOAPI_CommandProc", CommandLine},
    {"VEXOAPI_SetMotionInfo", MotionInfoLine},
    {"VEXOAPI_TextCommandProc", TextLine},
};

// What a trace has as a line: a change of the board, or time that passes.
void CheckLine(const std::string& text) {
  std::string why;
  try {
    if (files::Printable(text, text.size()) == text) {
      const auto statement = script::ParseLine(text, true);
      if (statement && (statement->group == script::LineGroup::Board ||
                        statement->group == script::LineGroup::Action)) {
        return;
      }
    }
  } catch (const script::Malformed& error) {
    why = std::string(": ") + error.what();
  }
  throw NotReplayable("expected a line that changes the board or lets time pass, found '" +
                      files::Printable(text, 40) + "'" + files::PrintableLines(why));
}

}  // namespace

void ReplayWriter::Line(const std::string& text) {
  if (text.size() > script::kLongestLine) {
    throw NotReplayable("expected calls of " + std::to_string(script::kLongestLine) +
                        " bytes a line at most, found one of " + std::to_string(text.size()));
  }
  out_ << text << '\n';
  empty_ = false;
}

void ReplayWriter::FlushVersion(bool null_buffer) {
  if (!call_ || call_->fn != kVersion) return;
  Line(null_buffer ? "version null" : "version");
  call_.reset();
}

void ReplayWriter::OnCall(const sim::CallEvent& call) {
  call_ = call;
  if (call.fn == kVersion) return;
  for (const Export& each : kExports) {
    if (each.fn == call.fn) return Line(each.line(call));
  }
  throw NotReplayable("expected a call of the library, found '" + files::Printable(call.fn, 40) +
                      "'");
}

void ReplayWriter::OnReturn(const sim::ReturnEvent& result) {
  FlushVersion(!result.text);
  if (call_ && result.record && !call_->record) {
    throw NotReplayable("expected the record before the call, found it behind the call alone");
  }
  call_.reset();
}

void ReplayWriter::OnEvent(const sim::Event&, const sim::EventDetail* detail) {
  if (detail == nullptr) return;
  if (const auto* result = std::get_if<sim::ReturnEvent>(detail)) return OnReturn(*result);
  const auto* const call = std::get_if<sim::CallEvent>(detail);
  const auto* const line = std::get_if<sim::LineEvent>(detail);
  if (call == nullptr && line == nullptr) return;
  FlushVersion(false);
  if (call != nullptr) return OnCall(*call);
  CheckLine(line->text);
  Line(line->text);
}

void ReplayWriter::Finish() {
  FlushVersion(false);
  if (empty_) throw NotReplayable("expected calls to replay, found none");
}

}  // namespace vexosim
