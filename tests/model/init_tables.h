// The bytes that initialization writes: hexadecimal, in register order.
#pragma once

#include <array>

namespace test {

inline constexpr const char* kInputN = "00 C8 20 D0 06 F0 08 80 80 80 80 18 03 03 11";
inline constexpr const char* kInputP = "00 88 20 D0 05 20 28 80 80 80 80 18 03 03 11";
inline constexpr const char* kScalerN = "01 3F FF 3F FF 00 FF FF FF FF 30 00 D0 00 F0 08";
inline constexpr const char* kScalerP = "01 3F FF 3F FF 00 FF FF FF FF 30 00 D0 00 20 28";
inline constexpr const char* kDecoder =
    "00 33 77 45 A0 D0 7F 64 80 80 80 80 30 0F 05 00 "
    "00 80 06 00 00";
inline constexpr const char* kAudio =
    "88 88 00 00 10 32 54 76 98 BA DC FE 00 00 88 88 "
    "88 54 00 00 00";
inline constexpr const char* kAudioLargerN =
    "88 88 03 01 10 32 54 76 98 BA DC FE 03 00 88 88 "
    "88 53 00 00 00";
inline constexpr const char* kBlockC0 = "00 00 00 07 00 00 F0 FF 00 3C 4F";
inline constexpr const char* kDisplay4 =
    "02 00 00 00 04 00 00 00 00 00 D7 23 2D 1E A7 80 "
    "02 00 00 02 00 10 00 81 02 00 01 02 00 11 00 82 "
    "02 00 02 02 00 12 00 83 02 00 03 02 00 13 00";
inline constexpr const char* kDisplayLarger =
    "02 00 00 00 04 00 00 00 00 00 D7 23 2D 1E 93 80 "
    "02 00 00 02 00 10 00 81 02 00 01 02 00 11 00 82 "
    "02 00 02 02 00 12 00 83 02 00 03 02 00 13 00";
inline constexpr const char* kRecord4 =
    "28 01 10 A0 40 00 00 00 00 00 00 00 00 00 00 A7 "
    "80 00 00 81 00 00 82 00 00 83 00 00 00 E4 00 00 "
    "00 03 00 00 00 00 02 00 FF FF FF FF F0 00 89 84 "
    "DF 00 91 07 EB 10 A8 00 91 E7 80 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
inline constexpr const char* kRecordLarger =
    "28 00 10 A0 40 00 00 00 00 00 00 00 00 00 00 93 "
    "80 00 00 81 00 00 82 00 00 83 00 00 00 E4 00 00 "
    "00 03 00 00 00 00 02 00 FF FF FF FF F0 00 89 84 "
    "DF 00 91 07 EB 10 A8 00 91 E7 80 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
inline constexpr const char* kWindows4N = "00 5A 00 3C 5A B4 00 3C 00 5A 3C 78 5A B4 3C 78";
inline constexpr const char* kWindows4P = "00 5A 00 48 5A B4 00 48 00 5A 48 90 5A B4 48 90";
inline constexpr const char* kWindows8N = "00 B4 00 78 00 B4 00 78 00 B4 00 78 00 B4 00 78";
inline constexpr const char* kWindows8P = "00 B4 00 90 00 B4 00 90 00 B4 00 90 00 B4 00 90";
inline constexpr std::array<const char*, 4> kWindows16N = {
    "00 2D 00 1E 2D 5A 00 1E 5A 87 00 1E 87 B4 00 1E",
    "00 2D 1E 3C 2D 5A 1E 3C 5A 87 1E 3C 87 B4 1E 3C",
    "00 2D 3C 5A 2D 5A 3C 5A 5A 87 3C 5A 87 B4 3C 5A",
    "00 2D 5A 78 2D 5A 5A 78 5A 87 5A 78 87 B4 5A 78",
};
inline constexpr std::array<const char*, 4> kWindows16P = {
    "00 2D 00 24 2D 5A 00 24 5A 87 00 24 87 B4 00 24",
    "00 2D 24 48 2D 5A 24 48 5A 87 24 48 87 B4 24 48",
    "00 2D 48 6C 2D 5A 48 6C 5A 87 48 6C 87 B4 48 6C",
    "00 2D 6C 90 2D 5A 6C 90 5A 87 6C 90 87 B4 6C 90",
};
inline constexpr const char* kOutputMasterN = "66 90 D0 01 80 20 00 0C 20 08 AA 00 40 40 00 00";
inline constexpr const char* kOutputSlaveN = "66 FF 97 01 80 20 00 0C 20 08 AA 00 40 40 00 00";
inline constexpr const char* kOutputMasterP = "66 90 D0 01 80 20 00 0C 20 48 AA 00 40 40 00 00";
inline constexpr const char* kOutputSlaveP = "66 FF 97 01 80 20 00 0C 20 48 AA 00 40 40 00 00";
inline constexpr const char* kOverlay =
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 B0 00 00 00 00 40 00 00 00 00 00 00 B0 00 00 "
    "00 00 40 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 40 40 40 42 FF";
inline constexpr const char* kBoxes =
    "88 00 00 00 00 00 FB 00 89 00 00 00 00 00 FB 00 "
    "8A 00 00 00 00 00 FB 00 8B 00 00 00 00 00 FB 00";
inline constexpr const char* kMotion4 =
    "17 73 88 4A 07 24 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
inline constexpr const char* kMotionLarger =
    "57 73 88 4A 07 24 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

}  // namespace test
