// A file that a command writes.
#pragma once

#include <sys/stat.h>

#include <string>

#include "cli/session.hpp"

namespace cli {

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
  // The options to add formats and encodings to.
  wem::OpenOptions options() const;
  // Opens what is written. Throws a Failure when the target is locked or may not be written.
  wem::File &open(const wem::OpenOptions &options);
  // Forces everything to the device, closes, and puts a new content in place.
  void commit();
  // What messages call the target.
  const std::string &shown() const { return shown_; }

 private:
  void make_neighbour();

  Session &session_;
  std::string shown_;
  std::string path_;       // expanded; for a replacement also free of links
  std::string neighbour_;  // the file beside the target, or empty
  Mode mode_;
  bool exists_ = false;
  struct ::stat old_ = {};  // of the target, when it exists
  wem::File guard_;         // holds the lock of a target that is replaced
  wem::File file_;
};

}  // namespace cli
