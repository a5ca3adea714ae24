// A module that is broken as its plan says.
#include "fuzz/broken_module.hpp"

#include <cstring>

#include "jx/wem.h"

namespace {

jx::fuzz::BrokenPlan plan;
JXInstance instance;

JXStatus get_required_version(JXInstance *, uint32_t *major, uint32_t *minor, uint32_t *patch) {
  *major = plan.version[0];
  *minor = plan.version[1];
  *patch = plan.version[2];
  return plan.version_status;
}

JXStatus destroy(JXInstance *) {
  ++plan.destroyed;
  return plan.destroy_status;
}

}  // namespace

extern "C" {

[[gnu::visibility("default")]] jx::fuzz::BrokenPlan *broken_plan() { return &plan; }

[[gnu::visibility("default")]] void jxextent(JXHost *) { ++plan.entered; }

[[gnu::visibility("default")]] JXInstance *jxwem(JXHost *, JXOwner) {
  if (plan.has_instance == 0) return nullptr;
  std::memcpy(instance.eye_catcher, plan.eye_catcher, sizeof instance.eye_catcher);
  instance.get_required_version = get_required_version;
  instance.destroy = destroy;
  return &instance;
}

}  // extern "C"
