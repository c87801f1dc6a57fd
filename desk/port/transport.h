// What a conversation goes over: a socket's bytes, or the messages of a WebSocket.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <functional>
#include <string_view>

namespace desk {

// But for Executor, all of it and what it calls back is in the thread of the port's sockets; it
// calls back after the call, never within.
class Transport {
 public:
  enum class Comes : std::uint8_t {
    Bytes,
    End,     // the peer sends no more, and may still read
    Broken,  // it does neither
  };
  using OnRead = std::function<void(Comes what, std::string_view bytes)>;
  using OnWritten = std::function<void(bool all)>;

  virtual ~Transport() = default;
  virtual boost::asio::any_io_executor Executor() = 0;
  // What comes next, once; one at a time.
  virtual void Read(OnRead on_read) = 0;
  // Whole lines, or a picture, which stay until they are written; one at a time.
  virtual void Write(std::string_view bytes, OnWritten on_written) = 0;
  virtual void EndSending() = 0;
  // Who waits is called back.
  virtual void Close() = 0;
};

}  // namespace desk
