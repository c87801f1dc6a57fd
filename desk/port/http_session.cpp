#include "desk/port/http_session.h"

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "desk/page/files.h"
#include "desk/port/web_socket.h"

namespace desk {

namespace beast = boost::beast;
namespace http = beast::http;
using beast::error_code;
using boost::asio::ip::tcp;

namespace {

constexpr std::size_t kMostHeader = 8192;
constexpr std::size_t kMostUnread = std::size_t{64} << 10;  // of the lines of a page
constexpr std::size_t kMostOfWatcher = 64;  // which sends nothing; what it asks for is short

using Request = WebSocket::Request;

// The only one of its name; empty when there is none, or another.
std::string_view TheField(const Request& request, http::field name) {
  const auto [first, end] = request.equal_range(name);
  if (first == end || std::next(first) != end) return {};
  return {first->value().data(), first->value().size()};
}

// Whether a request is meant for this port, and not for a name that somebody else lets point to it.
bool IsHere(std::string_view host, const tcp::endpoint& here) {
  const boost::asio::ip::address address = here.address();
  const std::string listened =
      address.is_v6() ? '[' + address.to_string() + ']' : address.to_string();
  for (const std::string& name :
       {std::string("127.0.0.1"), std::string("localhost"), std::string("[::1]"), listened}) {
    const std::string whole = name + ':' + std::to_string(here.port());
    if (beast::iequals({host.data(), host.size()}, whole)) return true;
    constexpr std::uint16_t kPlain = 80;  // browsers leave it out
    if (here.port() == kPlain && beast::iequals({host.data(), host.size()}, name)) return true;
  }
  return false;
}

struct Content {
  std::string_view type;
  std::string_view text;
};

class Session final : public HttpSession, public std::enable_shared_from_this<Session> {
 public:
  Session(tcp::socket socket, const Around& around) : around_(around), stream_(std::move(socket)) {}

  void Read();
  void Close() override;

 private:
  using Response = http::response<http::string_body>;

  void OnRequest(error_code error);
  void Answer(const Request& request);
  std::optional<Content> Find(std::string_view target) const;
  void Upgrade(const Request& request, SocketKind kind);
  void Refuse(http::status status, std::string_view why);
  void Send(http::status status, const Content& content, bool stays);
  void OnSent(error_code error, bool stays);
  void Drain();
  void Gone();

  const Around& around_;
  beast::tcp_stream stream_;
  beast::flat_buffer buffer_{2 * kMostHeader};
  std::optional<http::request_parser<http::empty_body>> parser_;
  Response response_;
  std::shared_ptr<WebSocket> web_socket_;
  std::array<char, 4096> drained_{};
  bool gone_ = false;
};

// ---- Requests -----------------------------------------------------------------------------------

void Session::Read() {
  parser_.emplace();
  parser_->header_limit(kMostHeader);
  stream_.expires_after(around_.request);
  http::async_read_header(
      stream_, buffer_, *parser_,
      [self = shared_from_this()](error_code error, std::size_t) { self->OnRequest(error); });
}

void Session::OnRequest(error_code error) {
  if (gone_) return;
  if (error == http::error::header_limit || error == http::error::buffer_overflow) {
    return Refuse(http::status::request_header_fields_too_large, "the request is too long");
  }
  if (error == http::error::end_of_stream || error == http::error::partial_message) return Gone();
  if (error.category() == http::make_error_code(http::error::bad_target).category()) {
    return Refuse(http::status::bad_request, "this is no request");
  }
  if (error) return Gone();
  Answer(parser_->get());
}

void Session::Answer(const Request& request) {
  using http::status;
  error_code error;
  const tcp::endpoint here = stream_.socket().local_endpoint(error);
  if (error) return Gone();
  const std::string_view host = TheField(request, http::field::host);
  if (!IsHere(host, here)) return Refuse(status::forbidden, "the request is for another host");
  const bool for_socket = request.find(http::field::upgrade) != request.end();
  const std::string_view origin = TheField(request, http::field::origin);
  const bool has_origin = request.find(http::field::origin) != request.end();
  if ((has_origin || for_socket) &&
      !beast::iequals({origin.data(), origin.size()}, "http://" + std::string(host))) {
    return Refuse(status::forbidden, "the request is of another page");
  }
  if (request.method() != http::verb::get && request.method() != http::verb::head) {
    return Refuse(status::method_not_allowed, "the page is there to be read");
  }
  if (parser_->chunked() || parser_->content_length().value_or(0) != 0) {
    return Refuse(status::bad_request, "a request has no content");
  }
  std::string_view target(request.target().data(), request.target().size());
  target = target.substr(0, target.find('?'));
  const bool control = target == "/control";
  if (control || target == "/monitor") {
    if (!beast::websocket::is_upgrade(request)) {
      return Refuse(status::upgrade_required, "this is for a WebSocket");
    }
    return Upgrade(request, control ? SocketKind::Control : SocketKind::Monitor);
  }
  const std::optional<Content> file = Find(target);
  if (!file) return Refuse(status::not_found, "there is no such file");
  Send(status::ok, *file, request.keep_alive());
}

std::optional<Content> Session::Find(std::string_view target) const {
  if (target == "/language.json") return Content{"application/json", around_.language};
  if (target == "/") target = "/index.html";
  for (const PageFile& file : PageFiles()) {
    if (target.substr(1) == file.name) return Content{file.type, file.text};
  }
  return std::nullopt;
}

void Session::Upgrade(const Request& request, SocketKind kind) {
  if (!around_.has_room(kind)) {
    return Refuse(http::status::service_unavailable, "too many pages are open");
  }
  if (buffer_.size() != 0) return Refuse(http::status::bad_request, "this is no request");
  const bool control = kind == SocketKind::Control;
  web_socket_ = std::make_shared<WebSocket>(
      std::move(stream_),
      WebSocket::Settings{.sends = control ? WebSocket::Sends::Text : WebSocket::Sends::Bytes,
                          .most_unread = control ? kMostUnread : kMostOfWatcher,
                          .silence = around_.silence});
  web_socket_->Accept(request, [self = shared_from_this(), kind](bool open) {
    if (self->gone_) return;
    self->gone_ = true;
    self->around_.on_gone(self);
    if (open) self->around_.on_socket(kind, std::move(self->web_socket_));
  });
}

// ---- Answers ------------------------------------------------------------------------------------

// After a refusal the connection ends: what comes behind the request may be anything.
void Session::Refuse(http::status status, std::string_view why) {
  Send(status, {"text/plain; charset=utf-8", why}, false);
}

void Session::Send(http::status status, const Content& content, bool stays) {
  const Request& request = parser_->get();
  response_ = Response(status, request.version() == 10 ? 10 : 11);
  response_.set(http::field::content_type, {content.type.data(), content.type.size()});
  response_.set(http::field::cache_control, "no-store");
  response_.set(
      "Content-Security-Policy",
      "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
      "connect-src 'self' ws://" +
          std::string(TheField(request, http::field::host)) +
          "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
          "require-trusted-types-for 'script'");
  response_.set("Cross-Origin-Opener-Policy", "same-origin");
  response_.set("Cross-Origin-Resource-Policy", "same-origin");
  response_.set("Referrer-Policy", "no-referrer");
  response_.set("X-Content-Type-Options", "nosniff");
  response_.set("X-Frame-Options", "DENY");
  if (status == http::status::method_not_allowed) response_.set(http::field::allow, "GET, HEAD");
  if (status == http::status::upgrade_required) {
    response_.set(http::field::upgrade, "websocket");
  }
  response_.content_length(content.text.size());
  response_.keep_alive(stays);
  if (request.method() != http::verb::head) response_.body() = content.text;
  stream_.expires_after(around_.request);
  http::async_write(stream_, response_,
                    [self = shared_from_this(), stays](error_code error, std::size_t) {
                      self->OnSent(error, stays);
                    });
}

void Session::OnSent(error_code error, bool stays) {
  if (gone_) return;
  if (error) return Gone();
  if (stays) return Read();
  stream_.socket().shutdown(tcp::socket::shutdown_send, error);
  stream_.expires_after(around_.goodbye);
  Drain();
}

// Throws away what still comes: a socket that is closed with something unread takes back what it
// has sent.
void Session::Drain() {
  stream_.async_read_some(boost::asio::buffer(drained_),
                          [self = shared_from_this()](error_code error, std::size_t) {
                            if (self->gone_) return;
                            if (error) return self->Gone();
                            self->Drain();
                          });
}

void Session::Gone() {
  Close();
  around_.on_gone(shared_from_this());
}

void Session::Close() {
  gone_ = true;
  if (web_socket_ != nullptr) return web_socket_->Close();
  stream_.close();
}

}  // namespace

std::shared_ptr<HttpSession> HttpSession::Start(tcp::socket socket, const Around& around) {
  const auto session = std::make_shared<Session>(std::move(socket), around);
  session->Read();
  return session;
}

}  // namespace desk
