// The encodings that a guess is made among.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace cli {

enum class Kind : uint8_t {
  kAscii,  // extends ASCII by single bytes
  kOld,    // the same, of DOS or the Macintosh: less likely
  kEbcdic,
  kWide,  // the signs of East Asia
};

struct Candidate {
  uint32_t encoding;
  Kind kind;
  std::string_view languages;  // the first words of their names, divided by blanks
};

inline constexpr std::string_view kWestern =
    "English German French Spanish Italian Portuguese Dutch Swedish Danish Finnish";
inline constexpr std::string_view kCentral = "Polish Czech Slovak Hungarian Romanian Croatian";
inline constexpr std::string_view kCyrillic = "Russian Ukrainian Bulgarian";
inline constexpr std::string_view kChinese = "simplified traditional";

// In the order in which they are named where they give the same text.
inline constexpr auto kCandidates = std::to_array<Candidate>({
    {1252, Kind::kAscii, kWestern},
    {28605, Kind::kAscii, kWestern},
    {28591, Kind::kAscii, kWestern},
    {850, Kind::kOld, kWestern},
    {437, Kind::kOld, kWestern},
    {10000, Kind::kOld, kWestern},
    {1250, Kind::kAscii, kCentral},
    {28592, Kind::kAscii, kCentral},
    {28606, Kind::kAscii, "Romanian"},
    {852, Kind::kOld, kCentral},
    {10029, Kind::kOld, kCentral},
    {1251, Kind::kAscii, kCyrillic},
    {20866, Kind::kAscii, "Russian Bulgarian"},
    {21866, Kind::kAscii, kCyrillic},
    {28595, Kind::kAscii, kCyrillic},
    {866, Kind::kOld, kCyrillic},
    {1125, Kind::kOld, "Ukrainian"},
    {10007, Kind::kOld, kCyrillic},
    {10017, Kind::kOld, "Ukrainian"},
    {855, Kind::kOld, kCyrillic},
    {1253, Kind::kAscii, "Greek"},
    {28597, Kind::kAscii, "Greek"},
    {737, Kind::kOld, "Greek"},
    {1254, Kind::kAscii, "Turkish"},
    {37, Kind::kEbcdic, kWestern},
    {1047, Kind::kEbcdic, kWestern},
    {500, Kind::kEbcdic, kWestern},
    {273, Kind::kEbcdic, "German"},
    {297, Kind::kEbcdic, "French"},
    {284, Kind::kEbcdic, "Spanish"},
    {280, Kind::kEbcdic, "Italian"},
    {278, Kind::kEbcdic, "Swedish Finnish"},
    {277, Kind::kEbcdic, "Danish"},
    {285, Kind::kEbcdic, "English"},
    {870, Kind::kEbcdic, kCentral},
    {1025, Kind::kEbcdic, kCyrillic},
    {1123, Kind::kEbcdic, "Ukrainian"},
    {875, Kind::kEbcdic, "Greek"},
    {1026, Kind::kEbcdic, "Turkish"},
    {3001, Kind::kWide, "Japanese"},
    {932, Kind::kWide, "Japanese"},
    {51932, Kind::kWide, "Japanese"},
    {54936, Kind::kWide, kChinese},
    {950, Kind::kWide, "traditional"},
    {951, Kind::kWide, "traditional"},
    {51949, Kind::kWide, "Korean"},
    {949, Kind::kWide, "Korean"},
});

}  // namespace cli
