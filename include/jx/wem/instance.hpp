// The operation table of the module's instance.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "jx/wem.h"
#include "jx/wem/file.hpp"
#include "jx/wem/lists.hpp"
#include "jx/wem/status.hpp"

namespace wem {

// Three numbers of a version, most significant first.
struct Version {
  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
};

// A path taken apart; a component that the path does not have is empty.
struct SplitPath {
  std::optional<std::u32string> directory;
  std::optional<std::u32string> member;
  std::optional<std::u32string> base;
  std::optional<std::u32string> extension;
};

// What a created name is made of. Without a prefix the name carries the machine's name.
struct NameRequest {
  std::optional<std::u32string_view> prefix;
  std::optional<std::u32string_view> extension;
};

// The operations of an instance. Lent: the module or the host that made the instance ends it, after
// every file, directory and table that came from it. Copies are the same instance; any number of
// threads may call.
class Instance {
 public:
  Instance() = default;
  explicit Instance(JXInstance *instance) : instance_(instance) {}

  explicit operator bool() const { return instance_ != nullptr; }
  JXInstance *raw() const { return instance_; }

  // The host version that the module asks for, and its own.
  Version required_version() const { return version_from(instance_->get_required_version); }
  Version version() const { return version_from(instance_->get_version); }

  // Opens a file. An append or update of a text or stream file that is not empty gets no
  // byte-order mark in its middle, whatever the options say: the file is opened a second time, to
  // be measured, while it is opened. caller_tag8 is copied; it may be null.
  Result<File> open(std::u32string_view name, const OpenOptions &options,
                    const char *caller_tag8 = nullptr) const {
    // Closed last: a pipe whose only writer went away in between would end for its reader.
    Result<File> measured = open_to_measure(name, options);
    const auto size = measured ? measured->point(0, JX_POINT_END) : measured.status();
    const bool has_text = size && *size > 0;
    return open_as_asked(name, has_text ? options.no_byte_order_mark() : options, caller_tag8);
  }
  // Opens a directory for reading names, by JX_DIRECTORY_* options.
  Result<Directory> open_directory(std::u32string_view path, uint32_t options = 0) const {
    JXStatus status = JX_OK;
    JXDirectory *directory = instance_->directory_open(instance_, as_chars(path), char_count(path),
                                                       options, 0, nullptr, nullptr, &status);
    if (directory) return Directory(directory);
    return Status(status);
  }

  // Joins and expands the parts of a path; an empty part is left out.
  Result<std::u32string> build_path(std::u32string_view directory, std::u32string_view member = {},
                                    std::u32string_view extension = {}) const {
    JXChar *path = nullptr;
    uint32_t chars = 0;
    const Status status = instance_->build_path(
        instance_, as_chars(directory), char_count(directory), as_chars(member), char_count(member),
        as_chars(extension), char_count(extension), &path, &chars);
    if (!status.ok()) return status;
    std::u32string copy(as_view(path, chars));
    instance_->build_path_release(instance_, path);
    return copy;
  }
  // Takes a path apart, without looking at the file system.
  Result<SplitPath> split_path(std::u32string_view path) const {
    JXChar *directory = nullptr, *member = nullptr, *base = nullptr, *extension = nullptr;
    int32_t directory_chars = 0, member_chars = 0, base_chars = 0, extension_chars = 0;
    const Status status = instance_->split_path(
        instance_, as_chars(path), char_count(path), &directory, &directory_chars, &member,
        &member_chars, &base, &base_chars, &extension, &extension_chars);
    if (!status.ok()) return status;
    SplitPath parts{component(directory, directory_chars), component(member, member_chars),
                    component(base, base_chars), component(extension, extension_chars)};
    instance_->split_path_release(instance_, directory, member, base, extension);
    return parts;
  }

  // 0 when the path names something.
  Status exist(std::u32string_view path) const {
    return instance_->exist(instance_, as_chars(path), char_count(path));
  }
  Status make_directory(std::u32string_view path) const {
    return instance_->make_directory(instance_, as_chars(path), char_count(path));
  }
  // Removes a file or an empty directory; with_contents a whole tree.
  Status remove(std::u32string_view path, bool with_contents = false) const {
    return instance_->remove(instance_, as_chars(path), char_count(path),
                             with_contents ? JX_REMOVE_CONTENTS : 0u);
  }
  Status rename(std::u32string_view old_path, std::u32string_view new_path) const {
    return instance_->rename(instance_, as_chars(old_path), char_count(old_path),
                             as_chars(new_path), char_count(new_path));
  }
  // Copies a file or a tree to a name that does not exist yet.
  Status copy(std::u32string_view source, std::u32string_view target) const {
    return instance_->copy(instance_, as_chars(source), char_count(source), as_chars(target),
                           char_count(target));
  }

  // The information table of a file, and what it says.
  Result<Table<JXInfoItem>> info_table(std::u32string_view path) const {
    JXStatus status = JX_OK;
    JXTable *table =
        instance_->info(instance_, instance_->pool, as_chars(path), char_count(path), &status);
    return to_table<JXInfoItem>(table, status);
  }
  Result<FileInfo> info(std::u32string_view path) const {
    const auto table = info_table(path);
    return table ? Result<FileInfo>(to_file_info(*table)) : table.status();
  }
  // The same for the file system that holds the path.
  Result<Table<JXInfoItem>> file_system_info_table(std::u32string_view path) const {
    JXStatus status = JX_OK;
    JXTable *table =
        instance_->file_system_info(instance_, as_chars(path), char_count(path), &status);
    return to_table<JXInfoItem>(table, status);
  }
  Result<FileSystemInfo> file_system_info(std::u32string_view path) const {
    const auto table = file_system_info_table(path);
    return table ? Result<FileSystemInfo>(to_file_system_info(*table)) : table.status();
  }

  // A directory (kind JX_DIRECTORY_*) and its members, by JX_LIST_* flags. The first record is the
  // directory itself.
  Result<Table<JXDirectoryEntry>> directory_list(std::u32string_view path,
                                                 uint32_t kind = JX_DIRECTORY_NAMED,
                                                 uint32_t flags = 0) const {
    uint64_t count = 0;
    JXStatus status = JX_OK;
    JXTable *table = instance_->directory_list(instance_, as_chars(path), char_count(path), kind,
                                               flags, &count, &status);
    return to_table<JXDirectoryEntry>(table, status);
  }

  // A name in a directory (empty: the current one) that no one else was given recently.
  Result<std::u32string> create_name(std::u32string_view directory,
                                     const NameRequest &wanted) const {
    const std::u32string_view prefix = wanted.prefix.value_or(std::u32string_view());
    const std::u32string_view extension = wanted.extension.value_or(std::u32string_view());
    const JXCreateName request = {as_chars(prefix), char_count(prefix), as_chars(extension),
                                  char_count(extension),
                                  (wanted.prefix ? JX_NAME_PREFIX : JX_NAME_HOST) |
                                      (wanted.extension ? JX_NAME_EXTENSION : 0u)};
    JXChar *path = nullptr;
    uint32_t chars = 0;
    const Status status = instance_->create_name(instance_, as_chars(directory),
                                                 char_count(directory), &request, &path, &chars);
    if (!status.ok()) return status;
    std::u32string copy(as_view(path, chars));
    instance_->create_name_release(instance_, path);
    return copy;
  }

 private:
  Version version_from(JXStatus (*slot)(JXInstance *, uint32_t *, uint32_t *, uint32_t *)) const {
    Version version;
    slot(instance_, &version.a, &version.b, &version.c);
    return version;
  }
  static std::optional<std::u32string> component(const JXChar *text, int32_t chars) {
    if (!text) return std::nullopt;
    return std::u32string(as_view(text, chars));
  }
  template <typename Value>
  static Result<Table<Value>> to_table(JXTable *table, JXStatus status) {
    if (!table) return Status(status == JX_OK ? JXWEM_E_FAILED : status);
    return Table<Value>(table);
  }
  Result<File> open_as_asked(std::u32string_view name, const OpenOptions &options,
                             const char *caller_tag8) const {
    JXStatus status = JX_OK;
    JXFile *file = instance_->open(instance_, as_chars(name), char_count(name), &options.raw(), 0,
                                   nullptr, caller_tag8, &status);
    if (file) return File(file);
    return Status(status == JX_OK ? JXWEM_E_BADNAME : status);
  }
  // A second opening of a file whose size decides about its byte-order mark; a failure when the
  // size does not matter or the file is not there. It opens for what was asked and nothing more, so
  // that it neither waits longer nor needs other rights than the opening that follows.
  Result<File> open_to_measure(std::u32string_view name, const OpenOptions &options) const {
    const JXOpenOptions &raw = options.raw();
    const bool keeps = raw.access_mode == JX_ACCESS_APPEND || raw.access_mode == JX_ACCESS_UPDATE;
    const bool may_mark = (raw.open_flags & JX_OPEN_NO_BOM) == 0;
    if (!keeps || !may_mark || raw.record_format == JX_FORMAT_BINARY) {
      return Status(JXWEM_E_NOTSUPPORTED);
    }
    const bool is_literal = (raw.open_flags & JX_OPEN_LITERAL_NAME) != 0;
    // A literal name cannot be asked for, because the question expands; what is not there is made.
    if (!is_literal && !exist(name).ok()) return Status(JXWEM_E_NOTFOUND);
    const OpenOptions bytes =
        raw.access_mode == JX_ACCESS_APPEND ? OpenOptions::append() : OpenOptions::update();
    const OpenOptions unlocked = bytes.binary(1).direct().lock(JX_LOCK_NONE);
    return open_as_asked(name, is_literal ? unlocked.literal_name() : unlocked, nullptr);
  }

  JXInstance *instance_ = nullptr;
};

}  // namespace wem
