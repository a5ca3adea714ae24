/* Replaces the C library's routine: the directory stream of a module fails once, at the entry
   number in FAIL_AT. */
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <stdlib.h>

static int entries_left;

__attribute__((constructor)) static void start(void) {
  const char *text = getenv("FAIL_AT");
  entries_left = text ? atoi(text) : -1;
}

int readdir64_r(DIR *stream, struct dirent64 *entry, struct dirent64 **result) {
  int (*next)(DIR *, struct dirent64 *, struct dirent64 **);
  *(void **)&next = dlsym(RTLD_NEXT, "readdir64_r");
  return entries_left-- == 0 ? EIO : next(stream, entry, result);
}
