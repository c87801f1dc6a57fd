#include "desk/port/page_server.h"

#include <boost/asio/buffer.hpp>
#include <string_view>
#include <utility>

#include "desk/page/language.h"

namespace desk {

PageServer::PageServer(boost::asio::io_context& io, const PageSettings& settings,
                       const PortLimits& limits, Lines lines)
    : limits_(limits),
      lines_(std::move(lines)),
      around_{
          .request = limits.greeting,
          .goodbye = limits.goodbye,
          .silence = limits.silence,
          .language = LanguageJson(settings.title, settings.bench),
          .has_room = [this](SocketKind kind) { return HasRoom(kind); },
          .on_socket =
              [this](SocketKind kind, std::shared_ptr<Transport> socket) {
                if (!HasRoom(kind)) return socket->Close();
                if (kind == SocketKind::Control) return lines_.begin(std::move(socket));
                monitor_.Add(std::move(socket));
              },
          .on_gone =
              [this](const std::shared_ptr<HttpSession>& gone) { std::erase(sessions_, gone); }},
      listener_(io, "page", settings.address, settings.port,
                [this](boost::asio::ip::tcp::socket socket) { OnSocket(std::move(socket)); }),
      monitor_(io.get_executor()) {}

void PageServer::OnSocket(boost::asio::ip::tcp::socket socket) {
  boost::system::error_code error;
  if (sessions_.size() >= limits_.sessions) {
    constexpr std::string_view kFull =
        "HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
    socket.non_blocking(true, error);
    socket.write_some(boost::asio::buffer(kFull.data(), kFull.size()), error);
    return;
  }
  socket.set_option(boost::asio::ip::tcp::no_delay(true), error);
  sessions_.push_back(HttpSession::Start(std::move(socket), around_));
}

bool PageServer::HasRoom(SocketKind kind) const {
  return kind == SocketKind::Control ? lines_.have_room() : monitor_.Count() < limits_.watchers;
}

void PageServer::Close() {
  listener_.Close();
  for (const auto& session : sessions_) session->Close();
  sessions_.clear();  // one that becomes a WebSocket has a timer until it is gone
  monitor_.Close();
}

}  // namespace desk
