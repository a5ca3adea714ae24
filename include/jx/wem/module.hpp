// The module as the reference host loads it: needs libjxhost.
#pragma once

#include <string>
#include <utility>

#include "jx/jxhost.h"
#include "jx/wem/instance.hpp"

namespace wem {

// A host kernel with the module loaded into it; both end with this object, which must outlive every
// file, directory and table.
class Module {
 public:
  Module() = default;
  // Loads the module from path8 into a new host (config null: the reference host's defaults). Empty
  // on failure, with the reason in *error_out when that is given.
  static Module load(const char *path8, const JXHostConfig *config = nullptr,
                     std::string *error_out = nullptr) {
    Module module;
    module.host_ = jxhost_create(config);
    const char *error = "out of memory";
    JXInstance *instance = nullptr;
    if (module.host_) {
      instance = jxhost_load(module.host_, path8, nullptr, &module.module_, &error);
    }
    module.instance_ = Instance(instance);
    if (!instance && error_out) *error_out = error ? error : "unknown";
    return module;
  }
  Module(Module &&other) noexcept { *this = std::move(other); }
  Module &operator=(Module &&other) noexcept {
    std::swap(host_, other.host_);
    std::swap(module_, other.module_);
    std::swap(instance_, other.instance_);
    return *this;
  }
  ~Module() {
    if (instance_) jxhost_unload(module_);
    if (host_) jxhost_destroy(host_);
  }

  explicit operator bool() const { return static_cast<bool>(instance_); }
  const Instance &instance() const { return instance_; }
  JXHost *host() const { return host_; }
  // A routine that the module exports by name, as a function pointer type; null when there is none.
  template <typename Function>
  Function symbol(const char *name8) const {
    return reinterpret_cast<Function>(jxhost_symbol(module_, name8));
  }

 private:
  JXHost *host_ = nullptr;
  JXHostModule *module_ = nullptr;
  Instance instance_;
};

}  // namespace wem
