// Conversions from UTF-16 in both byte orders.
#include "host/transcode_pair.hpp"

namespace jxhost {

Pair pair_from_utf16(Form from, Form to) {
  return from == Form::kUtf16Be ? pair_to<Utf16Be>(to) : pair_to<Utf16Le>(to);
}

}  // namespace jxhost
