// The bytes of a socket.
#pragma once

#include <array>
#include <boost/asio/ip/tcp.hpp>

#include "desk/port/transport.h"

namespace desk {

// Lives as long as what it calls back.
class TcpTransport : public Transport {
 public:
  explicit TcpTransport(boost::asio::ip::tcp::socket socket) : socket_(std::move(socket)) {}
  boost::asio::any_io_executor Executor() override { return socket_.get_executor(); }
  void Read(OnRead on_read) override;
  void Write(std::string_view bytes, OnWritten on_written) override;
  void EndSending() override;
  void Close() override;

 private:
  boost::asio::ip::tcp::socket socket_;
  std::array<char, 4096> read_{};
};

}  // namespace desk
