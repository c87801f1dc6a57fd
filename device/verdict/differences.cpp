#include "device/verdict/differences.h"

#include <algorithm>

#include "VexoCtrlSDK.h"
#include "device/plan/words.h"
#include "files/printable.h"
#include "script/message_words.h"
#include "script/register_words.h"
#include "script/words.h"
#include "sim/text.h"

namespace verdict {
namespace {

using plan::EntryKind;

std::string Byte(std::uint8_t value) { return sim::Hex(value, 2); }

// Bytes and masks as long as the longer one, and a gap where a byte may be as it likes.
std::string InWords(const plan::MaskedBytes& expected) {
  std::string text;
  for (std::size_t i = 0; i < expected.bytes.size(); ++i) {
    const bool any = i < expected.mask.size() && expected.mask[i] == 0;
    text += any ? "--" : plan::HexWord(std::span(&expected.bytes[i], 1));
  }
  return text;
}

std::string Shortened(plan::Bytes bytes, std::size_t least) {
  while (bytes.size() > std::max<std::size_t>(least, 1) && bytes.back() == 0) bytes.pop_back();
  return plan::HexWord(bytes);
}

std::string MessageWords(std::uint32_t message, std::uint32_t wparam, const plan::Bytes& record) {
  return script::MessageInWords(message, wparam, record, VEXO_MAX_CHANNELS);
}

class StepComparison {
 public:
  StepComparison(const Outcome& outcome, Comparison& comparison)
      : outcome_(outcome), step_(*outcome.step), comparison_(comparison) {}

  void Run() {
    if (outcome_.called == nullptr) {
      ++comparison_.untried;
      return;
    }
    if (outcome_.returned == nullptr) {
      Differs(DifferenceKind::NeverReturned, "did not come back");
      return;
    }
    CompareResult();
    CompareRecord();
    CompareAnswer();
    if (!step_.any_messages) CompareMessages();
    for (const plan::ExpectedRegister& one : step_.registers) CompareRegister(one);
  }

 private:
  Difference& Differs(DifferenceKind kind, std::string text) {
    Difference& difference = comparison_.differences.emplace_back();
    difference.kind = kind;
    difference.outcome = &outcome_;
    difference.text = std::move(text);
    return difference;
  }

  void CompareResult() {
    if (!step_.result) return;
    const auto found = outcome_.Result();
    if (found == step_.result) {
      ++comparison_.met;
      return;
    }
    Differs(DifferenceKind::Result, "result: expected " + std::to_string(*step_.result) +
                                        ", found " + (found ? std::to_string(*found) : "none"));
  }

  void CompareRecord() {
    if (!step_.record) return;
    const plan::Bytes found = outcome_.record ? outcome_.record->bytes : plan::Bytes();
    if (outcome_.record != nullptr && step_.record->Matches(found)) {
      ++comparison_.met;
      return;
    }
    Differs(DifferenceKind::Record,
            "record: expected " + InWords(*step_.record) + ", found " +
                (outcome_.record ? Shortened(found, step_.record->bytes.size()) : "none"));
  }

  void CompareAnswer() {
    if (!step_.answer) return;
    const bool there = outcome_.answer != nullptr;
    if (there && outcome_.answer->texts.front() == *step_.answer) {
      ++comparison_.met;
      return;
    }
    Differs(DifferenceKind::Answer,
            "version: expected " + script::Quoted(*step_.answer) + ", found " +
                (there ? script::Quoted(outcome_.answer->texts.front()) : "none"));
  }

  static bool IsMessage(const plan::Entry& found, const plan::ExpectedMessage& expected) {
    return found.numbers[0] == expected.message && found.numbers[1] == expected.wparam &&
           found.numbers[2] == expected.lparam &&
           (!expected.record || expected.record->Matches(found.bytes));
  }

  void CompareMessages() {
    std::vector<const plan::Entry*> found;
    std::copy_if(
        outcome_.messages.begin(), outcome_.messages.end(), std::back_inserter(found),
        [](const plan::Entry* entry) { return entry->numbers[0] != plan::kMotionMessage; });
    auto next = found.begin();
    for (const plan::ExpectedMessage& expected : step_.messages) {
      const auto match = std::find_if(next, found.end(), [&expected](const plan::Entry* entry) {
        return IsMessage(*entry, expected);
      });
      if (match != found.end()) {
        std::for_each(next, match, [this](const plan::Entry* entry) { Extra(*entry); });
        next = match + 1;
        ++comparison_.met;
      } else if (next != found.end() && (*next)->numbers[0] == expected.message) {
        OtherContent(expected, **next++);
      } else {
        Differs(DifferenceKind::MessageMissing,
                "message: expected " + InWords(expected) + ", and none came");
      }
    }
    std::for_each(next, found.end(), [this](const plan::Entry* entry) { Extra(*entry); });
  }

  static std::string InWords(const plan::ExpectedMessage& message) {
    if (!message.record && message.wparam == 0) return sim::Hex(message.message, 4);
    return MessageWords(message.message, message.wparam,
                        message.record ? message.record->bytes : plan::Bytes());
  }
  static std::string InWords(const plan::Entry& message) {
    return MessageWords(static_cast<std::uint32_t>(message.numbers[0]),
                        static_cast<std::uint32_t>(message.numbers[1]), message.bytes);
  }
  static std::string InWords(const plan::MaskedBytes& bytes) { return verdict::InWords(bytes); }

  void Extra(const plan::Entry& message) {
    Differs(DifferenceKind::MessageExtra, "message: expected none, found " + InWords(message))
        .message = &message;
  }

  void OtherContent(const plan::ExpectedMessage& expected, const plan::Entry& found) {
    Differs(DifferenceKind::MessageContent,
            "message: expected " + InWords(expected) + ", found " + InWords(found))
        .message = &found;
  }

  void CompareRegister(const plan::ExpectedRegister& expected) {
    const std::string name = "register " + std::string(script::ChipWords()[expected.chip]) +
                             " page " + std::to_string(expected.page) + ' ' +
                             Byte(expected.number) + ' ' +
                             script::RegisterLabel(expected.page, expected.number);
    const auto entry = outcome_.values.find(expected.line);
    if (entry == outcome_.values.end() || entry->second->kind == EntryKind::Unread) {
      const std::string why =
          entry == outcome_.values.end()
              ? "was not read"
              : "cannot be read: result " + std::to_string(entry->second->numbers.front());
      Differs(DifferenceKind::Unread, name + ": " + why).expected = &expected;
      return;
    }
    const auto found = static_cast<std::uint8_t>(entry->second->numbers.front());
    if (((found ^ expected.value) & expected.mask) == 0) {
      ++comparison_.met;
      return;
    }
    const auto counted =
        static_cast<std::uint8_t>((found & expected.mask) | (expected.value & ~expected.mask));
    const std::string changes =
        script::FieldChangesInWords(expected.page, expected.number, expected.value, counted);
    Difference& difference = Differs(
        DifferenceKind::Register, name + ": expected " + Byte(expected.value) + ", found " +
                                      Byte(found) + (changes.empty() ? "" : " (" + changes + ")"));
    difference.expected = &expected;
    difference.found = found;
  }

  const Outcome& outcome_;
  const plan::Step& step_;
  Comparison& comparison_;
};

}  // namespace

Comparison Compare(const std::vector<Outcome>& outcomes) {
  Comparison comparison;
  for (const Outcome& outcome : outcomes) StepComparison(outcome, comparison).Run();
  return comparison;
}

std::string StepInWords(const plan::Step& step) {
  const std::string plan_line = "line " + std::to_string(step.line) + " of the plan";
  if (step.script_line == 0) {
    return files::Printable(plan::ActionInWords(step.action)) + " (" + plan_line + ")";
  }
  return files::Printable(step.script) + ':' + std::to_string(step.script_line) + ": " +
         files::Printable(step.source) + " (" + plan_line + ")";
}

}  // namespace verdict
