// System calls on paths that fail, or run other code first, on request. A test program that uses
// these routines gets its own definitions of the calls below, which replace the C library's for the
// module too and forward to them. Off until armed; for one thread at a time, though other threads'
// calls pass while nothing is armed.
#pragma once

#include <sys/statvfs.h>

#include <cstdint>
#include <functional>
#include <string_view>

namespace jx::test {

inline constexpr const char *kPathCalls[] = {
    "stat64", "fstatat64", "fstat64",   "statvfs64", "unlink",   "unlinkat",    "rmdir", "rename",
    "mkdir",  "opendir",   "fdopendir", "open64",    "openat64", "readdir64_r", "close"};

// Runs `before` ahead of the n-th such call from now on, counted from 0; then the call fails with
// the errno, unless that is 0. Calls inside `before` are not counted.
void arm_path_call(std::string_view call, uint32_t n, int error,
                   std::function<void()> before = nullptr);
// Disarms; true when the call was made.
bool disarm_path_calls();

// If set, changes the result of statvfs64.
inline std::function<void(struct statvfs64 *)> amend_space;

}  // namespace jx::test
