/* The routines of the record layer: the record buffer, line ends, and a reader and a writer for
   each record format and way of transfer. Hosts reach them through the slots of a file handle. */
#ifndef JX_EXPORTS_RECORD_H
#define JX_EXPORTS_RECORD_H

#include "jx/base.h"
#include "jx/host.h"
#include "jx/module.h"
#include "jx/records.h"

JX_EXTERN_C_BEGIN

/* ---- Buffer and line ends ----------------------------------------------------------------- */

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

/* Appends bytes to the record buffer and writes each block that becomes full. The status of the
   last block write, 0 when there was none; JXWEM_E_NOTSUPPORTED for a handle that gathers no
   blocks, JXWEM_E_READONLY for an input handle. */
JX_EXPORT JX_NODISCARD JXStatus sk_buf_write(JXFile *file, const void *source, uint32_t bytes);

/* Builds the handle's control strings in the file's encoding: direction 0 inbound, 1 outbound, of
   group 1 or 2. 0, JXWEM_E_FAILED (direction, group, transcoder, or an encoding without a line
   feed), JX_E_NOMEM, or a status of the character-set service; a failure leaves none of that
   direction. */
JX_EXPORT JX_NODISCARD JXStatus setupCCTable(JXFile *file, uint32_t direction, uint32_t group);

/* Line-end and page-control strings: two groups of nine written (0 line end, 1 and 2 one and two
   blank lines more, 3 line end and new page, 4 and 5 return, 6 nothing, 7 new page, 8 space), two
   groups of three recognised (line feed, form feed, carriage return). */
extern JX_EXPORT JXControlString sk_outbound_cc[18];
extern JX_EXPORT JXControlString sk_inbound_cc[6];

/* ---- Readers and writers ------------------------------------------------------------------ */

/* Records of every format.

   A read of a handle that only writes answers JXWEM_E_NOTSUPPORTED, a write to an input handle
   JXWEM_E_READONLY. Only direct transfers of binary records, and of stream records that are not
   converted, leave it to the descriptor, which JX_LOCK_* may have opened for both: JXWEM_E_SYSTEM
   where it was not.

   The "r" routines are direct: one transfer each, and one more for a byte-order mark, where the
   system made a write short, or where a short read ends inside a character. Buffered readers decide
   a record from the bytes in hand and read on only when these do not decide it. A buffered reader
   keeps the end of the file that it saw; a direct one sees what is appended later. A write that the
   system takes in part goes on, also after a signal; a signal before the first byte fails it.

   Text that is converted may be cut inside a character. At the end of a record of text lines that
   is the fault of this record: it gets the transcoder's status, the next one is whole. Between the
   parts of a line longer than the record length, and between stream records, the transcoder holds
   the start of a character and goes on with the rest; point, a transfer at an explicit offset and a
   failed conversion or write make it drop what it holds. A base character and its mark that a
   record or chunk separates stay two characters in windows-1255, windows-1258 and TCVN. A
   transcoder that claims more bytes than it had room for is answered with JXWEM_E_FAILED and a line
   in the journal. */

/* Text lines. A line ends with the line feed of the file's encoding, in EBCDIC 0x25 and not 0x15
   (NEL), or with carriage return and line feed. A file encoding in which another control character
   takes more bytes than the line feed, such as UTF-7, has no lines: its open gets the transcoder's
   status for want of room.

   A read gives one record without its line end; JXWEM_E_PARTIAL marks a record whose line end was
   not seen, JXWEM_E_EOF the end. A byte-order mark is skipped before every line. Any other failure
   is of the host read, of the transcoder, or of the direct routine's step back to the next record:
   JXWEM_E_FAILED, which a pipe always gets; the record is handed back then. */
JX_EXPORT JXStatus skwem_read_var(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                  int64_t *offset);
JX_EXPORT JXStatus skwem_read_rvar(JXFile *file, void **data, uint32_t *length, uint32_t unused,
                                   int64_t *offset);

/* Writes one record and a line end. 0, or a failure of the host write or of the transcoder; the
   direct routine answers JXWEM_E_TOOLONG to a record longer than the record length, and writes
   nothing of it. The length counts bytes without a transcoder, with one characters:
   exactly in UTF-8, UTF-16, UTF-32 and every encoding of one byte a character; in the others the
   only limit is the room, record length and line end in the longest characters of the file, and a
   record that exceeds it gets the transcoder's status. */
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

/* Writes bytes unchanged. 0, or a failure of the host write. */
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

JX_EXTERN_C_END

#endif
