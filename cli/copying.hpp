// Copying a byte stream into a file in another encoding, without touching its line structure.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/fault.hpp"
#include "cli/filter.hpp"
#include "cli/target.hpp"

namespace cli {

// The bytes of a file opened with direct transfer, chunk by chunk.
class ByteReader {
 public:
  // The first chunk has first_bytes or more, as far as chunks are that long and the file is.
  ByteReader(wem::File &file, std::string shown, size_t chunk_bytes, size_t first_bytes = 1)
      : file_(file),
        shown_(std::move(shown)),
        chunk_bytes_(chunk_bytes),
        first_bytes_(std::min(first_bytes, chunk_bytes)) {}

  // The next bytes, valid until the next call. Empty at the end.
  std::string_view next();
  // Whether the end was seen.
  bool is_at_end() const { return is_at_end_; }

 private:
  wem::File &file_;
  std::string shown_;
  size_t chunk_bytes_;
  size_t first_bytes_;
  // Not cleared: of a large one for a small file most pages stay untouched.
  std::unique_ptr<std::byte[]> buffer_ = std::make_unique_for_overwrite<std::byte[]>(chunk_bytes_);
  bool is_first_ = true;
  bool is_at_end_ = false;
};

// Writes text bytes to a target; the module converts them. It holds the start of a character that
// a chunk cuts off, so chunks may end anywhere.
class StreamWriter {
 public:
  // check_offset: check the bytes, of which the first has this offset in its source, line by line
  // before they are written; what comes before a line with a fault is then written, nothing after.
  // filter: converts instead of the module, or null; lives longer. has_new_ends: it gives the
  // lines another end.
  StreamWriter(Session &session, Target &target, uint32_t from, uint32_t to,
               std::optional<uint64_t> check_offset, Filter *filter = nullptr,
               bool has_new_ends = false);

  // Opens the target with options that say how, but not in what format. Chunks are at most
  // chunk_bytes long.
  wem::File &open(const wem::OpenOptions &options, uint32_t chunk_bytes);
  // Writes a chunk. The status of the module; a Failure under source's name for a fault that the
  // check found.
  wem::Status write(std::string_view chunk, const std::string &source);
  // Takes note of the end: what was still held back is checked and written.
  wem::Status finish(const std::string &source);

 private:
  wem::Status write_held(size_t count);
  wem::Status put(std::string_view bytes);
  Filter::Sink sink(wem::Status *status_out);

  Target &target_;
  uint32_t from_;
  uint32_t to_;
  Filter *filter_;
  wem::File *file_ = nullptr;
  std::optional<FaultFinder> finder_;
  std::string held_;      // lines not checked to their end
  uint64_t held_offset_;  // in the source
  uint32_t chunk_bytes_ = 0;
};

}  // namespace cli
