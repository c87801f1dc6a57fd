// One connection of the port: its conversation, its lines one after the other in a thread of their
// own, and what it is sent.
#pragma once

#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "desk/console/console.h"
#include "desk/port/conversation.h"
#include "desk/port/event_feed.h"
#include "desk/port/port.h"
#include "desk/port/transport.h"

namespace desk {

// But for the runner's own part, everything here is called by the thread of the port's sockets.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  struct Around {
    Port::Run run;
    PortLimits limits;
    EventFeed& events;
    EventFeed& all_events;
    // The connection is closed, and none of its lines runs.
    std::function<void(const std::shared_ptr<Connection>&)> on_gone;
  };

  Connection(std::shared_ptr<Transport> transport, const Around& around);
  ~Connection() = default;  // after Join
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void Start();
  void Attend();  // does all that can be done now, such as to send an event that has come
  void Close();
  // After Close, by any thread: until the line that runs is over.
  void Join();

 private:
  static constexpr std::size_t kMostLines = 64;                // not answered yet; no more are read
  static constexpr std::size_t kSent = std::size_t{64} << 10;  // at a time

  struct Line {
    std::uint64_t number;
    std::string text;
    std::string why;  // it is refused for, unless it is empty
  };
  struct Answered {
    std::string text;
    std::uint64_t after;  // the events before this number
  };

  void Read();
  void OnRead(Transport::Comes what, std::string_view bytes);
  void TakeSteps();  // while there is room for them
  void Take(Conversation::Step step);
  void Greet(Wants wants);
  bool HasRoom();
  void Send();
  void Gather();
  bool AllSaid();
  void SayGoodbye();
  void CloseAfter(std::chrono::milliseconds time);

  void RunLines();  // the runner
  void Post(void (Connection::*step)());
  void AddAnswer(std::string text, std::uint64_t after);
  void ReportGone();

  const Around& around_;
  const std::shared_ptr<Transport> transport_;
  boost::asio::steady_timer timer_;
  Conversation conversation_;
  std::string written_;
  bool reading_ = false;
  bool writing_ = false;
  bool closed_ = false;
  bool no_more_ = false;                // is read
  std::optional<std::string> goodbye_;  // goes after the answers, and then the connection closes
  EventFeed* feed_ = nullptr;           // of whoever watches
  std::uint64_t next_event_ = 0;

  std::thread runner_;
  std::mutex mutex_;  // for what follows
  std::condition_variable more_;
  std::deque<Line> lines_;
  bool running_ = false;
  bool ended_ = false;
  std::deque<Answered> answered_;
};

}  // namespace desk
