// The program's records: handed through, and never read beyond their end.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::HasSubstr;

// A record whose last byte is the last that can be touched.
class Fenced {
 public:
  Fenced(std::initializer_list<std::uint8_t> bytes) : Fenced(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), Bytes());
  }
  explicit Fenced(std::size_t bytes) : bytes_(bytes) {
    memory_ = mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(memory_, MAP_FAILED);
    EXPECT_EQ(mprotect(static_cast<std::uint8_t*>(memory_) + kPage, kPage, PROT_NONE), 0);
  }
  ~Fenced() { munmap(memory_, 2 * kPage); }
  Fenced(const Fenced&) = delete;
  Fenced& operator=(const Fenced&) = delete;

  std::uint8_t* Bytes() { return static_cast<std::uint8_t*>(memory_) + kPage - bytes_; }

 private:
  static inline const auto kPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  std::size_t bytes_;
  void* memory_ = nullptr;
};

struct Kind {
  std::uint32_t code;
  std::size_t bytes;
  std::size_t mode = 0;  // its place, of a record with a list
};
constexpr Kind kKinds[] = {
    {VEXO_CMD_INIT, sizeof(VexoInitRecord)},
    {VEXO_CMD_READ_REG, sizeof(VexoRegRecord)},
    {VEXO_CMD_WRITE_REG, sizeof(VexoRegRecord)},
    {VEXO_CMD_LIVE_SPLIT, sizeof(VexoSplitRecord), offsetof(VexoSplitRecord, mode)},
    {VEXO_CMD_PLAY_SPLIT, sizeof(VexoSplitRecord), offsetof(VexoSplitRecord, mode)},
    {VEXO_CMD_MOTION_MASK, sizeof(VexoMotionMaskRecord)},
    {VEXO_CMD_CHANNEL_MASKS, sizeof(VexoChannelMasksRecord)},
    {VEXO_CMD_LIVE_MODE, sizeof(VexoLiveModeRecord), offsetof(VexoLiveModeRecord, mode)},
    {VEXO_CMD_PLAY_MODE, sizeof(VexoPlayModeRecord), offsetof(VexoPlayModeRecord, mode)},
    {VEXO_CMD_BLANK_MASK, sizeof(VexoMaskRecord)},
    {VEXO_CMD_BIT0_MASK, sizeof(VexoMaskRecord)},
    {VEXO_CMD_MOTION_SETUP, sizeof(VexoMotionSetupRecord)},
    {VEXO_CMD_MOTION_MASK_PREVIEW, sizeof(VexoMotionMaskRecord)},
    {VEXO_CMD_MOTION_REG, sizeof(VexoMotionRegRecord)},
};

class DeskRecords : public ProgramTest {
 protected:
  DeskRecords() : trace_(Path("trace.jsonl")) {
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.trace = trace_.c_str();
    Open(options);
    Start();
  }

  // The lines of the trace about this export since the last time.
  std::vector<std::string> Trace(const std::string& fn) {
    const std::string content = Content(trace_);
    std::vector<std::string> lines;
    while (read_ < content.size()) {
      const std::size_t end = content.find('\n', read_);
      if (end == std::string::npos) break;
      const std::string line = content.substr(read_, end - read_);
      if (line.find("\"fn\":\"" + fn + '"') != std::string::npos) lines.push_back(line);
      read_ = end + 1;
    }
    return lines;
  }

  // Its record as the trace has it: 64 bytes.
  static std::string Traced(const std::uint8_t* bytes, std::size_t count) {
    std::string text = "\"record\":\"";
    for (std::size_t i = 0; i < 64; ++i) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", i < count ? bytes[i] : 0u);
      text += digits;
    }
    return text + '"';
  }

 private:
  std::string trace_;
  std::size_t read_ = 0;
};

// Holds: VexoMotionMaskRecord "Read: all 26 bytes (byte 0 alone when the channel"
TEST_F(DeskRecords, AreReadToTheirLastByteAndNoFurther) {
  for (const Kind& kind : kKinds) {
    Fenced record(kind.bytes);
    for (std::size_t i = 0; i < kind.bytes; ++i) {
      record.Bytes()[i] = static_cast<std::uint8_t>(kind.code == VEXO_CMD_INIT ? 0 : 1 + i % 3);
    }
    if (kind.mode != 0) record.Bytes()[kind.mode] = VEXO_SPLIT_16;  // whose list is the longest
    const std::string before = Traced(record.Bytes(), kind.bytes);
    Trace("VEXOAPI_CommandProc");
    const int result = VEXOAPI_CommandProc(kind.code, record.Bytes());
    EXPECT_NE(result, VEXO_ERROR_NOT_READY) << kind.code;
    const std::vector<std::string> lines = Trace("VEXOAPI_CommandProc");
    ASSERT_EQ(lines.size(), 2u) << kind.code;
    EXPECT_THAT(lines[0], HasSubstr(before)) << kind.code;
    EXPECT_THAT(lines[1], HasSubstr(Traced(record.Bytes(), kind.bytes))) << kind.code;
  }
}

TEST_F(DeskRecords, MayEndWithTheListThatTheirModeHas) {
  struct Case {
    std::uint32_t code;
    std::initializer_list<std::uint8_t> bytes;
    int result;
  };
  for (const Case& one : {
           Case{VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_FULL, 0, 3}, VEXO_OK},
           Case{VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_4, 0, 0, 1, 2, 3}, VEXO_OK},
           Case{VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, 7}, VEXO_ERROR_PARAMETER},
           Case{VEXO_CMD_LIVE_MODE, {0, 0, 0, 0, VEXO_SPLIT_FULL, 3}, VEXO_OK},
           // In the other view.
           Case{VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_6, 0}, VEXO_ERROR_FAILED},
           Case{VEXO_CMD_PLAY_MODE, {0, 0, 0, 0, 0, VEXO_SPLIT_4, 0, 1, 2, 3}, VEXO_OK},
           Case{VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_6, 0}, VEXO_ERROR_PARAMETER},
           Case{VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_FULL, 1, 3}, VEXO_OK},
           Case{VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0, VEXO_SPLIT_4, 0, 0, 1, 2, 3}, VEXO_OK},
           Case{VEXO_CMD_MOTION_MASK, {16}, VEXO_ERROR_PARAMETER},
       }) {
    Fenced record(one.bytes);
    Trace("VEXOAPI_CommandProc");
    EXPECT_EQ(VEXOAPI_CommandProc(one.code, record.Bytes()), one.result)
        << one.code << ", " << one.bytes.size() << " bytes";
    EXPECT_THAT(Trace("VEXOAPI_CommandProc"),
                testing::Each(HasSubstr(Traced(record.Bytes(), one.bytes.size()))));
  }
}

TEST_F(DeskRecords, OfCommandsThatHaveNoneAreNotLookedAt) {
  Fenced nothing(std::size_t{0});
  for (const std::uint32_t code : {VEXO_CMD_RESTORE_BLANK, VEXO_CMD_MOTION_CLEAR,
                                   VEXO_CMD_DUMP_SLAVE3_P2, VEXO_CMD_STOP_MONITOR}) {
    Trace("VEXOAPI_CommandProc");
    EXPECT_EQ(VEXOAPI_CommandProc(code, nothing.Bytes()), VEXO_OK) << code;
    EXPECT_THAT(Trace("VEXOAPI_CommandProc"), testing::Each(testing::Not(HasSubstr("record"))));
  }
  // Of a code that is none, neither.
  EXPECT_EQ(VEXOAPI_CommandProc(0xABCD, nothing.Bytes()), VEXO_ERROR_FAILED);
}

TEST_F(DeskRecords, OnlyTheLowHalfOfTheCodeSaysWhichTheyAre) {
  Fenced record({VEXO_CHIP_MASTER, 0, 0xFE, 0});
  EXPECT_EQ(VEXOAPI_CommandProc(0x1234'0000u | VEXO_CMD_READ_REG, record.Bytes()), VEXO_OK);
  EXPECT_EQ(record.Bytes()[3], 0x28);
}

TEST_F(DeskRecords, MayBeNull) {
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, nullptr), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(VEXOAPI_TextCommandProc(nullptr), VEXO_ERROR_NO_HEADER);
  EXPECT_EQ(VEXOAPI_SetMotionInfo(1, 1, nullptr), VEXO_OK);
  EXPECT_EQ(VEXOAPI_GetVersion(nullptr), 10);
  EXPECT_EQ(Trace("VEXOAPI_TextCommandProc").size(), 2u);
}

TEST_F(DeskRecords, OfMotionAndTextAreReadNoFurther) {
  Fenced mask(VEXO_MOTION_MASK_BYTES);
  EXPECT_EQ(VEXOAPI_SetMotionInfo(2, 1, mask.Bytes()), VEXO_OK);
  const std::string line = "vexo rver ";
  Fenced text(line.size() + 1);
  std::memcpy(text.Bytes(), line.c_str(), line.size() + 1);
  EXPECT_EQ(VEXOAPI_TextCommandProc(reinterpret_cast<const char*>(text.Bytes())), VEXO_OK);
}

// Holds: VexoCtrlSDK.h "One UTF-16 unit"
// Holds: VEXOAPI_GetVersion "Copies the library's version ("1."
TEST_F(DeskRecords, OfTheVersionAreWrittenNoFurther) {
  Fenced buffer(11 * sizeof(VexoChar16));
  EXPECT_EQ(VEXOAPI_GetVersion(reinterpret_cast<VexoChar16*>(buffer.Bytes())), 10);
}

// C programs link the plain name, C++ programs that of the compiler.
extern "C" int PlainSetMotionInfo(std::uint8_t channel, std::uint8_t level,
                                  std::uint8_t* mask) __asm__("VEXOAPI_SetMotionInfo");
extern "C" int CxxSetMotionInfo(std::uint8_t channel, std::uint8_t level,
                                std::uint8_t* mask) __asm__("_Z21VEXOAPI_SetMotionInfohhPh");

// Holds: VEXOAPI_SetMotionInfo "C and the C++ of g++ and clang ask for other names"
TEST_F(DeskRecords, OfMotionAreTakenUnderBothNames) {
  Fenced mask(VEXO_MOTION_MASK_BYTES);
  Trace("VEXOAPI_SetMotionInfo");
  EXPECT_EQ(PlainSetMotionInfo(5, 1, mask.Bytes()), VEXO_OK);
  EXPECT_EQ(CxxSetMotionInfo(6, 2, mask.Bytes()), VEXO_OK);
  const std::vector<std::string> lines = Trace("VEXOAPI_SetMotionInfo");
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_THAT(lines[0], HasSubstr("\"args\":[5,1]"));
  EXPECT_THAT(lines[2], HasSubstr("\"args\":[6,2]"));
}

}  // namespace
}  // namespace desk
