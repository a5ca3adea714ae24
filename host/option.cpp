// 32-bit values by name, and the slot get_option.
#include <pthread.h>
#include <unistd.h>

#include <cstring>
#include <iterator>
#include <utility>

#include "host/host.hpp"

namespace jxhost {

namespace {

constexpr uint32_t kTypeInt32 = 3;  // the only type of option

constexpr JXChar kProcessIdName[] = {'h', 'o', 's', 't', '.', 'p', 'r', 'o',
                                     'c', 'e', 's', 's', '_', 'i', 'd'};

// The system is asked once a process: the call costs more than all else that makes a unique name.
constinit std::atomic<int32_t> known_process_id{};  // 0: to be asked

int32_t process_id() {
  int32_t id = known_process_id.load(std::memory_order_relaxed);
  if (id != 0) return id;
  // A child asks again.
  static const bool is_reset_by_fork =
      ::pthread_atfork(nullptr, nullptr, [] { known_process_id = 0; }) == 0;
  id = static_cast<int32_t>(::getpid());
  if (is_reset_by_fork) known_process_id = id;
  return id;
}

}  // namespace

struct NamedValues::Entry {
  Entry *next;
  Block<char> name;
  int32_t value;
};

bool is_text(const JXChar *text, uint32_t chars, const char *text8) {
  for (uint32_t i = 0; i < chars; ++i) {
    if (text8[i] == 0 || text[i] != static_cast<unsigned char>(text8[i])) return false;
  }
  return text8[chars] == 0;
}

NamedValues::~NamedValues() {
  while (first_) delete std::exchange(first_, first_->next);
}

JXStatus NamedValues::set(const char *name8, int32_t value) {
  const Guard guard(mutex_);
  for (Entry *entry = first_; entry; entry = entry->next) {
    if (std::strcmp(entry->name.get(), name8) != 0) continue;
    entry->value = value;
    return JX_OK;
  }
  Block<char> name = copy_text(name8);
  if (!name) return JX_E_NOMEM;
  Entry *entry = new (std::nothrow) Entry{first_, std::move(name), value};
  if (!entry) return JX_E_NOMEM;
  first_ = entry;
  return JX_OK;
}

bool NamedValues::get(const JXChar *name, uint32_t name_chars, int32_t *value_out) const {
  const Guard guard(mutex_);
  for (const Entry *entry = first_; entry; entry = entry->next) {
    if (!is_text(name, name_chars, entry->name.get())) continue;
    *value_out = entry->value;
    return true;
  }
  return false;
}

void NamedValues::remove(const char *name8) {
  const Guard guard(mutex_);
  Entry **link = &first_;
  while (*link && std::strcmp((*link)->name.get(), name8) != 0) link = &(*link)->next;
  if (*link) delete std::exchange(*link, (*link)->next);
}

JXStatus get_option(JXHost *host, const JXChar *name, uint32_t name_chars, uint32_t type,
                    void *buffer, uint32_t *size_bytes) {
  if (!host || !name || !buffer || !size_bytes) return JX_E_BADARG;
  if (type != kTypeInt32) return JXHOST_E_NOOPTION;
  int32_t value;
  if (!static_cast<Host *>(host)->options.get(name, name_chars, &value)) {
    if (name_chars != std::size(kProcessIdName) ||
        std::memcmp(name, kProcessIdName, sizeof kProcessIdName) != 0) {
      return JXHOST_E_NOOPTION;
    }
    value = process_id();
  }
  const uint32_t room_bytes = std::exchange(*size_bytes, sizeof value);
  if (room_bytes < sizeof value) return JXHOST_E_NOROOM;
  std::memcpy(buffer, &value, sizeof value);
  return JX_OK;
}

}  // namespace jxhost

extern "C" JXStatus jxhost_set_option(JXHost *host, const char *name8, int32_t value) {
  if (!host || !name8 || !*name8) return JX_E_BADARG;
  for (const char *c = name8; *c; ++c) {
    if (static_cast<unsigned char>(*c) > 0x7F) return JX_E_BADARG;
  }
  return static_cast<jxhost::Host *>(host)->options.set(name8, value);
}
