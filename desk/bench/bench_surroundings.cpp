#include "desk/bench/bench_surroundings.h"

#include "sim/picture/png.h"
#include "sim/screen/screen.h"
#include "sim/world.h"

namespace desk {

void BenchSurroundings::LetTimePass(std::uint32_t ms) {
  struct Passing {
    explicit Passing(bool& of) : passing(of) { passing = true; }
    ~Passing() { passing = false; }
    Passing(const Passing&) = delete;
    Passing& operator=(const Passing&) = delete;
    bool& passing;
  };
  const Passing now(passing_);
  Surroundings::LetTimePass(ms);
}

std::vector<std::string> BenchSurroundings::LibraryStack() {
  return library_stack_ ? library_stack_() : std::vector<std::string>();
}

void BenchSurroundings::SavePicture(const std::string& path) {
  sim::WritePng(sim::ComposeScreen(sim::TheWorld().board), path);
}

}  // namespace desk
