// What the broken module does; the loader's target fills it in before each load.
#pragma once

#include <cstdint>

namespace jx::fuzz {

struct BrokenPlan {
  uint32_t has_instance;
  char eye_catcher[4];
  uint32_t version[3];
  uint32_t version_status;
  uint32_t destroy_status;
  // Counted by the module.
  uint32_t entered;
  uint32_t destroyed;
};

}  // namespace jx::fuzz
