// Paths on their way to the system and names on their way from it.
#include <algorithm>

#include "posix/posix.hpp"

namespace jx {

JXStatus encode_native(JXInstance *instance, Text text, char *destination) {
  const uint64_t source_bytes = uint64_t{text.chars} * kJXCharBytes;
  if (!is_valid_size(source_bytes)) return JXWEM_E_FAILED;
  JXTranscoder *encoder = instance->native_encoder;
  if (encoder->transcode(encoder, text.data, static_cast<uint32_t>(source_bytes), destination,
                         text.chars, nullptr, 0) != JX_OK) {
    return JXWEM_E_FAILED;
  }
  destination[text.chars] = '\0';
  return JX_OK;
}

JXStatus decode_native(JXInstance *instance, const char *name, uint32_t bytes, JXChar *destination,
                       uint32_t *chars_out) {
  uint32_t produced_bytes = bytes * kJXCharBytes;
  JXTranscoder *decoder = instance->native_decoder;
  const JXStatus status = decoder->transcode(decoder, name, bytes, destination,
                                             bytes * kJXCharBytes, &produced_bytes, 0);
  *chars_out = std::min(produced_bytes / kJXCharBytes, bytes);
  return status;
}

JXStatus SystemPath::prepare(JXInstance *instance, Text path, JXPool *pool) {
  if (!path.data && path.chars != 0) return JXWEM_E_BADNAME;
  JXChar *expansion = nullptr;
  const JXStatus status =
      bkwemexpand_path(instance, path.data, path.chars, &expansion, &expanded_chars_);
  expansion_ = PoolBlock<JXChar>(instance->pool, expansion);
  if (status != JX_OK) return status;
  return convert(instance, expanded(), pool);
}

JXStatus SystemPath::convert(JXInstance *instance, Text path, JXPool *pool) {
  native_ = PoolBlock<char>::allocate(pool, uint64_t{path.chars} + 1);
  if (!native_) return JX_E_NOMEM;
  return encode_native(instance, path, native_.get());
}

PoolBlock<JXChar> copy_text(JXPool *pool, Text text) {
  auto block = PoolBlock<JXChar>::allocate(pool, text.chars);
  if (block) std::copy_n(text.data, text.chars, block.get());
  return block;
}

}  // namespace jx
