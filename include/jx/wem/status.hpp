// Statuses as values, and results that are a value or a status.
#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
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

#ifdef __cpp_exceptions
  // Throws an Error unless it is success.
  void or_throw() const;
#endif

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

// A status as an exception, for callers that prefer these: or_throw() of a Status or a Result is
// all that throws it.
class Error : public std::exception {
 public:
  // From a status that is not 0.
  explicit Error(Status status) : status_(status) {}
  // Why it failed; never 0.
  Status status() const { return status_; }
  // The meaning of the status in words.
  const char *what() const noexcept override { return status_.text(); }

 private:
  Status status_;
};

#ifdef __cpp_exceptions
inline void Status::or_throw() const {
  if (!ok()) throw Error(*this);
}
#endif

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
// program with the name of the status on standard error: check first, use value_or(), or let
// or_throw() throw. and_then(), transform() and or_else() are those of std::expected.
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
  // The same, by the name of std::expected.
  bool has_value() const { return value_.has_value(); }
  // 0 when there is a value.
  Status status() const { return status_; }
  // The same, by the name of std::expected.
  Status error() const { return status_; }

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

#ifdef __cpp_exceptions
  // The value; throws an Error when there is none.
  T &or_throw() & { return status_.or_throw(), *value_; }
  const T &or_throw() const & { return status_.or_throw(), *value_; }
  T or_throw() && { return status_.or_throw(), std::move(*value_); }
#endif

  // What use, which returns a Result, makes of the value; or the failure.
  template <typename Use>
  auto and_then(Use &&use) && -> std::remove_cvref_t<std::invoke_result_t<Use, T>> {
    if (!value_) return Failed(status_);
    return std::invoke(std::forward<Use>(use), std::move(*value_));
  }
  template <typename Use>
  auto and_then(Use &&use) & -> std::remove_cvref_t<std::invoke_result_t<Use, T &>> {
    if (!value_) return Failed(status_);
    return std::invoke(std::forward<Use>(use), *value_);
  }
  // What use makes of the value, as a Result; or the failure.
  template <typename Use>
  auto transform(Use &&use) && {
    return std::move(*this).and_then([&use](T &&value) {
      using Made = std::remove_cvref_t<std::invoke_result_t<Use, T>>;
      return Result<Made>(Made(std::invoke(std::forward<Use>(use), std::move(value))));
    });
  }
  // The value, or what use, which takes the Status and returns a Result<T>, makes of the failure.
  template <typename Use>
  Result or_else(Use &&use) && {
    if (value_) return std::move(*this);
    return std::invoke(std::forward<Use>(use), status_);
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
