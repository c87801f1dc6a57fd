// Reads a picture as a browser does.
#pragma once

#include <gtest/gtest.h>

#include <boost/beast/zlib/inflate_stream.hpp>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "sim/screen/screen.h"

namespace desk {

struct ReadPicture {
  nlohmann::json header;
  std::string registers;
  sim::Image image;
};

inline ReadPicture ReadMessage(std::string_view message) {
  namespace zlib = boost::beast::zlib;
  constexpr std::size_t kRegisters = 4 * 3 * 256;
  ReadPicture picture;
  std::size_t length = 0;
  for (unsigned i = 0; i < 4; ++i) {
    length |= std::size_t{static_cast<std::uint8_t>(message[i])} << (8 * i);
  }
  picture.header = nlohmann::json::parse(message.substr(4, length));
  picture.registers = message.substr(4 + length, kRegisters);
  message.remove_prefix(4 + length + kRegisters);
  picture.image = sim::FilledImage(picture.header["width"], picture.header["height"], {1, 2, 3});
  zlib::inflate_stream inflate;
  zlib::z_params params;
  params.next_in = message.data();
  params.avail_in = message.size();
  params.next_out = picture.image.pixels.data();
  params.avail_out = 3 * picture.image.pixels.size();
  boost::system::error_code error;
  inflate.write(params, zlib::Flush::finish, error);
  EXPECT_EQ(error, zlib::error::end_of_stream);
  EXPECT_EQ(params.avail_in, 0u);
  EXPECT_EQ(params.avail_out, 0u);
  return picture;
}

}  // namespace desk
