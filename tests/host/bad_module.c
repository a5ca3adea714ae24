/* A defective module. Its owner argument chooses the defect: 0 no instance, 1 an instance without
   its eye-catcher, 2 one for a newer host. */
#include <string.h>

#include "jx/wem.h"

static JXStatus get_required_version(JXInstance *instance, uint32_t *major, uint32_t *minor,
                                     uint32_t *patch) {
  (void)instance;
  *major = JX_VERSION_MAJOR;
  *minor = JX_VERSION_MINOR;
  *patch = JX_VERSION_PATCH + 1;
  return JX_OK;
}

static JXStatus destroy(JXInstance *instance) {
  (void)instance;
  return JX_OK;
}

void jxextent(JXHost *host) { (void)host; }

JXInstance *jxwem(JXHost *host, JXOwner owner) {
  static JXInstance instance;
  (void)host;
  memcpy(instance.eye_catcher, (uintptr_t)owner == 2 ? JX_EYE_CATCHER : "oven", 4);
  instance.get_required_version = get_required_version;
  instance.destroy = destroy;
  return owner ? &instance : NULL;
}
