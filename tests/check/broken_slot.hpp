// Kernels that are broken in one slot, each with the line that says so: tables of them are
// instances of the test.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "check/broken_kernel.hpp"

namespace jx::test {

struct BrokenSlot {
  const char *name;
  void (*break_it)();
  const char *finding;  // what one of the lines has to contain
};

class BrokenKernel : public testing::TestWithParam<BrokenSlot> {};

inline std::string name_of_slot(const testing::TestParamInfo<BrokenSlot> &info) {
  std::string name;
  for (const char *c = info.param.name; *c; ++c) name += std::isalnum(*c) ? *c : '_';
  return name;
}

}  // namespace jx::test
