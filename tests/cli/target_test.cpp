// Targets: where output goes, what a failure leaves, and who may read it.
#include <sys/stat.h>
#include <sys/xattr.h>

#include "cli/program.hpp"

namespace jx::test {
namespace {

using namespace std::string_literals;

constexpr const char *kList = "system.posix_acl_access";
constexpr uid_t kNobody = 65534;

class Target : public ProgramTest {};

TEST_F(Target, TargetsThatCannotBeWritten) {
  put("in", "text\n");
  put("locked", "old");
  const int fd = ::open(at("locked").c_str(), O_RDWR | O_CLOEXEC);
  struct ::flock lock = {};
  lock.l_type = F_WRLCK;
  ASSERT_EQ(::fcntl(fd, F_OFD_SETLK, &lock), 0);
  const std::string busy = "locked: file busy or locked (JXWEM_E_INUSE 0x80bfe807)\nhint: ";
  for (const char *arguments :
       {"lines locked", "convert locked out", "convert in locked", "convert in locked --append"}) {
    expect_failure(jxfile(arguments), busy);
  }
  ::close(fd);
  ASSERT_EQ(::link(at("in").c_str(), at("same").c_str()), 0);
  ASSERT_EQ(::symlink("in", at("alias").c_str()), 0);
  for (const char *arguments :
       {"convert in in", "convert in same", "convert in alias", "convert in alias --append",
        "convert in >> in", "write --append in < in", "write --at 1 alias < in"}) {
    expect_failure(jxfile(arguments), "same file");
  }
  expect_failure(jxfile("convert in none/out"), "a directory on the path is missing");
  expect_failure(jxfile("convert in ."), "jxfile: convert: .: ");
  for (const char *records : {"", " --records text"}) {
    expect_failure(jxfile("convert in /dev/full"s + records),
                   "/dev/full: no space left on the dev");
  }
  expect_failure(jxfile("lines in", {}, false, "/dev/full"), "standard output: no space left");
  EXPECT_EQ(jxfile("convert in /dev/null").code, 0);
  EXPECT_EQ(get("in"), "text\n");
  EXPECT_EQ(names(), "alias in locked same ");
}

TEST_F(Target, PermissionsStayAndCount) {
  put("in", "text\n");
  put("out", "old");
  ASSERT_EQ(::chmod(at("out").c_str(), 06741), 0);
  ASSERT_EQ(::symlink("out", at("alias").c_str()), 0);
  EXPECT_EQ(jxfile("convert in alias --to utf-16le").code, 0);
  struct ::stat status = {};
  ASSERT_EQ(::lstat(at("out").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0741));
  ASSERT_EQ(::lstat(at("alias").c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
  EXPECT_EQ(jxfile("write --append fresh", "x").code, 0);
  ASSERT_EQ(::stat(at("fresh").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0111, 0u);
  EXPECT_EQ(jxfile("cp out copy").code, 0);
  ASSERT_EQ(::stat(at("copy").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0741u);

  const bool as_nobody = ::geteuid() == 0;
  if (jxfile("status", {}, as_nobody).code == 126) GTEST_SKIP() << "others cannot run the build";
  ASSERT_EQ(::chmod(at("in").c_str(), 0), 0);
  ASSERT_EQ(::chmod(at("out").c_str(), 0444), 0);
  put("other", "text");
  for (const char *arguments : {"lines in", "convert in new", "convert other out"}) {
    expect_failure(jxfile(arguments, {}, as_nobody), "access denied (JXWEM_E_ACCESS 0x80bfe803)");
  }
}

// A closed pipe ends the program by SIGPIPE, without a message; where the signal is ignored, every
// command names the error.
TEST_F(Target, ClosedPipes) {
  put("in", std::string(1 << 20, '\n'));
  for (const std::string arguments : {"lines in", "convert in", "write --append - < in"}) {
    const auto piped = [&](const std::string &before) {
      const std::string script = before + "{ " JX_BINARY_DIR "/jxfile " + arguments +
                                 "; echo $? >&2; } | head -c 1 > /dev/null";
      return run({"/bin/sh", "-c", script}).err;
    };
    EXPECT_EQ(piped(""), "141\n") << arguments;
    EXPECT_NE(piped("trap '' PIPE; ").find("standard output: system error: Broken pipe"),
              std::string::npos)
        << piped("trap '' PIPE; ") << arguments;
  }
}

// An open descriptor is written at its current offset, by any of its names.
TEST_F(Target, OpenDescriptorsAreContinued) {
  put("in", "x\n");
  ASSERT_EQ(::symlink("/proc/self/fd/1", at("link").c_str()), 0);
  for (const std::string out :
       {"", "-", "/dev/stdout", "/dev/fd/1", "/proc/thread-self/fd/1", "link", "--append link"}) {
    const std::string convert = JX_BINARY_DIR "/jxfile convert in " + out;
    const std::string write =
        out.empty() ? "cat in" : JX_BINARY_DIR "/jxfile write " + out + " < in";
    const std::string script = "{ echo h; " + convert + " && " + write + " && echo t; } ";
    put("out", "old\n");
    EXPECT_EQ(run({"/bin/sh", "-c", script + ">> out; echo; " + script}).out, "\nh\nx\nx\nt\n");
    EXPECT_EQ(get("out"), "old\nh\nx\nx\nt\n") << out;
  }
  EXPECT_TRUE(std::filesystem::is_symlink(at("link")));
  EXPECT_EQ(names(), "in link out ");
}

// A size limit leaves no file. New content has no name until it is complete, so a kill leaves none.
// A target that was swapped meanwhile is not followed.
TEST_F(Target, NothingIsLeftOrTakenAway) {
  put("in", std::string(9000, 'x'));
  put("out", "old");
  put("victim", "keep");
  const std::string program = JX_BINARY_DIR "/jxfile ";
  expect_failure(run({"/bin/sh", "-c", "ulimit -f 1; exec " + program + "convert in out"}),
                 "out: ");
  ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
  const std::string script =
      program +
      "write out < pipe & exec 3> pipe; echo new >&3; "
      "until ls -l /proc/$!/fd | grep -q out$; do sleep 0.01; done; sleep 0.1; ls -A; "
      "mv out victim; ln -s victim out; exec 3>&-; wait $!";
  const Outcome outcome = run({"/bin/sh", "-c", script});
  expect_failure(outcome, "out: it became another file meanwhile");
  EXPECT_EQ(outcome.out, "in\nout\npipe\nvictim\n");
  EXPECT_EQ(get("victim"), "old");
  // Without /proc a file cannot be linked later: it has a hidden name from the start. The
  // sanitizers themselves need /proc when an exception is thrown.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr bool kWorksWithoutProc = false;
#else
  constexpr bool kWorksWithoutProc = true;
#endif
  const std::string hide = "exec unshare -m sh -c 'mount -t tmpfs none /proc && ";
  if (kWorksWithoutProc && run({"/bin/sh", "-c", hide + "true'"}).code == 0) {
    for (const std::string name : {"victim", "fresh"}) {
      const std::string convert = program + "--module " JXWEM_PATH " convert in " + name + "'";
      EXPECT_EQ(run({"/bin/sh", "-c", hide + convert}).code, 0);
      EXPECT_EQ(get(name), get("in"));
    }
    expect_failure(
        run({"/bin/sh", "-c", hide + program + "--module " JXWEM_PATH " write fresh'"}, "\xff"),
        "not valid");
    ASSERT_EQ(::unlink(at("fresh").c_str()), 0);
  }
  EXPECT_EQ(names(), "in out pipe victim ");
}

// New content keeps owner, group and permissions; permissions that cannot be kept are dropped.
TEST_F(Target, NewContentGivesNothingAway) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs two users";
  if (jxfile("status", {}, true).code == 126) GTEST_SKIP() << "others cannot run the build";
  put("in", "text\n");
  const struct {
    uid_t owner;
    gid_t group;
    mode_t mode;
    bool as_nobody;
    uid_t owner_after;
    mode_t mode_after;
  } rows[] = {
      {kNobody, 1, 06764, false, kNobody, 0764},  // set-user-id and set-group-id go
      {kNobody, 1, 01664, true, kNobody, 0644},   // the group changes
      {kNobody, 1, 0606, true, kNobody, 0600},    // the old group becomes one of the others
      {0, 0, 0666, true, kNobody, 0666},
  };
  for (const auto &row : rows) {
    put("out", "old");
    ASSERT_EQ(::chown(at("out").c_str(), row.owner, row.group), 0);
    ASSERT_EQ(::chmod(at("out").c_str(), row.mode), 0);
    const Outcome outcome = jxfile("convert in out", {}, row.as_nobody);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    struct ::stat status = {};
    ASSERT_EQ(::stat(at("out").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, row.owner_after);
    EXPECT_EQ(status.st_gid, row.as_nobody ? 0 : row.group);
    EXPECT_EQ(status.st_mode & 07777, row.mode_after) << std::oct << row.mode;
  }
  // An access list in the system's format: user 1 has what the group does not.
  const std::string head = "\2\0\0\0\1\0\6\0\xff\xff\xff\xff\2\0\6\0\1\0\0\0"s;
  const std::string list = head +
                           "\4\0\0\0\xff\xff\xff\xff\x10\0\6\0\xff\xff\xff\xff"
                           "\x20\0\0\0\xff\xff\xff\xff"s;
  const auto list_of = [this](const char *name) {
    std::string found(100, '\0');
    const ssize_t size = ::getxattr(at(name).c_str(), kList, found.data(), found.size());
    return found.substr(0, size > 0 ? static_cast<size_t>(size) : 0);
  };
  put("listed", "old");
  if (::setxattr(at("listed").c_str(), kList, list.data(), list.size(), 0) != 0) return;
  ASSERT_EQ(::setxattr(at(".").c_str(), "system.posix_acl_default", list.data(), list.size(), 0),
            0);
  EXPECT_EQ(jxfile("convert in listed").code + jxfile("convert in out").code, 0);
  EXPECT_EQ(list_of("listed"), list);
  EXPECT_EQ(list_of("out"), "");
}

// Folders that others may write, and folders that the user may not.
TEST_F(Target, FoldersOfOthers) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs two users";
  put("in", "text\n");
  put("victim", "keep");
  std::filesystem::create_directory(at("shared"));
  ASSERT_EQ(::chmod(at("shared").c_str(), 01777), 0);
  for (const char *name : {"link", "dangling", "file"}) {
    const std::string path = at("shared/"s + name);
    ASSERT_EQ(::symlink(name == "link"s ? "../victim" : "../none", path.c_str()), 0);
    if (name == "file"s) std::filesystem::remove(path);
    if (name == "file"s) put("shared/file", "");
    ASSERT_EQ(::lchown(path.c_str(), kNobody, kNobody), 0);
    for (const char *mode : {"", " --append"}) {
      expect_failure(jxfile("convert in shared/"s + name + mode), "another user put it into a fol");
    }
  }
  EXPECT_EQ(get("victim"), "keep");
  EXPECT_EQ(names(), "in shared victim ");
  ASSERT_EQ(::chmod(at("victim").c_str(), 0666), 0);
  ASSERT_EQ(::chmod(at(".").c_str(), 0755), 0);
  if (jxfile("status", {}, true).code == 126) GTEST_SKIP() << "others cannot run the build";
  expect_failure(jxfile("convert in victim", {}, true), "its folder does not let a new file take");
}

}  // namespace
}  // namespace jx::test
