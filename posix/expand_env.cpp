// Environment variables in a path: "$" and a name become the variable's value.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "posix/expand.hpp"

namespace jx {

namespace {

// How many variables one path may take. Values that refer to several others multiply; the bound
// keeps a hostile environment from holding the caller for hours.
constexpr uint32_t kVariableCount = 4096;

bool ends_name(char character) {
  return character == '\0' || character == '/' || character == '.' || character == '$';
}

class VariableExpander {
 public:
  VariableExpander(char *destination, const char *limit)
      : start_(destination), next_(destination), limit_(limit) {}

  // Appends the expansion of source.
  void expand(const char *source, uint32_t depth) {
    while (*source != '\0' && !is_full() && status_ == JX_OK) {
      source = copy_text(source);
      if (*source == '$' && !is_full()) source = expand_variable(source, depth);
    }
  }

  uint32_t count_bytes() const { return static_cast<uint32_t>(next_ - start_); }
  JXStatus status() const { return status_; }

 private:
  // Appends the text before the next "$", as far as it fits, and returns the text after it.
  const char *copy_text(const char *source) { return copy_bytes(source, strchrnul(source, '$')); }

  const char *copy_bytes(const char *source, const char *end) {
    const auto bytes = std::min(static_cast<size_t>(end - source), room_bytes());
    std::memcpy(next_, source, bytes);
    next_ += bytes;
    return source + bytes;
  }

  // What comes after the last byte is dropped, and not refused either.
  bool is_full() const { return next_ > limit_; }
  size_t room_bytes() const { return static_cast<size_t>(limit_ + 1 - next_); }

  // Appends the value of the variable at source (a "$") and returns the text after its name.
  const char *expand_variable(const char *source, uint32_t depth) {
    const char *name = source + 1;
    const char *end = name;
    while (!ends_name(*end)) ++end;
    const auto name_bytes = static_cast<size_t>(end - name);
    if (name_bytes >= kVariableNameBytes || ++variable_count_ > kVariableCount) {
      return refuse(end);
    }
    char terminated[kVariableNameBytes] __attribute__((uninitialized));
    std::memcpy(terminated, name, name_bytes);
    terminated[name_bytes] = '\0';
    const char *value = std::getenv(terminated);
    if (!value) {
      copy_bytes(source, end);
      return end;
    }
    const char *rest = copy_text(value);
    if (*rest != '$' || is_full()) return end;
    if (depth == kVariableDepth || std::strlen(rest) >= kVariableValueBytes) return refuse(end);
    expand(rest, depth + 1);
    return end;
  }

  const char *refuse(const char *end) {
    status_ = JXWEM_E_NAMETOOLONG;
    return end;
  }

  char *start_;
  char *next_;
  const char *limit_;
  uint32_t variable_count_ = 0;
  JXStatus status_ = JX_OK;
};

}  // namespace

uint32_t expand_env(const char *source, char *destination, char *limit, JXStatus *status_out) {
  VariableExpander expander(destination, limit);
  expander.expand(source, 1);
  *status_out = expander.status();
  return expander.count_bytes();
}

}  // namespace jx
