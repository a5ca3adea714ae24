// skzfString: native 8-bit text, decoded into a buffer.
#include <algorithm>

#include "jx/module.h"
#include "jx/runtime.h"
#include "kernel/text.hpp"

extern "C" JXStatus skzfString(const char *source, uint32_t length_bytes, JXChar *destination,
                               uint32_t capacity_chars, uint32_t *count_out) {
  if (!source) length_bytes = 0;
  if (count_out) *count_out = length_bytes;
  if (length_bytes > capacity_chars) return JX_E_TRUNCATED;
  if (length_bytes == 0) return JX_OK;
  const uint64_t room_bytes = uint64_t{length_bytes} * jx::kJXCharBytes;
  JXTranscoder *decoder = Exported_JXHandle->locale->native_decoder;
  // Every byte counts as one character, even if the decoder fails or joins some: the width of a
  // field does not depend on its text.
  decoder->transcode(decoder, source, length_bytes, destination,
                     static_cast<uint32_t>(std::min<uint64_t>(room_bytes, UINT32_MAX)), nullptr, 0);
  return JX_OK;
}
