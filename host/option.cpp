// Options: 32-bit values by name.
#include <unistd.h>

#include <cstring>
#include <utility>

#include "host/host.hpp"

namespace jxhost {

namespace {

constexpr uint32_t kTypeInt32 = 3;  // the one type of option there is

constexpr const char *kProcessId = "host.process_id";

}  // namespace

struct Options::Option {
  Option *next;      // of the list
  Block<char> name;  // ASCII
  int32_t value;
};

bool is_text(const JXChar *text, uint32_t chars, const char *ascii8) {
  for (uint32_t i = 0; i < chars; ++i) {
    if (ascii8[i] == 0 || text[i] != static_cast<unsigned char>(ascii8[i])) return false;
  }
  return ascii8[chars] == 0;
}

Options::~Options() {
  while (first_) delete std::exchange(first_, first_->next);
}

JXStatus Options::set(const char *name8, int32_t value) {
  const std::lock_guard guard(mutex_);
  for (Option *option = first_; option; option = option->next) {
    if (std::strcmp(option->name.get(), name8) != 0) continue;
    option->value = value;
    return JX_OK;
  }
  Block<char> name = copy_text(name8);
  if (!name) return JX_E_NOMEM;
  Option *option = new (std::nothrow) Option{first_, std::move(name), value};
  if (!option) return JX_E_NOMEM;
  first_ = option;
  return JX_OK;
}

bool Options::get(const JXChar *name, uint32_t name_chars, int32_t *value_out) const {
  const std::lock_guard guard(mutex_);
  for (const Option *option = first_; option; option = option->next) {
    if (!is_text(name, name_chars, option->name.get())) continue;
    *value_out = option->value;
    return true;
  }
  return false;
}

JXStatus get_option(JXHost *host, const JXChar *name, uint32_t name_chars, uint32_t type,
                    void *buffer, uint32_t *size_bytes) {
  if (!host || !name || !buffer || !size_bytes) return JX_E_BADARG;
  if (type != kTypeInt32) return JXHOST_E_NOOPTION;
  int32_t value;
  if (!static_cast<Host *>(host)->options.get(name, name_chars, &value)) {
    if (!is_text(name, name_chars, kProcessId)) return JXHOST_E_NOOPTION;
    // Asked for each time: the answer differs after a fork.
    value = static_cast<int32_t>(::getpid());
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
