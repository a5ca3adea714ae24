// Finding text lines among bytes in hand.
#pragma once

#include "record/record.hpp"

namespace jx {

// What a search for a record found in a span of bytes.
struct Line {
  uint32_t record_bytes;    // without its line end
  uint32_t consumed_bytes;  // with it
};

// Finds the next record among the unread bytes, reading on while they do not decide it. 0,
// JXWEM_E_PARTIAL, or the failure of a host read.
JXStatus find_line(FileHandle *handle, Line *line);

// A direct read: the bytes in the record buffer and what of them the record takes.
struct DirectRead {
  uint32_t read_bytes;
  uint32_t bom_bytes;
  Line line;
};

// Finds the record in what one direct read brought; no other bytes decide it. 0 or JXWEM_E_PARTIAL.
JXStatus find_direct_line(const FileHandle *handle, DirectRead *read);

}  // namespace jx
