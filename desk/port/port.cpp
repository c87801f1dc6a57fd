#include "desk/port/port.h"

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "desk/port/connection.h"
#include "desk/port/event_feed.h"
#include "desk/port/json_lines.h"
#include "sim/world.h"

namespace desk {
namespace {

using asio::ip::tcp;

asio::ip::address_v4 Here() { return asio::ip::address_v4::loopback(); }

// A port that another listens on is taken, whatever the system would share.
void Listen(tcp::acceptor& acceptor, std::uint16_t port) {
  try {
    acceptor.open(tcp::v4());
#ifdef _WIN32
    acceptor.set_option(
        asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>(true));
#else
    acceptor.set_option(tcp::acceptor::reuse_address(true));
#endif
    acceptor.bind({Here(), port});
    acceptor.listen();
  } catch (const std::system_error& error) {
    const bool taken = error.code() == asio::error::address_in_use;
    throw std::runtime_error("control port " + std::to_string(port) +
                             " on 127.0.0.1: " + (taken ? "it is taken" : error.code().message()));
  }
}

}  // namespace

struct Port::Impl : sim::TraceListener {
  Impl(const PortSettings& settings, Run run);
  ~Impl() override;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void Accept();
  void OnAccept(tcp::socket socket);
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  void Tell(const std::string& rest);
  void Wake();

  asio::io_context io;
  asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
  tcp::acceptor acceptor{io};
  asio::steady_timer pause{io};
  EventFeed events;
  EventFeed all_events;
  EventLines event_lines;
  std::atomic<bool> told{false};  // the sockets' thread, that there are events
  Connection::Around around;
  std::vector<std::shared_ptr<Connection>> connections;
  std::thread sockets;
};

Port::Impl::Impl(const PortSettings& settings, Run run)
    : events(settings.limits.kept_bytes),
      all_events(settings.limits.kept_bytes),
      around{std::move(run), settings.limits, events, all_events,
             [this](const std::shared_ptr<Connection>& gone) { std::erase(connections, gone); }} {
  if (settings.control) {
    Listen(acceptor, *settings.control);
    Accept();
  }
  sockets = std::thread([this] { io.run(); });
}

Port::Impl::~Impl() {
  asio::post(io, [this] {
    acceptor.close();
    pause.cancel();
    for (const auto& connection : connections) connection->Close();
    work.reset();
  });
  sockets.join();
  for (const auto& connection : connections) connection->Join();
}

void Port::Impl::Accept() {
  acceptor.async_accept([this](std::error_code error, tcp::socket socket) {
    if (!acceptor.is_open()) return;
    if (!error) {
      OnAccept(std::move(socket));
      return Accept();
    }
    // Such as no more files: it may pass.
    constexpr std::chrono::milliseconds kPause{100};
    pause.expires_after(kPause);
    pause.async_wait([this](std::error_code ended) {
      if (!ended) Accept();
    });
  });
}

void Port::Impl::OnAccept(tcp::socket socket) {
  std::error_code error;
  const tcp::endpoint peer = socket.remote_endpoint(error);
  if (error || peer.address() != Here()) return;
  if (connections.size() >= around.limits.connections) {
    const std::string why = ErrorLine(std::to_string(around.limits.connections) +
                                      " connections are open, and there are no more");
    socket.non_blocking(true, error);
    socket.write_some(asio::buffer(why), error);
    return;
  }
  socket.set_option(tcp::no_delay(true), error);
  connections.push_back(std::make_shared<Connection>(std::move(socket), around));
  connections.back()->Start();
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
    const auto open = connections;
    for (const auto& connection : open) connection->Attend();
  });
}

Port::Port(const PortSettings& settings, Run run)
    : impl_(std::make_unique<Impl>(settings, std::move(run))) {}
Port::~Port() = default;

std::uint16_t Port::Number() const {
  return impl_->acceptor.is_open() ? impl_->acceptor.local_endpoint().port() : std::uint16_t{0};
}

std::uint16_t Port::PageNumber() const { return 0; }

sim::TraceListener& Port::Events() { return *impl_; }

void Port::Tell(Tells what, std::uint32_t t, std::uint64_t cycle, const std::string& text) {
  impl_->Tell(ToldRest(what, t, cycle, text));
}

bool Port::WantsMoment() const { return false; }

void Port::Show(Moment) {}

}  // namespace desk
