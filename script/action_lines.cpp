// Script lines that call the library's exports or let time pass.
#include <algorithm>
#include <array>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "script/command_words.h"
#include "script/interpreter.h"
#include "script/line.h"
#include "script/outcome/text_outcome.h"
#include "script/text_step.h"

namespace script {
namespace {

constexpr std::uint32_t kReasonDetach = 0;
constexpr std::uint32_t kReasonAttach = 1;
constexpr std::uint32_t kReasonLowMemory = 6;

Step EntryStep(std::uint32_t reason) {
  return [=](Session& session) { session.returned = harness::Entry(reason); };
}

Step ParseAttach(Arguments&) { return EntryStep(kReasonAttach); }
Step ParseDetach(Arguments&) { return EntryStep(kReasonDetach); }
Step ParseLowMemory(Arguments&) { return EntryStep(kReasonLowMemory); }
Step ParseEntry(Arguments& arguments) { return EntryStep(arguments.Number("a reason code")); }

Step ParseWindow(Arguments&) {
  return [](Session& session) {
    session.returned = harness::Initialize(session.World().windows.Create());
  };
}

Step ParseWindowInvalid(Arguments&) {
  return [](Session& session) {
    PlatWindow none = 0xBAD0;
    while (session.World().windows.Exists(none)) ++none;
    session.returned = harness::Initialize(none);
  };
}

Step ParseUnbind(Arguments&) {
  return [](Session&) { harness::Uninitialize(); };
}

sim::Bytes ParseRecordBytes(Arguments& arguments) {
  sim::Bytes record;
  while (!arguments.AtEnd()) {
    if (record.size() == harness::kCommandRecordBytes)
      arguments.Expected("64 record bytes at most");
    record.push_back(arguments.RecordByte());
  }
  return record;
}

Step ParseCommand(Arguments& arguments) {
  const bool by_number = arguments.AtNumber();
  if (!by_number && FindCommand(arguments.Peek()) == nullptr) {
    arguments.Expected("a command code or its name (help commands)", CommandNames());
  }
  const std::uint32_t code = by_number ? arguments.Number("a command code")
                                       : FindCommand(arguments.Text("a command"))->code;
  if (arguments.Take("null")) {
    return [=](Session& session) {
      session.returned = harness::CommandProc(code, nullptr);
      session.outcome = ReturnInWords(code, {}, {}, *session.returned);
    };
  }
  const CommandKind* const command = FindCommand(code);
  const bool by_field =
      !by_number || (command != nullptr && command->Find(arguments.Peek()) != nullptr);
  const sim::Bytes record =
      by_field ? RecordOf(ParseRecordFields(*command, arguments)) : ParseRecordBytes(arguments);
  return [=](Session& session) {
    sim::Bytes bytes = record;
    session.returned = harness::CommandProc(code, &bytes);
    session.outcome = ReturnInWords(code, record, bytes, *session.returned,
                                    kChannelsPerChip * session.World().board.FittedCount());
  };
}

Step ParseMotionInfo(Arguments& arguments) {
  // Any byte, so that a script can show what the library does with a channel that is none.
  std::vector<std::uint8_t> channels;
  if (arguments.Take("all")) {
    for (std::uint8_t channel = 0; channel < kChannelsMax; ++channel) channels.push_back(channel);
  } else {
    channels.push_back(arguments.Byte("a channel"));
  }
  const std::uint8_t level = arguments.Byte("a level");
  sim::Bytes mask(VEXO_MOTION_MASK_BYTES);
  std::generate(mask.begin(), mask.end(), [&] { return arguments.RecordByte(); });
  return [=](Session& session) {
    for (const std::uint8_t channel : channels) {
      sim::Bytes bytes = mask;
      session.returned = harness::SetMotionInfo(channel, level, &bytes);
    }
  };
}

}  // namespace

Step TextStep(std::string line) {
  return [line = std::move(line)](Session& session) {
    session.returned = harness::TextCommandProc(line);
    if (auto what = OutcomeOfText(line, static_cast<int>(*session.returned), session.World(),
                                  session.FirstEvent(), session.facts)) {
      session.notes.push_back(std::move(*what));
    }
  };
}

namespace {

Step ParseText(Arguments& arguments) {
  const std::string line = arguments.Text("a line of text");
  return TextStep(line);
}

Step VersionStep(bool null_buffer) {
  return [=](Session& session) {
    int length = 0;
    const std::optional<std::string> text = harness::GetVersion(null_buffer, &length);
    session.returned = length;
    if (text) session.outcome = {'"' + *text + '"', "= " + std::to_string(length)};
  };
}

Step ParseVersion(Arguments&) { return VersionStep(false); }
Step ParseVersionNull(Arguments&) { return VersionStep(true); }

Step ParseDebug(Arguments& arguments) {
  const std::uint32_t enable = arguments.Number("a number");
  return [=](Session&) { harness::SetEnableDebug(enable); };
}

Step ParseOutput(Arguments& arguments) {
  const std::uint32_t enable = arguments.Number("a number");
  return [=](Session&) { harness::SetEnableOutputMsg(enable); };
}

// Time passes; a long one shows how far it is, and can be ended.
void PassTime(Session& session, std::string_view word, std::uint32_t ms) {
  constexpr std::uint32_t kSlice = 60'000;
  Surroundings& around = session.Around();
  const sim::Kernel& kernel = session.World().kernel;
  session.World().Record(sim::LineEvent{std::string(word) + ' ' + std::to_string(ms)});
  const std::uint64_t begin = kernel.NowUnwrapped();
  const auto passed = [&] { return static_cast<std::uint32_t>(kernel.NowUnwrapped() - begin); };
  if (ms == 0) around.LetTimePass(0);
  try {
    for (std::uint32_t done = 0; done < ms && passed() >= done;) {
      const std::uint32_t slice = std::min(kSlice, ms - done);
      around.LetTimePass(slice);
      done += slice;
      around.ShowProgress(std::string(word) + ": " + std::to_string(done / 1000) + " of " +
                          std::to_string(ms / 1000) + " s of virtual time");
    }
  } catch (const Ended& ended) {
    // The host was in no call: what has passed has passed.
    if (ended.why != Ended::Why::Interrupt || !session.Runner().Interactive()) throw;
    around.ForgetInterrupt();
    session.notes.push_back("interrupted after " + std::to_string(passed()) + " ms");
  }
  if (session.HasRunner()) session.Runner().TimePassed(word, passed(), passed() < ms);
}

Step ParseRun(Arguments& arguments) {
  const std::uint32_t ms = arguments.Number("a number of milliseconds");
  return [=](Session& session) { PassTime(session, "run", ms); };
}

Step ParseWait(Arguments& arguments) {
  const std::uint32_t ms = arguments.Number("a number of milliseconds");
  return [=](Session& session) { PassTime(session, "wait", ms); };
}

constexpr LineGroup kAction = LineGroup::Action;

constexpr std::array kActionLines = {
    LineKind{kAction, "attach", "", "the DLL entry with reason 1", ParseAttach},
    LineKind{kAction, "detach", "", "the DLL entry with reason 0", ParseDetach},
    LineKind{kAction, "lowmem", "", "the DLL entry with reason 6", ParseLowMemory},
    LineKind{kAction, "entry", "N", "the DLL entry with any reason", ParseEntry},
    LineKind{kAction, "window", "", "VEXOAPI_Initialize with a new host window", ParseWindow},
    LineKind{kAction, "window invalid", "", "VEXOAPI_Initialize with a handle that is no window",
             ParseWindowInvalid},
    LineKind{kAction, "unbind", "", "VEXOAPI_Uninitialize", ParseUnbind},
    LineKind{kAction, "command", "COMMAND [FIELD VALUE... | BYTE... | null]",
             "VEXOAPI_CommandProc by name or code; what the record is not given is 0 (help "
             "commands)",
             ParseCommand},
    LineKind{kAction, "motioninfo", "CH LEVEL BYTE x 24", "VEXOAPI_SetMotionInfo", ParseMotionInfo},
    LineKind{kAction, "text", "\"LINE\"", "VEXOAPI_TextCommandProc", ParseText},
    LineKind{kAction, "version", "", "VEXOAPI_GetVersion", ParseVersion},
    LineKind{kAction, "version null", "", "VEXOAPI_GetVersion without a buffer", ParseVersionNull},
    LineKind{kAction, "debug", "N", "VEXOAPI_SetEnableDebug", ParseDebug},
    LineKind{kAction, "output", "N", "VEXOAPI_SetEnableOutputMsg", ParseOutput},
    LineKind{kAction, "run", "MS", "the host pumps its messages while virtual time passes",
             ParseRun},
    LineKind{kAction, "wait", "MS",
             "the same, but what happens meanwhile belongs to the action before", ParseWait, true},
};

}  // namespace

std::span<const LineKind> ActionLines() { return kActionLines; }

}  // namespace script
