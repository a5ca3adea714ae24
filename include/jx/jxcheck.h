/* jxcheck.so: a module that examines its host. It has the entry points of jxwem.so, so that any
   host can load it in its place, and a routine of its own, which takes the host kernel handle and a
   configuration. Each check is one line: a slot, what was asked, what came, what is promised. */
#ifndef JX_JXCHECK_H
#define JX_JXCHECK_H

#include "jx/base.h"
#include "jx/host.h"

JX_EXTERN_C_BEGIN

/* Outcome of a check. */

#define JXCHECK_PASSED 0u  /* what is promised came */
#define JXCHECK_FINDING 1u /* something else came */
#define JXCHECK_SKIPPED 2u /* not run: what it needs is missing */

/* Form of the report. */

/* A line for each finding and each check that was skipped, and the counts. */
#define JXCHECK_TEXT 0u
#define JXCHECK_TAP 1u  /* the Test Anything Protocol, version 13: a line for each check */
#define JXCHECK_JSON 2u /* an object for each check and one with the counts, each on a line */

/* Checks run in the calling process. Otherwise each has a child process of its own, and one that
   crashes or does not return is a finding; here it ends or stops the caller. For debuggers. */
#define JXCHECK_SAME_PROCESS 0x1u

/* The outcome of one check. The texts are zero-terminated ASCII and valid during the call. */
typedef struct JXCheckLine {
  uint32_t number;       /* of the check, from 1 */
  uint32_t outcome;      /* JXCHECK_PASSED, JXCHECK_FINDING or JXCHECK_SKIPPED */
  const char *slot8;     /* object and slot, such as "pool.pool_allocate" */
  const char *asked8;    /* what was asked of it */
  const char *came8;     /* what came, or why the check was skipped; empty when it passed */
  const char *promised8; /* what the module relies on */
  const char *guide8;    /* the heading in docs/host-guide.md under which that is */
} JXCheckLine;

/* Called with each check after it has run, on the thread and in the process of the caller. */
typedef void (*JXCheckSink)(void *context, const JXCheckLine *line);

/* What is checked and where the report goes. Start from JXCHECK_CONFIG_INIT. */
typedef struct JXCheckConfig {
  JXJournal *journal; /* checked too; null: its checks are skipped */
  int folder_fd;      /* a folder that may be written in, or -1: "jxelm" is not asked to open. The
                         checks work in a new folder there, which they remove, and reach it as
                         /proc/self/fd/N. The caller's own. */
  int output_fd;      /* gets the report, or -1. The caller's own. */
  uint32_t format;    /* of the report: JXCHECK_TEXT, JXCHECK_TAP or JXCHECK_JSON */
  uint32_t flags;     /* 0 or JXCHECK_SAME_PROCESS */
  uint32_t seconds;   /* for one check, after which its process is ended; 0: 10 */
  JXCheckSink sink;   /* called with each check, or null */
  void *context;      /* passed to sink */
} JXCheckConfig;

/* A configuration for the start: the report as text on standard error, and no folder. */
#define JXCHECK_CONFIG_INIT \
  { NULL, -1, 2, JXCHECK_TEXT, 0, 0, NULL, NULL }

/* How many checks had which outcome. */
typedef struct JXCheckCounts {
  uint32_t passed;   /* JXCHECK_PASSED */
  uint32_t findings; /* JXCHECK_FINDING */
  uint32_t skipped;  /* JXCHECK_SKIPPED */
} JXCheckCounts;

/* Works through everything that the module relies on in a host. config null: JXCHECK_CONFIG_INIT.
   *counts_out (may be null) receives the counts. In child processes the host's own state does not
   change; in the same process every object is released again, unless a slot fails. Not for two
   threads at once. 0: no findings. JXWEM_E_FAILED: at least one. JX_E_BADARG: no host, or a format
   or flag that there is none of. JXWEM_E_SYSTEM: no child process, or the folder or the output
   failed; what was checked until then is counted. */
JX_EXPORT JX_NODISCARD JXStatus jxcheck_run(JXHost *host, const JXCheckConfig *config,
                                            JXCheckCounts *counts_out);

/* The host's option (type 3) in which the entry jxwem of jxcheck.so finds the descriptor of the
   folder. Otherwise the entry runs the checks with JXCHECK_CONFIG_INIT. It answers null when there
   is a finding or the checks could not be run; otherwise an instance that can be asked for its
   versions and destroyed, and that answers every other operation with JX_E_UNSUPPORTED. */
#define JXCHECK_FOLDER_OPTION "jxcheck.folder"

JX_EXTERN_C_END

#endif
