// A va_list for jxzFormatBuffV, built at run time.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "jx/runtime.h"
#include "support/text.hpp"

namespace jx::test {

// Of several types for one argument the highest counts.
enum Type { kNone = 0, kChar = 1, kInt, kLong, kLongLong = 5, kPointer, kDouble, kLongDouble };

enum Kind { kNumber, kWide, kBytes };

// A number has the same value in every type, except for the fraction of the floating types.
struct Argument {
  Kind kind = kNumber;
  Type type = kNone;  // the highest that a directive needs
  int64_t integer = 0;
  double floating = 0;
  std::string text = {};  // target of a pointer: has a zero, and more text after it
  JXString wide = {};     // the same in characters
};

// An argument list in memory: all of it on i386, elsewhere the part after the registers.
class ArgumentList {
 public:
  void add(const Argument &argument) {
    const void *pointer = argument.kind == kWide ? static_cast<const void *>(argument.wide.data())
                                                 : argument.text.data();
    if (argument.text.empty())
      pointer = reinterpret_cast<void *>(static_cast<intptr_t>(argument.integer));
    if (argument.type == kChar || argument.type == kInt) push(static_cast<int>(argument.integer));
    if (argument.type == kLong) push(static_cast<long>(argument.integer));
    if (argument.type == kLongLong) push(argument.integer);
    if (argument.type == kPointer) push(pointer);
    if (argument.type == kDouble) push(argument.floating);
    if (argument.type == kLongDouble) push(static_cast<long double>(argument.floating));
  }
  // Hands the list to a function.
  template <typename Call>
  auto with_list(Call call) {
#ifdef __x86_64__
    const struct {
      uint32_t used_integers = 48, used_floats = 304;  // bytes: every register is used up
      const void *memory, *registers;
    } state = {.memory = memory_, .registers = nullptr};
#elif defined(__aarch64__)
    const struct {
      const void *memory, *integers_end, *floats_end;
      int integers_left = 0, floats_left = 0;  // bytes, negated: every register is used up
    } state = {.memory = memory_, .integers_end = nullptr, .floats_end = nullptr};
#else
    const void *state = memory_;
#endif
    va_list list;
    static_assert(sizeof(list) == sizeof(state));
    std::memcpy(&list, &state, sizeof(list));
    return call(list);
  }

  JXStatus call(const JXString &format, JXChar *buffer, size_t capacity, uint32_t *length) {
    return with_list([&](va_list list) {
      return jxzFormatBuffV(nullptr, format.data(), static_cast<int32_t>(format.size()), buffer,
                            static_cast<int32_t>(capacity), length, list);
    });
  }
  // The same by the C library, with one character of room more than should be needed.
  std::string print(const std::string &format, size_t capacity) {
    std::string text(capacity + 2, '\0');
    const int length = with_list([&](va_list list) {
      return std::vsnprintf(text.data(), text.size(), format.c_str(), list);
    });
    return text.substr(0, static_cast<size_t>(std::max(length, 0)));
  }

 private:
  template <typename T>
  void push(T value) {
    constexpr size_t kAlignment = std::max(alignof(T), sizeof(void *));
    size_ = (size_ + kAlignment - 1) / kAlignment * kAlignment;
    std::memcpy(memory_ + size_, &value, sizeof(value));
    size_ += sizeof(value);
  }
  alignas(16) uint8_t memory_[1024] = {};
  size_t size_ = 0;
};

}  // namespace jx::test
