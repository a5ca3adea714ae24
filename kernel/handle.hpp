// The whole file handle: the public head and, behind it, what open, the record layer and the host
// file access share. The order of the fields is part of the contract with hosts.
#pragma once

#include "jx/module.h"
#include "kernel/owners.hpp"
#include "kernel/text.hpp"

namespace jx {

// What the host file access keeps for an open file; a block of the handle's pool.
struct HostFile {
  int32_t descriptor;     // POSIX file descriptor, owned by open_file
  JXOpenFile *open_file;  // what "jxelm" opened
};

// A control string in the file's encoding.
struct ControlCopy {
  uint8_t *text;   // block of the handle's pool, or null
  uint32_t bytes;  // size of text
};

// The routines of a handle, by layer. Record routines reach the file only through the host slots.
struct MethodVector {
  JXStatus (*record_open)(JXFile *file);
  JXStatus (*record_close)(JXFile *file);
  JXStatus (*record_flush)(JXFile *file);
  JXReadSlot record_read;
  JXWriteSlot record_write;
  JXStatus (*host_open)(JXFile *file);
  JXStatus (*host_close)(JXFile *file);
  JXStatus (*host_read)(JXFile *file, void *destination, uint32_t bytes, uint32_t *bytes_out,
                        const int64_t *offset);
  JXStatus (*host_write)(JXFile *file, const void *source, uint32_t bytes, uint32_t *bytes_out,
                         const int64_t *offset);
  JXStatus (*host_flush)(JXFile *file);
  JXStatus (*host_point)(JXFile *file, int64_t *offset, uint32_t mode);
  JXStatus (*host_note)(JXFile *file, int64_t *offset_out);
};

inline constexpr uint32_t kOutboundCount = 9;  // control strings of a group that are written
inline constexpr uint32_t kInboundCount = 3;   // control strings of a group that are recognised

// How text tells where its characters end. The last two know only by asking the host, with the
// transcoder itself: of the one it is not known yet whether a byte of it is a character.
enum class TextForm : uint8_t { single_byte, utf8, utf16be, utf16le, utf32, other, several_bytes };

// The start of a character at the end of the text that a transcoder was given, which the transcoder
// holds until the rest comes.
struct HeldStart {
  TextForm form;     // of the text
  uint8_t count;     // of bytes held; 0: none. 1 stands for "perhaps" where the form does not tell
  uint8_t is_stale;  // 1: nothing may follow it any more; it is dropped before other text comes
  uint8_t bytes[3];  // the bytes, where the form tells them
};

// What is held belongs to a position that was left, or to a call that failed.
inline void leave_held(HeldStart *held) { held->is_stale = held->count != 0; }

struct FileHandle {
  JXFile head;                                // what the host sees
  JXInstance *instance;                       // opened through
  HostFile *host_file;                        // not null: the file is open
  JXPool *pool;                               // "jxwem%d"; holds the handle itself
  JXPool *working_pool;                       // the same pool
  JXJournal *journal;                         // where system errors go, or null
  JXLock *open_lock;                          // guards the store of journal
  JXChar *name;                               // block of name_chars + 1
  uint32_t name_chars;                        // length of name
  uint32_t access_mode;                       // JX_ACCESS_*
  uint32_t buffered;                          // 0 in update mode
  uint32_t record_length;                     // longest record, as in JXOpenOptions
  uint32_t record_format;                     // JX_FORMAT_*
  uint32_t reserved_switch;                   // reported back
  uint32_t lock_mode;                         // JX_LOCK_*
  uint32_t user_values[JX_USER_VALUE_COUNT];  // reported back
  uint32_t user_value_count;                  // 0 to 32
  uint32_t file_encoding;                     // resolved; 0 for binary records
  uint32_t record_encoding;                   // resolved; 0 for binary records
  uint32_t open_flags;                        // JX_OPEN_*
  uint8_t *record_buffer;                     // block of the pool, null with direct transfer
  uint32_t record_buffer_bytes;               // its size
  uint32_t block_bytes;                       // 8192
  uint32_t buffer_count;                 // input: unread bytes; output: free bytes in the block
  uint32_t buffer_offset;                // input: of the first unread byte; output: bytes placed
  uint32_t control_group;                // 1 or 2
  uint32_t control_extra_bytes;          // longest control string, slack of buffer sizes
  uint32_t end_seen;                     // a host read reported end of file
  uint64_t tracked_position;             // file offset kept by the direct text routines
  ControlCopy outbound[kOutboundCount];  // in the file's encoding
  ControlCopy inbound[kInboundCount];    // LF, FF, CR in the file's encoding
  uint8_t *transcode_buffer;             // block of the pool, or null
  uint32_t transcode_buffer_bytes;       // its size
  JXNls *nls;                            // of the instance
  JXTranscoder *read_transcoder;         // file to record encoding, or null
  JXTranscoder *write_transcoder;        // record to file encoding, or null
  uint8_t bom[4];                        // byte-order mark of the file's encoding
  uint32_t bom_bytes;                    // 0, 2, 3 or 4
  uint8_t bom_pending;                   // 1: to be written before the next data
  MethodVector methods;                  // the routines of this handle
  HeldStart read_held;                   // by the read transcoder; from here on private
  HeldStart write_held;                  // by the write transcoder
};

// The handle behind the pointer that the host holds.
inline FileHandle *handle_of(JXFile *file) { return reinterpret_cast<FileHandle *>(file); }
inline const FileHandle *handle_of(const JXFile *file) {
  return reinterpret_cast<const FileHandle *>(file);
}

}  // namespace jx
