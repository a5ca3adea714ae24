// The parts of a transcoder: steps, which convert between two cursors, and the object that holds a
// step and the start of a character that a call cut off.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/encodings.hpp"
#include "host/host.hpp"
#include "jx/host.h"
#include "vector/processor.hpp"

namespace jxhost {

class CodePage;
class Substitutes;
struct Chain;
struct Step;

// The input still to be read and the room left for output.
struct Cursor {
  const uint8_t *in;
  const uint8_t *in_end;
  uint8_t *out;
  uint8_t *out_end;

  size_t in_bytes() const { return static_cast<size_t>(in_end - in); }
  size_t out_bytes() const { return static_cast<size_t>(out_end - out); }
};

// Converts all the input. 0: everything was read, except for a character cut off at the end;
// cursor.in is then at its start. JXHOST_E_MALFORMED, _UNMAPPABLE, _NOROOM: everything before the
// character at fault is written, and cursor.out is after it. Bytes between cursor.out and
// cursor.out_end may be overwritten, none beyond.
using Convert = JXStatus (*)(const Step &step, Cursor &cursor);

// Converts what it can at the start of the input, in blocks, and stops at a character boundary: at
// the latest before a character that is malformed, cut off, not in the target or without room.
using WideConvert = void (*)(Cursor &cursor);

// The conversion in blocks of a level; null when it has none, as the base level, whose loops are in
// transcode_pair.hpp.
WideConvert wide_conversion(Form from, Form to, jx::vector::Level level);
WideConvert wide_avx2(Form from, Form to);
WideConvert wide_avx512(Form from, Form to);
// The best level of the running processor, found out once.
jx::vector::Level best_level();

// The slot of a transcoder.
using TranscodeSlot = decltype(JXTranscoder::transcode);

// Owns a conversion descriptor of the C library.
class IconvHandle {
 public:
  IconvHandle() = default;
  IconvHandle(const IconvHandle &) = delete;
  IconvHandle &operator=(const IconvHandle &) = delete;
  ~IconvHandle();

  // Opens the conversion; false when the C library has none or memory is out.
  bool open(const char *from, const char *to);
  // The descriptor, an iconv_t.
  void *get() const { return descriptor_; }

 private:
  void *descriptor_ = nullptr;
};

// One step of a conversion; owns the resources it needs.
struct Step {
  Convert convert = nullptr;
  WideConvert wide = nullptr;                // the conversion in blocks of a direct pair, or null
  std::unique_ptr<const CodePage> page;      // the table of a single-byte encoding
  IconvHandle iconv;                         // a conversion of the C library
  bool flushes = false;                      // iconv may have output pending at the end of a call
  bool maps_tags = false;                    // the target of iconv has the tag characters
  bool refuses_controls = false;             // refuses to encode the characters 0x80 to 0x9f
  std::bitset<256> refused;                  // bytes that are malformed as characters of their own
  std::unique_ptr<Substitutes> substitutes;  // characters that iconv would replace, or null
  std::unique_ptr<const Chain> chain;        // the two steps of a chain, or null

  Step();
  ~Step();
};

// A conversion through JXChar, for pairs that are not converted directly.
struct Chain {
  Step decode;  // to JXChar
  Step encode;  // from JXChar
};

// The longest start of a character, in bytes, that a transcoder can hold. The longest that occurs
// is an escape sequence with the character after it.
inline constexpr size_t kHeldBytesMax = 16;

// The JXTranscoder of this host. One caller at a time, with one exception: without iconv a call
// writes to the object only when it cuts a character, so calls on whole characters may run
// concurrently.
struct Transcoder final : JXTranscoder, Live {
  Step step;
  uint8_t held_bytes = 0;
  uint8_t held[kHeldBytesMax] = {};
};

// The direct conversion of a pair of encodings; slot is null when there is none.
struct Pair {
  TranscodeSlot slot = nullptr;
  Convert convert = nullptr;
};

// The direct conversions from each family of encodings. The page forms pair with UTF-32 only.
Pair pair_from_bytes(Form from, Form to);
Pair pair_from_utf8(Form to);
Pair pair_from_utf16(Form from, Form to);
Pair pair_from_utf32(Form from, Form to);
Pair pair_from_page(Form to);

// Completes the held character from the input, byte by byte, and converts it. Called only when
// there is one. Statuses as Convert. The character is still held afterwards only if the input ended
// before it was complete.
JXStatus resume(Transcoder &transcoder, Cursor &cursor);
// Keeps the rest of the input, the start of a character, for the next call.
JXStatus hold(Transcoder &transcoder, Cursor &cursor);
// Ends a call that stops at a character boundary: writes pending output of the steps.
JXStatus finish(const Step &step, Cursor &cursor);

// Sets up the conversion between two encodings with the vectors of a level, which the processor
// must have. False when the C library does not offer it or when out of memory.
bool set_up(Transcoder &transcoder, const Encoding &from, const Encoding &to,
            jx::vector::Level level = best_level());

// Sets up a step through iconv: from an encoding to JXChar, or from JXChar to an encoding.
bool set_up_iconv_decode(Step &step, const Encoding &from);
bool set_up_iconv_encode(Step &step, const Encoding &to);
// Converts as much input as iconv takes. Returns 0 or the errno of iconv.
int run_iconv(const Step &step, Cursor &cursor);
// Writes pending output of iconv and returns it to its initial state.
JXStatus flush_iconv(const Step &step, Cursor &cursor);
// Returns iconv to its initial state.
void reset_iconv(const Step &step);

// The cursor of one call. The capacity is cut to the end of the address space, which a caller's may
// exceed.
inline Cursor cursor_of(const void *source, uint32_t source_bytes, void *destination,
                        uint32_t capacity_bytes) {
  const auto *in = static_cast<const uint8_t *>(source);
  auto *out = static_cast<uint8_t *>(destination);
  if constexpr (sizeof(void *) == 4) {
    const auto address = reinterpret_cast<uintptr_t>(out);
    const auto most = static_cast<uint32_t>(UINTPTR_MAX - address);
    if (capacity_bytes > most) capacity_bytes = most;
    if (capacity_bytes > INT32_MAX) capacity_bytes = INT32_MAX;
  }
  return {in, in + source_bytes, out, out + capacity_bytes};
}

}  // namespace jxhost
