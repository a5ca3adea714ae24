// Where random tests take their choices from: a seed, or the bytes of a fuzzer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace jx::test {

class Choices {
 public:
  // The same choices for a seed everywhere.
  explicit Choices(uint64_t seed) : state_(seed) {}
  // Choices by the bytes, as few of them as each needs, so that a change of a byte is a change of a
  // choice; when they run out, some that their number makes.
  explicit Choices(std::span<const uint8_t> bytes) : bytes_(bytes), state_(bytes.size()) {}

  // A number below the limit, which is not 0.
  uint64_t below(uint64_t limit) { return next(limit - 1) % limit; }
  // A number of 64 bits.
  uint64_t word() { return next(UINT64_MAX); }

 private:
  uint64_t next(uint64_t most) {
    if (bytes_.empty()) return mixed();
    uint64_t number = 0;
    do {
      number = number << 8 | bytes_.front();
      bytes_ = bytes_.subspan(1);
      most >>= 8;
    } while (most != 0 && !bytes_.empty());
    return number;
  }

  // The SplitMix64 generator: a few instructions a number, where the standard engines cost more
  // than what the numbers are for.
  uint64_t mixed() {
    uint64_t z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return z ^ z >> 31;
  }

  std::span<const uint8_t> bytes_;
  uint64_t state_;
};

}  // namespace jx::test
