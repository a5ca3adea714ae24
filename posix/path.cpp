// Paths on their way to the system and names on their way from it.
#include "posix/path.hpp"

#include <algorithm>

#include "jx/exports/posix.h"
#include "kernel/copy.hpp"

namespace jx {

JXStatus encode_native(JXInstance *instance, Text text, char *destination) {
  JXTranscoder *encoder = instance->native_encoder;
  if (encoder->transcode(encoder, text.data, text.chars * kJXCharBytes, destination, text.chars,
                         nullptr, 0) != JX_OK) {
    return JXWEM_E_FAILED;
  }
  destination[text.chars] = '\0';
  return JX_OK;
}

JXStatus encode_native(JXInstance *instance, Text text, JXPool *pool, PoolBlock<char> *native_out) {
  if (!is_valid_size(uint64_t{text.chars} * kJXCharBytes)) return JXWEM_E_NAMETOOLONG;
  *native_out = PoolBlock<char>::allocate(pool, uint64_t{text.chars} + 1);
  return *native_out ? encode_native(instance, text, native_out->get()) : JX_E_NOMEM;
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

JXStatus expand_path(JXInstance *instance, Text path, OwnedPath *path_out) {
  JXChar *expanded = nullptr;
  const JXStatus status =
      bkwemexpand_path(instance, path.data, path.chars, &expanded, &path_out->chars);
  path_out->block = PoolBlock<JXChar>(instance->pool, expanded);
  return status;
}

JXStatus build_path(JXInstance *instance, Text directory, Text member, OwnedPath *path_out) {
  JXChar *built = nullptr;
  const JXStatus status = bkwembuildpath(instance, directory.data, directory.chars, member.data,
                                         member.chars, nullptr, 0, &built, &path_out->chars);
  path_out->block = PoolBlock<JXChar>(instance->pool, built);
  return status;
}

JXStatus SystemPath::prepare(JXInstance *instance, Text path, JXPool *pool) {
  if (!path.data && path.chars != 0) return JXWEM_E_BADNAME;
  const JXStatus status = expand_path(instance, path, &expansion_);
  return status == JX_OK ? convert(instance, expanded(), pool) : status;
}

PoolBlock<JXChar> copy_text(JXPool *pool, Text text) {
  auto block = PoolBlock<JXChar>::allocate(pool, text.chars);
  if (block) copy_bytes(block.get(), text.data, size_t{text.chars} * kJXCharBytes);
  return block;
}

}  // namespace jx
