// bkwemvec: fills the slots and the method vector of a file handle by record format and buffering.
// The one file that sees the routines of every layer.
#include <iterator>

#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "jx/exports/record.h"
#include "kernel/handle.hpp"

namespace {

// The routines that differ between handles.
struct RecordRoutines {
  JXReadSlot read;
  JXWriteSlot write;
  JXStatus (*flush)(JXFile *file);
};

// The three ways of transfer of one record format.
struct FormatRoutines {
  RecordRoutines direct;             // buffered = 0
  RecordRoutines buffered;           // buffered = 1
  RecordRoutines buffered_transfer;  // buffered = 1 with direct transfer
};

constexpr RecordRoutines kBufferedText = {skwem_read_var, skwem_write_var, skwem_flush};

// Text lines need the record buffer: skwem_open refuses direct transfer of them, and the third
// column repeats the second.
constexpr FormatRoutines kText = {
    {skwem_read_rvar, skwem_write_rvar, bkwem_flush}, kBufferedText, kBufferedText};
constexpr FormatRoutines kBinary = {{skwem_read_rbin, skwem_write_rbin, bkwem_flush},
                                    {skwem_read_bin, skwem_write_bin, skwem_flush},
                                    {skwem_read_rbin, skwem_write_rbin, skwem_flush}};
constexpr FormatRoutines kStream = {{skwem_read_rstream, skwem_write_rstream, bkwem_flush},
                                    {skwem_read_stream, skwem_write_stream, skwem_flush},
                                    {skwem_read_rstream, skwem_write_rstream, skwem_flush}};

// By record format; a null entry is a format that does not exist.
constexpr const FormatRoutines *kFormats[] = {&kText, &kBinary, nullptr, &kText, &kStream};

const RecordRoutines &routines_for(const FormatRoutines &format, const jx::FileHandle *handle) {
  if (handle->buffered == 0) return format.direct;
  const bool is_direct_transfer = handle->flags.has(JX_OPEN_DIRECT_TRANSFER);
  return is_direct_transfer ? format.buffered_transfer : format.buffered;
}

}  // namespace

extern "C" JXStatus bkwemvec(JXFile *file) {
  if (!file) return JXWEM_E_NOHANDLE;
  jx::FileHandle *handle = jx::handle_of(file);
  file->attach_journal = jxwemattachjnl;
  if (handle->record_format >= std::size(kFormats) || !kFormats[handle->record_format]) {
    return JXWEM_E_BADRECFORMAT;
  }
  const RecordRoutines &routines = routines_for(*kFormats[handle->record_format], handle);
  file->note = bkwem_note;
  file->point = bkwem_point;
  file->position_to_record = jxwemposition2record;
  file->record_to_position = jxwemrecord2position;
  file->position_to_byte = bkwemposition2byte;
  file->byte_to_position = bkwembyte2position;
  file->truncate = bkwemtruncate;
  file->read = routines.read;
  file->write = routines.write;
  file->flush = routines.flush;
  handle->methods = {
      .record_open = skwem_open,
      .record_close = skwem_close,
      .record_flush = routines.flush,
      .record_read = routines.read,
      .record_write = routines.write,
      .host_open = bkwem_open,
      .host_close = bkwem_close,
      .host_read = bkwem_read,
      .host_write = bkwem_write,
      .host_flush = bkwem_flush,
      .host_point = bkwem_point,
      .host_note = bkwem_note,
  };
  return JX_OK;
}
