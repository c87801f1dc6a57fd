// A program of a test: a board that is open, a window, and what it was told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "VexoDesk.h"

namespace desk {

struct Message {
  std::uint32_t code;
  std::uint32_t value;  // wparam; of video loss the mask, of a register its value
  std::uint64_t at;     // when it came
  bool operator==(const Message&) const = default;
};

class ProgramTest : public testing::Test {
 protected:
  ProgramTest();
  ~ProgramTest() override;  // closes the board

  // In virtual time, on the default board or one of these lines.
  void Open(const char* board = nullptr);
  void Open(const VexoDeskOptions& options);
  // A window, and the chips initialized.
  void Start();
  // Their lines, and an answer that says that they were done.
  static void Line(const std::string& line);
  static std::string Answer(const std::string& line, int result = VEXODESK_OK);

  std::vector<Message> messages;
  // Called with each that comes, in the procedure.
  std::function<void(const Message&)> on_message;
  VexoWindow window = nullptr;

  // A file of this test's own.
  std::string Path(const std::string& name) const { return (folder_ / name).string(); }
  static std::string Content(const std::string& path);

 private:
  static std::intptr_t OnMessage(VexoWindow of, std::uint32_t code, std::uintptr_t wparam,
                                 std::intptr_t lparam, void* context);

  std::filesystem::path folder_;
};

}  // namespace desk
