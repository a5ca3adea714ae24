// The module through the C++ wrapper, with a folder of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "jx/wem.hpp"
#include "support/files.hpp"

namespace jx::test {

class WrapperTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(module_) << error_; }

  std::string at(const std::string &member) const { return dir_.file(member); }
  void put(const std::string &member, std::string_view bytes) const {
    jx::test::write_file(at(member), bytes);
  }
  std::string get(const std::string &member) const {
    std::ifstream file(at(member), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool is_there(const std::string &member) const { return std::filesystem::exists(at(member)); }
  const wem::Instance &instance() const { return module_.instance(); }

  jx::test::TempDir dir_;
  std::string error_;
  wem::Module module_ = wem::Module::load(JXWEM_PATH, nullptr, &error_);
};

}  // namespace jx::test
