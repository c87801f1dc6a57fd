#include "desk/port/monitor.h"

#include <boost/asio/post.hpp>

namespace desk {

Monitor::Monitor(boost::asio::any_io_executor executor)
    : executor_(std::move(executor)), painter_([this](Painter::Picture picture) {
        ++drawn_;
        boost::asio::post(executor_, [this, picture = std::move(picture)] { Send(picture); });
      }) {}

void Monitor::Add(std::shared_ptr<Transport> transport) {
  const auto watcher = std::make_shared<Watcher>(Watcher{std::move(transport)});
  watchers_.push_back(watcher);
  ++waiting_;
  Listen(watcher);
}

// A watcher has nothing to say: it is there until it goes.
void Monitor::Listen(const std::shared_ptr<Watcher>& watcher) {
  watcher->transport->Read([this, watcher](Transport::Comes, std::string_view) { Drop(watcher); });
}

void Monitor::Send(const Painter::Picture& picture) {
  for (const auto& watcher : watchers_) {
    if (watcher->sent != nullptr) continue;
    watcher->sent = picture;
    --waiting_;
    watcher->transport->Write(*picture, [this, watcher](bool all) {
      watcher->sent.reset();
      if (watcher->gone) return;
      ++waiting_;
      if (!all) Drop(watcher);
    });
  }
  --drawn_;  // last: now it is known who waits for the next one
}

void Monitor::Drop(const std::shared_ptr<Watcher>& watcher) {
  if (watcher->gone) return;
  watcher->gone = true;
  if (watcher->sent == nullptr) --waiting_;
  std::erase(watchers_, watcher);
  watcher->transport->Close();
}

void Monitor::Close() {
  while (!watchers_.empty()) Drop(watchers_.back());
}

}  // namespace desk
