// The descriptors of "jxelm": one for each open file, closed once and not inherited.
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <semaphore.h>
#include <unistd.h>

#include "check/threads.hpp"
#include "check/with_file.hpp"

namespace jxcheck {

namespace {

// Tells whether a descriptor is open on what a name of the folder is.
bool is_on(int fd, const Probe &probe, const char *name) {
  struct stat seen, due;
  return ::fstat(fd, &seen) == 0 && ::fstatat(probe.folder_fd, name, &due, 0) == 0 &&
         seen.st_ino == due.st_ino && seen.st_dev == due.st_dev;
}

void check_exec(Probe &probe, const Elm &elm) {
  const OpenFile file(probe, elm, {names::kFile, O_RDONLY});
  if (!expect_open(probe, file, "the file")) return;
  if ((::fcntl(file.fd(), F_GETFD) & FD_CLOEXEC) == 0)
    probe.found("a descriptor without FD_CLOEXEC");
}

void check_two(Probe &probe, const Elm &elm) {
  const OpenFile first(probe, elm, {names::kFile, O_RDONLY});
  const OpenFile second(probe, elm, {names::kByteName, O_RDWR | O_CREAT});
  if (!expect_open(probe, first, "the first") || !expect_open(probe, second, "the second")) return;
  if (!is_on(first.fd(), probe, names::kFile)) probe.found("another file in the first");
  if (!is_on(second.fd(), probe, names::kByteName)) probe.found("another file in the second");
}

void check_link(Probe &probe, const Elm &elm) {
  if (::symlinkat(names::kFile, probe.folder_fd, names::kLink) != 0) return probe.skip("no link");
  const OpenFile file(probe, elm, {names::kLink, O_RDONLY});
  if (!expect_open(probe, file, "the link")) return;
  if (!is_on(file.fd(), probe, names::kFile)) probe.found("another file");
}

// The number that the next descriptor gets.
int next_fd() {
  const int fd = ::dup(STDIN_FILENO);
  if (fd >= 0) ::close(fd);
  return fd;
}

void check_refused(Probe &probe, const Elm &elm) {
  if (::mkdirat(probe.folder_fd, names::kFolder, 0700) != 0) return probe.skip("no directory");
  const OpenFile locked(probe, elm, {names::kFile, O_RDWR, JXELM_LOCK_EXCLUSIVE});
  const int before = next_fd();
  for (const Opening &opening : {Opening{names::kFolder, O_RDONLY}, Opening{"missing", O_RDONLY},
                                 Opening{names::kFile, O_RDWR, JXELM_LOCK_EXCLUSIVE}}) {
    { const OpenFile refused(probe, elm, opening); }
    if (next_fd() != before) return probe.found("\"%s\" has left one open", opening.name);
  }
}

// A thread that waits for the close of a FIFO's writer and then takes the lowest free number. Both
// threads have one processor: the one that waits interrupts the one that closes.
struct Race {
  Probe &probe;
  const Elm &elm;
  int fifo_fd;  // to read
  sem_t go, taken;
  int taken_fd;
};

constexpr uint32_t kRaceRounds = 10;  // for each second of the check
constexpr int kLongMilliseconds = 1000;

void take(Race &race) {
  for (uint32_t i = 0; i < kRaceRounds * race.probe.seconds; ++i) {
    ::sem_wait(&race.go);
    struct pollfd closed = {race.fifo_fd, 0, 0};
    ::poll(&closed, 1, kLongMilliseconds);
    race.taken_fd = ::dup(race.probe.folder_fd);
    ::sem_post(&race.taken);
  }
}

void open_and_close(Race &race) {
  for (uint32_t i = 0; i < kRaceRounds * race.probe.seconds; ++i) {
    {
      OpenFile file(race.probe, race.elm, {names::kFifo, O_WRONLY});
      if (race.probe.is_clean()) expect_open(race.probe, file, "the FIFO");
      ::sem_post(&race.go);
      if (race.probe.is_clean()) pause_milliseconds(1);
    }
    ::sem_wait(&race.taken);
    if (is_on(race.taken_fd, race.probe, ".")) {
      ::close(race.taken_fd);
    } else {
      race.probe.found("a descriptor that another thread had just made was closed");
    }
  }
}

void run_race(void *argument, uint32_t number) {
  auto &race = *static_cast<Race *>(argument);
  if (number == 0) open_and_close(race);
  if (number == 1) take(race);
}

void check_race(Probe &probe, const Elm &elm) {
  Race race = {probe, elm, -1, {}, {}, -1};
  if (::mkfifoat(probe.folder_fd, names::kFifo, 0600) == 0) {
    race.fifo_fd = ::openat(probe.folder_fd, names::kFifo, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  }
  cpu_set_t before, one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<unsigned>(::sched_getcpu()), &one);
  if (race.fifo_fd < 0 || ::sched_getaffinity(0, sizeof before, &before) != 0 ||
      ::sched_setaffinity(0, sizeof one, &one) != 0) {
    return probe.skip("no FIFO or no processor to be had");
  }
  ::sem_init(&race.go, 0, 0);
  ::sem_init(&race.taken, 0, 0);
  if (!run_threads(run_race, &race)) probe.skip("no threads to be had");
  ::sched_setaffinity(0, sizeof before, &before);
  ::close(race.fifo_fd);
}

constexpr Check kChecks[] = {
    {Slot::open_file, "a descriptor", "it is closed when a program is executed", guide::kElm,
     kFileSlots, with_file<check_exec>},
    {Slot::open_file, "two files at once", "a descriptor for each", guide::kElm, kFileSlots,
     with_file<check_two>},
    {Slot::open_file, "a link to a file", "that file", guide::kSecurity, kFileSlots,
     with_file<check_link>},
    {Slot::open_file, "opens that are refused", "no descriptor stays open", guide::kElm, kFileSlots,
     with_file<check_refused>},
    {Slot::close_file, "a FIFO, while another thread takes the lowest free descriptor",
     "closed exactly once", guide::kElm, kFileSlots, with_file<check_race>},
};

}  // namespace

std::span<const Check> descriptor_checks() { return kChecks; }

}  // namespace jxcheck
