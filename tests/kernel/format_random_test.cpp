// Random formats against the model and the C library.
#include <gtest/gtest.h>

#include "tests/kernel/format_case.hpp"

namespace {

using namespace jx::test;

TEST(Format, RandomAgainstTheModel) {
  const FormatHost host;
  Choices choices(20260728);
  for (int64_t i = scaled(90000); i > 0; --i) {
    ASSERT_EQ(FormatCase(&choices).check(), "") << "case " << i;
  }
}

}  // namespace
