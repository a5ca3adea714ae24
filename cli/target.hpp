// A file that a command writes.
#pragma once

#include <sys/stat.h>

#include <string>

#include "cli/session.hpp"

namespace cli {

// Withholds permissions from the files that are made while it lives, besides those of the umask.
class CreationMask {
 public:
  explicit CreationMask(mode_t withheld) : umask_(::umask(0)) { ::umask(umask_ | withheld); }
  CreationMask(const CreationMask &) = delete;
  CreationMask &operator=(const CreationMask &) = delete;
  ~CreationMask() { ::umask(umask_); }
  mode_t umask() const { return umask_; }

 private:
  mode_t umask_;
};

// A new content is written to a file beside the target and takes its place when it is complete:
// until then the target stays as it was. Additions and updates are made in place, and so is
// everything written to what is not a regular file.
class Target {
 public:
  // Whether the target's old content goes (and its permissions stay) or is changed in place.
  enum class Mode { kReplace, kAppend, kUpdate };

  // Nothing is changed yet.
  Target(Session &session, const std::string &name, Mode mode);
  Target(const Target &) = delete;
  Target &operator=(const Target &) = delete;
  // Removes the file beside the target unless it took its place.
  ~Target();

  // Throws a Failure when the file is the one with that status.
  void refuse_same(const struct ::stat &source) const;
  // The encoding of what is written: as asked, or when that is 0 by the byte-order mark of a target
  // that is changed in place, else UTF-8. A Failure when the mark contradicts what is asked.
  uint32_t encoding(uint32_t asked) const;
  // Throws a UsageError when the target cannot begin with the byte-order mark of an encoding.
  void require_mark(uint32_t encoding) const;
  // The first bytes of a target that is changed in place, enough for a byte-order mark.
  const std::string &head() const { return head_; }
  // The options to add formats and encodings to.
  wem::OpenOptions options() const;
  // Opens what is written. Throws a Failure when the target is locked or may not be written.
  wem::File &open(const wem::OpenOptions &options);
  // Forces everything to the device, closes, and puts a new content in place.
  void commit();
  // What messages call the target.
  const std::string &shown() const { return shown_; }

 private:
  bool resolve_links();
  void read_head();
  void make_neighbour();

  Session &session_;
  std::string shown_;
  std::string path_;       // expanded; for a replacement also free of links
  std::string neighbour_;  // the file beside the target, or empty
  Mode mode_;
  std::string head_;
  bool exists_ = false;
  struct ::stat old_ = {};  // of the target, when it exists
  wem::File guard_;         // holds the lock of a target that is replaced
  wem::File file_;
};

}  // namespace cli
