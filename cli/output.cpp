// Standard output and error messages.
#include "cli/output.hpp"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

#include "cli/colour.hpp"
#include "cli/descriptor.hpp"
#include "cli/printable.hpp"
#include "jx/jxhost.h"

namespace cli {
namespace {

constexpr size_t kBlockBytes = 65536;
// Refusals of a path by split and build carry this bare value.
constexpr JXStatus kPathRefused = 1;

struct Hint {
  JXStatus status;
  const char *text;
  std::string_view command = {};  // the only one that it is for, or empty
};

constexpr auto kHints = std::to_array<Hint>({
    {JXWEM_E_INUSE, "another process holds a lock on it; try again when that has closed it"},
    {JXWEM_E_OPENREFUSED, "a directory cannot be opened as a file; list it with: jxfile ls"},
    {JXWEM_E_NOTEMPTY, "remove a directory with everything in it with: jxfile rm -r"},
    {JXWEM_E_EXISTS, "nothing is ever replaced here; remove the target first"},
    {JXWEM_E_NOPATH, "make the missing directory first with: jxfile mkdir"},
    {JXWEM_E_TOOLONG, "allow longer records with --record-length"},
    {JXHOST_E_MALFORMED, "other text than UTF-8 is written with: jxfile convert --from ENC - FILE",
     "write"},
    {JXHOST_E_MALFORMED, "name the encoding of the input with --from, or go on with --on-error",
     "convert"},
    {JXHOST_E_MALFORMED, "name the encoding of the input with --from"},
    {JXHOST_E_NOROOM,
     "an encoding such as utf-7 has no text lines: use --records stream, or jxfile convert"},
    {JXHOST_E_UNMAPPABLE,
     "choose an encoding that has the character, such as --to utf-8, or go on with --on-error",
     "convert"},
    {JXHOST_E_UNMAPPABLE, "choose an encoding that has the character, such as --to utf-8"},
});

std::string hint_for(std::string_view command, const Failure &failure) {
  if (!failure.hint.empty()) return failure.hint;
  for (const Hint &hint : kHints) {
    const bool is_for_it = hint.command.empty() || hint.command == command;
    if (failure.status == hint.status && is_for_it) return hint.text;
  }
  return {};
}

std::string line_start(std::string_view command) {
  const std::string line =
      (wants_colour(STDERR_FILENO) ? coloured(kFaultColour, "jxfile:") : "jxfile:") + " ";
  return command.empty() ? line : line + std::string(command) + ": ";
}

}  // namespace

std::string code_text(wem::Status status) {
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(status.code()));
  return text.data();
}

std::string to_hex(std::string_view bytes, std::string_view separator) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * (2 + separator.size()));
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    if (!text.empty()) text += separator;
    text += kDigits[value >> 4];
    text += kDigits[value & 15];
  }
  return text;
}

std::string describe(wem::Status status, const std::string &meaning, const std::string &detail) {
  const char *name = jxhost_status_name(status.code());
  const char *text = jxhost_status_text(status.code());
  if (status == kPathRefused) text = "the path is missing, too long or not convertible";
  std::string line = !meaning.empty() ? meaning : text ? text : "unknown status";
  if (!detail.empty()) line += ": " + detail;
  line += " (";
  if (name) line += std::string(name) + " ";
  return line + code_text(status) + ")";
}

void print_failure(std::string_view command, const Failure &failure) {
  std::string line = line_start(command);
  if (!failure.path.empty()) line += to_printable(failure.path) + ": ";
  line += to_printable(describe(failure.status, failure.meaning, failure.detail)) + "\n";
  const std::string hint = hint_for(command, failure);
  if (!hint.empty()) line += "hint: " + to_printable(hint) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void print_note(std::string_view command, const std::string &text) {
  const std::string line = line_start(command) + to_printable(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Output::make_room(size_t bytes) {
  flush();
  if (size_ >= bytes) return;
  size_ = std::max(bytes, kBlockBytes);
  buffer_ = std::make_unique_for_overwrite<char[]>(size_);
}

void Output::flush() {
  const std::string_view gathered(buffer_.get(), std::exchange(used_, 0));
  if (!write_fully(STDOUT_FILENO, gathered)) throw system_failure("standard output", errno);
}

}  // namespace cli
