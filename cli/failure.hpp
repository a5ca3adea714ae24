// How a command ends early: the exceptions that main turns into messages and exit codes.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "jx/wem/status.hpp"

namespace cli {

// An operation failed. Printed as "jxfile: COMMAND: path: meaning: detail (NAME code)"; exit 1.
struct Failure : std::exception {
  Failure(std::string failed_path, wem::Status failed_status, std::string more = {})
      : path(std::move(failed_path)), status(failed_status), detail(std::move(more)) {}
  Failure(std::string failed_path, JXStatus code, std::string more = {})
      : Failure(std::move(failed_path), wem::Status(code), std::move(more)) {}
  // The same failure in words of its own.
  Failure saying(std::string text, std::string advice = {}) && {
    meaning = std::move(text);
    hint = std::move(advice);
    return std::move(*this);
  }

  std::string path;     // as the user gave it, in bytes; may be empty
  wem::Status status;   // why
  std::string detail;   // what to add to the meaning; may be empty
  std::string meaning;  // used instead of the status's own text when not empty
  std::string hint;     // what to do about it; empty: the status decides
};

// The command line is wrong; exit 2.
struct UsageError : std::exception {
  explicit UsageError(std::string text, std::string_view meant = {})
      : message(std::move(text)), suggestion(meant) {}
  std::string message;
  std::string suggestion;  // the word that may have been meant; may be empty
};

// The failure that a system call's errno means: a status of the module, with the system's text
// where the status says less.
Failure system_failure(const std::string &path, int error);
// The same for a call that makes a name or opens a directory on the way to it: what is missing then
// is a directory.
Failure path_failure(const std::string &path, int error);
// What an exception of the library means: out of memory, or the system error it carries.
Failure library_failure(const std::exception &error);

// Throws a Failure unless the status is 0.
inline void require(wem::Status status, const std::string &path) {
  if (!status.ok()) throw Failure(path, status);
}

// The value of a result, or a Failure.
template <typename T>
T require(wem::Result<T> result, const std::string &path) {
  if (!result) throw Failure(path, result.status());
  return std::move(*result);
}

}  // namespace cli
