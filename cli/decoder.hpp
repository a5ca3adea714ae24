// Bytes into characters, also those that are no text.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/fault_tally.hpp"
#include "cli/session.hpp"

namespace cli {

// Decodes a text chunk by chunk; chunks may end inside a character. Bytes that are no text are
// replaced by a substitute, skipped or escaped as \x{ff}, one after the other. So that what was
// escaped can be told from text that looks the same, the brace of \x{ and \u{ in the text is
// escaped too, as \u{7b}.
class Decoder {
 public:
  // Gives the offset that messages tell for that of a byte; empty: the same.
  using OffsetMap = std::function<uint64_t(uint64_t)>;

  // The first byte is at offset. on_fault: kStop answers a status instead. substitute: for bytes
  // that are no text. tally lives longer.
  Decoder(Session &session, uint32_t from, uint64_t offset, OnFault on_fault,
          std::u32string substitute, OffsetMap map, FaultTally &tally);

  // Appends the characters of the next bytes to text. A status of the host when it is to stop.
  wem::Status feed(std::string_view bytes, std::u32string &text);
  // Appends what becomes of bytes that are no text by a rule of the caller's, at an offset that
  // needs no map. Not when it is to stop.
  void refuse_bytes(const std::string &bad, uint64_t offset, std::u32string &text);
  // Appends what becomes of a character that the end of the text cuts off.
  wem::Status finish(std::u32string &text);

 private:
  static constexpr size_t kSliceBytes = 16384;  // decoded in one go, with the result in the caches
  static constexpr size_t kCharsPerByte = 3;    // the most that come out

  bool convert(std::string_view bytes);
  bool accept(std::string_view bytes, std::u32string &text);
  size_t take_good(std::u32string &text);
  void note_text(size_t bytes, size_t start, std::u32string &text);
  void recover();
  size_t refuse(char byte, std::u32string &text);
  void put_fault(const std::string &bad, uint64_t offset, std::u32string &text) {
    refuse_bytes(bad, map_ ? map_(offset) : offset, text);
  }
  void protect(size_t start, std::u32string &text);
  void keep_replay();

  OnFault on_fault_;
  std::u32string substitute_;
  OffsetMap map_;
  FaultTally &tally_;
  std::string line_end_;  // its size is that of a unit
  bool is_unicode_;       // the encoding is a form of Unicode
  size_t longest_ = 1;    // character, in bytes
  bool is_bulk_ = false;  // the last conversion: of more than a byte
  std::optional<Transcoder> transcoder_;
  std::unique_ptr<char32_t[]> room_;
  size_t produced_chars_ = 0;  // by the last conversion
  wem::Status status_;         // of the last conversion
  // The bytes that bring a fresh transcoder where this one is: since the last line end where there
  // may be shifts, and the start of a character, which are the last held_bytes_ of them.
  std::string replay_;
  size_t held_bytes_ = 0;
  uint64_t offset_;      // of the next byte
  uint64_t lines_ = 0;   // that ended
  std::u32string last_;  // up to two characters before the next
};

}  // namespace cli
