// The table of faults: every call of the system and of the host that an operation makes, and what
// it leads to.
#pragma once

#include <cerrno>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "jx/wem.h"
#include "support/fault_host.hpp"
#include "support/syscalls.hpp"

namespace jx::test {

// ---- Answers by errno

inline constexpr JXStatus kSystem = JXWEM_E_SYSTEM;
inline constexpr JXStatus kFailed = JXWEM_E_FAILED;
inline constexpr JXStatus kMissing = JXWEM_E_NOTFOUND;
inline constexpr JXStatus kAccess = JXWEM_E_ACCESS;
inline constexpr JXStatus kNoPath = JXWEM_E_NOPATH;
inline constexpr JXStatus kTooLong = JXWEM_E_NAMETOOLONG;
inline constexpr JXStatus kInUse = JXWEM_E_INUSE;
inline constexpr JXStatus kFull = JXWEM_E_DISKFULL;

enum class Journal { stays_empty, gets_errno, gets_host_text };
using enum Journal;

// What one call of an operation leads to: the status by errno; every other errno gives `other` and,
// in the journal, the system's text for it or the host's.
struct Answers {
  std::map<JXStatus, std::set<int>> rows;
  JXStatus other = kSystem;
  Journal journal = gets_errno;
};

inline const Answers kGoesOn = {{}, JX_OK, stays_empty};
inline const Answers kOnlyReported = {{{JX_OK, {ENOENT, EACCES}}}, JX_OK};
inline const Answers kSilent = {{}, kSystem, stays_empty};
inline const Answers kSilentFailure = {{}, kFailed, stays_empty};
inline const Answers kNothingFound = {{}, kMissing, stays_empty};
inline const Answers kReported = {};
inline const Answers kReportedFailure = {{}, kFailed};

inline const Answers kStat = {{{kMissing, {ENOENT}}, {kAccess, {EACCES}}}};
inline const Answers kStatDirectory = {{{kNoPath, {ENOENT}}, {kAccess, {EACCES}}}};
inline const Answers kStatTarget = {{{JX_OK, {ENOENT}}, {kAccess, {EACCES}}}};
inline const Answers kStatMember = {{{kMissing, {ENOENT, EACCES}}}, kMissing};
inline const Answers kStatSpace = {
    {{kMissing, {ENOENT, ENOTDIR, ENOLINK}}, {kAccess, {EACCES}}, {kTooLong, {ENAMETOOLONG}}}};
inline const Answers kOpenDirectory = {
    {{kMissing, {ENOENT, ENOTDIR}}, {kAccess, {EACCES}}, {kTooLong, {ENAMETOOLONG}}}};
inline const Answers kRemove = {{{kAccess, {EPERM, EACCES, EROFS}},
                                 {kMissing, {ENOENT, ENOTDIR}},
                                 {kInUse, {ETXTBSY}},
                                 {JXWEM_E_NOTEMPTY, {ENOTEMPTY}}}};
// A directory that is not empty is emptied.
inline const Answers kRemoveFull = {{{kAccess, {EPERM, EACCES, EROFS}},
                                     {kMissing, {ENOENT, ENOTDIR}},
                                     {kInUse, {ETXTBSY}},
                                     {JX_OK, {ENOTEMPTY}}}};
inline const Answers kRename = {
    {{kAccess, {EPERM, EACCES, EROFS}}, {JX_E_NOMEM, {ENOMEM}}, {kFull, {ENOSPC}}}};
inline const Answers kMake = {{{kAccess, {EPERM, EACCES, EROFS}},
                               {kNoPath, {ENOENT, ENOTDIR}},
                               {JXWEM_E_EXISTS, {EEXIST}},
                               {kInUse, {ETXTBSY}},
                               {kFull, {ENOSPC}}}};
inline const Answers kCopyOpen = {
    {{kAccess, {EACCES, EROFS}}, {kNoPath, {ENOTDIR}}, {kInUse, {ETXTBSY}}}, kFailed};
inline const Answers kCopyRead = {{{JX_OK, {EINTR}}}, kFailed};
inline const Answers kCopyWrite = {{{JXWEM_E_NOTSUPPORTED, {ENXIO}}, {kFull, {ENOSPC}}}, kFailed};
inline const Answers kCopyClose = {
    {{JX_OK, {EINTR}}, {JXWEM_E_NOTSUPPORTED, {ENXIO}}, {kFull, {ENOSPC}}}, kFailed};
inline const Answers kWrite = {{{kFull, {EFBIG, ENOSPC, EDQUOT}}}, kSystem, stays_empty};
inline const Answers kFlush = {
    {{kSystem, {EIO}}, {JXWEM_E_NOHANDLE, {EBADF}}, {kFull, {ENOSPC}}}, kFailed, gets_errno};

// The host opens and closes files, and has a journal line for what the module calls a system error.
// A call that a signal interrupts is repeated, or has been done.
inline const Answers kHostStat = {{{JX_E_NOMEM, {ENOMEM}},
                                   {kMissing, {ENOENT}},
                                   {kAccess, {EPERM, EACCES, EROFS}},
                                   {kNoPath, {ENOTDIR}},
                                   {JXWEM_E_OPENREFUSED, {EISDIR}},
                                   {kInUse, {EAGAIN, EBUSY, ETXTBSY, EDEADLK}}},
                                  kSystem,
                                  gets_host_text};
inline const Answers kHostOpen = [] {
  Answers answers = kHostStat;
  answers.rows[JX_OK] = {EINTR};
  return answers;
}();
inline const Answers kHostClose = [] {
  Answers answers = {{}, JX_OK, gets_host_text};
  for (const auto &[status, errors] : kHostOpen.rows)
    answers.rows[JX_OK].insert(errors.begin(), errors.end());
  return answers;
}();

// ---- The table

#define WRITES "write|append|update|update a stream|use offsets"
#define RECORDS WRITES "|read|read a stream directly|use offsets of a stream"
#define REMOVALS "remove a tree|remove a link in a tree"
#define LISTS "member list|member names|directory list|list of names|list with attributes"

// The answers to a call of some operations (a list in bars): of its first calls in turn; the last
// is that of all later ones.
struct Row {
  const char *operations;
  Syscall call;
  std::vector<Answers> answers;
};

inline const Row kSystemCalls[] = {
    {"exist|information|member list", Syscall::stat64, {kStat}},
    {"is directory", Syscall::stat64, {kStatDirectory}},
    {"remove a file|remove a directory|" REMOVALS, Syscall::stat64, {kStatMember}},
    {"copy a file", Syscall::stat64, {kOnlyReported, kStat}},
    {"copy a tree",
     Syscall::stat64,
     {kStatTarget, kStat, kGoesOn, kStatTarget, kStat, kOnlyReported, kStat}},
    {"list with attributes", Syscall::stat64, {kOnlyReported}},
    {"list with attributes", Syscall::fstatat64, {kOnlyReported}},
    {"remove a link in a tree", Syscall::fstatat64, {kStatMember}},
    {REMOVALS, Syscall::fstat64, {kOpenDirectory}},
    {RECORDS, Syscall::fstat64, {kHostStat}},
    {"file system", Syscall::statvfs64, {kStatSpace}},
    {"make|copy a tree", Syscall::mkdir, {kMake}},
    {"rename", Syscall::rename, {kRename}},
    {"remove a file", Syscall::unlink, {kRemove}},
    {"remove a directory", Syscall::rmdir, {kRemove}},
    {REMOVALS, Syscall::rmdir, {kRemoveFull, kRemove}},
    {"remove a tree", Syscall::unlinkat, {kRemoveFull, kRemove}},
    {"remove a link in a tree", Syscall::unlinkat, {kRemove}},
    {REMOVALS, Syscall::openat64, {kOpenDirectory}},
    {REMOVALS, Syscall::fdopendir, {kOpenDirectory}},
    {"copy a tree|read a directory|" LISTS, Syscall::opendir, {kOpenDirectory}},
    {REMOVALS "|" LISTS, Syscall::readdir64_r, {kReported}},
    {"read a directory", Syscall::readdir64_r, {kSilent}},
    {"copy a tree", Syscall::readdir64_r, {kGoesOn}},
    {"copy a tree|read a directory|" REMOVALS "|" LISTS, Syscall::closedir, {kGoesOn}},
    {"copy a file|copy a tree", Syscall::open64, {kCopyOpen}},
    {"copy a file|copy a tree", Syscall::read, {kCopyRead}},
    {"copy a file|copy a tree", Syscall::write, {kCopyWrite}},
    {"copy a file|copy a tree", Syscall::close, {kCopyClose, kGoesOn}},
    {RECORDS, Syscall::open64, {kHostOpen}},
    {RECORDS, Syscall::close, {kHostClose}},
    {WRITES, Syscall::write, {kWrite}},
    {WRITES "|use offsets of a stream", Syscall::fsync, {kFlush}},
    {"use offsets|use offsets of a stream", Syscall::pwrite64, {kWrite}},
    {"use offsets", Syscall::pread64, {kSilent}},
    {"read|update|use offsets", Syscall::read, {kSilent}},
    // When the read that replaces a byte-order mark's bytes fails, the bytes before it are
    // delivered; the next call reads them again.
    {"read a stream directly", Syscall::read, {kSilent, kGoesOn, kSilent}},
    {"update a stream", Syscall::read, {kSilent, kGoesOn}},
    {"use offsets of a stream", Syscall::pread64, {kSilent, kGoesOn}},
    {"append", Syscall::lseek64, {kGoesOn}},
    {"read|update|update a stream|use offsets", Syscall::lseek64, {kReportedFailure}},
    {"update|update a stream", Syscall::ftruncate64, {kReported}},
    {"write", Syscall::ftruncate64, {kHostOpen}},
    {"build|expand a relative path|create a name", Syscall::getcwd, {kSilentFailure}},
    {"expand a user", Syscall::getpwnam_r, {kNothingFound}},
    {"expand without HOME", Syscall::getpwuid_r, {kNothingFound}},
    {"time of day", Syscall::localtime_r, {kGoesOn}},
};

// The statuses that a failing call of the host may lead to. The first row that fits counts; no
// operations: all others.
struct HostRow {
  const char *operations;
  Calls calls;
  std::set<JXStatus> statuses;
};

inline const HostRow kHostCalls[] = {
    // A host without these extensions, or whose name service fails, still gets an instance.
    {"start", calls(Call::get_host_name, Call::destroy_transcoder), {JX_OK}},
    {"start", calls(Call::load_extension), {JX_OK, JX_E_NOMEM}},
    {"start", kAllFailing, {JX_E_NOMEM}},
    // A member whose information fails stays in the list.
    {"list with attributes", calls(Call::pool_allocate), {JX_E_NOMEM, JX_OK}},
    {"list with attributes", calls(Call::transcode), {kFailed, kFaultStatus, JX_OK}},
    {"", calls(Call::create_pool, Call::pool_allocate), {JX_E_NOMEM}},
    {"", calls(Call::create_table, Call::table_set_entry_destructor), {JXWEM_E_NOHANDLE}},
    // A member that its list refuses is left out.
    {"member list|member names", calls(Call::table_insert), {kFailed, JX_OK}},
    {"", calls(Call::table_insert), {kFailed}},
    {"build|create a name", calls(Call::transcode), {JXStatus{1}, kFailed}},
    // The walk of a copy ends with the first entry that cannot be read, as at the end.
    {"copy a tree", calls(Call::transcode), {kFailed, JX_OK}},
    {"start|expand a relative path|expand a user|expand without HOME|exist|is "
     "directory|information|"
     "file system|make|rename|remove a file|remove a directory|copy a file",
     calls(Call::transcode),
     {kFailed}},
    // A name expanded, or a record or an entry converted.
    {"", calls(Call::transcode), {kFailed, kFaultStatus}},
    {"", calls(Call::create_lock, Call::create_transcoder), {kFailed}},
    {"",
     calls(Call::measure_conversion, Call::encoding_info, Call::lock_acquire, Call::lock_release,
           Call::get_option),
     {kFaultStatus}},
    // While the control strings are made it is a failure; at close it is ignored.
    {"", calls(Call::destroy_transcoder), {kFaultStatus, JX_OK}},
    {"", calls(Call::open_file), {kSystem}},
    {"", calls(Call::close_file), {JX_OK}},
};

// What the module imports and cannot fail: given what it passes, or at all.
inline constexpr std::string_view kCannotFail[] = {
    "memchr",           "memcmp",           "memcpy",       "__memcpy_chk",    "memmove",
    "memset",           "strchrnul",        "strlen",       "strnlen",         "wcslen",
    "wcsnlen",          "strerror",         "getenv",       "getuid",          "dirfd",
    "__errno_location", "__stack_chk_fail", "gettimeofday", "__gettimeofday64"};

}  // namespace jx::test
