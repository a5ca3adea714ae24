// Scripts of file operations in every format, encoding and access mode, on the module and on the
// model.
#include "support/record_comparison.hpp"

#include "fuzz/scratch.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using namespace jx::test;
  Choices choices(std::span(data, size));
  // How many bytes a read of the host brings at most; 0: as many as it is asked for.
  const auto most_bytes = static_cast<uint32_t>(choices.below(4) == 0 ? choices.below(70) : 0);
  const Script script = make_script(&choices);
  static const std::string path = (jx::fuzz::scratch() / "records").string();
  const std::string difference =
      RecordComparison(jx::fuzz::instance(), path, most_bytes).run(script);
  jx::fuzz::require(difference.empty(), difference + "\n" + describe(script));
  return 0;
}
