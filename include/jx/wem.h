/* The file-access module: the extension instance with its operation table, file and directory
   handles, the records it hands out, and every routine it exports by name. A host loads the
   module, calls jxextent and jxwem, and works through the tables from then on.

   Text is JXChars with a length in JXChars and is never terminated. A null instance or handle is
   answered with JXWEM_E_NOHANDLE. Out of memory is JX_E_NOMEM everywhere. */
#ifndef JX_WEM_H
#define JX_WEM_H

#include "jx/base.h"
#include "jx/host.h"

JX_EXTERN_C_BEGIN

typedef struct JXInstance JXInstance;
typedef struct JXFile JXFile;
typedef struct JXDirectory JXDirectory;
typedef struct JXOpenOptions JXOpenOptions;
typedef struct JXFileAttributes JXFileAttributes;
typedef struct JXInfoItem JXInfoItem;
typedef struct JXMember JXMember;
typedef struct JXDirectoryEntry JXDirectoryEntry;
typedef struct JXCreateName JXCreateName;

#define JX_EYE_CATCHER "nevo"       /* the first four bytes of instances and handles */
#define JX_NAME_MAX_CHARS 1024      /* the longest name or path, in JXChars */
#define JX_USER_VALUE_COUNT 32      /* user values of a file */
#define JX_HOST_NAME_CHARS 30       /* room for the host name in an instance */
#define JX_RECORD_BLOCK_BYTES 8192u /* unit of buffered transfer */

/* ---- Open options ------------------------------------------------------------------------- */

/* Append looks for the end once, at the open: what another opening writes afterwards is
   overwritten, so two appenders need the lock. */
#define JX_ACCESS_APPEND 0u /* write at the end; created if missing */
#define JX_ACCESS_INPUT 1u  /* read */
#define JX_ACCESS_OUTPUT 2u /* write; created, emptied */
#define JX_ACCESS_UPDATE 3u /* read and write; created if missing; always direct */

/* A read of text lines or of stream records passes over a byte-order mark of the file's encoding
   that it begins with, wherever in the file that is. Output in UTF-8, UTF-16 and UTF-32 begins with
   one unless JX_OPEN_NO_BOM forbids it. Every open for writing makes the mark due, append and
   update too, and a read of an update handle leaves it due: the first write after it places the
   mark where the descriptor stands, in the middle of the file. Only point, and the step back of a
   direct reader of text lines, settle it: due at offset 0, not elsewhere. */
#define JX_FORMAT_VARIABLE 0u   /* text lines */
#define JX_FORMAT_BINARY 1u     /* bytes as they are */
#define JX_FORMAT_VARIABLE_3 3u /* text lines, second number */
#define JX_FORMAT_STREAM 4u     /* text without line ends */
/* A lock ends with the close. A child that the process forks meanwhile has a copy of the descriptor
   and keeps the lock until it closes that, ends, or runs another program. */
#define JX_LOCK_DEFAULT 0u   /* shared for input, exclusive for the other access modes */
#define JX_LOCK_NONE 1u      /* no lock */
#define JX_LOCK_SHARED 2u    /* shared */
#define JX_LOCK_EXCLUSIVE 3u /* exclusive */
#define JX_LOCK_WAIT 4u      /* the default lock, waited for */

#define JX_OPEN_DIRECT_TRANSFER 0x1u /* binary and stream: no record buffer, even when buffered */
#define JX_OPEN_LITERAL_NAME 0x2u    /* the name is used as it is, without path expansion */
#define JX_OPEN_NO_BOM 0x4u          /* no byte-order mark is written */

/* What the caller asks of open. Filled by the caller, read during the call only. The record length
   counts bytes of the file; a direct write of text lines that converts counts characters. */
struct JXOpenOptions {
  uint32_t leading[8];                       /* not read */
  uint32_t access_mode;                      /* JX_ACCESS_* */
  uint32_t buffered;                         /* 1: through the record buffer; 0: direct */
  uint32_t record_length;                    /* the longest record */
  uint32_t not_read;                         /* not read; reported back as 0 */
  uint32_t record_format;                    /* JX_FORMAT_* */
  uint32_t reserved_switch;                  /* 0 or 1, reported back */
  uint32_t lock_mode;                        /* JX_LOCK_* */
  uint32_t user_values[JX_USER_VALUE_COUNT]; /* reported back */
  int32_t user_value_count;                  /* 0 to 32; clamped */
  uint32_t file_encoding;                    /* 0 = default: 62 */
  uint32_t record_encoding;                  /* 0 = default: 62 for stream, otherwise 27 */
  uint32_t open_flags;                       /* JX_OPEN_* */
  JXJournal *journal;                        /* where system errors are reported, or null */
};

/* ---- File handle -------------------------------------------------------------------------- */

/* What a file handle reports about itself. */
struct JXFileAttributes {
  JXChar name[JX_NAME_MAX_CHARS];            /* the name as given; name_chars of it are set */
  uint32_t name_chars;                       /* length of name */
  uint32_t access_mode;                      /* JX_ACCESS_* */
  uint32_t buffered;                         /* 0 in update mode whatever was asked */
  uint32_t record_length;                    /* as given */
  uint32_t zero;                             /* 0 */
  uint32_t record_format;                    /* JX_FORMAT_* */
  uint32_t reserved_switch;                  /* as given */
  uint32_t lock_mode;                        /* JX_LOCK_* */
  uint32_t user_values[JX_USER_VALUE_COUNT]; /* as given */
  uint32_t user_value_count;                 /* after clamping */
};

/* Reads a record. Stores where the data lies in *data and its size in bytes in *length; for binary
   and stream files *length tells before how many bytes are wanted. The data lies in the file's own
   memory, valid until the next call on it; with direct transfer *data is the caller's memory, given
   before. *offset is a byte offset for binary and stream files without buffering or with direct
   transfer; null reads at the current offset, and the other files do not look at it. */
typedef JXStatus (*JXReadSlot)(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                               int64_t *offset);
/* Writes a record of length bytes. *offset as for reading. */
typedef JXStatus (*JXWriteSlot)(JXFile *file, const void *data, uint32_t length, uint32_t unused,
                                int64_t *offset);

/* The part of a file handle that a host may use. It ends with the attributes; the rest of the
   block is the module's own. Made by open, ended by close, used by one caller at a time. */
struct JXFile {
  char eye_catcher[4];                                 /* "nevo" */
  char *caller_tag;                                    /* 8-bit text, or null */
  JXStatus (*close)(JXFile *file);                     /* jxwemclose */
  JXStatus (*flush)(JXFile *file);                     /* skwem_flush, bkwem_flush */
  void *empty1[9];                                     /* null */
  JXReadSlot read;                                     /* skwem_read_*, by format and buffering */
  JXWriteSlot write;                                   /* skwem_write_*, by format and buffering */
  void *empty2[1];                                     /* null */
  JXStatus (*note)(JXFile *file, int64_t *offset_out); /* bkwem_note */
  JXStatus (*point)(JXFile *file, int64_t *offset, uint32_t mode); /* bkwem_point */
  JXStatus (*position_to_record)(JXFile *file, ...);               /* jxwemposition2record */
  JXStatus (*record_to_position)(JXFile *file, ...);               /* jxwemrecord2position */
  JXStatus (*position_to_byte)(JXFile *file, const int64_t *position,
                               int64_t *offset_out); /* bkwemposition2byte */
  JXStatus (*byte_to_position)(JXFile *file, const int64_t *offset,
                               int64_t *position_out);             /* bkwembyte2position */
  JXStatus (*truncate)(JXFile *file, const int64_t *length_bytes); /* bkwemtruncate */
  JXStatus (*attach_journal)(JXFile *file, JXJournal *journal);    /* jxwemattachjnl */
  JXFileAttributes attributes;                                     /* what was opened */
};

#define JX_POINT_START 0x1u    /* point: to the start; the offset is set to 0 */
#define JX_POINT_END 0x2u      /* point: to the end; the offset is set to 0 */
#define JX_POINT_RELATIVE 0x4u /* point: relative to the current offset; 0: absolute */

/* ---- Directory handle --------------------------------------------------------------------- */

#define JX_DIRECTORY_ALL 0x4u /* directory open: reads return names that begin with "." too */

/* An open directory. The slots are for the host; the fields after them are the module's. */
struct JXDirectory {
  char eye_catcher[4];                       /* "nevo" */
  char *name;                                /* 8-bit label, or null */
  JXStatus (*close)(JXDirectory *directory); /* jxwemdirectoryclose */
  JXStatus (*member_exist)(JXDirectory *directory, const JXChar *name,
                           uint32_t name_chars); /* jxwemdirectorymemberexist */
  JXTable *(*member_list)(JXDirectory *directory, JXPool *pool, uint32_t flags, uint64_t *count_out,
                          JXStatus *status_out); /* jxwemdirectorymemberlist */
  JXStatus (*read)(JXDirectory *directory, JXChar *buffer, uint32_t *chars); /* bkwemreaddir */
  void *empty1;                                                              /* null */
  JXInstance *instance;                                                      /* opened through */
  JXPool *pool;         /* the handle's own pool */
  JXPool *working_pool; /* the same pool */
  JXJournal *journal;   /* null */
  void **stream_holder; /* holds the system's stream */
  uint32_t options;     /* JX_DIRECTORY_* */
  JXChar *path;         /* as open received it */
  uint32_t path_chars;  /* length of path */
  void *empty2[2];      /* null */
};

/* ---- Information -------------------------------------------------------------------------- */

/* The value of an information item; the type of the item says which member holds. */
typedef union JXInfoValue {
  uint64_t bytes; /* "FILESIZE", "FREESPACE" */
  double time;    /* "MODTIME": seconds since 1 January 1960, local time */
  uint32_t word;  /* "ISDIR" (bit 0), "FILESYSID" */
} JXInfoValue;

#define JX_ITEM_FILESIZE 3u  /* type of "FILESIZE" */
#define JX_ITEM_FREESPACE 4u /* type of "FREESPACE" */
#define JX_ITEM_FILESYSID 6u /* type of "FILESYSID" */
#define JX_ITEM_MODTIME 9u   /* type of "MODTIME" */
#define JX_ITEM_ISDIR 13u    /* type of "ISDIR" */

#define JX_KIND_FILESIZE 1u /* format code of "FILESIZE" */
#define JX_KIND_MODTIME 2u  /* format code of "MODTIME" */
#define JX_KIND_ISDIR 3u    /* format code of "ISDIR" */

/* One named fact: the value stored in an information table under its name. */
struct JXInfoItem {
  uint32_t type;       /* JX_ITEM_* */
  JXChar *name;        /* block of the pool, not terminated */
  uint32_t name_chars; /* length of name */
  JXInfoValue value;   /* by type */
  void *second_block;  /* another block of the pool, or null */
  uint32_t reserved;   /* 0 */
  JXPool *pool;        /* where the record and its blocks come from */
  uint32_t format;     /* JX_KIND_*, 0 for the file-system items */
};

/* ---- Lists -------------------------------------------------------------------------------- */

#define JX_LIST_FULL_PATH 0x1u   /* names are full paths */
#define JX_LIST_INFORMATION 0x2u /* sizes, times and kinds are asked for */

/* A value of a member list. */
struct JXMember {
  JXChar *name;         /* the member's name or full path, block of the pool */
  int32_t name_chars;   /* length of name */
  uint32_t empty[7];    /* not set */
  JXTable *information; /* the member's information table, or null */
  JXPool *pool;         /* the caller's pool */
  JXMember *next;       /* the following record, or null */
};

#define JX_DIRECTORY_NAMED 0u  /* directory list: the directory named by the path */
#define JX_DIRECTORY_PARENT 1u /* directory list: the directory that holds the path */
#define JX_DIRECTORY_ROOT 2u   /* directory list: "/" */
#define JX_DIRECTORY_HOME 3u   /* directory list: "~" */

/* A value of a directory list; the first describes the directory itself. */
struct JXDirectoryEntry {
  JXChar *name;           /* the name or full path, block of the pool */
  int32_t name_chars;     /* length of name */
  int64_t size_bytes;     /* -1: not asked for or not found */
  double modified;        /* as "MODTIME"; -1.0: not asked for or not found */
  double second_time;     /* -1.0 */
  uint32_t is_dir;        /* 1 for a directory */
  uint32_t empty;         /* not set */
  JXPool *pool;           /* the instance's pool */
  JXDirectoryEntry *next; /* the following record, or null */
};

/* ---- Unique names ------------------------------------------------------------------------- */

#define JX_NAME_EXTENSION 0x1u /* use the extension */
#define JX_NAME_PREFIX 0x2u    /* prefix form */
#define JX_NAME_HOST 0x4u      /* host form; goes before the prefix form */

/* What a created name is made of. Filled by the caller, read during the call only. */
struct JXCreateName {
  const JXChar *prefix;     /* text of the prefix form */
  uint32_t prefix_chars;    /* at most 1023 */
  const JXChar *extension;  /* without its dot */
  uint32_t extension_chars; /* used with JX_NAME_EXTENSION only */
  uint32_t flags;           /* JX_NAME_* */
};

/* ---- Instance ----------------------------------------------------------------------------- */

/* The extension instance: operation table and shared state. Made by jxwem, ended by its destroy
   slot, shared by all callers. Each slot holds the routine declared below under the name in the
   comment. */
struct JXInstance {
  char eye_catcher[4]; /* "nevo" */
  void *empty1[2];     /* null */
  JXStatus (*get_required_version)(JXInstance *instance, uint32_t *major, uint32_t *minor,
                                   uint32_t *patch); /* jxwemgetreqversion */
  JXStatus (*get_version)(JXInstance *instance, uint32_t *major, uint32_t *minor,
                          uint32_t *patch);  /* jxwemgetversion */
  JXHost *host;                              /* the handle given to jxwem */
  JXStatus (*destroy)(JXInstance *instance); /* jxwemdestroy */
  void *empty2[2];                           /* null */
  JXDirectory *(*directory_open)(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                                 uint32_t options, uint32_t unused, JXOwner owner,
                                 const char *name8, JXStatus *status_out); /* jxwemdirectoryopen */
  JXFile *(*open)(JXInstance *instance, const JXChar *name, uint32_t name_chars,
                  const JXOpenOptions *options, uint32_t unused, JXOwner owner,
                  const char *caller_tag8, JXStatus *status_out); /* jxwemopen */
  void *empty3;                                                   /* null */
  JXStatus (*build_path)(JXInstance *instance, const JXChar *directory, uint32_t directory_chars,
                         const JXChar *member, uint32_t member_chars, const JXChar *extension,
                         uint32_t extension_chars, JXChar **path_out,
                         uint32_t *path_chars_out);                   /* bkwembuildpath */
  JXStatus (*build_path_release)(JXInstance *instance, JXChar *path); /* bkwembuildpathdestroy */
  JXStatus (*split_path)(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                         JXChar **directory_out, int32_t *directory_chars_out, JXChar **member_out,
                         int32_t *member_chars_out, JXChar **base_out, int32_t *base_chars_out,
                         JXChar **extension_out, int32_t *extension_chars_out); /* bkwemsplitpath */
  JXStatus (*split_path_release)(JXInstance *instance, JXChar *directory, JXChar *member,
                                 JXChar *base, JXChar *extension); /* bkwemsplitpathdestroy */
  JXStatus (*copy)(JXInstance *instance, const JXChar *source, uint32_t source_chars,
                   const JXChar *target, uint32_t target_chars);                    /* bkwemcopy */
  JXStatus (*exist)(JXInstance *instance, const JXChar *path, uint32_t path_chars); /* bkwemexist */
  JXStatus (*make_directory)(JXInstance *instance, const JXChar *path,
                             uint32_t path_chars); /* bkwemmakedirectory */
  JXStatus (*remove)(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                     uint32_t flags); /* bkwemremove */
  JXStatus (*rename)(JXInstance *instance, const JXChar *old_path, uint32_t old_chars,
                     const JXChar *new_path, uint32_t new_chars); /* bkwemrename */
  JXTable *(*info)(JXInstance *instance, JXPool *pool, const JXChar *name, uint32_t name_chars,
                   JXStatus *status_out); /* jxweminfo */
  JXTable *(*file_system_info)(JXInstance *instance, const JXChar *name, uint32_t name_chars,
                               JXStatus *status_out); /* jxwemfsinfo */
  JXStatus (*create_name)(JXInstance *instance, const JXChar *directory, uint32_t directory_chars,
                          const JXCreateName *request, JXChar **path_out,
                          uint32_t *path_chars_out);                   /* jxwemcreatename */
  JXStatus (*create_name_release)(JXInstance *instance, JXChar *path); /* bkwembuildpathdestroy */
  JXTable *(*directory_list)(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                             uint32_t kind, uint32_t flags, uint64_t *count_out,
                             JXStatus *status_out); /* jxwemdirectorylist */
  JXHost *pool_host;     /* the handle that open and directory open make pools from */
  JXPool *pool;          /* "jxwem pool"; holds the instance itself */
  JXPool *working_pool;  /* the same pool */
  JXJournal *journal;    /* null, or where file-system operations report errors */
  JXNls *nls;            /* the host's character-set service */
  JXElm *elm;            /* the file-open extension, or null */
  uint32_t name_counter; /* of unique names; atomic */
  JXExtension *secure;   /* held for the instance's lifetime */
  JXChar host_name[JX_HOST_NAME_CHARS]; /* the machine's name */
  uint32_t host_name_chars;             /* its length as "jxitcp" gave it; 0 without */
  JXTranscoder *native_encoder;         /* JXChar to encoding 62 */
  JXTranscoder *native_decoder;         /* encoding 62 to JXChar */
};

#define JX_REMOVE_CONTENTS 0x1u /* remove: a directory goes with everything in it */

/* ---- Entry -------------------------------------------------------------------------------- */

/* Takes note of the host kernel handle. Called once, before jxwem. */
JX_EXPORT void jxextent(JXHost *host);

/* The handle that jxextent was given. */
extern JX_EXPORT JXHost *Exported_JXHandle;

/* Makes an extension instance, owned by the caller until jxwemdestroy. Null on any failure:
   out of memory, no character-set service, no "jxsecure". */
JX_EXPORT JX_NODISCARD JXInstance *jxwem(JXHost *host, JXOwner owner);

/* Ends an instance. Everything the module handed out must have been released before.
   Returns 0; JXWEM_E_NOHANDLE for null. */
JX_EXPORT JXStatus jxwemdestroy(JXInstance *instance);

/* Stores the lowest host version the module works with: 3, 1, 1. Returns 0. */
JX_EXPORT JXStatus jxwemgetreqversion(JXInstance *instance, uint32_t *major, uint32_t *minor,
                                      uint32_t *patch);

/* Stores the module's own version: JX_VERSION_*. Returns 0. */
JX_EXPORT JXStatus jxwemgetversion(JXInstance *instance, uint32_t *major, uint32_t *minor,
                                   uint32_t *patch);

/* Loads the file-open extension into the instance (null when the host has none). Returns 0. */
JX_EXPORT JXStatus bkwem(JXInstance *instance);

/* Releases the file-open extension when present. Returns 0. */
JX_EXPORT JXStatus bkwemdestroy(JXInstance *instance);

/* Writes the system's text for an errno to a journal, as an error of status JXWEM_E_SYSTEM.
   Writes nothing when the journal is null or the text cannot be had. Returns 0. */
JX_EXPORT JXStatus bkwemerror(JXInstance *instance, int system_error, JXJournal *journal);

/* ---- Files -------------------------------------------------------------------------------- */

/* Opens a file and returns its handle, owned by the caller until close; null with the reason in
   *status_out. name_chars is 1 to 1024. caller_tag8 is copied; it may be null. The record length
   counts bytes of the file when reading; when writing converted text directly, characters.
   Statuses: 0 with a null result when a required argument is missing or the name is empty;
   JXWEM_E_NOHANDLE (null instance), JXWEM_E_NAMETOOLONG, JX_E_NOMEM, JXWEM_E_FAILED (lock,
   transcoder, expansion, impossible encoding), JXWEM_E_BADACCESS, JXWEM_E_BADBUFFERING,
   JXWEM_E_BADRECFORMAT, JXWEM_E_BADSWITCH, JXWEM_E_BADLOCKMODE, JXWEM_E_BADOPTIONS, what bkwem_open
   returns, and the host's own statuses for an encoding. */
JX_EXPORT JX_NODISCARD JXFile *jxwemopen(JXInstance *instance, const JXChar *name,
                                         uint32_t name_chars, const JXOpenOptions *options,
                                         uint32_t unused, JXOwner owner, const char *caller_tag8,
                                         JXStatus *status_out);

/* Flushes, unless the file is open for input, closes and releases everything, whatever fails on the
   way. Returns the status of the flush, else of the close: JXWEM_E_FAILED for a FIFO or a device
   that cannot be made durable, though everything was written. */
JX_EXPORT JXStatus jxwemclose(JXFile *file);

/* Replaces the journal of a file, under its open lock. Returns 0 or the status of the lock. */
JX_EXPORT JXStatus jxwemattachjnl(JXFile *file, JXJournal *journal);

/* Record positioning is not offered. Always JXWEM_E_NOTSUPPORTED. */
JX_EXPORT JXStatus jxwemposition2record(JXFile *file, ...);
JX_EXPORT JXStatus jxwemrecord2position(JXFile *file, ...);

/* Fills the operation slots and the method vector of a handle for its record format and
   buffering. 0, or JXWEM_E_BADRECFORMAT. */
JX_EXPORT JX_NODISCARD JXStatus bkwemvec(JXFile *file);

/* Opens the file named in the handle. 0, JX_E_NOMEM, JXWEM_E_NOTFOUND, JXWEM_E_NOPATH,
   JXWEM_E_ACCESS, JXWEM_E_OPENREFUSED, JXWEM_E_INUSE, JXWEM_E_SYSTEM, or a status of the path
   expansion. */
JX_EXPORT JX_NODISCARD JXStatus bkwem_open(JXFile *file);

/* Closes the file and frees the host file block. Always 0 for a handle. */
JX_EXPORT JXStatus bkwem_close(JXFile *file);

/* Reads up to so many bytes at *offset, or at the descriptor's offset when offset is null, and
   stores how many came. 0 (a short read too), JXWEM_E_EOF (nothing left) or JXWEM_E_SYSTEM. */
JX_EXPORT JX_NODISCARD JXStatus bkwem_read(JXFile *file, void *destination, uint32_t bytes,
                                           uint32_t *bytes_out, const int64_t *offset);

/* Writes up to so many bytes at *offset, or at the descriptor's offset, and stores how many went.
   0 (a short write too), JXWEM_E_DISKFULL or JXWEM_E_SYSTEM. */
JX_EXPORT JX_NODISCARD JXStatus bkwem_write(JXFile *file, const void *source, uint32_t bytes,
                                            uint32_t *bytes_out, const int64_t *offset);

/* Forces the file's data to the device. 0, JXWEM_E_NOHANDLE (descriptor not valid),
   JXWEM_E_SYSTEM (device error), JXWEM_E_DISKFULL, or JXWEM_E_FAILED (reported). After a failure
   the data that was written since the last good flush may be lost; flushing again proves nothing.
   A FIFO, a terminal and many devices cannot be made durable: JXWEM_E_FAILED, though everything was
   written. */
JX_EXPORT JXStatus bkwem_flush(JXFile *file);

/* Stores the descriptor's offset in bytes. 0, JXWEM_E_NOTSUPPORTED (buffered handle) or
   JXWEM_E_FAILED (reported; *offset_out is then -1). */
JX_EXPORT JX_NODISCARD JXStatus bkwem_note(JXFile *file, int64_t *offset_out);

/* Moves the descriptor by mode (JX_POINT_*) and stores the new absolute offset. 0,
   JXWEM_E_NOTSUPPORTED (buffered handle) or JXWEM_E_FAILED (reported; *offset is then -1). */
JX_EXPORT JX_NODISCARD JXStatus bkwem_point(JXFile *file, int64_t *offset, uint32_t mode);

/* A position is a byte offset: both copy the value and return 0. */
JX_EXPORT JXStatus bkwemposition2byte(JXFile *file, const int64_t *position, int64_t *offset_out);
JX_EXPORT JXStatus bkwembyte2position(JXFile *file, const int64_t *offset, int64_t *position_out);

/* Sets the file's length in bytes. 0, JXWEM_E_READONLY (input handle) or JXWEM_E_SYSTEM
   (reported). */
JX_EXPORT JX_NODISCARD JXStatus bkwemtruncate(JXFile *file, const int64_t *length_bytes);

/* ---- Record layer ------------------------------------------------------------------------- */

/* Prepares the record buffer and the control strings, then opens the file. 0, JX_E_NOMEM,
   JXWEM_E_FAILED (transcoder), JXWEM_E_BADOPTIONS (direct transfer of text lines), a status of the
   character-set service, or what the host open returns. */
JX_EXPORT JX_NODISCARD JXStatus skwem_open(JXFile *file);

/* Closes the file and releases the record layer's blocks. Does not flush. 0, or the status of the
   host close (nothing is released then). */
JX_EXPORT JXStatus skwem_close(JXFile *file);

/* Writes the pending block of a buffered writer and forces the data to the device, as bkwem_flush
   does. The first failure of the two, or 0. A block whose write fails is lost. */
JX_EXPORT JXStatus skwem_flush(JXFile *file);

/* Places bytes in the record buffer and writes each block that becomes full. The status of the
   last block write, 0 when there was none; JXWEM_E_NOTSUPPORTED for a handle that gathers no
   blocks, JXWEM_E_READONLY for an input handle. */
JX_EXPORT JX_NODISCARD JXStatus sk_buf_write(JXFile *file, const void *source, uint32_t bytes);

/* Builds the handle's control strings in the file's encoding: direction 0 inbound, 1 outbound, of
   group 1 or 2. 0, JXWEM_E_FAILED (direction, group, transcoder, or an encoding without a line
   feed), JX_E_NOMEM, or a status of the character-set service; a failure leaves none of that
   direction. */
JX_EXPORT JX_NODISCARD JXStatus setupCCTable(JXFile *file, uint32_t direction, uint32_t group);

/* Records of every format: a read of a handle that only writes answers JXWEM_E_NOTSUPPORTED, a
   write to an input handle JXWEM_E_READONLY. Only direct transfers of binary records, and of stream
   records that are not converted, leave it to the descriptor, which JX_LOCK_* may have opened for
   both: JXWEM_E_SYSTEM where it was not. The "r" routines are direct: one transfer each, and
   one more for a byte-order mark, where the system made a write short, or where a short read ends
   inside a character. Buffered readers decide
   a record from the bytes in hand and read on only when these do not decide it. A buffered reader
   keeps the end of the file that it saw; a direct one sees what is appended later. A write that the
   system takes in part goes on, also after a signal; a signal before the first byte fails it.

   Text that is converted may be cut inside a character. At the end of a record of text lines that
   is the fault of this record: it gets the transcoder's status, the next one is whole. Between the
   parts of a line longer than the record length, and between stream records, the transcoder holds
   the start of a character and goes on with the rest; point, a transfer at an explicit offset and a
   failed conversion or write make it drop what it holds. A base character and its mark that a
   record or chunk separates stay two characters in windows-1255, windows-1258 and TCVN.

   Text lines. A line ends with the line feed of the file's encoding, in EBCDIC 0x25 and not 0x15
   (NEL), or with carriage return and line feed. A file encoding in which another control character
   takes more bytes than the line feed, such as UTF-7, has no lines: its open gets the transcoder's
   status for want of room. A read gives one record without its line end; JXWEM_E_PARTIAL marks a
   record whose line end was not seen, JXWEM_E_EOF the end. A byte-order mark is skipped before
   every line. Any other failure is of the host read, of the transcoder, or, JXWEM_E_FAILED, of the
   direct routine's step back to the next record, which a pipe cannot do: the record is handed back
   all the same. */
JX_EXPORT JXStatus skwem_read_var(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                  int64_t *offset);
JX_EXPORT JXStatus skwem_read_rvar(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                   int64_t *offset);
/* Writes one record and a line end. 0, or a failure of the host write or of the transcoder; the
   direct routine answers JXWEM_E_TOOLONG to a record longer than the record length, and writes
   nothing of it. The length counts bytes without a transcoder, with one characters: in UTF-8,
   UTF-16, UTF-32 and every encoding of one byte a character exactly; in the others only the room is
   the limit, record length and line end in the longest characters of the file, and a record that
   exceeds it gets the transcoder's status. */
JX_EXPORT JXStatus skwem_write_var(JXFile *file, const void *data, uint32_t length, uint32_t unused,
                                   int64_t *offset);
JX_EXPORT JXStatus skwem_write_rvar(JXFile *file, const void *data, uint32_t length,
                                    uint32_t unused, int64_t *offset);

/* Binary records. A read asks for *length bytes and gets up to that many; JXWEM_E_TOOLONG when it
   asks for more than the record length, JXWEM_E_EOF at the end, JXWEM_E_FAILED when direct
   transfer is given no destination, or a failure of the host read. */
JX_EXPORT JXStatus skwem_read_bin(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                  int64_t *offset);
JX_EXPORT JXStatus skwem_read_rbin(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                   int64_t *offset);
/* Writes bytes as they are. 0, or a failure of the host write. */
JX_EXPORT JXStatus skwem_write_bin(JXFile *file, const void *data, uint32_t length, uint32_t unused,
                                   int64_t *offset);
JX_EXPORT JXStatus skwem_write_rbin(JXFile *file, const void *data, uint32_t length,
                                    uint32_t unused, int64_t *offset);

/* Stream records: as binary, with transcoding and byte-order marks, and the transcoder's failures
   added; JXWEM_E_FAILED only when converted text is given no destination. A direct write at offset
   0 that places a byte-order mark moves *offset past it. A direct read that skips a byte-order mark
   reads once more to make up for it, and without a transcoder answers with the status of that read:
   JXWEM_E_EOF may then come with bytes, as *length tells. */
JX_EXPORT JXStatus skwem_read_stream(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                     int64_t *offset);
JX_EXPORT JXStatus skwem_read_rstream(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                      int64_t *offset);
JX_EXPORT JXStatus skwem_write_stream(JXFile *file, const void *data, uint32_t length,
                                      uint32_t unused, int64_t *offset);
JX_EXPORT JXStatus skwem_write_rstream(JXFile *file, const void *data, uint32_t length,
                                       uint32_t unused, int64_t *offset);

/* A control string: JXChars and their size in bytes. */
typedef struct JXControlString {
  const JXChar *text; /* not terminated */
  uint32_t bytes;     /* 4 a character */
} JXControlString;

/* Line-end and page-control strings: two groups of nine written (0 line end, 1 and 2 one and two
   blank lines more, 3 line end and new page, 4 and 5 return, 6 nothing, 7 new page, 8 space), two
   groups of three recognised (line feed, form feed, carriage return). */
extern JX_EXPORT JXControlString sk_outbound_cc[18];
extern JX_EXPORT JXControlString sk_inbound_cc[6];

/* ---- Paths -------------------------------------------------------------------------------- */

/* Expands variables, "~", leading dots and relative paths; drops trailing slashes. *path_out must
   be null before; when it is not null afterwards, whatever the status, the caller gives it back
   with bkwemexpand_path_free and the instance's pool. 0, JX_E_NOMEM, JXWEM_E_FAILED (a length
   without a path, not convertible, a zero character in the path, above the root, no current
   directory) or JXWEM_E_NAMETOOLONG. */
JX_EXPORT JX_NODISCARD JXStatus bkwemexpand_path(JXInstance *instance, const JXChar *path,
                                                 uint32_t path_chars, JXChar **path_out,
                                                 uint32_t *path_chars_out);

/* Gives an expanded path back to its pool. The status of the pool; 0 for a null path. */
JX_EXPORT JXStatus bkwemexpand_path_free(JXPool *pool, JXChar *path);

/* Takes a path apart into directory, member, base name and extension; an absent component is null
   with length 0. All point into one block that bkwemsplitpathdestroy gives back.
   0, 1 (no path) or JX_E_NOMEM; the results are untouched on failure. */
JX_EXPORT JX_NODISCARD JXStatus bkwemsplitpath(JXInstance *instance, const JXChar *path,
                                               uint32_t path_chars, JXChar **directory_out,
                                               int32_t *directory_chars_out, JXChar **member_out,
                                               int32_t *member_chars_out, JXChar **base_out,
                                               int32_t *base_chars_out, JXChar **extension_out,
                                               int32_t *extension_chars_out);

/* Gives the block of one split back; takes its four components, and does nothing when all are
   null. Returns 0. */
JX_EXPORT JXStatus bkwemsplitpathdestroy(JXInstance *instance, JXChar *directory, JXChar *member,
                                         JXChar *base, JXChar *extension);

/* Joins directory (empty: the current one), member and extension (without dot) and expands the
   result, which bkwembuildpathdestroy gives back. 0, 1 (directory too long or the current one not
   convertible), JX_E_NOMEM, JXWEM_E_NAMETOOLONG, JXWEM_E_BADNAME (nothing to build),
   JXWEM_E_FAILED (no current directory, nowhere to put the result), or a status of the
   expansion. */
JX_EXPORT JX_NODISCARD JXStatus bkwembuildpath(JXInstance *instance, const JXChar *directory,
                                               uint32_t directory_chars, const JXChar *member,
                                               uint32_t member_chars, const JXChar *extension,
                                               uint32_t extension_chars, JXChar **path_out,
                                               uint32_t *path_chars_out);

/* Gives a built path or a created name back. The status of the pool; 0 for a null path. */
JX_EXPORT JXStatus bkwembuildpathdestroy(JXInstance *instance, JXChar *path);

/* ---- File-system operations --------------------------------------------------------------- */

/* Each expands the paths it is given. Besides the statuses named: JX_E_NOMEM, JXWEM_E_FAILED (not
   convertible), JXWEM_E_ACCESS, JXWEM_E_SYSTEM (reported to the instance's journal) and those of
   the expansion. */

/* 0 when the path names something; JXWEM_E_NOTFOUND, JXWEM_E_BADNAME (a length without a path). */
JX_EXPORT JX_NODISCARD JXStatus bkwemexist(JXInstance *instance, const JXChar *path,
                                           uint32_t path_chars);

/* 0 for a directory, 1 for anything else that exists; JXWEM_E_NOPATH when missing,
   JXWEM_E_BADNAME (a length without a path). */
JX_EXPORT JX_NODISCARD JXStatus bkwemisdir(JXInstance *instance, const JXChar *path,
                                           uint32_t path_chars);

/* Removes a file, a link or an empty directory; with JX_REMOVE_CONTENTS a whole tree, depth first,
   removing and opening nothing through a link below the named directory. A test that follows
   links tells what a name is: a link to a file is removed itself; a link to a directory, or to
   nothing, is JXWEM_E_NOTFOUND, stays, and inside a tree ends the removal. What was removed before
   a failure stays removed. JXWEM_E_BADNAME, JXWEM_E_NOTFOUND, JXWEM_E_NOTEMPTY, JXWEM_E_INUSE,
   JXWEM_E_NAMETOOLONG, or the transcoder's status. */
JX_EXPORT JX_NODISCARD JXStatus bkwemremove(JXInstance *instance, const JXChar *path,
                                            uint32_t path_chars, uint32_t flags);

/* Renames, replacing what the system replaces. JXWEM_E_BADNAME, JXWEM_E_DISKFULL. */
JX_EXPORT JX_NODISCARD JXStatus bkwemrename(JXInstance *instance, const JXChar *old_path,
                                            uint32_t old_chars, const JXChar *new_path,
                                            uint32_t new_chars);

/* Makes one directory; an existing directory is success. JXWEM_E_BADNAME, JXWEM_E_NOPATH,
   JXWEM_E_EXISTS, JXWEM_E_INUSE, JXWEM_E_DISKFULL. */
JX_EXPORT JX_NODISCARD JXStatus bkwemmakedirectory(JXInstance *instance, const JXChar *path,
                                                   uint32_t path_chars);

/* Copies a file or a tree to a name that does not exist yet. What was copied before a failure
   stays. Where a directory of the source cannot be read on, its copy ends there and the result is 0
   all the same: a caller who has to know compares the trees. The open of a FIFO waits for a writer.
   JXWEM_E_BADNAME, JXWEM_E_EXISTS, JXWEM_E_NOTFOUND, JXWEM_E_NOPATH, JXWEM_E_INUSE,
   JXWEM_E_DISKFULL, JXWEM_E_NOTSUPPORTED (device gone), JXWEM_E_NAMETOOLONG, JXWEM_E_FAILED
   (reported); for a tree also what its directories' close slot answers. */
JX_EXPORT JX_NODISCARD JXStatus bkwemcopy(JXInstance *instance, const JXChar *source,
                                          uint32_t source_chars, const JXChar *target,
                                          uint32_t target_chars);

/* A table of "FILESIZE", "MODTIME" and "ISDIR" records of the caller's pool, keyed by name and
   owned by the caller, who destroys it before the pool; null with the reason in *status_out:
   JXWEM_E_FAILED (no pool, no name, insert), JXWEM_E_NOTFOUND, JXWEM_E_NOHANDLE (table). */
JX_EXPORT JX_NODISCARD JXTable *jxweminfo(JXInstance *instance, JXPool *pool, const JXChar *name,
                                          uint32_t name_chars, JXStatus *status_out);
/* The records of jxweminfo as an array of *count_out pointers of the pool; the caller frees the
   array, each name and each record. */
JX_EXPORT JX_NODISCARD JXStatus bkweminfo(JXInstance *instance, JXPool *pool, const JXChar *name,
                                          uint32_t name_chars, JXInfoItem ***items_out,
                                          uint32_t *count_out);
/* Frees the record of an entry and its blocks. Returns 0. */
JX_EXPORT JXStatus jxwemInfoDestroy(JXTableEntry *entry);

/* As jxweminfo, for the file system that holds the name: "FREESPACE" and "FILESYSID", of the
   instance's pool. JXWEM_E_NOTFOUND, JXWEM_E_NAMETOOLONG, JXWEM_E_NOHANDLE, JXWEM_E_FAILED. */
JX_EXPORT JX_NODISCARD JXTable *jxwemfsinfo(JXInstance *instance, const JXChar *name,
                                            uint32_t name_chars, JXStatus *status_out);
/* The records of jxwemfsinfo as an array, of the instance's pool. */
JX_EXPORT JX_NODISCARD JXStatus bkwemfsinfo(JXInstance *instance, const JXChar *name,
                                            uint32_t name_chars, JXInfoItem ***items_out,
                                            uint32_t *count_out);
/* Frees the record of an entry and its blocks. Returns 0. */
JX_EXPORT JXStatus jxwemFSInfoDestroy(JXTableEntry *entry);

/* Opens a directory and returns its handle, owned by the caller until close; null with the reason
   in *status_out: JXWEM_E_BADNAME, JXWEM_E_NOTFOUND, JXWEM_E_NAMETOOLONG. name8 may be null. */
JX_EXPORT JX_NODISCARD JXDirectory *jxwemdirectoryopen(JXInstance *instance, const JXChar *path,
                                                       uint32_t path_chars, uint32_t options,
                                                       uint32_t unused, JXOwner owner,
                                                       const char *name8, JXStatus *status_out);
/* Ends a directory handle. Returns 0. */
JX_EXPORT JXStatus jxwemdirectoryclose(JXDirectory *directory);
/* Opens the stream of a handle by its path, in the second step of the open. 0, JXWEM_E_NOHANDLE
   (also a handle without an instance), JX_E_NOMEM, JXWEM_E_NOTFOUND (also what is no directory),
   JXWEM_E_ACCESS, JXWEM_E_NAMETOOLONG, JXWEM_E_SYSTEM (reported to the instance's journal),
   JXWEM_E_FAILED (not convertible), JXWEM_E_BADNAME (a length without a path), or a status of the
   expansion. */
JX_EXPORT JX_NODISCARD JXStatus bkwemopendir(JXDirectory *directory);
/* Closes the stream of a handle, which is no handle for reads and lists afterwards. Returns 0. */
JX_EXPORT JXStatus bkwemclosedir(JXDirectory *directory);
/* The next name into buffer; *chars holds the room before and the length after, which is that of
   the name on the system, a character a byte. JXWEM_E_EOF, JXWEM_E_NOROOM (the entry is passed
   over), JXWEM_E_FAILED (no buffer or no length), JXWEM_E_SYSTEM, or the transcoder's status. */
JX_EXPORT JX_NODISCARD JXStatus bkwemreaddir(JXDirectory *directory, JXChar *buffer,
                                             uint32_t *chars);
/* 0 when the directory holds a member of that name; JXWEM_E_BADMEMBER, JXWEM_E_NOTFOUND. */
JX_EXPORT JX_NODISCARD JXStatus jxwemdirectorymemberexist(JXDirectory *directory,
                                                          const JXChar *name, uint32_t name_chars);

/* The members not read yet, as a table of JXMember records of the caller's pool, owned by the
   caller; null with status 0 when there are none. Flags JX_LIST_*. JXWEM_E_FAILED (no pool or
   handle), JXWEM_E_NOHANDLE (table), JXWEM_E_NAMETOOLONG, JXWEM_E_SYSTEM, the transcoder's status;
   with JX_LIST_FULL_PATH or JX_LIST_INFORMATION a status of the path build; with
   JX_LIST_INFORMATION a status of the information operation: JXWEM_E_NOTFOUND for a link to
   nothing. */
JX_EXPORT JX_NODISCARD JXTable *jxwemdirectorymemberlist(JXDirectory *directory, JXPool *pool,
                                                         uint32_t flags, uint64_t *count_out,
                                                         JXStatus *status_out);
/* The same as a linked list of records. JXWEM_E_NOHANDLE for a missing or closed handle. */
JX_EXPORT JX_NODISCARD JXStatus bkwemdirectorymemberlist(JXInstance *instance,
                                                         JXDirectory *directory, JXPool *pool,
                                                         uint32_t flags, JXMember **first_out,
                                                         uint64_t *count_out);
/* Frees the name and the information table of an entry's record. Returns 0. */
JX_EXPORT JXStatus jxwemDirectoryMemberListDestroy(JXTableEntry *entry);

/* The directory and its members as a table of JXDirectoryEntry records, owned by the caller. kind
   is JX_DIRECTORY_*, flags JX_LIST_*. JX_E_BADARG (kind), JXWEM_E_NOMEMBER (no parent),
   JXWEM_E_BADNAME (a path of blanks), 1 (no path, and the current directory is not convertible; or
   the parent of a path that expands to nothing), JXWEM_E_NOTFOUND, JXWEM_E_NAMETOOLONG,
   JXWEM_E_NOHANDLE (table), JXWEM_E_FAILED (insert), or the transcoder's status. */
JX_EXPORT JX_NODISCARD JXTable *jxwemdirectorylist(JXInstance *instance, const JXChar *path,
                                                   uint32_t path_chars, uint32_t kind,
                                                   uint32_t flags, uint64_t *count_out,
                                                   JXStatus *status_out);
/* The same as a linked list of records of the instance's pool. */
JX_EXPORT JX_NODISCARD JXStatus bkwemdirectorylist(JXInstance *instance, const JXChar *path,
                                                   uint32_t path_chars, uint32_t kind,
                                                   uint32_t flags, JXDirectoryEntry **first_out,
                                                   uint64_t *count_out);
/* Frees an entry's record and its name. Returns 0. */
JX_EXPORT JXStatus jxwemDirectoryListDestroy(JXTableEntry *entry);

/* Makes a name no other caller of this instance was given recently, and joins it to a directory
   (empty: the current one). The result is given back with bkwembuildpathdestroy. JXWEM_E_FAILED
   (no request), JXWEM_E_BADOPTIONS (no kind of name), JX_E_TRUNCATED (a prefix of 1015 to 1023
   characters, which leaves no room for its digits), JXWEM_E_NAMETOOLONG (a longer one), the host's
   status for the option "host.process_id", or a status of the path build. */
JX_EXPORT JX_NODISCARD JXStatus jxwemcreatename(JXInstance *instance, const JXChar *directory,
                                                uint32_t directory_chars,
                                                const JXCreateName *request, JXChar **path_out,
                                                uint32_t *path_chars_out);

JX_EXTERN_C_END

#endif
