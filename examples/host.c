/* A host in C: loads the module, writes a text file and reads it back as UTF-8.
   Usage: host MODULE FILE */
#include <stdio.h>
#include <string.h>

#include "jx/jxhost.h"
#include "jx/wem.h"

static JXFile *open_text(JXInstance *instance, const char *path, uint32_t access,
                         JXStatus *status) {
  JXChar name[JX_NAME_MAX_CHARS];
  uint32_t name_chars = JX_NAME_MAX_CHARS;
  *status = jxhost_utf8_to_name(path, name, &name_chars);
  if (*status != JX_OK) return NULL;
  JXOpenOptions options = {0};
  options.access_mode = access;
  options.buffered = 1;
  options.record_length = 1000;
  options.record_format = JX_FORMAT_VARIABLE;
  options.file_encoding = JX_ENCODING_UTF16LE;
  options.record_encoding = JX_ENCODING_UTF8;
  return instance->open(instance, name, name_chars, &options, 0, NULL, "example", status);
}

static JXStatus write_lines(JXInstance *instance, const char *path) {
  static const char *const kLines[] = {"first line", "zweite Zeile: \xc3\xa4\xc3\xb6\xc3\xbc",
                                       "\xe7\xac\xac\xe4\xb8\x89\xe8\xa1\x8c"};
  JXStatus status = JX_OK;
  JXFile *file = open_text(instance, path, JX_ACCESS_OUTPUT, &status);
  if (!file) return status;
  for (int i = 0; i < 3 && status == JX_OK; ++i) {
    status = file->write(file, kLines[i], (uint32_t)strlen(kLines[i]), 0, NULL);
  }
  /* Closing writes the buffered data, so its status matters. */
  const JXStatus closed = file->close(file);
  return status != JX_OK ? status : closed;
}

static JXStatus print_lines(JXInstance *instance, const char *path) {
  JXStatus status = JX_OK;
  JXFile *file = open_text(instance, path, JX_ACCESS_INPUT, &status);
  if (!file) return status;
  int records = 0;
  void *data = NULL;
  uint32_t length = 0;
  /* A line longer than the record length comes in parts. */
  while ((status = file->read(file, &data, &length, 0, NULL)) == JX_OK ||
         status == JXWEM_E_PARTIAL) {
    printf("%d: %.*s\n", ++records, (int)length, (const char *)data);
  }
  printf("%d records\n", records);
  const JXStatus closed = file->close(file);
  return status != JXWEM_E_EOF ? status : closed;
}

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  JXHost *host = jxhost_create(NULL);
  JXHostModule *module = NULL;
  const char *error = "no host";
  JXInstance *instance = host ? jxhost_load(host, argv[1], NULL, &module, &error) : NULL;
  if (!instance) {
    fprintf(stderr, "%s: %s\n", argv[1], error);
    if (host) jxhost_destroy(host);
    return 1;
  }
  JXStatus status = write_lines(instance, argv[2]);
  if (status == JX_OK) status = print_lines(instance, argv[2]);
  if (status != JX_OK) fprintf(stderr, "%s: %s\n", argv[2], jxhost_status_text(status));
  jxhost_unload(module);
  /* Everything that the module took from the host must be released by now. */
  const uint32_t leaked = jxhost_destroy(host);
  return status == JX_OK && leaked == 0 ? 0 : 1;
}
