// Numbers of lines and records.
#include "cli/line_range.hpp"

#include <algorithm>
#include <string>

#include "cli/failure.hpp"
#include "cli/input.hpp"

namespace cli {

LineRange line_range(const Arguments &arguments) {
  LineRange range;
  const std::string text = arguments.text("--range");
  const size_t colon = std::min(text.find(':'), text.size());
  const auto number = [](const std::string &digits) {
    return parse_number("--range", digits, 1, UINT64_MAX);
  };
  if (colon > 0) range.first = number(text.substr(0, colon));
  if (colon + 1 < text.size()) range.last = number(text.substr(colon + 1));
  if (colon == text.size() && colon > 0) range.last = range.first;
  const bool is_empty = arguments.has("--range") && text.size() < 2 && colon == 0;
  if (is_empty || range.first > range.last) {
    throw UsageError("--range: '" + text + "' is no range of lines, such as 5:9, 5: or :9");
  }
  return range;
}

uint64_t skip_records(Input &input, wem::File &file, const RecordForm &form,
                      const LineRange &range) {
  if (form.framing != Framing::kFixed || !input.is_rereadable()) return 0;
  const uint64_t records = std::min(range.first - 1, input.size() / form.length);
  const uint64_t offset = records * form.length;
  if (offset > 0) {
    require(file.point(static_cast<int64_t>(offset), JX_POINT_RELATIVE), input.shown());
  }
  return offset;
}

}  // namespace cli
