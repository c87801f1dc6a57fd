#include "sim/trace_json.h"

#include <array>
#include <string_view>

#include "sim/text.h"

namespace sim {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view ByName(sim::By by) { return by == sim::By::Host ? "host" : "worker"; }

constexpr std::string_view WindowName(sim::BusWindow window) {
  constexpr std::array<std::string_view, 3> kNames = {"select", "address", "data"};
  return kNames[static_cast<std::size_t>(window)];
}

// Adds the members of one kind of event, `ev` first.
struct Members {
  Json& json;

  void operator()(const sim::CallEvent& e) const {
    json["ev"] = "call";
    json["fn"] = e.fn;
    json["args"] = e.args;
    if (e.record) json["record"] = HexBytes(*e.record);
    if (e.text) json["text"] = *e.text;
    if (e.valid) json["valid"] = *e.valid;
  }
  void operator()(const sim::LineEvent& e) const {
    json["ev"] = "line";
    json["text"] = e.text;
  }
  void operator()(const sim::ReturnEvent& e) const {
    json["ev"] = "return";
    json["fn"] = e.fn;
    json["value"] = e.value ? Json(*e.value) : Json(nullptr);
    if (e.record) json["record"] = HexBytes(*e.record);
    if (e.text) json["record"] = *e.text;
  }
  void operator()(const sim::DebugEvent& e) const {
    json["ev"] = e.kernel ? "kernel" : "debug";
    json["text"] = e.text;
  }
  void operator()(const sim::MessageEvent& e) const {
    json["ev"] = e.post ? "post" : "send";
    json["message"] = e.message;
    json["wparam"] = e.wparam ? Json(*e.wparam) : Json(nullptr);
    json["lparam"] = e.lparam;
    json["ok"] = e.ok;
    if (e.record) json["record"] = HexBytes(*e.record);
  }
  void operator()(const sim::LockEvent& e) const {
    json["ev"] = e.unlock ? "unlock" : "lock";
    json["name"] = e.name;
    json["ok"] = e.ok;
  }
  void operator()(const sim::SleepEvent& e) const {
    json["ev"] = e.wait ? "wait" : "sleep";
    json["ms"] = e.ms;
  }
  void operator()(const sim::OpenEvent& e) const {
    json["ev"] = "open";
    json["name"] = e.name;
    json["access"] = e.access;
    json["share"] = e.share;
    json["disposition"] = e.disposition;
    json["ok"] = e.ok;
  }
  void operator()(const sim::IoctlEvent& e) const {
    json["ev"] = "ioctl";
    json["name"] = e.name;
    json["code"] = e.code;
    json["in"] = HexBytes(e.in);
    json["ok"] = e.ok;
  }
  void operator()(const sim::CloseEvent& e) const {
    json["ev"] = "close";
    json["name"] = e.name;
    json["ok"] = e.ok;
  }
  void operator()(const sim::NvramEvent& e) const {
    json["ev"] = "nvram";
    json["op"] = e.op;
    json["block"] = e.block;
    json["offset"] = e.offset;
    json["length"] = e.length;
    json["data"] = HexBytes(e.data);
    json["ok"] = e.ok;
  }
  void operator()(const sim::MapEvent& e) const {
    json["ev"] = "map";
    json["physical"] = e.physical;
    json["length"] = e.length;
    json["cached"] = e.cached;
    json["ok"] = e.ok;
  }
  void operator()(const sim::UnmapEvent& e) const {
    json["ev"] = "unmap";
    json["window"] = WindowName(e.window);
  }
  void operator()(const sim::ThreadEvent& e) const {
    json["ev"] = "thread";
    json["what"] = e.what;
    json["code"] = e.code;
  }
};

// Bus cycles are nearly all of a trace: the same line as through Json, without building one.
void WriteCycle(std::ostream& out, const sim::Event& event) {
  out << R"({"t":)" << event.t << R"(,"by":")" << ByName(event.by) << R"(","ev":")"
      << (event.kind == sim::Event::Kind::Store ? "store" : "load") << R"(","window":")"
      << WindowName(event.window) << R"(","value":)" << unsigned{event.value} << "}\n";
}

}  // namespace

Json EventToJson(const sim::Event& event, const sim::EventDetail* detail) {
  Json json;
  json["t"] = event.t;
  json["by"] = ByName(event.by);
  if (detail != nullptr) {
    std::visit(Members{json}, *detail);
  } else {
    json["ev"] = event.kind == sim::Event::Kind::Store ? "store" : "load";
    json["window"] = WindowName(event.window);
    json["value"] = event.value;
  }
  return json;
}

void TraceWriter::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  if (detail != nullptr) {
    // A text that is no valid UTF-8 is shown as far as it goes.
    out_ << EventToJson(event, detail).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
  } else {
    WriteCycle(out_, event);
  }
}

void TraceWriter::Write(const sim::Trace& trace) {
  for (; written_ < trace.Mark(); ++written_) {
    const sim::Event& event = trace.Events()[written_];
    OnEvent(event, trace.DetailOf(event));
  }
}

}  // namespace sim
