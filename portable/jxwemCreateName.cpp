// jxwemcreatename, the create_name slot: a name that no other caller was given recently.
#include <algorithm>
#include <iterator>

#include "jx/exports/portable.h"
#include "jx/exports/posix.h"
#include "jx/runtime.h"
#include "portable/portable.hpp"

namespace {

constexpr uint32_t kCounterTop = 0xFFFE;  // the cycle is 1 to here, then 0
constexpr uint32_t kIntegerOption = 3;    // type of a 32-bit option
constexpr uint32_t kNameChars = JX_NAME_MAX_CHARS;

constexpr JXChar kProcessOption[] = {'h', 'o', 's', 't', '.', 'p', 'r', 'o',
                                     'c', 'e', 's', 's', '_', 'i', 'd'};
constexpr JXChar kHostFormat[] = {'Z', 'O', 'R', '_', 'u', 't', 'i', 'l', '%', '0',
                                  '4', 'X', '%', '0', '8', 'X', '_', '%', '*', 's'};
constexpr JXChar kPrefixFormat[] = {'%', '*', 's', '%', '0', '4', 'X', '%', '0', '6', 'X'};

// The next value of the counter. Callers that pass the top at the same moment all get 0.
uint32_t next_count(JXInstance *instance) {
  const uint32_t value = jxAtomicAdd(&instance->name_counter, 1);
  if (value <= kCounterTop) return value;
  jxAtomicSet(&instance->name_counter, value, 0);
  return 0;
}

JXStatus read_process_id(uint32_t *process_id_out) {
  JXHost *host = Exported_JXHandle;
  if (!host) return JXWEM_E_NOHANDLE;
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

// Formats the member name into room for kNameChars. 0 or the formatter's status.
JXStatus format_name(const NameParts &parts, JXChar *name, uint32_t *name_chars_out) {
  JXChar text[kNameChars];  // the formatter takes its texts with a terminator
  std::copy_n(parts.text.data, parts.text.chars, text);
  text[parts.text.chars] = 0;
  if (parts.is_host_form) {
    return jxzFormatBuff(nullptr, kHostFormat, std::size(kHostFormat), name, kNameChars,
                         name_chars_out, parts.count, parts.process_id, parts.width_chars, text);
  }
  return jxzFormatBuff(nullptr, kPrefixFormat, std::size(kPrefixFormat), name, kNameChars,
                       name_chars_out, parts.width_chars, text, parts.process_id & 0xFFFF,
                       parts.count);
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
  JXChar name[kNameChars];
  uint32_t name_chars = 0;
  status = format_name(parts, name, &name_chars);
  if (status != JX_OK) return status;
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  status = bkwembuildpath(instance, directory, directory_chars, name, name_chars,
                          request->extension, extension_chars, &path, &path_chars);
  if (status != JX_OK) return status;
  *path_out = path;
  *path_chars_out = path_chars;
  return JX_OK;
}
