// Trees of files, folders and links with names of any bytes: listed, read by a handle, copied and
// removed, against what the C++ library finds.
#include <sys/stat.h>

#include <algorithm>
#include <set>

#include "fuzz/scratch.hpp"

namespace jx::fuzz {
namespace {

// Size, whether it is a directory; -1 and 0 for what has no attributes.
using Facts = std::pair<int64_t, uint32_t>;

class Tree {
 public:
  explicit Tree(FuzzedDataProvider *input) : input_(*input) {
    empty_scratch();
    fs::create_directory(root());
    write_file(scratch() / "outside", "outside");
    folders_.push_back(root());
    add_members("", 3);
  }

  static fs::path root() { return scratch() / "tree"; }
  const Content &content() const { return content_; }
  const std::vector<fs::path> &folders() const { return folders_; }
  bool has_links() const { return has_links_; }

 private:
  std::string name() {
    static constexpr const char *kNames[] = {"a", "b.c", ".hidden",  "..x",  "two words", "$A",
                                             "~", "-rf", "\xFF\x80", "a\nb", "blanks  "};
    if (input_.ConsumeIntegral<uint8_t>() % 4 != 0) return input_.PickValueInArray(kNames);
    std::string name = input_.ConsumeRandomLengthString(255);
    for (char &byte : name) byte = byte == '/' || byte == '\0' ? 'x' : byte;
    return name.empty() || name == "." || name == ".." ? "dots" : name;
  }

  // A copy follows a link into its own folders down to the longest path, which takes longer than
  // all else: one of them is enough.
  std::string target() {
    static constexpr const char *kTargets[] = {"nothing", "b.c", "../outside", ".", "..", "a"};
    const size_t one = input_.ConsumeIntegralInRange<size_t>(0, 5);
    const bool may_recur = one > 2 && !std::exchange(has_recursion_, true) &&
                           input_.ConsumeIntegral<uint8_t>() % 32 == 0;
    return kTargets[may_recur ? one : one % 3];
  }

  void add_members(const std::string &folder, uint32_t depth) {
    for (auto count = input_.ConsumeIntegralInRange<uint32_t>(0, depth + 2); count > 0; --count) {
      const std::string path = folder + name();
      if (content_.contains(path) || content_.contains(path + "/")) continue;
      const auto kind = input_.ConsumeIntegral<uint8_t>() % 8;
      if (kind < 3 && depth > 0) {
        fs::create_directory(root() / path);
        content_[path + "/"];
        folders_.push_back(root() / path);
        add_members(path + "/", depth - 1);
      } else if (kind == 3) {
        const std::string to = target();
        fs::create_symlink(to, root() / path);
        content_[path] = "to " + to;
        has_links_ = true;
      } else {
        const std::string &text = content_[path] =
            std::string(input_.ConsumeIntegral<uint16_t>() % 9000, 'x');
        write_file(root() / path, text);
      }
    }
  }

  FuzzedDataProvider &input_;
  Content content_;                // as look() finds it
  std::vector<fs::path> folders_;  // the root and those below
  bool has_links_ = false;
  bool has_recursion_ = false;
};

Facts facts_of(const std::string &path) {
  struct stat status;
  if (::stat(path.c_str(), &status) != 0) return {-1, 0};
  return {status.st_size, S_ISDIR(status.st_mode) ? 1 : 0};
}

// The members of a folder with their facts.
using Members = std::map<std::string, Facts>;
Members members_of(const fs::path &folder) {
  Members members;
  for (const auto &entry : fs::directory_iterator(folder)) {
    members[entry.path().filename().native()] = facts_of(entry.path().native());
  }
  return members;
}

// What a list shows: the folder, and the members whose names do not begin with a dot.
Members expected_list(const std::string &folder, const Members &all, uint32_t flags) {
  Members members = {{folder, {-1, 1}}};
  for (const auto &[name, facts] : all) {
    if (name.starts_with('.')) continue;
    const bool is_full = (flags & JX_LIST_FULL_PATH) != 0;
    const bool is_known = (flags & JX_LIST_INFORMATION) != 0;
    members[is_full ? folder + "/" + name : name] = is_known ? facts : Facts{-1, 0};
  }
  return members;
}

// A list follows expansion: names with a "$" or trailing blanks name other files in full paths.
bool is_literal(const std::string &path) {
  return path.find('$') == std::string::npos && !path.ends_with(' ');
}

void check_list(const std::string &folder, const Members &members, uint32_t flags) {
  const Name name(folder);
  uint64_t count = 0;
  JXStatus status = 0;
  JXTable *table = instance()->directory_list(instance(), name.data(), name.chars(),
                                              JX_DIRECTORY_NAMED, flags, &count, &status);
  require((table != nullptr) == (status == JX_OK), "a table without success");
  if (!table) return;
  Members found;
  bool all_literal = true;
  const JXTableEntry *entry = jxhost_table_first(table);
  for (; entry; entry = jxhost_table_next(entry)) {
    const auto *record = static_cast<const JXDirectoryEntry *>(entry->value);
    const std::string member = narrow(record->name, static_cast<uint32_t>(record->name_chars));
    all_literal = all_literal && is_literal(member);
    found[member] = {record->size_bytes, record->is_dir & 1};
  }
  const auto expected = expected_list(folder, members, flags);
  for (const auto &[member, facts] : expected) all_literal = all_literal && is_literal(member);
  require(count == expected.size(), "the count of a list");
  require(!all_literal || found == expected, "the members of a list");
  (void)table->destroy_table(table);
}

void check_handle(const std::string &folder, const Members &members, uint32_t options) {
  const Name name(folder);
  JXStatus status = 0;
  JXDirectory *directory = instance()->directory_open(instance(), name.data(), name.chars(),
                                                      options, 0, nullptr, nullptr, &status);
  require((directory != nullptr) == (status == JX_OK), "a handle without success");
  if (!directory) return;
  const bool reads_all = (options & JX_DIRECTORY_OPEN_ALL) != 0;
  std::set<std::string> found, expected;
  if (reads_all) expected = {".", ".."};
  JXChar member[JX_NAME_MAX_CHARS];
  for (uint32_t chars = JX_NAME_MAX_CHARS;
       (status = directory->read(directory, member, &chars)) == JX_OK; chars = JX_NAME_MAX_CHARS) {
    require(found.insert(narrow(member, chars)).second, "a member twice");
  }
  require(status == JXWEM_E_EOF, "the end of a directory");
  for (const auto &[visible, facts] : members) {
    if (reads_all || !visible.starts_with('.')) expected.insert(visible);
  }
  require(found == expected, "the members that a handle reads");
  require(directory->close(directory) == JX_OK, "a handle closes");
}

void check_copy_and_removal(const Tree &tree) {
  const Content &before = tree.content();
  const Name from(Tree::root().string()), to((scratch() / "copy").string());
  const JXStatus copied =
      instance()->copy(instance(), from.data(), from.chars(), to.data(), to.chars());
  require(look(Tree::root()) == before, "a copy changed its source");
  // The module takes paths of up to 1024 characters.
  const bool is_short = std::ranges::all_of(before, [](const auto &member) {
    return Tree::root().string().size() + 1 + member.first.size() <= JX_NAME_MAX_CHARS;
  });
  if (!tree.has_links() && is_short) {
    require(copied == JX_OK, "a copy");
    require(look(scratch() / "copy") == before, "the members of a copy");
  }
  // A link that names no file, or a folder, ends a removal.
  const JXStatus removed =
      instance()->remove(instance(), from.data(), from.chars(), JX_REMOVE_CONTENTS);
  require(tree.has_links() || !is_short || removed == JX_OK, "a removal");
  require((removed == JX_OK) == !fs::exists(Tree::root()), "what a removal leaves");
  require(read_file(scratch() / "outside") == "outside", "a removal went through a link");
}

void run(FuzzedDataProvider *input) {
  const Tree tree(input);
  // Each folder by one kind of list and one of handle, the next one by the next.
  uint32_t kind = input->ConsumeIntegral<uint8_t>();
  for (const fs::path &path : tree.folders()) {
    const std::string &folder = path.native();
    if (folder.find_first_of("$~") != std::string::npos || folder.ends_with(' ')) continue;
    const Members members = members_of(path);
    check_list(folder, members, kind % 4);
    check_handle(folder, members, kind / 4 % 2 == 0 ? 0 : JX_DIRECTORY_OPEN_ALL);
    kind += 5;
  }
  check_copy_and_removal(tree);
}

}  // namespace
}  // namespace jx::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider input(data, size);
  jx::fuzz::run(&input);
  return 0;
}
