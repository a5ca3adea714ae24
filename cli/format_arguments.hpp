// The arguments that a format takes, read from the command line.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "cli/session.hpp"

namespace cli {

// What an argument of a format is, in the order in which one that is used in several ways is taken.
enum class ArgumentKind { kNone, kChar, kInt, kLong, kLongLong, kPointer, kDouble, kLongDouble };

// What a format does with one argument.
struct ArgumentUse {
  ArgumentKind kind = ArgumentKind::kNone;
  bool is_text = false;      // kPointer: a string of characters
  bool is_bytes = false;     // kPointer: a string of bytes
  bool is_exact = false;     // a string of exactly as many units as the precision says
  uint32_t exact_units = 0;  // that precision
  int exact_argument = -1;   // or the index of the argument that holds it
};

// The arguments of a format in the order in which they lie in the argument list.
struct FormatUses {
  std::vector<ArgumentUse> arguments;
  // The formatting engine refuses the format; the arguments do not matter then.
  bool is_refused = false;
};

// Reads the directives of a format. A UsageError for one whose result would be undefined: one that
// mixes numbered and other directives, or uses one argument both as a string and otherwise.
FormatUses read_format(std::u32string_view format);

// An argument list made at run time. The two binary interfaces lay a list that is not in registers
// out as a block of memory, which is built here.
class ArgumentList {
 public:
  // Reads each argument as the format uses it. A UsageError for one that is missing, too many or
  // not what its directive takes.
  ArgumentList(Session &session, const FormatUses &uses, const std::vector<std::string> &texts);

  // Calls function with the list. The list is fresh for each call.
  template <typename Function>
  auto call(Function function) const {
    va_list list;
    point_to_block(list);
    return function(list);
  }

 private:
  void add(Session &session, const ArgumentUse &use, const std::string &text,
           const std::string &shown);
  void add_string(Session &session, const ArgumentUse &use, const std::string &text,
                  const std::string &shown);
  void append(const void *value, size_t bytes, size_t slot_bytes);
  void point_to_block(va_list &list) const;

  std::vector<unsigned char> block_;
  std::deque<std::u32string> texts_;  // what the pointers point to
  std::deque<std::string> byte_texts_;
  std::vector<int64_t> integers_;  // the integer arguments, for precisions
};

}  // namespace cli
