#include "harness/host.h"

#include <algorithm>
#include <array>

#include "api/lifecycle.h"
#include "harness/export_table.h"
#include "harness/reset_library.h"
#include "sim/world.h"

namespace harness {
namespace {

constexpr PlatHandle kModule = 0x10000000;  // any handle that is none of the bad ones
constexpr std::uint32_t kReasonAttach = 1;
constexpr std::size_t kVersionUnits = 64;  // a host must give 20; more shows what is written beyond

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
  sim::CallEvent call{.fn = fn, .text = line};
  if (sim::ToUtf8(sim::ToUtf16(line).c_str()) != line) {
    call.record.emplace(call.text->begin(), call.text->end());
  }
  sim::TheWorld().Record(std::move(call));
}

void RecordReturn(const char* fn, std::optional<std::int64_t> value,
                  std::optional<sim::Bytes> record = std::nullopt,
                  std::optional<std::string> text = std::nullopt) {
  sim::TheWorld().Record(sim::ReturnEvent{fn, value, std::move(record), std::move(text)});
}

std::optional<sim::Bytes> Copy(const sim::Bytes* record) {
  return record == nullptr ? std::nullopt : std::optional(*record);
}

}  // namespace

ExportTable LinkedExports() {
  return {VexoSDK_DllEntry,    VEXOAPI_Initialize,     VEXOAPI_Uninitialize,
          VEXOAPI_GetVersion,  VEXOAPI_SetEnableDebug, VEXOAPI_SetEnableOutputMsg,
          VEXOAPI_CommandProc, VEXOAPI_SetMotionInfo,  VEXOAPI_TextCommandProc,
          ResetLibraryState};
}

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

std::optional<std::string> GetVersion(bool null_buffer, int* length) {
  std::array<VexoChar16, kVersionUnits> buffer{};
  RecordCall("VEXOAPI_GetVersion");
  *length = Exports().get_version(null_buffer ? nullptr : buffer.data());
  std::optional<std::string> text;
  if (!null_buffer) {
    buffer.back() = 0;
    text = sim::ToUtf8(reinterpret_cast<const char16_t*>(buffer.data()));  // wchar_t on Windows
  }
  RecordReturn("VEXOAPI_GetVersion", *length, std::nullopt, text);
  return text;
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

int CommandProc(std::uint32_t code, sim::Bytes* record) {
  if (record != nullptr) record->resize(std::max(record->size(), kCommandRecordBytes));
  RecordCall("VEXOAPI_CommandProc", {code}, Copy(record));
  const int result = Exports().command_proc(code, record == nullptr ? nullptr : record->data());
  RecordReturn("VEXOAPI_CommandProc", result, Copy(record));
  return result;
}

int SetMotionInfo(std::uint8_t channel, std::uint8_t level, sim::Bytes* mask24) {
  if (mask24 != nullptr) mask24->resize(VEXO_MOTION_MASK_BYTES);
  RecordCall("VEXOAPI_SetMotionInfo", {channel, level}, Copy(mask24));
  const int result =
      Exports().set_motion_info(channel, level, mask24 == nullptr ? nullptr : mask24->data());
  RecordReturn("VEXOAPI_SetMotionInfo", result, Copy(mask24));
  return result;
}

int TextCommandProc(const std::string& line) {
  RecordTextCall("VEXOAPI_TextCommandProc", line.c_str());
  const int result = Exports().text_command_proc(line.c_str());
  RecordReturn("VEXOAPI_TextCommandProc", result);
  return result;
}

void Restart() {
  sim::ResetWorld();  // first: it ends the threads that still run the library's code
  Exports().reset();
}

}  // namespace harness
