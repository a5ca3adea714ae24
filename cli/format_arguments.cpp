// Arguments of a format, from text to an argument list.
#include "cli/format_arguments.hpp"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "cli/failure.hpp"

namespace cli {
namespace {

// Zeros after the last argument: a refused format may still fetch some.
constexpr size_t kSpareBytes = 256;

UsageError wrong(const std::string &shown, const std::string &text, const char *wanted) {
  return UsageError(shown + ": '" + text + "' is not " + wanted);
}

// A whole number with an optional sign, decimal or hexadecimal after 0x; false when it does not
// fit that many bits, signed or unsigned.
bool to_integer(std::string_view text, unsigned bits, int64_t *value_out) {
  const bool is_negative = text.starts_with('-');
  if (is_negative || text.starts_with('+')) text.remove_prefix(1);
  const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
  if (is_hex) text.remove_prefix(2);
  uint64_t magnitude = 0;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, magnitude, is_hex ? 16 : 10);
  if (error != std::errc() || stop != end) return false;
  const uint64_t lowest = uint64_t{1} << (bits - 1);
  if (is_negative ? magnitude > lowest : bits < 64 && magnitude > 2 * lowest - 1) return false;
  *value_out = static_cast<int64_t>(is_negative ? 0 - magnitude : magnitude);
  return true;
}

long double to_floating(const std::string &shown, const std::string &text) {
  char *end = nullptr;
  const long double value = std::strtold(text.c_str(), &end);
  if (text.empty() || *end != '\0') throw wrong(shown, text, "a number");
  return value;
}

// A double is read as one, so that it is rounded once.
double to_double(const std::string &shown, const std::string &text) {
  char *end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0') throw wrong(shown, text, "a number");
  return value;
}

}  // namespace

ArgumentList::ArgumentList(Session &session, const FormatUses &uses,
                           const std::vector<std::string> &texts) {
  if (!uses.is_refused && texts.size() != uses.arguments.size()) {
    throw UsageError("FORMAT takes " + std::to_string(uses.arguments.size()) + " arguments, " +
                     std::to_string(texts.size()) + " are given");
  }
  for (size_t i = 0; i < uses.arguments.size(); ++i) {
    add(session, uses.arguments[i], texts[i], "argument " + std::to_string(i + 1));
  }
  for (size_t i = 0; i < uses.arguments.size(); ++i) {
    const ArgumentUse &use = uses.arguments[i];
    if (!use.is_exact) continue;
    const int64_t wanted = use.exact_argument >= 0
                               ? integers_[static_cast<size_t>(use.exact_argument)]
                               : int64_t{use.exact_units};
    const size_t units = use.is_bytes ? texts[i].size() : session.from_utf8(texts[i])->size();
    if (wanted > 0 && static_cast<uint64_t>(wanted) > units) {
      throw UsageError("argument " + std::to_string(i + 1) + ": '" + texts[i] + "' has not " +
                       std::to_string(wanted) + " characters");
    }
  }
  block_.resize(block_.size() + kSpareBytes);
}

void ArgumentList::add(Session &session, const ArgumentUse &use, const std::string &text,
                       const std::string &shown) {
  int64_t integer = 0;
  if (use.is_text || use.is_bytes) {
    add_string(session, use, text, shown);
  } else if (use.kind == ArgumentKind::kDouble) {
    const double value = to_double(shown, text);
    append(&value, sizeof value, sizeof value);
  } else if (use.kind == ArgumentKind::kLongDouble) {
    const long double value = to_floating(shown, text);
    append(&value, sizeof value, sizeof value);
  } else if (use.kind == ArgumentKind::kChar) {
    const auto character = session.from_utf8(text);
    if (!character || character->size() != 1) throw wrong(shown, text, "one character");
    integer = (*character)[0];
    append(&integer, sizeof integer, sizeof(void *));
  } else {
    const bool is_wide = use.kind == ArgumentKind::kLongLong;
    if (!to_integer(text, is_wide ? 64 : 32, &integer)) {
      throw wrong(shown, text, is_wide ? "a 64-bit integer" : "a 32-bit integer");
    }
    append(&integer, sizeof integer, is_wide ? sizeof integer : sizeof(void *));
  }
  // A precision is the signed 32-bit value of its argument.
  integers_.push_back(static_cast<int32_t>(integer));
}

void ArgumentList::add_string(Session &session, const ArgumentUse &use, const std::string &text,
                              const std::string &shown) {
  const void *pointer = nullptr;
  if (use.is_bytes) {
    pointer = byte_texts_.emplace_back(text).c_str();
  } else {
    const auto wide = session.from_utf8(text);
    if (!wide) throw wrong(shown, text, "UTF-8");
    pointer = texts_.emplace_back(*wide).c_str();
  }
  append(&pointer, sizeof pointer, sizeof pointer);
}

// The low bytes of a value come first on every machine, so a narrow slot holds their start.
void ArgumentList::append(const void *value, size_t bytes, size_t slot_bytes) {
  const size_t alignment = sizeof(void *) == 8 && slot_bytes == 16 ? 16 : sizeof(void *);
  const size_t at = (block_.size() + alignment - 1) / alignment * alignment;
  block_.resize(at + slot_bytes);
  std::memcpy(block_.data() + at, value, std::min(bytes, slot_bytes));
}

void ArgumentList::point_to_block(va_list &list) const {
#if defined(__x86_64__)
  // Every register counts as used up already, so that all arguments come from the block.
  const struct {
    unsigned general_offset = 48;
    unsigned floating_offset = 176;
    const void *overflow_area = nullptr;
    const void *register_area = nullptr;
  } state = {48, 176, block_.data(), nullptr};
#elif defined(__i386__)
  const void *const state = block_.data();
#elif defined(__aarch64__)
  // No room is left in either area of registers.
  const struct {
    const void *stack;
    const void *general_end = nullptr;
    const void *floating_end = nullptr;
    int general_offset = 0;
    int floating_offset = 0;
  } state = {.stack = block_.data()};
#else
#error "the layout of an argument list is not known for this processor"
#endif
  static_assert(sizeof state == sizeof list);
  std::memcpy(&list, &state, sizeof state);
}

}  // namespace cli
