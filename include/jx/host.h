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

/* The host kernel handle: what the host gives to the module, and the source of everything the
   module does not do itself. Lives until the host ends. */
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

/* Memory: blocks live until pool_free or until their pool is destroyed. */
struct JXPool {
  /* Frees every block of the pool and the pool itself. 0 on success. */
  JXStatus (*destroy_pool)(JXPool *pool);
  /* A block of the given size, aligned for any type; a request of 0 bytes yields a block too.
     Flag JX_POOL_ZERO_FILL clears it. Null when memory is out. */
  void *(*pool_allocate)(JXPool *pool, uint32_t bytes, uint32_t flags);
  /* Gives a block back. 0 on success. */
  JXStatus (*pool_free)(JXPool *pool, void *block);
};

#define JX_POOL_ZERO_FILL 0x80000000u /* pool_allocate: fill the block with zeros */

/* A mutual-exclusion lock. */
struct JXLock {
  JXStatus (*destroy_lock)(JXLock *lock);                               /* 0 on success */
  JXStatus (*lock_acquire)(JXLock *lock, uint32_t one1, uint32_t one2); /* 0 when held */
  JXStatus (*lock_release)(JXLock *lock);                               /* 0 when released */
};

/* What a table calls for each entry it lets go of; the entry's third word is the value. */
typedef JXStatus (*JXEntryDestructor)(JXTableEntry *entry);

/* An ordered collection of values, each with an optional key of bytes. */
struct JXTable {
  /* Calls the entry destructor for every entry, then frees the table. 0 on success. */
  JXStatus (*destroy_table)(JXTable *table);
  /* Adds a value under a copy of the key (key null and key_bytes 0: without a key) and stores the
     new entry in *entry_out. Not 0 = stored. */
  int32_t (*table_insert)(JXTable *table, uint32_t zero1, uint32_t zero2, void *value,
                          JXTableEntry **entry_out, const void *key, uint32_t key_bytes,
                          uint32_t zero3);
  /* Sets the function that releases the value of an entry. 0 on success. */
  JXStatus (*table_set_entry_destructor)(JXTable *table, uint32_t zero,
                                         JXEntryDestructor destructor);
};

/* One entry of a table. */
struct JXTableEntry {
  void *link;     /* the host's own */
  JXTable *table; /* the table that holds the entry */
  void *value;    /* what was inserted */
};

/* What encoding_info fills: a block of 32 bytes, of which the module reads the first. */
typedef struct JXEncodingInfo {
  int8_t max_bytes_per_char; /* the longest character of the encoding, in bytes */
  uint8_t reserved[31];      /* the host's own */
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
     (produced_bytes_out may be null). 0, or a status of the host: malformed input, no room. */
  JXStatus (*transcode)(JXTranscoder *transcoder, const void *source, uint32_t source_bytes,
                        void *destination, uint32_t capacity_bytes, uint32_t *produced_bytes_out,
                        uint32_t zero);
};

/* What every sibling extension begins with. */
struct JXExtension {
  JXStatus (*release_extension)(JXExtension *extension); /* 0 on success */
};

/* The extension "jxitcp": facts about the machine's network name. */
struct JXItcp {
  JXStatus (*release_extension)(JXExtension *extension); /* 0 on success */
  /* Stores the host name; *length_chars holds the room before and the length after. */
  JXStatus (*get_host_name)(JXItcp *itcp, JXChar *buffer, uint32_t *length_chars, uint32_t form);
};

/* The extension "jxelm": opens and closes the operating system's files. */
struct JXElm {
  JXStatus (*release_extension)(JXExtension *extension); /* 0 on success */
  /* Opens a file and locks it as the lock word says. Stores 0 or a JXELM_E_* code in *status_out;
     the object is null unless the status is 0. The caller closes the object. */
  JXOpenFile *(*open_file)(JXElm *elm, const JXOpenRequest *request, uint32_t one,
                           uint32_t lock_word, JXJournal *journal, JXStatus *status_out);
};

/* What to open. */
struct JXOpenRequest {
  const JXChar *path;   /* not terminated; read during the call only */
  uint32_t path_chars;  /* length of path */
  uint32_t permissions; /* permission bits of a file that is created, before the umask */
  uint32_t flags;       /* POSIX open flags of the platform */
  uint32_t zero[4];     /* reserved, 0 */
};

/* An open file; owns the descriptor. */
struct JXOpenFile {
  /* Closes the descriptor and frees the object; zeros points to eight words of 0. */
  JXStatus (*close_file)(JXOpenFile *file, const uint32_t *zeros, JXJournal *journal);
  const int *descriptor; /* the POSIX file descriptor */
};

/* Lock words of open_file. */
#define JXELM_LOCK_NONE 0u      /* no lock */
#define JXELM_LOCK_SHARED 1u    /* shared with other readers */
#define JXELM_LOCK_EXCLUSIVE 2u /* no other lock at the same time */
#define JXELM_LOCK_WAIT 0x8u    /* added: wait for the lock instead of refusing */

/* Statuses of open_file that the module turns into codes of its own; every other code of the
   family counts as a system error. */
#define JXELM_E_NOMEM ((JXStatus)0x80ffe001u)    /* out of memory */
#define JXELM_E_NOTFOUND ((JXStatus)0x80ffe006u) /* no such file */
#define JXELM_E_NOPATH ((JXStatus)0x80ffe007u)   /* a directory on the path is missing */
#define JXELM_E_ACCESS ((JXStatus)0x80ffe009u)   /* access denied */
#define JXELM_E_REFUSED ((JXStatus)0x80ffe00eu)  /* the name may not be opened as a file */
#define JXELM_E_LOCKED ((JXStatus)0x80ffe00fu)   /* another holder's lock is in the way */
#define JXELM_E_BUSY1 ((JXStatus)0x80ffe010u)    /* in use */
#define JXELM_E_BUSY2 ((JXStatus)0x80ffe011u)    /* in use */
#define JXELM_E_BUSY3 ((JXStatus)0x80ffe012u)    /* in use */
#define JXELM_E_BUSY4 ((JXStatus)0x80ffe013u)    /* in use */
#define JXELM_E_BUSY5 ((JXStatus)0x80ffe016u)    /* in use */

/* Where error texts go. The variable list follows the fixed words. All return 0 on success. */
struct JXJournal {
  JXStatus (*message_to_buffer)(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                uintptr_t w4, uintptr_t w5, va_list args);
  JXStatus (*message_to_journal)(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                 va_list args);
  JXStatus (*status_to_buffer)(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                               uintptr_t w4, va_list args);
  /* level (4 = error), status, then in the list a zero-terminated JXChar text that explains it. */
  JXStatus (*status_to_journal)(JXJournal *journal, uintptr_t level, uintptr_t status,
                                va_list args);
};

JX_EXTERN_C_END

#endif
