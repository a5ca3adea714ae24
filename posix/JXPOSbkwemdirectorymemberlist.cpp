// bkwemdirectorymemberlist: the members of an open directory as a linked list of records.
#include "jx/exports/posix.h"
#include "jx/runtime.h"
#include "posix/directory_stream.hpp"
#include "posix/member_paths.hpp"
#include "posix/results.hpp"

namespace {

class MemberList {
 public:
  MemberList(JXInstance *instance, JXDirectory *directory, JXPool *pool, uint32_t flags)
      : instance_(instance), directory_(directory), pool_(pool), flags_(flags) {}

  JXStatus read(jx::RecordList<JXMember> *records) {
    const bool wants_paths = (flags_ & (JX_LIST_FULL_PATH | JX_LIST_INFORMATION)) != 0;
    const jx::Text given =
        wants_paths ? jx::Text{directory_->path, directory_->path_chars} : jx::Text{};
    const jx::MemberPaths paths(instance_, given);
    JXChar buffer[JX_NAME_MAX_CHARS];
    while (!is_ended_) {
      dirent64 entry __attribute__((uninitialized));
      JXStatus status = next(&entry);
      if (status != JX_OK) return status == JXWEM_E_EOF ? JX_OK : status;
      jx::Text name = {buffer, 0};
      status =
          jx::decode_native(instance_, entry.d_name, skStrLen(entry.d_name), buffer, &name.chars);
      if (status == JX_OK) status = append(name, wants_paths ? &paths : nullptr, records);
      if (status != JX_OK) return status;
    }
    return JX_OK;
  }

 private:
  JXStatus next(dirent64 *entry) const {
    const bool wants_all = (directory_->options & JX_DIRECTORY_OPEN_ALL) != 0;
    for (;;) {
      const JXStatus status =
          jx::read_entry(jx::stream_of(directory_), entry, instance_, instance_->journal);
      if (status != JX_OK || wants_all || entry->d_name[0] != '.') return status;
    }
  }

  JXStatus append(jx::Text name, const jx::MemberPaths *paths, jx::RecordList<JXMember> *records) {
    auto record = jx::PoolBlock<JXMember>::allocate(pool_, 1, JX_POOL_ZERO_FILL);
    if (!record) return JX_E_NOMEM;
    jx::OwnedPath path;
    JXStatus status = JX_OK;
    if (paths) {
      status = paths->build(name, pool_, &path);
    } else {
      path = {jx::copy_text(pool_, name), name.chars};
      if (!path.block) status = JX_E_NOMEM;
    }
    if (status != JX_OK) return status;
    if ((flags_ & JX_LIST_INFORMATION) != 0) {
      record->information =
          instance_->info(instance_, pool_, path.block.get(), path.chars, &status);
      // Without a table the list ends here, even when the status is 0: it is good so far.
      is_ended_ = !record->information;
      if (is_ended_) return status;
    }
    record->name = path.block.release();
    record->name_chars = static_cast<int32_t>(path.chars);
    record->pool = pool_;
    records->append(record.release());
    return JX_OK;
  }

  JXInstance *instance_;
  JXDirectory *directory_;
  JXPool *pool_;
  uint32_t flags_;
  bool is_ended_ = false;
};

}  // namespace

extern "C" JXStatus bkwemdirectorymemberlist(JXInstance *instance, JXDirectory *directory,
                                             JXPool *pool, uint32_t flags, JXMember **first_out,
                                             uint64_t *count_out) {
  jx::clear_results(first_out, count_out);
  if (!instance || !directory || !jx::stream_of(directory)) return JXWEM_E_NOHANDLE;
  if (!first_out || !count_out || !pool) return JXWEM_E_FAILED;
  if (directory->path_chars > JX_NAME_MAX_CHARS) return JXWEM_E_NAMETOOLONG;
  jx::RecordList<JXMember> records;
  const JXStatus status = MemberList(instance, directory, pool, flags).read(&records);
  if (status == JX_OK) records.release(first_out, count_out);
  return status;
}
