// jxwemopen, the open slot: checks the options, builds the handle, opens the file, makes the
// transcoders.
#include <algorithm>
#include <iterator>

#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "kernel/handle.hpp"
#include "portable/portable.hpp"
#include "record/cut.hpp"

namespace {

using jx::FileHandle;

struct MarkRow {
  uint32_t encoding;
  uint32_t size;
  char bytes[5];  // with the zero of its literal
};

#define MARK_ROW(encoding, size, bytes) {encoding, size, bytes},
constexpr MarkRow kMarks[] = {JX_BYTE_ORDER_MARKS(MARK_ROW)};
#undef MARK_ROW

// Undoes a failed open. Once the file is open, close releases everything; before that, the parts go
// in reverse order, the pool last.
class OpenGuard {
 public:
  explicit OpenGuard(JXPool *pool) : pool_(pool) {}
  OpenGuard(const OpenGuard &) = delete;
  OpenGuard &operator=(const OpenGuard &) = delete;
  ~OpenGuard() {
    if (handle_ && handle_->host_file) {
      (void)pool_.release();
      jxwemclose(&handle_->head);
    } else if (handle_) {
      release_parts();
    }
  }

  FileHandle *allocate_handle() {
    handle_ = static_cast<FileHandle *>(
        pool_->pool_allocate(pool_.get(), sizeof(FileHandle), JX_POOL_ZERO_FILL));
    return handle_;
  }
  JXFile *release() {
    (void)pool_.release();
    return &std::exchange(handle_, nullptr)->head;
  }

 private:
  void release_parts() {
    const jx::PoolBlock<FileHandle> block(pool_.get(), handle_);
    const jx::PoolBlock<JXChar> name(handle_->working_pool, handle_->name);
    const jx::HostObject<JXLock> open_lock(handle_->open_lock);
  }

  jx::HostObject<JXPool> pool_;
  FileHandle *handle_ = nullptr;
};

// Gives the handle what it owns before any option is checked: tag, name, lock.
JXStatus prepare_handle(FileHandle *handle, JXInstance *instance, jx::Text name,
                        const JXOpenOptions &options, const char *caller_tag8) {
  std::copy_n(JX_EYE_CATCHER, sizeof handle->head.eye_catcher, handle->head.eye_catcher);
  if (!jx::copy_name8(handle->pool, caller_tag8, &handle->head.caller_tag)) return JX_E_NOMEM;
  handle->head.close = jxwemclose;
  handle->name = jx::PoolBlock<JXChar>::allocate(handle->pool, uint64_t{name.chars} + 1).release();
  if (!handle->name) return JX_E_NOMEM;
  handle->instance = instance;
  handle->journal = options.journal;
  JXHost *host = Exported_JXHandle;
  if (!host || !host->create_lock) return JXWEM_E_FAILED;
  handle->open_lock = host->create_lock(host, 0, 0, 0, "JXWEM Open lock");
  if (!handle->open_lock) return JXWEM_E_FAILED;
  std::copy_n(name.data, name.chars, handle->name);
  handle->name[name.chars] = 0;
  handle->name_chars = name.chars;
  return JX_OK;
}

// Checks and records the options in a fixed order, so that each mistake has its own status.
JXStatus record_options(FileHandle *handle, const JXOpenOptions &options) {
  if (options.access_mode > JX_ACCESS_UPDATE) return JXWEM_E_BADACCESS;
  handle->access.mode = options.access_mode;
  if (options.buffered > 1) return JXWEM_E_BADBUFFERING;
  handle->buffered = options.access_mode == JX_ACCESS_UPDATE ? 0 : options.buffered;
  handle->record_length = options.record_length;
  if (options.record_format > JX_FORMAT_STREAM) return JXWEM_E_BADRECFORMAT;
  handle->record_format = options.record_format;
  if (options.reserved_switch > 1) return JXWEM_E_BADSWITCH;
  handle->reserved_switch = options.reserved_switch;
  if (options.lock_mode > JX_LOCK_WAIT) return JXWEM_E_BADLOCKMODE;
  handle->lock_mode = options.lock_mode;
  handle->user.count =
      static_cast<uint32_t>(std::clamp<int32_t>(options.user_value_count, 0, JX_USER_VALUE_COUNT));
  std::copy_n(options.user_values, handle->user.count, handle->user.values);
  handle->flags.bits = options.open_flags;
  return JX_OK;
}

// Resolves the encodings; bytes have none.
void record_encodings(FileHandle *handle, const JXOpenOptions &options) {
  if (handle->record_format == JX_FORMAT_BINARY) return;
  const bool is_stream = handle->record_format == JX_FORMAT_STREAM;
  const uint32_t default_record = is_stream ? JX_ENCODING_NATIVE : JX_ENCODING_UTF32LE;
  handle->encodings.file = options.file_encoding ? options.file_encoding : JX_ENCODING_NATIVE;
  handle->encodings.record = options.record_encoding ? options.record_encoding : default_record;
}

// Arms the byte-order mark of the file's encoding, or clears a flag that has nothing to forbid.
void record_byte_order_mark(FileHandle *handle) {
  const auto *row = std::ranges::find(kMarks, handle->encodings.file, &MarkRow::encoding);
  if (row == std::end(kMarks)) {
    handle->flags.bits &= ~JX_OPEN_NO_BOM;
    return;
  }
  std::copy_n(row->bytes, row->size, handle->mark.bytes);
  handle->mark.size = row->size;
  handle->mark.is_pending = 1;
}

void fill_attributes(const FileHandle *handle, JXFileAttributes *attributes) {
  std::copy_n(handle->name, handle->name_chars, attributes->name);
  attributes->name_chars = handle->name_chars;
  attributes->access_mode = handle->access.mode;
  attributes->buffered = handle->buffered;
  attributes->record_length = handle->record_length;
  attributes->record_format = handle->record_format;
  attributes->reserved_switch = handle->reserved_switch;
  attributes->lock_mode = handle->lock_mode;
  std::copy_n(handle->user.values, JX_USER_VALUE_COUNT, attributes->user_values);
  attributes->user_value_count = handle->user.count;
}

// Raises the transcode buffer's size to hold a record of an encoding, with its line end.
JXStatus make_room_for(const FileHandle *handle, uint32_t encoding, uint64_t *buffer_bytes) {
  JXEncodingInfo info{};
  const JXStatus status = handle->nls->encoding_info(handle->nls, encoding, &info);
  if (status != JX_OK) return status;
  if (info.max_bytes_per_char < 0) return JXWEM_E_FAILED;
  const uint64_t chars = uint64_t{handle->record_length} + handle->control_extra_bytes;
  const auto max_bytes = static_cast<uint64_t>(info.max_bytes_per_char);
  *buffer_bytes = std::max(*buffer_bytes, chars * max_bytes);
  return JX_OK;
}

// Makes the transcoders that the access mode needs and the buffer they work into.
JXStatus make_transcoders(FileHandle *handle, const JXOpenOptions &options, JXOwner owner) {
  if (!handle->encodings.differ()) return JX_OK;
  JXNls *nls = handle->nls;
  const bool reads = handle->access.can_read();
  const bool is_conversion_needed =
      nls->needs_conversion(nls, options.file_encoding, options.record_encoding) != 0;
  uint64_t buffer_bytes = 0;
  if (reads && is_conversion_needed) {
    handle->read_transcoder =
        nls->create_transcoder(nls, handle->encodings.file, handle->encodings.record, 0, owner);
    if (!handle->read_transcoder) return JXWEM_E_FAILED;
    handle->read_held.form = jx::form_of(handle->encodings.file);
    const JXStatus status = make_room_for(handle, handle->encodings.record, &buffer_bytes);
    if (status != JX_OK) return status;
  }
  // Direct transfer reads the file's bytes into the same buffer.
  const bool reads_into_buffer = handle->access.mode == JX_ACCESS_INPUT &&
                                 handle->flags.has(JX_OPEN_DIRECT_TRANSFER) &&
                                 handle->read_transcoder;
  const bool writes = handle->access.can_write();
  if (writes) {
    handle->write_transcoder =
        nls->create_transcoder(nls, handle->encodings.record, handle->encodings.file, 0, owner);
    if (!handle->write_transcoder) return JXWEM_E_FAILED;
    handle->write_held.form = jx::form_of(handle->encodings.record);
  }
  if (writes || reads_into_buffer) {
    const JXStatus status = make_room_for(handle, handle->encodings.file, &buffer_bytes);
    if (status != JX_OK) return status;
  }
  if (buffer_bytes == 0) return JX_OK;
  handle->transcode_buffer.data =
      jx::PoolBlock<uint8_t>::allocate(handle->pool, buffer_bytes).release();
  if (!handle->transcode_buffer.data) return JX_E_NOMEM;
  handle->transcode_buffer.size_bytes = static_cast<uint32_t>(buffer_bytes);
  return JX_OK;
}

JXStatus open_handle(FileHandle *handle, JXInstance *instance, jx::Text name,
                     const JXOpenOptions &options, JXOwner owner, const char *caller_tag8) {
  JXStatus status = prepare_handle(handle, instance, name, options, caller_tag8);
  if (status != JX_OK) return status;
  status = record_options(handle, options);
  if (status != JX_OK) return status;
  record_encodings(handle, options);
  handle->nls = instance->nls;
  record_byte_order_mark(handle);
  status = bkwemvec(&handle->head);
  if (status != JX_OK) return status;
  status = handle->methods.record_open(&handle->head);
  if (status != JX_OK) return status;
  fill_attributes(handle, &handle->head.attributes);
  return make_transcoders(handle, options, owner);
}

}  // namespace

extern "C" JXFile *jxwemopen(JXInstance *instance, const JXChar *name, uint32_t name_chars,
                             const JXOpenOptions *options, uint32_t, JXOwner owner,
                             const char *caller_tag8, JXStatus *status_out) {
  if (!status_out) return nullptr;
  *status_out = JX_OK;
  if (!name || name_chars == 0 || !options) return nullptr;
  if (!instance) {
    *status_out = JXWEM_E_NOHANDLE;
    return nullptr;
  }
  if (name_chars > JX_NAME_MAX_CHARS) {
    *status_out = JXWEM_E_NAMETOOLONG;
    return nullptr;
  }
  JXHost *host = instance->pool_host;
  JXPool *pool = host->create_pool(host, 0, 0, 0, owner, "jxwem%d");
  if (!pool) {
    *status_out = JX_E_NOMEM;
    return nullptr;
  }
  OpenGuard guard(pool);
  FileHandle *handle = guard.allocate_handle();
  if (!handle) {
    *status_out = JX_E_NOMEM;
    return nullptr;
  }
  handle->pool = pool;
  handle->working_pool = pool;
  *status_out = open_handle(handle, instance, {name, name_chars}, *options, owner, caller_tag8);
  return *status_out == JX_OK ? guard.release() : nullptr;
}
