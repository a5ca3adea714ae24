// Creates and destroys the character-set service of the reference host.
#pragma once

#include "jx/host.h"

namespace jxhost {

// Makes the service of a host, owned by the caller until destroy_nls. Its transcoders are in the
// host's list of live objects. Null when out of memory.
JXNls *create_nls(JXHost *host);

// Destroys the service; null is allowed. Its transcoders may outlive it.
void destroy_nls(JXNls *nls);

}  // namespace jxhost
