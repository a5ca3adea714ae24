// The character-set service of the reference host: what the host core needs of it.
#ifndef JXHOST_NLS_HPP
#define JXHOST_NLS_HPP

#include <atomic>
#include <cstdint>

#include "jx/host.h"

namespace jxhost {

// Makes the service, owned by the caller until destroy_nls. live_objects counts the transcoders
// that are alive, up and down, and must outlive the service. Null when memory is out.
JXNls *create_nls(std::atomic<uint32_t> *live_objects);

// Ends the service; null is allowed. Transcoders are destroyed before it: those still alive leak.
void destroy_nls(JXNls *nls);

}  // namespace jxhost

#endif
