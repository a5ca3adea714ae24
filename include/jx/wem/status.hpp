// Statuses as values, results that are a value or a status, and the views of text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "jx/base.h"
#include "jx/jxhost.h"

namespace wem {

static_assert(sizeof(char32_t) == sizeof(JXChar));
static_assert(alignof(char32_t) == alignof(JXChar));

// Text as the module takes it. char32_t and JXChar have one representation, and the module, which
// is compiled apart, only ever sees the memory as JXChars: the cast hands over a pointer and no
// object is read through both types on either side. Valid as long as the text.
inline const JXChar *as_chars(std::u32string_view text) {
  return reinterpret_cast<const JXChar *>(text.data());
}

// The number of JXChars of a text. Longer ones than 32 bits can count are too long for every
// operation, and are handed over as the longest length there is.
constexpr uint32_t char_count(std::u32string_view text) {
  return text.size() > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(text.size());
}

// Text that the module lends, as a view; empty for null. Valid as long as the module's text.
template <typename Count>
std::u32string_view as_view(const JXChar *data, Count chars) {
  if (!data || chars <= 0) return {};
  return {reinterpret_cast<const char32_t *>(data), static_cast<size_t>(chars)};
}

// The outcome of an operation. It knows the names and meanings of the module's statuses and of
// those that the reference host adds; a host whose own statuses are others looks these up by
// code().
class [[nodiscard]] Status {
 public:
  constexpr Status(JXStatus code = JX_OK) : code_(code) {}  // implicit: compares with JXWEM_E_*

  constexpr JXStatus code() const { return code_; }
  constexpr bool ok() const { return code_ == JX_OK; }
  // The constant's name, "JXWEM_E_EOF"; "unknown" for a status that is none of these. Never null.
  constexpr const char *name() const { return ok() ? "JX_OK" : row().name; }
  // The meaning in words; "unknown status" for a status that is none of these. Never null.
  constexpr const char *text() const { return ok() ? "success" : row().text; }

  friend constexpr bool operator==(Status, Status) = default;

 private:
  struct Row {
    JXStatus code;
    const char *name;
    const char *text;
  };
#define JXWEM_STATUS_ROW(name, text) Row{name, #name, text},
  static constexpr auto rows() {
    return std::to_array<Row>(
        {JX_STATUS_LIST(JXWEM_STATUS_ROW) JXHOST_STATUS_LIST(JXWEM_STATUS_ROW)});
  }
#undef JXWEM_STATUS_ROW

  constexpr Row row() const {
    for (const Row &candidate : rows()) {
      if (candidate.code == code_) return candidate;
    }
    return {code_, "unknown", "unknown status"};
  }

  JXStatus code_;
};

// A value, or the status that says why there is none.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}
  Result(Status status) : status_(status) {}

  explicit operator bool() const { return value_.has_value(); }
  // 0 when there is a value.
  Status status() const { return status_; }
  // The value; only when there is one.
  T &operator*() & { return *value_; }
  const T &operator*() const & { return *value_; }
  T &&operator*() && { return std::move(*value_); }
  T *operator->() { return &*value_; }
  const T *operator->() const { return &*value_; }

 private:
  std::optional<T> value_;
  Status status_;
};

}  // namespace wem
