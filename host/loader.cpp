// The loader: loads a module into the process, makes its instance, and unloads it.
#include <dlfcn.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "host/host.hpp"

using Version = std::array<uint32_t, 3>;

struct JXHostModule {
  jxhost::Host *host;     // the host it was loaded for
  void *library;          // handle of the dynamic loader
  JXInstance *instance;   // owned
  JXHostModule *earlier;  // next in the list: loaded before, by any host
};

namespace jxhost {

namespace {

constexpr Version kHostVersion = {JX_VERSION_MAJOR, JX_VERSION_MINOR, JX_VERSION_PATCH};

// All modules of the process, newest first. A module keeps the host's handle in a variable of its
// own, so two hosts cannot share one.
constinit std::mutex modules_mutex;
constinit JXHostModule *newest_module = nullptr;

constinit thread_local char error_text[512] = "";

__attribute__((format(printf, 1, 2))) void set_error(const char *format, ...) {
  va_list args;
  va_start(args, format);
  std::vsnprintf(error_text, sizeof error_text, format, args);
  va_end(args);
}

struct CloseLibrary {
  void operator()(void *library) const { ::dlclose(library); }
};
using Library = std::unique_ptr<void, CloseLibrary>;

struct EndInstance {
  void operator()(JXInstance *instance) const { instance->destroy(instance); }
};
using Instance = std::unique_ptr<JXInstance, EndInstance>;

template <typename Function>
Function find_routine(void *library, const char *name) {
  void *address = ::dlsym(library, name);
  if (!address) set_error("no module: it has no routine \"%s\"", name);
  return reinterpret_cast<Function>(address);
}

bool is_taken(const Host *host, const void *library) {
  for (const JXHostModule *module = newest_module; module; module = module->earlier) {
    if (module->library == library && module->host != host) return true;
  }
  return false;
}

// Tells whether this host is new enough for the module.
bool is_new_enough(JXInstance *instance) {
  Version required = {};
  if (instance->get_required_version(instance, &required[0], &required[1], &required[2]) != JX_OK) {
    set_error("the module does not say which host version it needs");
    return false;
  }
  if (required <= kHostVersion) return true;
  set_error("the module needs host version %u.%u.%u; this host is version %u.%u.%u", required[0],
            required[1], required[2], kHostVersion[0], kHostVersion[1], kHostVersion[2]);
  return false;
}

Instance make_instance(Host *host, void *library, JXOwner owner) {
  const auto take_handle = find_routine<decltype(&jxextent)>(library, "jxextent");
  const auto enter = take_handle ? find_routine<decltype(&jxwem)>(library, "jxwem") : nullptr;
  if (!enter) return nullptr;
  take_handle(host);
  JXInstance *made = enter(host, owner);
  if (!made) {
    set_error("the module's entry failed: out of memory, or the extension \"jxsecure\" is missing");
    return nullptr;
  }
  if (std::memcmp(made->eye_catcher, JX_EYE_CATCHER, sizeof made->eye_catcher) != 0) {
    // Leaked on purpose: there is no table to destroy it through.
    set_error("no module: its instance does not begin with \"%s\"", JX_EYE_CATCHER);
    return nullptr;
  }
  Instance instance(made);
  if (!is_new_enough(made)) instance.reset();
  return instance;
}

JXHostModule *load(Host *host, const char *path8, JXOwner owner) {
  Library library(::dlopen(path8, RTLD_NOW | RTLD_LOCAL));
  if (!library) {
    const char *reason = ::dlerror();
    set_error("cannot load the module: %s", reason ? reason : path8);
    return nullptr;
  }
  Block<JXHostModule> module(static_cast<JXHostModule *>(std::calloc(1, sizeof(JXHostModule))));
  if (!module) {
    set_error("out of memory");
    return nullptr;
  }
  const std::lock_guard guard(modules_mutex);
  if (is_taken(host, library.get())) {
    set_error("another host of this process has loaded the module \"%s\"", path8);
    return nullptr;
  }
  Instance instance = make_instance(host, library.get(), owner);
  if (!instance) return nullptr;
  *module = {host, library.release(), instance.release(), newest_module};
  return newest_module = module.release();
}

// Removes the module from the list. The caller holds the mutex.
void unlink(const JXHostModule *module) {
  JXHostModule **link = &newest_module;
  while (*link != module) link = &(*link)->earlier;
  *link = module->earlier;
}

// The newest module of a host, or null.
JXHostModule *newest_of(const Host *host) {
  const std::lock_guard guard(modules_mutex);
  JXHostModule *module = newest_module;
  while (module && module->host != host) module = module->earlier;
  return module;
}

}  // namespace

void unload_all(Host *host) {
  while (JXHostModule *module = newest_of(host)) jxhost_unload(module);
}

}  // namespace jxhost

extern "C" {

JXInstance *jxhost_load(JXHost *host, const char *path8, JXOwner owner, JXHostModule **module_out,
                        const char **error_out) {
  JXHostModule *module = nullptr;
  jxhost::set_error("a host, the module's path and a place for the module are needed");
  if (host && path8 && *path8 && module_out) {
    module = jxhost::load(static_cast<jxhost::Host *>(host), path8, owner);
  }
  if (module_out) *module_out = module;
  if (error_out) *error_out = module ? nullptr : jxhost::error_text;
  return module ? module->instance : nullptr;
}

void *jxhost_symbol(JXHostModule *module, const char *name8) {
  return module && name8 ? ::dlsym(module->library, name8) : nullptr;
}

void jxhost_unload(JXHostModule *module) {
  if (!module) return;
  const jxhost::Block<JXHostModule> owner(module);
  // The instance is destroyed first: while the module is in the list, no other host can load it.
  module->instance->destroy(module->instance);
  const std::lock_guard guard(jxhost::modules_mutex);
  jxhost::unlink(module);
  ::dlclose(module->library);
}

}  // extern "C"
