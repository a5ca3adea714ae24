// The command "convert": a text file in another encoding.
#include <memory>
#include <optional>

#include "cli/commands.hpp"
#include "cli/conversion.hpp"
#include "cli/copying.hpp"
#include "cli/input.hpp"
#include "cli/progress.hpp"
#include "cli/record_filter.hpp"
#include "cli/target.hpp"

namespace cli {
namespace {

// A UsageError for options that have no meaning where there are records.
void refuse_in_records(const Arguments &arguments, const Conversion &conversion) {
  const RecordForms &forms = conversion.forms;
  const LineEnd line_end = conversion.changes.line_end;
  if (forms.out.is_lines()) return;
  if (arguments.has("--bom")) throw UsageError("--bom: records begin without a mark");
  if (line_end == LineEnd::kKeep) return;
  if (!forms.in.is_lines()) throw UsageError("--eol: there are no lines between records");
  if (line_end != LineEnd::kLf) {
    throw UsageError(
        "--eol with --to-records is keep or lf, which ends a record at CR and NEL too");
  }
}

Conversion conversion_of(const Arguments &arguments) {
  Conversion conversion = {};
  conversion.from = arguments.encoding("--from");
  conversion.record_length = arguments.record_length(65536, 4);
  conversion.wants_mark = arguments.has("--bom") || arguments.encoding("--to").follows_mark();
  conversion.refuses_mark = arguments.has("--no-bom");
  conversion.is_append = arguments.has("--append");
  conversion.changes = text_changes(arguments);
  conversion.forms = input_forms(arguments, "stream text");
  conversion.forms.out = record_form(arguments, "--to-records", "lines");
  if (conversion.changes.transliterates) use_locale();
  if (arguments.has("--bom") && conversion.refuses_mark) {
    throw UsageError("--bom and --no-bom cannot be given together");
  }
  refuse_in_records(arguments, conversion);
  if (!conversion.forms.out.is_lines()) conversion.refuses_mark = true;
  return conversion;
}

wem::OpenOptions with_mark(const wem::OpenOptions &options, const Conversion &conversion,
                           bool input_has_mark) {
  return conversion.has_mark(input_has_mark) ? options.byte_order_mark()
                                             : options.no_byte_order_mark();
}

bool is_text_fault(wem::Status status) {
  return status == JXHOST_E_MALFORMED || status == JXHOST_E_UNMAPPABLE;
}

// What ended a conversion: a fault of the text is one of the input, anything else the target's.
[[noreturn]] void fail(Input &input, const Target &target, const Conversion &conversion,
                       uint32_t from, wem::Status status, const std::string &detail = {}) {
  if (!is_text_fault(status)) target.require_written(status);
  const bool has_new_ends = conversion.changes.line_end != LineEnd::kKeep;
  if (const auto fault = input.find_fault(from, conversion.to, has_new_ends)) {
    throw to_failure(input.shown(), *fault);
  }
  throw Failure(input.shown(), status, detail);
}

// Everything as it is, but for what is asked: bytes in, one conversion, bytes out. Returns what was
// put up with.
std::string convert_stream(Session &session, const Conversion &conversion, Input &input,
                           Target &target) {
  const uint32_t room = conversion.record_length;
  wem::File source = input.open(wem::OpenOptions::input().binary(room).direct().direct_transfer());
  ByteReader reader(source, input.shown(), room, input.head_bytes(conversion.from));
  const std::string_view head = reader.next();
  const uint32_t from = conversion.encoding_of(input, head, reader.is_at_end());
  const size_t mark_bytes = conversion.mark_bytes(head, from);
  const TextChanges &changes = conversion.changes;
  std::unique_ptr<Filter> filter;
  if (!changes.is_none() || !conversion.forms.is_none()) {
    filter = make_filter(session, from, conversion.to, changes, conversion.forms);
    filter->begin(input.shown(), mark_bytes);
  }
  // A conversion tells of a fault without its place, and the module passes equal encodings on
  // unread. A file is searched for the place afterwards; what must not be written past the fault,
  // or cannot be read again, is checked on the way.
  const bool is_unread = from == conversion.to && !filter;
  const bool is_checked = !changes.is_lenient() && conversion.forms.in.is_lines() &&
                          (conversion.is_append || is_unread || !input.is_rereadable());
  StreamWriter writer(session, target, from, conversion.to,
                      is_checked ? std::optional<uint64_t>(mark_bytes) : std::nullopt, filter.get(),
                      changes.line_end != LineEnd::kKeep);
  writer.open(with_mark(target.options(), conversion, mark_bytes > 0), room);
  Progress progress(target.is_terminal() ? 0 : input.size(), Progress::Unit::kBytes);
  uint64_t done = head.size();
  for (std::string_view chunk = head.substr(mark_bytes);;
       chunk = reader.next(), done += chunk.size()) {
    const wem::Status status = writer.write(chunk, input.shown());
    if (!status.ok()) fail(input, target, conversion, from, status);
    if (reader.is_at_end()) break;
    progress.show(done);
  }
  const wem::Status status = writer.finish(input.shown());
  if (!status.ok()) fail(input, target, conversion, from, status);
  if (filter) return filter->tally_text();
  if (is_checked) return {};
  if (const auto fault = input.find_cut_end(from, conversion.to)) {
    throw to_failure(input.shown(), *fault);
  }
  return {};
}

// Line by line: every line ends in one line feed afterwards.
void convert_text(const Conversion &conversion, Input &input, Target &target) {
  const uint32_t from = input.encoding(conversion.from);
  const bool has_mark = input.has_byte_order_mark(from);
  wem::File source = input.open(
      wem::OpenOptions::input().text((conversion.record_length + 3) / 4 * 4).file_encoding(from),
      from);
  const uint32_t room = conversion.record_length + 4;
  wem::File &file = target.open(
      with_mark(target.options(), conversion, has_mark).stream(room).file_encoding(conversion.to));
  uint64_t record_number = 1;
  const auto place = [&record_number] { return "record " + std::to_string(record_number); };
  wem::RecordRange records = source.records();
  for (const wem::Record &record : records) {
    wem::Status status = file.write(record.text());
    if (status.ok() && !record.partial) status = file.write(U"\n");
    if (!status.ok()) {
      static_cast<void>(source.close());
      fail(input, target, conversion, from, status, place());
    }
    if (!record.partial) ++record_number;
  }
  if (records.status() != JXWEM_E_EOF) {
    static_cast<void>(source.close());
    if (!is_text_fault(records.status())) throw Failure(input.shown(), records.status(), place());
    fail(input, target, conversion, from, records.status(), place());
  }
  input.require_complete();
  if (const auto fault = input.find_cut_end(from, conversion.to)) {
    throw to_failure(input.shown(), *fault);
  }
}

// A UsageError for options that need files to convert in place or into a folder, and for others
// that go with one file only.
bool is_for_many(const Arguments &arguments) {
  const bool is_many = arguments.has("--in-place") || arguments.has("--into");
  for (const char *option : {"--backup", "--files0-from", "--jobs", "--dry-run"}) {
    if (!is_many && arguments.has(option)) {
      throw UsageError(std::string(option) + " needs --in-place or --into");
    }
  }
  if (is_many && arguments.has("--append")) {
    throw UsageError("--append cannot be given with --in-place or --into");
  }
  if (!is_many && arguments.operands().size() > 2) {
    throw UsageError("more than IN and OUT needs --in-place or --into");
  }
  return is_many;
}

}  // namespace

int run_convert(Session &session, const Arguments &arguments) {
  Conversion conversion = conversion_of(arguments);
  const std::string kind = arguments.text("--records", "stream");
  const bool is_text = kind == "text";
  if (is_text && (!conversion.changes.is_none() || !conversion.forms.is_none())) {
    throw UsageError("--records text changes nothing else: leave it out, and use --eol lf");
  }
  if (is_for_many(arguments)) {
    if (is_text) throw UsageError("--records text converts one file to another");
    return convert_many(session, arguments, conversion);
  }
  const std::string name = arguments.operands().empty() ? "-" : arguments.operand(0);
  Input input(session, name, is_text ? Input::Use::kText : Input::Use::kBytes);
  const std::string output = arguments.operands().size() > 1 ? arguments.operand(1) : "-";
  Target target(session, output,
                conversion.is_append ? Target::Mode::kAppend : Target::Mode::kReplace);
  target.refuse_same(input.file_status());
  const Encoding to = arguments.encoding("--to");
  conversion.to =
      conversion.forms.out.is_lines() ? target.encoding(settle(to, target.head())) : settle(to, {});
  if (arguments.has("--bom")) target.require_mark(conversion.to);
  std::string tally;
  if (is_text) {
    convert_text(conversion, input, target);
  } else {
    tally = convert_stream(session, conversion, input, target);
  }
  target.commit();
  if (!tally.empty()) session.note(input.shown() + ": " + tally);
  return 0;
}

}  // namespace cli
