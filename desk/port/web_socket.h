// A WebSocket as a transport: each write is a message, and messages that come are joined.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "desk/port/transport.h"

namespace desk {

class WebSocket : public Transport, public std::enable_shared_from_this<WebSocket> {
 public:
  enum class Sends : std::uint8_t { Text, Bytes };
  struct Settings {
    Sends sends = Sends::Text;
    std::size_t most_unread = 0;          // bytes that come before they are asked for; more end it
    std::chrono::milliseconds silence{};  // until a peer is asked whether it is there, and again
                                          // until it is taken for gone
  };
  using Request = boost::beast::http::request<boost::beast::http::empty_body>;

  WebSocket(boost::beast::tcp_stream stream, const Settings& settings);
  // Answers the request for it.
  void Accept(const Request& request, std::function<void(bool open)> on_accepted);

  boost::asio::any_io_executor Executor() override { return stream_.get_executor(); }
  void Read(OnRead on_read) override;
  void Write(std::string_view bytes, OnWritten on_written) override;
  void EndSending() override;
  void Close() override;

 private:
  // A read always waits, whoever asked for one: what a peer is asked, it answers there.
  void ReadMessage();
  void Deliver();

  const Settings settings_;
  boost::beast::websocket::stream<boost::beast::tcp_stream> stream_;
  boost::beast::flat_buffer message_;
  std::string unread_;
  bool broken_ = false;
  OnRead on_read_;
};

}  // namespace desk
