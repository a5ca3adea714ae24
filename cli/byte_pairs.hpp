// The pairs of bytes in a text: all that counts for how likely its letters are after one another.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace cli {

// How often each byte of some text comes after each.
class BytePairs {
 public:
  explicit BytePairs(std::string_view bytes) : counts_(65536) {
    for (size_t i = 0; i < bytes.size(); ++i) {
      is_used_[byte_at(bytes, i)] = true;
      if (i == 0) continue;
      ++counts_[byte_at(bytes, i - 1) * 256u + byte_at(bytes, i)];
      high_pairs_ += ((bytes[i - 1] | bytes[i]) & 0x80) != 0 ? 1 : 0;
    }
    for (uint32_t pair = 0; pair < counts_.size(); ++pair) {
      if (counts_[pair] > 0) found_.push_back(static_cast<uint16_t>(pair));
    }
  }
  bool is_used(size_t byte) const { return is_used_[byte]; }
  // How many pairs there are with a byte beyond ASCII.
  float high_pairs() const { return static_cast<float>(high_pairs_); }
  // Calls with both bytes and their count for each pair that is there.
  template <typename Take>
  void each(Take take) const {
    for (const uint16_t pair : found_) {
      take(pair / 256u, pair % 256u, static_cast<float>(counts_[pair]));
    }
  }

 private:
  static uint8_t byte_at(std::string_view bytes, size_t at) {
    return static_cast<uint8_t>(bytes[at]);
  }

  std::vector<uint32_t> counts_;
  std::vector<uint16_t> found_;
  std::array<bool, 256> is_used_ = {};
  size_t high_pairs_ = 0;
};

}  // namespace cli
