/* The reference host kernel: everything the module needs from a host, as a library to embed. It
   creates a host kernel handle, loads the module into the process and releases both. Valid as C11
   and as C++20; thread-safe unless a declaration says otherwise. Link with libjxhost.a, -lstdc++,
   -pthread and -ldl; pkg-config knows them as jxwem. */
#ifndef JX_JXHOST_H
#define JX_JXHOST_H

#include <stddef.h>

#include "jx/base.h"
#include "jx/host.h"
#include "jx/wem.h"

JX_EXTERN_C_BEGIN

/* Sibling extensions that a host offers. */
#define JXHOST_ELM 0x1u    /* "jxelm": opens files */
#define JXHOST_ITCP 0x2u   /* "jxitcp": the host name */
#define JXHOST_SECURE 0x4u /* "jxsecure" */
#define JXHOST_ALL 0x7u    /* all of them */

/* Called with each journal line, one call at a time, on the thread that writes it: text8 is UTF-8
   without control characters and invisible ones, zero-terminated, valid during the call; the
   catalogue's meaning of the status if the writer gave no text. The sink must not write to the same
   journal. */
typedef void (*JXHostJournalSink)(void *context, uint32_t level, JXStatus status,
                                  const char *text8);

/* How a host is made. Start from JXHOST_CONFIG_INIT and change what differs. */
typedef struct JXHostConfig {
  uint32_t extensions;            /* JXHOST_* bits */
  int32_t time_zone;              /* seconds west of UTC; used when time_zone_set is not 0 */
  uint32_t time_zone_set;         /* 0: the zone that the process has when the host is made */
  int32_t process_id;             /* value of "host.process_id"; 0: the real one when asked */
  const char *host_name8;         /* answer of "jxitcp", a character a byte; null: the machine's
                                     name. Copied. */
  JXHostJournalSink journal_sink; /* where the journal goes, or null */
  void *journal_context;          /* passed to journal_sink */
  int journal_fd;                 /* used without a sink: a descriptor, or -1 for no output; a pipe
                                     without a reader raises SIGPIPE */
} JXHostConfig;

/* The configuration to start from: all extensions, the process's own time zone and number, the
   machine's name, no journal. */
#define JXHOST_CONFIG_INIT \
  { JXHOST_ALL, 0, 0, 0, NULL, NULL, NULL, -1 }

/* A host with the given configuration (null: JXHOST_CONFIG_INIT), owned by the caller until
   jxhost_destroy. Null when out of memory. The operations of the handle may be called from several
   threads at once. */
JX_NODISCARD JXHost *jxhost_create(const JXHostConfig *config);

/* Destroys a host, null allowed: unloads modules still loaded, then frees the objects still alive,
   newest first; open files are closed, entry destructors are not called. Each such object is named
   in the journal with JXHOST_E_LEAKED. Returns how many pools, locks, tables, transcoders,
   extensions and open files were still alive (0 = nothing leaked). */
uint32_t jxhost_destroy(JXHost *host);

/* The journal of a host: pass it in open options or store it in an instance's journal field. */
JX_NODISCARD JXJournal *jxhost_journal(JXHost *host);

/* Adds or replaces a 32-bit option that get_option answers. name8 is ASCII, copied. 0, JX_E_BADARG
   (no name, or not ASCII) or JX_E_NOMEM. */
JX_NODISCARD JXStatus jxhost_set_option(JXHost *host, const char *name8, int32_t value);

/* Offers an open descriptor under a path: from then on opening exactly that path gives a duplicate
   of the descriptor instead of a file. This hands standard input, a socket or a file that the
   program has just created to the module, and nobody can put another file in its place. Offset,
   content and status flags are shared and left alone; nothing is created or emptied. The open locks
   a regular file as its lock mode says, JX_LOCK_NONE not at all; a lock lasts until the last
   duplicate is closed. path8 is copied and need not name anything; open it with
   JX_OPEN_LITERAL_NAME. The descriptor stays the caller's and must stay open until it is withdrawn;
   a second offer under the path replaces the first. An open for writing of a descriptor that only
   reads, or the reverse, is JXELM_E_ACCESS. 0, JX_E_BADARG (no path, or a negative descriptor) or
   JX_E_NOMEM. */
JX_NODISCARD JXStatus jxhost_offer_descriptor(JXHost *host, const char *path8, int fd);
/* Withdraws an offer; does nothing when there is none. Files opened through it stay open. Not to be
   called while another thread opens that path. */
void jxhost_withdraw_descriptor(JXHost *host, const char *path8);

/* Live blocks of a pool of this host, and of all its pools together. */
uint64_t jxhost_pool_live_blocks(const JXPool *pool);
uint64_t jxhost_live_blocks(const JXHost *host);
/* Live pools, locks, tables, transcoders, extensions and open files of a host. */
uint32_t jxhost_live_objects(const JXHost *host);

/* ---- Tables, from the host's side ---------------------------------------------------------- */

/* For tables of this host kernel only; null has no entries. Entries are valid until destroy_table.
 */

/* The number of entries. */
uint32_t jxhost_table_count(const JXTable *table);
/* The first entry in insertion order, or null. */
const JXTableEntry *jxhost_table_first(const JXTable *table);
/* The entry after another, or null. */
const JXTableEntry *jxhost_table_next(const JXTableEntry *entry);
/* The entry with a key of key_bytes bytes, or null. */
const JXTableEntry *jxhost_table_find(const JXTable *table, const void *key, uint32_t key_bytes);
/* The key of an entry and its size in bytes; null for an entry without one. */
const void *jxhost_table_key(const JXTableEntry *entry, uint32_t *key_bytes_out);

/* ---- UTF-8 ----------------------------------------------------------------------------------- */

/* C programs have names and texts in UTF-8; the module takes JXChars. To the system a name or path
   is bytes, and the module keeps it as bytes: one JXChar each. "Z\u00FCrich" has 7 JXChars as a
   name and 6 as a text. Two of these functions are for names, two for records of JXChars.

   They write to the caller's memory. The last argument is the room before the call and the length
   after it, 0 if the call fails. UTF-8 is stored with a terminating zero, which the length does not
   count: 4 bytes a character and one more are always enough. JX_E_BADARG: an argument is null. */

/* Makes a name from zero-terminated bytes, for example an argument of main. They need not be UTF-8.
   JX_NAME_MAX_CHARS is room for every name that the module takes. 0, JX_E_BADARG or
   JXWEM_E_NAMETOOLONG (no room). */
JX_NODISCARD JXStatus jxhost_utf8_to_name(const char *utf8, JXChar *name, uint32_t *name_chars);
/* Makes bytes from a name, for example one that the module returned; they are UTF-8 if the file's
   name is. 0, JX_E_BADARG, JXHOST_E_NOROOM or JXHOST_E_UNMAPPABLE (a JXChar of 0 or above 0xFF). */
JX_NODISCARD JXStatus jxhost_name_to_utf8(const JXChar *name, uint32_t name_chars, char *utf8,
                                          uint32_t *utf8_bytes);
/* Decodes utf8_bytes bytes; there are never more characters than bytes. 0, JX_E_BADARG,
   JXHOST_E_NOROOM or JXHOST_E_MALFORMED (not UTF-8, or the last character is cut). */
JX_NODISCARD JXStatus jxhost_utf8_to_text(const char *utf8, uint32_t utf8_bytes, JXChar *text,
                                          uint32_t *text_chars);
/* Encodes text. 0, JX_E_BADARG, JXHOST_E_NOROOM or JXHOST_E_MALFORMED (a unit that is no
   character). */
JX_NODISCARD JXStatus jxhost_text_to_utf8(const JXChar *text, uint32_t text_chars, char *utf8,
                                          uint32_t *utf8_bytes);

/* ---- Encodings ----------------------------------------------------------------------------- */

/* UTF-8, UTF-16, UTF-32, ASCII, Latin-1 and nearly all single-byte encodings are strict: malformed
   input and characters that the target does not have are a status, never a replacement. The C
   library converts the others. Where it would write a substitute (some characters in IBM's Asian
   encodings) or take a stray byte from 80 to 9F for a control character (EUC-JP, EUC-KR, Big5), the
   host answers with a status too. Look-alikes remain: the yen sign reads back from EUC-JP as a
   backslash.

   UTF-7 is for stream records only. It writes a line feed as one byte but a form feed as five, and
   text lines need both of one length: opening them fails with JXHOST_E_NOROOM. */

/* The number of an encoding by name ("utf-8", "utf-16le", "latin1", "cp1252", ...), ignoring case
   and punctuation; 0 for an unknown name. Every name that iconv -l prints is known, but for the few
   that jxhost_encoding_left_out_at gives. UCS-2 is read and written as UTF-16, "koi8" is KOI8-R and
   "mac-cyrillic" code page 10007. */
JX_NODISCARD uint32_t jxhost_encoding_by_name(const char *name8);
/* The usual name of an encoding, or null. The text is static. */
const char *jxhost_encoding_name(uint32_t encoding);
/* The number of the index-th known encoding; 0 past the last. */
uint32_t jxhost_encoding_at(uint32_t index);
/* The other names of an encoding, divided by blanks, empty if it has none; null for an unknown
   number. The text is static. */
const char *jxhost_encoding_aliases(uint32_t encoding);
/* The shortest and the longest character of an encoding in bytes, the longest with the shift
   sequences that it may need; 0 for an unknown number. */
uint32_t jxhost_encoding_min_bytes(uint32_t encoding);
uint32_t jxhost_encoding_max_bytes(uint32_t encoding);
/* The index-th encoding that the C library has and the host does not, by the C library's name, and
   at reason_out, unless null, why; null past the last. The texts are static. */
const char *jxhost_encoding_left_out_at(uint32_t index, const char **reason_out);

/* ---- Statuses ------------------------------------------------------------------------------ */

/* Statuses of the character-set service and of the host's other operations. JXHOST_STATUS_LIST has
   their meanings. */
#define JXHOST_E_MALFORMED ((JXStatus)0x803fd001u)
#define JXHOST_E_UNMAPPABLE ((JXStatus)0x803fd002u)
#define JXHOST_E_NOROOM ((JXStatus)0x803fd003u)
#define JXHOST_E_BADENCODING ((JXStatus)0x803fd004u)
#define JXHOST_E_NOOPTION ((JXStatus)0x803fd005u)
#define JXHOST_E_BADOBJECT ((JXStatus)0x803fd006u)
#define JXHOST_E_LOCKSTATE ((JXStatus)0x803fd007u)
#define JXHOST_E_OUTPUT ((JXStatus)0x803fd008u)
#define JXHOST_E_LEAKED ((JXStatus)0x803fd009u)

/* Expands to X(name, meaning) for each of them. */
#define JXHOST_STATUS_LIST(X)                                        \
  X(JXHOST_E_MALFORMED, "input is not valid in its encoding")        \
  X(JXHOST_E_UNMAPPABLE, "no such character in the target encoding") \
  X(JXHOST_E_NOROOM, "the destination is too small")                 \
  X(JXHOST_E_BADENCODING, "no encoding of that number")              \
  X(JXHOST_E_NOOPTION, "no option of that name or type")             \
  X(JXHOST_E_BADOBJECT, "the object is not of this host")            \
  X(JXHOST_E_LOCKSTATE, "the lock is held, or not by this thread")   \
  X(JXHOST_E_OUTPUT, "the journal could not be written")             \
  X(JXHOST_E_LEAKED, "the object outlived its host")

/* The catalogue: name and meaning of a status of the module, the host or "jxelm"; null for an
   unknown one. The texts are static. */
const char *jxhost_status_name(JXStatus status);
const char *jxhost_status_text(JXStatus status);
/* The index-th failure of the catalogue; 0 past the last. */
JXStatus jxhost_status_at(uint32_t index);

/* ---- Loading -------------------------------------------------------------------------------- */

/* A loaded module with the instance it made. */
typedef struct JXHostModule JXHostModule;

/* Loads the module from path8, calls its jxextent and its entry, checks its versions, and stores
   the module in *module_out, owned by the caller until jxhost_unload. A host may load a module
   several times; two hosts of a process may not have the same one at once. On failure returns null
   and stores the reason in *error_out (which may be null), valid until the thread's next load. */
JX_NODISCARD JXInstance *jxhost_load(JXHost *host, const char *path8, JXOwner owner,
                                     JXHostModule **module_out, const char **error_out);

/* The address of a routine or table that the module exports by name; null when there is none. */
JX_NODISCARD void *jxhost_symbol(JXHostModule *module, const char *name8);

/* Destroys the instance and unloads the module, null allowed. Files, directories and lists of the
   instance must have been released before. */
void jxhost_unload(JXHostModule *module);

JX_EXTERN_C_END

#endif
