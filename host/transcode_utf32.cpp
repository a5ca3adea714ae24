// Conversions from UTF-32 in both byte orders; the little-endian one is JXChar.
#include "host/transcode_pair.hpp"

namespace jxhost {

Pair pair_from_utf32(Form from, Form to) {
  if (from == Form::kUtf32Be) return pair_to<Utf32Be>(to);
  return to == Form::kPage ? pair_of<Utf32Le, PageCodec>() : pair_to<Utf32Le>(to);
}

}  // namespace jxhost
