// The host kernel handle: creating and destroying a host, and its list of live objects.
#include "host/host.hpp"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "host/nls.hpp"

namespace jxhost {

Block<char> copy_text(const char *text8) { return Block<char>(::strdup(text8)); }

void enlist(JXHost *handle, Live *object, const char *kind, const char *name8) {
  auto *host = static_cast<Host *>(handle);
  object->host = host;
  object->kind = kind;
  if (name8) std::snprintf(object->name, sizeof object->name, "%s", name8);
  const Guard guard(host->mutex);
  object->previous = host->newest;
  (host->newest ? host->newest->next : host->oldest) = object;
  host->newest = object;
  host->live_objects.fetch_add(1, std::memory_order_relaxed);
}

void delist(Live *object) {
  Host *host = object->host;
  const Guard guard(host->mutex);
  (object->previous ? object->previous->next : host->oldest) = object->next;
  (object->next ? object->next->previous : host->newest) = object->previous;
  host->live_objects.fetch_sub(1, std::memory_order_relaxed);
}

namespace {

// The process's current time zone in seconds west of UTC.
int32_t seconds_west() {
  ::tzset();
  const time_t now = ::time(nullptr);
  struct tm local {};
  if (!::localtime_r(&now, &local)) return 0;
  return static_cast<int32_t>(-local.tm_gmtoff);
}

void free_leaked(Live *object) {
  char text[64];
  std::snprintf(text, sizeof text, "%s \"%s\"", object->kind, object->name);
  report(&object->host->journal, JX_JOURNAL_WARNING, JXHOST_E_LEAKED, text);
  end_live(object);
}

}  // namespace

Host::Host()
    : JXHost{.create_lock = jxhost::create_lock,
             .create_pool = jxhost::create_pool,
             .create_table = jxhost::create_table,
             .load_extension = jxhost::load_extension,
             .get_option = jxhost::get_option,
             .nls = nullptr,
             .locale = &locale_context,
             .time_zone = 0} {
  locale_context.decimal_point = '.';
}

Host::~Host() {
  drop_native_decoder();
  destroy_nls(nls);
}

void Host::drop_native_decoder() {
  JXTranscoder *decoder = std::exchange(locale_context.native_decoder, nullptr);
  if (decoder) nls->destroy_transcoder(nls, decoder);
}

bool Host::set_up(const JXHostConfig &config) {
  extensions = config.extensions;
  time_zone = config.time_zone_set ? config.time_zone : seconds_west();
  journal.sink = config.journal_sink;
  journal.context = config.journal_context;
  journal.fd = config.journal_fd;
  if (config.host_name8) {
    host_name = copy_text(config.host_name8);
    if (!host_name) return false;
  }
  if (config.process_id != 0 && options.set("host.process_id", config.process_id) != JX_OK) {
    return false;
  }
  nls = create_nls(this);
  if (!nls) return false;
  locale_context.native_decoder = nls->create_decoder(nls, JX_ENCODING_NATIVE, 0, 0);
  return locale_context.native_decoder != nullptr;
}

}  // namespace jxhost

using jxhost::Host;
using jxhost::Live;

namespace {

// The host's own decoder, which the service counts as a live transcoder.
constexpr uint32_t kOwnTranscoders = 1;

}  // namespace

extern "C" {

JXHost *jxhost_create(const JXHostConfig *config) {
  const JXHostConfig defaults = JXHOST_CONFIG_INIT;
  std::unique_ptr<Host> host(new (std::nothrow) Host);
  if (!host || !host->set_up(config ? *config : defaults)) return nullptr;
  return host.release();
}

uint32_t jxhost_destroy(JXHost *host) {
  if (!host) return 0;
  const std::unique_ptr<Host> owner(static_cast<Host *>(host));
  jxhost::unload_all(owner.get());
  const uint32_t leaked_count = jxhost_live_objects(host);
  owner->drop_native_decoder();
  // Newest first: an object may need those made before it.
  for (Live *object = owner->newest, *older; object; object = older) {
    older = object->previous;
    jxhost::free_leaked(object);
  }
  return leaked_count;
}

JXJournal *jxhost_journal(JXHost *host) {
  return host ? &static_cast<Host *>(host)->journal : nullptr;
}

uint64_t jxhost_live_blocks(const JXHost *host) {
  if (!host) return 0;
  const auto *self = static_cast<const Host *>(host);
  const jxhost::Guard guard(self->mutex);
  uint64_t block_count = 0;
  for (const Live *object = self->oldest; object; object = object->next) {
    block_count += object->live_blocks();
  }
  return block_count;
}

uint32_t jxhost_live_objects(const JXHost *host) {
  if (!host) return 0;
  return static_cast<const Host *>(host)->live_objects.load() - kOwnTranscoders;
}

}  // extern "C"
