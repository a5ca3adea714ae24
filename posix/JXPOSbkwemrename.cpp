// bkwemrename, the rename slot.
#include <cerrno>
#include <cstdio>

#include "jx/exports/posix.h"
#include "posix/errno_map.hpp"
#include "posix/path.hpp"

namespace {

constexpr jx::ErrnoRow kRenameRows[] = {{EPERM, JXWEM_E_ACCESS},
                                        {ENOMEM, JX_E_NOMEM},
                                        {EACCES, JXWEM_E_ACCESS},
                                        {ENOSPC, JXWEM_E_DISKFULL},
                                        {EROFS, JXWEM_E_ACCESS}};
constexpr jx::ErrnoMap kRenameErrors = {kRenameRows};

}  // namespace

extern "C" JXStatus bkwemrename(JXInstance *instance, const JXChar *old_path, uint32_t old_chars,
                                const JXChar *new_path, uint32_t new_chars) {
  if (!instance) return JXWEM_E_NOHANDLE;
  if (!old_path || old_chars == 0 || !new_path || new_chars == 0) return JXWEM_E_BADNAME;
  jx::SystemPath from;
  JXStatus status = from.prepare(instance, old_path, old_chars);
  if (status != JX_OK) return status;
  jx::SystemPath to;
  status = to.prepare(instance, new_path, new_chars);
  if (status != JX_OK) return status;
  if (std::rename(from.native(), to.native()) == 0) return JX_OK;
  return jx::status_of_errno(kRenameErrors, errno, instance, instance->journal);
}
