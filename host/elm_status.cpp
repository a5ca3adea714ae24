// The tables from the errno of a failed call to a status of "jxelm".
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <span>

#include "host/host.hpp"

namespace jxhost {

namespace {

struct Row {
  int error;  // errno value
  JXStatus status;
};

constexpr bool is_ordered(std::span<const Row> rows) {
  return std::ranges::adjacent_find(rows, std::ranges::greater_equal{}, &Row::error) == rows.end();
}

// open, fstat, ftruncate and close. ENOENT is NOPATH instead when the directory is missing.
constexpr Row kOpenRows[] = {
    {EPERM, JXELM_E_ACCESS},     {ENOENT, JXELM_E_NOTFOUND},      {ENXIO, JXELM_E_NODEVICE},
    {EAGAIN, JXELM_E_BUSY5},     {ENOMEM, JXELM_E_NOMEM},         {EACCES, JXELM_E_ACCESS},
    {EBUSY, JXELM_E_BUSY2},      {EEXIST, JXELM_E_EXISTS},        {ENODEV, JXELM_E_NODEVICE},
    {ENOTDIR, JXELM_E_NOPATH},   {EISDIR, JXELM_E_REFUSED},       {EINVAL, JXELM_E_BADARG},
    {ENFILE, JXELM_E_LIMIT},     {EMFILE, JXELM_E_LIMIT},         {ETXTBSY, JXELM_E_BUSY1},
    {EFBIG, JXELM_E_TOOBIG},     {ENOSPC, JXELM_E_NOSPACE},       {EROFS, JXELM_E_ACCESS},
    {EDEADLK, JXELM_E_BUSY3},    {ENAMETOOLONG, JXELM_E_TOOLONG}, {ELOOP, JXELM_E_LOOP},
    {EOVERFLOW, JXELM_E_TOOBIG}, {EDQUOT, JXELM_E_NOSPACE},
};
static_assert(is_ordered(kOpenRows));

// fcntl for a lock.
constexpr Row kLockRows[] = {
    {EAGAIN, JXELM_E_LOCKED},  {ENOMEM, JXELM_E_NOMEM},       {EACCES, JXELM_E_LOCKED},
    {EINVAL, JXELM_E_NOLOCKS}, {EDEADLK, JXELM_E_BUSY3},      {ENOLCK, JXELM_E_BUSY4},
    {ENOSYS, JXELM_E_NOLOCKS}, {EOPNOTSUPP, JXELM_E_NOLOCKS},
};
static_assert(is_ordered(kLockRows));

JXStatus find(std::span<const Row> rows, int error) {
  const auto row = std::ranges::lower_bound(rows, error, {}, &Row::error);
  return row != rows.end() && row->error == error ? row->status : JXELM_E_SYSTEM;
}

}  // namespace

JXStatus elm_status_of_open(int error) { return find(kOpenRows, error); }

JXStatus elm_status_of_lock(int error) { return find(kLockRows, error); }

}  // namespace jxhost
