// A device for the check program's parts: a library whose answers a test sets, and a log in memory.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "VexoCtrlSDK.h"
#include "device/check/player.h"
#include "device/check/system.h"

namespace check {

class FakeSystem final : public System {
 public:
  Player* player = nullptr;
  std::string log;
  std::vector<std::string> calls;
  std::uint64_t us = 0;  // the clock
  std::uint32_t load_error = 0;
  bool exports = true;                                            // whether there are any
  int result = VEXO_OK;                                           // of every call
  int read_result = VEXO_OK;                                      // of a read of a register
  std::array<std::uint8_t, kRecordBytes> record_after{};          // of a command, when not all zero
  std::map<std::array<std::uint8_t, 3>, std::uint8_t> registers;  // by select, page, number
  unsigned astray = 0;  // reads of registers that give 0xFF before one is right
  std::u16string version = u"1. 0. 1. 6";
  std::function<void()> meanwhile;  // in every call and wait

  void Send(std::uint32_t number, std::uint32_t wparam,
            const std::vector<std::uint8_t>& record = {}) {
    player->OnMessage({number, wparam, 0, record.empty() ? nullptr : record.data(),
                       static_cast<unsigned>(record.size())});
  }

  void WriteLog(const char* line, unsigned bytes) override {
    log.append(line, bytes);
    us += 1000;  // a flush takes its time
  }
  std::uint32_t Milliseconds() override { return static_cast<std::uint32_t>(us / 1000); }
  std::uint64_t Microseconds() override { return us; }
  std::uint32_t Load() override { return Did("load"), load_error; }
  void Unload() override { Did("unload"); }
  bool Has(Export) override { return exports; }
  int Initialize(bool valid) override { return Did(valid ? "initialize" : "initialize invalid"); }
  void Uninitialize() override { Did("uninitialize"); }
  void SetDebug(std::uint32_t enable) override { Did("debug " + std::to_string(enable)); }
  void SetOutput(std::uint32_t enable) override { Did("output " + std::to_string(enable)); }
  int GetVersion(Char16* buffer) override {
    Did(buffer == nullptr ? "version -" : "version");
    if (buffer != nullptr) version.copy(buffer, version.size());
    return static_cast<int>(version.size());
  }
  int Command(std::uint32_t code, void* record) override {
    auto* const bytes = static_cast<std::uint8_t*>(record);
    if (code == VEXO_CMD_READ_REG) return Read(bytes);
    Did("command " + std::to_string(code) +
        (record == nullptr ? " -" : ' ' + std::to_string(*bytes)));
    if (record != nullptr && record_after != decltype(record_after){}) {
      std::memcpy(record, record_after.data(), record_after.size());
    }
    return result;
  }
  int SetMotion(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) override {
    return Did("motion " + std::to_string(channel) + ' ' + std::to_string(level) + ' ' +
               std::to_string(mask[23]));
  }
  int Text(const char* line) override { return Did(std::string("text ") + line); }
  void Wait(std::uint32_t ms) override {
    Did("wait " + std::to_string(ms));
    us += std::uint64_t{ms} * 1000;
  }

 private:
  int Did(std::string what) {
    calls.push_back(std::move(what));
    us += 250;
    if (meanwhile) meanwhile();
    return result;
  }
  int Read(std::uint8_t* record) {
    calls.push_back("read");
    record[3] = astray != 0 ? 0xFF : registers[{record[0], record[1], record[2]}];
    if (astray != 0) --astray;
    Send(VEXO_MSG_REG_VALUE, 0, {record[0], record[1], record[2], record[3]});
    return read_result;
  }
};

}  // namespace check
