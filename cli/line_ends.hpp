// What ended each text record, which the module does not tell.
#pragma once

#include <string>

#include "cli/input.hpp"
#include "cli/session.hpp"

namespace cli {

// Reads a file a second time in step with its reader: as text without conversion, whose record
// lengths are the file's bytes, and as bytes, to look at what follows each record.
class LineEnds {
 public:
  // options are those of the reader. The input must be rereadable.
  LineEnds(Session &session, Input &input, const wem::OpenOptions &options, uint32_t encoding);

  // What ended the next record: "lf", "crlf", "part" for one that goes on in the next record, or
  // "none" at the end of the file.
  const char *next(bool is_partial);

 private:
  bool follows(const std::string &bytes);

  wem::File text_;
  wem::File bytes_;
  std::string line_feed_;
  std::string carriage_return_;
  std::string mark_;
  int64_t offset_ = 0;
};

}  // namespace cli
