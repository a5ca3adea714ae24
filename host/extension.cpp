// Loading sibling extensions by name (the slot load_extension), and the two small ones: "jxitcp"
// and "jxsecure".
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "host/host.hpp"

namespace jxhost {

namespace {

constexpr uint32_t kMachineName = 2;  // the only form of host name supported

struct Itcp final : JXItcp, Live {
  Itcp();
};

struct Secure final : JXExtension, Live {
  Secure();
};

JXStatus get_host_name(JXItcp *itcp, JXChar *buffer, uint32_t *length_chars, uint32_t form) {
  if (!itcp || !length_chars || (!buffer && *length_chars > 0)) return JX_E_BADARG;
  if (form != kMachineName) return JX_E_UNSUPPORTED;
  char machine[HOST_NAME_MAX + 1] = "";
  const char *name = static_cast<Itcp *>(itcp)->host->host_name.get();
  if (!name) {
    if (::gethostname(machine, sizeof machine) != 0) return JXHOST_E_BADOBJECT;
    name = machine;
  }
  const size_t chars = std::min<size_t>(std::strlen(name), *length_chars);
  std::transform(name, name + chars, buffer,
                 [](char c) -> JXChar { return static_cast<unsigned char>(c); });
  *length_chars = static_cast<uint32_t>(chars);
  return name[chars] ? JX_E_TRUNCATED : JX_OK;
}

JXStatus release_itcp(JXExtension *extension) {
  return end_live(static_cast<Itcp *>(reinterpret_cast<JXItcp *>(extension)));
}

JXStatus release_secure(JXExtension *extension) {
  return end_live(static_cast<Secure *>(extension));
}

Itcp::Itcp() : JXItcp{.release_extension = release_itcp, .get_host_name = jxhost::get_host_name} {}

Secure::Secure() : JXExtension{.release_extension = release_secure} {}

JXExtension *make_itcp(JXHost *host) {
  JXItcp *itcp = make_live<Itcp>(host, "extension", "jxitcp");
  return reinterpret_cast<JXExtension *>(itcp);
}

JXExtension *make_secure(JXHost *host) { return make_live<Secure>(host, "extension", "jxsecure"); }

struct Row {
  const char *name;  // passed to load_extension
  uint32_t bit;      // JXHOST_*
  JXExtension *(*make)(JXHost *host);
};

constexpr Row kExtensions[] = {
    {"jxelm", JXHOST_ELM, make_elm},
    {"jxitcp", JXHOST_ITCP, make_itcp},
    {"jxsecure", JXHOST_SECURE, make_secure},
};

}  // namespace

JXExtension *load_extension(JXHost *host, const JXChar *name, uint32_t name_chars, JXOwner) {
  if (!host || !name) return nullptr;
  for (const Row &row : kExtensions) {
    if (!is_text(name, name_chars, row.name)) continue;
    return static_cast<Host *>(host)->extensions & row.bit ? row.make(host) : nullptr;
  }
  return nullptr;
}

}  // namespace jxhost
