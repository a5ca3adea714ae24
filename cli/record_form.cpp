// The options that name forms of records.
#include "cli/record_form.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "cli/failure.hpp"

namespace cli {
namespace {

constexpr uint32_t kLongestFixed = 1 << 24;
constexpr std::string_view kFixed = "fixed:";

struct NamedFraming {
  std::string_view name;
  Framing framing;
};

constexpr auto kFramings = std::to_array<NamedFraming>({{"rdw", Framing::kRdw},
                                                        {"bdw", Framing::kBdw},
                                                        {"be32", Framing::kBig32},
                                                        {"le32", Framing::kLittle32}});

ShortRecord short_last_of(const std::string &given) {
  if (given == "refuse") return ShortRecord::kRefuse;
  if (given == "pad") return ShortRecord::kPad;
  if (given == "keep") return ShortRecord::kKeep;
  throw UsageError("--short-last: '" + given + "' is none of refuse, pad, keep");
}

}  // namespace

RecordForm record_form(const Arguments &arguments, const std::string &option,
                       const std::string &others) {
  if (!arguments.has(option)) return {};
  const std::string given = arguments.text(option);
  const bool is_word = !given.empty() && given.find(' ') == given.npos;
  if (is_word && (" " + others + " ").find(" " + given + " ") != others.npos) return {};
  const auto row = std::ranges::find(kFramings, given, &NamedFraming::name);
  if (row != kFramings.end()) return {row->framing};
  if (given.starts_with(kFixed)) {
    const std::string length = given.substr(kFixed.size());
    return {Framing::kFixed,
            static_cast<uint32_t>(parse_number(option + " fixed", length, 1, kLongestFixed))};
  }
  throw UsageError(option + ": '" + given + "' is none of " + others +
                   " fixed:N rdw bdw be32 le32");
}

RecordForms input_forms(const Arguments &arguments, const std::string &others) {
  RecordForms forms;
  forms.in = record_form(arguments, "--records", others);
  forms.strips_blanks = arguments.has("--strip-blanks");
  forms.short_last = short_last_of(arguments.text("--short-last", "refuse"));
  if (forms.in.is_lines() && forms.strips_blanks) {
    throw UsageError("--strip-blanks needs --records with a form of records");
  }
  const bool is_counted = !forms.in.is_lines() && forms.in.framing != Framing::kFixed;
  if (is_counted && arguments.encoding("--from").is_auto) {
    throw UsageError("--from auto cannot tell the encoding from records after their length");
  }
  if (forms.in.framing != Framing::kFixed && arguments.has("--short-last")) {
    throw UsageError("--short-last needs --records fixed:N");
  }
  return forms;
}

}  // namespace cli
