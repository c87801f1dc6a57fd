// Those who watch the board's pictures. Each gets the next one when it has taken the last, so that
// a slow one gets fewer, and one that stalls none.
#pragma once

#include <atomic>
#include <boost/asio/any_io_executor.hpp>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "desk/port/painter.h"
#include "desk/port/transport.h"

namespace desk {

class Monitor {
 public:
  // The thread of the port's sockets is behind `executor`, and runs no more when the monitor goes.
  explicit Monitor(boost::asio::any_io_executor executor);

  // ---- The thread of the port's sockets --------------------------------------------------------

  void Add(std::shared_ptr<Transport> transport);
  std::size_t Count() const { return watchers_.size(); }
  void Close();

  // ---- Any thread ------------------------------------------------------------------------------

  // Somebody waits for a picture, and none is on its way.
  bool WantsMoment() const { return painter_.Idle() && drawn_ == 0 && waiting_ != 0; }
  void Show(Moment moment) { painter_.Show(std::move(moment)); }

 private:
  struct Watcher {
    std::shared_ptr<Transport> transport;
    Painter::Picture sent{};  // and not taken yet
    bool gone = false;
  };

  void Listen(const std::shared_ptr<Watcher>& watcher);
  void Send(const Painter::Picture& picture);
  void Drop(const std::shared_ptr<Watcher>& watcher);

  const boost::asio::any_io_executor executor_;
  std::vector<std::shared_ptr<Watcher>> watchers_;
  std::atomic<std::size_t> drawn_{0};    // pictures that are not sent yet
  std::atomic<std::size_t> waiting_{0};  // watchers, for a picture
  Painter painter_;                      // last: its thread uses the rest
};

}  // namespace desk
