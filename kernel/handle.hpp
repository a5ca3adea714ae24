// The whole file handle: the public head, then the parts that open, the record layer and the host
// file access share. The order of the fields is part of the contract with hosts; kernel/layout.cpp
// checks it.
#pragma once

#include <cstdint>
#include <cstring>

#include "jx/module.h"
#include "kernel/long_runs.hpp"
#include "kernel/owners.hpp"
#include "kernel/text.hpp"

namespace jx {

// What the host file access keeps for an open file; a block of the handle's pool.
struct HostFile {
  int32_t descriptor;     // POSIX file descriptor, owned by open_file
  JXOpenFile *open_file;  // the file as "jxelm" opened it
};

// Which way records go.
struct Access {
  uint32_t mode;  // JX_ACCESS_*

  bool can_read() const { return mode == JX_ACCESS_INPUT || mode == JX_ACCESS_UPDATE; }
  bool can_write() const { return mode != JX_ACCESS_INPUT; }
};

// The caller's own values, reported back.
struct UserValues {
  uint32_t values[JX_USER_VALUE_COUNT];
  uint32_t count;  // 0 to JX_USER_VALUE_COUNT
};

// Encoding numbers, resolved; both 0 for binary records.
struct Encodings {
  uint32_t file;
  uint32_t record;

  bool differ() const { return file != record; }
};

// The switches of an open.
struct OpenFlags {
  uint32_t bits;  // JX_OPEN_*

  bool has(uint32_t flag) const { return (bits & flag) != 0; }
};

// The memory between the file and the records. Of an input handle it holds bytes that were read
// ahead, of a buffered writer the block that is being filled, of a direct handle one record.
struct RecordBuffer {
  uint8_t *data;         // block of the handle's pool, null with direct transfer
  uint32_t size_bytes;   // of data
  uint32_t block_bytes;  // JX_RECORD_BLOCK_BYTES, one transfer
  union {
    uint32_t unread_bytes;  // input: read ahead
    uint32_t free_bytes;    // output: room left in the block
  };
  union {
    uint32_t unread_offset;  // input: of the first unread byte
    uint32_t used_bytes;     // output: appended to the block
  };

  // Input: the first unread byte.
  uint8_t *unread() const { return data + unread_offset; }
  // Input: takes bytes off the front of the unread ones.
  void consume(uint32_t bytes) {
    unread_offset += bytes;
    unread_bytes -= bytes;
  }
  // Output: where the next bytes go.
  uint8_t *end() const { return data + used_bytes; }
  // Output: counts bytes that were copied to end().
  void append(uint32_t bytes) {
    used_bytes += bytes;
    free_bytes -= bytes;
  }
  // Output: begins an empty block.
  void clear_block() {
    used_bytes = 0;
    free_bytes = block_bytes;
  }
};

// A control string in the file's encoding.
struct ControlCopy {
  uint8_t *text;   // block of the handle's pool, or null
  uint32_t bytes;  // size of text
};

inline constexpr uint32_t kOutboundCount = 9;  // control strings of a group that are written
inline constexpr uint32_t kInboundCount = 3;   // control strings of a group that are recognised

// The control strings that records need, by their index in a group.
inline constexpr uint32_t kLineEnd = 0;         // outbound: written after a record
inline constexpr uint32_t kLineFeed = 0;        // inbound: ends a record
inline constexpr uint32_t kCarriageReturn = 2;  // inbound: dropped before the line feed

// The control strings of a handle. A direction that the access mode does not use has none.
struct ControlStrings {
  ControlCopy outbound[kOutboundCount];
  ControlCopy inbound[kInboundCount];

  const ControlCopy &line_end() const { return outbound[kLineEnd]; }
  const ControlCopy &line_feed() const { return inbound[kLineFeed]; }
  const ControlCopy &carriage_return() const { return inbound[kCarriageReturn]; }
};

// The memory that transcoders write into.
struct TranscodeBuffer {
  uint8_t *data;        // block of the handle's pool, or null
  uint32_t size_bytes;  // of data
};

// The byte-order mark of the file's encoding.
struct ByteOrderMark {
  uint8_t bytes[4];
  uint32_t size;       // of the mark in bytes: 2, 3 or 4; 0: the encoding has none
  uint8_t is_pending;  // 1: due before the next data

  // Tells whether bytes begin with the mark.
  bool begins(const uint8_t *data, uint32_t count) const {
    return size != 0 && count >= size && std::memcmp(data, bytes, size) == 0;
  }
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

// How text tells where its characters end. The last two do not tell; the transcoder has to be
// asked. "other" becomes single_byte or several_bytes once the host has described the encoding.
enum class TextForm : uint8_t { single_byte, utf8, utf16be, utf16le, utf32, other, several_bytes };

// The start of a character at the end of the text that a transcoder was given, which the transcoder
// holds until the rest comes.
struct HeldStart {
  TextForm form;     // of the text
  uint8_t count;     // bytes held; 0: none. 1 means "perhaps" where the form does not tell
  uint8_t is_stale;  // 1: nothing may follow it any more; it is dropped before other text comes
  uint8_t bytes[3];  // the bytes, where the form tells them

  // The position was left, or a call failed: nothing may follow what is held.
  void leave() { is_stale = count != 0; }
};

// Line feeds that a buffered reader has found ahead of the lines it delivers. Offsets are those of
// the record buffer; with another first unread byte than expected they say nothing.
struct LineFeeds {
  uint32_t unread_offset;  // of the record buffer, as the last line left it
  uint32_t next;           // index of the first one that is unread
  uint32_t count;          // noted: the unread ones are before it
  uint32_t searched_end;   // all before it that are unread are noted
  uint16_t mark_byte;      // the first byte of a byte-order mark; none: more than a byte
  uint8_t carriage_return;
  uint32_t offsets[kPlacesRoom];

  void forget() { next = count = searched_end = 0; }
};

struct FileHandle {
  JXFile head;  // public; ends with the attributes

  // Set by open for the life of the handle; host_file also by the host file access.
  JXInstance *instance;      // opened through
  HostFile *host_file;       // not null: the file is open
  JXPool *pool;              // "jxwem%d"; holds the handle itself
  JXPool *working_pool;      // the same pool
  JXJournal *journal;        // receives system errors, or null; replaced by attach_journal
  JXLock *open_lock;         // held while journal is replaced
  JXChar *name;              // block of name_chars + 1
  uint32_t name_chars;       // length of name
  Access access;             // as asked for
  uint32_t buffered;         // 0: direct; always 0 in update mode
  uint32_t record_length;    // longest record, as in JXOpenOptions
  uint32_t record_format;    // JX_FORMAT_*
  uint32_t reserved_switch;  // reported back
  uint32_t lock_mode;        // JX_LOCK_*
  UserValues user;           // reported back
  Encodings encodings;       // of the file and of its records
  OpenFlags flags;           // as asked for

  // The record layer's: no other layer writes these.
  RecordBuffer buffer;           // read ahead, or gathered
  uint32_t control_group;        // 1 or 2
  uint32_t control_extra_bytes;  // longest control string, slack of buffer sizes
  uint32_t end_seen;             // 1: a host read reported the end of the file
  uint64_t tracked_position;     // file offset kept by the direct text routines
  ControlStrings controls;       // in the file's encoding

  // Set by open for the record layer, which only reads them; of the mark it sets is_pending.
  TranscodeBuffer transcode_buffer;  // large enough for one record with its line end
  JXNls *nls;                        // of the instance
  JXTranscoder *read_transcoder;     // file to record encoding, or null
  JXTranscoder *write_transcoder;    // record to file encoding, or null
  ByteOrderMark mark;                // of the file's encoding
  MethodVector methods;              // filled by bkwemvec

  // The record layer's, and not part of the contract; open sets the forms.
  HeldStart read_held;   // by the read transcoder
  HeldStart write_held;  // by the write transcoder
  LineFeeds line_feeds;

  // True when the caller lets byte-order marks be written.
  bool may_write_mark() const { return !flags.has(JX_OPEN_NO_BOM); }
  // True when a byte-order mark is due before the next data at the descriptor's offset.
  bool owes_mark() const { return mark.is_pending != 0 && may_write_mark(); }
  // Keeps the record layer's state in step when the descriptor is moved to an offset (-1: the move
  // failed): the mark is due at the start of the file only, and no character goes on from there.
  void moved_to(int64_t offset) {
    mark.is_pending = offset == 0 && may_write_mark();
    tracked_position = static_cast<uint64_t>(offset);
    read_held.leave();
    write_held.leave();
  }
};

// The handle of the pointer that the host holds: both have one address.
inline FileHandle *handle_of(JXFile *file) { return reinterpret_cast<FileHandle *>(file); }
inline const FileHandle *handle_of(const JXFile *file) {
  return reinterpret_cast<const FileHandle *>(file);
}

}  // namespace jx
