#include "desk/library/outputs.h"

#include <algorithm>
#include <iostream>
#include <iterator>

namespace desk {

TextsOutput::TextsOutput(const std::string& path, const std::string& other) {
  if (path == "-") return;
  file_ = std::make_unique<files::OutputFile>(path, std::vector{other}, files::Appears::AsItGrows);
}

void TextsOutput::OnEvent(const sim::Event&, const sim::EventDetail* detail) {
  const auto* const debug = std::get_if<sim::DebugEvent>(detail);
  if (debug == nullptr) return;
  std::ostream& out = file_ == nullptr ? std::cerr : file_->Stream();
  std::remove_copy(debug->text.begin(), debug->text.end(), std::ostreambuf_iterator(out), '\r');
  out.flush();
}

void TextsOutput::Commit() {
  if (file_ != nullptr) file_->Commit();
}

TraceOutput::TraceOutput(const std::string& path, const std::string& other)
    : file_(path, {other}, files::Appears::AsItGrows), writer_(file_.Stream()) {}

void TraceOutput::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  writer_.OnEvent(event, detail);
  // A bus cycle is not the last thing that a call does.
  if (detail != nullptr) file_.Stream().flush();
}

}  // namespace desk
