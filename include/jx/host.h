/* The objects of a host kernel as the module sees them: blocks whose leading words are pointers to
   their operations. A caller passes the object itself as the first argument of each. The layout is
   a binary contract; hosts and modules built apart must agree on it word for word.

   Lengths called bytes count bytes; lengths called chars count JXChars. "name8" is a
   zero-terminated 8-bit name that the callee copies if it keeps it. */
#ifndef JX_HOST_H
#define JX_HOST_H

#include <stdarg.h>

#include "jx/base.h"

JX_EXTERN_C_BEGIN

typedef struct JXHost JXHost;
typedef struct JXLocale JXLocale;
typedef struct JXPool JXPool;
typedef struct JXLock JXLock;
typedef struct JXTable JXTable;
typedef struct JXTableEntry JXTableEntry;
typedef struct JXNls JXNls;
typedef struct JXTranscoder JXTranscoder;
typedef struct JXExtension JXExtension;
typedef struct JXItcp JXItcp;
typedef struct JXElm JXElm;
typedef struct JXOpenFile JXOpenFile;
typedef struct JXOpenRequest JXOpenRequest;
typedef struct JXJournal JXJournal;

/* The host kernel handle: the module asks it for everything that it does not do itself. Lives until
   the host ends. */
struct JXHost {
  /* Makes a lock; the host keeps it until destroy_lock. Null on failure. */
  JXLock *(*create_lock)(JXHost *host, uint8_t zero1, uint8_t zero2, uint32_t zero3,
                         const char *name8);
  /* Makes a memory pool, owned by the caller until destroy_pool. Null on failure. */
  JXPool *(*create_pool)(JXHost *host, uint32_t zero1, uint32_t zero2, uint32_t zero3,
                         JXOwner owner, const char *name8);
  /* Makes a table with six attribute words, owned by the caller until destroy_table. Null on
     failure. */
  JXTable *(*create_table)(JXHost *host, uint32_t a1, uint32_t a2, uint32_t a3, uint32_t a4,
                           uint32_t a5, uint32_t a6, uint32_t zero, const char *name8);
  /* Loads a sibling extension by name (name_chars JXChars); the caller releases it. Null when
     there is none of that name. */
  JXExtension *(*load_extension)(JXHost *host, const JXChar *name, uint32_t name_chars,
                                 JXOwner owner);
  /* Stores the value of an option in buffer; *size_bytes holds the room before and the size after.
     Type 3 is a 32-bit integer. 0, or a status of the host's own code space. */
  JXStatus (*get_option)(JXHost *host, const JXChar *name, uint32_t name_chars, uint32_t type,
                         void *buffer, uint32_t *size_bytes);
  JXNls *nls;        /* the character-set service; null when the host has none */
  JXLocale *locale;  /* the locale context; never null */
  int32_t time_zone; /* local time zone in seconds west of UTC */
};

/* Locale facts that the module reads. */
struct JXLocale {
  JXTranscoder *native_decoder; /* encoding 62 to JXChar */
  JXChar decimal_point;         /* the character between integer and fraction digits */
};

/* Memory: blocks live until pool_free or until their pool is destroyed. Several threads may
   allocate and free at once; destroying a pool is its owner's alone. */
struct JXPool {
  /* Frees every block of the pool and the pool itself. 0 on success. */
  JXStatus (*destroy_pool)(JXPool *pool);
  /* A block of the given size, aligned for any type; a request of 0 bytes yields a block too.
     Flag JX_POOL_ZERO_FILL clears it. Null when memory is out. */
  void *(*pool_allocate)(JXPool *pool, uint32_t bytes, uint32_t flags);
  /* Gives a block back. 0 on success; a status of the host when the block is null or not a live
     block of this pool, which is then left alone. */
  JXStatus (*pool_free)(JXPool *pool, void *block);
};

#define JX_POOL_ZERO_FILL 0x80000000u /* pool_allocate: fill the block with zeros */

/* A mutual-exclusion lock, not recursive: held by one thread and released by the same. */
struct JXLock {
  JXStatus (*destroy_lock)(JXLock *lock);                               /* 0 on success */
  JXStatus (*lock_acquire)(JXLock *lock, uint32_t one1, uint32_t one2); /* 0 when held */
  JXStatus (*lock_release)(JXLock *lock);                               /* 0 when released */
};

/* A table calls it for each entry that it releases; the entry's third word is the value. */
typedef JXStatus (*JXEntryDestructor)(JXTableEntry *entry);

/* An ordered collection of values, each with an optional key of bytes. Used by one caller at a
   time. */
struct JXTable {
  /* Calls the entry destructor for every entry in the order of insertion, then frees the table.
     0, or the first status not 0 that a destructor returned; the table is gone either way. */
  JXStatus (*destroy_table)(JXTable *table);
  /* Adds a value at the end under a copy of the key (key null and key_bytes 0: without a key) and
     stores the new entry in *entry_out. Not 0 = stored; 0 when the key is there already or memory
     is out. */
  int32_t (*table_insert)(JXTable *table, uint32_t zero1, uint32_t zero2, void *value,
                          JXTableEntry **entry_out, const void *key, uint32_t key_bytes,
                          uint32_t zero3);
  /* Sets the function that releases the value of an entry; null: values are not released. 0 on
     success. */
  JXStatus (*table_set_entry_destructor)(JXTable *table, uint32_t zero,
                                         JXEntryDestructor destructor);
};

/* One entry of a table. */
struct JXTableEntry {
  void *link;     /* the host's own */
  JXTable *table; /* the table that holds the entry */
  void *value;    /* the inserted value */
};

/* The block of 32 bytes that encoding_info fills; the module reads the first byte. */
typedef struct JXEncodingInfo {
  int8_t max_bytes_per_char; /* the longest character of the encoding, in bytes */
  uint8_t reserved[31];      /* reserved: the host's own */
} JXEncodingInfo;

/* The character-set service. Encodings are named by number. */
struct JXNls {
  /* The size in bytes that text would have after conversion. 0, or a status of the host. */
  JXStatus (*measure_conversion)(JXNls *nls, uint32_t from, const void *text, uint32_t bytes,
                                 uint32_t to, uint32_t *bytes_out);
  /* Not 0 when text must be transcoded between the two encodings; 0 when bytes can be copied. */
  int32_t (*needs_conversion)(JXNls *nls, uint32_t a, uint32_t b);
  /* Describes an encoding. 0, or a status of the host for an encoding it does not know. */
  JXStatus (*encoding_info)(JXNls *nls, uint32_t encoding, JXEncodingInfo *info_out);
  /* A transcoder between two encodings, owned by the caller. Null on failure. */
  JXTranscoder *(*create_transcoder)(JXNls *nls, uint32_t from, uint32_t to, uint32_t zero,
                                     JXOwner owner);
  /* A transcoder from an encoding to JXChar, owned by the caller. Null on failure. */
  JXTranscoder *(*create_decoder)(JXNls *nls, uint32_t encoding, uint32_t zero1, uint32_t zero2);
  /* A transcoder from JXChar to an encoding, owned by the caller. Null on failure. */
  JXTranscoder *(*create_encoder)(JXNls *nls, uint32_t encoding, uint32_t zero1, uint32_t zero2);
  /* Ends a transcoder of any of the three kinds. 0 on success. */
  JXStatus (*destroy_transcoder)(JXNls *nls, JXTranscoder *transcoder);
};

/* A one-way converter of text. It may hold the start of a character that a call cut off and
   complete it on the next call. */
struct JXTranscoder {
  /* Converts source_bytes bytes into at most capacity_bytes bytes and stores the number produced
     (produced_bytes_out may be null). 0, or a status of the host: malformed input, no room; the
     start of a character that was held is lost then. The module relies on that: to drop a character
     that was cut off, it converts bytes that are no text and discards the result. */
  JXStatus (*transcode)(JXTranscoder *transcoder, const void *source, uint32_t source_bytes,
                        void *destination, uint32_t capacity_bytes, uint32_t *produced_bytes_out,
                        uint32_t zero);
};

/* The head of every sibling extension. */
struct JXExtension {
  JXStatus (*release_extension)(JXExtension *extension); /* 0 on success */
};

/* The extension "jxitcp": facts about the machine's network name. */
struct JXItcp {
  JXStatus (*release_extension)(JXExtension *extension); /* 0 on success */
  /* Stores the host name; *length_chars holds the room before and the length after. Form 2 is the
     name of the machine. 0, JX_E_TRUNCATED (the first *length_chars characters are there),
     JX_E_UNSUPPORTED (another form), or a status of the host. */
  JXStatus (*get_host_name)(JXItcp *itcp, JXChar *buffer, uint32_t *length_chars, uint32_t form);
};

/* The extension "jxelm": opens and closes the operating system's files. */
struct JXElm {
  JXStatus (*release_extension)(JXExtension *extension); /* 0 on success */
  /* Opens a file and locks it as the lock word says. Stores 0 or a JXELM_E_* code in *status_out;
     the object is null unless the status is 0. The caller closes the object. The journal (or null)
     receives the system's text for an error that has no code of its own.
     - The flags that make a descriptor close on exec, not become the controlling terminal and
       reach beyond 2 GiB are added to the request's.
     - The file is emptied (O_TRUNC) only after its lock is held: a refused lock leaves the content
       as it was. A file that the open created stays, empty, when its lock is refused.
     - The lock covers the whole file and belongs to this opening of it: it keeps out every other
       opening that asks for a lock, in this process too, and ends with the close; after a fork,
       with the close of every copy. Two callers that wait for one another keep waiting.
     - Only regular files are locked. Devices, FIFOs and pipes are opened without a lock.
     - A directory is refused for reading too, and so is emptying a file that is only read
       (JXELM_E_BADARG). */
  JXOpenFile *(*open_file)(JXElm *elm, const JXOpenRequest *request, uint32_t one,
                           uint32_t lock_word, JXJournal *journal, JXStatus *status_out);
};

/* What to open. */
struct JXOpenRequest {
  const JXChar *path;   /* not terminated, each 1 to 0xFF; read during the call only */
  uint32_t path_chars;  /* length of path */
  uint32_t permissions; /* permission bits of a file that is created, before the umask */
  uint32_t flags;       /* POSIX open flags of the platform */
  uint32_t zero[4];     /* reserved: 0 */
};

/* An open file; owns the descriptor. */
struct JXOpenFile {
  /* Closes the descriptor, once even when that fails, and frees the object; zeros points to eight
     words of 0. 0, or a JXELM_E_* code when the system reports that data was lost at the close
     (the journal, or null, receives the text). */
  JXStatus (*close_file)(JXOpenFile *file, const uint32_t *zeros, JXJournal *journal);
  const int *descriptor; /* the POSIX file descriptor */
};

/* Lock words of open_file. A shared lock needs flags that allow reading, an exclusive one flags
   that allow writing; others are refused with JXELM_E_BADARG before anything is opened. */
#define JXELM_LOCK_NONE 0u      /* no lock */
#define JXELM_LOCK_SHARED 1u    /* shared with other readers */
#define JXELM_LOCK_EXCLUSIVE 2u /* no other lock at the same time */
#define JXELM_LOCK_WAIT 0x8u    /* added: wait for the lock instead of refusing */

/* Statuses of "jxelm". JXELM_STATUS_LIST has their meanings. The module answers NOMEM,
   NOTFOUND, NOPATH, ACCESS, REFUSED, LOCKED and the five BUSY codes with codes of its own; every
   other code of the family counts there as a system error. */
#define JXELM_E_NOMEM ((JXStatus)0x80ffe001u)
#define JXELM_E_SYSTEM ((JXStatus)0x80ffe002u)
#define JXELM_E_BADARG ((JXStatus)0x80ffe003u)
#define JXELM_E_TOOLONG ((JXStatus)0x80ffe004u)
#define JXELM_E_NOSPACE ((JXStatus)0x80ffe005u)
#define JXELM_E_NOTFOUND ((JXStatus)0x80ffe006u)
#define JXELM_E_NOPATH ((JXStatus)0x80ffe007u)
#define JXELM_E_LIMIT ((JXStatus)0x80ffe008u)
#define JXELM_E_ACCESS ((JXStatus)0x80ffe009u)
#define JXELM_E_LOOP ((JXStatus)0x80ffe00au)
#define JXELM_E_NODEVICE ((JXStatus)0x80ffe00bu)
#define JXELM_E_TOOBIG ((JXStatus)0x80ffe00cu)
#define JXELM_E_EXISTS ((JXStatus)0x80ffe00du)
#define JXELM_E_REFUSED ((JXStatus)0x80ffe00eu)
#define JXELM_E_LOCKED ((JXStatus)0x80ffe00fu)
#define JXELM_E_BUSY1 ((JXStatus)0x80ffe010u)
#define JXELM_E_BUSY2 ((JXStatus)0x80ffe011u)
#define JXELM_E_BUSY3 ((JXStatus)0x80ffe012u)
#define JXELM_E_BUSY4 ((JXStatus)0x80ffe013u)
#define JXELM_E_NOLOCKS ((JXStatus)0x80ffe014u)
#define JXELM_E_BUSY5 ((JXStatus)0x80ffe016u)

/* Every status of "jxelm" with its meaning, X(name, text). */
#define JXELM_STATUS_LIST(X)                                     \
  X(JXELM_E_NOMEM, "out of memory")                              \
  X(JXELM_E_SYSTEM, "an error without a code of its own")        \
  X(JXELM_E_BADARG, "request, flags or lock word make no sense") \
  X(JXELM_E_TOOLONG, "path too long")                            \
  X(JXELM_E_NOSPACE, "no space or quota left")                   \
  X(JXELM_E_NOTFOUND, "no such file")                            \
  X(JXELM_E_NOPATH, "a directory on the path is missing")        \
  X(JXELM_E_LIMIT, "too many open files")                        \
  X(JXELM_E_ACCESS, "access denied")                             \
  X(JXELM_E_LOOP, "too many links on the path")                  \
  X(JXELM_E_NODEVICE, "no device, or nobody at the other end")   \
  X(JXELM_E_TOOBIG, "file too large for this process")           \
  X(JXELM_E_EXISTS, "the file exists already")                   \
  X(JXELM_E_REFUSED, "the name may not be opened as a file")     \
  X(JXELM_E_LOCKED, "another holder's lock is in the way")       \
  X(JXELM_E_BUSY1, "in use: a program that is being executed")   \
  X(JXELM_E_BUSY2, "in use: a busy device")                      \
  X(JXELM_E_BUSY3, "in use: the system sees a deadlock")         \
  X(JXELM_E_BUSY4, "in use: the system has no lock left")        \
  X(JXELM_E_NOLOCKS, "the file system has no locks")             \
  X(JXELM_E_BUSY5, "in use: another process's lease or lock")

/* Levels of a journal line. */
#define JX_JOURNAL_TRACE 1u   /* a step of the program */
#define JX_JOURNAL_NOTE 2u    /* worth knowing */
#define JX_JOURNAL_WARNING 3u /* something may be wrong */
#define JX_JOURNAL_ERROR 4u   /* an operation failed; what the module writes */
#define JX_JOURNAL_FATAL 5u   /* the program cannot go on */

/* Receives error texts. The variable list follows the fixed words; its texts are zero-terminated
   JXChars. A status or a message is written with the host's text for it, followed by the texts of
   the list. A buffer operation writes JXChars without a terminator and stores their number.
   0, JX_E_BADARG, JX_E_TRUNCATED (a buffer got what fits), or a status of the host. Several threads
   may write at once. */
struct JXJournal {
  /* buffer (JXChar *), its room in JXChars, where to store the length (uint32_t *, or null),
     message number, number of texts; the list holds that many texts. */
  JXStatus (*message_to_buffer)(JXJournal *journal, uintptr_t buffer, uintptr_t capacity_chars,
                                uintptr_t length_out, uintptr_t message, uintptr_t text_count,
                                va_list args);
  /* level, message number, number of texts; the list holds that many texts. */
  JXStatus (*message_to_journal)(JXJournal *journal, uintptr_t level, uintptr_t message,
                                 uintptr_t text_count, va_list args);
  /* buffer, room and length as above, status; the list holds one text, or null for none. */
  JXStatus (*status_to_buffer)(JXJournal *journal, uintptr_t buffer, uintptr_t capacity_chars,
                               uintptr_t length_out, uintptr_t status, va_list args);
  /* level, status; the list holds one text that explains it, or null for none. */
  JXStatus (*status_to_journal)(JXJournal *journal, uintptr_t level, uintptr_t status,
                                va_list args);
};

JX_EXTERN_C_END

#endif
