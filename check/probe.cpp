// What checks work with: memory with fences, and the report of one outcome.
#include "check/probe.hpp"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

namespace jxcheck {

namespace {

constexpr uint32_t kPageBytes = 65536;  // a multiple of the page of every supported machine
constexpr uint32_t kStrideBytes = Memory::kAreaBytes + kPageBytes;
constexpr uint32_t kTotalBytes = kPageBytes + Memory::kAreaCount * kStrideBytes;
static_assert(sizeof(Outcome) <= kPageBytes);

}  // namespace

Memory::~Memory() {
  if (base_) ::munmap(base_, kTotalBytes);
}

bool Memory::allocate() {
  void *memory =
      ::mmap(nullptr, kTotalBytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return false;
  base_ = static_cast<uint8_t *>(memory);
  for (uint32_t area = 0; area < kAreaCount; ++area) {
    if (::mprotect(end_of(static_cast<Area>(area)), kPageBytes, PROT_NONE) != 0) return false;
  }
  return true;
}

uint8_t *Memory::end_of(Area area) const {
  return base_ + kPageBytes + area * kStrideBytes + kAreaBytes;
}

uint32_t Room::spilled_bytes() const {
  uint32_t count = 0;
  for (uint32_t i = 0; i < kMarginBytes; ++i) count += data[bytes + i] != kFill;
  return count;
}

void Probe::report(uint32_t outcome, const char *format, va_list args) {
  Outcome &out = *memory_.outcome();
  if (out.outcome != JXCHECK_PASSED) return;
  ::vsnprintf(out.came, sizeof out.came, format, args);
  out.outcome = outcome;
}

void Probe::found(const char *format, ...) {
  va_list args;
  va_start(args, format);
  report(JXCHECK_FINDING, format, args);
  va_end(args);
}

void Probe::skip(const char *format, ...) {
  va_list args;
  va_start(args, format);
  report(JXCHECK_SKIPPED, format, args);
  va_end(args);
}

bool Probe::expect_status(const char *what, JXStatus came, JXStatus due) {
  if (came != due) found("%s: status 0x%x, not 0x%x", what, came, due);
  return came == due;
}

bool Probe::expect_failure(const char *what, JXStatus came) {
  if (came == JX_OK) found("%s: status 0", what);
  return came != JX_OK;
}

const uint8_t *Probe::text(const void *bytes, uint32_t count) const {
  uint8_t *copy = memory_.end_of(Memory::kText) - count;
  if (count != 0) ::memcpy(copy, bytes, count);
  return copy;
}

Probe::Name Probe::name(const char *ascii) const {
  const auto count = static_cast<uint32_t>(::strlen(ascii));
  auto *chars = reinterpret_cast<JXChar *>(memory_.end_of(Memory::kName)) - count;
  for (uint32_t i = 0; i < count; ++i) chars[i] = static_cast<unsigned char>(ascii[i]);
  return {chars, count};
}

Room Probe::room(uint32_t bytes) const {
  uint8_t *start = memory_.end_of(Memory::kOutput) - Room::kMarginBytes - bytes;
  ::memset(start, Room::kFill, bytes + Room::kMarginBytes);
  return {start, bytes};
}

}  // namespace jxcheck
