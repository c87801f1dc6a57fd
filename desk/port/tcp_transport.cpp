#include "desk/port/tcp_transport.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <utility>

namespace desk {

namespace asio = boost::asio;
using boost::system::error_code;

void TcpTransport::Read(OnRead on_read) {
  socket_.async_read_some(asio::buffer(read_),
                          [this, on_read = std::move(on_read)](error_code error, std::size_t got) {
                            if (error == asio::error::eof) return on_read(Comes::End, {});
                            if (error) return on_read(Comes::Broken, {});
                            on_read(Comes::Bytes, {read_.data(), got});
                          });
}

void TcpTransport::Write(std::string_view bytes, OnWritten on_written) {
  asio::async_write(
      socket_, asio::buffer(bytes.data(), bytes.size()),
      [on_written = std::move(on_written)](error_code error, std::size_t) { on_written(!error); });
}

void TcpTransport::EndSending() {
  error_code ignored;
  socket_.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
}

void TcpTransport::Close() {
  error_code ignored;
  socket_.close(ignored);
}

}  // namespace desk
