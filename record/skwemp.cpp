// sk_outbound_cc and sk_inbound_cc: line ends and page control as characters.
#include "jx/exports/record.h"

namespace {

constexpr JXChar kLf = 0x0A;
constexpr JXChar kFf = 0x0C;
constexpr JXChar kCr = 0x0D;
constexpr JXChar kSpace = ' ';

// Entries use prefixes of these.
constexpr JXChar kLines[] = {kLf, kLf, kLf};
constexpr JXChar kReturnedLines[] = {kCr, kLf, kCr, kLf, kCr, kLf};
constexpr JXChar kPage[] = {kLf, kFf};
constexpr JXChar kReturnedPage[] = {kCr, kLf, kFf};
constexpr JXChar kReturn[] = {kCr};
constexpr JXChar kFeed[] = {kFf};
constexpr JXChar kSpaces[] = {kSpace, kSpace, kSpace, kSpace, kSpace, kSpace, kSpace};

consteval JXControlString prefix(const JXChar *text, uint32_t chars) {
  return {text, chars * static_cast<uint32_t>(sizeof(JXChar))};
}

}  // namespace

extern "C" {

constinit JXControlString sk_outbound_cc[18] = {
    // Group 1: lines end in LF.
    prefix(kLines, 1), prefix(kLines, 2), prefix(kLines, 3), prefix(kPage, 2), prefix(kReturn, 1),
    prefix(kReturn, 1), prefix(kSpaces, 0), prefix(kFeed, 1), prefix(kSpaces, 1),
    // Group 2: lines end in CR LF.
    prefix(kReturnedLines, 2), prefix(kReturnedLines, 4), prefix(kReturnedLines, 6),
    prefix(kReturnedPage, 3), prefix(kReturn, 1), prefix(kReturn, 1), prefix(kSpaces, 0),
    prefix(kFeed, 1), prefix(kSpaces, 1)};

constinit JXControlString sk_inbound_cc[6] = {prefix(kLines, 1),  prefix(kFeed, 1),
                                              prefix(kReturn, 1), prefix(kLines, 1),
                                              prefix(kFeed, 1),   prefix(kReturn, 1)};

}  // extern "C"
