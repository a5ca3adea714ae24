// Making the copy of a file, link or tree.
#pragma once

#include <sys/stat.h>

#include <atomic>
#include <string>
#include <vector>

#include "cli/session.hpp"
#include "cli/staging.hpp"
#include "cli/tree.hpp"
#include "cli/watch.hpp"

namespace cli {

// How a copy is to be.
struct CopyManner {
  bool keeps_links = false;       // copy links as links
  bool keeps_attributes = false;  // permissions and times
};

// A Failure under shown's name for a kind of file that is not copied.
void refuse_special(const std::string &shown, mode_t mode);

// Makes the content of a staging folder like something that is held by a descriptor. The module
// copies each file: it is opened through a descriptor, and the copy has a fixed name until it moves
// into its directory, so that no name in the tree is ever looked up as a path.
class Copier {
 public:
  // from and to are what messages call the two. byte_count: of all files, for the progress.
  Copier(Session &session, CopyManner manner, Staging &staging, std::string from, std::string to,
         uint64_t byte_count);

  // Copies what source_fd is open on, with that status. A Failure under the name of the member that
  // cannot be copied.
  void copy(int source_fd, const struct ::stat &source);
  // Call it when the content has its name: gives directories permissions that would have been in
  // the way until then.
  void finish() const;

 private:
  struct Folder {
    std::string path;  // in the copy, "." first
    struct ::stat source;
  };

  std::string shown(const std::string &member) const;
  uint64_t copied_bytes() const;
  void copy_file(int source_fd, const struct ::stat &source, const std::string &member,
                 const char *name);
  void copy_link(int source_fd, const struct ::stat &source, const std::string &member, int to_fd,
                 const char *name) const;
  void copy_tree(int source_fd, const struct ::stat &source);
  void add_member(const Member &member);
  void make_folder(int at_fd, const char *name, const std::string &path,
                   const struct ::stat &source);
  void enter(const std::string &folder);
  void set_attributes(int at_fd, const char *name, const struct ::stat &source,
                      const std::string &shown) const;
  bool is_closed(const Folder &folder) const;
  void settle(const Folder &folder) const;

  Session &session_;
  CopyManner manner_;
  Staging &staging_;
  std::string from_;
  std::string to_;
  std::atomic<const char *> growing_ = nullptr;  // a file in the staging folder
  std::atomic<uint64_t> done_bytes_ = 0;         // of files before it
  mode_t umask_;
  Descriptor root_;              // of a tree's copy
  Descriptor folder_;            // of the copy, that members are put into now
  std::string folder_path_;      // its path in the tree
  std::vector<Folder> folders_;  // of a tree
  Watch watch_;                  // reads what is above it: the last member
};

}  // namespace cli
