// Conversions from encodings of one byte a character.
#include "host/transcode_pair.hpp"

namespace jxhost {

Pair pair_from_bytes(Form from, Form to) {
  return from == Form::kByte ? pair_to<Latin1>(to) : pair_to<Ascii>(to);
}

Pair pair_from_page(Form to) {
  return to == Form::kUtf32Le ? pair_of<PageCodec, Utf32Le>() : Pair{};
}

}  // namespace jxhost
