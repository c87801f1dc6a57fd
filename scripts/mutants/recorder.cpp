// In the tests' program: writes down what each test reaches in the library, which is compiled so
// that it marks its blocks. A line a block, with its address in the library, then a line a test:
// name, microseconds, blocks by number. VEXO_REACHED names the file; without it, nothing happens.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <vector>

namespace {

struct Blocks {
  std::uint8_t* flags;
  std::uint8_t* end;
  const std::uintptr_t* addresses;  // two words a block: address, flags
};

std::vector<Blocks>& AllBlocks() {
  static std::vector<Blocks> all;
  return all;
}

class Recorder : public testing::EmptyTestEventListener {
 public:
  explicit Recorder(const char* path) : out_(path) {
    for (const Blocks& blocks : AllBlocks()) {
      Dl_info library = {};
      dladdr(blocks.flags, &library);
      const auto base = reinterpret_cast<std::uintptr_t>(library.dli_fbase);
      for (std::ptrdiff_t i = 0; i < blocks.end - blocks.flags; ++i) {
        out_ << "block " << blocks.addresses[2 * i] - base << '\n';
      }
    }
  }

  void OnTestStart(const testing::TestInfo& /*test*/) override {
    for (const Blocks& blocks : AllBlocks()) std::fill(blocks.flags, blocks.end, std::uint8_t{0});
    start_ = std::chrono::steady_clock::now();
  }

  void OnTestEnd(const testing::TestInfo& test) override {
    const auto time = std::chrono::steady_clock::now() - start_;
    out_ << "test " << test.test_suite_name() << '.' << test.name() << ' '
         << std::chrono::duration_cast<std::chrono::microseconds>(time).count();
    std::ptrdiff_t number = 0;
    for (const Blocks& blocks : AllBlocks()) {
      for (const std::uint8_t* flag = blocks.flags; flag < blocks.end; ++flag, ++number) {
        if (*flag != 0) out_ << ' ' << number;
      }
    }
    out_ << std::endl;
  }

 private:
  std::ofstream out_;
  std::chrono::steady_clock::time_point start_;
};

class Registration : public testing::Environment {
 public:
  void SetUp() override {
    const char* path = std::getenv("VEXO_REACHED");
    if (path != nullptr) testing::UnitTest::GetInstance()->listeners().Append(new Recorder(path));
  }
};

const testing::Environment* const g_registration =
    testing::AddGlobalTestEnvironment(new Registration);

}  // namespace

extern "C" void __sanitizer_cov_bool_flag_init(std::uint8_t* start, std::uint8_t* end) {
  AllBlocks().push_back({start, end, nullptr});
}

extern "C" void __sanitizer_cov_pcs_init(const std::uintptr_t* start,
                                         const std::uintptr_t* /*end*/) {
  AllBlocks().back().addresses = start;
}
