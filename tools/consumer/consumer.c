/* Loads the installed module through the installed host and asks for its version. */
#include <stdio.h>

#include "jx/jxhost.h"

#ifndef MODULE_PATH /* the build may know where the module is */
#define MODULE_PATH ""
#endif

int main(int argc, char **argv) {
  const char *path = argc > 1 ? argv[1] : MODULE_PATH;
  JXHost *host = jxhost_create(NULL);
  JXHostModule *module = NULL;
  const char *error = NULL;
  JXInstance *instance;
  uint32_t version[3];
  if (!host) return 1;
  instance = jxhost_load(host, path, NULL, &module, &error);
  if (!instance) {
    fprintf(stderr, "%s: %s\n", path, error);
    return 1;
  }
  if (instance->get_version(instance, &version[0], &version[1], &version[2]) != JX_OK) return 1;
  printf("%u.%u.%u\n", version[0], version[1], version[2]);
  jxhost_unload(module);
  return jxhost_destroy(host) == 0 ? 0 : 1;
}
