// The command "encodings": what text can be converted from and to.
#include <sstream>

#include "cli/commands.hpp"
#include "cli/input.hpp"
#include "cli/session.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

std::string padded(std::string text, size_t width) {
  text.resize(std::max(text.size() + 1, width), ' ');
  return text;
}

void print_encoding(Session &session, const Arguments &arguments, uint32_t number) {
  const std::string name = jxhost_encoding_name(number);
  const std::string aliases = jxhost_encoding_aliases(number);
  const uint32_t least = jxhost_encoding_min_bytes(number);
  const uint32_t most = jxhost_encoding_max_bytes(number);
  const bool has_mark = !byte_order_mark(number).empty();
  if (arguments.has("--json")) {
    std::istringstream words(aliases);
    const std::vector<std::string> list(std::istream_iterator<std::string>(words), {});
    Row row;
    row.add("name", name).add("number", uint64_t{number}).add("aliases", std::span(list));
    row.add("min_bytes", uint64_t{least}).add("max_bytes", uint64_t{most});
    session.output() << row.add("mark", has_mark);
    return;
  }
  const std::string range = least == most ? "" : "-" + std::to_string(most);
  session.output() << padded(name, 17) + padded(std::to_string(number), 6) +
                          padded(std::to_string(least) + range, 5) + (has_mark ? "mark" : "-") +
                          (aliases.empty() ? "" : (has_mark ? " " : "    ") + aliases) + "\n";
}

void print_left_out(Session &session, const Arguments &arguments) {
  const char *reason = nullptr;
  for (uint32_t i = 0; const char *name = jxhost_encoding_left_out_at(i, &reason); ++i) {
    if (arguments.has("--json")) {
      Row row;
      session.output() << row.add("left_out", std::string_view(name)).add("reason", reason);
    } else {
      session.output() << padded(name, 17) + "not converted: " + reason + "\n";
    }
  }
}

}  // namespace

int run_encodings(Session &session, const Arguments &arguments) {
  for (size_t i = 0; i < arguments.operands().size(); ++i) {
    print_encoding(session, arguments, encoding_named("ENC", arguments.operand(i)).number);
  }
  if (!arguments.operands().empty()) return 0;
  for (uint32_t i = 0; jxhost_encoding_at(i) != 0; ++i) {
    print_encoding(session, arguments, jxhost_encoding_at(i));
  }
  print_left_out(session, arguments);
  return 0;
}

}  // namespace cli
