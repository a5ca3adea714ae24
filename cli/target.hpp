// A file that a command writes.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "cli/place.hpp"
#include "cli/replacement.hpp"
#include "cli/session.hpp"

namespace cli {

// Withholds permissions from the files that are made while it lives, besides those of the umask.
class CreationMask {
 public:
  explicit CreationMask(mode_t withheld) : umask_(::umask(0)) { ::umask(umask_ | withheld); }
  CreationMask(const CreationMask &) = delete;
  CreationMask &operator=(const CreationMask &) = delete;
  ~CreationMask() { ::umask(umask_); }

 private:
  mode_t umask_;
};

// Throws a UsageError when an encoding has no byte-order mark.
void require_mark(uint32_t encoding);

// A new content is written to a file beside the target and takes its place when it is complete:
// until then the target stays as it was. Additions and updates are made in place, and so is
// everything written to what is not a regular file. What is open already, standard output first of
// all, is written at its current offset: it is neither emptied nor replaced nor locked.
//
// Everything happens through descriptors that are opened once, so no other file is ever reached.
class Target {
 public:
  // Whether the target's old content goes (and its permissions stay) or is changed in place. A
  // target to revise is a file or a free name; a new content is made only when it is opened.
  enum class Mode { kReplace, kAppend, kUpdate, kRevise };

  // name is a path, or "-" for standard output. Makes a missing target that is changed in place;
  // nothing else is changed yet. A Failure when it cannot be written.
  Target(Session &session, const std::string &name, Mode mode);
  Target(const Target &) = delete;
  Target &operator=(const Target &) = delete;
  // Removes the file beside the target unless it took its place, and a target that was made and
  // got nothing.
  ~Target();

  // A descriptor of the old file of a target to revise, locked against others; -1 when there is
  // none or it may not be read.
  int old_fd() const { return is_readable_ ? held_.get() : -1; }
  // What was found under the name; all zero for a free name.
  const struct ::stat &file_status() const { return status_; }
  // The old file keeps the target's name with this suffix when it is replaced.
  void set_backup(std::string suffix) { backup_suffix_ = std::move(suffix); }
  // Throws a Failure when the source is the same regular file.
  void refuse_same(const struct ::stat &source) const;
  // The encoding of what is written: as asked, or when that is 0 by the byte-order mark of a target
  // that is changed in place, else UTF-8. A Failure when the mark contradicts what is asked.
  uint32_t encoding(uint32_t asked) const;
  // Throws a UsageError when the target cannot begin with the byte-order mark of an encoding.
  void require_mark(uint32_t encoding) const;
  // The first bytes of a target that is changed in place, enough for a byte-order mark.
  const std::string &head() const { return head_; }
  // Whether what is written appears on a terminal.
  bool is_terminal() const;
  // The options to add formats and encodings to.
  wem::OpenOptions options() const;
  // Opens what is written. Throws a Failure when the target is locked or may not be written.
  wem::File &open(const wem::OpenOptions &options);
  // Throws a Failure of the target unless the status of a write is 0. detail adds the place.
  void require_written(wem::Status status, const std::string &detail = {}) const;
  // Forces everything to the device if there is one, closes, and puts a new content in place.
  // folders: takes note of the folder instead of making a new name in it durable; or null.
  void commit(ChangedFolders *folders = nullptr);
  // What messages call the target.
  const std::string &shown() const { return shown_; }

 private:
  void open_standing();
  void open_old();
  void open_in_place();
  void create();
  void require_offsets();
  int append_flag() const;
  int fd() const;
  bool is_forced() const;

  Session &session_;
  std::string shown_;
  Mode mode_;
  Place place_;
  Descriptor held_;            // the target: what is changed in place, or the old file
  struct ::stat status_ = {};  // of the target as it was found; all zero when it is to be made
  bool is_readable_ = false;   // the old file
  bool is_new_ = false;        // made, and not committed yet
  std::string backup_suffix_;
  std::string head_;
  wem::File guard_;  // holds the lock of a target that is replaced
  std::optional<Replacement> replacement_;
  wem::File file_;
};

}  // namespace cli
