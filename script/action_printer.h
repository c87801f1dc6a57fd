// What the library does, in words, as it happens: debug output and host messages.
//   | debug output, a line of the library each; ! for kernel debug output
//   > a message that the host got, or did not get
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "sim/world.h"

namespace script {

// A message, and whether it came.
std::string MessageInWords(const sim::World& world, const sim::MessageEvent& event);
std::string MessageInWords(const sim::World& world, const sim::ReceivedMessage& message);

// Joins writes into lines: the library writes a prefix and its message apart, and a register dump
// byte by byte. What a write leaves unfinished stands before the next message; the blank that ends
// a dump is shown only when something follows it.
class DebugLines {
 public:
  // The lines that this write ends.
  std::vector<std::string> Add(const std::string& text);
  // What is unfinished.
  std::vector<std::string> Flush();

 private:
  std::string pending_;
};

class ActionPrinter : public sim::TraceListener {
 public:
  // From now on until the end of this object.
  ActionPrinter(sim::World& world, std::ostream& out);
  ~ActionPrinter() override;
  ActionPrinter(const ActionPrinter&) = delete;
  ActionPrinter& operator=(const ActionPrinter&) = delete;

  bool silent = false;
  bool fold = false;  // lines that come again are counted, and told at the end
  std::function<void(const std::string& line)> before_output;

  // An action begins. Times that are told are those that are not its own.
  void Begin();
  // Prints what is unfinished or counted.
  void End();

  // sim::TraceListener
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  void OnReceived(const sim::ReceivedMessage& message);

 private:
  struct Folded {
    std::string line;
    std::uint64_t count;
    std::uint32_t last;  // ms
  };
  void Flush();
  void Print(char mark, const std::vector<std::string>& lines);
  void Message(const std::string& words);
  void Line(const std::string& line);
  void Put(const std::string& line);

  sim::World& world_;
  std::ostream& out_;
  std::uint32_t begin_ = 0;
  unsigned queued_ = 0;  // posted, and not taken from the queue yet
  unsigned older_ = 0;   // of these, by earlier actions
  DebugLines debug_;
  DebugLines kernel_;
  std::vector<Folded> folded_;
};

}  // namespace script
