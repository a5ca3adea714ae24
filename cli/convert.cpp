// The command "convert": a text file in another encoding.
#include <optional>

#include "cli/commands.hpp"
#include "cli/copying.hpp"
#include "cli/input.hpp"
#include "cli/progress.hpp"
#include "cli/target.hpp"

namespace cli {
namespace {

struct Conversion {
  uint32_t from;  // 0: by the byte-order mark
  uint32_t to;    // 0: by the target
  uint32_t record_length;
  bool wants_mark;    // --bom
  bool refuses_mark;  // --no-bom
  bool is_append;
};

Conversion conversion_of(const Arguments &arguments) {
  Conversion conversion = {};
  conversion.from = arguments.encoding("--from");
  conversion.to = arguments.encoding("--to");
  conversion.record_length = arguments.record_length(65536, 4);
  conversion.wants_mark = arguments.has("--bom");
  conversion.refuses_mark = arguments.has("--no-bom");
  conversion.is_append = arguments.has("--append");
  if (conversion.wants_mark && conversion.refuses_mark) {
    throw UsageError("--bom and --no-bom cannot be given together");
  }
  return conversion;
}

wem::OpenOptions with_mark(const wem::OpenOptions &options, const Conversion &conversion,
                           bool input_has_mark) {
  const bool is_wanted = conversion.wants_mark || (input_has_mark && !conversion.refuses_mark);
  return is_wanted ? options.byte_order_mark() : options.no_byte_order_mark();
}

// Everything as it is: bytes in, one conversion by the module, bytes out.
void convert_stream(Session &session, const Conversion &conversion, Input &input, Target &target) {
  const uint32_t room = conversion.record_length;
  wem::File source = input.open(wem::OpenOptions::input().binary(room).direct().direct_transfer());
  ByteReader reader(source, input.shown(), room);
  const std::string_view head = reader.next();
  const uint32_t found = sniff(head);
  const uint32_t from = conversion.from != 0 ? conversion.from
                        : found != 0         ? found
                                             : JX_ENCODING_UTF8;
  const size_t mark_bytes = byte_order_mark_size(head, from);
  // The conversion by the module tells of a fault without its place, and passes equal encodings
  // on unread. A file is searched for the place afterwards; what must not be written past the
  // fault, or cannot be read again, is checked on the way.
  const bool is_checked = conversion.is_append || from == conversion.to || !input.is_rereadable();
  StreamWriter writer(session, target, from, conversion.to,
                      is_checked ? std::optional<uint64_t>(mark_bytes) : std::nullopt);
  writer.open(with_mark(target.options(), conversion, mark_bytes > 0), room);
  Progress progress(input.size());
  const auto fail = [&](wem::Status status) {
    if (const auto fault = input.find_fault(from, conversion.to)) {
      throw to_failure(input.shown(), *fault);
    }
    throw Failure(target.shown(), status);
  };
  uint64_t done = head.size();
  for (std::string_view chunk = head.substr(mark_bytes);;
       chunk = reader.next(), done += chunk.size()) {
    const wem::Status status = writer.write(chunk, input.shown());
    if (!status.ok()) fail(status);
    if (reader.is_at_end()) break;
    progress.show(done);
  }
  const wem::Status status = writer.finish(input.shown());
  if (!status.ok()) fail(status);
  if (is_checked) return;
  if (const auto fault = input.find_cut_end(from, conversion.to)) {
    throw to_failure(input.shown(), *fault);
  }
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
  const auto fail = [&](wem::Status status) {
    static_cast<void>(source.close());
    if (const auto fault = input.find_fault(from, conversion.to)) {
      throw to_failure(input.shown(), *fault);
    }
    throw Failure(input.shown(), status, "record " + std::to_string(record_number));
  };
  wem::RecordRange records = source.records();
  for (const wem::Record &record : records) {
    wem::Status status = file.write(record.text());
    if (status.ok() && !record.partial) status = file.write(U"\n");
    if (!status.ok()) fail(status);
    if (!record.partial) ++record_number;
  }
  if (records.status() != JXWEM_E_EOF) fail(records.status());
  input.require_complete();
  if (const auto fault = input.find_cut_end(from, conversion.to)) {
    throw to_failure(input.shown(), *fault);
  }
}

}  // namespace

int run_convert(Session &session, const Arguments &arguments) {
  Conversion conversion = conversion_of(arguments);
  const std::string kind = arguments.text("--records", "stream");
  if (kind != "stream" && kind != "text") throw UsageError("--records is text or stream");
  const bool is_text = kind == "text";
  Input input(session, arguments.operand(0),
              is_text ? Input::Pipe::kRelayed : Input::Pipe::kDirect);
  Target target(session, arguments.operand(1),
                conversion.is_append ? Target::Mode::kAppend : Target::Mode::kReplace);
  target.refuse_same(input.file_status());
  conversion.to = target.encoding(conversion.to);
  if (conversion.wants_mark) target.require_mark(conversion.to);
  if (is_text) {
    convert_text(conversion, input, target);
  } else {
    convert_stream(session, conversion, input, target);
  }
  target.commit();
  return 0;
}

}  // namespace cli
