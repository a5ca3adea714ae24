// Random scripts of file operations: the content of the file, how it is opened, what is read and
// written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jx/wem.h"
#include "support/choices.hpp"

namespace jx::test {

enum class Act { open, read, write, write_back, note, point, truncate, flush, close };

// One operation; the fields that its act uses are set.
struct Step {
  Act act;
  JXOpenOptions options = {};          // open
  uint32_t times = 1;                  // read, write: how often, while it succeeds
  uint32_t count = 0;                  // read: bytes wanted; point: the mode
  std::optional<int64_t> offset = {};  // read, write; point and truncate use it always
  std::string data = {};               // write
};

struct Script {
  std::optional<std::string> content;  // of the file before; null: there is none
  std::vector<Step> steps;
};

Script make_script(Choices *choices);

// For people.
std::string describe(const Script &script);
// A string as hexadecimal digits; long ones are cut.
std::string hex(std::string_view bytes);

}  // namespace jx::test
