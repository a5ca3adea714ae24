// A new content of a file that is written only as far as it is new.
#pragma once

#include <cstdint>
#include <string_view>

#include "cli/target.hpp"

namespace cli {

// Compares a new content with the old one as it comes. Nothing is made as long as both are the
// same; then the target is opened, and gets what was the same first.
class Revision {
 public:
  // target: one to revise, which lives longer. is_trial: nothing is written at all.
  Revision(Target &target, bool is_trial);

  // Adds bytes to the new content. A Failure of the target.
  void write(std::string_view bytes);
  // Puts the new content in place, see Target::commit. False when it is the old one, which then
  // stays.
  bool commit(ChangedFolders *folders);
  // The size of the new content so far.
  uint64_t size() const { return size_; }

 private:
  bool continues_old(std::string_view bytes) const;
  void begin();
  void write_new(std::string_view bytes);

  Target &target_;
  bool is_trial_;
  bool is_new_;  // differs from the old content, or there is none
  uint64_t size_ = 0;
  wem::File *file_ = nullptr;
};

}  // namespace cli
