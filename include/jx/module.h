/* The module's objects: file and directory handles, the instance with its operation table, and the
   entry that a host calls by name. A host loads the module, calls jxextent and jxwem, and works
   through these tables from then on.

   Text is JXChars with a length in JXChars and is never terminated. A null instance or handle is
   answered with JXWEM_E_NOHANDLE. A pool without memory is JX_E_NOMEM everywhere. A system call
   that has none is JXWEM_E_SYSTEM, with the system's text in the journal, unless the routine says
   otherwise. */
#ifndef JX_MODULE_H
#define JX_MODULE_H

#include "jx/base.h"
#include "jx/host.h"
#include "jx/records.h"

JX_EXTERN_C_BEGIN

typedef struct JXInstance JXInstance;
typedef struct JXFile JXFile;
typedef struct JXDirectory JXDirectory;

#define JX_EYE_CATCHER "nevo" /* the first four bytes of instances and handles */
#define JX_HOST_NAME_CHARS 30 /* room for the host name in an instance */

/* ---- File handle -------------------------------------------------------------------------- */

/* Reads a record. Stores the address of the data in *data and its size in bytes in *length; for
   binary and stream files the caller sets *length to the bytes wanted. The data is in the file's
   own memory, valid until the next call on it; with direct transfer the caller sets *data to memory
   of its own. *offset is a byte offset for binary and stream files without buffering or with direct
   transfer; null reads at the current offset, and the other files ignore it. */
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
  void *empty1[9];                                     /* reserved: null */
  JXReadSlot read;                                     /* skwem_read_*, by format and buffering */
  JXWriteSlot write;                                   /* skwem_write_*, by format and buffering */
  void *empty2[1];                                     /* reserved: null */
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

#define JX_DIRECTORY_OPEN_ALL 0x4u /* directory open: names that begin with "." are read too */
#define JX_DIRECTORY_ALL JX_DIRECTORY_OPEN_ALL /* the same under its older name */

/* An open directory. The slots are for the host; the fields after them are the module's. Made by
   directory open, ended by close, used by one caller at a time. */
struct JXDirectory {
  char eye_catcher[4];                       /* "nevo" */
  char *name;                                /* 8-bit label, or null */
  JXStatus (*close)(JXDirectory *directory); /* jxwemdirectoryclose */
  JXStatus (*member_exist)(JXDirectory *directory, const JXChar *name,
                           uint32_t name_chars); /* jxwemdirectorymemberexist */
  JXTable *(*member_list)(JXDirectory *directory, JXPool *pool, uint32_t flags, uint64_t *count_out,
                          JXStatus *status_out); /* jxwemdirectorymemberlist */
  JXStatus (*read)(JXDirectory *directory, JXChar *buffer, uint32_t *chars); /* bkwemreaddir */
  void *empty1;                                                              /* reserved: null */
  JXInstance *instance;                                                      /* opened through */
  JXPool *pool;         /* the handle's own pool */
  JXPool *working_pool; /* the same pool */
  JXJournal *journal;   /* reserved: null */
  void **stream_holder; /* holds the system's stream, null once closed */
  uint32_t options;     /* JX_DIRECTORY_OPEN_* */
  JXChar *path;         /* as open received it */
  uint32_t path_chars;  /* length of path */
  void *empty2[2];      /* reserved: null */
};

/* ---- Instance ----------------------------------------------------------------------------- */

/* The extension instance: operation table and shared state. Made by jxwem, ended by its destroy
   slot, shared by all callers. The comment of a slot names its routine, which jx/exports
   declares. */
struct JXInstance {
  char eye_catcher[4]; /* "nevo" */
  void *empty1[2];     /* reserved: null */
  JXStatus (*get_required_version)(JXInstance *instance, uint32_t *major, uint32_t *minor,
                                   uint32_t *patch); /* jxwemgetreqversion */
  JXStatus (*get_version)(JXInstance *instance, uint32_t *major, uint32_t *minor,
                          uint32_t *patch);  /* jxwemgetversion */
  JXHost *host;                              /* the handle given to jxwem */
  JXStatus (*destroy)(JXInstance *instance); /* jxwemdestroy */
  void *empty2[2];                           /* reserved: null */
  JXDirectory *(*directory_open)(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                                 uint32_t options, uint32_t unused, JXOwner owner,
                                 const char *name8, JXStatus *status_out); /* jxwemdirectoryopen */
  JXFile *(*open)(JXInstance *instance, const JXChar *name, uint32_t name_chars,
                  const JXOpenOptions *options, uint32_t unused, JXOwner owner,
                  const char *caller_tag8, JXStatus *status_out); /* jxwemopen */
  void *empty3;                                                   /* reserved: null */
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
  JXHost *pool_host;                                /* makes the pools of open and directory open */
  JXPool *pool;                                     /* "jxwem pool"; holds the instance itself */
  JXPool *working_pool;                             /* the same pool */
  JXJournal *journal;    /* receives errors of file-system operations; null at first */
  JXNls *nls;            /* the host's character-set service */
  JXElm *elm;            /* the file-open extension, or null */
  uint32_t name_counter; /* of unique names; atomic */
  JXExtension *secure;   /* held for the instance's lifetime */
  JXChar host_name[JX_HOST_NAME_CHARS]; /* the machine's name */
  uint32_t host_name_chars;             /* its length as "jxitcp" gave it; 0 without "jxitcp" */
  JXTranscoder *native_encoder;         /* JXChar to encoding 62 */
  JXTranscoder *native_decoder;         /* encoding 62 to JXChar */
};

#define JX_REMOVE_CONTENTS 0x1u /* remove: a directory with everything in it */

/* ---- Entry -------------------------------------------------------------------------------- */

/* Keeps the host kernel handle in Exported_JXHandle. Called once, before jxwem. */
JX_EXPORT void jxextent(JXHost *host);

/* The handle that jxextent was given. */
extern JX_EXPORT JXHost *Exported_JXHandle;

/* Makes an extension instance, owned by the caller until jxwemdestroy. Null on any failure:
   out of memory, no character-set service, no "jxsecure". */
JX_EXPORT JX_NODISCARD JXInstance *jxwem(JXHost *host, JXOwner owner);

JX_EXTERN_C_END

#endif
