// How "convert" converts: one file, many, or standard input.
#pragma once

#include "cli/arguments.hpp"
#include "cli/input.hpp"
#include "cli/record_form.hpp"
#include "cli/text_changes.hpp"

namespace cli {

class Session;

struct Conversion {
  Encoding from;  // not named: by the byte-order mark
  uint32_t to = 0;
  uint32_t record_length = 0;
  bool wants_mark = false;    // --bom, or an encoding that begins with one
  bool refuses_mark = false;  // --no-bom
  bool is_append = false;
  TextChanges changes;
  RecordForms forms;

  // The encoding of an input that begins with head, which is all of it when is_whole; and the size
  // of the byte-order mark there. In records the same bytes are data.
  uint32_t encoding_of(Input &input, std::string_view head, bool is_whole) const {
    return forms.in.is_lines() ? input.encoding_of_bytes(from, head, is_whole)
                               : input.encoding_of_records(from, head, is_whole);
  }
  size_t mark_bytes(std::string_view head, uint32_t encoding) const {
    return forms.in.is_lines() ? byte_order_mark_size(head, encoding) : 0;
  }
  // Whether the output begins with a byte-order mark.
  bool has_mark(bool input_has_mark) const {
    return (wants_mark || input_has_mark) && !refuses_mark;
  }
};

// Converts files in place or into a folder. The exit code.
int convert_many(Session &session, const Arguments &arguments, Conversion conversion);

}  // namespace cli
