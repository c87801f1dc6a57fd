#include "device/check/player.h"

#include "VexoCtrlSDK.h"
#include "device/check/log_line.h"

namespace check {
namespace {

constexpr unsigned kVersionUnits = 64;  // the library needs 20
constexpr std::uint8_t kChipSelect[] = {VEXO_CHIP_MASTER, VEXO_CHIP_SLAVE1, VEXO_CHIP_SLAVE2,
                                        VEXO_CHIP_SLAVE3};

// The line's end, or the plan's, where its last line has none.
const char* EndOfLine(const char* at, const char* end) {
  while (at != end && *at != '\n') ++at;
  return at;
}

bool SameText(const char* one, const char* other) {
  while (*one != 0 && *one == *other) {
    ++one;
    ++other;
  }
  return *one == *other;
}

void CopyBytes(std::uint8_t* to, const std::uint8_t* from, unsigned bytes) {
  for (unsigned i = 0; i < bytes; ++i) to[i] = from[i];
}

}  // namespace

std::uint32_t Checksum(const char* text, unsigned bytes) {
  std::uint32_t sum = 0x811C9DC5;
  for (unsigned i = 0; i < bytes; ++i) {
    sum = (sum ^ static_cast<unsigned char>(text[i])) * 0x01000193;
  }
  return sum;
}

bool Player::Play(const char* text, unsigned bytes) {
  if (!Check(text, bytes)) return false;
  const char* const end = text + bytes;
  PlanLine line;
  number_ = 0;
  for (const char* at = text; at != end;) {
    const char* const line_end = EndOfLine(at, end);
    ++number_;
    ReadPlanLine(at, line_end, line);
    Do(line);
    at = line_end == end ? end : line_end + 1;
  }
  EndAction();
  return true;
}

bool Player::Check(const char* text, unsigned bytes) {
  const char* const end = text + bytes;
  PlanOrder order;
  PlanLine line;
  unsigned lines = 0;
  const char* wrong = bytes > kMostPlan ? "expected a plan of 1 MiB at most" : nullptr;
  for (const char* at = text; at != end && wrong == nullptr;) {
    const char* const line_end = EndOfLine(at, end);
    ++lines;
    wrong = ReadPlanLine(at, line_end, line);
    if (wrong == nullptr) wrong = order.Next(line);
    if (wrong == nullptr && lines > kMostLines) wrong = "expected 100,000 lines at most";
    at = line_end == end ? end : line_end + 1;
  }
  if (wrong == nullptr) {
    wrong = order.AtEnd();
    if (wrong != nullptr) ++lines;
  }
  if (wrong != nullptr) {
    LogLine(system_, lines, "wrong").Text(wrong).Write();
    return false;
  }
  LogLine(system_, 0, "plan").Number(lines).Hex(Checksum(text, bytes)).Write();
  return true;
}

void Player::OnMessage(const Message& message) {
  if (reading_ && message.number == VEXO_MSG_REG_VALUE) return;
  const std::uint64_t begin = system_.Microseconds();
  LogLine line(system_, action_line_, "message");
  line.Hex(message.number).Hex(message.wparam).Hex(message.lparam);
  if (message.record != nullptr) line.Bytes(message.record, message.record_bytes);
  line.Write();
  logging_us_ += system_.Microseconds() - begin;
  if (message.number == VEXO_MSG_MOTION_STATUS) return;
  if (received_count_ == kMostReceived) {
    lost_ = true;
    return;
  }
  Received& received = received_[received_count_++];
  received = {message.number, message.wparam, message.lparam, message.record_bytes, {}};
  if (message.record == nullptr) return;
  if (received.record_bytes > sizeof received.record)
    received.record_bytes = sizeof received.record;
  CopyBytes(received.record, message.record, received.record_bytes);
}

void Player::Do(const PlanLine& line) {
  if (IsExpectation(line.kind)) return Expect(line);
  if (!IsAction(line.kind)) return;
  EndAction();
  action_line_ = number_;
  any_messages_ = false;
  called_ = CanDo(line);
  if (called_) Call(line);
}

bool Player::CanDo(const PlanLine& line) {
  using Export = System::Export;
  switch (line.kind) {
    case LineKind::Load:
      return !loaded_;
    case LineKind::Wait:
      return true;
    case LineKind::Unload:
      return loaded_;
    case LineKind::Initialize:
      return loaded_ && system_.Has(Export::Initialize);
    case LineKind::Uninitialize:
      return loaded_ && system_.Has(Export::Uninitialize);
    case LineKind::Debug:
      return loaded_ && system_.Has(Export::Debug);
    case LineKind::Output:
      return loaded_ && system_.Has(Export::Output);
    case LineKind::Version:
      return loaded_ && system_.Has(Export::Version);
    case LineKind::Command:
      return loaded_ && system_.Has(Export::Command);
    case LineKind::Motion:
      return loaded_ && system_.Has(Export::Motion);
    default:
      return loaded_ && system_.Has(Export::Text);
  }
}

void Player::Call(const PlanLine& line) {
  for (std::uint8_t& byte : record_) byte = 0;
  CopyBytes(record_, line.bytes, line.byte_count);
  LogLine(system_, action_line_, "called").Write();
  logging_us_ = 0;
  has_result_ = true;
  std::uint32_t error = 0;
  const std::uint64_t begin = system_.Microseconds();
  switch (line.kind) {
    case LineKind::Load:
      error = system_.Load();
      loaded_ = error == 0;
      output_ = true;
      result_ = loaded_ ? 1 : 0;
      break;
    case LineKind::Unload:
      system_.Unload();
      loaded_ = false;
      has_result_ = false;
      break;
    case LineKind::Uninitialize:
      system_.Uninitialize();
      has_result_ = false;
      break;
    case LineKind::Debug:
      system_.SetDebug(line.numbers[0]);
      has_result_ = false;
      break;
    case LineKind::Output:
      output_ = line.numbers[0] != 0;
      system_.SetOutput(line.numbers[0]);
      has_result_ = false;
      break;
    case LineKind::Wait:
      system_.Wait(line.numbers[0]);
      has_result_ = false;
      break;
    default:
      result_ = CallWithResult(line);
      break;
  }
  const std::uint64_t took = system_.Microseconds() - begin - logging_us_;
  Tell(line, static_cast<std::uint32_t>(took), error);
}

void Player::Tell(const PlanLine& line, std::uint32_t took_us, std::uint32_t error) {
  LogLine returned(system_, action_line_, "returned");
  if (has_result_) returned.Signed(result_);
  returned.Write();
  LogLine(system_, action_line_, "took").Number(took_us).Write();
  if (error != 0) LogLine(system_, action_line_, "error").Number(error).Write();
  if (line.byte_count != 0) {
    const unsigned bytes = line.kind == LineKind::Motion ? kMotionBytes : kRecordBytes;
    LogLine(system_, action_line_, "record").Bytes(record_, bytes).Write();
  }
  if (line.kind == LineKind::Version && !line.no) {
    LogLine(system_, action_line_, "answer").Text(answer_).Write();
  }
}

std::int32_t Player::CallWithResult(const PlanLine& line) {
  switch (line.kind) {
    case LineKind::Initialize:
      return system_.Initialize(!line.no);
    case LineKind::Version: {
      Char16 text[kVersionUnits] = {};
      const int length = system_.GetVersion(line.no ? nullptr : text);
      text[kVersionUnits - 1] = 0;
      for (unsigned i = 0; i < kVersionUnits; ++i) {
        answer_[i] = text[i] > '~' ? '?' : static_cast<char>(text[i]);
      }
      return length;
    }
    case LineKind::Command:
      return system_.Command(line.numbers[0], line.no ? nullptr : record_);
    case LineKind::Motion:
      return system_.SetMotion(static_cast<std::uint8_t>(line.numbers[0]),
                               static_cast<std::uint8_t>(line.numbers[1]), record_);
    default:
      return system_.Text(line.text);
  }
}

// All that is expected of it has been looked at.
void Player::EndAction() {
  if (output_off_) {
    output_off_ = false;
    if (output_) system_.SetOutput(1);
  }
  if (action_line_ == 0) return;
  if (!any_messages_) {
    for (; matched_ < received_count_; ++matched_) Judge(false);
    if (lost_) Judge(false);
  }
  action_line_ = 0;
  matched_ = 0;
  received_count_ = 0;
  lost_ = false;
}

// ---- Expectations -------------------------------------------------------------------------------

void Player::Expect(const PlanLine& line) {
  if (line.kind == LineKind::Cycles || line.kind == LineKind::Prints) return;
  if (line.kind == LineKind::Messages) {
    any_messages_ = true;
    return;
  }
  if (!called_) return Judge(false);
  switch (line.kind) {
    case LineKind::Result:
      return Judge(has_result_ && result_ == static_cast<std::int32_t>(line.numbers[0]));
    case LineKind::Record:
      return Judge(Matches(line, record_, kRecordBytes));
    case LineKind::Answer:
      return Judge(SameText(line.text, answer_));
    case LineKind::Message:
      return ExpectMessage(line);
    default:
      return ReadRegister(line);
  }
}

void Player::ExpectMessage(const PlanLine& line) {
  if (matched_ == received_count_) return Judge(false);
  const Received& received = received_[matched_++];
  Judge(received.number == line.numbers[0] && received.wparam == line.numbers[1] &&
        received.lparam == line.numbers[2] &&
        (line.byte_count != 0) == (received.record_bytes != 0) &&
        Matches(line, received.record, received.record_bytes));
}

// Each would print a line, which takes longer than all the rest where the debug output is a wire.
void Player::ReadRegister(const PlanLine& line) {
  if (!system_.Has(System::Export::Command)) return Judge(false);
  if (!output_off_ && system_.Has(System::Export::Output)) {
    output_off_ = true;
    system_.SetOutput(0);
  }
  // The monitor reads the chips without the lock: where it comes between the cycles of a read, the
  // read goes astray. One that differs is made again.
  constexpr unsigned kMostReads = 3;
  bool as_expected = false;
  for (unsigned i = 0; i < kMostReads && !as_expected; ++i) as_expected = ReadOnce(line);
  Judge(as_expected);
}

bool Player::ReadOnce(const PlanLine& line) {
  VexoRegRecord record = {kChipSelect[line.numbers[0]], static_cast<std::uint8_t>(line.numbers[1]),
                          static_cast<std::uint8_t>(line.numbers[2]), 0};
  reading_ = true;
  const int result = system_.Command(VEXO_CMD_READ_REG, &record);
  reading_ = false;
  if (result != VEXO_OK) {
    LogLine(system_, number_, "unread").Signed(result).Write();
    return false;
  }
  LogLine(system_, number_, "value").Hex(record.value).Write();
  return ((record.value ^ line.numbers[3]) & line.mask[0]) == 0;
}

// Bytes that the plan does not give are 0, and those that a mask does not give count whole.
bool Player::Matches(const PlanLine& line, const std::uint8_t* found, unsigned bytes) const {
  for (unsigned i = 0; i < bytes || i < line.byte_count; ++i) {
    const unsigned wanted = i < line.byte_count ? line.bytes[i] : 0;
    const unsigned byte = i < bytes ? found[i] : 0;
    const unsigned counts = i < line.mask_count ? line.mask[i] : 0xFF;
    if (((wanted ^ byte) & counts) != 0) return false;
  }
  return true;
}

void Player::Judge(bool as_expected) {
  if (as_expected) {
    ++as_expected_;
    return;
  }
  if (different_ == 0) first_different_ = number_;
  ++different_;
}

void Player::Finish(const char* trouble) {
  Words words;
  if (trouble != nullptr) {
    words.Add(trouble);
  } else if (different_ == 0) {
    words.Add("All ").Add(as_expected_).Add(" results are as expected.");
  } else {
    words.Add(as_expected_)
        .Add(" results are as expected, ")
        .Add(different_)
        .Add(" differ; the first difference is seen at line ")
        .Add(first_different_)
        .Add(" of the plan.");
  }
  LogLine(system_, 0, "summary").Text(words.Get()).Write();
  LogLine(system_, 0, "end").Number(as_expected_).Number(different_).Write();
}

}  // namespace check
