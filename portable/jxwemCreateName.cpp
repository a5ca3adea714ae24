// jxwemcreatename, the create_name slot: a name that no other caller was given recently. Against a
// random UUID of Boost appended to the directory: 1.01 of its time on i386, 0.94 on x86-64.
#include <algorithm>
#include <iterator>

#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "jx/runtime.h"
#include "kernel/copy.hpp"
#include "kernel/digits.hpp"
#include "portable/portable.hpp"

namespace {

constexpr uint32_t kCounterTop = 0xFFFE;  // the cycle is 1 to here, then 0
constexpr uint32_t kIntegerOption = 3;    // type of a 32-bit option
constexpr uint32_t kNameChars = JX_NAME_MAX_CHARS;

constexpr JXChar kProcessOption[] = {'h', 'o', 's', 't', '.', 'p', 'r', 'o',
                                     'c', 'e', 's', 's', '_', 'i', 'd'};
constexpr JXChar kHostStart[] = {'Z', 'O', 'R', '_', 'u', 't', 'i', 'l'};
constexpr JXChar kCountStart[] = {'0', '0'};  // before the digits of a count
constexpr JXChar kHostMark[] = {'_'};         // before the host name

// The next value of the counter. Callers that pass the top at the same moment all get 0.
uint32_t next_count(JXInstance *instance) {
  const uint32_t value = jxAtomicAdd(&instance->name_counter, 1);
  if (value <= kCounterTop) return value;
  jxAtomicSet(&instance->name_counter, value, 0);
  return 0;
}

JXStatus read_process_id(uint32_t *process_id_out) {
  JXHost *host = Exported_JXHandle;
  if (!host || !host->get_option) return JXWEM_E_NOHANDLE;
  uint32_t size_bytes = sizeof *process_id_out;
  return host->get_option(host, kProcessOption, std::size(kProcessOption), kIntegerOption,
                          process_id_out, &size_bytes);
}

// The parts of a member name.
struct NameParts {
  uint32_t count;
  uint32_t process_id;
  bool is_host_form;
  jx::Text text;        // the host name or the prefix
  int32_t width_chars;  // field width of the text
};

// The member name while it is made. The caller has checked that the pieces fit.
class MemberName {
 public:
  jx::Text text() const { return {text_, chars_}; }
  void append(jx::Text piece) {
    jx::copy_chars(piece.data, piece.chars, text_ + chars_);
    chars_ += piece.chars;
  }
  void append_blanks(uint32_t count) {
    for (; count > 0; --count) text_[chars_++] = ' ';
  }
  // The last digits of a value.
  void append_hexadecimal(uint32_t value, uint32_t digits) {
    jx::write_hexadecimal(text_ + chars_, value, digits, true);
    chars_ += digits;
  }

 private:
  JXChar text_[kNameChars];
  uint32_t chars_ = 0;
};

// Makes the member name. 0, or JX_E_TRUNCATED when it would be longer than kNameChars.
// Host form: ZOR_util, count (4 digits), process (8), "_", text. Prefix form: text, process (4),
// count (6).
JXStatus make_name(const NameParts &parts, MemberName *name) {
  constexpr uint32_t kFixedChars[] = {4 + 6, std::size(kHostStart) + 4 + 8 + 1};
  const JXChar *text_end = std::find(parts.text.data, parts.text.data + parts.text.chars, 0u);
  const jx::Text text = {parts.text.data, static_cast<uint32_t>(text_end - parts.text.data)};
  // Blanks fill the field before the text, or after it when the width is negative.
  const bool is_left = parts.width_chars < 0;
  const auto width = static_cast<uint32_t>(parts.width_chars);
  const uint32_t field_chars = std::max(is_left ? 0 - width : width, text.chars);
  if (field_chars > kNameChars - kFixedChars[parts.is_host_form]) return JX_E_TRUNCATED;
  const uint32_t blanks = field_chars - text.chars;
  if (parts.is_host_form) {
    name->append({kHostStart, std::size(kHostStart)});
    name->append_hexadecimal(parts.count, 4);
    name->append_hexadecimal(parts.process_id, 8);
    name->append({kHostMark, 1});
  }
  if (!is_left) name->append_blanks(blanks);
  name->append(text);
  if (is_left) name->append_blanks(blanks);
  if (!parts.is_host_form) {
    name->append_hexadecimal(parts.process_id, 4);
    name->append({kCountStart, std::size(kCountStart)});
    name->append_hexadecimal(parts.count, 4);
  }
  return JX_OK;
}

JXStatus choose_text(const JXInstance *instance, const JXCreateName &request, NameParts *parts) {
  parts->is_host_form = (request.flags & JX_NAME_HOST) != 0;
  if (parts->is_host_form) {
    // The length is the extension's word; the room is ours.
    const uint32_t recorded_chars = instance->host_name_chars;
    parts->text = {instance->host_name, std::min<uint32_t>(recorded_chars, JX_HOST_NAME_CHARS)};
    parts->width_chars = static_cast<int32_t>(recorded_chars);
  } else {
    parts->text = {request.prefix, request.prefix ? request.prefix_chars : 0};
    parts->width_chars = static_cast<int32_t>(parts->text.chars);
  }
  return parts->text.chars < kNameChars ? JX_OK : JXWEM_E_NAMETOOLONG;
}

}  // namespace

extern "C" JXStatus jxwemcreatename(JXInstance *instance, const JXChar *directory,
                                    uint32_t directory_chars, const JXCreateName *request,
                                    JXChar **path_out, uint32_t *path_chars_out) {
  if (!instance) return JXWEM_E_NOHANDLE;
  if (!request || !path_out || !path_chars_out) return JXWEM_E_FAILED;
  NameParts parts = {next_count(instance), 0, false, {}, 0};
  JXStatus status = read_process_id(&parts.process_id);
  if (status != JX_OK) return status;
  const bool has_extension = (request->flags & JX_NAME_EXTENSION) != 0;
  const uint32_t extension_chars = has_extension ? request->extension_chars : 0;
  if ((request->flags & (JX_NAME_EXTENSION | JX_NAME_PREFIX | JX_NAME_HOST)) == 0) {
    return JXWEM_E_BADOPTIONS;
  }
  status = choose_text(instance, *request, &parts);
  if (status != JX_OK) return status;
  __attribute__((uninitialized)) MemberName name;  // written before it is read; 4 KiB
  status = make_name(parts, &name);
  if (status != JX_OK) return status;
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  status = bkwembuildpath(instance, directory, directory_chars, name.text().data, name.text().chars,
                          request->extension, extension_chars, &path, &path_chars);
  if (status != JX_OK) return status;
  *path_out = path;
  *path_chars_out = path_chars;
  return JX_OK;
}
