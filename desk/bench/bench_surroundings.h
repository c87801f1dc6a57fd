// What lines need of a board with a clock.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "desk/console/plain_surroundings.h"

namespace desk {

class BenchSurroundings : public PlainSurroundings {
 public:
  // ended: whether the session is to end.
  BenchSurroundings(std::function<bool()> ended,
                    std::function<std::vector<std::string>()> library_stack)
      : ended_(std::move(ended)), library_stack_(std::move(library_stack)) {}

  void LetTimePass(std::uint32_t ms) override;
  // Time that passes ends with the session; a call comes to its end.
  bool Interrupted() const override { return passing_ && ended_(); }
  std::vector<std::string> LibraryStack() override;
  void SavePicture(const std::string& path) override;

 private:
  const std::function<bool()> ended_;
  const std::function<std::vector<std::string>()> library_stack_;
  bool passing_ = false;
};

}  // namespace desk
