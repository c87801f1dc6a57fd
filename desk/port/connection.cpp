#include "desk/port/connection.h"

#include <boost/asio/post.hpp>
#include <boost/system/error_code.hpp>
#include <exception>
#include <utility>

#include "desk/port/json_lines.h"

namespace desk {

namespace asio = boost::asio;

namespace {

Answer RunOrRefuse(const Port::Run& run, const std::string& line) {
  try {
    return run(line);
  } catch (const std::exception& error) {
    return {Answer::Result::Refused, error.what()};
  } catch (...) {
    return {Answer::Result::Refused, "the line was ended from outside"};
  }
}

}  // namespace

Connection::Connection(std::shared_ptr<Transport> transport, const Around& around)
    : around_(around), transport_(std::move(transport)), timer_(transport_->Executor()) {}

void Connection::Start() {
  CloseAfter(around_.limits.greeting);
  Read();
}

// ---- What comes in ------------------------------------------------------------------------------

void Connection::Read() {
  if (reading_ || closed_) return;
  reading_ = true;
  transport_->Read([self = shared_from_this()](Transport::Comes what, std::string_view bytes) {
    self->OnRead(what, bytes);
  });
}

void Connection::OnRead(Transport::Comes what, std::string_view bytes) {
  reading_ = false;
  if (closed_) return;
  if (what == Transport::Comes::End) {
    if (no_more_) return Close();
    no_more_ = true;  // what came before it is answered
    return Attend();
  }
  if (what == Transport::Comes::Broken) return Close();
  if (no_more_) return Read();  // to be thrown away
  conversation_.Take(bytes);
  Attend();
}

void Connection::Attend() {
  if (closed_) return;
  TakeSteps();
  Send();
  TakeSteps();  // what is on its way has made room
}

void Connection::TakeSteps() {
  while (!closed_ && !no_more_ && HasRoom()) {
    std::optional<Conversation::Step> step = conversation_.Next();
    if (!step) return Read();
    Take(std::move(*step));
  }
}

void Connection::Take(Conversation::Step step) {
  using Kind = Conversation::Step::Kind;
  switch (step.kind) {
    case Kind::Greeting:
      return Greet(step.wants);
    case Kind::Line:
    case Kind::NoLine: {
      const std::lock_guard lock(mutex_);
      lines_.push_back({step.number, std::move(step.line), std::move(step.why)});
      more_.notify_one();
      return;
    }
    case Kind::Over:
      no_more_ = true;
      goodbye_ = ErrorLine(step.why);
      return;
  }
}

void Connection::Greet(Wants wants) {
  timer_.cancel();
  EventFeed& feed = wants == Wants::AllEvents ? around_.all_events : around_.events;
  if (wants == Wants::Nothing) {
    next_event_ = feed.End();
  } else {
    feed_ = &feed;
    next_event_ = feed.Watch();
  }
  AddAnswer(GreetingLine(wants, next_event_), next_event_);
  runner_ = std::thread([this] {
    RunLines();
    Post(&Connection::ReportGone);
  });
}

// ---- Lines --------------------------------------------------------------------------------------

bool Connection::HasRoom() {
  const std::lock_guard lock(mutex_);
  return lines_.size() + answered_.size() < kMostLines;
}

void Connection::RunLines() {
  for (;;) {
    Line line;
    {
      std::unique_lock lock(mutex_);
      more_.wait(lock, [this] { return ended_ || !lines_.empty(); });
      if (ended_) break;
      line = std::move(lines_.front());
      lines_.pop_front();
      running_ = true;
    }
    const Answer answer = line.why.empty() ? RunOrRefuse(around_.run, line.text)
                                           : Answer{Answer::Result::Refused, line.why};
    AddAnswer(AnswerLine(line.number, line.text, answer), feed_ == nullptr ? 0 : feed_->End());
    Post(&Connection::Attend);
  }
}

// From the thread of the lines, for which the end of the port waits: there may be nobody left.
void Connection::Post(void (Connection::*step)()) {
  asio::post(transport_->Executor(), [weak = weak_from_this(), step] {
    if (const std::shared_ptr<Connection> self = weak.lock()) (self.get()->*step)();
  });
}

void Connection::AddAnswer(std::string text, std::uint64_t after) {
  const std::lock_guard lock(mutex_);
  running_ = false;
  answered_.push_back({std::move(text), after});
}

// ---- What goes out ------------------------------------------------------------------------------

void Connection::Send() {
  if (writing_ || closed_) return;
  Gather();
  if (written_.empty()) {
    if (no_more_ && AllSaid()) SayGoodbye();
    return;
  }
  writing_ = true;
  transport_->Write(written_, [self = shared_from_this()](bool all) {
    self->writing_ = false;
    if (!all) return self->Close();
    self->Attend();
  });
}

// Answers, and before each the events that its line brought.
void Connection::Gather() {
  written_.clear();
  const std::lock_guard lock(mutex_);
  for (bool again = true; again;) {
    again = !answered_.empty();
    if (feed_ != nullptr) {
      feed_->Take(next_event_, again ? answered_.front().after : EventFeed::kAll, written_, kSent);
    }
    if (written_.size() >= kSent) return;
    if (again) {
      written_ += answered_.front().text;
      answered_.pop_front();
    }
  }
}

// ---- The end ------------------------------------------------------------------------------------

bool Connection::AllSaid() {
  const std::lock_guard lock(mutex_);
  return lines_.empty() && answered_.empty() && !running_;
}

void Connection::SayGoodbye() {
  if (!goodbye_) return Close();
  // What still comes is read and thrown away for a while: a socket that is closed with something
  // unread takes back what it has sent.
  CloseAfter(around_.limits.goodbye);
  written_ = *goodbye_;
  writing_ = true;  // and nothing after it
  transport_->Write(written_, [self = shared_from_this()](bool all) {
    if (self->closed_) return;
    if (!all) return self->Close();
    self->transport_->EndSending();
    self->Read();
  });
}

void Connection::CloseAfter(std::chrono::milliseconds time) {
  timer_.expires_after(time);
  timer_.async_wait([self = weak_from_this()](boost::system::error_code error) {
    if (const auto alive = self.lock(); alive && !error) alive->Close();
  });
}

void Connection::Close() {
  if (closed_) return;
  closed_ = true;
  {
    // Before the other side hears of it: no line runs behind a closed connection.
    const std::lock_guard lock(mutex_);
    ended_ = true;
    more_.notify_one();
  }
  timer_.cancel();
  transport_->Close();
  if (feed_ != nullptr) feed_->Unwatch();
  if (!runner_.joinable()) {
    asio::post(transport_->Executor(), [self = shared_from_this()] { self->ReportGone(); });
  }
}

void Connection::ReportGone() {
  Join();
  around_.on_gone(shared_from_this());
}

void Connection::Join() {
  if (runner_.joinable()) runner_.join();
}

}  // namespace desk
