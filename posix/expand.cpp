// bkwemexpand_path and bkwemexpand_path_free: variables, home directories, leading dots, relative
// paths, trailing slashes.
#include "posix/expand.hpp"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "jx/exports/posix.h"
#include "posix/path.hpp"

namespace {

using jx::kPathAreaBytes;

const char *skip_slashes(const char *text) {
  while (*text == '/') ++text;
  return text;
}

bool ends_component(char character) { return character == '\0' || character == '/'; }

// A path while it is expanded: the work text, and the prefix of its remainder.
class Expansion {
 public:
  const char *text() const { return text_; }
  uint32_t bytes() const { return static_cast<uint32_t>(std::strlen(text_)); }

  // Runs every step on the platform form of a path.
  JXStatus run(const char *form) {
    JXStatus status = replace_variables(form);
    if (status != JX_OK) return status;
    remainder_ = text_;
    status = choose_prefix();
    if (status != JX_OK) return status;
    status = join();
    drop_trailing_slashes();
    return status;
  }

 private:
  JXStatus replace_variables(const char *form) {
    if (std::strlen(form) > kPathAreaBytes) return JXWEM_E_NAMETOOLONG;
    JXStatus status = JX_OK;
    const uint32_t bytes = jx::expand_env(form, text_, text_ + kPathAreaBytes - 1, &status);
    text_[bytes] = '\0';
    return status;
  }

  JXStatus choose_prefix() {
    if (*text_ == '/') return JX_OK;
    if (*text_ == '~') {
      choose_home();
      return JX_OK;
    }
    if (!getcwd(directory_, sizeof directory_)) return JXWEM_E_FAILED;
    use_prefix(directory_);
    return *text_ == '.' ? resolve_leading_dots() : JX_OK;
  }

  void use_prefix(const char *prefix) {
    prefix_ = prefix;
    prefix_bytes_ = std::strlen(prefix);
  }

  // "~" alone is the caller's home directory, "~name" that of a user. Without one the path is
  // not changed.
  void choose_home() {
    const char *name = text_ + 1;
    const char *end = name + std::strcspn(name, "/");
    if (end == name) {
      const char *home = std::getenv("HOME");
      if (!home && jx::vvzgthmu(getuid(), directory_) == 0) home = directory_;
      if (!home) return;
      use_prefix(home);
    } else {
      char user_name[kPathAreaBytes + 1];
      const auto bytes = static_cast<size_t>(end - name);
      std::memcpy(user_name, name, bytes);
      user_name[bytes] = '\0';
      if (jx::vvzgthm(user_name, directory_) != 0) return;
      use_prefix(directory_);
    }
    remainder_ = end;
  }

  // Takes "." and ".." components off the front of the remainder and, for each "..", the last
  // component off the prefix, which is the current directory.
  JXStatus resolve_leading_dots() {
    while (*remainder_ == '.') {
      const char *after = remainder_ + 1;
      if (*after == '.' && ends_component(after[1])) {
        if (!climb()) return JXWEM_E_FAILED;
        ++after;
      } else if (!ends_component(*after)) {
        break;  // a name that only begins with a dot
      }
      remainder_ = skip_slashes(after);
    }
    return JX_OK;
  }

  // Shortens the prefix to the directory above it; false above the root. The slash stays.
  bool climb() {
    while (prefix_bytes_ != 0 && prefix_[prefix_bytes_ - 1] == '/') --prefix_bytes_;
    if (prefix_bytes_ == 0) return false;
    while (prefix_bytes_ != 0 && prefix_[prefix_bytes_ - 1] != '/') --prefix_bytes_;
    return prefix_bytes_ != 0;
  }

  // A prefix of slashes alone, or of one character and slashes, keeps them.
  void trim_prefix() {
    const size_t others = std::strspn(prefix_ + 1, "/");
    if (1 + others >= prefix_bytes_) return;
    while (prefix_[prefix_bytes_ - 1] == '/') --prefix_bytes_;
  }

  // Makes the work text prefix, slash and remainder.
  JXStatus join() {
    const size_t remainder_bytes = std::strlen(remainder_);
    if (prefix_bytes_ == 0) {
      std::memmove(text_, remainder_, remainder_bytes + 1);
      return JX_OK;
    }
    trim_prefix();
    const char *rest = skip_slashes(remainder_);
    const size_t rest_bytes = std::strlen(rest);
    if (rest_bytes + prefix_bytes_ + 2 > kPathAreaBytes) return JXWEM_E_NAMETOOLONG;
    std::memmove(text_ + prefix_bytes_ + 1, rest, rest_bytes + 1);
    std::memcpy(text_, prefix_, prefix_bytes_);
    text_[prefix_bytes_] = '/';
    return JX_OK;
  }

  void drop_trailing_slashes() {
    size_t end = std::strlen(text_);
    while (end > 1 && text_[end - 1] == '/') --end;
    text_[end] = '\0';
  }

  char text_[kPathAreaBytes + 1];
  char directory_[kPathAreaBytes];
  const char *remainder_ = nullptr;  // in text_
  const char *prefix_ = nullptr;     // directory_ or a value of the environment
  size_t prefix_bytes_ = 0;
};
static_assert(jx::kHomeAreaBytes <= kPathAreaBytes,
              "a home directory is kept where the current is");

// The platform form of a path: one byte a character, terminated. 0 or a status of encode_native;
// JXWEM_E_FAILED also for a zero character.
JXStatus make_form(JXInstance *instance, jx::Text path, jx::PoolBlock<char> *form_out) {
  const JXStatus status = jx::encode_native(instance, path, instance->pool, form_out);
  if (status != JX_OK) return status;
  // A zero would end the form early: it would name something else.
  return std::memchr(form_out->get(), '\0', path.chars) ? JXWEM_E_FAILED : JX_OK;
}

}  // namespace

extern "C" {

JXStatus bkwemexpand_path(JXInstance *instance, const JXChar *path, uint32_t path_chars,
                          JXChar **path_out, uint32_t *path_chars_out) {
  if (!instance) return JXWEM_E_NOHANDLE;
  if (!path && path_chars != 0) return JXWEM_E_FAILED;
  jx::PoolBlock<char> form;
  JXStatus status = make_form(instance, {path, path_chars}, &form);
  if (status != JX_OK) return status;
  __attribute__((uninitialized)) Expansion expansion;  // its areas are written before they are read
  status = expansion.run(form.get());
  if (status != JX_OK) return status;
  const uint32_t bytes = expansion.bytes();
  auto result = jx::PoolBlock<JXChar>::allocate(instance->pool, bytes);
  if (!result) return JX_E_NOMEM;
  JXTranscoder *decoder = instance->native_decoder;
  if (decoder->transcode(decoder, expansion.text(), bytes, result.get(), bytes * jx::kJXCharBytes,
                         nullptr, 0) != JX_OK) {
    status = JXWEM_E_FAILED;
  }
  *path_out = result.release();
  *path_chars_out = bytes;
  return status;
}

JXStatus bkwemexpand_path_free(JXPool *pool, JXChar *path) {
  return path ? pool->pool_free(pool, path) : JX_OK;
}

}  // extern "C"
