/* A host in plain C that shares nothing with the reference host: loads the module, writes and reads
   a text file through it and ends with everything given back.
   Arguments: the module, a folder to work in. */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "jx/wem.h"

#define CHECK(condition)                                              \
  do {                                                                \
    if (!(condition)) {                                               \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      exit(1);                                                        \
    }                                                                 \
  } while (0)

static int live; /* objects and blocks handed out and not yet given back */

/* ---- Pools: blocks of the C library in a list of their pool ---- */

typedef struct Block {
  struct Block *next;
  struct Block *previous;
  long long alignment[1];
} Block;

typedef struct Pool {
  JXPool operations;
  Block blocks; /* the list's end */
} Pool;

static JXStatus pool_free(JXPool *pool, void *data) {
  Block *block = (Block *)((char *)data - offsetof(Block, alignment));
  (void)pool;
  block->previous->next = block->next;
  block->next->previous = block->previous;
  free(block);
  --live;
  return JX_OK;
}

static void *pool_allocate(JXPool *pool, uint32_t bytes, uint32_t flags) {
  Block *end = &((Pool *)pool)->blocks;
  Block *block = malloc(sizeof *block + bytes);
  CHECK(block);
  memset(block, flags & JX_POOL_ZERO_FILL ? 0 : 0xEE, sizeof *block + bytes);
  block->next = end;
  block->previous = end->previous;
  block->previous->next = block;
  end->previous = block;
  ++live;
  return block->alignment;
}

static JXStatus destroy_pool(JXPool *pool) {
  Block *end = &((Pool *)pool)->blocks;
  while (end->next != end) pool_free(pool, end->next->alignment);
  free(pool);
  --live;
  return JX_OK;
}

static JXPool *create_pool(JXHost *host, uint32_t zero1, uint32_t zero2, uint32_t zero3,
                           JXOwner owner, const char *name8) {
  Pool *pool = malloc(sizeof *pool);
  CHECK(host && pool && name8 && owner == &live && !zero1 && !zero2 && !zero3);
  pool->operations = (JXPool){destroy_pool, pool_allocate, pool_free};
  pool->blocks.next = pool->blocks.previous = &pool->blocks;
  ++live;
  return &pool->operations;
}

/* ---- Locks ---- */

static JXStatus destroy_lock(JXLock *lock) {
  free(lock);
  --live;
  return JX_OK;
}
static JXStatus lock_acquire(JXLock *lock, uint32_t one1, uint32_t one2) {
  return lock && one1 == 1 && one2 == 1 ? JX_OK : JX_E_BADARG;
}
static JXStatus lock_release(JXLock *lock) { return lock ? JX_OK : JX_E_BADARG; }

static JXLock *create_lock(JXHost *host, uint8_t zero1, uint8_t zero2, uint32_t zero3,
                           const char *name8) {
  JXLock *lock = malloc(sizeof *lock);
  CHECK(host && lock && name8 && !zero1 && !zero2 && !zero3);
  *lock = (JXLock){destroy_lock, lock_acquire, lock_release};
  ++live;
  return lock;
}

/* ---- Encodings: 62, a byte a character, and 27 ---- */

static JXStatus widen(JXTranscoder *transcoder, const void *source, uint32_t source_bytes,
                      void *destination, uint32_t capacity_bytes, uint32_t *produced_bytes_out,
                      uint32_t zero) {
  const unsigned char *from = source;
  JXChar *to = destination;
  uint32_t i;
  CHECK(transcoder && !zero);
  if (capacity_bytes / 4 < source_bytes) return JX_E_TRUNCATED;
  for (i = 0; i < source_bytes; ++i) to[i] = from[i];
  if (produced_bytes_out) *produced_bytes_out = source_bytes * 4;
  return JX_OK;
}

static JXStatus narrow(JXTranscoder *transcoder, const void *source, uint32_t source_bytes,
                       void *destination, uint32_t capacity_bytes, uint32_t *produced_bytes_out,
                       uint32_t zero) {
  const JXChar *from = source;
  unsigned char *to = destination;
  uint32_t i;
  CHECK(transcoder && !zero);
  if (capacity_bytes < source_bytes / 4) return JX_E_TRUNCATED;
  for (i = 0; i < source_bytes / 4; ++i) to[i] = (unsigned char)from[i];
  if (produced_bytes_out) *produced_bytes_out = source_bytes / 4;
  return JX_OK;
}

static JXTranscoder *create_transcoder(JXNls *nls, uint32_t from, uint32_t to, uint32_t zero,
                                       JXOwner owner) {
  JXTranscoder *transcoder = malloc(sizeof *transcoder);
  CHECK(nls && transcoder && from + to == JX_ENCODING_NATIVE + JX_ENCODING_UTF32LE && !zero);
  (void)owner;
  transcoder->transcode = from == JX_ENCODING_NATIVE ? widen : narrow;
  ++live;
  return transcoder;
}
static JXTranscoder *create_decoder(JXNls *nls, uint32_t encoding, uint32_t zero1, uint32_t zero2) {
  return create_transcoder(nls, encoding, JX_ENCODING_UTF32LE, zero1 | zero2, NULL);
}
static JXTranscoder *create_encoder(JXNls *nls, uint32_t encoding, uint32_t zero1, uint32_t zero2) {
  return create_transcoder(nls, JX_ENCODING_UTF32LE, encoding, zero1 | zero2, NULL);
}
static JXStatus destroy_transcoder(JXNls *nls, JXTranscoder *transcoder) {
  CHECK(nls);
  free(transcoder);
  --live;
  return JX_OK;
}
static JXStatus measure_conversion(JXNls *nls, uint32_t from, const void *text, uint32_t bytes,
                                   uint32_t to, uint32_t *bytes_out) {
  CHECK(nls && text && from != to);
  *bytes_out = from == JX_ENCODING_NATIVE ? bytes * 4 : bytes / 4;
  return JX_OK;
}
/* 0 stands for an encoding that the caller left open: the answer must be "needed". */
static int32_t needs_conversion(JXNls *nls, uint32_t a, uint32_t b) {
  return nls && (a == JX_ENCODING_DEFAULT || b == JX_ENCODING_DEFAULT || a != b);
}
static JXStatus encoding_info(JXNls *nls, uint32_t encoding, JXEncodingInfo *info_out) {
  CHECK(nls);
  info_out->max_bytes_per_char = encoding == JX_ENCODING_NATIVE ? 1 : 4;
  return JX_OK;
}

/* ---- Extensions ---- */

typedef struct OpenFile {
  JXOpenFile operations;
  int fd;
} OpenFile;

static JXStatus close_file(JXOpenFile *file, const uint32_t *zeros, JXJournal *journal) {
  static const uint32_t expected[8];
  const int result = close(((OpenFile *)file)->fd);
  CHECK(result == 0 && memcmp(zeros, expected, sizeof expected) == 0 && !journal);
  free(file);
  --live;
  return JX_OK;
}

static JXOpenFile *open_file(JXElm *elm, const JXOpenRequest *request, uint32_t one,
                             uint32_t lock_word, JXJournal *journal, JXStatus *status_out) {
  char path[JX_NAME_MAX_CHARS + 1] = "";
  OpenFile *file = malloc(sizeof *file);
  uint32_t i;
  CHECK(elm && file && one == 1 && lock_word <= JXELM_LOCK_EXCLUSIVE && !journal);
  for (i = 0; i < request->path_chars; ++i) path[i] = (char)request->path[i];
  file->fd = open(path, (int)request->flags, request->permissions);
  CHECK(file->fd >= 0);
  file->operations = (JXOpenFile){close_file, &file->fd};
  ++live;
  *status_out = JX_OK;
  return &file->operations;
}

static JXStatus release(JXExtension *extension) {
  CHECK(extension);
  --live;
  return JX_OK;
}

static JXElm elm = {release, open_file};
static JXExtension secure = {release};

/* Knows "jxelm" and "jxsecure" by their third letters. */
static JXExtension *load_extension(JXHost *host, const JXChar *name, uint32_t name_chars,
                                   JXOwner owner) {
  CHECK(host && name_chars > 2);
  (void)owner;
  if (name[2] != 'e' && name[2] != 's') return NULL;
  ++live;
  return name[2] == 'e' ? (JXExtension *)&elm : &secure;
}

static JXNls nls = {measure_conversion, needs_conversion, encoding_info,     create_transcoder,
                    create_decoder,     create_encoder,   destroy_transcoder};
static JXTranscoder locale_decoder = {widen};
static JXLocale locale = {&locale_decoder, '.'};
static JXHost host = {create_lock, create_pool, NULL, load_extension, NULL, &nls, &locale, 0};

/* ---- The run ---- */

/* Checks which words of a block hold pointers: "x" one that does, "." one that is null. */
static void check_words(const void *block, uint32_t first, const char *pattern) {
  const char *word = (const char *)block + first * sizeof(void *);
  for (; *pattern; ++pattern, word += sizeof(void *)) {
    uintptr_t value;
    memcpy(&value, word, sizeof value);
    if ((value != 0) != (*pattern == 'x')) fprintf(stderr, "word before \"%s\"\n", pattern);
    CHECK((value != 0) == (*pattern == 'x'));
  }
}

static JXFile *open_text(JXInstance *instance, const char *path8, uint32_t access_mode) {
  JXOpenOptions options;
  JXChar path[JX_NAME_MAX_CHARS];
  JXStatus status = JX_E_BADARG;
  uint32_t chars = 0;
  JXFile *file;
  for (; path8[chars]; ++chars) path[chars] = (unsigned char)path8[chars];
  memset(&options, 0, sizeof options);
  options.access_mode = access_mode;
  options.buffered = 1;
  options.record_length = 80;
  file = instance->open(instance, path, chars, &options, 0, &live, "text", &status);
  CHECK(file && status == JX_OK && memcmp(file->eye_catcher, JX_EYE_CATCHER, 4) == 0);
  check_words(file, 1, "xxx.........xx.xxxxxxxx");
  return file;
}

static void write_and_read(JXInstance *instance, const char *path8) {
  static const JXChar lines[2][3] = {{'o', 'n', 'e'}, {'t', 'w', 0xF6}};
  JXFile *file = open_text(instance, path8, JX_ACCESS_OUTPUT);
  void *data = NULL;
  uint32_t length = 0;
  int i;
  for (i = 0; i < 2; ++i) CHECK(file->write(file, lines[i], sizeof lines[i], 0, NULL) == JX_OK);
  CHECK(file->close(file) == JX_OK);

  file = open_text(instance, path8, JX_ACCESS_INPUT);
  for (i = 0; i < 2; ++i) {
    CHECK(file->read(file, &data, &length, 0, NULL) == JX_OK);
    CHECK(length == sizeof lines[i] && memcmp(data, lines[i], length) == 0);
  }
  CHECK(file->read(file, &data, &length, 0, NULL) == JXWEM_E_EOF && length == 0);
  CHECK(file->close(file) == JX_OK);
}

int main(int argc, char **argv) {
  void (*extent)(JXHost *);
  JXInstance *(*entry)(JXHost *, JXOwner);
  JXInstance *instance;
  char path[512];
  void *module;
  CHECK(argc == 3);
  snprintf(path, sizeof path, "%s/host_in_c.txt", argv[2]);
  module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!module) fprintf(stderr, "%s\n", dlerror());
  CHECK(module);
  *(void **)&extent = dlsym(module, "jxextent");
  *(void **)&entry = dlsym(module, "jxwem");
  CHECK(extent && entry);
  extent(&host);
  instance = entry(&host, &live);
  CHECK(instance && memcmp(instance->eye_catcher, JX_EYE_CATCHER, 4) == 0);
  CHECK(instance->host == &host && instance->host_name_chars == 0);
  check_words(instance, 1, "..xxxx..xx.xxxxxxxxxxxxxxxxx.xx.x");
  write_and_read(instance, path);
  CHECK(instance->destroy(instance) == JX_OK);
  CHECK(live == 0 && dlclose(module) == 0 && unlink(path) == 0);
  return 0;
}
