// What is known of the library by watching it: its state may be inside an emulated machine.
#pragma once

#include <cstddef>
#include <cstdint>

#include "sim/trace.h"

namespace script {

enum class DriverState : std::uint8_t { Closed, Open, FailedOpen };

// Hears of everything since the library was loaded; what happened before it listened, it does not
// know.
class LibraryFacts : public sim::TraceListener {
 public:
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;

  bool attached = false;  // the entry was called with attach, and not with detach since
  bool ready = false;     // an initialization succeeded; neither a later one nor detach takes it
                          // back
  unsigned channels = 0;  // as the last initialization counted them
  bool pal = false;       // the standard that it settled on
  DriverState video_back_end = DriverState::Closed;

 private:
  void Called(const sim::CallEvent& call);
  void Returned(const sim::ReturnEvent& result);
  void Sent(const sim::MessageEvent& message);
  void Counted(const std::uint8_t* state);  // a VideoState

  bool initializing_ = false;  // in VEXO_CMD_INIT
};

// Tells a listener of the events from a place in the trace on.
void Retell(const sim::Trace& trace, std::size_t from, sim::TraceListener& listener);

}  // namespace script
