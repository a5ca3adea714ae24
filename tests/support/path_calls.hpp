// System calls on paths that fail, or are preceded by something else, on request. A test program
// that refers to one of these routines gets its own definitions of the calls below, which stand
// before the C library's for the module too and hand on to them. Off until armed; not for use by
// several threads at once, except that calls on other threads pass while nothing is armed.
#pragma once

#include <cstdint>
#include <functional>

namespace jx::test {

#define JX_TEST_PATH_CALLS(X) \
  X(stat)                     \
  X(fstatat)                  \
  X(fstat)                    \
  X(statvfs)                  \
  X(unlinkat)                 \
  X(rmdir) X(rename) X(mkdir) X(opendir) X(fdopendir) X(open) X(openat) X(readdir) X(close)

#define JX_TEST_NAME(name) name,
enum class PathCall : uint32_t { JX_TEST_PATH_CALLS(JX_TEST_NAME) };
#undef JX_TEST_NAME

const char *path_call_name(PathCall call);

// The n-th such call from now on, from 0, fails with the errno.
void fail_path_call(PathCall call, uint32_t n, int error);
// Runs `before` ahead of the n-th such call from now on; the calls that it makes itself are not
// counted.
void precede_path_call(PathCall call, uint32_t n, std::function<void()> before);
// Ends either; true when the call came.
bool disarm_path_calls();

// Changes what statvfs64 reports: a fragment size, a block size and available blocks. Until
// disarmed.
void report_space(uint32_t fragment_bytes, uint32_t block_bytes, uint64_t available_blocks);

}  // namespace jx::test
