/* Loads the module with a kernel of its own: nothing of jxwem is linked. */
#include <dlfcn.h>

#include "own_kernel.h"

int main(int argc, char **argv) {
  void *module = argc > 1 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  void (*extent)(JXHost *);
  JXInstance *(*entry)(JXHost *, JXOwner);
  JXInstance *instance;
  uint32_t version[3];
  CHECK(module);
  *(void **)&extent = dlsym(module, "jxextent");
  *(void **)&entry = dlsym(module, "jxwem");
  CHECK(extent && entry);
  extent(kernel_host());
  instance = entry(kernel_host(), NULL);
  CHECK(instance);
  CHECK(instance->get_version(instance, &version[0], &version[1], &version[2]) == JX_OK);
  printf("%u.%u.%u\n", version[0], version[1], version[2]);
  CHECK(instance->destroy(instance) == JX_OK);
  CHECK(kernel_objects() == 0);
  return dlclose(module);
}
