// jxwem, which makes the extension instance and its operation table, and the routines of its
// destroy, get_version and get_required_version slots.
#include <algorithm>
#include <iterator>

#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "kernel/owners.hpp"

namespace {

constexpr JXChar kSecureName[] = {'j', 'x', 's', 'e', 'c', 'u', 'r', 'e'};
constexpr JXChar kItcpName[] = {'j', 'x', 'i', 't', 'c', 'p'};
constexpr uint32_t kHostNameForm = 2;  // the form of the host name that "jxitcp" is asked for

void fill_table(JXInstance *instance) {
  std::copy_n(JX_EYE_CATCHER, sizeof instance->eye_catcher, instance->eye_catcher);
  instance->get_required_version = jxwemgetreqversion;
  instance->get_version = jxwemgetversion;
  instance->destroy = jxwemdestroy;
  instance->directory_open = jxwemdirectoryopen;
  instance->open = jxwemopen;
  instance->build_path = bkwembuildpath;
  instance->build_path_release = bkwembuildpathdestroy;
  instance->split_path = bkwemsplitpath;
  instance->split_path_release = bkwemsplitpathdestroy;
  instance->copy = bkwemcopy;
  instance->exist = bkwemexist;
  instance->make_directory = bkwemmakedirectory;
  instance->remove = bkwemremove;
  instance->rename = bkwemrename;
  instance->info = jxweminfo;
  instance->file_system_info = jxwemfsinfo;
  instance->create_name = jxwemcreatename;
  instance->create_name_release = bkwembuildpathdestroy;
  instance->directory_list = jxwemdirectorylist;
}

// Asks "jxitcp" for the machine's name; a host without it leaves the name empty. The length is the
// extension's word; readers clamp it to the field.
void fill_host_name(JXInstance *instance, JXHost *host, JXOwner owner) {
  JXExtension *extension = host->load_extension(host, kItcpName, std::size(kItcpName), owner);
  if (!extension) return;
  const jx::HostObject<JXExtension> loaded(extension);
  auto *itcp = reinterpret_cast<JXItcp *>(extension);
  instance->host_name_chars = JX_HOST_NAME_CHARS;
  itcp->get_host_name(itcp, instance->host_name, &instance->host_name_chars, kHostNameForm);
}

// Releases "jxelm" when the entry fails after it was loaded.
class PosixLayer {
 public:
  PosixLayer() = default;
  PosixLayer(const PosixLayer &) = delete;
  PosixLayer &operator=(const PosixLayer &) = delete;
  ~PosixLayer() {
    if (instance_) bkwemdestroy(instance_);
  }
  JXStatus set_up(JXInstance *instance) {
    instance_ = instance;
    return bkwem(instance);
  }
  void release() { instance_ = nullptr; }

 private:
  JXInstance *instance_ = nullptr;
};

}  // namespace

extern "C" {

JXInstance *jxwem(JXHost *host, JXOwner owner) {
  // A slot that the entry calls and the host left empty is refused here, as a missing object is.
  if (!host || !host->create_pool || !host->load_extension) return nullptr;
  jx::HostObject<JXPool> pool(host->create_pool(host, 0, 0, 0, owner, "jxwem pool"));
  if (!pool) return nullptr;
  // The instance needs no owner of its own: it goes with the pool.
  auto *instance = static_cast<JXInstance *>(
      pool->pool_allocate(pool.get(), sizeof(JXInstance), JX_POOL_ZERO_FILL));
  if (!instance) return nullptr;
  JXNls *nls = host->nls;
  if (!nls || !nls->create_decoder || !nls->create_encoder || !nls->destroy_transcoder) {
    return nullptr;
  }
  // Guards undo in reverse: decoder, encoder, "jxelm", pool.
  PosixLayer posix_layer;
  jx::Transcoder encoder;
  jx::Transcoder decoder(nls, nls->create_decoder(nls, JX_ENCODING_NATIVE, 0, 0));
  if (!decoder) return nullptr;
  encoder = jx::Transcoder(nls, nls->create_encoder(nls, JX_ENCODING_NATIVE, 0, 0));
  if (!encoder) return nullptr;

  instance->nls = nls;
  instance->native_decoder = decoder.get();
  instance->native_encoder = encoder.get();
  instance->host = host;
  instance->pool_host = host;
  instance->pool = pool.get();
  instance->working_pool = pool.get();
  fill_table(instance);
  if (posix_layer.set_up(instance) != JX_OK) return nullptr;
  instance->secure = host->load_extension(host, kSecureName, std::size(kSecureName), owner);
  if (!instance->secure) return nullptr;
  fill_host_name(instance, host, owner);

  posix_layer.release();
  (void)encoder.release();
  (void)decoder.release();
  (void)pool.release();
  return instance;
}

JXStatus jxwemdestroy(JXInstance *instance) {
  if (!instance) return JXWEM_E_NOHANDLE;
  bkwemdestroy(instance);
  JXNls *nls = instance->nls;
  if (instance->native_decoder) nls->destroy_transcoder(nls, instance->native_decoder);
  if (instance->native_encoder) nls->destroy_transcoder(nls, instance->native_encoder);
  instance->name_counter = 0;
  const jx::HostObject<JXPool> pool(instance->pool);
  const jx::HostObject<JXExtension> secure(instance->secure);
  const jx::HostObject<JXPool> working_pool(
      instance->working_pool != instance->pool ? instance->working_pool : nullptr);
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
