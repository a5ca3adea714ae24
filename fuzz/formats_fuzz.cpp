// Formats of every kind of directive, valid and not, in more room than they need and in less,
// against the model, and against the C library where both agree.
#include "fuzz/fuzz.hpp"
#include "tests/kernel/format_case.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const jx::test::FormatHost host;
  jx::test::Choices choices(std::span(data, size));
  const std::string difference = jx::test::FormatCase(&choices).check();
  jx::fuzz::require(difference.empty(), difference);
  return 0;
}
