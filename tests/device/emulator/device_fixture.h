// A card of toy images, and what its programs write to the debug outputs.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "device/emulator/device.h"
#include "sim/world.h"
#include "tests/device/emulator/toy_program.h"
#include "tests/support/temp_path.h"

namespace emulator {

class DeviceTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(card_);
    sim::ResetWorld();
  }
  void TearDown() override {
    device_.reset();
    sim::ResetWorld();
    std::filesystem::remove_all(card_);
  }

  void Put(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    const std::filesystem::path file = std::filesystem::path(card_) / path;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  void Put(const std::string& path, const ToyProgram& program) { Put(path, program.Bytes()); }
  std::string Content(const std::string& path) const {
    std::ifstream file(card_ + '/' + path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // A library whose entry says its letter and what it hears of: "B attach".
  static ToyProgram Library(const std::u16string& letter) {
    ToyProgram library(false);
    const std::uint32_t texts = library.Texts(
        {letter + u" detach", letter + u" attach", letter + u" thread", letter + u" thread end"});
    library.Begin();
    library.Say(texts, Given(1));
    library.Return(Number(1));
    return library;
  }

  std::uint32_t Run(const std::string& program = "A.exe", const DeviceOptions& options = {},
                    const std::string& arguments = "") {
    device_.reset();
    sim::ResetWorld();
    sim::TheWorld().kernel.SetCycleTime(cycle_ns_);
    device_ = std::make_unique<Device>(card_, options);
    return device_->Run(program, arguments);
  }

  // What was written: programs' texts as they are, the kernel's behind "! ".
  static std::vector<std::string> Said() {
    std::vector<std::string> texts;
    const sim::Trace& trace = sim::TheWorld().trace;
    for (const sim::Event& event : trace.Events()) {
      if (const auto* text = trace.As<sim::DebugEvent>(event)) {
        texts.push_back((text->kernel ? "! " : "") + text->text);
      }
    }
    return texts;
  }

  std::uint32_t cycle_ns_ = 0;  // of the runs that follow
  const std::string card_ = test::TempPath("card");

 private:
  std::unique_ptr<Device> device_;
};

}  // namespace emulator
