// System errors and exceptions of the library in the terms of the module.
#include "cli/failure.hpp"

#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <system_error>

#include "jx/host.h"

namespace cli {

Failure system_failure(const std::string &path, int error) {
  switch (error) {
    case ENOENT:
      return Failure(path, JXWEM_E_NOTFOUND);
    case ENOTDIR:
      return Failure(path, JXWEM_E_NOPATH);
    case EACCES:
    case EPERM:
    case EROFS:
      return Failure(path, JXWEM_E_ACCESS);
    case EEXIST:
      return Failure(path, JXWEM_E_EXISTS);
    case ENAMETOOLONG:
      return Failure(path, JXWEM_E_NAMETOOLONG);
    case ENOSPC:
    case EDQUOT:
      return Failure(path, JXWEM_E_DISKFULL);
    case ENOMEM:
      return Failure(path, JX_E_NOMEM);
    case EMFILE:
    case ENFILE:
      return Failure(path, JXELM_E_LIMIT);
    default:
      return Failure(path, JXWEM_E_SYSTEM, std::strerror(error));
  }
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
