// A path put together from a directory, a member and an extension.
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "posix/posix.hpp"

namespace {

constexpr JXStatus kBadDirectory = 1;  // the directory is too long or cannot be converted

// The work text while its pieces are put behind one another.
class WorkText {
 public:
  jx::Text text() const { return {text_, chars_}; }
  uint32_t free_chars() const { return JX_NAME_MAX_CHARS - chars_; }
  bool ends_in_slash() const { return chars_ != 0 && text_[chars_ - 1] == '/'; }
  void append(jx::Text piece) {
    std::copy_n(piece.data, piece.chars, text_ + chars_);
    chars_ += piece.chars;
  }
  void append(JXChar character) { append({&character, 1}); }

  // 0, JXWEM_E_FAILED when the current directory cannot be read, or kBadDirectory.
  JXStatus append_current_directory(JXInstance *instance) {
    char directory[JX_NAME_MAX_CHARS];
    if (!getcwd(directory, sizeof directory)) return JXWEM_E_FAILED;
    const auto bytes = static_cast<uint32_t>(std::strlen(directory));
    // One character a byte: the bytes fit the area, so the characters do.
    if (jx::decode_native(instance, directory, bytes, text_, &chars_) != JX_OK) {
      return kBadDirectory;
    }
    return JX_OK;
  }

 private:
  JXChar text_[JX_NAME_MAX_CHARS];
  uint32_t chars_ = 0;
};

// A component as its caller gave it; a null one is empty.
jx::Text component(const JXChar *text, uint32_t chars) { return {text, text ? chars : 0}; }

// A component without its trailing blanks. A length that no memory holds is left as it is, for
// the test of its size to refuse.
jx::Text trimmed(jx::Text text) {
  if (!jx::is_valid_size(uint64_t{text.chars} * jx::kJXCharBytes)) return text;
  while (text.chars != 0 && text.data[text.chars - 1] == ' ') --text.chars;
  return text;
}

JXStatus append_directory(JXInstance *instance, jx::Text directory, WorkText *work) {
  if (directory.chars == 0) return work->append_current_directory(instance);
  directory = trimmed(directory);
  if (directory.chars > work->free_chars()) return kBadDirectory;
  work->append(directory);
  return JX_OK;
}

// A directory of blanks alone leaves nothing for a separator to stand behind.
JXStatus append_separator(WorkText *work) {
  if (work->text().chars == 0 || work->ends_in_slash()) return JX_OK;
  if (work->free_chars() < 2) return JXWEM_E_NAMETOOLONG;
  work->append('/');
  return JX_OK;
}

JXStatus append_member(jx::Text member, WorkText *work) {
  member = trimmed(member);
  if (member.chars > work->free_chars()) return JXWEM_E_NAMETOOLONG;
  work->append(member);
  return JX_OK;
}

// One character always stays free behind an extension.
JXStatus append_extension(jx::Text extension, WorkText *work) {
  if (extension.chars == 0) return JX_OK;
  extension = trimmed(extension);
  if (uint64_t{extension.chars} + 2 > work->free_chars()) return JXWEM_E_NAMETOOLONG;
  work->append('.');
  work->append(extension);
  return JX_OK;
}

JXStatus assemble(JXInstance *instance, jx::Text directory, jx::Text member, jx::Text extension,
                  WorkText *work) {
  JXStatus status = append_directory(instance, directory, work);
  if (status == JX_OK && (member.chars != 0 || extension.chars != 0)) {
    status = append_separator(work);
  }
  if (status == JX_OK) status = append_member(member, work);
  if (status == JX_OK) status = append_extension(extension, work);
  if (status == JX_OK && work->text().chars == 0) status = JXWEM_E_BADNAME;
  return status;
}

}  // namespace

extern "C" {

JXStatus bkwembuildpath(JXInstance *instance, const JXChar *directory, uint32_t directory_chars,
                        const JXChar *member, uint32_t member_chars, const JXChar *extension,
                        uint32_t extension_chars, JXChar **path_out, uint32_t *path_chars_out) {
  if (!path_out || !path_chars_out) return JXWEM_E_FAILED;
  *path_out = nullptr;
  *path_chars_out = 0;
  if (!instance) return JXWEM_E_NOHANDLE;
  __attribute__((uninitialized)) WorkText work;  // written before it is read; 4 KiB
  JXStatus status =
      assemble(instance, component(directory, directory_chars), component(member, member_chars),
               component(extension, extension_chars), &work);
  if (status != JX_OK) return status;
  JXChar *expanded = nullptr;
  uint32_t expanded_chars = 0;
  status =
      bkwemexpand_path(instance, work.text().data, work.text().chars, &expanded, &expanded_chars);
  // The expansion is a block of the same pool and as long as the path: it becomes the result.
  jx::PoolBlock<JXChar> path(instance->pool, expanded);
  if (status != JX_OK) return status;
  *path_out = path.release();
  *path_chars_out = expanded_chars;
  return JX_OK;
}

JXStatus bkwembuildpathdestroy(JXInstance *instance, JXChar *path) {
  if (!path) return JX_OK;
  if (!instance) return JXWEM_E_NOHANDLE;
  return instance->pool->pool_free(instance->pool, path);
}

}  // extern "C"
