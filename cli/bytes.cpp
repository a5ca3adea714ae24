// The commands "bytes" and "truncate": files as bytes.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

#include "cli/commands.hpp"
#include "cli/copying.hpp"
#include "cli/input.hpp"
#include "cli/line_range.hpp"
#include "cli/record_splitter.hpp"
#include "cli/watch.hpp"

namespace cli {
namespace {

constexpr uint64_t kFurthest = std::numeric_limits<int64_t>::max();
constexpr size_t kBytesPerRow = 16;

constexpr size_t kOffsetDigits = 8;  // at least
constexpr size_t kCellBytes = 3;     // " ff"
constexpr size_t kHexBytes = kBytesPerRow * kCellBytes + 1;
constexpr size_t kLongestRow = 16 + 1 + kHexBytes + 3 + kBytesPerRow + 2;

// How a byte is shown: its cell, filled up to four bytes for a store of one word, and its
// character.
constexpr auto kCells = [] {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<std::array<char, 4>, 256> cells = {};
  for (size_t byte = 0; byte < cells.size(); ++byte) {
    cells[byte] = {' ', kDigits[byte >> 4], kDigits[byte & 15], ' '};
  }
  return cells;
}();
constexpr auto kCharacters = [] {
  std::array<char, 256> characters = {};
  for (size_t byte = 0; byte < characters.size(); ++byte) {
    characters[byte] = byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '.';
  }
  return characters;
}();

// Lays out the offset of a row and returns where the cells begin.
char *lay_out_offset(char *to, uint64_t offset) {
  std::array<char, 16> digits;
  const auto end = std::to_chars(digits.begin(), digits.end(), offset, 16).ptr;
  const auto count = static_cast<size_t>(end - digits.data());
  const size_t zeros = kOffsetDigits - std::min(count, kOffsetDigits);
  to = std::fill_n(to, zeros, '0');
  to = std::copy_n(digits.data(), count, to);
  *to++ = ' ';
  return to;
}

// Lays out a row of up to kBytesPerRow bytes in kLongestRow and returns its end.
char *lay_out_row(char *to, uint64_t offset, std::string_view bytes) {
  constexpr size_t kHalf = kBytesPerRow / 2;
  to = lay_out_offset(to, offset);
  char *characters = to + kHexBytes + 3;
  if (bytes.size() < kBytesPerRow) std::fill(to, characters, ' ');
  to[kHalf * kCellBytes] = ' ';
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    std::memcpy(to + i * kCellBytes + i / kHalf, kCells[byte].data(), kCells[byte].size());
    characters[i] = kCharacters[byte];
  }
  std::string_view("  |").copy(to + kHexBytes, 3);
  return characters + bytes.size() + std::string_view("|\n").copy(characters + bytes.size(), 2);
}

class BytePrinter {
 public:
  BytePrinter(Session &session, const Arguments &arguments)
      : output_(session.output()),
        is_raw_(arguments.has("--raw")),
        is_json_(arguments.has("--json")) {}

  void print(uint64_t offset, std::string_view record) {
    if (is_raw_) {
      output_ << record;
    } else if (is_json_) {
      print_row({}, offset, record);
    } else {
      dump(offset, record);
    }
  }

  // Prints a record of a file of records with its number.
  void print_record(uint64_t number, uint64_t offset, std::string_view record) {
    if (is_json_) {
      Row row;
      row.add("record", number);
      return print_row(std::move(row), offset, record);
    }
    if (!is_raw_) {
      output_ << "record " + std::to_string(number) + ": " + std::to_string(record.size()) +
                     (record.size() == 1 ? " byte\n" : " bytes\n");
    }
    print(offset, record);
  }

 private:
  void print_row(Row row, uint64_t offset, std::string_view record) {
    row.add("offset", offset).add("length", uint64_t{record.size()});
    output_ << row.add("hex", to_hex(record, ""));
  }

  void dump(uint64_t offset, std::string_view record) {
    for (size_t at = 0; at < record.size(); at += kBytesPerRow) {
      char *const row = output_.reserve(kLongestRow).data();
      const char *end = lay_out_row(row, offset + at, record.substr(at, kBytesPerRow));
      output_.commit(static_cast<size_t>(end - row));
    }
  }

  Output &output_;
  bool is_raw_;
  bool is_json_;
};

// Passes over bytes; by reading them where there is no position to move.
void skip(Input &input, wem::File &file, uint64_t count) {
  if (input.is_seekable()) {
    require(file.point(static_cast<int64_t>(count), JX_POINT_RELATIVE), input.shown());
    return;
  }
  while (count > 0) {
    const uint64_t length = file.attributes().record_length;
    const auto record = file.read(static_cast<uint32_t>(std::min(length, count)));
    if (record.status() == JXWEM_E_EOF) return;
    count -= require(record, input.shown()).bytes.size();
  }
}

// Prints records; a last one that is shorter than the others as it is.
int print_records(Session &session, const Arguments &arguments, const RecordForm &form) {
  constexpr uint32_t kChunkBytes = 65536;
  const LineRange range = line_range(arguments);
  Input input(session, arguments.operand(0), Input::Use::kBytes);
  input.refuse_standard_output();
  wem::File file =
      input.open(wem::OpenOptions::input().binary(kChunkBytes).direct().direct_transfer());
  RecordSplitter splitter(form, input.shown(), skip_records(input, file, form, range));
  ByteReader reader(file, input.shown(), kChunkBytes);
  BytePrinter printer(session, arguments);
  const auto print = [&](std::string_view record, uint64_t offset) {
    const uint64_t number = splitter.count() + 1;
    const bool is_wanted = number >= range.first && number <= range.last;
    if (is_wanted) printer.print_record(number, offset, record);
  };
  const Watch watch(unless_shown(input.size()), [&input] { return input.bytes_done(); });
  while (!reader.is_at_end()) {
    splitter.feed(reader.next(), print);
    if (splitter.count() >= range.last) return 0;
    if (input.is_waiting()) session.output().flush();
  }
  splitter.finish(ShortRecord::kKeep, print);
  return 0;
}

// A UsageError for options that cannot be given together.
void refuse_contradictions(const Arguments &arguments, bool is_of_records) {
  if (arguments.has("--raw") && arguments.has("--json")) {
    throw UsageError("--raw and --json cannot be given together");
  }
  for (const char *option : {"--offset", "--count", "--record-length"}) {
    if (is_of_records && arguments.has(option)) {
      throw UsageError(std::string(option) + " cannot be given with --records; --range can");
    }
  }
  if (!is_of_records && arguments.has("--range")) {
    throw UsageError("--range needs --records; --offset and --count go by bytes");
  }
}

}  // namespace

int run_bytes(Session &session, const Arguments &arguments) {
  const RecordForm form = record_form(arguments, "--records", "binary");
  refuse_contradictions(arguments, !form.is_lines());
  if (!form.is_lines()) return print_records(session, arguments, form);
  const uint32_t length = arguments.record_length(JX_RECORD_BLOCK_BYTES, 1);
  uint64_t offset = arguments.number("--offset", 0, 0, kFurthest);
  uint64_t left = arguments.number("--count", kFurthest, 0, kFurthest);
  Input input(session, arguments.operand(0), Input::Use::kBytes);
  input.refuse_standard_output();
  wem::File file = input.open(wem::OpenOptions::input().binary(length).direct());
  if (offset > 0) skip(input, file, offset);
  BytePrinter printer(session, arguments);
  const uint64_t start = input.bytes_done();
  const Watch watch(unless_shown(std::min(input.size() - std::min(input.size(), start), left)),
                    [&input, start] { return input.bytes_done() - start; });
  while (left > 0) {
    if (input.is_waiting()) session.output().flush();
    const auto record = file.read(static_cast<uint32_t>(std::min<uint64_t>(length, left)));
    if (record.status() == JXWEM_E_EOF) break;
    if (!record) throw Failure(input.shown(), record.status());
    const size_t bytes = record->bytes.size();
    printer.print(offset, {reinterpret_cast<const char *>(record->bytes.data()), bytes});
    offset += bytes;
    left -= bytes;
  }
  return 0;
}

int run_truncate(Session &session, const Arguments &arguments) {
  const std::string &name = arguments.operand(0);
  const uint64_t length = parse_number("LENGTH", arguments.operand(1), 0, kFurthest);
  // An update would make a missing file.
  require(session.instance().exist(session.name(name)), name);
  wem::File file = session.open(name, wem::OpenOptions::update().binary(1));
  require(file.truncate(static_cast<int64_t>(length)), name);
  require(file.close(), name);
  return 0;
}

}  // namespace cli
