// The command "write": records from standard input.
#include <unistd.h>

#include <limits>
#include <span>

#include "cli/commands.hpp"
#include "cli/copying.hpp"
#include "cli/descriptor.hpp"
#include "cli/input.hpp"
#include "cli/record_filter.hpp"
#include "cli/target.hpp"
#include "cli/watch.hpp"

namespace cli {
namespace {

constexpr size_t kInputBytes = 65536;
const std::string kSource = "standard input";

struct Writing {
  uint32_t to;
  uint32_t record_length;
  std::optional<int64_t> at;
  bool wants_mark;
};

wem::OpenOptions with_mark(const wem::OpenOptions &options, const Writing &writing) {
  return writing.wants_mark ? options.byte_order_mark() : options.no_byte_order_mark();
}

void move_to_start(wem::File &file, const Writing &writing, const std::string &shown) {
  if (writing.at) require(file.point(*writing.at), shown);
}

// Calls write with each chunk of standard input.
template <typename Write>
void for_each_chunk(const Target &target, size_t chunk_bytes, Write write) {
  struct ::stat status = {};
  const off_t start = ::lseek(STDIN_FILENO, 0, SEEK_CUR);
  const bool has_end = ::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) &&
                       status.st_size > start && !target.is_terminal();
  const Watch watch(has_end ? static_cast<uint64_t>(status.st_size - start) : 0, [start] {
    return static_cast<uint64_t>(::lseek(STDIN_FILENO, 0, SEEK_CUR) - start);
  });
  std::string chunk;
  do {
    chunk = read_fully(STDIN_FILENO, chunk_bytes, kSource);
    write(chunk);
  } while (chunk.size() == chunk_bytes);
}

void write_binary(const Writing &writing, Target &target) {
  wem::File &file = target.open(target.options().binary(writing.record_length).direct());
  move_to_start(file, writing, target.shown());
  for_each_chunk(target, writing.record_length, [&](std::string_view chunk) {
    target.require_written(file.write(std::as_bytes(std::span(chunk))));
  });
}

// filter: what makes records of the lines, or null.
void write_stream(Session &session, const Writing &writing, Target &target, Filter *filter) {
  StreamWriter writer(session, target, JX_ENCODING_UTF8, writing.to, 0, filter);
  wem::File &file = writer.open(with_mark(target.options(), writing), kInputBytes);
  move_to_start(file, writing, target.shown());
  for_each_chunk(target, kInputBytes, [&](std::string_view chunk) {
    target.require_written(writer.write(chunk, kSource));
  });
  target.require_written(writer.finish(kSource));
}

void write_records(Session &session, const Writing &writing, const RecordForm &form,
                   Target &target) {
  RecordForms forms;
  forms.out = form;
  RecordFilter filter(session, JX_ENCODING_UTF8, writing.to, {}, forms);
  filter.begin(kSource, 0);
  write_stream(session, writing, target, &filter);
}

// Splits standard input into lines and writes each as a record.
class LineWriter {
 public:
  LineWriter(Session &session, const Writing &writing, wem::File &file, const Target &target)
      : session_(session),
        writing_(writing),
        file_(file),
        target_(target),
        finder_(session, JX_ENCODING_UTF8, writing.to) {}

  // The lines before one with a fault are written.
  void feed(std::string_view chunk) {
    const bool is_good = finder_.feed(chunk);
    size_t end = chunk.size();
    if (!is_good)
      end = static_cast<size_t>(std::max(finder_.fault()->record_offset, offset_) - offset_);
    offset_ += chunk.size();
    chunk = chunk.substr(0, end);
    for (size_t at = chunk.find('\n'); at != chunk.npos; at = chunk.find('\n')) {
      line_ += chunk.substr(0, at);
      write_line();
      chunk.remove_prefix(at + 1);
    }
    if (!is_good) throw to_failure(kSource, *finder_.fault());
    line_ += chunk;
    if (line_.size() > uint64_t{writing_.record_length} * kLongestUtf8) refuse_long(record_ + 1);
  }

  void finish() {
    if (!finder_.finish()) throw to_failure(kSource, *finder_.fault());
    if (!line_.empty()) write_line();
  }

 private:
  [[noreturn]] static void refuse_long(uint64_t record) {
    throw Failure(kSource, JXWEM_E_TOOLONG, "record " + std::to_string(record));
  }

  void write_line() {
    ++record_;
    const auto text = session_.from_utf8(line_);
    line_.clear();
    const std::string record = "record " + std::to_string(record_);
    if (!text) throw Failure(kSource, JXHOST_E_MALFORMED, record);
    if (text->size() > writing_.record_length) refuse_long(record_);
    target_.require_written(file_.write(*text), record);
  }

  Session &session_;
  const Writing &writing_;
  wem::File &file_;
  const Target &target_;
  FaultFinder finder_;
  std::string line_;     // what came of the next line
  uint64_t offset_ = 0;  // of the next chunk
  uint64_t record_ = 0;
};

void write_text(Session &session, const Writing &writing, Target &target) {
  wem::File &file = target.open(
      with_mark(target.options(), writing).text(writing.record_length).file_encoding(writing.to));
  move_to_start(file, writing, target.shown());
  LineWriter writer(session, writing, file, target);
  for_each_chunk(target, kInputBytes, [&writer](std::string_view chunk) { writer.feed(chunk); });
  writer.finish();
}

// Text continues in the encoding of the target, after its byte-order mark.
void adapt(Writing &writing, const Arguments &arguments, const Target &target, Target::Mode mode) {
  const Encoding to = arguments.encoding("--to");
  writing.to = target.encoding(settle(to, target.head()));
  writing.wants_mark = arguments.has("--bom") || (to.follows_mark() && !writing.at);
  if (arguments.has("--bom")) target.require_mark(writing.to);
  const size_t mark_bytes = byte_order_mark_size(target.head(), writing.to);
  if (mode == Target::Mode::kUpdate && !writing.at) writing.at = static_cast<int64_t>(mark_bytes);
}

Target::Mode mode_of(const Arguments &arguments) {
  const bool is_update = arguments.has("--update") || arguments.has("--at");
  if (arguments.has("--append") && is_update) {
    throw UsageError("--append cannot be given with --update or --at");
  }
  if (is_update) return Target::Mode::kUpdate;
  return arguments.has("--append") ? Target::Mode::kAppend : Target::Mode::kReplace;
}

}  // namespace

int run_write(Session &session, const Arguments &arguments) {
  Writing writing = {};
  writing.record_length = arguments.record_length(65536, 1);
  const uint64_t furthest = std::numeric_limits<int64_t>::max();
  if (arguments.has("--at")) {
    writing.at = static_cast<int64_t>(arguments.number("--at", 0, 0, furthest));
  }
  const std::string kind = arguments.text("--records", "text");
  const RecordForm form = record_form(arguments, "--records", "text binary stream");
  const bool is_binary = kind == "binary";
  if (is_binary && (arguments.has("--to") || arguments.has("--bom"))) {
    throw UsageError("--records binary takes neither --to nor --bom");
  }
  const bool has_length = kind == "text" || is_binary;
  if (!has_length && arguments.has("--record-length")) {
    throw UsageError("--records " + kind + " takes no --record-length");
  }
  if (!form.is_lines() && arguments.has("--bom")) {
    throw UsageError("--bom: records begin without a mark");
  }
  const Target::Mode mode = mode_of(arguments);
  Target target(session, arguments.operand(0), mode);
  struct ::stat source = {};
  if (::fstat(STDIN_FILENO, &source) == 0) target.refuse_same(source);
  if (!form.is_lines()) {
    writing.to = settle(arguments.encoding("--to"), {});
    if (mode == Target::Mode::kUpdate && !writing.at) writing.at = 0;
    write_records(session, writing, form, target);
  } else if (!is_binary) {
    adapt(writing, arguments, target, mode);
  }
  if (is_binary) write_binary(writing, target);
  if (kind == "stream") write_stream(session, writing, target, nullptr);
  if (kind == "text") write_text(session, writing, target);
  target.commit();
  return 0;
}

}  // namespace cli
