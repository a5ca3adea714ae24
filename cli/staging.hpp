// A place where a copy grows until it is whole.
#pragma once

#include <string>

#include "cli/descriptor.hpp"
#include "cli/signals.hpp"

namespace cli {

// A directory of a random hidden name, open to its owner only, in the directory of a target. What
// is made in it takes the target's name when it is complete; else it goes with the directory, also
// when a signal ends the program. Nobody else can put anything in it, and it is
// reached by its descriptor, even when something else takes its name.
class Staging final : SignalCleanup {
 public:
  // In the directory that folder_fd is open on, lent for the object's lifetime, and that the path
  // folder, which ends in a slash, leads to. A Failure under shown's name. One at a time.
  Staging(int folder_fd, const std::string &folder, std::string shown);
  ~Staging();

  // The path of a name in the directory, which fd() is open on; that of what is to be made is
  // kContent.
  std::string path(const char *name) const { return path_ + "/" + name; }
  int fd() const { return fd_.get(); }
  static constexpr char kContent[] = "content";

  // Gives the content a name in the folder, which must be free. A Failure else.
  void publish(const std::string &name);

 private:
  void clean_up() const override;

  int folder_fd_;
  std::string shown_;
  std::string name_;
  Descriptor fd_;
  std::string path_;
};

// A path that leads to what a descriptor is open on, through /proc; the other path without it.
std::string path_through(int fd, const std::string &other);

}  // namespace cli
