// The options of "convert" that name forms of records.
#include "cli/record_form.hpp"

#include <cstring>

#include "cli/failure.hpp"

namespace cli {
namespace {

constexpr uint32_t kLongestFixed = 1 << 24;

RecordForm form_of(const std::string &option, const std::string &given) {
  if (given == "stream" || given == "text" || given == "lines") return {};
  if (given == "rdw") return {Framing::kRdw};
  if (given == "bdw") return {Framing::kBdw};
  if (given == "be32") return {Framing::kBig32};
  if (given == "le32") return {Framing::kLittle32};
  constexpr std::string_view kFixed = "fixed:";
  if (given.starts_with(kFixed)) {
    const std::string length = given.substr(kFixed.size());
    return {Framing::kFixed,
            static_cast<uint32_t>(parse_number(option + " fixed", length, 1, kLongestFixed))};
  }
  throw UsageError(option + ": '" + given +
                   "' is no form of records: fixed:N, rdw, bdw, be32 or le32");
}

ShortRecord short_last_of(const std::string &given) {
  if (given == "refuse") return ShortRecord::kRefuse;
  if (given == "pad") return ShortRecord::kPad;
  if (given == "keep") return ShortRecord::kKeep;
  throw UsageError("--short-last: '" + given + "' is none of refuse, pad, keep");
}

}  // namespace

RecordForms record_forms(const Arguments &arguments) {
  RecordForms forms;
  forms.in = form_of("--records", arguments.text("--records", "stream"));
  forms.out = form_of("--to-records", arguments.text("--to-records", "lines"));
  forms.strips_blanks = arguments.has("--strip-blanks");
  forms.short_last = short_last_of(arguments.text("--short-last", "refuse"));
  if (forms.in.is_lines() && forms.strips_blanks) {
    throw UsageError("--strip-blanks needs --records with a form of records");
  }
  if (forms.in.framing != Framing::kFixed && arguments.has("--short-last")) {
    throw UsageError("--short-last needs --records fixed:N");
  }
  return forms;
}

size_t find_line_end(std::string_view text, std::string_view line_end) {
  if (line_end.size() == 1) {
    const void *found = std::memchr(text.data(), line_end[0], text.size());
    return found ? static_cast<size_t>(static_cast<const char *>(found) - text.data()) : text.npos;
  }
  size_t at = text.find(line_end);
  while (at != text.npos && at % line_end.size() != 0) at = text.find(line_end, at + 1);
  return at;
}

}  // namespace cli
