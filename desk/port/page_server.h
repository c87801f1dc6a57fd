// The page: browsers get its files, and open WebSockets for lines and pictures.
#pragma once

#include <boost/asio/io_context.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "desk/port/http_session.h"
#include "desk/port/listener.h"
#include "desk/port/monitor.h"
#include "desk/port/port.h"

namespace desk {

class PageServer {
 public:
  struct Lines {  // WebSockets whose conversation is somebody else's
    std::function<bool()> have_room;
    std::function<void(std::shared_ptr<Transport> socket)> begin;
  };

  // Throws std::runtime_error.
  PageServer(boost::asio::io_context& io, const PageSettings& settings, const PortLimits& limits,
             Lines lines);
  std::uint16_t Number() const { return listener_.Number(); }
  // In the thread of the port's sockets.
  void Close();
  Monitor& Pictures() { return monitor_; }

 private:
  void OnSocket(boost::asio::ip::tcp::socket socket);
  bool HasRoom(SocketKind kind) const;

  const PortLimits limits_;
  const Lines lines_;
  const HttpSession::Around around_;
  std::vector<std::shared_ptr<HttpSession>> sessions_;
  Listener listener_;
  Monitor monitor_;
};

}  // namespace desk
