// The module, loaded by the reference host. Needs libjxhost.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "jx/jxhost.h"
#include "jx/wem/instance.hpp"

namespace wem {

namespace detail {

// A host kernel with the configuration it was made from.
class HostKernel {
 public:
  explicit HostKernel(const JXHostConfig &config)
      : config_(config), name_(config.host_name8 ? config.host_name8 : "") {
    host_ = jxhost_create(&config);
  }
  HostKernel(const HostKernel &) = delete;
  HostKernel &operator=(const HostKernel &) = delete;
  ~HostKernel() {
    if (host_) jxhost_destroy(host_);
  }

  JXHost *get() const { return host_; }
  bool has_journal() const { return config_.journal_sink || config_.journal_fd >= 0; }
  // Whether a host made from that configuration would be the same.
  bool is_like(const JXHostConfig &other) const {
    const bool has_name = config_.host_name8 != nullptr;
    return config_.extensions == other.extensions && config_.time_zone == other.time_zone &&
           config_.time_zone_set == other.time_zone_set && config_.process_id == other.process_id &&
           has_name == (other.host_name8 != nullptr) && (!has_name || name_ == other.host_name8) &&
           config_.journal_sink == other.journal_sink &&
           config_.journal_context == other.journal_context &&
           config_.journal_fd == other.journal_fd;
  }

  // The host of a configuration: an existing one, because only one host of a process can have the
  // module, or a new one.
  static std::shared_ptr<HostKernel> find_or_make(const JXHostConfig &config) {
    static std::vector<std::weak_ptr<HostKernel>> hosts;
    const std::lock_guard guard(mutex);
    std::erase_if(hosts, [](const auto &host) { return host.expired(); });
    for (const auto &known : hosts) {
      if (auto host = known.lock(); host && host->is_like(config)) return host;
    }
    auto host = std::make_shared<HostKernel>(config);
    if (host->get()) hosts.push_back(host);
    return host;
  }

  // Held while a host is looked up and while one is destroyed with its last module.
  inline static std::mutex mutex;

 private:
  JXHostConfig config_;
  std::string name_;  // owns the text of config_.host_name8
  JXHost *host_ = nullptr;
};

// A module and its host; unloads before it lets go of the host.
struct LoadedModule {
  explicit LoadedModule(const JXHostConfig &config) : host(HostKernel::find_or_make(config)) {}
  LoadedModule(const LoadedModule &) = delete;
  LoadedModule &operator=(const LoadedModule &) = delete;
  ~LoadedModule() {
    const std::lock_guard guard(HostKernel::mutex);
    jxhost_unload(module);
    host.reset();
  }

  std::shared_ptr<HostKernel> host;
  JXHostModule *module = nullptr;
};

}  // namespace detail

// The module, loaded into a host kernel. It is unloaded, and the host destroyed, with the last of
// this object and the instances, files, directories and tables that came from it. Modules loaded
// with equal configurations share one host, so one can be loaded over another.
class Module {
 public:
  Module() = default;
  // Loads the module from path8 (config null: the reference host's defaults). A journal in the
  // configuration becomes that of the instance and of its files. Empty on failure, with the reason
  // in *error_out if that is not null. Loading also fails while a host of another configuration has
  // the module; release that first: module = {}.
  static Module load(const char *path8, const JXHostConfig *config = nullptr,
                     std::string *error_out = nullptr) {
    constexpr JXHostConfig kDefault = JXHOST_CONFIG_INIT;
    Module module;
    auto loaded = std::make_shared<detail::LoadedModule>(config ? *config : kDefault);
    JXHost *host = loaded->host->get();
    const char *error = "out of memory";
    JXInstance *instance =
        host ? jxhost_load(host, path8, nullptr, &loaded->module, &error) : nullptr;
    if (!instance) {
      if (error_out) *error_out = error ? error : "unknown";
      return module;
    }
    if (loaded->host->has_journal()) instance->journal = jxhost_journal(host);
    module.instance_ = Instance(instance, loaded);
    module.loaded_ = std::move(loaded);
    return module;
  }
  // Whether a module is loaded.
  explicit operator bool() const { return loaded_ != nullptr; }
  // The instance; a default one if the module is empty.
  const Instance &instance() const & { return instance_; }
  Instance instance() && { return std::move(instance_); }
  // The host; null if the module is empty.
  JXHost *host() const { return loaded_ ? loaded_->host->get() : nullptr; }
  // A routine that the module exports by name, as a function pointer type; null when there is none.
  template <typename Function>
  Function symbol(const char *name8) const {
    void *address = loaded_ ? jxhost_symbol(loaded_->module, name8) : nullptr;
    return reinterpret_cast<Function>(address);
  }

 private:
  std::shared_ptr<detail::LoadedModule> loaded_;
  Instance instance_;
};

}  // namespace wem
