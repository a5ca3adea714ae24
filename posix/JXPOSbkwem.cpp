// bkwem and bkwemdestroy: the POSIX layer's part of the instance, the extension that opens files.
#include <iterator>

#include "jx/exports/posix.h"
#include "kernel/owners.hpp"

namespace {

constexpr JXChar kElmName[] = {'j', 'x', 'e', 'l', 'm'};

}  // namespace

extern "C" {

JXStatus bkwem(JXInstance *instance) {
  if (!instance) return JXWEM_E_NOHANDLE;
  JXHost *host = Exported_JXHandle;
  instance->elm = nullptr;
  if (host) {
    instance->elm = reinterpret_cast<JXElm *>(
        host->load_extension(host, kElmName, std::size(kElmName), nullptr));
  }
  return JX_OK;
}

JXStatus bkwemdestroy(JXInstance *instance) {
  if (!instance) return JXWEM_E_NOHANDLE;
  const jx::HostObject<JXExtension> elm(reinterpret_cast<JXExtension *>(instance->elm));
  instance->elm = nullptr;
  return JX_OK;
}

}  // extern "C"
