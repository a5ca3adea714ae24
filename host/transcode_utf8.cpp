// Conversions from UTF-8.
#include "host/transcode_pair.hpp"

namespace jxhost {

Pair pair_from_utf8(Form to) { return pair_to<Utf8Codec>(to); }

}  // namespace jxhost
