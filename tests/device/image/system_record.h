// What the image asks of the system: each call in words, in order.
//
//   CreateEventW(0, 1, 0, 'VEXOSDK') = event1
//
// A handle or a piece of memory that the system gave is named from then on, by its kind; & is any
// other address in the process. Calls without a result have none here.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "device/emulator/process.h"

namespace emulator {

// What a call is answered with in the system's place.
struct GivenAnswer {
  std::string name;
  std::uint32_t result = 0;
  std::optional<std::uint32_t> error = {};  // the last error; none: left as it is
  unsigned nth = 1;                         // which of the calls from now on
  // What it writes to the words that arguments point to.
  std::vector<std::pair<unsigned, std::uint32_t>> words = {};
  std::function<void(const Cpu&)> look = {};  // what a test looks at meanwhile
};

class SystemRecord {
 public:
  explicit SystemRecord(Process& process);

  void Answer(GivenAnswer answer) { answers_.push_back(std::move(answer)); }
  // Answers that no call has had yet.
  std::size_t AnswersLeft() const { return answers_.size(); }

  // The calls since the last time that one of these took them, of all threads.
  std::vector<std::string> Take();
  // Those of these names alone.
  std::vector<std::string> Take(const std::set<std::string>& names);
  // Those of the host's thread, but for these names.
  std::vector<std::string> TakeOfHost(const std::set<std::string>& without = {});

 private:
  struct Signature;
  struct Call {
    unsigned processor = 0;
    std::string name;
    std::string line;
  };

  static const Signature& SignatureOf(const ImageImport& import);
  std::uint32_t OnCall(const SystemCall& call, Cpu& cpu);
  std::string Argument(char kind, Cpu& cpu, unsigned index) const;
  std::uint32_t AnswerTo(const std::string& name, const SystemCall& call, Cpu& cpu);
  std::string Named(const Cpu& cpu, std::uint32_t value) const;
  void Name(std::uint32_t value, const std::string& kind);
  std::vector<std::string> TakeIf(const std::function<bool(const Call&)>& wanted);

  std::deque<Call> calls_;  // one that is under way stays where it is
  std::size_t taken_ = 0;   // of the calls
  std::list<GivenAnswer> answers_;
  std::map<std::uint32_t, std::string> names_;  // of handles and memory
  std::map<std::string, unsigned> named_;       // how many, by kind
};

}  // namespace emulator
