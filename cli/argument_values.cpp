// The values of options: text, numbers and encodings.
#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "cli/arguments.hpp"
#include "cli/failure.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

// The encodings that a byte-order mark decides between, by their reduced names. Little-endian where
// there is none: what this machine's programs write.
struct MarkedFamily {
  std::string_view name;
  Encoding encoding;
};

constexpr auto kMarkedFamilies = std::to_array<MarkedFamily>({
    {"utf16", {JX_ENCODING_UTF16LE, JX_ENCODING_UTF16BE}},
    {"unicode", {JX_ENCODING_UTF16LE, JX_ENCODING_UTF16BE}},
    {"utf32", {JX_ENCODING_UTF32LE, JX_ENCODING_UTF32BE}},
});

uint64_t suffix_factor(std::string_view suffix) {
  if (suffix.empty()) return 1;
  if (suffix == "k" || suffix == "K") return uint64_t{1} << 10;
  if (suffix == "M") return uint64_t{1} << 20;
  if (suffix == "G") return uint64_t{1} << 30;
  return 0;
}

// A name in small letters without separators.
std::string reduced(std::string_view name) {
  std::string letters;
  for (const char c : name) {
    if (c != '-' && c != '_' && c != '/') {
      letters += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  }
  return letters;
}

UsageError unknown_encoding(const std::string &what, const std::string &name) {
  std::string message = what + ": the encoding '" + name;
  const std::string given = reduced(name);
  const char *reason = nullptr;
  for (uint32_t i = 0; const char *left_out = jxhost_encoding_left_out_at(i, &reason); ++i) {
    if (given != reduced(left_out) && given != "cs" + reduced(left_out)) continue;
    message += "' is not converted: ";
    message += reason;
    return UsageError(message);
  }
  return UsageError(message + "' is not known; list those that are with: jxfile encodings");
}

}  // namespace

Encoding encoding_named(const std::string &what, const std::string &name) {
  const uint32_t number = jxhost_encoding_by_name(name.c_str());
  if (number == 0) throw unknown_encoding(what, name);
  const auto row = std::ranges::find(kMarkedFamilies, reduced(name), &MarkedFamily::name);
  return row != kMarkedFamilies.end() ? row->encoding : Encoding{number, 0};
}

uint64_t parse_number(const std::string &what, const std::string &text, uint64_t minimum,
                      uint64_t maximum) {
  const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
  const char *begin = text.data() + (is_hex ? 2 : 0);
  const char *end = text.data() + text.size();
  uint64_t value = 0;
  const auto [stop, error] = std::from_chars(begin, end, value, is_hex ? 16 : 10);
  const uint64_t factor = suffix_factor({stop, static_cast<size_t>(end - stop)});
  const bool fits = error == std::errc() && factor != 0 && value <= UINT64_MAX / factor;
  if (!fits || value * factor < minimum || value * factor > maximum) {
    throw UsageError(what + ": '" + text + "' is not a number from " + std::to_string(minimum) +
                     " to " + std::to_string(maximum));
  }
  return value * factor;
}

std::string Arguments::text(const std::string &option, const std::string &fallback) const {
  const auto found = options_.find(option);
  return found == options_.end() ? fallback : found->second;
}

uint64_t Arguments::number(const std::string &option, uint64_t fallback, uint64_t minimum,
                           uint64_t maximum) const {
  return has(option) ? parse_number(option, text(option), minimum, maximum) : fallback;
}

Encoding Arguments::encoding(const std::string &option) const {
  if (!has(option)) return {};
  if (option == "--from" && text(option) == "auto") return {.is_auto = true};
  return encoding_named(option, text(option));
}

}  // namespace cli
