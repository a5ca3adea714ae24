// The operations on blocks of 16 bytes in plain C++, for any processor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace jx::vector {

struct Plain {
  struct Block {
    uint8_t bytes[16];
  };
  using Mask = uint32_t;  // a bit for each byte of a block
  static constexpr size_t kBytes = sizeof(Block);
  static constexpr Mask kAll = 0xFFFF;

  static Block load(const void *from) {
    Block block;
    std::memcpy(&block, from, sizeof block);
    return block;
  }
  static void store(void *to, const Block &block) { std::memcpy(to, &block, sizeof block); }
  template <typename Word>
  static Block load_pair(const void *first, const void *second) {
    Block block = {};
    std::memcpy(block.bytes, first, sizeof(Word));
    std::memcpy(block.bytes + sizeof(Word), second, sizeof(Word));
    return block;
  }

  template <typename T>
  static Block repeat(T value) {
    Block block;
    for (size_t at = 0; at < kBytes; at += sizeof(T)) {
      std::memcpy(block.bytes + at, &value, sizeof value);
    }
    return block;
  }
  template <typename T>
  static Block equal(const Block &a, const Block &b) {
    Block block;
    for (size_t at = 0; at < kBytes; at += sizeof(T)) {
      const bool same = std::memcmp(a.bytes + at, b.bytes + at, sizeof(T)) == 0;
      std::memset(block.bytes + at, same ? 0xFF : 0, sizeof(T));
    }
    return block;
  }
  static Block both(const Block &a, const Block &b) {
    Block block;
    for (size_t at = 0; at < kBytes; ++at) {
      block.bytes[at] = static_cast<uint8_t>(a.bytes[at] & b.bytes[at]);
    }
    return block;
  }
  static Block either(const Block &a, const Block &b) {
    Block block;
    for (size_t at = 0; at < kBytes; ++at) {
      block.bytes[at] = static_cast<uint8_t>(a.bytes[at] | b.bytes[at]);
    }
    return block;
  }

  static Mask mask(const Block &block) {
    Mask mask = 0;
    for (size_t at = 0; at < kBytes; ++at) {
      mask |= static_cast<Mask>(block.bytes[at] >> 7) << at;
    }
    return mask;
  }
};

}  // namespace jx::vector
