// From the errno of a failed system call to the status of an operation and a journal line.
#pragma once

#include <cerrno>
#include <cstddef>
#include <span>

#include "jx/module.h"

namespace [[gnu::visibility("hidden")]] jx {

// One row of a call's error table.
struct ErrnoRow {
  int error;        // errno value
  JXStatus status;  // what the operation answers
};

// Not defined: a table that reaches it does not compile.
void errno_rows_are_out_of_order();

// The error table of one system call in one use. An errno without a row gives `other`, which is
// reported to a journal first when `reports_other` is set.
struct ErrnoMap {
  // The rows ascend by errno, each errno once.
  consteval ErrnoMap(std::span<const ErrnoRow> errno_rows = {},
                     JXStatus other_status = JXWEM_E_SYSTEM, bool reports = true)
      : rows(errno_rows), other(other_status), reports_other(reports) {
    for (size_t i = 1; i < rows.size(); ++i) {
      if (rows[i - 1].error >= rows[i].error) errno_rows_are_out_of_order();
    }
  }

  std::span<const ErrnoRow> rows;
  JXStatus other;
  bool reports_other;
};

// Turns the errno of a failed call into the operation's status by the call's table and, where the
// table says so, writes the system's text to the journal (which may be null).
JXStatus status_of_errno(const ErrnoMap &map, int error, JXInstance *instance, JXJournal *journal);

// Tables that several routines share.

inline constexpr ErrnoRow kStatRows[] = {{ENOENT, JXWEM_E_NOTFOUND}, {EACCES, JXWEM_E_ACCESS}};
inline constexpr ErrnoRow kOpenDirectoryRows[] = {{ENOENT, JXWEM_E_NOTFOUND},
                                                  {EACCES, JXWEM_E_ACCESS},
                                                  {ENOTDIR, JXWEM_E_NOTFOUND},
                                                  {ENAMETOOLONG, JXWEM_E_NAMETOOLONG}};

inline constexpr ErrnoMap kStatErrors = {kStatRows};                    // information, existence
inline constexpr ErrnoMap kOpenDirectoryErrors = {kOpenDirectoryRows};  // opendir in every use

}  // namespace jx
