// The command "detect": which encoding a text has, and what its lines are like.
#include <optional>

#include "cli/commands.hpp"
#include "cli/detection.hpp"
#include "cli/input.hpp"
#include "cli/line_survey.hpp"
#include "cli/many.hpp"
#include "cli/watch.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr uint32_t kChunkBytes = 65536;

// Looks at the bytes of one text as they come.
class Examination {
 public:
  explicit Examination(Session &session) : session_(session) {}

  void feed(std::string_view bytes) {
    size_ += bytes.size();
    if (detection_) return follow(bytes);
    waiting_ += bytes;
    if (!sampler_.feed(bytes)) return decide(false);
    // Of a long start of ASCII nothing is kept.
    if (waiting_.size() < kSampleBytes) return;
    if (!lines_) lines_.emplace(session_, JX_ENCODING_UTF8);
    lines_->feed(waiting_);
    waiting_.clear();
  }

  void finish() {
    if (!detection_) decide(true);
    lines_->finish();
    if (finder_ && finder_->finish()) finder_.reset();
    if (finder_) refuse(*finder_->fault());
  }

  const Detection &detection() const { return *detection_; }
  const LineSurvey &lines() const { return *lines_; }
  uint64_t size() const { return size_; }

 private:
  void decide(bool is_end) {
    detection_ = sampler_.detect(session_, is_end);
    // The lines of a long start were counted as those of ASCII, which they are.
    if (!lines_) lines_.emplace(session_, detection_->encoding);
    if (detection_->is_certain())
      finder_.emplace(session_, detection_->encoding, JX_ENCODING_UTF8, size_ - waiting_.size());
    follow(std::exchange(waiting_, {}));
  }

  void follow(std::string_view bytes) {
    lines_->feed(bytes);
    if (finder_) finder_->feed(bytes);
  }

  // What the first bytes proved does not hold for all of them.
  void refuse(const Fault &fault) {
    detection_->reason += ", up to byte offset " + std::to_string(fault.offset) +
                          " with the bytes " + to_hex(fault.bytes, " ") +
                          (fault.is_cut_off ? ", cut off by the end of the file" : "");
    detection_->guesses = {{detection_->encoding, {}, {}, 0}};
    detection_->encoding = 0;
    detection_->confidence = 0;
  }

  Session &session_;
  Sampler sampler_;
  std::string waiting_;  // bytes whose lines are not counted yet
  std::optional<Detection> detection_;
  std::optional<LineSurvey> lines_;
  std::optional<FaultFinder> finder_;  // of an encoding that is certain
  uint64_t size_ = 0;
};

Examination examine(Session &session, Input &input) {
  Examination examination(session);
  wem::File file =
      input.open(wem::OpenOptions::input().binary(kChunkBytes).direct().direct_transfer());
  std::vector<std::byte> buffer(kChunkBytes);
  for (;;) {
    const auto record = file.read_into(buffer);
    if (record) {
      examination.feed({reinterpret_cast<const char *>(buffer.data()), record->bytes.size()});
    } else if (record.status() == JXWEM_E_EOF) {
      break;
    } else {
      throw Failure(input.shown(), record.status());
    }
  }
  examination.finish();
  return examination;
}

Examination watched(Session &session, Input &input) {
  const Watch watch(input.size(), [&input] { return input.bytes_done(); });
  return examine(session, input);
}

std::string line_ends_text(const LineSurvey &lines) {
  std::string text;
  for (const auto end : {LineSurvey::kLf, LineSurvey::kCrlf, LineSurvey::kCr, LineSurvey::kNel}) {
    if (lines.count(end) == 0) continue;
    text += (text.empty() ? "" : ", ") + std::string(LineSurvey::kNames[end]) + " " +
            std::to_string(lines.count(end));
  }
  if (text.empty()) text = "none";
  return text + (lines.ends_with_line_end() ? "" : "; none at the end");
}

void print_text(Session &session, const std::string &shown, const Examination &examination) {
  const Detection &detection = examination.detection();
  const LineSurvey &lines = examination.lines();
  const char *name = detection.encoding ? jxhost_encoding_name(detection.encoding) : "unknown";
  std::string text = session.shown(shown) + "\n  encoding    " + name;
  text += detection.is_certain() ? ", certain"
          : detection.encoding   ? ", " + std::to_string(detection.confidence) + " %"
                                 : "";
  text += "\n  reason      " + detection.reason + "\n";
  for (const Guess &guess : detection.guesses) text += "  candidate   " + to_text(guess) + "\n";
  text += "  mark        " + std::string(detection.mark_bytes ? "yes" : "no") + "\n  line ends   " +
          line_ends_text(lines) + "\n";
  text += "  longest     " + std::to_string(lines.longest_bytes()) + " bytes";
  if (lines.longest_line()) text += ", line " + std::to_string(lines.longest_line());
  text += "\n";
  if (lines.zeros()) text += "  NULs        " + std::to_string(lines.zeros()) + "\n";
  session.output() << text;
}

void print_json(Session &session, const std::string &shown, const Examination &examination) {
  const Detection &detection = examination.detection();
  const LineSurvey &lines = examination.lines();
  Row row;
  row.add_name("file", shown).add("size", examination.size());
  if (detection.encoding) {
    row.add("encoding", std::string_view(jxhost_encoding_name(detection.encoding)));
  } else {
    row.add("encoding", nullptr);
  }
  row.add("confidence", int64_t{detection.confidence}).add("certain", detection.is_certain());
  row.add("reason", detection.reason).add("mark", detection.mark_bytes > 0);
  std::vector<Row> candidates;
  candidates.reserve(detection.guesses.size());
  for (const Guess &guess : detection.guesses) {
    candidates.emplace_back()
        .add("encoding", std::string_view(jxhost_encoding_name(guess.encoding)))
        .add("confidence", int64_t{guess.confidence});
  }
  row.add("candidates", std::span<const Row>(candidates)).add("line_ends", lines.kind());
  for (const auto end : {LineSurvey::kLf, LineSurvey::kCrlf, LineSurvey::kCr, LineSurvey::kNel}) {
    row.add(LineSurvey::kNames[end], lines.count(end));
  }
  row.add("final_line_end", lines.ends_with_line_end()).add("lines", lines.lines());
  row.add("longest_line", lines.longest_line()).add("longest_bytes", lines.longest_bytes());
  session.output() << row.add("nuls", lines.zeros());
}

}  // namespace

int run_detect(Session &session, const Arguments &arguments) {
  return for_each(session, arguments.operands(), [&](const std::string &name) {
    Input input(session, name, Input::Use::kBytes);
    const Examination examination = watched(session, input);
    (arguments.has("--json") ? print_json : print_text)(session, input.shown(), examination);
  });
}

}  // namespace cli
