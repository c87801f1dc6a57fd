// What became of the text commands for the video back-end.
#include "script/grammar/pattern_walk.h"
#include "script/outcome/text_action.h"

namespace script {
namespace {

constexpr const char* kFailedOpen =
    "an open that failed counts as open until vpb uninit: nothing was opened";

void SayOfOpen(TextAction& action) {
  if (const auto* open = action.Last<sim::OpenEvent>()) {
    if (!open->ok) action.Say(open->name + " could not be opened");
  } else if (action.Facts().video_back_end == DriverState::FailedOpen) {
    action.Say(kFailedOpen);
  } else {
    action.Say("the driver is open already");
  }
}

void SayOfClose(TextAction& action) {
  const auto* close = action.Last<sim::CloseEvent>();
  if (close == nullptr) action.Say("the driver is closed already: nothing was done");
  if (close != nullptr && !close->ok) {
    action.Say("its open had failed: there was no driver to close, the next vpb init tries anew");
  }
}

void SayOfRequest(TextAction& action) {
  const auto* request = action.Last<sim::IoctlEvent>();
  if (request == nullptr) action.Say("the driver is closed: nothing was sent (vpb init opens it)");
  if (request != nullptr && !request->ok) {
    action.Say("no driver took the request: its open had failed (vpb uninit, then vpb init)");
  }
}

}  // namespace

void SayOfBackEndCommand(TextAction& action) {
  const std::string_view keyword = KeywordOf(action.Line().pattern);
  if (keyword == "init") return SayOfOpen(action);
  if (keyword == "uninit") return SayOfClose(action);
  SayOfRequest(action);
}

}  // namespace script
