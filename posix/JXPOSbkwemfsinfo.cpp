// bkwemfsinfo: information about the file system that holds a name, as records.
#include <sys/statvfs.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "posix/errno_map.hpp"
#include "posix/path.hpp"
#include "posix/results.hpp"

namespace {

constexpr JXChar kSpaceName[] = {'F', 'R', 'E', 'E', 'S', 'P', 'A', 'C', 'E', 0};
constexpr JXChar kIdName[] = {'F', 'I', 'L', 'E', 'S', 'Y', 'S', 'I', 'D', 0};
constexpr uint32_t kItemCount = 2;

constexpr jx::ErrnoRow kStatfsRows[] = {{ENOENT, JXWEM_E_NOTFOUND},
                                        {EACCES, JXWEM_E_ACCESS},
                                        {ENOTDIR, JXWEM_E_NOTFOUND},
                                        {ENAMETOOLONG, JXWEM_E_NAMETOOLONG},
                                        {ENOLINK, JXWEM_E_NOTFOUND}};
constexpr jx::ErrnoMap kStatfsErrors = {kStatfsRows};

JXStatus make_items(const struct statvfs64 &info, jx::InfoItems *items) {
  JXStatus status = items->reserve(kItemCount);
  if (status != JX_OK) return status;
  const uint64_t unit_bytes = info.f_frsize != 0 ? info.f_frsize : info.f_bsize;
  JXInfoValue value = {.bytes = uint64_t{info.f_bavail} * unit_bytes};
  status = items->add(JX_ITEM_FREESPACE, 0, kSpaceName, value);
  if (status != JX_OK) return status;
  value = {.bytes = static_cast<uint32_t>(info.f_fsid)};
  return items->add(JX_ITEM_FILESYSID, 0, kIdName, value);
}

}  // namespace

extern "C" JXStatus bkwemfsinfo(JXInstance *instance, const JXChar *name, uint32_t name_chars,
                                JXInfoItem ***items_out, uint32_t *count_out) {
  if (!items_out || !count_out) return JXWEM_E_FAILED;
  *items_out = nullptr;
  *count_out = 0;
  if (!name) return JXWEM_E_FAILED;
  if (!instance) return JXWEM_E_NOHANDLE;
  jx::SystemPath path;
  JXStatus status = path.prepare(instance, name, name_chars);
  if (status != JX_OK) return status;
  struct statvfs64 info;
  if (statvfs64(path.native(), &info) != 0) {
    return jx::status_of_errno(kStatfsErrors, errno, instance, instance->journal);
  }
  jx::InfoItems items(instance->pool);
  status = make_items(info, &items);
  if (status == JX_OK) items.release(items_out, count_out);
  return status;
}
