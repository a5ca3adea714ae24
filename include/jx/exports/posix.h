/* The routines of the POSIX layer: descriptors, paths, file-system operations, directory streams.
   Hosts reach them through the slots of the instance and of the handles. */
#ifndef JX_EXPORTS_POSIX_H
#define JX_EXPORTS_POSIX_H

#include "jx/base.h"
#include "jx/host.h"
#include "jx/module.h"
#include "jx/records.h"

JX_EXTERN_C_BEGIN

/* ---- Instance ----------------------------------------------------------------------------- */

/* Loads the file-open extension into the instance (null when the host has none). Returns 0. */
JX_EXPORT JXStatus bkwem(JXInstance *instance);

/* Releases the file-open extension when present. Returns 0. */
JX_EXPORT JXStatus bkwemdestroy(JXInstance *instance);

/* Writes the system's text for an errno to a journal, as an error of status JXWEM_E_SYSTEM.
   Writes nothing when the journal is null or the text cannot be had. Returns 0. */
JX_EXPORT JXStatus bkwemerror(JXInstance *instance, int system_error, JXJournal *journal);

/* ---- Files -------------------------------------------------------------------------------- */

/* Fills the operation slots and the method vector of a handle for its record format and
   buffering. 0, or JXWEM_E_BADRECFORMAT. */
JX_EXPORT JX_NODISCARD JXStatus bkwemvec(JXFile *file);

/* Opens the file named in the handle. 0, JX_E_NOMEM, JXWEM_E_NOTFOUND, JXWEM_E_NOPATH,
   JXWEM_E_ACCESS, JXWEM_E_OPENREFUSED, JXWEM_E_INUSE, JXWEM_E_SYSTEM, or a status of the path
   expansion. */
JX_EXPORT JX_NODISCARD JXStatus bkwem_open(JXFile *file);

/* Closes the file and frees the host file block. Always 0 for a handle. */
JX_EXPORT JXStatus bkwem_close(JXFile *file);

/* Reads up to `bytes` bytes at *offset, or at the descriptor's offset when offset is null, and
   stores how many came. 0 (a short read too), JXWEM_E_EOF (nothing left) or JXWEM_E_SYSTEM. */
JX_EXPORT JX_NODISCARD JXStatus bkwem_read(JXFile *file, void *destination, uint32_t bytes,
                                           uint32_t *bytes_out, const int64_t *offset);

/* Writes up to `bytes` bytes at *offset, or at the descriptor's offset, and stores how many went.
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

/* ---- Paths -------------------------------------------------------------------------------- */

/* Expands variables, "~", leading dots and relative paths; drops trailing slashes. *path_out must
   be null before; when it is not null afterwards, on failure too, the caller gives it back
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

/* These operations, and those on directories below, expand the paths that they are given. Besides
   the statuses named: JX_E_NOMEM, JXWEM_E_FAILED (not convertible), JXWEM_E_ACCESS, JXWEM_E_SYSTEM
   (reported to the instance's journal) and those of the expansion. */

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
   stays. Where reading a directory of the source fails, its copy ends there and the result is still
   0: a caller who has to know compares the trees. The open of a FIFO waits for a writer.
   JXWEM_E_BADNAME, JXWEM_E_EXISTS, JXWEM_E_NOTFOUND, JXWEM_E_NOPATH, JXWEM_E_INUSE,
   JXWEM_E_DISKFULL, JXWEM_E_NOTSUPPORTED (device gone), JXWEM_E_NAMETOOLONG, JXWEM_E_FAILED
   (reported); for a tree also what its directories' close slot answers. */
JX_EXPORT JX_NODISCARD JXStatus bkwemcopy(JXInstance *instance, const JXChar *source,
                                          uint32_t source_chars, const JXChar *target,
                                          uint32_t target_chars);

/* The records of jxweminfo as an array of *count_out pointers of the pool; the caller frees the
   array, each name and each record. */
JX_EXPORT JX_NODISCARD JXStatus bkweminfo(JXInstance *instance, JXPool *pool, const JXChar *name,
                                          uint32_t name_chars, JXInfoItem ***items_out,
                                          uint32_t *count_out);

/* The records of jxwemfsinfo as an array, of the instance's pool. */
JX_EXPORT JX_NODISCARD JXStatus bkwemfsinfo(JXInstance *instance, const JXChar *name,
                                            uint32_t name_chars, JXInfoItem ***items_out,
                                            uint32_t *count_out);

/* ---- Directories -------------------------------------------------------------------------- */

/* Opens the stream of a handle by its path, the second step of the open. 0, JXWEM_E_NOHANDLE
   (also a handle without an instance), JX_E_NOMEM, JXWEM_E_NOTFOUND (also what is no directory),
   JXWEM_E_ACCESS, JXWEM_E_NAMETOOLONG, JXWEM_E_SYSTEM (reported to the instance's journal),
   JXWEM_E_FAILED (not convertible), JXWEM_E_BADNAME (a length without a path), or a status of the
   expansion. */
JX_EXPORT JX_NODISCARD JXStatus bkwemopendir(JXDirectory *directory);

/* Closes the stream of a handle; later reads and lists fail with JXWEM_E_NOHANDLE. Returns 0. */
JX_EXPORT JXStatus bkwemclosedir(JXDirectory *directory);

/* The next name into buffer; *chars holds the room before and the length after, which is that of
   the name on the system, a character a byte. JXWEM_E_EOF, JXWEM_E_NOROOM (the entry is skipped),
   JXWEM_E_FAILED (no buffer or no length), JXWEM_E_SYSTEM, or the transcoder's status. */
JX_EXPORT JX_NODISCARD JXStatus bkwemreaddir(JXDirectory *directory, JXChar *buffer,
                                             uint32_t *chars);

/* The members that jxwemdirectorymemberlist lists, as a linked list. JXWEM_E_NOHANDLE for a missing
 * or closed handle. */
JX_EXPORT JX_NODISCARD JXStatus bkwemdirectorymemberlist(JXInstance *instance,
                                                         JXDirectory *directory, JXPool *pool,
                                                         uint32_t flags, JXMember **first_out,
                                                         uint64_t *count_out);

/* What jxwemdirectorylist lists, as a linked list of records of the instance's pool. */
JX_EXPORT JX_NODISCARD JXStatus bkwemdirectorylist(JXInstance *instance, const JXChar *path,
                                                   uint32_t path_chars, uint32_t kind,
                                                   uint32_t flags, JXDirectoryEntry **first_out,
                                                   uint64_t *count_out);

JX_EXTERN_C_END

#endif
