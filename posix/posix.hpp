// The POSIX layer's contract with its neighbours: how errno becomes a status and a journal line.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>

#include "jx/wem.h"
#include "kernel/kernel.hpp"

namespace jx {

// One row of a call's error table: what an errno means there.
struct ErrnoRow {
  int error;        // errno value
  JXStatus status;  // what the operation answers
};

// The error table of one system call in one use. An errno without a row gives `other`, which is
// reported to a journal first when `reports_other` is set.
struct ErrnoMap {
  std::span<const ErrnoRow> rows;
  JXStatus other = JXWEM_E_SYSTEM;
  bool reports_other = true;
};

// Tells at compile time that the rows are in ascending order of errno, each errno once.
constexpr bool is_ordered(std::span<const ErrnoRow> rows) {
  for (size_t i = 1; i < rows.size(); ++i) {
    if (rows[i - 1].error >= rows[i].error) return false;
  }
  return true;
}

// Turns the errno of a failed call into the operation's status by the call's table and, where the
// table says so, writes the system's text to the journal (which may be null).
JXStatus status_of_errno(const ErrnoMap &map, int error, JXInstance *instance, JXJournal *journal);

}  // namespace jx
