// The statuses of "jxelm" that a check can provoke.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "check/folder.hpp"
#include "check/isolation.hpp"
#include "check/objects.hpp"

namespace jxcheck {

namespace {

// How the file system is prepared; false: it cannot be done here.
using Prepare = bool (*)(const Probe &);

bool nothing(const Probe &) { return true; }
bool put(const Probe &probe) { return put_file(probe.folder_fd); }
bool put_folder(const Probe &probe) {
  return ::mkdirat(probe.folder_fd, names::kFolder, 0700) == 0;
}
bool put_link(const Probe &probe) {
  return ::symlinkat(names::kLink, probe.folder_fd, names::kLink) == 0;
}
bool put_fifo(const Probe &probe) { return ::mkfifoat(probe.folder_fd, names::kFifo, 0600) == 0; }

// The superuser may open anything, so the process gives that up.
bool put_forbidden(const Probe &probe) {
  constexpr id_t kNobody = 65534;
  if (!put_file(probe.folder_fd, 0)) return false;
  return ::geteuid() != 0 || (probe.is_alone && ::setresuid(kNobody, kNobody, kNobody) == 0);
}

bool use_up_descriptors(const Probe &probe) {
  const struct rlimit none = {0, 0};
  return put_file(probe.folder_fd) && probe.is_alone && ::setrlimit(RLIMIT_NOFILE, &none) == 0;
}

// The signal about the other open would end the process.
bool take_lease(const Probe &probe) {
  if (!probe.is_alone || !put_file(probe.folder_fd)) return false;
  ::signal(SIGIO, SIG_IGN);
  const int fd = ::openat(probe.folder_fd, names::kFile, O_RDWR | O_NOFOLLOW | O_CLOEXEC);
  return fd >= 0 && ::fcntl(fd, F_SETLEASE, F_WRLCK) == 0;
}

struct Case {
  const char *asked;
  Opening opening;
  Prepare prepare;
  JXStatus due;
  const char *due_name;
};

#define JXCHECK_DUE(status) status, #status
constexpr char kLongName[] =
    "a23456789b123456789c123456789d123456789e123456789f123456789g123456789h123456789i123456789"
    "j123456789k123456789l123456789m123456789n123456789o123456789p123456789q123456789r123456789"
    "s123456789t123456789u123456789v123456789w123456789x123456789y123456789z123456789";

constexpr Case kCases[] = {
    {"a file that there is not", {"missing", O_RDONLY}, nothing, JXCHECK_DUE(JXELM_E_NOTFOUND)},
    {"a new file in a directory that there is not",
     {"missing/file", O_RDWR | O_CREAT},
     nothing,
     JXCHECK_DUE(JXELM_E_NOPATH)},
    {"a file below a file", {"file/file", O_RDONLY}, put, JXCHECK_DUE(JXELM_E_NOPATH)},
    {"a file without permissions",
     {names::kFile, O_RDONLY},
     put_forbidden,
     JXCHECK_DUE(JXELM_E_ACCESS)},
    {"a directory, for reading",
     {names::kFolder, O_RDONLY},
     put_folder,
     JXCHECK_DUE(JXELM_E_REFUSED)},
    {"a directory, for writing",
     {names::kFolder, O_RDWR},
     put_folder,
     JXCHECK_DUE(JXELM_E_REFUSED)},
    {"a link to itself", {names::kLink, O_RDONLY}, put_link, JXCHECK_DUE(JXELM_E_LOOP)},
    {"O_EXCL, and the file is there",
     {names::kFile, O_RDWR | O_CREAT | O_EXCL},
     put,
     JXCHECK_DUE(JXELM_E_EXISTS)},
    {"a FIFO that nobody reads",
     {names::kFifo, O_WRONLY | O_NONBLOCK},
     put_fifo,
     JXCHECK_DUE(JXELM_E_NODEVICE)},
    {"a file, with no descriptor left",
     {names::kFile, O_RDONLY},
     use_up_descriptors,
     JXCHECK_DUE(JXELM_E_LIMIT)},
    {"a file that another opening has a lease on",
     {names::kFile, O_RDWR | O_NONBLOCK},
     take_lease,
     JXCHECK_DUE(JXELM_E_BUSY5)},
    {"a name of 270 bytes", {kLongName, O_RDONLY}, nothing, JXCHECK_DUE(JXELM_E_TOOLONG)},
    {"access mode 3", {names::kFile, O_ACCMODE}, put, JXCHECK_DUE(JXELM_E_BADARG)},
    {"O_TRUNC with O_RDONLY", {names::kFile, O_RDONLY | O_TRUNC}, put, JXCHECK_DUE(JXELM_E_BADARG)},
    {"permissions 02600",
     {names::kFile, O_RDWR | O_CREAT, JXELM_LOCK_NONE, 02600},
     put,
     JXCHECK_DUE(JXELM_E_BADARG)},
};

void expect_refused(Probe &probe, const OpenFile &file, JXStatus due) {
  if (file) return probe.found("an open file");
  if (file.status() != due) probe.found("null and status 0x%x", file.status());
}

template <size_t index>
void check_case(Probe &probe) {
  const Case &row = kCases[index];
  if (probe.folder_fd < 0) return probe.skip("no folder was given");
  const Elm elm(probe);
  if (!elm) return;
  if (row.prepare == use_up_descriptors && is_sanitized()) {
    return probe.skip("a sanitizer needs descriptors itself");
  }
  if (!row.prepare(probe)) return probe.skip("it cannot be arranged here");
  const OpenFile file(probe, elm, row.opening);
  expect_refused(probe, file, row.due);
}

void check_characters(Probe &probe) {
  const Elm elm(probe);
  if (!elm) return;
  for (const JXChar odd : {JXChar{0}, JXChar{0x100}, JXChar{0x20AC}}) {
    const JXChar path[] = {'/', 'j', 'x', odd, 'c'};
    const OpenFile file(elm, {path, static_cast<uint32_t>(std::size(path)), 0600, O_RDONLY, {}},
                        JXELM_LOCK_NONE);
    expect_refused(probe, file, JXELM_E_REFUSED);
  }
}

template <size_t... index>
constexpr auto make_checks(std::index_sequence<index...>) {
  return std::array<Check, sizeof...(index) + 1>{
      Check{Slot::open_file, kCases[index].asked, kCases[index].due_name, guide::kStatuses,
            kFileSlots, check_case<index>}...,
      Check{Slot::open_file, "a path with a character that is 0, or above 255", "JXELM_E_REFUSED",
            guide::kStatuses, kElmSlots, check_characters}};
}

constexpr auto kChecks = make_checks(std::make_index_sequence<std::size(kCases)>());

}  // namespace

std::span<const Check> open_status_checks() { return kChecks; }

}  // namespace jxcheck
