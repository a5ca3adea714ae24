// When there are colours.
#include "cli/colour.hpp"

#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "cli/failure.hpp"
#include "cli/names.hpp"

namespace cli {
namespace {

std::optional<bool> chosen;

}  // namespace

void choose_colour(const std::string &when) {
  if (when != "auto" && when != "always" && when != "never") {
    throw UsageError("--color is auto, always or never");
  }
  chosen = when == "auto" ? std::nullopt : std::optional(when == "always");
}

bool wants_colour(int fd) {
  if (chosen) return *chosen;
  const WithVariables variables;
  const char *refusal = std::getenv("NO_COLOR");
  return ::isatty(fd) == 1 && (!refusal || !*refusal);
}

std::string coloured(std::string_view colour, std::string_view text) {
  return std::string(colour) + std::string(text) + "\033[0m";
}

}  // namespace cli
