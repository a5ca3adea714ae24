// Lock words of "jxelm".
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>

#include "check/threads.hpp"
#include "check/with_file.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kShared = JXELM_LOCK_SHARED, kExclusive = JXELM_LOCK_EXCLUSIVE;
constexpr uint32_t kWait = JXELM_LOCK_WAIT;

template <void (*function)(Probe &, const Elm &)>
void if_lockable(Probe &probe, const Elm &elm) {
  {
    const OpenFile file(probe, elm, {names::kFile, O_RDWR, kExclusive});
    if (file.status() == JXELM_E_NOLOCKS) return probe.skip("the file system has no locks");
  }
  function(probe, elm);
}

// Runs a check with a file on a file system that has locks.
template <void (*function)(Probe &, const Elm &)>
constexpr auto with_locks = with_file<if_lockable<function>>;

void check_words(Probe &probe, const Elm &elm) {
  struct Row {
    uint32_t word;
    uint32_t flags;
  };
  for (const Row &row : {Row{0, O_RDONLY},
                         {kShared, O_RDONLY},
                         {kShared, O_RDWR},
                         {kExclusive, O_WRONLY},
                         {kExclusive, O_RDWR},
                         {kShared | kWait, O_RDONLY},
                         {kExclusive | kWait, O_RDWR}}) {
    const OpenFile file(probe, elm, {names::kFile, row.flags, row.word});
    if (!file) return probe.found("status 0x%x for word %u", file.status(), row.word);
  }
}

void check_wrong_words(Probe &probe, const Elm &elm) {
  struct Row {
    uint32_t word;
    uint32_t flags;
  };
  for (const Row &row : {Row{kShared, O_WRONLY},
                         {kExclusive, O_RDONLY},
                         {kShared | kWait, O_WRONLY},
                         {kExclusive | kWait, O_RDONLY},
                         {3, O_RDWR},
                         {4, O_RDWR},
                         {kWait, O_RDWR},
                         {16, O_RDWR}}) {
    const OpenFile file(probe, elm, {names::kByteName, row.flags | O_CREAT, row.word});
    if (file) return probe.found("an open file for word %u", row.word);
    if (!probe.expect_status("the word", file.status(), JXELM_E_BADARG)) return;
    if (size_of(probe.folder_fd, names::kByteName) >= 0) {
      return probe.found("a file that the refused open has made");
    }
  }
}

void check_pairs(Probe &probe, const Elm &elm) {
  struct Row {
    uint32_t first, second;
    bool is_refused;
  };
  for (const Row &row : {Row{kShared, kShared, false},
                         {0, kExclusive, false},
                         {kExclusive, 0, false},
                         {kShared, kExclusive, true},
                         {kExclusive, kShared, true},
                         {kExclusive, kExclusive, true}}) {
    OpenFile first(probe, elm, {names::kFile, O_RDWR, row.first});
    if (!expect_open(probe, first, "the first")) return;
    {
      const OpenFile second(probe, elm, {names::kFile, O_RDWR, row.second});
      const JXStatus due = row.is_refused ? JXELM_E_LOCKED : JX_OK;
      if (second.status() != due || !second == !row.is_refused) {
        return probe.found("status 0x%x for word %u while another has %u", second.status(),
                           row.second, row.first);
      }
    }
    if (!probe.expect_status("to close it", first.close(), JX_OK)) return;
    const OpenFile later(probe, elm, {names::kFile, O_RDWR, row.second});
    if (!expect_open(probe, later, "once the other is closed")) return;
  }
}

void check_content(Probe &probe, const Elm &elm) {
  const OpenFile first(probe, elm, {names::kFile, O_RDWR, kExclusive});
  if (!expect_open(probe, first, "the first")) return;
  const OpenFile second(probe, elm, {names::kFile, O_RDWR | O_TRUNC, kExclusive});
  if (second) return probe.found("an open file");
  const long size = size_of(probe.folder_fd, names::kFile);
  if (size != 3) probe.found("a size of %ld, not 3", size);
}

struct Shared {
  const Probe &probe;
  JXElm *elm;
  const JXOpenRequest &request;
  std::atomic<int> inside;
  std::atomic<bool> met;
  std::atomic<JXStatus> refused;
};

void open_and_wait(void *argument, uint32_t) {
  auto &shared = *static_cast<Shared *>(argument);
  for (int i = 0; i < 4; ++i) {
    static constexpr uint32_t kZeros[8] = {};
    JXStatus status = JX_OK;
    JXOpenFile *file =
        shared.elm->open_file(shared.elm, &shared.request, 1, kExclusive | kWait, nullptr, &status);
    if (!file) {
      shared.refused = status;
      return;
    }
    if (shared.inside.fetch_add(1) != 0) shared.met = true;
    pause_milliseconds(1);
    shared.inside.fetch_sub(1);
    file->close_file(file, kZeros, nullptr);
  }
}

void check_waiting(Probe &probe, const Elm &elm) {
  const Probe::Name path = name_in_folder(probe, names::kFile);
  const JXOpenRequest request = {path.chars, path.count, 0600, O_RDWR, {}};
  Shared shared = {probe, elm.get(), request, 0, false, JX_OK};
  if (!run_threads(open_and_wait, &shared)) return probe.skip("no threads to be had");
  if (shared.refused != JX_OK) return probe.found("status 0x%x", shared.refused.load());
  if (shared.met) probe.found("two threads had the file open at the same time");
}

// What a lock covers is asked of the system: a byte far beyond the end of the file.
void check_whole(Probe &probe, const Elm &elm) {
  const int fd = ::openat(probe.folder_fd, names::kFile, O_RDWR | O_CLOEXEC);
  const OpenFile file(probe, elm, {names::kFile, O_RDWR, kExclusive});
  if (!expect_open(probe, file, "the file")) return;
  struct flock far = {};
  far.l_type = F_RDLCK;
  far.l_start = 1 << 20;
  far.l_len = 1;
  if (fd < 0 || ::fcntl(fd, F_OFD_GETLK, &far) != 0)
    return probe.skip("the system cannot be asked");
  ::close(fd);
  if (far.l_type == F_UNLCK) probe.found("a lock that ends before byte %d", 1 << 20);
}

void check_fifo(Probe &probe, const Elm &elm) {
  if (::mkfifoat(probe.folder_fd, names::kFifo, 0600) != 0) return probe.skip("no FIFO to be made");
  const OpenFile first(probe, elm, {names::kFifo, O_RDWR, kExclusive});
  const OpenFile second(probe, elm, {names::kFifo, O_RDWR, kExclusive});
  if (expect_open(probe, first, "the first")) expect_open(probe, second, "the second");
}

// A process keeps the lock for a while and sends signals to the one that waits for it.
void check_signals(Probe &probe, const Elm &elm) {
  if (!probe.is_alone) return probe.skip("the program's own signals would be taken");
  struct sigaction nothing = {};  // without SA_RESTART
  nothing.sa_handler = [](int) {};
  ::sigaction(SIGUSR1, &nothing, nullptr);
  OpenFile first(probe, elm, {names::kFile, O_RDWR, kExclusive});
  if (!expect_open(probe, first, "the first")) return;
  const pid_t keeper = ::fork();
  if (keeper < 0) return probe.skip("no process to be had");
  if (keeper == 0) {  // with a copy of the descriptor
    for (int i = 0; i < 5; ++i) {
      pause_milliseconds(10);
      ::kill(::getppid(), SIGUSR1);
    }
    ::_exit(0);
  }
  probe.expect_status("to close it", first.close(), JX_OK);
  const OpenFile second(probe, elm, {names::kFile, O_RDWR, kExclusive | kWait});
  expect_open(probe, second, "the one that waits");
  ::waitpid(keeper, nullptr, 0);
}

constexpr Check kChecks[] = {
    {Slot::open_file, "lock words 0, 1, 2, 9 and 10 with flags that allow them", "an open file",
     guide::kLockWords, kFileSlots, with_locks<check_words>},
    {Slot::open_file, "lock words that there are not, or that the flags do not allow",
     "JXELM_E_BADARG before anything is opened", guide::kLockWords, kFileSlots,
     with_locks<check_wrong_words>},
    {Slot::open_file, "two openings with each pair of lock words",
     "JXELM_E_LOCKED where one is exclusive, until the close", guide::kLockWords, kFileSlots,
     with_locks<check_pairs>},
    {Slot::open_file, "O_TRUNC, while another opening has the lock", "the content stays",
     guide::kLockWords, kFileSlots, with_locks<check_content>},
    {Slot::open_file, "eight threads with lock word 10", "each waits for the lock and gets it",
     guide::kLockWords, kFileSlots, with_locks<check_waiting>},
    {Slot::open_file, "lock word 10, and signals during the wait", "the wait goes on",
     guide::kLockWords, kFileSlots, with_locks<check_signals>},
    {Slot::open_file, "how far a lock reaches", "the whole file", guide::kLockWords, kFileSlots,
     with_locks<check_whole>},
    {Slot::open_file, "a FIFO twice, with lock word 2", "an open file: no lock", guide::kLockWords,
     kFileSlots, with_locks<check_fifo>},
};

}  // namespace

std::span<const Check> lock_word_checks() { return kChecks; }

}  // namespace jxcheck
