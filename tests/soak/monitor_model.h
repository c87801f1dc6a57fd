// What the monitor must have told the host, from what the cameras did.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/kernel/windows.h"

namespace test {

// The monitor reads once in each period of the sync bit, so its times are known to a few
// milliseconds more than that.
class MonitorModel {
 public:
  // sync_ms: how long the sync bit stays at a level.
  explicit MonitorModel(std::uint32_t sync_ms)
      : period_ms_(2 * sync_ms), latest_ms_(period_ms_ + 20) {}

  // A monitor begins: it has told nothing.
  void Start();
  // The host was away or deaf, or messages failed: what was tried counts as told, and when the
  // next repeat comes is open.
  void Resume(std::uint32_t loss_mask, std::uint32_t motion_mask);

  // While the host pumped from one time to another (wrapping at 2^32), with the cameras as they
  // are, these messages came. What is wrong with them, empty when nothing is.
  std::string Check(std::uint32_t loss_mask, std::uint32_t motion_mask, std::uint32_t from,
                    std::uint32_t to, const std::vector<sim::ReceivedMessage>& messages);

  std::uint64_t Videos() const { return videos_; }    // messages that came
  std::uint64_t Motions() const { return motions_; }  // the same

 private:
  std::string CheckVideo(std::uint32_t loss_mask, std::uint32_t from,
                         const std::vector<sim::ReceivedMessage>& messages);
  std::string CheckMotion(std::uint32_t motion_mask, std::uint32_t from, std::uint32_t to,
                          const std::vector<sim::ReceivedMessage>& messages);

  // From a repeat, or from when one may come, to the next.
  std::uint32_t LatestRepeatMs() const;

  std::uint32_t period_ms_;
  std::uint32_t latest_ms_;  // from a change to its message
  std::uint64_t videos_ = 0;
  std::uint64_t motions_ = 0;
  bool told_video_ = false;
  std::uint32_t loss_mask_ = 0;
  std::uint32_t motion_mask_ = 0;
  bool repeat_known_ = false;  // when the last repeat was, of which the next is counted
  unsigned changes_since_ = 0;
  std::uint32_t repeat_at_ = 0;
};

}  // namespace test
