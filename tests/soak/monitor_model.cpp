#include "tests/soak/monitor_model.h"

#include <cstring>

#include "VexoCtrlSDK.h"

namespace test {
namespace {

constexpr std::uint32_t kRepeatMs = 900;

std::string At(std::uint32_t t) { return " at " + std::to_string(t) + " ms"; }

std::uint32_t LossMaskOf(const sim::ReceivedMessage& message) {
  VideoDetectRecord record = {};
  if (message.record.size() == sizeof record) {
    std::memcpy(&record, message.record.data(), sizeof record);
  }
  return record.loss_mask;
}

std::vector<sim::ReceivedMessage> Of(const std::vector<sim::ReceivedMessage>& messages,
                                     std::uint32_t code) {
  std::vector<sim::ReceivedMessage> chosen;
  for (const sim::ReceivedMessage& message : messages) {
    if (message.message == code) chosen.push_back(message);
  }
  return chosen;
}

}  // namespace

void MonitorModel::Start() {
  told_video_ = false;
  motion_mask_ = 0;
  repeat_known_ = false;
  changes_since_ = 0;
}

void MonitorModel::Resume(std::uint32_t loss_mask, std::uint32_t motion_mask) {
  told_video_ = true;
  loss_mask_ = loss_mask;
  motion_mask_ = motion_mask;
  repeat_known_ = false;
  changes_since_ = 0;
}

std::string MonitorModel::Check(std::uint32_t loss_mask, std::uint32_t motion_mask,
                                std::uint32_t from, std::uint32_t to,
                                const std::vector<sim::ReceivedMessage>& messages) {
  for (const sim::ReceivedMessage& message : messages) {
    const bool known =
        message.message == VEXO_MSG_VIDEO_INFO || message.message == VEXO_MSG_MOTION_STATUS;
    if (!known || message.posted)
      return "message " + std::to_string(message.message) + At(message.t);
  }
  const std::string wrong = CheckVideo(loss_mask, from, messages);
  return wrong.empty() ? CheckMotion(motion_mask, from, to, messages) : wrong;
}

// A mask is told once, at the first reading of it.
std::string MonitorModel::CheckVideo(std::uint32_t loss_mask, std::uint32_t from,
                                     const std::vector<sim::ReceivedMessage>& messages) {
  const auto videos = Of(messages, VEXO_MSG_VIDEO_INFO);
  const bool due = !told_video_ || loss_mask != loss_mask_;
  if (videos.size() != (due ? 1u : 0u)) {
    return std::to_string(videos.size()) + " times video information";
  }
  told_video_ = true;
  loss_mask_ = loss_mask;
  if (!due) return {};
  ++videos_;
  if (LossMaskOf(videos[0]) != loss_mask) return "another loss mask" + At(videos[0].t);
  if (videos[0].t - from > latest_ms_) return "a late loss mask" + At(videos[0].t);
  return {};
}

// Repeats are 900 ms behind the first reading after the last one, so one or two periods more. A
// change takes a reading for itself: that one, or the one at which the repeat was due.
std::uint32_t MonitorModel::LatestRepeatMs() const {
  return kRepeatMs + 2 * latest_ms_ + changes_since_ * period_ms_;
}

// A change is told at its first reading, and only a change lets a repeat come early.
std::string MonitorModel::CheckMotion(std::uint32_t motion_mask, std::uint32_t from,
                                      std::uint32_t to,
                                      const std::vector<sim::ReceivedMessage>& messages) {
  bool due = motion_mask != motion_mask_;
  motion_mask_ = motion_mask;
  if (due) ++changes_since_;
  for (const sim::ReceivedMessage& message : Of(messages, VEXO_MSG_MOTION_STATUS)) {
    ++motions_;
    if (message.wparam != motion_mask) return "another motion mask" + At(message.t);
    if (due) {
      if (message.t - from > latest_ms_) return "a late motion mask" + At(message.t);
      due = false;
      continue;
    }
    const std::uint32_t since = message.t - repeat_at_;
    if (repeat_known_ && changes_since_ == 0 && since < kRepeatMs) {
      return "a motion mask again after " + std::to_string(since) + " ms" + At(message.t);
    }
    if (repeat_known_ && since > LatestRepeatMs()) {
      return "a motion mask not again for " + std::to_string(since) + " ms" + At(message.t);
    }
    repeat_known_ = true;
    changes_since_ = 0;
    repeat_at_ = message.t;
  }
  if (due) return "a motion mask that is not told";
  if (!repeat_known_) {
    if (to - from > LatestRepeatMs()) return "no motion mask again";
    return {};
  }
  if (to - repeat_at_ > LatestRepeatMs()) return "no motion mask any more" + At(to);
  return {};
}

}  // namespace test
