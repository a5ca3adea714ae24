// The character-set service of the reference host: what the host core needs of it.
#pragma once

#include "jx/host.h"

namespace jxhost {

// Makes the service of a host, owned by the caller until destroy_nls; its transcoders are in the
// host's list of live objects. Null when memory is out.
JXNls *create_nls(JXHost *host);

// Ends the service; null is allowed. Its transcoders do not need it.
void destroy_nls(JXNls *nls);

}  // namespace jxhost
