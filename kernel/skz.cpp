// sk*: memory and string primitives for bytes and 32-bit units. Copies take the source first.
#include <cstring>

#include "jx/runtime.h"
#include "kernel/copy.hpp"
#include "kernel/runs.hpp"
#include "kernel/string_length.hpp"
#include "kernel/text.hpp"

namespace {

// On i386 a call of memcpy moves the arguments, and it knows no vectors of 32 bytes.
[[maybe_unused]] constexpr uint32_t kLongCopyBytes = 4096;

// Out of line, as all that calls: short runs need no stack frame and no table of addresses.
[[gnu::noinline]] void copy_long(const void *source, void *destination, uint32_t count) {
  if constexpr (sizeof(void *) == 4) {
    if (count <= kLongCopyBytes) return jx::kLongRuns.copy_bytes(source, destination, count);
  }
  std::memcpy(destination, source, count);
}

[[gnu::noinline]] void *move_long(const void *source, void *destination, uint32_t count) {
  return std::memmove(destination, source, count);
}

}  // namespace

extern "C" {

// Not inlined into the copies below: that would split the routines.
[[gnu::noinline]] uint32_t skStrLen(const char *string) {
  return string ? jx::string_length(string) : 0;
}

[[gnu::noinline]] uint32_t skStrTLen(const JXChar *string) {
  return string ? jx::string_length(string) : 0;
}

void skStrCpy(const char *source, char *destination) {
  if (!destination) return;
  std::memcpy(destination, source ? source : "", skStrLen(source) + 1u);
}

void skStrTCpy(const JXChar *source, JXChar *destination) {
  if (!destination) return;
  const uint32_t chars = skStrTLen(source);
  if (chars != 0) std::memcpy(destination, source, size_t{chars} * jx::kJXCharBytes);
  destination[chars] = 0;
}

void skStrUp(char *buffer, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    const bool is_lower = buffer[i] >= 'a' && buffer[i] <= 'z';
    buffer[i] = static_cast<char>(buffer[i] - (is_lower ? 0x20 : 0));
  }
}

int32_t skMemNot(uint8_t value, const void *buffer, uint32_t count) {
  return jx::find_unit<uint8_t, false>(buffer, count, value) < 0;
}

int32_t skMemTNot(uint32_t value, const uint32_t *buffer, uint32_t count) {
  return jx::find_unit<uint32_t, false>(buffer, count, value) < 0;
}

void skMemSet(void *buffer, uint8_t value, uint32_t count) {
  if (count != 0) std::memset(buffer, value, count);
}

void skMemTSet(uint32_t *buffer, uint32_t value, uint32_t count) {
  jx::fill_chars(buffer, value, count);
}

int32_t skMemCmp(const void *first, const void *second, uint32_t count) {
  return jx::compare_units<uint8_t>(first, second, count);
}

int32_t skWMemCmp(const uint32_t *first, const uint32_t *second, uint32_t count) {
  return jx::compare_units<uint32_t>(first, second, count);
}

void skMemCpy(const void *source, void *destination, uint32_t count) {
  if (count > jx::kShortCopyBytes) return copy_long(source, destination, count);
  jx::copy_short(destination, source, count);
}

void *skMemSCpy(const void *source, void *destination, uint32_t count) {
  if (count > jx::kShortCopyBytes) return move_long(source, destination, count);
  jx::copy_short(destination, source, count);
  return destination;
}

void *skMemDup(const void *source, uint32_t count, JXPool *pool) {
  if (!pool || !source || count == 0) return nullptr;
  void *block = pool->pool_allocate(pool, count, 0);
  return block ? std::memcpy(block, source, count) : nullptr;
}

int32_t skMemScan(const void *buffer, uint32_t count, uint8_t value) {
  return buffer ? jx::find_unit<uint8_t, true>(buffer, count, value) : -1;
}

int32_t skMemNScan(const void *buffer, uint32_t count, uint8_t value) {
  return buffer ? jx::find_unit<uint8_t, false>(buffer, count, value) : -1;
}

int32_t skMemTNScan(const uint32_t *buffer, uint32_t count, uint32_t value) {
  return buffer ? jx::find_unit<uint32_t, false>(buffer, count, value) : -1;
}

int32_t skMissArray(const void *array, uint32_t count) {
  const auto *element = static_cast<const uint8_t *>(array);
  for (uint32_t i = 0; i < count; ++i, element += sizeof(double)) {
    if (element[6] == 0xFF && element[7] == 0xFF) return 1;
  }
  return 0;
}

JXStatus skUnsup() { return JX_E_UNSUPPORTED; }

}  // extern "C"
