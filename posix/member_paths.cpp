// Full paths of the members of one directory.
#include "posix/member_paths.hpp"

#include <algorithm>

#include "posix/directory_stream.hpp"

namespace jx {

namespace {

constexpr JXChar kProbeName[] = {'x'};  // a name that every expansion leaves alone
constexpr uint32_t kPlainMaxChars = JX_NAME_MAX_CHARS - 1;  // fits the build and the expansion

bool has_variable(Text text) {
  return std::find(text.data, text.data + text.chars, JXChar{'$'}) != text.data + text.chars;
}

// Tells whether the expansion leaves a name alone: no variable, and every character one that the
// platform encoding has; a zero has no place in a path.
bool is_unchanged(Text name) {
  return std::all_of(name.data, name.data + name.chars,
                     [](JXChar character) { return character - 1 < 0xFF && character != '$'; });
}

}  // namespace

MemberPaths::MemberPaths(JXInstance *instance, Text directory)
    : instance_(instance), directory_(directory) {
  const Text given = trimmed(directory);
  // Without a directory before it, a leading "~" or "." of the name itself would be expanded. A
  // variable's value may be cut where the work area ends, and the text after it is lost.
  if (given.chars == 0 || has_variable(given)) return;
  OwnedPath probe;
  const JXStatus status = build_path(instance, directory, {kProbeName, 1}, &probe);
  // These hold for every member; other failures may depend on the member's name.
  if (status == JX_E_NOMEM || status == JXWEM_E_FAILED) status_ = status;
  if (status != JX_OK) return;
  prefix_ = std::move(probe);
  --prefix_.chars;
  joined_chars_ = given.chars + 1;
}

bool MemberPaths::is_plain(Text name) const {
  return prefix_.block && name.chars != 0 && name.data[name.chars - 1] != ' ' &&
         !is_dot_name(name.data, name.chars) &&
         std::max(prefix_.chars, joined_chars_) + name.chars <= kPlainMaxChars &&
         is_unchanged(name);
}

bool MemberPaths::lead_into(Text directory) const {
  if (prefix_.chars == 0) return false;
  // The root's path is its own separator.
  const uint32_t chars = prefix_.chars == 1 ? 1 : prefix_.chars - 1;
  const JXChar *prefix = prefix_.block.get();
  return directory.chars == chars && std::equal(prefix, prefix + chars, directory.data);
}

JXStatus MemberPaths::build(Text name, JXPool *pool, OwnedPath *path_out) const {
  if (status_ != JX_OK) return status_;
  if (is_plain(name)) {
    path_out->chars = prefix_.chars + name.chars;
    path_out->block = PoolBlock<JXChar>::allocate(pool, path_out->chars);
    if (!path_out->block) return JX_E_NOMEM;
    JXChar *path = path_out->block.get();
    std::copy_n(name.data, name.chars, std::copy_n(prefix_.block.get(), prefix_.chars, path));
    return JX_OK;
  }
  const JXStatus status = build_path(instance_, directory_, name, path_out);
  if (status != JX_OK || pool == instance_->pool) return status;
  path_out->block = copy_text(pool, path_out->text());
  return path_out->block ? JX_OK : JX_E_NOMEM;
}

}  // namespace jx
