// Statuses as values, and results that are a value or a status.
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <type_traits>
#include <utility>

#include "jx/base.h"
#include "jx/jxhost.h"

namespace wem {

// The outcome of an operation; a default one is success. Knows the names and meanings of the
// statuses of the module and of the reference host; another host looks up its own by code().
class [[nodiscard]] Status {
 public:
  constexpr Status() = default;
  // From a status constant or the answer of a slot. Explicit, and only from a JXStatus: no number
  // converts by accident.
  constexpr explicit Status(std::same_as<JXStatus> auto code) : code_(code) {}

  // The status as the module has it.
  constexpr JXStatus code() const { return code_; }
  // Whether it is success.
  constexpr bool ok() const { return code_ == JX_OK; }
  // The constant's name, "JXWEM_E_EOF"; "unknown" for a status that is none of these. Never null.
  constexpr const char *name() const { return ok() ? "JX_OK" : row().name; }
  // The meaning in words; "unknown status" for a status that is none of these. Never null.
  constexpr const char *text() const { return ok() ? "success" : row().text; }

  // Whether both are the same status.
  friend constexpr bool operator==(Status, Status) = default;
  // Compares with a constant: status == JXWEM_E_EOF.
  friend constexpr bool operator==(Status status, std::same_as<JXStatus> auto code) {
    return status.code_ == code;
  }

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

  JXStatus code_ = JX_OK;
};

namespace detail {

// Stops a program that took the value of a failed Result. Writes the name and the code of the
// status to standard error.
[[noreturn]] inline void stop(Status status) {
  std::fprintf(stderr, "wem: there is no value: %s 0x%08x (%s)\n", status.name(),
               static_cast<unsigned>(status.code()), status.text());
  std::abort();
}

}  // namespace detail

// The failure of a function that returns a Result: return wem::Failed(status). Never a success:
// JX_OK becomes JXWEM_E_FAILED.
class Failed {
 public:
  // From a status, or from a status constant.
  constexpr explicit Failed(Status status)
      : status_(status.ok() ? Status(JXWEM_E_FAILED) : status) {}
  constexpr explicit Failed(std::same_as<JXStatus> auto code) : Failed(Status(code)) {}

  // Why it failed; never 0.
  constexpr Status status() const { return status_; }

 private:
  Status status_;
};

// A value, or the status that says why there is none. Taking the value of a failure stops the
// program with the name of the status on standard error: check first, or use value_or().
template <typename T>
class [[nodiscard]] Result {
 public:
  using value_type = T;  // the type of the value

  // From exactly a T, explicitly: Result<int64_t>(offset).
  template <typename Value>
  requires std::same_as<std::remove_cvref_t<Value>, T>
  explicit Result(Value &&value) : value_(std::forward<Value>(value)) {}
  Result(Failed failed) : status_(failed.status()) {}

  // Whether there is a value.
  explicit operator bool() const { return value_.has_value(); }
  // 0 when there is a value.
  Status status() const { return status_; }

  // The value; *Result of a temporary is a value of its own, so that a range-for may walk it.
  T &operator*() & { return require(); }
  const T &operator*() const & { return require(); }
  T operator*() && { return std::move(require()); }
  // The same by name. Nothing is thrown.
  T &value() & { return require(); }
  const T &value() const & { return require(); }
  T value() && { return std::move(require()); }
  // The value, or another one.
  template <typename Other>
  T value_or(Other &&other) const & {
    return value_ ? *value_ : static_cast<T>(std::forward<Other>(other));
  }
  template <typename Other>
  T value_or(Other &&other) && {
    return value_ ? std::move(*value_) : static_cast<T>(std::forward<Other>(other));
  }

  // A member of the value.
  T *operator->() & { return &require(); }
  const T *operator->() const & { return &require(); }
  T *operator->() && requires std::copyable<T> { return &require(); }
  // A file, directory or table would be closed with the temporary while its records are still in
  // use: keep the result in a variable.
  T *operator->() && requires(!std::copyable<T>) = delete;

 private:
  T &require() {
    if (!value_) detail::stop(status_);
    return *value_;
  }
  const T &require() const {
    if (!value_) detail::stop(status_);
    return *value_;
  }

  std::optional<T> value_;
  Status status_;
};

}  // namespace wem
