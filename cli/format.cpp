// The command "format": the formatting engine.
#include <algorithm>
#include <optional>
#include <vector>

#include "cli/commands.hpp"
#include "cli/format_arguments.hpp"
#include "cli/session.hpp"
#include "jx/runtime.h"

namespace cli {
namespace {

constexpr uint64_t kMostChars = 1 << 24;
// No character: marks what the engine did not write.
constexpr char32_t kUntouched = 0xffffffff;

struct Formatted {
  wem::Status status;
  std::u32string text;        // what was written
  uint32_t length_chars = 0;  // of the complete output
};

class Formatter {
 public:
  Formatter(Session &session, std::u32string format, const ArgumentList &arguments)
      : engine_(session.module().symbol<decltype(&jxzFormatBuffV)>("jxzFormatBuffV")),
        format_(std::move(format)),
        arguments_(arguments) {
    if (!engine_) throw Failure(session.module_path(), JX_E_UNSUPPORTED);
  }

  Formatted format(uint32_t capacity_chars) const {
    Formatted result;
    result.text.assign(capacity_chars + 1, kUntouched);
    result.status = arguments_.call([&](va_list &list) {
      return wem::Status(engine_(nullptr, wem::as_chars(format_),
                                 static_cast<int32_t>(format_.size()),
                                 reinterpret_cast<JXChar *>(result.text.data()),
                                 static_cast<int32_t>(capacity_chars), &result.length_chars, list));
    });
    result.text.resize(std::min<size_t>(result.text.find(kUntouched), capacity_chars));
    return result;
  }

 private:
  decltype(&jxzFormatBuffV) engine_;
  std::u32string format_;
  const ArgumentList &arguments_;
};

}  // namespace

int run_format(Session &session, const Arguments &arguments) {
  const std::string given = arguments.operand(0);
  const auto format = session.from_utf8(given);
  if (!format) throw UsageError("FORMAT is not UTF-8");
  const auto &operands = arguments.operands();
  const FormatUses uses = read_format(*format);
  const ArgumentList list(session, uses, {operands.begin() + 1, operands.end()});
  // A length of 0 would mean a format that ends at its first zero, which this one has not.
  if (format->empty()) {
    session.output() << "\n";
    return 0;
  }
  const Formatter formatter(session, *format, list);
  auto capacity = static_cast<uint32_t>(arguments.number("--capacity", 0, 0, kMostChars));
  if (!arguments.has("--capacity")) {
    capacity =
        static_cast<uint32_t>(std::min<uint64_t>(formatter.format(0).length_chars, kMostChars));
  }
  const Formatted result = formatter.format(capacity);
  if (result.status == JX_E_BADFORMAT) throw Failure(given, result.status);
  if (arguments.has("--json")) {
    Row row;
    row.add("text", session.to_utf8(result.text)).add("length", uint64_t{result.length_chars});
    session.output() << row.add("truncated", result.status == JX_E_TRUNCATED);
  } else {
    session.print(result.text);
    session.output() << "\n";
  }
  if (result.status.ok()) return 0;
  throw Failure(
      "", result.status,
      std::to_string(result.length_chars) + " characters, room for " + std::to_string(capacity));
}

}  // namespace cli
