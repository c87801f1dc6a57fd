#include "desk/port/web_socket.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/socket_base.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <utility>

namespace desk {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;
using beast::error_code;

WebSocket::WebSocket(beast::tcp_stream stream, const Settings& settings)
    : settings_(settings), stream_(std::move(stream)) {
  beast::get_lowest_layer(stream_).expires_never();
  stream_.set_option(websocket::stream_base::timeout{.handshake_timeout = settings.silence,
                                                     .idle_timeout = 2 * settings.silence,
                                                     .keep_alive_pings = true});
  stream_.read_message_max(settings.most_unread);
  stream_.text(settings.sends == Sends::Text);
  stream_.auto_fragment(false);
  if (settings.sends == Sends::Text) return;
  // Of pictures, few are to wait in the system for a peer that is slow: they grow old.
  constexpr int kFew = 128 << 10;
  error_code ignored;
  beast::get_lowest_layer(stream_).socket().set_option(asio::socket_base::send_buffer_size(kFew),
                                                       ignored);
}

void WebSocket::Accept(const Request& request, std::function<void(bool open)> on_accepted) {
  stream_.async_accept(
      request, [self = shared_from_this(), on_accepted = std::move(on_accepted)](error_code error) {
        on_accepted(!error);
        if (!error) self->ReadMessage();
      });
}

void WebSocket::ReadMessage() {
  stream_.async_read(message_, [self = shared_from_this()](error_code error, std::size_t) {
    self->broken_ = error.failed() || !self->stream_.got_text() ||
                    self->unread_.size() + self->message_.size() > self->settings_.most_unread;
    if (self->broken_) {
      self->Close();
    } else {
      self->unread_ += beast::buffers_to_string(self->message_.data());
      self->message_.clear();
      self->ReadMessage();
    }
    self->Deliver();
  });
}

void WebSocket::Read(OnRead on_read) {
  on_read_ = std::move(on_read);
  asio::post(stream_.get_executor(), [self = shared_from_this()] { self->Deliver(); });
}

void WebSocket::Deliver() {
  if (!on_read_ || (unread_.empty() && !broken_)) return;
  const OnRead on_read = std::exchange(on_read_, nullptr);
  if (broken_) return on_read(Comes::Broken, {});
  const std::string bytes = std::exchange(unread_, {});
  on_read(Comes::Bytes, bytes);
}

void WebSocket::Write(std::string_view bytes, OnWritten on_written) {
  stream_.async_write(asio::buffer(bytes.data(), bytes.size()),
                      [self = shared_from_this(), on_written = std::move(on_written)](
                          error_code error, std::size_t) { on_written(!error); });
}

void WebSocket::EndSending() {
  stream_.async_close(websocket::close_code::policy_error,
                      [self = shared_from_this()](error_code) {});
}

void WebSocket::Close() { beast::get_lowest_layer(stream_).close(); }

}  // namespace desk
