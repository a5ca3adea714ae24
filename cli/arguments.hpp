// The command line after parsing.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct Command;

// An encoding as a user names it.
struct Encoding {
  uint32_t number = 0;       // of the host; 0: none was named
  uint32_t other_order = 0;  // of "utf-16" and "utf-32": the encoding that a byte-order mark may
                             // choose instead; else 0
  bool is_auto = false;      // to be told from the text
  bool follows_mark() const { return other_order != 0; }
};

// The options and operands of one command.
class Arguments {
 public:
  // Whether an option or a flag was given; names are as in the table, "--from".
  bool has(const std::string &option) const { return options_.count(option) != 0; }
  // The value of an option, or fallback when it was not given.
  std::string text(const std::string &option, const std::string &fallback = {}) const;
  // The same as a number from minimum to maximum, with an optional suffix k, M or G (powers of
  // 1024); a UsageError otherwise.
  uint64_t number(const std::string &option, uint64_t fallback, uint64_t minimum,
                  uint64_t maximum) const;
  // The value of --record-length.
  uint32_t record_length(uint32_t fallback, uint32_t minimum) const {
    return static_cast<uint32_t>(number("--record-length", fallback, minimum, 1 << 26));
  }
  // An encoding given by name or number; for --from also "auto". A UsageError for one that is not
  // known.
  Encoding encoding(const std::string &option) const;

  // What is not an option, in order. The table says how many there are at least and at most.
  const std::vector<std::string> &operands() const { return operands_; }
  // An operand, or empty when there are fewer.
  std::string operand(size_t index) const {
    return index < operands_.size() ? operands_[index] : std::string();
  }

  void set_option(const std::string &name, const std::string &value) { options_[name] = value; }
  void set_operands(std::vector<std::string> operands) { operands_ = std::move(operands); }

 private:
  std::map<std::string, std::string> options_;
  std::vector<std::string> operands_;
};

// A command to run with its arguments.
struct Invocation {
  const Command *command = nullptr;  // set as soon as it is known
  Arguments arguments;
};

// Parses the command line by the table of commands. Prints help to standard output when asked for
// it and returns false then; a UsageError for anything that is wrong.
bool parse_command_line(int argc, char **argv, Invocation *invocation);

// An encoding by name or number; a UsageError that names what for one that is not known.
Encoding encoding_named(const std::string &what, const std::string &name);

// A number in full, decimal or hexadecimal after "0x", with an optional suffix k, M or G; a
// UsageError that names what for anything else.
uint64_t parse_number(const std::string &what, const std::string &text, uint64_t minimum,
                      uint64_t maximum);

}  // namespace cli
