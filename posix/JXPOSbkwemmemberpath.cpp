// Full paths of the members of one directory.
#include <algorithm>
#include <iterator>

#include "posix/posix.hpp"

namespace {

constexpr JXChar kProbeName[] = {'x'};  // a name that every expansion leaves alone
constexpr uint32_t kPlainMaxChars = JX_NAME_MAX_CHARS - 1;  // fits the build and the expansion

jx::Text without_trailing_blanks(jx::Text text) {
  while (text.chars != 0 && text.data[text.chars - 1] == ' ') --text.chars;
  return text;
}

}  // namespace

namespace jx {

MemberPaths::MemberPaths(JXInstance *instance, Text directory)
    : instance_(instance), directory_(directory) {
  const Text trimmed = without_trailing_blanks(directory);
  // Without a directory before it a leading "~" or "." of the name itself would be expanded.
  if (trimmed.chars == 0) return;
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  if (bkwembuildpath(instance, directory.data, directory.chars, kProbeName, std::size(kProbeName),
                     nullptr, 0, &path, &path_chars) != JX_OK) {
    return;
  }
  prefix_ = PoolBlock<JXChar>(instance->pool, path);
  prefix_chars_ = path_chars - static_cast<uint32_t>(std::size(kProbeName));
  joined_chars_ = trimmed.chars + 1;
}

bool MemberPaths::is_plain(Text name) const {
  return prefix_ && name.chars != 0 && name.data[name.chars - 1] != ' ' &&
         !is_dot_name(name.data, name.chars) &&
         std::max(prefix_chars_, joined_chars_) + name.chars <= kPlainMaxChars &&
         std::find(name.data, name.data + name.chars, JXChar{'$'}) == name.data + name.chars;
}

bool MemberPaths::lead_into(Text directory) const {
  if (!prefix_ || prefix_chars_ == 0) return false;
  // The root's path is its own separator.
  const uint32_t chars = prefix_chars_ == 1 ? 1 : prefix_chars_ - 1;
  return directory.chars == chars &&
         std::equal(prefix_.get(), prefix_.get() + chars, directory.data);
}

JXStatus MemberPaths::build(Text name, JXPool *pool, PoolBlock<JXChar> *path_out,
                            uint32_t *chars_out) const {
  if (is_plain(name)) {
    *chars_out = prefix_chars_ + name.chars;
    *path_out = PoolBlock<JXChar>::allocate(pool, *chars_out);
    if (!*path_out) return JX_E_NOMEM;
    std::copy_n(prefix_.get(), prefix_chars_, path_out->get());
    std::copy_n(name.data, name.chars, path_out->get() + prefix_chars_);
    return JX_OK;
  }
  JXChar *path = nullptr;
  const JXStatus status = bkwembuildpath(instance_, directory_.data, directory_.chars, name.data,
                                         name.chars, nullptr, 0, &path, chars_out);
  PoolBlock<JXChar> built(instance_->pool, path);
  if (status != JX_OK) return status;
  *path_out = pool == instance_->pool ? std::move(built) : copy_text(pool, {path, *chars_out});
  return *path_out ? JX_OK : JX_E_NOMEM;
}

}  // namespace jx
