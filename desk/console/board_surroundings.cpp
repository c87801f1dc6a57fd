#include "desk/console/board_surroundings.h"

#include <algorithm>
#include <stdexcept>

#include "sim/world.h"

namespace desk {
namespace {

constexpr std::uint32_t kSlice = 100;  // ms, after which a line notices that it is to end

}  // namespace

void BoardSurroundings::LetTimePass(std::uint32_t ms) {
  struct Count {
    explicit Count(unsigned& of) : count(of) { ++count; }
    ~Count() { --count; }
    Count(const Count&) = delete;
    Count& operator=(const Count&) = delete;
    unsigned& count;
  };
  const Count passing(passing_);
  const sim::Kernel& kernel = sim::TheWorld().kernel;
  const std::uint64_t end = kernel.NowUnwrapped() + ms;
  do {
    const std::uint64_t left = end - std::min(end, kernel.NowUnwrapped());
    access_.LetTimePass(static_cast<std::uint32_t>(std::min<std::uint64_t>(left, kSlice)));
    RefuseWhenEnding();
  } while (kernel.NowUnwrapped() < end);
}

void BoardSurroundings::RefuseWhenEnding() const {
  if (ending_) throw std::runtime_error("the board is about to close");
}

void BoardSurroundings::SavePicture(const std::string& path) {
  pictures_.push_back({path, sim::ComposeScreen(sim::TheWorld().board)});
}

}  // namespace desk
