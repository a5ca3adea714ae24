// A new content that takes the place of a file at once.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cli/place.hpp"
#include "cli/signals.hpp"

namespace cli {

// Folders whose new names are to be made durable: once for all files that got a place in them. Any
// thread may add one.
class ChangedFolders {
 public:
  // Takes note of a folder, which shown is in. A Failure under shown's name.
  void add(int folder_fd, const std::string &shown);
  // Makes the names durable.
  void sync() const;

 private:
  struct Folder {
    struct ::stat status;
    Descriptor descriptor;
    std::string shown;
  };
  std::mutex mutex_;
  std::vector<Folder> folders_;
};

// A file without a name in the target's folder or, where the system has no such files, under a
// hidden name that nobody can guess. It is reached by its descriptor only; others may change names
// in the folder, but no other file is written, given away or opened up.
class Replacement {
 public:
  // Makes the file; it is empty. old_fd: the file to replace, or -1 when the place is empty; it
  // stays the caller's and must be open as long as this lives. A Failure under shown's name.
  Replacement(const Place &place, int old_fd, std::string shown);
  Replacement(const Replacement &) = delete;
  Replacement &operator=(const Replacement &) = delete;
  // Removes the file unless it took its place.
  ~Replacement();

  // Writes only.
  int fd() const { return file_.get(); }
  // Gives the file owner, group, permissions and access list of the old one, as far as that lets
  // nobody read or write who could not before, and puts it in place. Set-user-id, set-group-id and
  // sticky bits and extended attributes do not pass to a new content. A Failure leaves the old
  // file. With a suffix the old file stays under its name with the suffix added, which must be
  // free.
  // folders: what takes note of the folder instead of making the name durable at once; or null.
  void put_in_place(const std::string &backup_suffix, ChangedFolders *folders);

 private:
  bool can_be_linked() const;
  void make_hidden(mode_t mode);
  void link_hidden();
  void take_empty_place();
  void replace_old(const std::string &backup_suffix);
  void link_backup(const std::string &suffix);
  Failure naming_failure(int error) const;
  Failure failure(int error) const;

  const Place &place_;
  int old_fd_;
  std::string shown_;
  Descriptor file_;
  std::string hidden_;  // its name; empty while it has none
  RemoveOnSignal on_signal_;
  std::string backup_;  // of the old file; empty while there is none, or once it stays
  std::optional<RemoveOnSignal> backup_on_signal_;
};

}  // namespace cli
