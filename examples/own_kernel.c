/* A whole host kernel in plain C, for a host that does not link libjxhost: pools, locks, two
   encodings, and the opening of files. What the module passes is checked, so this also shows what
   it passes. It has no tables, options and journal, which lists, information and unique
   names need. */
#define _POSIX_C_SOURCE 200809L
#include "own_kernel.h"

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

static int live; /* objects not released yet */

int kernel_objects(void) { return live; }

static void *take(size_t bytes) {
  void *object = calloc(1, bytes);
  CHECK(object);
  ++live;
  return object;
}

static JXStatus give_back(void *object) {
  free(object);
  --live;
  return JX_OK;
}

/* ---- Pools: each is a bump allocator over one piece of memory ---- */

typedef struct Unit {
  _Alignas(16) unsigned char bytes[16]; /* blocks are aligned for any type */
} Unit;

enum { UNITS = 1 << 13 };

typedef struct Pool {
  JXPool operations;
  size_t used_units;
  Unit units[UNITS];
} Pool;

static JXStatus destroy_pool(JXPool *pool) { return give_back(pool); }
static JXStatus pool_free(JXPool *pool, void *data) { return pool && data ? JX_OK : JX_E_BADARG; }

static void *pool_allocate(JXPool *pool, uint32_t bytes, uint32_t flags) {
  Pool *self = (Pool *)pool;
  Unit *block = self->units + self->used_units;
  const size_t units = bytes / sizeof *block + 1;
  if (units > UNITS - self->used_units) return NULL;
  self->used_units += units;
  return memset(block, flags & JX_POOL_ZERO_FILL ? 0 : 0xEE, bytes);
}

static JXPool *create_pool(JXHost *host, uint32_t zero1, uint32_t zero2, uint32_t zero3,
                           JXOwner owner, const char *name8) {
  Pool *pool = take(sizeof *pool);
  (void)owner;
  CHECK(host && name8 && !zero1 && !zero2 && !zero3);
  pool->operations = (JXPool){destroy_pool, pool_allocate, pool_free};
  return &pool->operations;
}

/* ---- Locks ---- */

static JXStatus destroy_lock(JXLock *lock) { return give_back(lock); }
static JXStatus lock_acquire(JXLock *lock, uint32_t one1, uint32_t one2) {
  return lock && one1 == 1 && one2 == 1 ? JX_OK : JX_E_BADARG;
}
static JXStatus lock_release(JXLock *lock) { return lock ? JX_OK : JX_E_BADARG; }

static JXLock *create_lock(JXHost *host, uint8_t zero1, uint8_t zero2, uint32_t zero3,
                           const char *name8) {
  JXLock *lock = take(sizeof *lock);
  CHECK(host && name8 && !zero1 && !zero2 && !zero3);
  *lock = (JXLock){destroy_lock, lock_acquire, lock_release};
  return lock;
}

/* ---- Encodings: 62, a byte a character, and 27 ---- */

typedef struct Transcoder {
  JXTranscoder operations;
  uint32_t from_bytes, to_bytes; /* of a character */
} Transcoder;

static JXStatus transcode(JXTranscoder *transcoder, const void *source, uint32_t source_bytes,
                          void *destination, uint32_t capacity_bytes, uint32_t *produced_bytes_out,
                          uint32_t zero) {
  const Transcoder *self = (Transcoder *)transcoder;
  const uint32_t count = source_bytes / self->from_bytes;
  const char *from = source;
  char *to = destination;
  CHECK(!zero);
  if (capacity_bytes / self->to_bytes < count) return JX_E_TRUNCATED;
  memset(to, 0, capacity_bytes);
  for (uint32_t i = 0; i < count; ++i) to[i * self->to_bytes] = from[i * self->from_bytes];
  if (produced_bytes_out) *produced_bytes_out = count * self->to_bytes;
  return JX_OK;
}

static uint32_t char_bytes(uint32_t encoding) { return encoding == JX_ENCODING_NATIVE ? 1 : 4; }

static JXTranscoder *create_transcoder(JXNls *nls, uint32_t from, uint32_t to, uint32_t zero,
                                       JXOwner owner) {
  Transcoder *transcoder = take(sizeof *transcoder);
  (void)owner;
  CHECK(nls && !zero && from + to == JX_ENCODING_NATIVE + JX_ENCODING_UTF32LE);
  *transcoder = (Transcoder){{transcode}, char_bytes(from), char_bytes(to)};
  return &transcoder->operations;
}
static JXTranscoder *create_decoder(JXNls *nls, uint32_t encoding, uint32_t zero1, uint32_t zero2) {
  return create_transcoder(nls, encoding, JX_ENCODING_UTF32LE, zero1 | zero2, NULL);
}
static JXTranscoder *create_encoder(JXNls *nls, uint32_t encoding, uint32_t zero1, uint32_t zero2) {
  return create_transcoder(nls, JX_ENCODING_UTF32LE, encoding, zero1 | zero2, NULL);
}
static JXStatus destroy_transcoder(JXNls *nls, JXTranscoder *transcoder) {
  return nls ? give_back(transcoder) : JX_E_BADARG;
}
static JXStatus measure_conversion(JXNls *nls, uint32_t from, const void *text, uint32_t bytes,
                                   uint32_t to, uint32_t *bytes_out) {
  CHECK(nls && text && from != to);
  *bytes_out = bytes / char_bytes(from) * char_bytes(to);
  return JX_OK;
}
/* JX_ENCODING_DEFAULT is an encoding that the caller left open: the answer must be "needed". */
static int32_t needs_conversion(JXNls *nls, uint32_t a, uint32_t b) {
  return nls && (a == JX_ENCODING_DEFAULT || b == JX_ENCODING_DEFAULT || a != b);
}
static JXStatus encoding_info(JXNls *nls, uint32_t encoding, JXEncodingInfo *info_out) {
  CHECK(nls);
  info_out->max_bytes_per_char = (int8_t)char_bytes(encoding);
  return JX_OK;
}

/* ---- Extensions ---- */

typedef struct OpenFile {
  JXOpenFile operations;
  int fd;
} OpenFile;

static JXStatus close_file(JXOpenFile *file, const uint32_t *zeros, JXJournal *journal) {
  static const uint32_t expected[8];
  CHECK(memcmp(zeros, expected, sizeof expected) == 0 && !journal);
  CHECK(close(((OpenFile *)file)->fd) == 0);
  return give_back(file);
}

static JXOpenFile *open_file(JXElm *elm, const JXOpenRequest *request, uint32_t one,
                             uint32_t lock_word, JXJournal *journal, JXStatus *status_out) {
  char path[JX_NAME_MAX_CHARS + 1] = "";
  OpenFile *file = take(sizeof *file);
  CHECK(elm && one == 1 && lock_word <= JXELM_LOCK_EXCLUSIVE && !journal);
  for (uint32_t i = 0; i < request->path_chars; ++i) path[i] = (char)request->path[i];
  file->fd = open(path, (int)request->flags, request->permissions);
  CHECK(file->fd >= 0);
  file->operations = (JXOpenFile){close_file, &file->fd};
  *status_out = JX_OK;
  return &file->operations;
}

static JXStatus release(JXExtension *extension) {
  return extension && live-- > 0 ? JX_OK : JX_E_BADARG;
}

static JXElm elm = {release, open_file};
static JXExtension secure = {release};

/* Knows "jxelm" and "jxsecure" by their third letters. */
static JXExtension *load_extension(JXHost *host, const JXChar *name, uint32_t name_chars,
                                   JXOwner owner) {
  (void)owner;
  CHECK(host && name_chars > 2);
  if (name[2] != 'e' && name[2] != 's') return NULL;
  ++live;
  return name[2] == 'e' ? (JXExtension *)&elm : &secure;
}

static JXNls nls = {measure_conversion, needs_conversion, encoding_info,     create_transcoder,
                    create_decoder,     create_encoder,   destroy_transcoder};
static Transcoder locale_decoder = {{transcode}, 1, 4};
static JXLocale locale = {&locale_decoder.operations, '.'};
static JXHost kernel = {create_lock, create_pool, NULL, load_extension, NULL, &nls, &locale, 0};

JXHost *kernel_host(void) { return &kernel; }
