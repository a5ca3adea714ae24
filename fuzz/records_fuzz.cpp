// Scripts of file operations in every format, encoding and access mode, on the module and on the
// model.
#include "support/record_comparison.hpp"

#include <algorithm>

#include "fuzz/scratch.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using namespace jx::test;
  Choices choices(std::span(data, size));
  // How many bytes a read of the host brings at most; 0: as many as it is asked for.
  auto most_bytes = static_cast<uint32_t>(choices.below(4) == 0 ? choices.below(70) : 0);
  const Script script = make_script(&choices);
  // A long file takes a call for each of these, so not too few of them.
  const auto bytes = static_cast<uint32_t>(script.content ? script.content->size() : 0);
  if (most_bytes != 0) most_bytes = std::max(most_bytes, bytes / 256);
  static const std::string path = (jx::fuzz::scratch() / "records").string();
  const std::string difference =
      RecordComparison(jx::fuzz::instance(), path, most_bytes).run(script);
  if (!difference.empty()) jx::fuzz::require(false, difference + "\n" + describe(script));
  return 0;
}
