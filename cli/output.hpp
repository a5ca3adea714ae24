// What a command prints: results on standard output, messages on standard error.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "cli/failure.hpp"

namespace cli {

// One object of machine-readable output: keys and values in the order they are added. A key is
// ASCII that needs no escape, and is added once. A copy is a row that begins with the same fields.
class Row {
 public:
  // Null is printed for an optional value that is not there.
  using Value = std::variant<std::nullptr_t, bool, int64_t, uint64_t, std::string_view,
                             std::span<const std::string>, std::span<const Row>>;

  // UTF-8 text, a list of texts or of objects, a number or a truth value; std::invalid_argument for
  // text that is not UTF-8.
  Row &add(std::string_view key, Value value);
  // A name in bytes: under key when it is UTF-8, otherwise in base64 under key + "_base64".
  Row &add_name(std::string_view key, std::string_view bytes);
  // The object as JSON on one line, without the closing brace.
  std::string_view open_json() const { return json_; }

 private:
  void begin(std::string_view key);

  std::string json_ = "{";
};

// Standard output, gathered in blocks. A full device or another error throws a Failure.
class Output {
 public:
  Output &operator<<(std::string_view bytes) {
    if (bytes.empty()) return *this;
    std::memcpy(reserve(bytes.size()).data(), bytes.data(), bytes.size());
    commit(bytes.size());
    return *this;
  }
  // One JSON object on a line of its own.
  Output &operator<<(const Row &row) { return *this << row.open_json() << "}\n"; }
  // Room for that many bytes or more, to be filled and then committed as far as it was used.
  std::span<char> reserve(size_t bytes) {
    if (size_ - used_ < bytes) make_room(bytes);
    return {buffer_.get() + used_, size_ - used_};
  }
  void commit(size_t bytes) { used_ += bytes; }
  // Writes what was gathered.
  void flush();

 private:
  void make_room(size_t bytes);

  std::unique_ptr<char[]> buffer_;
  size_t size_ = 0;
  size_t used_ = 0;
};

// Prints a failure of a command in one line, with a hint on a second where one helps.
void print_failure(std::string_view command, const Failure &failure);
// Prints a message of a command in one line.
void print_note(std::string_view command, const std::string &text);

// "meaning (NAME 0x80bfe801)" for any status of the module or of the host.
std::string describe(wem::Status status, const std::string &meaning = {},
                     const std::string &detail = {});
// The eight hexadecimal digits of a status after "0x".
std::string code_text(wem::Status status);
inline std::string code_text(JXStatus code) { return code_text(wem::Status(code)); }
// Bytes as pairs of hexadecimal digits with a separator between them.
std::string to_hex(std::string_view bytes, std::string_view separator);

}  // namespace cli
