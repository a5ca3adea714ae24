/* A host in plain C with a kernel of its own, without the reference host: loads the module, writes
   and reads a text file through it and checks that everything is released at the end. Arguments:
   the module, a file to create. */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <string.h>
#include <unistd.h>

#include "examples/own_kernel.h"

int use_wrapper(JXInstance *instance, const JXChar *path, uint32_t path_chars);

/* A name for the module. Returns its length. */
static uint32_t to_name(const char *path8, JXChar *name) {
  uint32_t chars = 0;
  for (; path8[chars]; ++chars) name[chars] = (unsigned char)path8[chars];
  return chars;
}

/* Checks which words of a block are null: "." one that is, "x" one that is not. */
static void check_words(const void *block, uint32_t first, const char *pattern) {
  static const char null[sizeof(void *)];
  const char *word = (const char *)block + first * sizeof null;
  for (; *pattern; ++pattern, word += sizeof null) {
    CHECK((memcmp(word, null, sizeof null) != 0) == (*pattern == 'x'));
  }
}

static JXFile *open_text(JXInstance *instance, const char *path8, uint32_t access_mode) {
  const JXOpenOptions options = {.access_mode = access_mode, .buffered = 1, .record_length = 80};
  JXChar path[JX_NAME_MAX_CHARS];
  JXStatus status = JX_E_BADARG;
  const uint32_t chars = to_name(path8, path);
  JXFile *file = instance->open(instance, path, chars, &options, 0, NULL, "text", &status);
  CHECK(file && status == JX_OK && memcmp(file->eye_catcher, JX_EYE_CATCHER, 4) == 0);
  check_words(file, 1, "xxx.........xx.xxxxxxxx");
  return file;
}

static void write_and_read(JXInstance *instance, const char *path8) {
  static const JXChar lines[2][3] = {{'o', 'n', 'e'}, {'t', 'w', 0xF6}};
  JXFile *file = open_text(instance, path8, JX_ACCESS_OUTPUT);
  void *data = NULL;
  uint32_t length = 0;
  for (int i = 0; i < 2; ++i) CHECK(file->write(file, lines[i], sizeof lines[i], 0, NULL) == JX_OK);
  CHECK(file->close(file) == JX_OK);

  file = open_text(instance, path8, JX_ACCESS_INPUT);
  for (int i = 0; i < 2; ++i) {
    CHECK(file->read(file, &data, &length, 0, NULL) == JX_OK);
    CHECK(length == sizeof lines[i] && memcmp(data, lines[i], length) == 0);
  }
  CHECK(file->read(file, &data, &length, 0, NULL) == JXWEM_E_EOF && length == 0);
  CHECK(file->close(file) == JX_OK);
}

int main(int argc, char **argv) {
  void (*extent)(JXHost *);
  JXInstance *(*entry)(JXHost *, JXOwner);
  CHECK(argc == 3);
  void *module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  CHECK(module);
  *(void **)&extent = dlsym(module, "jxextent");
  *(void **)&entry = dlsym(module, "jxwem");
  CHECK(extent && entry);
  extent(kernel_host());
  JXInstance *instance = entry(kernel_host(), NULL);
  CHECK(instance && memcmp(instance->eye_catcher, JX_EYE_CATCHER, 4) == 0);
  CHECK(instance->host == kernel_host() && instance->host_name_chars == 0);
  check_words(instance, 1, "..xxxx..xx.xxxxxxxxxxxxxxxxx.xx.x");
  write_and_read(instance, argv[2]);
  CHECK(unlink(argv[2]) == 0);
  JXChar path[JX_NAME_MAX_CHARS];
  CHECK(use_wrapper(instance, path, to_name(argv[2], path)));
  CHECK(instance->destroy(instance) == JX_OK);
  CHECK(kernel_objects() == 0 && dlclose(module) == 0);
  return 0;
}
