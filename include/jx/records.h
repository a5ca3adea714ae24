/* The records that cross the boundary as data: open options and attributes, information items,
   members of lists, the request for a unique name, control strings. Hosts fill them or read them;
   none holds an operation. */
#ifndef JX_RECORDS_H
#define JX_RECORDS_H

#include "jx/base.h"
#include "jx/host.h"

JX_EXTERN_C_BEGIN

typedef struct JXOpenOptions JXOpenOptions;
typedef struct JXFileAttributes JXFileAttributes;
typedef struct JXInfoItem JXInfoItem;
typedef struct JXMember JXMember;
typedef struct JXDirectoryEntry JXDirectoryEntry;
typedef struct JXCreateName JXCreateName;

#define JX_NAME_MAX_CHARS 1024      /* the longest name or path, in JXChars */
#define JX_USER_VALUE_COUNT 32      /* user values of a file */
#define JX_RECORD_BLOCK_BYTES 8192u /* unit of buffered transfer */

/* ---- Open options and attributes ----------------------------------------------------------- */

/* Access modes. Append seeks to the end once, at the open: what another opening writes later is
   overwritten, so two appenders need the lock. */
#define JX_ACCESS_APPEND 0u /* write at the end; created if missing */
#define JX_ACCESS_INPUT 1u  /* read */
#define JX_ACCESS_OUTPUT 2u /* write; created, emptied */
#define JX_ACCESS_UPDATE 3u /* read and write; created if missing; always direct */

/* Record formats. A read of text lines or of stream records skips a byte-order mark of the file's
   encoding at its start, anywhere in the file. Output in UTF-8, UTF-16 and UTF-32 begins with one
   unless JX_OPEN_NO_BOM forbids it. Every open for writing makes the mark due, append and update
   too, and a read of an update handle leaves it due: the first write after it places the mark at
   the descriptor's offset, in the middle of the file. Only point, and the step back of a direct
   reader of text lines, settle it: due at offset 0, not elsewhere. */
#define JX_FORMAT_VARIABLE 0u   /* text lines */
#define JX_FORMAT_BINARY 1u     /* bytes, unchanged */
#define JX_FORMAT_VARIABLE_3 3u /* text lines, second number */
#define JX_FORMAT_STREAM 4u     /* text without line ends */

/* Lock modes. A lock ends with the close. A child that the process forks meanwhile has a copy of
   the descriptor and keeps the lock until it closes that, ends, or runs another program. */
#define JX_LOCK_DEFAULT 0u   /* shared for input, exclusive for the other access modes */
#define JX_LOCK_NONE 1u      /* no lock */
#define JX_LOCK_SHARED 2u    /* shared */
#define JX_LOCK_EXCLUSIVE 3u /* exclusive */
#define JX_LOCK_WAIT 4u      /* the default lock, waited for */

#define JX_OPEN_DIRECT_TRANSFER 0x1u /* binary and stream: no record buffer, even when buffered */
#define JX_OPEN_LITERAL_NAME 0x2u    /* the name is not expanded */
#define JX_OPEN_NO_BOM 0x4u          /* no byte-order mark is written */

/* What the caller asks of open. Filled by the caller, read during the call only. The record length
   counts bytes of the file; a direct write of text lines that converts counts characters. */
struct JXOpenOptions {
  uint32_t leading[8];                       /* reserved: not read */
  uint32_t access_mode;                      /* JX_ACCESS_* */
  uint32_t buffered;                         /* 1: through the record buffer; 0: direct */
  uint32_t record_length;                    /* the longest record; 0 gives empty parts of a text
                                                line for ever */
  uint32_t not_read;                         /* reserved: not read; reported back as 0 */
  uint32_t record_format;                    /* JX_FORMAT_* */
  uint32_t reserved_switch;                  /* 0 or 1, reported back */
  uint32_t lock_mode;                        /* JX_LOCK_* */
  uint32_t user_values[JX_USER_VALUE_COUNT]; /* reported back */
  int32_t user_value_count;                  /* 0 to 32; clamped */
  uint32_t file_encoding;                    /* 0 = default: 62 */
  uint32_t record_encoding;                  /* 0 = default: 62 for stream, otherwise 27 */
  uint32_t open_flags;                       /* JX_OPEN_* */
  JXJournal *journal;                        /* receives system errors, or null */
};

/* What a file handle reports about itself. */
struct JXFileAttributes {
  JXChar name[JX_NAME_MAX_CHARS];            /* the name as given; name_chars of it are set */
  uint32_t name_chars;                       /* length of name */
  uint32_t access_mode;                      /* JX_ACCESS_* */
  uint32_t buffered;                         /* as given; always 0 in update mode */
  uint32_t record_length;                    /* as given */
  uint32_t zero;                             /* reserved: 0 */
  uint32_t record_format;                    /* JX_FORMAT_* */
  uint32_t reserved_switch;                  /* as given */
  uint32_t lock_mode;                        /* JX_LOCK_* */
  uint32_t user_values[JX_USER_VALUE_COUNT]; /* as given */
  uint32_t user_value_count;                 /* after clamping */
};

/* ---- Information -------------------------------------------------------------------------- */

/* The value of an information item; the item's type says which member is set. */
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
  uint32_t reserved;   /* reserved: 0 */
  JXPool *pool;        /* owns the record and its blocks */
  uint32_t format;     /* JX_KIND_*, 0 for the file-system items */
};

/* ---- Lists -------------------------------------------------------------------------------- */

#define JX_LIST_FULL_PATH 0x1u   /* names are full paths */
#define JX_LIST_INFORMATION 0x2u /* with sizes, times and kinds */

/* A value of a member list. */
struct JXMember {
  JXChar *name;         /* the member's name or full path, block of the pool */
  int32_t name_chars;   /* length of name */
  uint32_t empty[7];    /* reserved: not set */
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
  double second_time;     /* reserved: -1.0 */
  uint32_t is_dir;        /* 1 for a directory */
  uint32_t empty;         /* reserved: not set */
  JXPool *pool;           /* the instance's pool */
  JXDirectoryEntry *next; /* the following record, or null */
};

/* ---- Unique names ------------------------------------------------------------------------- */

#define JX_NAME_EXTENSION 0x1u /* use the extension */
#define JX_NAME_PREFIX 0x2u    /* prefix form */
#define JX_NAME_HOST 0x4u      /* host form; takes precedence over the prefix form */

/* The parts of a created name. Filled by the caller, read during the call only. */
struct JXCreateName {
  const JXChar *prefix;     /* text of the prefix form */
  uint32_t prefix_chars;    /* at most 1023 */
  const JXChar *extension;  /* without its dot */
  uint32_t extension_chars; /* used with JX_NAME_EXTENSION only */
  uint32_t flags;           /* JX_NAME_* */
};

/* ---- Line ends ---------------------------------------------------------------------------- */

/* A control string: JXChars and their size in bytes. */
typedef struct JXControlString {
  const JXChar *text; /* not terminated */
  uint32_t bytes;     /* 4 a character */
} JXControlString;

JX_EXTERN_C_END

#endif
