// What the kernel tests share: test sizes, guarded output buffers and digits.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "jx/runtime.h"
#include "support/scale.hpp"
#include "support/text.hpp"

namespace jx_test {

using jx::test::scaled;

// One byte for every character, so that lengths stay what they are.
inline char as_byte(JXChar character) {
  return character < 0x100 ? static_cast<char>(character) : '?';
}

inline std::string digits_in_base(uint64_t value, uint32_t base, bool uppercase) {
  const std::string_view table = uppercase ? "0123456789ABCDEF" : "0123456789abcdef";
  std::string text;
  do {
    text.push_back(table[static_cast<size_t>(value % base)]);
    value /= base;
  } while (value != 0);
  return {text.rbegin(), text.rend()};
}

// An output buffer whose unwritten characters can be told from written ones.
class GuardedBuffer {
 public:
  static constexpr JXChar kUntouched = 0xDEADBEEF;
  explicit GuardedBuffer(size_t chars) : cells_(chars + 8, kUntouched) {}
  JXChar *data() { return cells_.data(); }
  // The characters before the first untouched one. Sets *is_clean to whether all after are, too.
  std::string text(bool *is_clean) const {
    size_t chars = 0;
    while (chars < cells_.size() && cells_[chars] != kUntouched) ++chars;
    *is_clean = true;
    for (size_t i = chars; i < cells_.size(); ++i) *is_clean &= cells_[i] == kUntouched;
    std::string text;
    for (size_t i = 0; i < chars; ++i) text.push_back(as_byte(cells_[i]));
    return text;
  }

 private:
  std::vector<JXChar> cells_;
};

}  // namespace jx_test
