/* Asks the module for its version by the routine's name, without any header of jxwem. */
#include <dlfcn.h>
#include <stdio.h>

int main(int argc, char **argv) {
  void *module = argc > 1 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  unsigned (*get_version)(void *, unsigned *, unsigned *, unsigned *) = NULL;
  unsigned version[3];
  if (module) *(void **)&get_version = dlsym(module, "jxwemgetversion");
  if (!get_version || get_version(NULL, &version[0], &version[1], &version[2]) != 0) return 1;
  printf("%u.%u.%u\n", version[0], version[1], version[2]);
  return dlclose(module);
}
