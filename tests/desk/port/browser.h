// A browser of the page, in plain sockets: requests and their answers, and a WebSocket's frames.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tests/desk/port/client.h"

namespace desk {

struct HttpAnswer {
  int status = 0;  // 0: none came
  std::map<std::string, std::string> fields{};
  std::string text{};
};

// Reads an answer; of one to HEAD the text stays away.
inline HttpAnswer ReadAnswer(Client& client, bool head = false) {
  HttpAnswer answer;
  const std::optional<std::string> first = client.Line();
  if (!first) return answer;
  answer.status = std::stoi(first->substr(first->find(' ') + 1));
  for (std::optional<std::string> line = client.Line(); line && *line != "\r";
       line = client.Line()) {
    const std::size_t colon = line->find(':');
    answer.fields[line->substr(0, colon)] = line->substr(colon + 2, line->size() - colon - 3);
  }
  const auto length = answer.fields.find("Content-Length");
  if (!head && length != answer.fields.end()) {
    answer.text = client.Bytes(std::stoul(length->second)).value_or("it was cut off");
  }
  return answer;
}

// A request for a file as browsers make it; `fields` with the ends of their lines.
inline std::string Request(std::string_view target, std::uint16_t port,
                           std::string_view fields = "") {
  return "GET " + std::string(target) + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
         "\r\n" + std::string(fields) + "\r\n";
}

inline std::string SocketFields(std::string_view origin) {
  return "Origin: " + std::string(origin) +
         "\r\nUpgrade: websocket\r\nConnection: keep-alive, Upgrade\r\n"
         "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";
}

class Socket {
 public:
  struct Frame {
    unsigned kind = 0;
    std::string bytes{};
    bool operator==(const Frame&) const = default;
  };
  static constexpr unsigned kText = 1;
  static constexpr unsigned kBytes = 2;
  static constexpr unsigned kClose = 8;
  static constexpr unsigned kPing = 9;
  static constexpr unsigned kPong = 10;

  Socket(std::uint16_t port, std::string_view target, Client::Room room = Client::Room::kUsual)
      : client_(port, room) {
    client_.Send(Request(target, port, SocketFields("http://127.0.0.1:" + std::to_string(port))));
    status_ = ReadAnswer(client_).status;
  }
  int Status() const { return status_; }
  Client& Raw() { return client_; }

  bool Send(std::string_view bytes, unsigned kind = kText) const {
    return client_.Send(Masked(bytes, kind));
  }
  static std::string Masked(std::string_view bytes, unsigned kind) {
    constexpr std::string_view kMask = "\x12\x34\x56\x78";
    std::string frame{static_cast<char>(0x80 | kind)};
    const unsigned size_bytes = bytes.size() < 126 ? 0 : bytes.size() < 65536 ? 2 : 8;
    frame += static_cast<char>(
        0x80 | (size_bytes == 0 ? bytes.size() : std::size_t{size_bytes == 2 ? 126u : 127u}));
    for (unsigned i = size_bytes; i-- > 0;) frame += static_cast<char>(bytes.size() >> (8 * i));
    frame += kMask;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      frame += static_cast<char>(bytes[i] ^ kMask[i % kMask.size()]);
    }
    return frame;
  }

  // The next frame, none at the end of the connection.
  std::optional<Frame> Next() {
    const auto begin = client_.Bytes(2);
    if (!begin) return std::nullopt;
    const auto number = [](std::string_view bytes) {
      std::size_t value = 0;
      for (const char byte : bytes) value = value << 8 | static_cast<std::uint8_t>(byte);
      return value;
    };
    std::size_t size = static_cast<std::uint8_t>((*begin)[1]);
    if (size >= 126) {
      const auto longer = client_.Bytes(size == 126 ? 2 : 8);
      if (!longer) return std::nullopt;
      size = number(*longer);
    }
    const auto bytes = client_.Bytes(size);
    if (!bytes) return std::nullopt;
    return Frame{static_cast<unsigned>((*begin)[0] & 0xF), *bytes};
  }
  // The next JSON line among the text messages, null at the end.
  nlohmann::json Json() {
    while (lines_.find('\n') == std::string::npos) {
      const std::optional<Frame> frame = Next();
      if (frame && frame->kind == kPing) {
        Send(frame->bytes, kPong);
        continue;
      }
      if (!frame || frame->kind != kText) return {};
      lines_ += frame->bytes;
    }
    const std::size_t end = lines_.find('\n');
    nlohmann::json json = nlohmann::json::parse(lines_.substr(0, end));
    lines_.erase(0, end + 1);
    return json;
  }

 private:
  Client client_;
  int status_ = 0;
  std::string lines_;
};

}  // namespace desk
