// The command "lines": text records, printed.
#include <algorithm>

#include "cli/commands.hpp"
#include "cli/input.hpp"
#include "cli/line_number.hpp"
#include "cli/line_range.hpp"
#include "cli/many.hpp"
#include "cli/plain_lines.hpp"
#include "cli/record_lines.hpp"
#include "cli/session.hpp"
#include "cli/watch.hpp"

namespace cli {
namespace {

// How the records of one file are printed.
class LinePrinter {
 public:
  LinePrinter(Session &session, const Arguments &arguments, const std::string &shown)
      : session_(session),
        is_json_(arguments.has("--json")),
        is_marked_(arguments.has("--mark")),
        is_numbered_(arguments.has("--number")) {
    row_start_.add_name("file", shown);
  }

  // Whether print shows what ended a record.
  bool shows_ends() const { return is_marked_; }

  // end is what ended the record: "lf", "crlf", "part" or "none"; empty when that is not known. A
  // line end is then put off until it is.
  void print(const wem::Record &record, std::string_view end) {
    if (is_json_) return print_json(record, end);
    if (is_marked_) return print_marked(record, end);
    if (std::exchange(needs_line_end_, false)) session_.output() << "\n";
    if (is_numbered_ && !is_inside_line_) print_number();
    session_.print(record.text());
    needs_line_end_ = end.empty() && !record.partial;
    if (end == "lf" || end == "crlf") session_.output() << "\n";
    advance(record);
  }

  // Passes over a record.
  void skip(const wem::Record &record) { advance(record); }

  // has_line_end tells whether the last record had one in the file.
  void finish(bool has_line_end) {
    if (needs_line_end_ && has_line_end) session_.output() << "\n";
  }

  // The number of the line that comes next, or that the last record was a part of.
  uint64_t line() const { return number_.value(); }

 private:
  void advance(const wem::Record &record) {
    is_inside_line_ = record.partial;
    if (!record.partial) ++number_;
  }

  void print_number() { session_.output() << number_.text(); }

  void print_marked(const wem::Record &record, std::string_view end) {
    const std::string text = session_.to_utf8(record.text());
    if (is_numbered_) print_number();
    const std::string length = std::to_string(record.text().size());
    session_.output() << "[" + length + " " << end << "] " + text + "\n";
    advance(record);
  }

  void print_json(const wem::Record &record, std::string_view end) {
    Row row = row_start_;
    row.add("line", number_.value()).add("text", session_.to_utf8(record.text()));
    row.add("length", uint64_t{record.text().size()}).add("partial", record.partial);
    if (is_marked_) row.add("end", end);
    session_.output() << row;
    advance(record);
  }

  Session &session_;
  Row row_start_;
  bool is_json_;
  bool is_marked_;
  bool is_numbered_;
  bool is_inside_line_ = false;
  bool needs_line_end_ = false;
  LineNumber number_;
};

// A record that does not fit is split at a number of bytes: whole units of the encoding.
uint32_t record_length(const Arguments &arguments, uint32_t encoding) {
  const uint32_t asked = arguments.record_length(65536, 1);
  const bool is_wide = encoding >= JX_ENCODING_UTF16BE && encoding <= JX_ENCODING_UTF32LE;
  return is_wide ? (asked + 3) / 4 * 4 : asked;
}

// Prints the records of a range of lines; the status that ended the reading, 0 at the end of the
// range. What the module hands on unread, because it is in the encoding of records already, is
// found malformed when it is printed. What was printed is not held back while the next line is
// waited for.
wem::Status print_records(Session &session, Input &input, wem::File &file, LineRange range,
                          LinePrinter &printer) {
  const bool is_piped = !input.is_rereadable();
  const bool needs_ends = printer.shows_ends() || is_piped;
  wem::RecordRange records = file.records();
  try {
    for (const wem::Record &record : records) {
      const std::string_view end = needs_ends ? input.end_of(record) : "";
      if (printer.line() > range.last) return {};
      if (printer.line() < range.first) {
        printer.skip(record);
        continue;
      }
      printer.print(record, end);
      if (is_piped && input.is_waiting()) session.output().flush();
      if (needs_ends && printer.line() > range.last) return {};
    }
  } catch (const Failure &failure) {
    if (failure.status == JXHOST_E_MALFORMED) return failure.status;
    throw;
  }
  // A fault after the range is none of it.
  const bool is_past = records.status() != JXWEM_E_EOF && printer.line() > range.last;
  return is_past ? wem::Status() : records.status();
}

wem::Status print_records(wem::File &file, LineRange range, PlainLines &printer) {
  // Straight from the slot: a result is put together in memory and copied, which takes as long as
  // the read of a short line.
  JXFile *const raw = file.raw();
  uint64_t lines_before = range.first - 1;
  uint64_t lines_left = range.last - lines_before;
  for (;;) {
    void *data = nullptr;
    uint32_t length = raw->attributes.record_length;
    const JXStatus status = raw->read(raw, &data, &length, 0, nullptr);
    const bool is_partial = status == JXWEM_E_PARTIAL;
    const bool is_read = status == JX_OK || is_partial;
    if (is_read && lines_before != 0) [[unlikely]] {
      printer.skip(is_partial);
      lines_before -= !is_partial;
    } else if (is_read && lines_left != 0) {
      if (!printer.print({static_cast<const char *>(data), length}, is_partial)) {
        return wem::Status(JXHOST_E_MALFORMED);
      }
      lines_left -= !is_partial;
    } else {
      if (!printer.settle()) return wem::Status(JXHOST_E_MALFORMED);
      // A fault after the range is none of it.
      return lines_left == 0 && status != JXWEM_E_EOF ? wem::Status() : wem::Status(status);
    }
  }
}

// Prints the end of the text and throws the Failure that ended the reading.
template <typename Printer>
void finish_file(Session &session, Input &input, uint32_t encoding, wem::Status status,
                 Printer &printer) {
  if (status.ok()) return printer.finish(true);
  if (status != JXWEM_E_EOF) {
    printer.finish(true);
    if (const auto fault = input.find_fault(encoding, JX_ENCODING_UTF32LE)) {
      throw to_failure(input.shown(), *fault);
    }
    throw Failure(input.shown(), status, "record " + std::to_string(printer.line()));
  }
  input.require_complete();
  const bool has_line_end = input.ends_with(session.encode(U"\n", encoding));
  printer.finish(has_line_end);
  // The module holds back a character that the end of the file cuts off.
  if (has_line_end) return;
  if (const auto fault = input.find_cut_end(encoding, JX_ENCODING_UTF32LE)) {
    throw to_failure(input.shown(), *fault);
  }
}

// Whether the text goes out as it is in the file: only then is it not needed as JXChars.
bool is_plain(const Arguments &arguments, const Input &input, uint32_t encoding) {
  const bool is_as_it_is = !arguments.has("--json") && !arguments.has("--mark");
  return is_as_it_is && !arguments.has("--direct") && input.is_rereadable() &&
         encoding == JX_ENCODING_UTF8;
}

void print_file(Session &session, const Arguments &arguments, LineRange range,
                const std::string &name) {
  Input input(session, name, Input::Use::kLines);
  input.refuse_standard_output();
  const uint32_t encoding = input.encoding(arguments.encoding("--from"));
  auto options = wem::OpenOptions::input().text(record_length(arguments, encoding));
  options = options.file_encoding(encoding);
  if (arguments.has("--direct")) options = options.direct();

  const auto print_with = [&](auto &&printer, const wem::OpenOptions &opening, auto print) {
    wem::File file = input.open(opening, encoding);
    const wem::Status status = [&] {
      const Watch watch(unless_shown(input.size()), [&input] { return input.bytes_done(); });
      return print(file, printer);
    }();
    require(file.close(), input.shown());
    finish_file(session, input, encoding, status, printer);
  };
  if (is_plain(arguments, input, encoding)) {
    return print_with(
        PlainLines(session, arguments.has("--number")), options.record_encoding(JX_ENCODING_UTF8),
        [range](wem::File &file, PlainLines &lines) { return print_records(file, range, lines); });
  }
  print_with(LinePrinter(session, arguments, input.shown()), options,
             [&](wem::File &file, LinePrinter &lines) {
               return print_records(session, input, file, range, lines);
             });
}

}  // namespace

int run_lines(Session &session, const Arguments &arguments) {
  const LineRange range = line_range(arguments);
  const RecordForms forms = input_forms(arguments, "text");
  for (const char *option : {"--direct", "--mark", "--record-length"}) {
    if (!forms.in.is_lines() && arguments.has(option)) {
      throw UsageError(std::string(option) + " is for lines, not for --records");
    }
  }
  return for_each(session, arguments.operands(), [&](const std::string &name) {
    if (forms.in.is_lines()) return print_file(session, arguments, range, name);
    print_record_lines(session, arguments, forms, range, name);
  });
}

}  // namespace cli
