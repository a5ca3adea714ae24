// The options of "convert" that change a text.
#include "cli/text_changes.hpp"

#include <array>
#include <string>

#include "cli/failure.hpp"

namespace cli {
namespace {

template <typename Value>
struct Named {
  std::string_view name;
  Value value;
};

constexpr auto kLineEnds = std::to_array<Named<LineEnd>>({{"keep", LineEnd::kKeep},
                                                          {"lf", LineEnd::kLf},
                                                          {"crlf", LineEnd::kCrlf},
                                                          {"cr", LineEnd::kCr},
                                                          {"nel", LineEnd::kNel}});
constexpr auto kFinalEnds = std::to_array<Named<bool>>({{"keep", false}, {"add", true}});
constexpr auto kOnFaults = std::to_array<Named<OnFault>>({{"stop", OnFault::kStop},
                                                          {"replace", OnFault::kReplace},
                                                          {"skip", OnFault::kSkip},
                                                          {"escape", OnFault::kEscape}});

// The value of an option from a table, whose first row is the default.
template <typename Table>
auto choose(const Arguments &arguments, const std::string &option, const Table &table) {
  const std::string given = arguments.text(option, std::string(table[0].name));
  std::string names;
  for (const auto &row : table) {
    if (row.name == given) return row.value;
    names += (names.empty() ? "" : ", ") + std::string(row.name);
  }
  throw UsageError(option + ": '" + given + "' is none of " + names);
}

}  // namespace

TextChanges text_changes(const Arguments &arguments) {
  TextChanges changes;
  changes.line_end = choose(arguments, "--eol", kLineEnds);
  changes.adds_final_end = choose(arguments, "--final-eol", kFinalEnds);
  changes.on_fault = choose(arguments, "--on-error", kOnFaults);
  changes.transliterates = arguments.has("--translit");
  return changes;
}

std::u32string_view line_end_text(LineEnd line_end) {
  constexpr std::u32string_view kTexts[] = {U"", U"\n", U"\r\n", U"\r", U"\u0085"};
  return kTexts[static_cast<size_t>(line_end)];
}

}  // namespace cli
