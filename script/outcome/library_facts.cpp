#include "script/outcome/library_facts.h"

#include <cstring>

#include "VexoCtrlSDK.h"

namespace script {
namespace {

constexpr std::uint32_t kCodeBits = 0xFFFF;  // of a command; the library looks at no others
constexpr std::int64_t kReasonDetach = 0;
constexpr std::int64_t kReasonAttach = 1;
constexpr const char* kVideoBackEnd = "VBE1:";

}  // namespace

void LibraryFacts::OnEvent(const sim::Event& /*event*/, const sim::EventDetail* detail) {
  if (detail == nullptr) return;
  if (const auto* call = std::get_if<sim::CallEvent>(detail)) Called(*call);
  if (const auto* result = std::get_if<sim::ReturnEvent>(detail)) Returned(*result);
  if (const auto* message = std::get_if<sim::MessageEvent>(detail)) Sent(*message);
  if (const auto* open = std::get_if<sim::OpenEvent>(detail)) {
    if (open->name == kVideoBackEnd && open->ok) video_back_end = DriverState::Open;
  }
  if (const auto* close = std::get_if<sim::CloseEvent>(detail)) {
    if (close->name == kVideoBackEnd) video_back_end = DriverState::Closed;
  }
}

void LibraryFacts::Called(const sim::CallEvent& call) {
  if (call.args.empty()) return;
  if (call.fn == "DllMain") {
    if (call.args[0] == kReasonDetach) attached = false;
    if (call.args[0] == kReasonAttach) attached = true;
  }
  if (call.fn == "VEXOAPI_CommandProc") initializing_ = (call.args[0] & kCodeBits) == VEXO_CMD_INIT;
}

void LibraryFacts::Returned(const sim::ReturnEvent& result) {
  if (!initializing_ || result.fn != "VEXOAPI_CommandProc") return;
  initializing_ = false;
  constexpr std::size_t kState = offsetof(VexoInitRecord, chip_count);
  if (result.value == VEXO_OK && result.record &&
      result.record->size() >= kState + sizeof(VideoState)) {
    Counted(result.record->data() + kState);
  }
  if (result.value == VEXO_ERROR_FAILED) channels = 0;  // no chip was found
}

// The text command tells its outcome by messages, whether or not they reach the host.
void LibraryFacts::Sent(const sim::MessageEvent& message) {
  if (message.message == VEXO_MSG_INIT_RESULT && message.record &&
      message.record->size() == sizeof(VideoState)) {
    Counted(message.record->data());
  }
  if (message.message != VEXO_MSG_STATUS) return;
  if (message.wparam == VEXO_STATUS_DETECT_ERROR) channels = 0;
  if (message.wparam == VEXO_STATUS_VBE_OPEN_FAILED) video_back_end = DriverState::FailedOpen;
}

void LibraryFacts::Counted(const std::uint8_t* state) {
  VideoState found;
  std::memcpy(&found, state, sizeof found);
  ready = true;
  channels = found.chip_count * kChannelsPerChip;
  pal = found.video_standard == VEXO_VIDEO_PAL;
}

void Retell(const sim::Trace& trace, std::size_t from, sim::TraceListener& listener) {
  for (std::size_t i = from; i < trace.Mark(); ++i) {
    const sim::Event& event = trace.Events()[i];
    const bool cycle = event.kind != sim::Event::Kind::Other;
    listener.OnEvent(event, cycle ? nullptr : &trace.Detail(event));
  }
}

}  // namespace script
