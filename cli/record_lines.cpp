// The command "lines" for records of one length and after their length.
#include "cli/record_lines.hpp"

#include <algorithm>

#include "cli/copying.hpp"
#include "cli/input.hpp"
#include "cli/line_number.hpp"
#include "cli/record_filter.hpp"
#include "cli/short_copy.hpp"
#include "cli/watch.hpp"

namespace cli {
namespace {

constexpr uint32_t kChunkBytes = 65536;

class RecordPrinter {
 public:
  // first: the number of the record that comes first.
  RecordPrinter(Session &session, const Arguments &arguments, LineRange range, uint64_t first,
                const std::string &shown)
      : output_(session.output()),
        range_(range),
        is_json_(arguments.has("--json")),
        is_numbered_(arguments.has("--number")),
        number_(first) {
    row_start_.add_name("file", shown);
  }

  // Whether the range is printed.
  bool is_done() const { return number_.value() > range_.last; }

  // Takes whole lines in UTF-8.
  void print(std::string_view lines) {
    if (!is_json_ && !is_numbered_ && range_.is_all()) {
      output_ << lines;
      return;
    }
    while (!lines.empty() && !is_done()) {
      const std::string_view line = lines.substr(0, lines.find('\n'));
      if (number_.value() >= range_.first) print_line(line);
      ++number_;
      lines.remove_prefix(line.size() + 1);
    }
  }

 private:
  void print_line(std::string_view line) {
    if (is_json_) {
      Row row = row_start_;
      const auto chars = static_cast<uint64_t>(std::ranges::count_if(
          line, [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0) != 0x80; }));
      row.add("line", number_.value()).add("text", line).add("length", chars);
      output_ << row.add("partial", false);
      return;
    }
    const std::span<char> room = output_.reserve(LineNumber::kRoom + line.size() + 1);
    char *to = is_numbered_ ? number_.copy_to(room.data()) : room.data();
    copy_line(to, line);
    to += line.size();
    *to++ = '\n';
    output_.commit(static_cast<size_t>(to - room.data()));
  }

  Output &output_;
  LineRange range_;
  Row row_start_;
  bool is_json_;
  bool is_numbered_;
  LineNumber number_;
};

}  // namespace

void print_record_lines(Session &session, const Arguments &arguments, const RecordForms &forms,
                        LineRange range, const std::string &name) {
  const Encoding asked = arguments.encoding("--from");
  Input input(session, name, Input::Use::kBytes);
  input.refuse_standard_output();
  wem::File source =
      input.open(wem::OpenOptions::input().binary(kChunkBytes).direct().direct_transfer());
  const uint64_t offset = skip_records(input, source, forms.in, range);
  const size_t first_bytes = asked.is_auto ? input.head_bytes(asked) : 1;
  ByteReader reader(source, input.shown(), kChunkBytes, first_bytes);
  std::string_view chunk = reader.next();
  const uint32_t from = input.encoding_of_records(asked, chunk, reader.is_at_end());
  RecordFilter filter(session, from, JX_ENCODING_UTF8, {}, forms);
  filter.begin(input.shown(), offset);
  const uint64_t first = forms.in.framing == Framing::kFixed ? offset / forms.in.length + 1 : 1;
  RecordPrinter printer(session, arguments, range, first, input.shown());
  const Filter::Sink sink = [&printer](std::string_view lines) { printer.print(lines); };
  const Watch watch(unless_shown(input.size()), [&input] { return input.bytes_done(); });
  for (;; chunk = reader.next()) {
    require(filter.feed(chunk, sink), input.shown());
    if (printer.is_done()) return;
    if (reader.is_at_end()) break;
    if (input.is_waiting()) session.output().flush();
  }
  require(filter.finish(sink), input.shown());
}

}  // namespace cli
