// Line ends in the bytes of a text: where they are, and which kind each line has, which the module
// does not tell.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

#include "cli/session.hpp"

namespace cli {

// Offset of the first line end at or after from, in bytes that begin with a whole unit of its size;
// npos when there is none. from is a multiple of that size.
size_t find_line_end(std::string_view bytes, size_t from, std::string_view line_end);
// Offset just after the last line end in such bytes; 0 when there is none.
size_t after_last_line_end(std::string_view bytes, std::string_view line_end);

// How many line ends are in such bytes.
size_t count_line_ends(std::string_view bytes, std::string_view line_end);

// Whether an encoding lacks the NEL that texts in another may have.
bool lacks_nel_of(Session &session, uint32_t other, uint32_t encoding);

// Watches the bytes of a text as they pass to its reader and keeps what ended each line until the
// reader comes to it. One thread may feed it while another takes.
class LineEnds {
 public:
  LineEnds(Session &session, uint32_t encoding);

  // Takes the next bytes. Called before the reader can see them, so that has_next never lags.
  void feed(std::string_view bytes);
  // Whether the end of a line has passed that was not asked for yet.
  bool has_next();
  // What ended the record that the reader gave: "lf", "crlf", "part" for one that goes on in the
  // next record, or "none" at the end of the text.
  const char *end_of(const wem::Record &record);

 private:
  std::string line_feed_;
  std::string carriage_return_;
  std::string rest_;   // the last unit fed, and the start of another
  std::string taken_;  // a mark for each line end, in order
  size_t taken_count_ = 0;
  bool is_inside_line_ = false;
  std::mutex mutex_;
  std::string found_;  // the marks that were not taken yet; guarded by the mutex
};

}  // namespace cli
