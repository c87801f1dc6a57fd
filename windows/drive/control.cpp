#include "control.h"

#include <array>
#include <nlohmann/json.hpp>

#include "require.h"

namespace drive {
namespace {

void UseSockets() {
  static const bool used = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }();
  Require(used, "there are no sockets");
}

sockaddr_in Here(std::uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

SOCKET Connect(std::uint16_t port) {
  const sockaddr_in address = Here(port);
  const SOCKET made = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  if (connect(made, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
    return made;
  }
  closesocket(made);
  return INVALID_SOCKET;
}

void Send(SOCKET to, const std::string& line) {
  const std::string bytes = line + "\n";
  Require(
      send(to, bytes.data(), static_cast<int>(bytes.size()), 0) == static_cast<int>(bytes.size()),
      "the control port takes no line");
}

}  // namespace

Control::Control(std::uint16_t port) {
  UseSockets();
  socket_ = Connect(port);
  Require(socket_ != INVALID_SOCKET, "nobody listens at port " + std::to_string(port));
  DWORD limit_ms = 60'000;
  setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&limit_ms),
             sizeof(limit_ms));
  Send(socket_, "vexo 1 events");
  const std::string greeting = ReadLine();
  Require(greeting.starts_with("{\"vexo\":1,"), "the control port greets: " + greeting);
}

Control::~Control() { closesocket(socket_); }

std::string Control::ReadLine() {
  for (;;) {
    const std::size_t end = read_.find('\n');
    if (end != std::string::npos) {
      std::string line = read_.substr(0, end);
      read_.erase(0, end + 1);
      return line;
    }
    std::array<char, 65536> part;
    const int bytes = recv(socket_, part.data(), static_cast<int>(part.size()), 0);
    if (bytes == 0) throw ConnectionLost("the control port ends the connection");
    if (bytes < 0) {
      throw ConnectionLost("the control port is silent: error " +
                           std::to_string(WSAGetLastError()));
    }
    read_.append(part.data(), static_cast<std::size_t>(bytes));
  }
}

std::string Control::Run(const std::string& line) {
  Send(socket_, line);
  for (;;) {
    const nlohmann::json json = nlohmann::json::parse(ReadLine());
    if (json.contains("t")) last_event_ms_ = json["t"].get<std::uint64_t>();
    Require(!json.contains("error"), "the control port: " + json.dump());
    if (!json.contains("answer")) continue;
    Require(json["result"] == "done", "'" + line + "': " + json.dump());
    return json["text"].get<std::string>();
  }
}

// The events of a line come before its answer; this one is a call that changes nothing.
std::uint64_t Control::Now() {
  Run("output 1");
  return last_event_ms_;
}

}  // namespace drive
