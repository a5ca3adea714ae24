// System errors and exceptions of the library in the terms of the module.
#include "cli/failure.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <system_error>

#include "jx/host.h"

namespace cli {

namespace {

struct ErrorRow {
  int error;
  JXStatus status;
};

constexpr auto kErrors = std::to_array<ErrorRow>({
    {ENOENT, JXWEM_E_NOTFOUND},
    {ENOTDIR, JXWEM_E_NOPATH},
    {EACCES, JXWEM_E_ACCESS},
    {EPERM, JXWEM_E_ACCESS},
    {EROFS, JXWEM_E_ACCESS},
    {EISDIR, JXWEM_E_OPENREFUSED},
    {ETXTBSY, JXWEM_E_INUSE},
    {EBUSY, JXWEM_E_INUSE},
    {EEXIST, JXWEM_E_EXISTS},
    {ENOSPC, JXWEM_E_DISKFULL},
    {EDQUOT, JXWEM_E_DISKFULL},
    {EFBIG, JXWEM_E_DISKFULL},
    {ENOMEM, JX_E_NOMEM},
    {EMFILE, JXELM_E_LIMIT},
    {ENFILE, JXELM_E_LIMIT},
    {ENAMETOOLONG, JXWEM_E_NAMETOOLONG},
});

}  // namespace

Failure system_failure(const std::string &path, int error) {
  const auto row = std::ranges::find(kErrors, error, &ErrorRow::error);
  if (row != kErrors.end()) return Failure(path, row->status);
  return Failure(path, JXWEM_E_SYSTEM, std::strerror(error));
}

Failure path_failure(const std::string &path, int error) {
  return error == ENOENT ? Failure(path, JXWEM_E_NOPATH) : system_failure(path, error);
}

Failure library_failure(const std::exception &error) {
  if (const auto *failed = dynamic_cast<const std::system_error *>(&error)) {
    return system_failure({}, failed->code().value());
  }
  const bool is_size = dynamic_cast<const std::length_error *>(&error);
  if (is_size || dynamic_cast<const std::bad_alloc *>(&error)) return Failure({}, JX_E_NOMEM);
  return Failure({}, JXWEM_E_FAILED);
}

}  // namespace cli
