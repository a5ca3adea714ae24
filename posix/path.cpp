// Paths on their way to the system and names on their way from it.
#include "posix/path.hpp"

#include <algorithm>

#include "jx/exports/posix.h"
#include "kernel/copy.hpp"

namespace jx {

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
