// What the transcoders are made of: steps that convert from one position to another, and the object
// that carries a step and the start of a character which a call cut off.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/encodings.hpp"
#include "host/host.hpp"
#include "jx/host.h"

namespace jxhost {

class CodePage;
class Substitutes;
struct Chain;
struct Step;

// A conversion under way: what is left to read and the room that is left to write to.
struct Cursor {
  const uint8_t *in;
  const uint8_t *in_end;
  uint8_t *out;
  uint8_t *out_end;

  size_t in_bytes() const { return static_cast<size_t>(in_end - in); }
  size_t out_bytes() const { return static_cast<size_t>(out_end - out); }
};

// Converts as much as there is. 0: all was read except a character cut off at the end, at whose
// start cursor.in then stands. JXHOST_E_MALFORMED, _UNMAPPABLE, _NOROOM: what came before the
// character at fault is written, and cursor.out is behind it. Bytes between cursor.out and
// cursor.out_end may have been overwritten, none beyond.
using Convert = JXStatus (*)(const Step &step, Cursor &cursor);

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

// One step of a conversion with what it needs; owns all of it.
struct Step {
  Convert convert = nullptr;
  std::unique_ptr<const CodePage> page;  // the table of a single-byte encoding
  IconvHandle iconv;                     // a conversion of the C library
  bool flushes = false;                  // iconv may owe characters or a shift at the end of a call
  bool maps_tags = false;                // the target of iconv has the tag characters
  bool refuses_controls = false;         // does not encode the characters 0x80 to 0x9f
  std::bitset<256> refused;              // bytes that are malformed as characters of their own
  std::unique_ptr<Substitutes> substitutes;  // the characters that iconv would replace, or null
  std::unique_ptr<const Chain> chain;        // the two steps this one consists of

  Step();
  ~Step();
};

// A conversion by way of JXChar, for pairs that have no code of their own.
struct Chain {
  Step decode;  // to JXChar
  Step encode;  // from JXChar
};

// The longest start of a character, in bytes, that a transcoder can hold; the longest that occurs
// is an escape sequence with the character behind it.
inline constexpr size_t kHeldBytesMax = 16;

// What a JXTranscoder of this host is. One caller at a time, except that a call without iconv
// writes to the object only when it cuts a character: such calls on whole characters may run side
// by side.
struct Transcoder final : JXTranscoder, Live {
  Step step;
  uint8_t held_bytes = 0;
  uint8_t held[kHeldBytesMax] = {};
};

// How a pair of encodings is converted directly; slot is null where it is not.
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
// there is one. Statuses as Convert; whatever came, the character is not held any more unless the
// input ended before it was complete.
JXStatus resume(Transcoder &transcoder, Cursor &cursor);
// Keeps the rest of the input, a cut character, for the next call.
JXStatus hold(Transcoder &transcoder, Cursor &cursor);
// Ends a call after whole characters: writes what a step still owes.
JXStatus finish(const Step &step, Cursor &cursor);

// Sets up the whole conversion between two encodings. False when the C library does not offer it
// or memory is out.
bool set_up(Transcoder &transcoder, const Encoding &from, const Encoding &to);

// Sets up a step from an encoding of the C library to JXChar, or from JXChar to it.
bool set_up_iconv_decode(Step &step, const Encoding &from);
bool set_up_iconv_encode(Step &step, const Encoding &to);
// Converts the input by the C library as far as it goes. Returns 0 or the errno of the C library.
int run_iconv(const Step &step, Cursor &cursor);
// Writes what the conversion of the C library still owes and returns it to its first state.
JXStatus flush_iconv(const Step &step, Cursor &cursor);
// Returns the conversion of the C library to its first state.
void reset_iconv(const Step &step);

// The positions of one call. A destination may claim more room than there are addresses.
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
