// Takes the connections of one port.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <string>

namespace desk {

class Listener {
 public:
  using OnSocket = std::function<void(boost::asio::ip::tcp::socket socket)>;

  // `what` it is names it to whoever reads the reason: throws std::runtime_error, as for a port
  // that another listens on.
  Listener(boost::asio::io_context& io, const std::string& what, const std::string& address,
           std::uint16_t port, OnSocket on_socket);
  std::uint16_t Number() const { return number_; }
  void Close();

 private:
  void Accept();

  boost::asio::ip::tcp::acceptor acceptor_;
  boost::asio::steady_timer pause_;
  const OnSocket on_socket_;
  std::uint16_t number_ = 0;
};

}  // namespace desk
