// What the kernel tests share: test sizes, guarded output buffers and digits.
#pragma once

#include <algorithm>
#include <cstdint>
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
  // The characters before the first untouched one; one more after it spoils the text.
  std::string text() const {
    const auto end = std::find(cells_.begin(), cells_.end(), kUntouched);
    std::string text(static_cast<size_t>(end - cells_.begin()), 0);
    std::transform(cells_.begin(), end, text.begin(), as_byte);
    const bool is_clean = std::count(end, cells_.end(), kUntouched) == cells_.end() - end;
    return is_clean ? text : text + " and more";
  }

 private:
  std::vector<JXChar> cells_;
};

}  // namespace jx_test
