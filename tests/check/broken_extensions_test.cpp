// Kernels with broken options, extensions and openings.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

#include "check/broken_slot.hpp"

namespace jx::test {
namespace {

int closed_fd = -1;  // a descriptor that is closed once more

// An open_file slot that changes the file that was opened.
template <auto after>
JXOpenFile *open_then(JXElm *self, const JXOpenRequest *request, uint32_t one, uint32_t word,
                      JXJournal *journal, JXStatus *status) {
  JXOpenFile *file = real<JXElm>.open_file(self, request, one, word, journal, status);
  if (file) after(*file);
  return file;
}

// Locks every file that it opens, also a FIFO, and waits until the first signal.
JXOpenFile *open_and_lock(JXElm *self, const JXOpenRequest *request, uint32_t one, uint32_t word,
                          JXJournal *journal, JXStatus *status) {
  JXOpenFile *file = real<JXElm>.open_file(self, request, one, 0, journal, status);
  struct flock lock = {};
  lock.l_type = word & JXELM_LOCK_SHARED ? F_RDLCK : F_WRLCK;
  const int how = word & JXELM_LOCK_WAIT ? F_OFD_SETLKW : F_OFD_SETLK;
  if (!file || word == 0 || fcntl(*file->descriptor, how, &lock) == 0) return file;
  file->close_file(file, nullptr, nullptr);
  *status = JXELM_E_LOCKED;
  return nullptr;
}

const BrokenSlot kExtensions[] = {
    {"an option of eight bytes",
     [] {
       replace<&JXHost::get_option>([](JXHost *h, const JXChar *name, uint32_t chars, uint32_t type,
                                       void *buffer, uint32_t *size) {
         static_cast<char *>(buffer)[7] = 0;
         return real<JXHost>.get_option(h, name, chars, type, buffer, size);
       });
     },
     "handle.get_option: \"host.process_id\", type 3; came: 1 bytes beyond"},
    {"every option", [] { replace<&JXHost::get_option>([](auto...) { return JX_OK; }); },
     "handle.get_option: an option that there is not; came: an unknown name: status 0"},
    {"extensions by their start",
     [] {
       replace<&JXHost::load_extension>([](JXHost *h, const JXChar *name, uint32_t n, JXOwner) {
         return real<JXHost>.load_extension(h, name, n == 6 && name[2] == 'e' ? 5 : n, nullptr);
       });
     },
     "handle.load_extension: names of no extension; came: an extension for \"jxelms\""},
    {"a host name without a limit",
     [] {
       replace<&JXItcp::get_host_name>([](JXItcp *, JXChar *buffer, uint32_t *chars, uint32_t) {
         std::fill_n(buffer, *chars = std::max(*chars, 3u), 'h');
         return JX_OK;
       });
     },
     "jxitcp.get_host_name: the name of the machine, form 2; came: 8 bytes beyond"},
    {"a host name of zeros",
     [] {
       replace<&JXItcp::get_host_name>([](JXItcp *, JXChar *buffer, uint32_t *chars, uint32_t) {
         std::fill_n(buffer, *chars, 0);
         return JX_OK;
       });
     },
     "jxitcp.get_host_name: the name of the machine, form 2; came: a zero in the name"},
    {"descriptors that programs inherit",
     [] {
       replace<&JXElm::open_file>(
           open_then<[](JXOpenFile &file) { fcntl(*file.descriptor, F_SETFD, 0); }>);
     },
     "jxelm.open_file: a descriptor; came: a descriptor without FD_CLOEXEC"},
    {"one descriptor for all",
     [] {
       replace<&JXElm::open_file>(open_then<[](JXOpenFile &file) {
         static int last;
         last = *file.descriptor;
         file.descriptor = &last;
       }>);
     },
     "jxelm.open_file: two files at once; came: another file in the first"},
    {"links that are not followed",
     [] {
       replace<&JXElm::open_file>(
           open_with<[](JXOpenRequest &request, uint32_t &) { request.flags |= O_NOFOLLOW; }>);
     },
     "jxelm.open_file: a link to a file; came: the link: null and status 0x80ffe00a"},
    {"a descriptor left by a refusal",
     [] {
       replace<&JXElm::open_file>([](JXElm *elm, const JXOpenRequest *request, uint32_t one,
                                     uint32_t word, JXJournal *journal, JXStatus *status) {
         JXOpenFile *file = real<JXElm>.open_file(elm, request, one, word, journal, status);
         if (*status == JXELM_E_LOCKED && dup(STDIN_FILENO) < 0) _exit(4);
         return file;
       });
     },
     "jxelm.open_file: opens that are refused; came: \"file\" has left one open"},
    {"a lock of the first byte",
     [] {
       replace<&JXElm::open_file>(open_then<[](JXOpenFile &file) {
         struct flock rest = {};
         rest.l_type = F_UNLCK;
         rest.l_start = 1;
         fcntl(*file.descriptor, F_OFD_SETLK, &rest);
       }>);
     },
     "jxelm.open_file: how far a lock reaches; came: a lock that ends before byte 1048576"},
    {"a wait that a signal ends", [] { replace<&JXElm::open_file>(open_and_lock); },
     "jxelm.open_file: lock word 10, and signals during the wait; came: the one that waits: null"},
    {"a lock of a FIFO", [] { replace<&JXElm::open_file>(open_and_lock); },
     "jxelm.open_file: a FIFO twice, with lock word 2; came: the second: null"},
    {"flags that are lost",
     [] {
       replace<&JXElm::open_file>(open_with<[](JXOpenRequest &request, uint32_t &) {
         request.flags &= ~static_cast<uint32_t>(O_APPEND);
       }>);
     },
     "jxelm.open_file: POSIX flags; came: flags 0x2 for 0x402"},
    {"any lock word",
     [] { replace<&JXElm::open_file>(open_with<[](auto &, uint32_t &word) { word &= 11; }>); },
     "flags do not allow; came: an open file for word 4"},
    {"its own permissions",
     [] {
       replace<&JXElm::open_file>(
           open_with<[](JXOpenRequest &request, uint32_t &) { request.permissions = 0666; }>);
     },
     "jxelm.open_file: a new file with permissions 0660 and a mask of 022; came: permissions 0644"},
    {"no lock",
     [] { replace<&JXElm::open_file>(open_with<[](auto &, uint32_t &word) { word = 0; }>); },
     "two openings with each pair of lock words; came: status 0x0 for word 2 while another has 1"},
    {"a lock that is not waited for",
     [] { replace<&JXElm::open_file>(open_with<[](auto &, uint32_t &word) { word &= 7; }>); },
     "jxelm.open_file: eight threads with lock word 10; came: status 0x80ffe00f"},
    {"one status for all",
     [] {
       replace<&JXElm::open_file>([](JXElm *elm, const JXOpenRequest *request, uint32_t one,
                                     uint32_t word, JXJournal *journal, JXStatus *status) {
         JXOpenFile *file = real<JXElm>.open_file(elm, request, one, word, journal, status);
         if (!file) *status = JXELM_E_SYSTEM;
         return file;
       });
     },
     "jxelm.open_file: a file that there is not; came: null and status 0x80ffe002; promised: "
     "JXELM_E_NOTFOUND"},
    {"a status that is not stored",
     [] {
       replace<&JXElm::open_file>([](JXElm *elm, const JXOpenRequest *request, uint32_t one,
                                     uint32_t word, JXJournal *journal, JXStatus *) {
         JXStatus ignored;
         return real<JXElm>.open_file(elm, request, one, word, journal, &ignored);
       });
     },
     "jxelm.open_file: a new file; came: a new file: an open file and status 0xffffffff"},
    {"content that goes before the lock",
     [] {
       replace<&JXElm::open_file>(open_with<[](JXOpenRequest &request, uint32_t &) {
         const std::string path(request.path, request.path + request.path_chars);
         if (request.flags & O_TRUNC && truncate(path.c_str(), 0) != 0) _exit(4);
       }>);
     },
     "jxelm.open_file: O_TRUNC, while another opening has the lock; came: a size of 0, not 3"},
    {"a descriptor that stays open",
     [] { replace<&JXOpenFile::close_file>([](auto...) { return JX_OK; }); },
     "open file.close_file: a file; came: descriptor "},
    {"a descriptor that is closed twice at once",
     [] {
       replace<&JXOpenFile::close_file>([](JXOpenFile *file, const uint32_t *zeros, JXJournal *j) {
         const int fd = *file->descriptor;
         const JXStatus status = real<JXOpenFile>.close_file(file, zeros, j);
         syscall(SYS_close, fd);
         return status;
       });
     },
     "open file.close_file: a FIFO, while another thread takes the lowest free descriptor; came: "},
    {"a descriptor that is closed twice",
     [] {
       replace<&JXOpenFile::close_file>([](JXOpenFile *file, const uint32_t *zeros, JXJournal *j) {
         if (closed_fd < 0) closed_fd = *file->descriptor;
         return real<JXOpenFile>.close_file(file, zeros, j);
       });
       replace<&JXElm::release_extension>([](JXExtension *elm) {
         close(closed_fd);
         return real<JXElm>.release_extension(elm);
       });
     },
     "open file.close_file: a file whose descriptor is taken again; came: a descriptor of the "
     "program was closed later"},
};

INSTANTIATE_TEST_SUITE_P(Extensions, BrokenKernel, testing::ValuesIn(kExtensions), name_of_slot);

}  // namespace
}  // namespace jx::test
