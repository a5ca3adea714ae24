/* The kernel of own_kernel.c. */
#ifndef OWN_KERNEL_H
#define OWN_KERNEL_H

#include <stdio.h>
#include <stdlib.h>

#include "jx/wem.h"

/* Ends the program when a promise is broken. */
#define CHECK(condition)                                              \
  do {                                                                \
    if (!(condition)) {                                               \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      exit(1);                                                        \
    }                                                                 \
  } while (0)

/* The one kernel of the process, for jxextent and jxwem. Used by one thread at a time. */
JXHost *kernel_host(void);

/* How many of the kernel's objects and extensions are not released yet. */
int kernel_objects(void);

#endif
