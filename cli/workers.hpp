// Work on many things at once.
#pragma once

#include <cstddef>
#include <functional>

namespace cli {

// Calls work once for each index below count, on up to so many threads, which have signals blocked,
// and done on the calling thread, in order, not long after. work is told which of the threads it is
// on, from 0, and may not throw. Where the system has no threads left, fewer do the work.
void work_in_order(size_t count, size_t threads,
                   const std::function<void(size_t thread, size_t index)> &work,
                   const std::function<void(size_t index)> &done);

// How many processors this process may use.
size_t processor_count();

}  // namespace cli
