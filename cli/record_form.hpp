// How records lie in a file: as lines, of one length, or each after its length.
#pragma once

#include <cstdint>
#include <string>

#include "cli/arguments.hpp"

namespace cli {

enum class Framing {
  kLines,
  kFixed,     // one after another, all of the same length
  kRdw,       // after four bytes: a length that counts these, big-endian in two, and two zeros
  kBdw,       // the same, in blocks that begin alike
  kBig32,     // after a length in four bytes, big-endian
  kLittle32,  // and little-endian
};

struct RecordForm {
  Framing framing = Framing::kLines;
  uint32_t length = 0;  // in bytes, of kFixed
  bool is_lines() const { return framing == Framing::kLines; }
};

// What becomes of a last record that is shorter than the others.
enum class ShortRecord { kRefuse, kPad, kKeep };

struct RecordForms {
  RecordForm in;
  RecordForm out;
  bool strips_blanks = false;  // at the end of each record read
  ShortRecord short_last = ShortRecord::kRefuse;
  bool is_none() const { return in.is_lines() && out.is_lines(); }
};

inline constexpr size_t kHeaderBytes = 4;          // before a record or a block
inline constexpr size_t kLongestBlock = 32760;     // with its header; what other systems take
inline constexpr size_t kLongestRecord = 1 << 26;  // after a length of four bytes

// The form that an option names; lines when it is not given, or has one of the values in others,
// which have blanks between. A UsageError for anything else.
RecordForm record_form(const Arguments &arguments, const std::string &option,
                       const std::string &others);
// The form of the input with the values of --strip-blanks and --short-last. A UsageError when they
// are wrong or have no records to go with.
RecordForms input_forms(const Arguments &arguments, const std::string &others);

}  // namespace cli
