#include "tools/vexosim/traces/json_events.h"

#include <array>
#include <functional>
#include <limits>
#include <map>

namespace vexosim {
namespace {

using Json = nlohmann::json;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::optional<sim::Bytes> BytesFromHex(const std::string& text) {
  if (text.size() % 2 != 0) return std::nullopt;
  sim::Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = HexDigit(text[i]);
    const int low = HexDigit(text[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
  }
  return bytes;
}

std::string Found(const Json& value) {
  return Shown(value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

// The members of one object, each as the type that it must have.
class Members {
 public:
  explicit Members(const Json& json) : json_(json) {}

  bool Has(const char* name) const { return json_.contains(name); }

  std::uint64_t Number(const char* name, std::uint64_t most) const {
    const Json& value = Get(name);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > most) {
      Expected(name, "a number 0 to " + std::to_string(most));
    }
    return value.get<std::uint64_t>();
  }
  std::uint32_t Word(const char* name) const {
    return static_cast<std::uint32_t>(Number(name, std::numeric_limits<std::uint32_t>::max()));
  }
  std::string Text(const char* name) const {
    const Json& value = Get(name);
    if (!value.is_string()) Expected(name, "a text");
    return value.get<std::string>();
  }
  std::optional<std::string> MaybeText(const char* name) const {
    return Has(name) ? std::optional(Text(name)) : std::nullopt;
  }
  bool Flag(const char* name) const {
    const Json& value = Get(name);
    if (!value.is_boolean()) Expected(name, "true or false");
    return value.get<bool>();
  }
  std::optional<bool> MaybeFlag(const char* name) const {
    return Has(name) ? std::optional(Flag(name)) : std::nullopt;
  }
  sim::Bytes Bytes(const char* name) const {
    auto bytes = BytesFromHex(Text(name));
    if (!bytes) Expected(name, "hexadecimal digits, two a byte");
    return *std::move(bytes);
  }
  std::optional<sim::Bytes> MaybeBytes(const char* name) const {
    return Has(name) ? std::optional(Bytes(name)) : std::nullopt;
  }
  bool IsNull(const char* name) const { return Get(name).is_null(); }
  std::int64_t Integer(const char* name, const Json& value) const {
    // An unsigned number beyond the signed ones would come out negative.
    const bool large = value.is_number_unsigned() &&
                       value.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max();
    if (!value.is_number_integer() || large) Expected(name, "whole numbers of 64 bits");
    return value.get<std::int64_t>();
  }
  std::vector<std::int64_t> Integers(const char* name) const {
    const Json& value = Get(name);
    if (!value.is_array()) Expected(name, "an array of numbers");
    std::vector<std::int64_t> numbers;
    for (const Json& number : value) numbers.push_back(Integer(name, number));
    return numbers;
  }
  std::optional<std::int64_t> MaybeInteger(const char* name) const {
    const Json& value = Get(name);
    if (value.is_null()) return std::nullopt;
    return Integer(name, value);
  }
  template <std::size_t kCount>
  std::size_t Choice(const char* name, const std::array<std::string_view, kCount>& words) const {
    const std::string text = Text(name);
    for (std::size_t i = 0; i < kCount; ++i) {
      if (text == words[i]) return i;
    }
    std::string all;
    for (const std::string_view word : words) {
      all += (all.empty() ? "" : word == words.back() ? " or " : ", ") + std::string(word);
    }
    Expected(name, all);
  }
  sim::BusWindow Window() const {
    static constexpr std::array<std::string_view, 3> kWords = {"select", "address", "data"};
    return static_cast<sim::BusWindow>(Choice("window", kWords));
  }

 private:
  const Json& Get(const char* name) const {
    const auto found = json_.find(name);
    if (found == json_.end()) {
      throw BadEvent(std::string("expected the member \"") + name + "\", found none of that name");
    }
    return *found;
  }
  [[noreturn]] void Expected(const char* name, const std::string& what) const {
    throw BadEvent(std::string("expected as \"") + name + "\" " + what + ", found " +
                   Found(json_[name]));
  }

  const Json& json_;
};

sim::EventDetail ReadCall(const Members& from) {
  return sim::CallEvent{from.Text("fn"), from.Integers("args"), from.MaybeBytes("record"),
                        from.MaybeText("text"), from.MaybeFlag("valid")};
}

sim::EventDetail ReadReturn(const Members& from) {
  sim::ReturnEvent event{from.Text("fn"), from.MaybeInteger("value"), std::nullopt, std::nullopt};
  // The record of a version is its text.
  if (event.fn == "VEXOAPI_GetVersion") {
    event.text = from.MaybeText("record");
  } else {
    event.record = from.MaybeBytes("record");
  }
  return event;
}

sim::EventDetail ReadMessage(const Members& from, bool post) {
  sim::MessageEvent event;
  event.post = post;
  event.message = from.Word("message");
  if (!from.IsNull("wparam")) event.wparam = from.Word("wparam");
  event.lparam = from.Word("lparam");
  event.ok = from.Flag("ok");
  event.record = from.MaybeBytes("record");
  return event;
}

using Read = sim::EventDetail (*)(const Members& from);

const std::map<std::string_view, Read> kKinds = {
    {"call", ReadCall},
    {"return", ReadReturn},
    {"debug",
     [](const Members& m) -> sim::EventDetail {
       return sim::DebugEvent{false, m.Text("text")};
     }},
    {"kernel",
     [](const Members& m) -> sim::EventDetail {
       return sim::DebugEvent{true, m.Text("text")};
     }},
    {"send", [](const Members& m) { return ReadMessage(m, false); }},
    {"post", [](const Members& m) { return ReadMessage(m, true); }},
    {"lock",
     [](const Members& m) -> sim::EventDetail {
       return sim::LockEvent{false, m.Text("name"), m.Flag("ok")};
     }},
    {"unlock",
     [](const Members& m) -> sim::EventDetail {
       return sim::LockEvent{true, m.Text("name"), m.Flag("ok")};
     }},
    {"sleep",
     [](const Members& m) -> sim::EventDetail {
       return sim::SleepEvent{false, m.Word("ms")};
     }},
    {"wait",
     [](const Members& m) -> sim::EventDetail {
       return sim::SleepEvent{true, m.Word("ms")};
     }},
    {"open",
     [](const Members& m) -> sim::EventDetail {
       return sim::OpenEvent{m.Text("name"), m.Word("access"), m.Word("share"),
                             m.Word("disposition"), m.Flag("ok")};
     }},
    {"ioctl",
     [](const Members& m) -> sim::EventDetail {
       return sim::IoctlEvent{m.Text("name"), m.Word("code"), m.Bytes("in"), m.Flag("ok")};
     }},
    {"close",
     [](const Members& m) -> sim::EventDetail {
       return sim::CloseEvent{m.Text("name"), m.Flag("ok")};
     }},
    {"nvram",
     [](const Members& m) -> sim::EventDetail {
       return sim::NvramEvent{m.Text("op"),     m.Word("block"), m.Word("offset"),
                              m.Word("length"), m.Bytes("data"), m.Flag("ok")};
     }},
    {"map",
     [](const Members& m) -> sim::EventDetail {
       return sim::MapEvent{m.Word("physical"), m.Word("length"), m.Flag("cached"), m.Flag("ok")};
     }},
    {"unmap", [](const Members& m) -> sim::EventDetail { return sim::UnmapEvent{m.Window()}; }},
    {"thread",
     [](const Members& m) -> sim::EventDetail {
       return sim::ThreadEvent{m.Text("what"), m.Word("code")};
     }},
    {"line", [](const Members& m) -> sim::EventDetail { return sim::LineEvent{m.Text("text")}; }},
};

}  // namespace

std::optional<ReadEvent> EventFromJson(const nlohmann::json& json) {
  if (!json.is_object()) throw BadEvent("expected an object, found " + Found(json));
  static constexpr std::array<std::string_view, 2> kThreads = {"host", "worker"};
  const Members members(json);
  ReadEvent read;
  read.event.t = members.Word("t");
  read.event.by = static_cast<sim::By>(members.Choice("by", kThreads));
  const std::string kind = members.Text("ev");
  if (kind == "store" || kind == "load") {
    read.event.kind = kind == "store" ? sim::Event::Kind::Store : sim::Event::Kind::Load;
    read.event.window = members.Window();
    read.event.value = static_cast<std::uint8_t>(members.Number("value", 0xFF));
    return read;
  }
  const auto found = kKinds.find(kind);
  if (found == kKinds.end()) return std::nullopt;
  read.detail = found->second(members);
  return read;
}

std::optional<ReadEvent> JsonEvents::Next() {
  while (lines_.Next(line_)) {
    const Json json = Json::parse(line_, nullptr, false);
    if (json.is_discarded()) {
      lines_.Wrong(lines_.Cut() && line_.starts_with('{')
                       ? "expected the end of the object, found the end of the file"
                       : "expected a JSON object, found '" + Shown(line_) + "'");
    }
    try {
      if (auto read = EventFromJson(json)) return read;
    } catch (const BadEvent& error) {
      lines_.Wrong(error.what());
    }
  }
  return std::nullopt;
}

}  // namespace vexosim
