// The commands "status" and "version".
#include <strings.h>

#include "cli/commands.hpp"
#include "cli/session.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

void print_status(Session &session, const Arguments &arguments, JXStatus status) {
  const char *name = jxhost_status_name(status);
  const char *text = jxhost_status_text(status);
  if (arguments.has("--json")) {
    Row row;
    row.add("code", code_text(status)).add("name", std::string(name ? name : ""));
    session.output() << row.add("text", std::string(text ? text : ""));
    return;
  }
  std::string line = code_text(status) + "  " + (name ? name : "?");
  line.resize(std::max<size_t>(line.size(), 36), ' ');
  session.output() << line + "  " + (text ? text : "?") + "\n";
}

// The status of a number in any notation, or of a name with or without its family's prefix.
std::optional<JXStatus> find_status(const std::string &given) {
  for (uint32_t i = 0; jxhost_status_at(i) != 0; ++i) {
    const JXStatus status = jxhost_status_at(i);
    const std::string name = jxhost_status_name(status);
    const std::string tail = name.substr(name.find("_E_") + 3);
    const bool is_meant = ::strcasecmp(given.c_str(), name.c_str()) == 0 ||
                          ::strcasecmp(given.c_str(), tail.c_str()) == 0;
    if (is_meant || "0x" + given == code_text(status)) return status;
  }
  const bool is_number = !given.empty() && given[0] >= '0' && given[0] <= '9';
  if (!is_number) return std::nullopt;
  return static_cast<JXStatus>(parse_number("CODE", given, 0, UINT32_MAX));
}

std::string to_text(wem::Version version) {
  return std::to_string(version.a) + "." + std::to_string(version.b) + "." +
         std::to_string(version.c);
}

}  // namespace

int run_status(Session &session, const Arguments &arguments) {
  if (arguments.operands().empty()) {
    for (uint32_t i = 0; jxhost_status_at(i) != 0; ++i) {
      print_status(session, arguments, jxhost_status_at(i));
    }
    return 0;
  }
  const std::string given = arguments.operand(0);
  const auto status = find_status(given);
  if (!status) throw UsageError("CODE: '" + given + "' is neither a number nor a known name");
  if (*status != JX_OK && !jxhost_status_name(*status)) {
    throw Failure(given, *status).saying({}, "list every status with: jxfile status");
  }
  print_status(session, arguments, *status);
  return 0;
}

int run_version(Session &session, const Arguments &arguments) {
  const wem::Instance &instance = session.instance();
  const std::string own = to_text(instance.version());
  const std::string needs = to_text(instance.required_version());
#if defined(__aarch64__)
  const std::string abi = "aarch64";
#else
  const std::string abi = sizeof(void *) == 4 ? "i386" : "x86_64";
#endif
  if (arguments.has("--json")) {
    Row row;
    row.add("version", own).add("required_host", needs).add("abi", abi);
    session.output() << row.add_name("path", session.module_path());
    return 0;
  }
  session.output() << "jxwem " + own + ", needs a host of " + needs + " or later\nmodule  " +
                          session.shown(session.module_path()) + "\nabi     " + abi + "\n";
  return 0;
}

}  // namespace cli
