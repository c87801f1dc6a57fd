// A peer of the control port, in plain sockets.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace desk {

inline constexpr std::chrono::seconds kPatience{30};  // of whoever waits for what should come soon

class Client {
 public:
  // How much the system keeps of what is not read yet. It is told before the peer hears of it:
  // bytes that were promised more room would be dropped, and come again after ever longer times.
  enum class Room { kUsual, kLittle };

  explicit Client(std::uint16_t port, const char* from = "127.0.0.1", const char* to = "127.0.0.1",
                  Room room = Room::kUsual) {
    socket_ = socket(AF_INET, SOCK_STREAM, 0);
    if (room == Room::kLittle) {
      const int bytes = 4096;
      setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof(bytes));
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    inet_pton(AF_INET, from, &address.sin_addr);
    EXPECT_EQ(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    address.sin_port = htons(port);
    inet_pton(AF_INET, to, &address.sin_addr);
    EXPECT_EQ(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
  }
  Client(std::uint16_t port, Room room) : Client(port, "127.0.0.1", "127.0.0.1", room) {}
  ~Client() { Close(); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // False when the peer does not take it all.
  bool Send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  // As much as the peer takes without waiting.
  std::size_t SendSome(std::string_view bytes) const {
    const ssize_t sent = send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    return sent < 0 ? 0 : static_cast<std::size_t>(sent);
  }
  // Whether the peer makes room for more within a while.
  bool CanSend() const {
    constexpr int kWhile = 300;  // ms
    pollfd waiting{socket_, POLLOUT, 0};
    return poll(&waiting, 1, kWhile) > 0;
  }
  // The next line without its end, none at the end of the connection.
  std::optional<std::string> Line() {
    for (;;) {
      if (const std::size_t end = bytes_.find('\n', at_); end != std::string::npos) {
        std::string line = bytes_.substr(at_, end - at_);
        at_ = end + 1;
        return line;
      }
      if (!Receive()) return std::nullopt;
    }
  }
  // So many bytes, none when the connection ends before.
  std::optional<std::string> Bytes(std::size_t count) {
    while (bytes_.size() - at_ < count) {
      if (!Receive()) return std::nullopt;
    }
    at_ += count;
    return bytes_.substr(at_ - count, count);
  }
  nlohmann::json Json() {
    const std::optional<std::string> line = Line();
    return line ? nlohmann::json::parse(*line) : nlohmann::json();
  }
  std::vector<std::string> AllLines() {
    std::vector<std::string> lines;
    while (std::optional<std::string> line = Line()) lines.push_back(std::move(*line));
    return lines;
  }

  void EndSending() const { shutdown(socket_, SHUT_WR); }
  void Close() {
    if (socket_ >= 0) close(socket_);
    socket_ = -1;
  }
  void Reset() {
    const linger now{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof(now));
    Close();
  }

 private:
  // More bytes; false at the end of the connection.
  bool Receive() {
    bytes_.erase(0, at_);
    at_ = 0;
    pollfd waiting{socket_, POLLIN, 0};
    const int patience = static_cast<int>(std::chrono::milliseconds(kPatience).count());
    if (poll(&waiting, 1, patience) <= 0) {
      ADD_FAILURE() << "nothing came";
      return false;
    }
    char part[65536];
    const ssize_t got = recv(socket_, part, sizeof(part), 0);
    if (got <= 0) return false;
    bytes_.append(part, static_cast<std::size_t>(got));
    return true;
  }

  int socket_;
  std::string bytes_;
  std::size_t at_ = 0;
};

}  // namespace desk
