#include "desk/port/listener.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace desk {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace {

// A port that another listens on is taken, whatever the system would share.
void Listen(tcp::acceptor& acceptor, const tcp::endpoint& at) {
  acceptor.open(at.protocol());
#ifdef _WIN32
  acceptor.set_option(asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>(true));
#else
  acceptor.set_option(tcp::acceptor::reuse_address(true));
#endif
  acceptor.bind(at);
  acceptor.listen();
}

}  // namespace

Listener::Listener(asio::io_context& io, const std::string& what, const std::string& address,
                   std::uint16_t port, OnSocket on_socket)
    : acceptor_(io), pause_(io), on_socket_(std::move(on_socket)) {
  const std::string who = what + ' ' + std::to_string(port) + " on " + address + ": ";
  error_code no_address;
  const asio::ip::address at = asio::ip::make_address(address, no_address);
  if (no_address) throw std::runtime_error(who + "expected an address of numbers");
  try {
    Listen(acceptor_, {at, port});
    number_ = acceptor_.local_endpoint().port();
  } catch (const boost::system::system_error& error) {
    const bool taken = error.code() == asio::error::address_in_use;
    throw std::runtime_error(who + (taken ? "it is taken" : error.code().message()));
  }
  Accept();
}

void Listener::Accept() {
  acceptor_.async_accept([this](error_code error, tcp::socket socket) {
    if (!acceptor_.is_open()) return;
    if (!error) {
      on_socket_(std::move(socket));
      return Accept();
    }
    // Such as no more files: it may pass.
    constexpr std::chrono::milliseconds kPause{100};
    pause_.expires_after(kPause);
    pause_.async_wait([this](error_code ended) {
      if (!ended) Accept();
    });
  });
}

void Listener::Close() {
  error_code ignored;
  acceptor_.close(ignored);
  pause_.cancel();
}

}  // namespace desk
