// The three forms of the report.
#include "check/report.hpp"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace jxcheck {

namespace {

constexpr const char *kOutcomes[] = {"passed", "finding", "skipped"};

// One line on its way to a descriptor, in one write.
class Writer {
 public:
  // Adds a text as it is.
  Writer &operator<<(const char *text) {
    const size_t count = ::strlen(text);
    const size_t room = sizeof buffer_ - used_;
    const size_t taken = count < room ? count : room;
    ::memcpy(buffer_ + used_, text, taken);
    used_ += taken;
    return *this;
  }
  Writer &operator<<(uint32_t number) {
    char digits[12];
    ::snprintf(digits, sizeof digits, "%u", number);
    return *this << digits;
  }
  // Adds ,"key":"text" with what JSON escapes.
  Writer &field(const char *key, const char *text) {
    *this << ",\"" << key << "\":\"";
    for (; *text; ++text) {
      const char escaped[] = {'\\', *text, 0};
      const bool is_special = *text == '"' || *text == '\\';
      *this << (is_special ? escaped : escaped + 1);
    }
    return *this << "\"";
  }
  // False when the descriptor does not take all of it.
  bool write_to(int fd) {
    for (size_t done = 0; done < used_;) {
      const ssize_t written = ::write(fd, buffer_ + done, used_ - done);
      if (written <= 0 && errno != EINTR) return false;
      if (written > 0) done += static_cast<size_t>(written);
    }
    return true;
  }

 private:
  char buffer_[2048];
  size_t used_ = 0;
};

// "slot: asked", and for a finding what came, what is promised and where.
void add_sentence(Writer &out, const JXCheckLine &line) {
  out << line.slot8 << ": " << line.asked8;
  if (line.outcome != JXCHECK_FINDING) return;
  out << "; came: " << line.came8 << "; promised: " << line.promised8 << "; guide: " << line.guide8;
}

void add_text(Writer &out, const JXCheckLine &line) {
  if (line.outcome == JXCHECK_PASSED) return;
  out << kOutcomes[line.outcome] << ": ";
  add_sentence(out, line);
  if (line.outcome == JXCHECK_SKIPPED) out << ": " << line.came8;
  out << "\n";
}

void add_tap(Writer &out, const JXCheckLine &line) {
  out << (line.outcome == JXCHECK_FINDING ? "not ok " : "ok ") << line.number << " - ";
  add_sentence(out, line);
  if (line.outcome == JXCHECK_SKIPPED) out << " # SKIP " << line.came8;
  out << "\n";
}

void add_json(Writer &out, const JXCheckLine &line) {
  out << "{\"check\":" << line.number;
  out.field("outcome", kOutcomes[line.outcome]).field("slot", line.slot8);
  out.field("asked", line.asked8).field("came", line.came8);
  out.field("promised", line.promised8).field("guide", line.guide8) << "}\n";
}

}  // namespace

void Report::begin() {
  Writer out;
  if (config_.format == JXCHECK_TAP) out << "TAP version 13\n";
  if (config_.output_fd >= 0) is_written_ = out.write_to(config_.output_fd);
}

void Report::add(JXCheckLine line) {
  line.number = counts_.passed + counts_.findings + counts_.skipped + 1;
  ++(line.outcome == JXCHECK_PASSED    ? counts_.passed
     : line.outcome == JXCHECK_FINDING ? counts_.findings
                                       : counts_.skipped);
  if (config_.sink) config_.sink(config_.context, &line);
  if (config_.output_fd < 0) return;
  Writer out;
  switch (config_.format) {
    case JXCHECK_TAP:
      add_tap(out, line);
      break;
    case JXCHECK_JSON:
      add_json(out, line);
      break;
    default:
      add_text(out, line);
  }
  is_written_ = out.write_to(config_.output_fd) && is_written_;
}

void Report::end() {
  if (config_.output_fd < 0) return;
  const uint32_t total = counts_.passed + counts_.findings + counts_.skipped;
  Writer out;
  switch (config_.format) {
    case JXCHECK_TAP:
      out << "1.." << total << "\n";
      break;
    case JXCHECK_JSON:
      out << "{\"checks\":" << total << ",\"passed\":" << counts_.passed
          << ",\"findings\":" << counts_.findings << ",\"skipped\":" << counts_.skipped << "}\n";
      break;
    default:
      out << total << " checks: " << counts_.passed << " passed, " << counts_.findings
          << " findings, " << counts_.skipped << " skipped\n";
  }
  is_written_ = out.write_to(config_.output_fd) && is_written_;
}

}  // namespace jxcheck
