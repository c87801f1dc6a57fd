#include "desk/port/port.h"

#include <atomic>
#include <boost/asio/buffer.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "desk/port/connection.h"
#include "desk/port/event_feed.h"
#include "desk/port/json_lines.h"
#include "desk/port/listener.h"
#include "desk/port/page_server.h"
#include "desk/port/tcp_transport.h"
#include "sim/world.h"

namespace desk {

namespace asio = boost::asio;
using asio::ip::tcp;

struct Port::Impl : sim::TraceListener {
  Impl(const PortSettings& settings, Run run);
  ~Impl() override;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void OnSocket(tcp::socket socket);
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  void Tell(const std::string& rest);
  void Wake();

  using Connections = std::vector<std::shared_ptr<Connection>>;
  void Begin(Connections& list, std::shared_ptr<Transport> transport);
  template <typename Do>
  void ForAll(const Do& act) {
    for (const Connections& list : {connections, page_connections}) {
      for (const auto& connection : list) act(*connection);
    }
  }

  asio::io_context io;
  asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
  EventFeed events;
  EventFeed all_events;
  EventLines event_lines;
  std::atomic<bool> told{false};  // the sockets' thread, that there are events
  Connection::Around around;
  Connections connections;
  Connections page_connections;
  std::optional<Listener> control;
  std::optional<PageServer> page;
  std::thread sockets;
};

Port::Impl::Impl(const PortSettings& settings, Run run)
    : events(settings.limits.kept_bytes),
      all_events(settings.limits.kept_bytes),
      around{std::move(run), settings.limits, events, all_events,
             [this](const std::shared_ptr<Connection>& gone) {
               std::erase(connections, gone);
               std::erase(page_connections, gone);
             }} {
  if (settings.control) {
    control.emplace(io, "control port", "127.0.0.1", *settings.control,
                    [this](tcp::socket socket) { OnSocket(std::move(socket)); });
  }
  if (settings.page) {
    page.emplace(
        io, *settings.page, settings.limits,
        PageServer::Lines{[this] { return page_connections.size() < around.limits.watchers; },
                          [this](std::shared_ptr<Transport> socket) {
                            Begin(page_connections, std::move(socket));
                          }});
  }
  sockets = std::thread([this] { io.run(); });
}

Port::Impl::~Impl() {
  asio::post(io, [this] {
    if (control) control->Close();
    if (page) page->Close();
    ForAll([](Connection& connection) { connection.Close(); });
    work.reset();
  });
  sockets.join();
  ForAll([](Connection& connection) { connection.Join(); });
}

void Port::Impl::OnSocket(tcp::socket socket) {
  boost::system::error_code error;
  const tcp::endpoint peer = socket.remote_endpoint(error);
  if (error || peer.address() != asio::ip::address_v4::loopback()) return;
  if (connections.size() >= around.limits.connections) {
    const std::string why = ErrorLine(std::to_string(around.limits.connections) +
                                      " connections are open, and there are no more");
    socket.non_blocking(true, error);
    socket.write_some(asio::buffer(why), error);
    return;
  }
  socket.set_option(tcp::no_delay(true), error);
  Begin(connections, std::make_shared<TcpTransport>(std::move(socket)));
}

void Port::Impl::Begin(Connections& list, std::shared_ptr<Transport> transport) {
  list.push_back(std::make_shared<Connection>(std::move(transport), around));
  list.back()->Start();
}

void Port::Impl::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  const bool all = all_events.Count();
  const bool some = detail != nullptr && events.Count();
  if (!all && !some) return;
  const std::uint64_t cycles = sim::TheWorld().trace.Cycles();
  const std::string rest = event_lines.Rest(event, detail, detail == nullptr ? cycles - 1 : cycles);
  if (all) all_events.Add(rest);
  if (some) events.Add(rest);
  Wake();
}

void Port::Impl::Tell(const std::string& rest) {
  if (all_events.Count()) all_events.Add(rest);
  if (events.Count()) events.Add(rest);
  Wake();
}

void Port::Impl::Wake() {
  if (told.exchange(true)) return;
  asio::post(io, [this] {
    told = false;
    ForAll([](Connection& connection) { connection.Attend(); });
  });
}

Port::Port(const PortSettings& settings, Run run)
    : impl_(std::make_unique<Impl>(settings, std::move(run))) {}
Port::~Port() = default;

std::uint16_t Port::Number() const {
  return impl_->control ? impl_->control->Number() : std::uint16_t{0};
}

std::uint16_t Port::PageNumber() const {
  return impl_->page ? impl_->page->Number() : std::uint16_t{0};
}

sim::TraceListener& Port::Events() { return *impl_; }

void Port::Tell(Tells what, std::uint32_t t, std::uint64_t cycle, const std::string& text) {
  impl_->Tell(ToldRest(what, t, cycle, text));
}

bool Port::WantsMoment() const { return impl_->page && impl_->page->Pictures().WantsMoment(); }

void Port::Show(Moment moment) {
  if (impl_->page) impl_->page->Pictures().Show(std::move(moment));
}

}  // namespace desk
