#include "harness/host.h"

#include <algorithm>
#include <array>
#include <span>

#include "harness/export_table.h"
#include "sim/world.h"

namespace harness {
namespace {

constexpr PlatHandle kModule = 0x10000000;  // any handle that is none of the bad ones
constexpr std::uint32_t kReasonAttach = 1;
constexpr int kVersionUnits = 64;  // a host must give 20; more shows what is written beyond

ExportTable& Exports() {
  static ExportTable exports = LinkedExports();
  return exports;
}

void RecordCall(const char* fn, std::vector<std::int64_t> args = {},
                std::optional<sim::Bytes> record = std::nullopt) {
  sim::TheWorld().Record(
      sim::CallEvent{.fn = fn, .args = std::move(args), .record = std::move(record)});
}

// A line that is no valid text has its bytes beside it.
void RecordTextCall(const char* fn, const char* line) {
  sim::CallEvent call{.fn = fn};
  if (line != nullptr) call.text = line;
  if (line != nullptr && sim::ToUtf8(sim::ToUtf16(line).c_str()) != line) {
    call.record.emplace(call.text->begin(), call.text->end());
  }
  sim::TheWorld().Record(std::move(call));
}

void RecordReturn(const char* fn, std::optional<std::int64_t> value,
                  std::optional<sim::Bytes> record = std::nullopt,
                  std::optional<std::string> text = std::nullopt) {
  sim::TheWorld().Record(sim::ReturnEvent{fn, value, std::move(record), std::move(text)});
}

// The buffer's text, so many units at most.
std::string VersionText(const VexoChar16* buffer, int units) {
  return sim::ToUtf8(std::u16string(buffer, buffer + std::clamp(units, 0, kVersionUnits)).c_str());
}

// Zero-filled to `least` bytes; none of a null record, and of one of which nothing may be read.
std::optional<sim::Bytes> Copy(const void* record, std::size_t bytes, std::size_t least) {
  if (record == nullptr || bytes == 0) return std::nullopt;
  const std::span content(static_cast<const std::uint8_t*>(record), bytes);
  sim::Bytes copy(std::max(bytes, least));
  std::copy(content.begin(), content.end(), copy.begin());
  return copy;
}

}  // namespace

void UseExports(const ExportTable& exports) { Exports() = exports; }

int Entry(std::uint32_t reason) {
  sim::World& world = sim::TheWorld();
  if (reason == kReasonAttach) {
    world.nvram.MakeDefault(
        static_cast<std::uint8_t>(kChannelsPerChip * world.board.FittedCount()));
    world.at_attach = sim::TakeSnapshot(world.board);
  }
  RecordCall("DllMain", {reason});
  const int result = Exports().dll_entry(kModule, reason, nullptr);
  RecordReturn("DllMain", result);
  return result;
}

int Initialize(PlatWindow window) {
  sim::World& world = sim::TheWorld();
  world.Record(sim::CallEvent{.fn = "VEXOAPI_Initialize",
                              .args = {static_cast<std::int64_t>(window)},
                              .valid = world.windows.Exists(window)});
  const int result = Exports().initialize(reinterpret_cast<VexoWindow>(window));
  RecordReturn("VEXOAPI_Initialize", result);
  return result;
}

void Uninitialize() {
  RecordCall("VEXOAPI_Uninitialize");
  Exports().uninitialize();
  RecordReturn("VEXOAPI_Uninitialize", std::nullopt);
}

int GetVersion(VexoChar16* buffer) {
  RecordCall("VEXOAPI_GetVersion");
  const int length = Exports().get_version(buffer);
  std::optional<std::string> text;
  if (buffer != nullptr) text = VersionText(buffer, length);
  RecordReturn("VEXOAPI_GetVersion", length, std::nullopt, std::move(text));
  return length;
}

std::optional<std::string> GetVersion(bool null_buffer, int* length) {
  std::array<VexoChar16, kVersionUnits> buffer{};
  *length = GetVersion(null_buffer ? nullptr : buffer.data());
  if (null_buffer) return std::nullopt;
  return VersionText(buffer.data(), kVersionUnits);
}

void SetEnableDebug(std::uint32_t enable) {
  RecordCall("VEXOAPI_SetEnableDebug", {enable});
  Exports().set_enable_debug(enable);
  RecordReturn("VEXOAPI_SetEnableDebug", std::nullopt);
}

void SetEnableOutputMsg(std::uint32_t enable) {
  RecordCall("VEXOAPI_SetEnableOutputMsg", {enable});
  Exports().set_enable_output_msg(enable);
  RecordReturn("VEXOAPI_SetEnableOutputMsg", std::nullopt);
}

int CommandProc(std::uint32_t code, void* record, std::size_t record_bytes) {
  const auto copy = [=] { return Copy(record, record_bytes, kCommandRecordBytes); };
  RecordCall("VEXOAPI_CommandProc", {code}, copy());
  const int result = Exports().command_proc(code, record);
  RecordReturn("VEXOAPI_CommandProc", result, copy());
  return result;
}

int CommandProc(std::uint32_t code, sim::Bytes* record) {
  if (record == nullptr) return CommandProc(code, nullptr, 0);
  record->resize(std::max(record->size(), kCommandRecordBytes));
  return CommandProc(code, record->data(), record->size());
}

int SetMotionInfo(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask24) {
  const auto copy = [=] { return Copy(mask24, VEXO_MOTION_MASK_BYTES, 0); };
  RecordCall("VEXOAPI_SetMotionInfo", {channel, level}, copy());
  const int result = Exports().set_motion_info(channel, level, mask24);
  RecordReturn("VEXOAPI_SetMotionInfo", result, copy());
  return result;
}

int SetMotionInfo(std::uint8_t channel, std::uint8_t level, sim::Bytes* mask24) {
  if (mask24 != nullptr) mask24->resize(VEXO_MOTION_MASK_BYTES);
  return SetMotionInfo(channel, level, mask24 == nullptr ? nullptr : mask24->data());
}

int TextCommandProc(const char* line) {
  RecordTextCall("VEXOAPI_TextCommandProc", line);
  const int result = Exports().text_command_proc(line);
  RecordReturn("VEXOAPI_TextCommandProc", result);
  return result;
}

void Restart() {
  sim::ResetWorld();  // first: it ends the threads that still run the library's code
  Exports().reset();
}

}  // namespace harness
