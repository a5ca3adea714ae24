// Text from one encoding into another, chunk by chunk.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/decoder.hpp"
#include "cli/encoder.hpp"
#include "cli/filter.hpp"
#include "cli/line_end_filter.hpp"
#include "cli/session.hpp"

namespace cli {

// Converts a text, whose chunks may end inside a character: by one transcoder, with line ends
// changed in the bytes that come out of it, or through characters where that cannot be done.
class TextFilter final : public Filter {
 public:
  TextFilter(Session &session, uint32_t from, uint32_t to, const TextChanges &changes);

  void begin(const std::string &shown, uint64_t offset) override { begin(shown, offset, {}); }
  // map: gives the offset that messages tell for that of a byte.
  void begin(const std::string &shown, uint64_t offset, Decoder::OffsetMap map);
  wem::Status feed(std::string_view bytes, const Sink &sink) override;
  // Puts up with bytes at an offset in the file that are no text although the encoding has them;
  // between whole characters, where faults may be put up with.
  wem::Status refuse(const std::string &bad, uint64_t offset, const Sink &sink);
  // Malformed when the end cuts a character off.
  wem::Status finish(const Sink &sink) override;
  std::string tally_text() const override { return tally_.text(changes_.on_fault); }

 private:
  // What works on characters, for one text.
  struct Characters {
    Characters(Session &session, const TextFilter &filter, const std::string &shown,
               uint64_t offset, Decoder::OffsetMap map, FaultTally &tally)
        : encoder(session, filter.to_, filter.changes_, shown, tally),
          decoder(session, filter.from_, offset, filter.changes_.on_fault, encoder.substitute(),
                  std::move(map), tally),
          line_ends(filter.changes_, U'\n', U'\r', U"\u0085") {}
    Encoder encoder;
    Decoder decoder;
    LineEndFilter<char32_t> line_ends;
    uint64_t lines = 0;  // that ended
  };

  bool is_through_characters() const;
  wem::Status check(std::string_view bytes);
  void put_bytes(std::string_view bytes, const Sink &sink);
  wem::Status convert(std::string_view bytes);
  bool encode(std::u32string_view text, bool is_last);
  wem::Status put(std::u32string_view text, bool is_last, const Sink &sink);

  Session &session_;
  uint32_t from_;
  uint32_t to_;
  TextChanges changes_;
  FaultTally tally_;
  bool is_same_;              // UTF-8 both: bytes that are checked, not converted
  std::string line_end_;      // in the one encoding
  std::string line_end_out_;  // and in that of what the transcoder makes
  bool may_shift_;            // one may be in a state that outlasts a text
  std::optional<Transcoder> transcoder_;
  std::unique_ptr<char[]> room_;
  size_t room_bytes_ = 0;
  size_t produced_ = 0;                           // by the last conversion
  std::optional<LineEndFilter<char>> line_ends_;  // of what the transcoder makes
  std::string changed_bytes_;
  std::optional<Characters> characters_;
  std::u32string text_;     // a part of the text
  std::u32string changed_;  // with other line ends
};

}  // namespace cli
