// The lookup in an error table.
#include "posix/errno_map.hpp"

#include <algorithm>

#include "jx/exports/posix.h"

namespace jx {

JXStatus status_of_errno(const ErrnoMap &map, int error, JXInstance *instance, JXJournal *journal) {
  const auto row = std::ranges::lower_bound(map.rows, error, {}, &ErrnoRow::error);
  if (row != map.rows.end() && row->error == error) return row->status;
  if (map.reports_other) bkwemerror(instance, error, journal);
  return map.other;
}

}  // namespace jx
