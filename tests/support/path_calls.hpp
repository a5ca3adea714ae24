// System calls on paths that fail, or are preceded by something else, on request. A test program
// that refers to one of these routines gets its own definitions of the calls below, which stand
// before the C library's for the module too and hand on to them. Off until armed; not for use by
// several threads at once, except that calls on other threads pass while nothing is armed.
#pragma once

#include <sys/statvfs.h>

#include <cstdint>
#include <functional>
#include <string_view>

namespace jx::test {

inline constexpr const char *kPathCalls[] = {
    "stat64", "fstatat64", "fstat64",   "statvfs64", "unlink",   "unlinkat",    "rmdir", "rename",
    "mkdir",  "opendir",   "fdopendir", "open64",    "openat64", "readdir64_r", "close"};

// Runs `before` ahead of the n-th such call from now on, from 0; then the call fails with the
// errno, unless that is 0. Calls that `before` makes are not counted.
void arm_path_call(std::string_view call, uint32_t n, int error,
                   std::function<void()> before = nullptr);
// Ends that; true when the call came.
bool disarm_path_calls();

// Changes what statvfs64 reports, while it is set.
inline std::function<void(struct statvfs64 *)> amend_space;

}  // namespace jx::test
