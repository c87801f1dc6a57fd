// A library of a few lines in the place of the real one, so that tests of the tool say exactly what
// is called and what it does.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace harness {

struct FakeLibrary {
  // Calls as texts: "command_proc 0xf005 aa01..." with the first four record bytes, "null", ....
  std::vector<std::string> calls;
  unsigned resets = 0;
};
FakeLibrary& TheFake();

// What its commands do beside being noted; each returns 0, any other command -1.
inline constexpr std::uint32_t kFakePrint = 0xF005;    // "[Fake]: " and ">> hello\r\n"
inline constexpr std::uint32_t kFakeKernel = 0xF006;   // "kernel\n" to the kernel debug output
inline constexpr std::uint32_t kFakeWrite = 0xF004;    // 4 bus cycles: master, page 1, 0x30 = 0x5A
inline constexpr std::uint32_t kFakeSend = 0xF003;     // sends 0x2406 with 03 00 fe 28
inline constexpr std::uint32_t kFakeMotion = 0xF007;   // sends 0x2404 with mask 4
inline constexpr std::uint32_t kFakePost = 0xF002;     // posts 0x2401 with 0x1003
inline constexpr std::uint32_t kFakeLparam = 0xF008;   // posts 0x2401 with 0x1004 and the lParam 7
inline constexpr std::uint32_t kFakeHang = 0xF001;     // waits for what never comes
inline constexpr std::uint32_t kFakeContend = 0xF00B;  // reads with all chips selected
// A register dump, written piece by piece as the real one is: of SLAVE3, page 2, and register r has
// the value r.
inline constexpr std::uint32_t kFakeDump = 0xFF0B;

// A test that runs on the fake library.
class FakeLibraryTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
};

}  // namespace harness
