// Splitting, building and making names, with the results checked and released.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "jx/wem.h"
#include "support/text.hpp"

namespace jx::test {

// The parts of a path; empty where it has none.
inline JXStatus split(JXInstance *instance, const JXString &path,
                      std::array<std::string, 4> *parts) {
  JXChar *part[4] = {};
  int32_t length[4] = {};
  const JXStatus status =
      instance->split_path(instance, path.data(), chars(path), &part[0], &length[0], &part[1],
                           &length[1], &part[2], &length[2], &part[3], &length[3]);
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(part[i] == nullptr, length[i] == 0);
    parts->at(i) = narrow(part[i], static_cast<size_t>(length[i]));
  }
  EXPECT_EQ(part[1], part[2]);
  EXPECT_EQ(instance->split_path_release(instance, part[0], part[1], part[2], part[3]), JX_OK);
  return status;
}

// The path of a directory, a member and an extension.
inline std::string build(JXInstance *instance, const JXString &directory, const JXString &member,
                         const JXString &extension, JXStatus *status) {
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  *status =
      instance->build_path(instance, directory.data(), chars(directory), member.data(),
                           chars(member), extension.data(), chars(extension), &path, &path_chars);
  const std::string text = narrow(path, path_chars);
  EXPECT_EQ(path != nullptr, *status == JX_OK);
  instance->build_path_release(instance, path);
  return text;
}

// A unique name; empty when the call fails.
inline JXStatus create_name(JXInstance *instance, const JXString &directory, const JXString &prefix,
                            const JXString &extension, uint32_t flags, std::string *name) {
  // A length without a prefix counts as none.
  const JXCreateName request = {prefix.empty() ? nullptr : prefix.data(),
                                prefix.empty() ? 9 : chars(prefix), extension.data(),
                                chars(extension), flags};
  JXChar *path = nullptr;
  uint32_t path_chars = 77;
  const JXStatus status = instance->create_name(instance, directory.data(), chars(directory),
                                                &request, &path, &path_chars);
  EXPECT_EQ(path != nullptr, status == JX_OK);
  EXPECT_EQ(path_chars == 77u, !path);
  *name = narrow(path, path ? path_chars : 0);
  instance->create_name_release(instance, path);
  return status;
}

}  // namespace jx::test
