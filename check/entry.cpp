// The entry points of jxwem.so: a host that loads jxcheck.so in its place is examined.
#include <stdlib.h>
#include <string.h>

#include <type_traits>

#include "check/isolation.hpp"
#include "jx/exports/portable.h"
#include "jx/jxcheck.h"

namespace {

constexpr uint32_t kTypeInt32 = 3;

// For the slot of an operation that is not offered: stores JX_E_UNSUPPORTED in the last argument if
// that is a place for a status, and returns it if the operation returns one.
template <typename Slot>
struct Refusal;
template <typename Result, typename... Arguments>
struct Refusal<Result (*)(Arguments...)> {
  static Result call(Arguments... arguments) {
    (store(arguments), ...);
    if constexpr (std::is_same_v<Result, JXStatus>) return JX_E_UNSUPPORTED;
    return Result{};
  }

 private:
  static void store(JXStatus *status_out) {
    if (status_out) *status_out = JX_E_UNSUPPORTED;
  }
  static void store(const auto &) {}
};

void refuse(auto &...slot) {
  ((slot = Refusal<std::remove_reference_t<decltype(slot)>>::call), ...);
}

void fill(JXInstance *instance, JXHost *host) {
  ::memcpy(instance->eye_catcher, JX_EYE_CATCHER, sizeof instance->eye_catcher);
  instance->host = instance->pool_host = host;
  instance->nls = host->nls;
  instance->get_required_version = jxwemgetreqversion;
  instance->get_version = jxwemgetversion;
  instance->destroy = jxwemdestroy;
  refuse(instance->directory_open, instance->open, instance->build_path,
         instance->build_path_release, instance->split_path, instance->split_path_release,
         instance->copy, instance->exist, instance->make_directory, instance->remove,
         instance->rename, instance->info, instance->file_system_info, instance->create_name,
         instance->create_name_release, instance->directory_list);
}

// Asks for the option; the answer is the fresh room of the probe.
void ask_for_folder(jxcheck::Probe &probe) {
  const jxcheck::Probe::Name name = probe.name(JXCHECK_FOLDER_OPTION);
  const jxcheck::Room room = probe.room(sizeof(int32_t));
  uint32_t size_bytes = room.bytes;
  const JXStatus status = probe.host->get_option(probe.host, name.chars, name.count, kTypeInt32,
                                                 room.data, &size_bytes);
  probe.expect_status("the option", status, JX_OK);
}

// The descriptor that the host has as an option, or -1. The slot may be null, or crash.
int folder_of(JXHost *host, const JXCheckConfig &config) {
  jxcheck::Memory memory;
  if (!host->get_option || !memory.allocate()) return -1;
  jxcheck::Probe probe(host, config, memory);
  const jxcheck::Outcome *outcome = memory.outcome();
  if (!run_isolated(ask_for_folder, probe, memory.outcome())) return -1;
  if (outcome->outcome != JXCHECK_PASSED) return -1;
  int32_t fd;
  ::memcpy(&fd, memory.end_of(jxcheck::Memory::kOutput) - jxcheck::Room::kMarginBytes - sizeof fd,
           sizeof fd);
  return fd;
}

}  // namespace

extern "C" {

constinit JXHost *Exported_JXHandle = nullptr;

void jxextent(JXHost *host) { Exported_JXHandle = host; }

JXInstance *jxwem(JXHost *host, JXOwner) {
  if (!host) return nullptr;
  JXCheckConfig config = JXCHECK_CONFIG_INIT;
  config.folder_fd = folder_of(host, config);
  if (jxcheck_run(host, &config, nullptr) != JX_OK) return nullptr;
  // Memory of its own: a pool would be the host's.
  auto *instance = static_cast<JXInstance *>(::calloc(1, sizeof(JXInstance)));
  if (instance) fill(instance, host);
  return instance;
}

JXStatus jxwemdestroy(JXInstance *instance) {
  if (!instance) return JXWEM_E_NOHANDLE;
  ::free(instance);
  return JX_OK;
}

JXStatus jxwemgetreqversion(JXInstance *, uint32_t *major, uint32_t *minor, uint32_t *patch) {
  *major = 3;
  *minor = 1;
  *patch = 1;
  return JX_OK;
}

JXStatus jxwemgetversion(JXInstance *, uint32_t *major, uint32_t *minor, uint32_t *patch) {
  *major = JX_VERSION_MAJOR;
  *minor = JX_VERSION_MINOR;
  *patch = JX_VERSION_PATCH;
  return JX_OK;
}

}  // extern "C"
