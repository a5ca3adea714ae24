// bkweminfo: information about a file, as records.
#include <sys/stat.h>

#include <cerrno>

#include "jx/exports/posix.h"
#include "posix/errno_map.hpp"
#include "posix/path.hpp"
#include "posix/results.hpp"

namespace {

constexpr JXChar kSizeName[] = {'F', 'I', 'L', 'E', 'S', 'I', 'Z', 'E', 0};
constexpr JXChar kTimeName[] = {'M', 'O', 'D', 'T', 'I', 'M', 'E', 0};
constexpr JXChar kKindName[] = {'I', 'S', 'D', 'I', 'R', 0};
constexpr uint32_t kItemCount = 3;

JXStatus make_items(const jx::FileFacts &facts, jx::InfoItems *items) {
  JXStatus status = items->reserve(kItemCount);
  if (status != JX_OK) return status;
  JXInfoValue value = {.bytes = facts.size_bytes};
  status = items->add(JX_ITEM_FILESIZE, JX_KIND_FILESIZE, kSizeName, value);
  if (status != JX_OK) return status;
  value = {.time = facts.modified};
  status = items->add(JX_ITEM_MODTIME, JX_KIND_MODTIME, kTimeName, value);
  if (status != JX_OK) return status;
  // By the wider member, so that the half after the word is 0 as well.
  value = {.bytes = facts.is_dir ? 1u : 0u};
  return items->add(JX_ITEM_ISDIR, JX_KIND_ISDIR, kKindName, value);
}

}  // namespace

extern "C" JXStatus bkweminfo(JXInstance *instance, JXPool *pool, const JXChar *name,
                              uint32_t name_chars, JXInfoItem ***items_out, uint32_t *count_out) {
  if (!items_out || !count_out) return JXWEM_E_FAILED;
  *items_out = nullptr;
  *count_out = 0;
  if (!pool || !name) return JXWEM_E_FAILED;
  if (!instance) return JXWEM_E_NOHANDLE;
  jx::SystemPath path;
  JXStatus status = path.prepare(instance, {name, name_chars}, pool);
  if (status != JX_OK) return status;
  struct stat64 info;
  if (stat64(path.native(), &info) != 0) {
    return jx::status_of_errno(jx::kStatErrors, errno, instance, instance->journal);
  }
  jx::InfoItems items(pool);
  status = make_items(jx::facts_of(info, jx::time_zone_seconds()), &items);
  if (status == JX_OK) items.release(items_out, count_out);
  return status;
}
