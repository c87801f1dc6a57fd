// What lines need of the board that they are sent to: time through its access, and texts and
// pictures for whoever is not at a terminal.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "desk/console/console.h"
#include "desk/console/plain_surroundings.h"
#include "sim/screen/screen.h"

namespace desk {

class BoardSurroundings : public PlainSurroundings {
 public:
  explicit BoardSurroundings(BoardAccess& access) : access_(access) {}

  // Throws std::runtime_error when lines are to end.
  void LetTimePass(std::uint32_t ms) override;
  // Composes the picture and keeps it: to write a file takes longer than the board should stand.
  void SavePicture(const std::string& path) override;

  // What is kept, to be written outside.
  struct Picture {
    std::string path;
    sim::Image image;
  };
  std::vector<Picture> TakePictures() { return std::exchange(pictures_, {}); }

  void EndLines() { ending_ = true; }
  void RefuseWhenEnding() const;
  // Lines that let time pass now.
  unsigned Passing() const { return passing_; }

 private:
  BoardAccess& access_;
  std::vector<Picture> pictures_;
  unsigned passing_ = 0;
  std::atomic<bool> ending_{false};
};

}  // namespace desk
