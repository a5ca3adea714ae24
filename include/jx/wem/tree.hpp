// Trees of files: walked, and copied and removed with a call for each member.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "jx/wem/instance.hpp"

namespace wem {

// What a member of a tree is; a link is not followed.
enum class TreeKind { kFile, kDirectory, kLink, kOther };

// A member of a tree.
struct TreeMember {
  Name path;                         // of the member, expanded
  TreeKind kind = TreeKind::kOther;  // what it is
  uint32_t depth = 0;                // 0 for the root, 1 for its members
  uint64_t size_bytes = 0;           // of a file; else 0
};

namespace detail {

// A name that the operations would expand to another one is refused: they would reach another file.
inline Result<std::u32string> join_literally(const Instance &instance,
                                             const std::u32string &directory,
                                             const std::u32string &member) {
  std::u32string plain = directory;
  if (!plain.ends_with(U'/')) plain += U'/';
  plain += member;
  const auto built = instance.build_path(directory, member);
  if (!built) return Failed(built.status());
  if (*built != plain) return Failed(JXWEM_E_BADNAME);
  return Result<std::u32string>(std::move(plain));
}

// What the system says of a path. JXWEM_E_NOTFOUND when there is nothing.
inline Result<TreeMember> look_at(const std::u32string &path, uint32_t depth) {
  TreeMember member = {path, TreeKind::kOther, depth, 0};
  const std::filesystem::path native = member.path.path();
  std::error_code error;
  const auto status = std::filesystem::symlink_status(native, error);
  if (status.type() == std::filesystem::file_type::not_found) return Failed(JXWEM_E_NOTFOUND);
  if (error) return Failed(JXWEM_E_SYSTEM);
  if (std::filesystem::is_directory(status)) member.kind = TreeKind::kDirectory;
  if (std::filesystem::is_symlink(status)) member.kind = TreeKind::kLink;
  if (std::filesystem::is_regular_file(status)) {
    member.kind = TreeKind::kFile;
    const auto size = std::filesystem::file_size(native, error);
    if (!error) member.size_bytes = size;
  }
  return Result<TreeMember>(std::move(member));
}

// The names in a directory, hidden ones too.
inline Result<std::vector<std::u32string>> names_in(const Instance &instance,
                                                    const std::u32string &path) {
  auto directory = instance.open_directory(path, JX_DIRECTORY_OPEN_ALL);
  if (!directory) return Failed(directory.status());
  std::vector<std::u32string> names;
  const EntryRange entries = directory->entries();
  for (const std::u32string &name : entries) {
    if (name != U"." && name != U"..") names.push_back(name);
  }
  if (!entries.error().ok()) return Failed(entries.error());
  return Result<std::vector<std::u32string>>(std::move(names));
}

// Reads the members of a tree, each directory before its members. Holds no directory open.
class TreeReader {
 public:
  using Item = TreeMember;

  TreeReader(Instance instance, const Name &root)
      : instance_(std::move(instance)), root_(instance_.build_path(root)) {}

  Result<TreeMember> read() {
    if (!root_) return Failed(root_.status());
    if (!std::exchange(is_begun_, true)) return enter(*root_);
    while (!levels_.empty() && levels_.back().next == levels_.back().names.size()) {
      levels_.pop_back();
    }
    if (levels_.empty()) return Failed(JXWEM_E_EOF);
    Level &level = levels_.back();
    const auto path = join_literally(instance_, level.path, level.names[level.next++]);
    if (!path) return Failed(path.status());
    return enter(*path);
  }

 private:
  struct Level {
    std::u32string path;
    std::vector<std::u32string> names;
    size_t next = 0;
  };

  Result<TreeMember> enter(const std::u32string &path) {
    auto member = look_at(path, static_cast<uint32_t>(levels_.size()));
    if (!member || member->kind != TreeKind::kDirectory) return member;
    auto names = names_in(instance_, path);
    if (!names) return Failed(names.status());
    levels_.push_back({path, *std::move(names)});
    return member;
  }

  Instance instance_;
  Result<std::u32string> root_;
  std::vector<Level> levels_;
  bool is_begun_ = false;
};

// Whether a path is in a directory, through links and ".." too.
inline bool lies_in(const std::u32string &path, const std::u32string &directory) {
  std::error_code error;
  const auto inner = std::filesystem::weakly_canonical(Name(path).path(), error);
  if (error) return false;
  const auto outer = std::filesystem::canonical(Name(directory).path(), error);
  return !error && std::ranges::mismatch(outer, inner).in1 == outer.end();
}

}  // namespace detail

// The members of a tree, for a range-for; check error() after the loop.
using TreeRange = ReadRange<detail::TreeReader>;

// The root and all that is below it, hidden names too, each directory before its members, in the
// order of the system; links are members and not followed. The names of a directory are read when
// the walk comes to it. error(): JXWEM_E_NOTFOUND when there is no root, or when a member went away
// before the walk came to it; JXWEM_E_BADNAME for a member whose name the operations would expand
// to another one; a failure of build_path() or open_directory(); JXWEM_E_SYSTEM when the system
// does not tell what a member is.
inline TreeRange walk_tree(const Instance &instance, const Name &root) {
  return TreeRange({instance, root});
}

// What copy_tree and remove_tree call for a member, before it is copied or removed. A status that
// is not 0 ends the operation and is its answer.
template <typename Step>
concept TreeStep = std::same_as<std::invoke_result_t<Step &, const TreeMember &>, Status>;

// Copies a tree, member by member, to a name that does not exist yet; a file is a tree of one.
// Links are followed, as Instance::copy() does: the copy is what they point to, made in one step.
// What was copied before a failure, or before step ended it, stays. JXWEM_E_EXISTS when the target
// is there; JXWEM_E_BADNAME also when the target lies in the source; else a status of step,
// walk_tree(), make_directory() or copy(). Paths are followed by name: not for trees in which
// others write.
template <TreeStep Step>
Status copy_tree(const Instance &instance, const Name &source, const Name &target, Step step) {
  const auto from = instance.build_path(source);
  const auto to = instance.build_path(target);
  if (!from || !to) return from ? to.status() : from.status();
  if (instance.exist(*to).ok()) return Status(JXWEM_E_EXISTS);
  if (detail::lies_in(*to, *from)) return Status(JXWEM_E_BADNAME);
  const TreeRange members = walk_tree(instance, *from);
  for (const TreeMember &member : members) {
    if (const Status status = step(member); !status.ok()) return status;
    std::u32string copy = *to;
    copy += member.path.chars().substr(from->size());
    const bool is_directory = member.kind == TreeKind::kDirectory;
    const Status status =
        is_directory ? instance.make_directory(copy) : instance.copy(member.path, copy);
    if (!status.ok()) return status;
  }
  return members.error();
}

// Removes a tree, member by member, each directory after its members; a file is a tree of one.
// A link is removed when it names a file, else it ends the removal with JXWEM_E_NOTFOUND, as
// Instance::remove() does. What was removed before a failure, or before step ended it, is gone. A
// status of step, walk_tree() or remove(). Paths are followed by name: where others write, remove a
// tree by Instance::remove(path, true), which holds its directories open.
template <TreeStep Step>
Status remove_tree(const Instance &instance, const Name &root, Step step) {
  std::vector<TreeMember> directories;  // entered and not yet removed, the deepest last
  const auto remove = [&](const TreeMember &member) {
    const Status status = step(member);
    return status.ok() ? instance.remove(member.path) : status;
  };
  const auto leave = [&](uint32_t depth) {  // those that are as deep or deeper
    while (!directories.empty() && directories.back().depth >= depth) {
      if (const Status status = remove(directories.back()); !status.ok()) return status;
      directories.pop_back();
    }
    return Status();
  };
  const TreeRange members = walk_tree(instance, root);
  for (const TreeMember &member : members) {
    if (const Status status = leave(member.depth); !status.ok()) return status;
    if (member.kind == TreeKind::kDirectory) {
      directories.push_back(member);
    } else if (const Status status = remove(member); !status.ok()) {
      return status;
    }
  }
  return members.error().ok() ? leave(0) : members.error();
}

}  // namespace wem
