// One connection of a browser: files, one request after the other, until it becomes a WebSocket.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "desk/port/transport.h"

namespace desk {

enum class SocketKind : std::uint8_t { Control, Monitor };

// Everything here is called by the thread of the port's sockets.
class HttpSession {
 public:
  struct Around {
    std::chrono::milliseconds request;  // until it has come, or its answer is taken
    std::chrono::milliseconds goodbye;  // until the peer of a refused one is gone
    std::chrono::milliseconds silence;  // of a WebSocket's peer, until it is asked
    std::string language;               // the text of /language.json
    std::function<bool(SocketKind kind)> has_room;
    std::function<void(SocketKind kind, std::shared_ptr<Transport> socket)> on_socket;
    // The connection is closed, or has become a WebSocket.
    std::function<void(const std::shared_ptr<HttpSession>&)> on_gone;
  };

  // `around` stays as long as it.
  static std::shared_ptr<HttpSession> Start(boost::asio::ip::tcp::socket socket,
                                            const Around& around);
  virtual ~HttpSession() = default;
  virtual void Close() = 0;
};

}  // namespace desk
