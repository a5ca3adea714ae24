// Names that mean what their bytes say. The module expands $NAME and "~", takes trailing slashes
// off and makes paths absolute; the paths made here come out of that unchanged.
#pragma once

#include <string>
#include <string_view>

namespace cli {

// While one lives the environment is empty, so that the module finds no variable in a name and
// leaves it as it is written. One at a time.
class WithoutVariables {
 public:
  WithoutVariables();
  WithoutVariables(const WithoutVariables &) = delete;
  WithoutVariables &operator=(const WithoutVariables &) = delete;
  ~WithoutVariables();
};

// The user's environment again, for what has to be read from it.
class WithVariables {
 public:
  WithVariables();
  WithVariables(const WithVariables &) = delete;
  WithVariables &operator=(const WithVariables &) = delete;
  ~WithVariables();

 private:
  char **before_;
};

// A path from the root on, with leading "." and ".." resolved; one through /proc when the current
// directory has no path that leads to it.
std::string full_path(const std::string &path);

// An absolute path that makes the module reach exactly what the system reaches by path, as long as
// the environment is empty. A Failure when there is none: the path has more than 1024 bytes, or a
// "$" and 127 bytes or more after it.
std::string literal_path(const std::string &path);

// The last component of a path and what comes before it, each as the system takes them: "a/b//" is
// "a/" and "b", "b" is "./" and "b". The name is empty for the root.
struct PathParts {
  std::string folder;
  std::string name;
};
PathParts split_last(std::string_view path);

}  // namespace cli
