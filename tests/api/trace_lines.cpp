#include "tests/api/trace_lines.h"

#include <cstdio>
#include <sstream>

#include "sim/trace_json.h"

namespace test {
namespace {

constexpr const char* kWindowNames[] = {"select", "address", "data"};

std::string Hex(std::uint32_t value, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "%0*X", digits, value);
  return text;
}

std::string Hex(const sim::Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += Hex(byte, 2);
  return text;
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\r') {
      escaped += "\\r";
    } else if (c == '\n') {
      escaped += "\\n";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

const char* FailedUnless(bool ok) { return ok ? "" : " failed"; }

struct DetailText {
  std::string operator()(const sim::CallEvent& e) const { return "call " + e.fn; }
  std::string operator()(const sim::LineEvent& e) const { return "line " + e.text; }
  std::string operator()(const sim::ReturnEvent& e) const {
    return "return " + e.fn + (e.value ? " " + std::to_string(*e.value) : "");
  }
  std::string operator()(const sim::DebugEvent& e) const {
    return (e.kernel ? "kernel " : "debug ") + Escaped(e.text);
  }
  std::string operator()(const sim::MessageEvent& e) const {
    const std::string parameter =
        e.wparam ? std::to_string(*e.wparam) : "[" + Hex(e.record.value_or(sim::Bytes{})) + "]";
    return (e.post ? "post " : "send ") + Hex(e.message, 4) + " " + parameter + FailedUnless(e.ok);
  }
  std::string operator()(const sim::LockEvent& e) const {
    return (e.unlock ? "unlock " : "lock ") + e.name + FailedUnless(e.ok);
  }
  std::string operator()(const sim::SleepEvent& e) const {
    return (e.wait ? "wait " : "sleep ") + std::to_string(e.ms);
  }
  std::string operator()(const sim::OpenEvent& e) const {
    return "open " + e.name + FailedUnless(e.ok);
  }
  std::string operator()(const sim::IoctlEvent& e) const {
    return "ioctl " + Hex(e.code, 6) + FailedUnless(e.ok);
  }
  std::string operator()(const sim::CloseEvent& e) const {
    return "close " + e.name + FailedUnless(e.ok);
  }
  std::string operator()(const sim::NvramEvent& e) const {
    return "nvram " + e.op + FailedUnless(e.ok);
  }
  std::string operator()(const sim::MapEvent& e) const {
    return "map " + Hex(e.physical, 8) + " " + std::to_string(e.length) +
           (e.cached ? " cached" : " uncached") + FailedUnless(e.ok);
  }
  std::string operator()(const sim::UnmapEvent& e) const {
    return std::string("unmap ") + kWindowNames[static_cast<std::size_t>(e.window)];
  }
  std::string operator()(const sim::ThreadEvent& e) const {
    return "thread " + e.what + (e.what == "start" ? "" : " " + Hex(e.code, 8));
  }
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const Line& line) {
  return out << line.t << (line.by == sim::By::Host ? " host " : " worker ") << line.text;
}

std::string Text(const sim::Trace& trace, const sim::Event& event) {
  const std::string window = kWindowNames[static_cast<std::size_t>(event.window)];
  switch (event.kind) {
    case sim::Event::Kind::Store:
      return window + "<-" + Hex(event.value, 2);
    case sim::Event::Kind::Load:
      return window + "->" + Hex(event.value, 2);
    default:
      return std::visit(DetailText{}, trace.Detail(event));
  }
}

std::vector<Line> Lines(const sim::Trace& trace, std::size_t from) {
  std::vector<Line> lines;
  for (std::size_t i = from; i < trace.Events().size(); ++i) {
    const sim::Event& event = trace.Events()[i];
    lines.push_back({event.t, event.by, Text(trace, event)});
  }
  return lines;
}

std::vector<std::string> Texts(const sim::Trace& trace, std::size_t from,
                               const std::string& prefix) {
  std::vector<std::string> texts;
  for (const Line& line : Lines(trace, from)) {
    if (line.text.rfind(prefix, 0) == 0) texts.push_back(line.text);
  }
  return texts;
}

std::vector<Line> LinesBy(sim::By by, const sim::Trace& trace, std::size_t from,
                          const std::string& prefix) {
  std::vector<Line> lines;
  for (const Line& line : Lines(trace, from)) {
    if (line.by == by && line.text.rfind(prefix, 0) == 0) lines.push_back(line);
  }
  return lines;
}

std::string TraceAsJson(const sim::Trace& trace) {
  std::ostringstream out;
  sim::TraceWriter(out).Write(trace);
  return out.str();
}

}  // namespace test
