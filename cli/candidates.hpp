// The encodings that a guess is made among.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace cli {

enum class EncodingKind : uint8_t {
  kAscii,  // extends ASCII by single bytes
  kOld,    // the same, of DOS or the Macintosh: less likely
  kEbcdic,
  kWide,  // the signs of East Asia
};

struct Candidate {
  uint32_t encoding;
  EncodingKind kind;
  std::string_view languages;  // the first words of their names, divided by blanks
};

inline constexpr std::string_view kWestern =
    "English German French Spanish Italian Portuguese Dutch Swedish Danish Finnish";
inline constexpr std::string_view kCentral = "Polish Czech Slovak Hungarian Romanian Croatian";
inline constexpr std::string_view kCyrillic = "Russian Ukrainian Bulgarian";
inline constexpr std::string_view kChinese = "simplified traditional";

// In the order in which they are named where they give the same text.
inline constexpr auto kCandidates = std::to_array<Candidate>({
    {1252, EncodingKind::kAscii, kWestern},
    {28605, EncodingKind::kAscii, kWestern},
    {28591, EncodingKind::kAscii, kWestern},
    {850, EncodingKind::kOld, kWestern},
    {437, EncodingKind::kOld, kWestern},
    {10000, EncodingKind::kOld, kWestern},
    {1250, EncodingKind::kAscii, kCentral},
    {28592, EncodingKind::kAscii, kCentral},
    {28606, EncodingKind::kAscii, "Romanian"},
    {852, EncodingKind::kOld, kCentral},
    {10029, EncodingKind::kOld, kCentral},
    {1251, EncodingKind::kAscii, kCyrillic},
    {20866, EncodingKind::kAscii, "Russian Bulgarian"},
    {21866, EncodingKind::kAscii, kCyrillic},
    {28595, EncodingKind::kAscii, kCyrillic},
    {866, EncodingKind::kOld, kCyrillic},
    {1125, EncodingKind::kOld, "Ukrainian"},
    {10007, EncodingKind::kOld, kCyrillic},
    {10017, EncodingKind::kOld, "Ukrainian"},
    {855, EncodingKind::kOld, kCyrillic},
    {1253, EncodingKind::kAscii, "Greek"},
    {28597, EncodingKind::kAscii, "Greek"},
    {737, EncodingKind::kOld, "Greek"},
    {1254, EncodingKind::kAscii, "Turkish"},
    {37, EncodingKind::kEbcdic, kWestern},
    {1047, EncodingKind::kEbcdic, kWestern},
    {500, EncodingKind::kEbcdic, kWestern},
    {273, EncodingKind::kEbcdic, "German"},
    {297, EncodingKind::kEbcdic, "French"},
    {284, EncodingKind::kEbcdic, "Spanish"},
    {280, EncodingKind::kEbcdic, "Italian"},
    {278, EncodingKind::kEbcdic, "Swedish Finnish"},
    {277, EncodingKind::kEbcdic, "Danish"},
    {285, EncodingKind::kEbcdic, "English"},
    {870, EncodingKind::kEbcdic, kCentral},
    {1025, EncodingKind::kEbcdic, kCyrillic},
    {1123, EncodingKind::kEbcdic, "Ukrainian"},
    {875, EncodingKind::kEbcdic, "Greek"},
    {1026, EncodingKind::kEbcdic, "Turkish"},
    {3001, EncodingKind::kWide, "Japanese"},
    {932, EncodingKind::kWide, "Japanese"},
    {51932, EncodingKind::kWide, "Japanese"},
    {54936, EncodingKind::kWide, kChinese},
    {950, EncodingKind::kWide, "traditional"},
    {951, EncodingKind::kWide, "traditional"},
    {51949, EncodingKind::kWide, "Korean"},
    {949, EncodingKind::kWide, "Korean"},
});

}  // namespace cli
