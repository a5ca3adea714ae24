/* Preloaded into jxfile: the call number FAIL_AT, from 0, of the routine FAIL_CALL of the C library
   fails with the errno FAIL_ERRNO, once, and makes the file FAIL_MARK. Just before each call of
   RACE_CALL somebody else makes the file RACE_NAME. Each call of SLOW_CALL takes ten milliseconds.
   What LOOSE_CALL makes is open to everybody, as if somebody else had made it.
 */
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

static const char *failing, *mark, *racing, *rival, *slow, *loose;
static int calls_left, error;

__attribute__((constructor)) static void start(void) {
  const char *at = getenv("FAIL_AT"), *number = getenv("FAIL_ERRNO");
  failing = getenv("FAIL_CALL");
  mark = getenv("FAIL_MARK");
  racing = getenv("RACE_CALL");
  rival = getenv("RACE_NAME");
  slow = getenv("SLOW_CALL");
  loose = getenv("LOOSE_CALL");
  calls_left = at ? atoi(at) : 0;
  error = number ? atoi(number) : EIO;
}

static void make(const char *name) {
  syscall(SYS_close, syscall(SYS_openat, AT_FDCWD, name, O_WRONLY | O_CREAT, 0600));
}

static int fails(const char *name) {
  if (racing && strcmp(name, racing) == 0) make(rival);
  if (slow && strcmp(name, slow) == 0) usleep(10000);
  if (!failing || strcmp(name, failing) != 0 || calls_left-- != 0) return 0;
  if (mark) make(mark);
  errno = error;
  return 1;
}

/* A file that jxfile opens is not inherited by programs that a module or a host starts. */
static void require_close_on_exec(const char *name, long second, long third) {
  const int is_at = strcmp(name, "openat64") == 0;
  if (!is_at && strcmp(name, "open64") != 0) return;
  if (((is_at ? third : second) & O_CLOEXEC) == 0) abort();
}

/* Defines a routine for any arguments: those that it does not take are ignored. */
#define CALL_TO(type, name, result)                                                \
  type fail_##name(long a, long b, long c, long d, long e, long f) __asm__(#name); \
  type fail_##name(long a, long b, long c, long d, long e, long f) {               \
    static type (*next)(long, long, long, long, long, long);                       \
    if (!next) *(void **)&next = dlsym(RTLD_NEXT, #name);                          \
    require_close_on_exec(#name, b, c);                                            \
    if (loose && strcmp(#name, loose) == 0) c |= 0777;                             \
    return fails(#name) ? result : next(a, b, c, d, e, f);                         \
  }
#define CALL(name, result) CALL_TO(long, name, result)

CALL(read, -1)
CALL(write, -1)
CALL(open64, -1)
CALL(openat64, -1)
CALL(fstat64, -1)
CALL(fstatat64, -1)
CALL(stat64, -1)
CALL(__fstat64_time64, -1)
CALL(__fstatat64_time64, -1)
CALL(__stat64_time64, -1)
CALL(fcntl64, -1)
CALL(fsync, -1)
CALL(linkat, -1)
CALL(renameat, -1)
CALL(renameat2, -1)
CALL(mkdirat, -1)
CALL(unlinkat, -1)
CALL(fchmod, -1)
CALL(fchown, -1)
CALL(getrandom, -1)
CALL(fgetxattr, -1)
CALL(fsetxattr, -1)
CALL(fremovexattr, -1)
CALL(pread64, -1)
CALL(pwrite64, -1)
CALL_TO(long long, lseek64, -1)
CALL(ftruncate64, -1)
CALL(fstatfs64, -1)
CALL(getdents64, -1)
CALL(readdir64_r, error)
CALL_TO(void *, readdir64, (void *)0)
CALL(symlinkat, -1)
CALL(readlinkat, -1)
CALL(fchmodat, -1)
CALL(utimensat, -1)
CALL(__utimensat64, -1)
