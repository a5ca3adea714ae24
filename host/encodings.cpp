// Look-up of encodings by number and by name.
#include "host/encodings.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "host/encoding_aliases.hpp"
#include "host/encoding_rows.hpp"
#include "jx/jxhost.h"

namespace jxhost {
namespace {

static_assert(std::is_sorted(std::begin(kEncodings), std::end(kEncodings),
                             [](auto &a, auto &b) { return a.number <= b.number; }) &&
                  std::is_sorted(std::begin(kEncodingAliases), std::end(kEncodingAliases),
                                 [](auto &a, auto &b) { return a.number <= b.number; }),
              "find_row searches by halves");

// Names that the C library has and this table does not, and why.
struct LeftOut {
  const char *name;
  const char *reason;
};
constexpr LeftOut kLeftOut[] = {
    {"ISO-2022-CN", "it would write the characters U+000E and U+000F as shifts"},
    {"ISO-2022-CN-EXT", "it would write the characters U+000E and U+000F as shifts"},
    {"ISO-2022-JP-3", "it joins characters across its escape sequences"},
    {"ISO-2022-KR", "it begins with a header, and records are converted one by one"},
    {"TSCII", "it reorders characters, so that a part of a text cannot be converted alone"},
};

// The row of a number, or null.
template <typename Row, size_t N>
const Row *find_row(const Row (&rows)[N], uint32_t number) {
  const auto *found =
      std::lower_bound(std::begin(rows), std::end(rows), number,
                       [](const Row &row, uint32_t wanted) { return row.number < wanted; });
  return found != std::end(rows) && found->number == number ? found : nullptr;
}

// A letter in lower case or a digit; 0 for anything else.
char reduce(char c) {
  if (c >= 'A' && c <= 'Z') return static_cast<char>(c - 'A' + 'a');
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ? c : '\0';
}

// A name reduced to lower-case letters and digits; empty when it is longer than any known name.
class ReducedName {
 public:
  explicit ReducedName(std::string_view name) {
    for (const char given : name) {
      const char c = reduce(given);
      if (c == 0) continue;
      if (length_ == sizeof(text_)) {
        length_ = 0;
        return;
      }
      text_[length_++] = c;
    }
  }
  std::string_view view() const { return {text_, length_}; }

 private:
  char text_[32];
  size_t length_ = 0;
};

// Whether a list of names divided by blanks has one that reduces to these letters and digits. Each
// begins with a letter or a digit, which most differ in.
bool is_in_list(std::string_view list, std::string_view reduced) {
  while (!list.empty()) {
    const size_t end = std::min(list.find(' '), list.size());
    const bool may_be = reduce(list[0]) == reduced[0];
    if (may_be && ReducedName(list.substr(0, end)).view() == reduced) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

// The encoding of a code page number, alone or after "cp", "ibm" or "windows"; null if unknown.
const Encoding *find_by_code_page(std::string_view name) {
  const size_t digits = std::min(name.find_first_of("0123456789"), name.size());
  const std::string_view prefix = name.substr(0, digits);
  if (!prefix.empty() && !is_in_list("cp ibm windows win", prefix)) return nullptr;
  uint32_t number = 0;
  const auto [end, error] =
      std::from_chars(name.data() + digits, name.data() + name.size(), number);
  if (error != std::errc() || end != name.data() + name.size()) return nullptr;
  const Encoding *encoding = find_encoding(number);
  const bool is_code_page = encoding && encoding->form >= Form::kPage;
  return prefix.empty() || is_code_page ? encoding : nullptr;
}

}  // namespace

const Encoding *find_encoding(uint32_t number) { return find_row(kEncodings, number); }

}  // namespace jxhost

uint32_t jxhost_encoding_by_name(const char *name8) {
  using namespace jxhost;
  if (!name8) return 0;
  const ReducedName name{std::string_view(name8)};
  if (name.view().empty()) return 0;
  for (const Encoding &row : kEncodings) {
    if (is_in_list(row.name, name.view())) return row.number;
  }
  for (const EncodingAliases &row : kEncodingAliases) {
    if (is_in_list(row.text, name.view())) return row.number;
  }
  const Encoding *encoding = find_by_code_page(name.view());
  return encoding ? encoding->number : 0;
}

const char *jxhost_encoding_name(uint32_t encoding) {
  const jxhost::Encoding *row = jxhost::find_encoding(encoding);
  return row ? row->name : nullptr;
}

uint32_t jxhost_encoding_at(uint32_t index) {
  return index < std::size(jxhost::kEncodings) ? jxhost::kEncodings[index].number : 0;
}

const char *jxhost_encoding_aliases(uint32_t encoding) {
  const auto *row = jxhost::find_row(jxhost::kEncodingAliases, encoding);
  if (row) return row->text;
  return jxhost::find_encoding(encoding) ? "" : nullptr;
}

uint32_t jxhost_encoding_min_bytes(uint32_t encoding) {
  const jxhost::Encoding *row = jxhost::find_encoding(encoding);
  return row ? row->min_bytes : 0;
}

uint32_t jxhost_encoding_max_bytes(uint32_t encoding) {
  const jxhost::Encoding *row = jxhost::find_encoding(encoding);
  return row ? row->max_bytes : 0;
}

const char *jxhost_encoding_left_out_at(uint32_t index, const char **reason_out) {
  const bool is_one = index < std::size(jxhost::kLeftOut);
  if (reason_out) *reason_out = is_one ? jxhost::kLeftOut[index].reason : nullptr;
  return is_one ? jxhost::kLeftOut[index].name : nullptr;
}
