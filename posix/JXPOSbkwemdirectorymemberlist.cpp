// The members of an open directory, as a linked list of records.
#include "posix/posix.hpp"

namespace {

class MemberList {
 public:
  MemberList(JXInstance *instance, JXDirectory *directory, JXPool *pool, uint32_t flags)
      : instance_(instance), directory_(directory), pool_(pool), flags_(flags) {}

  JXStatus read(jx::RecordList<JXMember> *records) const {
    const bool wants_paths = (flags_ & (JX_LIST_FULL_PATH | JX_LIST_INFORMATION)) != 0;
    const jx::Text given =
        wants_paths ? jx::Text{directory_->path, directory_->path_chars} : jx::Text{};
    const jx::MemberPaths paths(instance_, given);
    JXChar buffer[JX_NAME_MAX_CHARS];
    for (;;) {
      dirent64 entry;
      JXStatus status = next(&entry);
      if (status != JX_OK) return status == JXWEM_E_EOF ? JX_OK : status;
      jx::Text name = {buffer, 0};
      status =
          jx::decode_native(instance_, entry.d_name, skStrLen(entry.d_name), buffer, &name.chars);
      if (status == JX_OK) status = append(name, wants_paths ? &paths : nullptr, records);
      if (status != JX_OK) return status;
    }
  }

 private:
  JXStatus next(dirent64 *entry) const {
    const bool wants_all = (directory_->options & JX_DIRECTORY_ALL) != 0;
    auto *stream = static_cast<DIR *>(*directory_->stream_holder);
    for (;;) {
      const JXStatus status = jx::read_entry(stream, entry, instance_, instance_->journal);
      if (status != JX_OK || wants_all || entry->d_name[0] != '.') return status;
    }
  }

  JXStatus append(jx::Text name, const jx::MemberPaths *paths,
                  jx::RecordList<JXMember> *records) const {
    auto record = jx::PoolBlock<JXMember>::allocate(pool_, 1, JX_POOL_ZERO_FILL);
    if (!record) return JX_E_NOMEM;
    jx::PoolBlock<JXChar> record_name;
    uint32_t record_name_chars = name.chars;
    JXStatus status = JX_OK;
    if (paths) {
      status = paths->build(name, pool_, &record_name, &record_name_chars);
    } else {
      record_name = jx::copy_text(pool_, name);
      if (!record_name) status = JX_E_NOMEM;
    }
    if (status != JX_OK) return status;
    if ((flags_ & JX_LIST_INFORMATION) != 0) {
      record->information =
          instance_->info(instance_, pool_, record_name.get(), record_name_chars, &status);
      if (!record->information) return status;
    }
    record->name = record_name.release();
    record->name_chars = static_cast<int32_t>(record_name_chars);
    record->pool = pool_;
    records->append(record.release());
    return JX_OK;
  }

  JXInstance *instance_;
  JXDirectory *directory_;
  JXPool *pool_;
  uint32_t flags_;
};

}  // namespace

extern "C" JXStatus bkwemdirectorymemberlist(JXInstance *instance, JXDirectory *directory,
                                             JXPool *pool, uint32_t flags, JXMember **first_out,
                                             uint64_t *count_out) {
  if (!first_out || !count_out) return JXWEM_E_FAILED;
  *first_out = nullptr;
  *count_out = 0;
  if (!instance || !directory || !directory->stream_holder) return JXWEM_E_NOHANDLE;
  if (!pool) return JXWEM_E_FAILED;
  if (directory->path_chars > JX_NAME_MAX_CHARS) return JXWEM_E_NAMETOOLONG;
  jx::RecordList<JXMember> records;
  const JXStatus status = MemberList(instance, directory, pool, flags).read(&records);
  if (status == JX_OK) records.release(first_out, count_out);
  return status;
}
