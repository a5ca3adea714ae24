/* The reference host kernel: everything the module needs from a host, as a library to embed. It
   creates a host kernel handle, loads the module into the process and ends both. Valid as C11 and
   as C++20; thread-safe unless a declaration says otherwise. */
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

/* Called with each journal line: text8 is UTF-8, zero-terminated, valid during the call. */
typedef void (*JXHostJournalSink)(void *context, uint32_t level, JXStatus status,
                                  const char *text8);

/* How a host is made. Start from JXHOST_CONFIG_INIT and change what differs. */
typedef struct JXHostConfig {
  uint32_t extensions;            /* JXHOST_* bits */
  int32_t time_zone;              /* seconds west of UTC; used when time_zone_set is not 0 */
  uint32_t time_zone_set;         /* 0: the zone of the process is taken */
  int32_t process_id;             /* value of "host.process_id"; 0: the real one */
  const char *host_name8;         /* what "jxitcp" answers; null: the machine's name. Copied. */
  JXHostJournalSink journal_sink; /* where the journal goes, or null */
  void *journal_context;          /* handed to journal_sink */
  int journal_fd;                 /* used without a sink: a descriptor, or -1 for no output */
} JXHostConfig;

#define JXHOST_CONFIG_INIT \
  { JXHOST_ALL, 0, 0, 0, NULL, NULL, NULL, -1 }

/* A host with the given configuration (null: JXHOST_CONFIG_INIT), owned by the caller until
   jxhost_destroy. Null when memory is out. */
JX_NODISCARD JXHost *jxhost_create(const JXHostConfig *config);

/* Ends a host: unloads modules still loaded and frees pools and tables still alive. Returns how
   many pools, locks, tables, transcoders and extensions were still alive (0 = nothing leaked). */
uint32_t jxhost_destroy(JXHost *host);

/* The journal of a host: pass it in open options or store it in an instance's journal field. */
JX_NODISCARD JXJournal *jxhost_journal(JXHost *host);

/* Adds or replaces a 32-bit option that get_option answers. name8 is ASCII. 0 or JX_E_NOMEM. */
JX_NODISCARD JXStatus jxhost_set_option(JXHost *host, const char *name8, int32_t value);

/* Live blocks of a pool of this host, and of all its pools together. */
uint64_t jxhost_pool_live_blocks(const JXPool *pool);
uint64_t jxhost_live_blocks(const JXHost *host);
/* Live pools, locks, tables, transcoders and extensions of a host. */
uint32_t jxhost_live_objects(const JXHost *host);

/* ---- Tables, from the host's side ---------------------------------------------------------- */

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

/* ---- Encodings ----------------------------------------------------------------------------- */

/* The number of an encoding by name ("utf-8", "utf-16le", "latin1", "cp1252", ...), whatever its
   case and punctuation; 0 when it is not known. */
JX_NODISCARD uint32_t jxhost_encoding_by_name(const char *name8);
/* The usual name of an encoding, or null. The text is static. */
const char *jxhost_encoding_name(uint32_t encoding);
/* The encoding of the index-th entry of the list of all known encodings; 0 past its end. */
uint32_t jxhost_encoding_at(uint32_t index);

/* Statuses of the NLS service and of the host's other operations. */
#define JXHOST_E_MALFORMED ((JXStatus)0x803fd001u)   /* input is not valid in its encoding */
#define JXHOST_E_UNMAPPABLE ((JXStatus)0x803fd002u)  /* no such character in the target encoding */
#define JXHOST_E_NOROOM ((JXStatus)0x803fd003u)      /* the destination is too small */
#define JXHOST_E_BADENCODING ((JXStatus)0x803fd004u) /* no encoding of that number */
#define JXHOST_E_NOOPTION ((JXStatus)0x803fd005u)    /* no option of that name or type */
#define JXHOST_E_BADOBJECT ((JXStatus)0x803fd006u)   /* the object is not of this host */

/* The catalogue: name and meaning of a status, of the module or of the host; null when it is not
   known. The texts are static. */
const char *jxhost_status_name(JXStatus status);
const char *jxhost_status_text(JXStatus status);
/* The index-th status of the catalogue; 0 past its end. */
JXStatus jxhost_status_at(uint32_t index);

/* ---- Loading -------------------------------------------------------------------------------- */

/* A loaded module with the instance it made. */
typedef struct JXHostModule JXHostModule;

/* Loads the module from path8, calls its jxextent and its entry, and stores the module in
   *module_out, owned by the caller until jxhost_unload. On failure returns null and stores a static
   or host-owned text in *error_out that stays valid until the next load on the thread. */
JX_NODISCARD JXInstance *jxhost_load(JXHost *host, const char *path8, JXOwner owner,
                                     JXHostModule **module_out, const char **error_out);

/* The address of a routine or table that the module exports by name; null when there is none. */
JX_NODISCARD void *jxhost_symbol(JXHostModule *module, const char *name8);

/* Destroys the instance and unloads the module. */
void jxhost_unload(JXHostModule *module);

JX_EXTERN_C_END

#endif
