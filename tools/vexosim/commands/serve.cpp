#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "desk/bench/bench.h"
#include "desk/port/port.h"
#include "files/input.h"
#include "files/printable.h"
#include "script/parse.h"
#include "script/run.h"
#include "sim/text.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/session_options.h"
#include "tools/vexosim/listing/call_stack.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {
namespace {

constexpr std::uint16_t kPort = 8035;

constexpr const char* kServeIntroduction =
    "Brings a board up as vexosim shell does, lets its time pass as the clock's does, and shows "
    "it\n"
    "in the browser: the monitor, the cameras, the registers and the bus, and a console for lines\n"
    "of the script language. --control-port takes the same lines from programs. SCRIPT runs in\n"
    "real time, as if somebody typed it. Only this machine is listened to, unless --listen says\n"
    "otherwise: whoever reaches the port can do all that a line can, files of yours included.\n"
    "Ctrl-C ends it, and so does the line quit.\n"
    "\n"
    "Exit status: 0 ended by Ctrl-C or quit, 1 the session had to be ended, 2 the command line or "
    "a\n"
    "file is wrong, or a port is taken.\n";

struct ServeArguments {
  std::string script;
  desk::PageSettings page{.port = kPort, .bench = true};
  std::optional<std::uint16_t> control;
  desk::BenchOptions bench;
  SessionOptions session;
  ImageOptions image;
};

std::optional<script::Script> ReadScript(const std::string& name) {
  if (name.empty()) return std::nullopt;
  std::ifstream in = files::OpenInput(name);
  std::vector<script::Script> scripts = script::ParseScript(in, name);
  if (scripts.size() == 1) return std::move(scripts.front());
  throw script::ScriptError(name + " has variants, and a board in real time runs none of them");
}

// Sends the lines one after the other, and says what comes of each.
void RunLines(const script::Script& script, desk::Bench& bench) {
  for (const script::Statement& line : script.statements) {
    std::cout << files::Printable(line.text) << std::endl;
    const desk::Answer answer = bench.Run(line.text);
    for (const std::string& said : sim::TextLines(answer.text)) {
      std::cout << "      " << said << std::endl;
    }
    if (answer.result == desk::Answer::Result::Refused) return;
  }
}

// The page's events, pictures and news.
desk::BenchWatch WatchOf(desk::Port& port) {
  using Tells = desk::Port::Tells;
  const auto tell = [&port](Tells what) {
    return [&port, what](std::uint32_t t, std::uint64_t cycle, const std::string& text) {
      port.Tell(what, t, cycle, text);
    };
  };
  return {.wants_moment = [&port] { return port.WantsMoment(); },
          .show = [&port](desk::Moment moment) { port.Show(std::move(moment)); },
          .events = &port.Events(),
          .stopped = tell(Tells::Stopped),
          .continued = tell(Tells::Continued),
          .rewound = tell(Tells::Rewound)};
}

std::string WhereToLook(const desk::Port& port, const std::string& address) {
  const bool ipv6 = address.find(':') != std::string::npos;
  return "http://" + (ipv6 ? '[' + address + ']' : address) + ':' +
         std::to_string(port.PageNumber()) + '/';
}

int Serve(ServeArguments& arguments) {
  const std::optional<script::Script> script = ReadScript(arguments.script);
  SessionOutputs outputs(arguments.session, {arguments.script, arguments.image.file});
  desk::BenchOptions& options = arguments.bench;
  options.run.sinks = outputs.Sinks();
  options.run.waveform = WaveformMaker(arguments.session);
  options.run.limits = arguments.session.Limits();
  options.run.cycle_ns = arguments.session.cycle_ns;
  options.library_stack = LibraryStack;
  options.ended = Interrupted;
  const InterruptWatch interrupts;
  desk::Bench bench(options);
  desk::Port port({.control = arguments.control, .page = arguments.page},
                  [&bench](const std::string& line) { return bench.Run(line); });
  bench.Watch(WatchOf(port));
  std::cout << bench.WhatThereIs() << '\n' << WhereToLook(port, arguments.page.address) << '\n';
  if (arguments.control) std::cout << "Control port " << port.Number() << '\n';
  std::cout << "Ctrl-C ends it." << std::endl;
  std::thread lines;
  if (script) lines = std::thread([&] { RunLines(*script, bench); });
  const std::string why = bench.Serve();
  if (lines.joinable()) lines.join();
  outputs.Commit();
  if (why.empty()) return script::kExitDone;
  std::cerr << "vexosim: " << why << std::endl;
  return script::kExitUnmet;
}

int Run(ServeArguments& arguments) {
  try {
    return Serve(arguments);
  } catch (const std::runtime_error& error) {
    std::cerr << "vexosim: " << files::Printable(error.what()) << std::endl;
    return script::kExitWrong;
  }
}

}  // namespace

void AddServe(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<ServeArguments>();
  constexpr std::uint64_t kMostPort = 65535;
  CLI::App* serve = app.add_subcommand("serve", "A board in real time, in the browser");
  serve->add_option("SCRIPT", arguments->script, "Lines to begin with")
      ->type_name("")
      ->check(FileName());
  serve->add_option("--port", arguments->page.port, "Where the page is; 0: a port that is free")
      ->type_name("N")
      ->transform(WholeNumber(0, kMostPort))
      ->capture_default_str();
  serve->add_option("--listen", arguments->page.address, "Of this machine, to listen on")
      ->type_name("ADDRESS")
      ->capture_default_str();
  serve
      ->add_option("--control-port", arguments->control,
                   "Where programs send lines, on 127.0.0.1; 0: a port that is free")
      ->type_name("N")
      ->transform(WholeNumber(0, kMostPort));
  AddBoard(*serve, arguments->bench.board);
  AddSessionOptions(*serve, arguments->session);
  AddSeed(*serve, arguments->bench.run.seed);
  AddImage(*serve, arguments->image);
  serve->footer(kServeIntroduction);
  serve->callback([arguments, &status] {
    status = WithFiles([&] {
      return WithImage(arguments->image, [&](const emulator::Machine*) { return Run(*arguments); });
    });
  });
}

}  // namespace vexosim
