// Paths on their way to the system and names on their way from it.
#pragma once

#include <cstdint>

#include "jx/module.h"
#include "kernel/owners.hpp"
#include "kernel/text.hpp"

namespace [[gnu::visibility("hidden")]] jx {

// A block of the pool with a copy of text; empty when memory is out.
PoolBlock<JXChar> copy_text(JXPool *pool, Text text);

// A path in a block of its own.
struct OwnedPath {
  PoolBlock<JXChar> block;
  uint32_t chars = 0;

  Text text() const { return {block.get(), chars}; }
};

// Expands a path into a block of the instance's pool. The statuses of bkwemexpand_path.
JXStatus expand_path(JXInstance *instance, Text path, OwnedPath *path_out);
// Joins a directory and a member into a block of the instance's pool. The statuses of
// bkwembuildpath.
JXStatus build_path(JXInstance *instance, Text directory, Text member, OwnedPath *path_out);

// A component without its trailing blanks; empty when it is null. A length that no memory holds is
// not changed, so that the test of its size refuses it.
Text trimmed(Text component);

// Converts text to the platform encoding, one byte a character, and terminates it; destination
// holds text.chars + 1 bytes, and text.chars * 4 fits in 32 bits. 0, or JXWEM_E_FAILED.
inline JXStatus encode_native(JXInstance *instance, Text text, char *destination) {
  JXTranscoder *encoder = instance->native_encoder;
  if (encoder->transcode(encoder, text.data, text.chars * kJXCharBytes, destination, text.chars,
                         nullptr, 0) != JX_OK) {
    return JXWEM_E_FAILED;
  }
  destination[text.chars] = '\0';
  return JX_OK;
}
// The same into a block of the pool, for any length. 0, JXWEM_E_NAMETOOLONG (no memory holds such
// a text), JX_E_NOMEM or JXWEM_E_FAILED.
inline JXStatus encode_native(JXInstance *instance, Text text, JXPool *pool,
                              PoolBlock<char> *native_out) {
  if (!is_valid_size(uint64_t{text.chars} * kJXCharBytes)) return JXWEM_E_NAMETOOLONG;
  *native_out = PoolBlock<char>::allocate(pool, uint64_t{text.chars} + 1);
  return *native_out ? encode_native(instance, text, native_out->get()) : JX_E_NOMEM;
}

// Converts a name of the platform into JXChars; destination holds one a byte. *chars_out receives
// the length. 0, or the transcoder's status.
JXStatus decode_native(JXInstance *instance, const char *name, uint32_t bytes, JXChar *destination,
                       uint32_t *chars_out);

// A path made ready for the system. Owns its blocks.
class SystemPath {
 public:
  // Expands a path and converts the expansion; the platform form is a block of the pool. 0, a
  // status of the expansion, JX_E_NOMEM, JXWEM_E_FAILED (not convertible) or JXWEM_E_BADNAME (a
  // length without text).
  JXStatus prepare(JXInstance *instance, Text path, JXPool *pool);
  JXStatus prepare(JXInstance *instance, const JXChar *path, uint32_t path_chars) {
    return prepare(instance, {path, path_chars}, instance->pool);
  }
  // Converts a path without expanding it. 0, JXWEM_E_NAMETOOLONG, JX_E_NOMEM or JXWEM_E_FAILED.
  JXStatus convert(JXInstance *instance, Text path, JXPool *pool) {
    return encode_native(instance, path, pool, &native_);
  }

  const char *native() const { return native_.get(); }  // terminated
  Text expanded() const { return expansion_.text(); }   // after prepare

 private:
  OwnedPath expansion_;
  PoolBlock<char> native_;
};

}  // namespace jx
