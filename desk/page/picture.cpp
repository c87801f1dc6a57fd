#include "desk/page/picture.h"

#include <array>
#include <boost/beast/zlib/deflate_stream.hpp>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "sim/screen/screen.h"

namespace desk {
namespace {

namespace zlib = boost::beast::zlib;
using Json = nlohmann::ordered_json;

Json WindowOf(const sim::ShownWindow& window) {
  constexpr std::array kShows = {"camera", "tape", "nothing", "blank"};
  return {{"channel", window.channel},
          {"chip", window.channel / kChannelsPerChip},
          {"position", window.channel % kChannelsPerChip},
          {"left", window.left},
          {"right", window.right},
          {"top", window.top},
          {"bottom", window.bottom},
          {"front", window.front},
          {"frozen", window.frozen},
          {"shows", kShows[static_cast<std::size_t>(window.shows)]},
          {"picture", window.picture},
          {"signal", window.signal}};
}

std::string HeaderOf(const Moment& moment, std::uint64_t number, const sim::Image& image) {
  Json json = {{"moment", number},
               {"t", moment.time_ms},
               {"cycles", moment.cycles},
               {"lag", moment.lag_ms},
               {"stopped", moment.stopped.empty() ? Json(nullptr) : Json(moment.stopped)},
               {"fitted", Json::array()},
               {"width", image.width},
               {"height", image.height},
               {"pal", image.height == sim::kScreenHeightPal},
               {"windows", Json::array()}};
  for (unsigned chip = 0; chip < kChipsMax; ++chip) {
    json["fitted"].push_back(moment.board.Fitted(chip));
  }
  for (const sim::ShownWindow& window : sim::ShownWindows(moment.board)) {
    json["windows"].push_back(WindowOf(window));
  }
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void AddRegisters(const sim::Board& board, std::string& message) {
  for (unsigned chip = 0; chip < kChipsMax; ++chip) {
    for (std::uint8_t page = 0; page < kPageCount; ++page) {
      for (unsigned number = 0; number < kRegistersPerPage; ++number) {
        message += static_cast<char>(board.Peek(chip, page, static_cast<std::uint8_t>(number)));
      }
    }
  }
}

}  // namespace

struct PictureMaker::Deflate {
  // The bytes, deflated, without a frame around them; until the next call.
  std::string_view operator()(const void* bytes, std::size_t count) {
    constexpr int kFastest = 1;
    constexpr int kWindowBits = 15;
    constexpr int kMemoryLevel = 8;
    stream.reset(kFastest, kWindowBits, kMemoryLevel, zlib::Strategy::normal);
    deflated.resize(stream.upper_bound(count));
    zlib::z_params params;
    params.next_in = bytes;
    params.avail_in = count;
    params.next_out = deflated.data();
    params.avail_out = deflated.size();
    boost::system::error_code error;
    stream.write(params, zlib::Flush::finish, error);
    if (error != zlib::error::end_of_stream) {
      throw std::logic_error("a picture cannot be deflated: " + error.message());
    }
    return std::string_view(deflated).substr(0, params.total_out);
  }

  zlib::deflate_stream stream;
  std::string deflated;
};

PictureMaker::PictureMaker() : deflate_(std::make_unique<Deflate>()) {}
PictureMaker::~PictureMaker() = default;

std::string PictureMaker::Make(const Moment& moment, std::uint64_t number) {
  const sim::Image image = sim::ComposeScreen(moment.board);
  const std::string header = HeaderOf(moment, number, image);
  std::string message;
  for (unsigned i = 0; i < 4; ++i) message += static_cast<char>(header.size() >> (8 * i));
  message += header;
  AddRegisters(moment.board, message);
  static_assert(sizeof(sim::Rgb) == 3);
  message += (*deflate_)(image.pixels.data(), image.pixels.size() * sizeof(sim::Rgb));
  return message;
}

}  // namespace desk
