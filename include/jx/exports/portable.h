/* The routines of the portable layer: instance, open and close, information, lists, unique names.
   Hosts reach them through the slots of the instance and of the handles. */
#ifndef JX_EXPORTS_PORTABLE_H
#define JX_EXPORTS_PORTABLE_H

#include "jx/base.h"
#include "jx/host.h"
#include "jx/module.h"
#include "jx/records.h"

JX_EXTERN_C_BEGIN

/* ---- Instance ----------------------------------------------------------------------------- */

/* Ends an instance. Everything the module handed out must have been released before.
   Returns 0; JXWEM_E_NOHANDLE for null. */
JX_EXPORT JXStatus jxwemdestroy(JXInstance *instance);

/* Stores the lowest host version the module works with: 3, 1, 1. Returns 0. */
JX_EXPORT JXStatus jxwemgetreqversion(JXInstance *instance, uint32_t *major, uint32_t *minor,
                                      uint32_t *patch);

/* Stores the module's own version: JX_VERSION_*. Returns 0. */
JX_EXPORT JXStatus jxwemgetversion(JXInstance *instance, uint32_t *major, uint32_t *minor,
                                   uint32_t *patch);

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

/* Flushes, unless the file is open for input, closes and releases everything, even if one step
   fails. Returns the status of the flush, else of the close: JXWEM_E_FAILED for a FIFO or a device
   that cannot be made durable, though everything was written. */
JX_EXPORT JXStatus jxwemclose(JXFile *file);

/* Replaces the journal of a file, under its open lock. Returns 0 or the status of the lock. */
JX_EXPORT JXStatus jxwemattachjnl(JXFile *file, JXJournal *journal);

/* Record positioning is not offered. Always JXWEM_E_NOTSUPPORTED. */
JX_EXPORT JXStatus jxwemposition2record(JXFile *file, ...);
JX_EXPORT JXStatus jxwemrecord2position(JXFile *file, ...);

/* ---- Information -------------------------------------------------------------------------- */

/* These operations, and those on directories and names below, expand the paths that they are given.
   Besides the statuses named: JX_E_NOMEM, JXWEM_E_FAILED (not convertible), JXWEM_E_ACCESS,
   JXWEM_E_SYSTEM (reported to the instance's journal) and those of the expansion. */

/* A table of "FILESIZE", "MODTIME" and "ISDIR" records of the caller's pool, keyed by name and
   owned by the caller, who destroys it before the pool; null with the reason in *status_out:
   JXWEM_E_FAILED (no pool, no name, insert), JXWEM_E_NOTFOUND, JXWEM_E_NOHANDLE (table). */
JX_EXPORT JX_NODISCARD JXTable *jxweminfo(JXInstance *instance, JXPool *pool, const JXChar *name,
                                          uint32_t name_chars, JXStatus *status_out);

/* Frees the record of an entry and its blocks. Returns 0. */
JX_EXPORT JXStatus jxwemInfoDestroy(JXTableEntry *entry);

/* As jxweminfo, for the file system that holds the name: "FREESPACE" and "FILESYSID", in records of
   the instance's pool. JXWEM_E_NOTFOUND, JXWEM_E_NAMETOOLONG, JXWEM_E_NOHANDLE, JXWEM_E_FAILED. */
JX_EXPORT JX_NODISCARD JXTable *jxwemfsinfo(JXInstance *instance, const JXChar *name,
                                            uint32_t name_chars, JXStatus *status_out);

/* Frees the record of an entry and its blocks. Returns 0. */
JX_EXPORT JXStatus jxwemFSInfoDestroy(JXTableEntry *entry);

/* ---- Directories -------------------------------------------------------------------------- */

/* Opens a directory and returns its handle, owned by the caller until close; null with the reason
   in *status_out: JXWEM_E_BADNAME, JXWEM_E_NOTFOUND, JXWEM_E_NAMETOOLONG. name8 may be null. */
JX_EXPORT JX_NODISCARD JXDirectory *jxwemdirectoryopen(JXInstance *instance, const JXChar *path,
                                                       uint32_t path_chars, uint32_t options,
                                                       uint32_t unused, JXOwner owner,
                                                       const char *name8, JXStatus *status_out);

/* Ends a directory handle. Returns 0. */
JX_EXPORT JXStatus jxwemdirectoryclose(JXDirectory *directory);

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

/* Frees the name and the information table of an entry's record. Returns 0. */
JX_EXPORT JXStatus jxwemDirectoryMemberListDestroy(JXTableEntry *entry);

/* The directory and its members as a table of JXDirectoryEntry records, owned by the caller. kind
   is JX_DIRECTORY_NAMED to JX_DIRECTORY_HOME, flags JX_LIST_*. JX_E_BADARG (kind),
   JXWEM_E_NOMEMBER (no parent), JXWEM_E_BADNAME (a path of blanks), 1 (no path, and the current
   directory is not convertible; or the parent of a path that expands to nothing), JXWEM_E_NOTFOUND,
   JXWEM_E_NAMETOOLONG, JXWEM_E_NOHANDLE (table), JXWEM_E_FAILED (insert), or the transcoder's
   status. */
JX_EXPORT JX_NODISCARD JXTable *jxwemdirectorylist(JXInstance *instance, const JXChar *path,
                                                   uint32_t path_chars, uint32_t kind,
                                                   uint32_t flags, uint64_t *count_out,
                                                   JXStatus *status_out);

/* Frees an entry's record and its name. Returns 0. */
JX_EXPORT JXStatus jxwemDirectoryListDestroy(JXTableEntry *entry);

/* ---- Unique names ------------------------------------------------------------------------- */

/* Makes a name and joins it to a directory (empty: the current one). 65,535 calls in a row on one
   instance give different names; another instance of the process gives the same ones. The file is
   not looked for: whoever must have it alone creates it with O_EXCL. The result is given back with
   bkwembuildpathdestroy. JXWEM_E_FAILED (no request), JXWEM_E_BADOPTIONS (no kind of name),
   JX_E_TRUNCATED (a prefix of 1015 to 1023 characters, which leaves no room for its digits),
   JXWEM_E_NAMETOOLONG (a longer one), the host's status for the option "host.process_id", or a
   status of the path build. */
JX_EXPORT JX_NODISCARD JXStatus jxwemcreatename(JXInstance *instance, const JXChar *directory,
                                                uint32_t directory_chars,
                                                const JXCreateName *request, JXChar **path_out,
                                                uint32_t *path_chars_out);

JX_EXTERN_C_END

#endif
