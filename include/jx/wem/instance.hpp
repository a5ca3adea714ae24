// The operation table of the module's instance.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jx/wem.h"
#include "jx/wem/directory.hpp"
#include "jx/wem/file.hpp"
#include "jx/wem/options.hpp"
#include "jx/wem/paths.hpp"
#include "jx/wem/status.hpp"
#include "jx/wem/tables.hpp"
#include "jx/wem/text.hpp"

namespace wem {

// A version, most significant number first.
struct Version {
  uint32_t a = 0;  // major
  uint32_t b = 0;  // minor
  uint32_t c = 0;  // patch
};

// The operations of an instance. Copies share the instance; any number of threads may call. The
// instance of a Module lives as long as a copy of it, a file, a directory or a table does. One that
// a host made itself is not owned: the host destroys it after all of these. A default instance
// answers JXWEM_E_NOHANDLE; the other statuses are those of the slot of the same name in jx/wem.h.
// Paths are expanded: variables, "~", leading dots.
class Instance {
 public:
  Instance() = default;
  // An instance of the module; the keeper, if any, owns it.
  explicit Instance(JXInstance *instance, Keeper keeper = {})
      : instance_(std::move(keeper), instance) {}

  // Whether there is an instance.
  explicit operator bool() const { return instance_ != nullptr; }
  // The module's instance, null in a default one.
  JXInstance *raw() const { return instance_.get(); }

  // The host version that the module requires, and its own; 0.0.0 for a default instance.
  Version required_version() const { return version_from(&JXInstance::get_required_version); }
  Version version() const { return version_from(&JXInstance::get_version); }

  // Opens a file. A record length of 0 is JXWEM_E_BADOPTIONS. Options are checked before a file is
  // created or emptied. An append or update never puts a byte-order mark into the middle of a text
  // or stream file: when one might be due, the file is opened a second time to see whether it is
  // empty. System errors go to the instance's journal unless the options name another. caller_tag8
  // is copied; it may be null.
  Result<File> open(const Name &name, const OpenOptions &options,
                    const char *caller_tag8 = nullptr) const {
    if (!instance_) return Failed(JXWEM_E_NOHANDLE);
    if (const Status status = check(options); !status.ok()) return Failed(status);
    if (!may_mark_middle(options)) return open_as_asked(name, options, caller_tag8);
    Result<File> file = open_as_asked(name, options.no_byte_order_mark(), caller_tag8);
    if (!file) return file;
    Result<File> measured = open_to_measure(name, options);
    if (!measured) return measured;
    const auto size = measured->point(0, JX_POINT_END);
    if (size && *size > 0) return file;
    // Closed only now: if a pipe had no writer in between, its reader would see the end.
    if (const Status status = file->close(); !status.ok()) return Failed(status);
    return open_as_asked(name, options, caller_tag8);
  }
  // Opens a directory for reading names, by JX_DIRECTORY_* options.
  Result<Directory> open_directory(const Name &path, uint32_t options = 0) const {
    if (!instance_) return Failed(JXWEM_E_NOHANDLE);
    const std::u32string_view chars = path.chars();
    JXStatus status = JX_OK;
    JXDirectory *directory = instance_->directory_open(raw(), as_chars(chars), char_count(chars),
                                                       options, 0, nullptr, nullptr, &status);
    if (!directory) return Failed(status);
    return Result<Directory>(Directory(directory, instance_));
  }

  // All lines of a text file in UTF-8, of any length.
  Result<std::vector<std::string>> read_lines(const Name &name,
                                              uint32_t file_encoding = JX_ENCODING_UTF8) const {
    auto file = open(name, OpenOptions::input().text().file_encoding(file_encoding));
    if (!file) return Failed(file.status());
    return file->read_lines();
  }
  // The same in one text, each line with a line feed after it.
  Result<std::string> read_text(const Name &name, uint32_t file_encoding = JX_ENCODING_UTF8) const {
    const Encodings encodings = {file_encoding, JX_ENCODING_UTF8};
    auto file = open(name, OpenOptions::input().text().encodings(encodings));
    if (!file) return Failed(file.status());
    return file->read_text();
  }
  // All bytes of a file.
  Result<std::vector<std::byte>> read_bytes(const Name &name) const {
    auto file = open(name, OpenOptions::input().binary(JX_RECORD_BLOCK_BYTES).direct());
    if (!file) return Failed(file.status());
    return file->read_bytes();
  }

  // Joins and expands the parts of a path; an empty part is left out.
  Result<std::u32string> build_path(const Name &directory, const Name &member = {},
                                    const Name &extension = {}) const {
    const std::u32string_view parts[] = {directory.chars(), member.chars(), extension.chars()};
    return lent_path(&JXInstance::build_path, &JXInstance::build_path_release, as_chars(parts[0]),
                     char_count(parts[0]), as_chars(parts[1]), char_count(parts[1]),
                     as_chars(parts[2]), char_count(parts[2]));
  }
  // Splits a path, without access to the file system.
  Result<SplitPath> split_path(const Name &path) const {
    detail::LentParts parts(raw());
    const Status status =
        on_path(&JXInstance::split_path, path, &parts.text[0], &parts.chars[0], &parts.text[1],
                &parts.chars[1], &parts.text[2], &parts.chars[2], &parts.text[3], &parts.chars[3]);
    if (!status.ok()) return Failed(status);
    return Result<SplitPath>(parts.copy());
  }

  // 0 when the path names something.
  Status exist(const Name &path) const { return on_path(&JXInstance::exist, path); }
  // Makes one directory; an existing directory is success.
  Status make_directory(const Name &path) const {
    return on_path(&JXInstance::make_directory, path);
  }
  // Removes a file or an empty directory; with_contents a whole tree.
  Status remove(const Name &path, bool with_contents = false) const {
    return on_path(&JXInstance::remove, path, with_contents ? JX_REMOVE_CONTENTS : 0u);
  }
  // Renames, replacing what the system replaces.
  Status rename(const Name &old_path, const Name &new_path) const {
    const std::u32string_view target = new_path.chars();
    return on_path(&JXInstance::rename, old_path, as_chars(target), char_count(target));
  }
  // Copies a file or a tree to a name that does not exist yet.
  Status copy(const Name &source, const Name &target_path) const {
    const std::u32string_view target = target_path.chars();
    return on_path(&JXInstance::copy, source, as_chars(target), char_count(target));
  }

  // The information table of a file.
  Result<Table<JXInfoItem>> info_table(const Name &path) const {
    const std::u32string_view chars = path.chars();
    return to_table<JXInfoItem>([&](JXStatus *status) {
      return instance_->info(raw(), instance_->pool, as_chars(chars), char_count(chars), status);
    });
  }
  // The facts in that table.
  Result<FileInfo> info(const Name &path) const {
    const auto table = info_table(path);
    if (!table) return Failed(table.status());
    return Result<FileInfo>(to_file_info(*table, instance_->host->time_zone));
  }
  // The information in a record of a directory list; empty when it was not asked for or not found.
  std::optional<FileInfo> info_of(const JXDirectoryEntry &entry) const {
    if (!instance_ || entry.size_bytes < 0) return std::nullopt;
    return FileInfo{static_cast<uint64_t>(entry.size_bytes), entry.modified, entry.is_dir != 0,
                    to_system_time(entry.modified, instance_->host->time_zone)};
  }
  // The same two for the file system of the path.
  Result<Table<JXInfoItem>> file_system_info_table(const Name &path) const {
    const std::u32string_view chars = path.chars();
    return to_table<JXInfoItem>([&](JXStatus *status) {
      return instance_->file_system_info(raw(), as_chars(chars), char_count(chars), status);
    });
  }
  Result<FileSystemInfo> file_system_info(const Name &path) const {
    const auto table = file_system_info_table(path);
    if (!table) return Failed(table.status());
    return Result<FileSystemInfo>(to_file_system_info(*table));
  }

  // A directory (kind JX_DIRECTORY_*) and its members, by JX_LIST_* flags. The first record is the
  // directory itself.
  Result<Table<JXDirectoryEntry>> directory_list(const Name &path,
                                                 uint32_t kind = JX_DIRECTORY_NAMED,
                                                 uint32_t flags = 0) const {
    const std::u32string_view chars = path.chars();
    uint64_t count = 0;
    return to_table<JXDirectoryEntry>([&](JXStatus *status) {
      return instance_->directory_list(raw(), as_chars(chars), char_count(chars), kind, flags,
                                       &count, status);
    });
  }

  // A name in a directory (empty: the current one) that was not returned recently.
  Result<std::u32string> create_name(const Name &directory, const NameRequest &wanted) const {
    const std::u32string_view prefix = wanted.prefix ? wanted.prefix->chars() : U"";
    const std::u32string_view extension = wanted.extension ? wanted.extension->chars() : U"";
    const JXCreateName request = {as_chars(prefix), char_count(prefix), as_chars(extension),
                                  char_count(extension),
                                  (wanted.prefix ? JX_NAME_PREFIX : JX_NAME_HOST) |
                                      (wanted.extension ? JX_NAME_EXTENSION : 0u)};
    const std::u32string_view folder = directory.chars();
    return lent_path(&JXInstance::create_name, &JXInstance::create_name_release, as_chars(folder),
                     char_count(folder), &request);
  }

 private:
  // Calls a version slot.
  template <typename Slot>
  Version version_from(Slot slot) const {
    Version version;
    static_cast<void>(detail::call(raw(), slot, &version.a, &version.b, &version.c));
    return version;
  }
  // Calls a slot that begins with a path.
  template <typename Slot, typename... Arguments>
  Status on_path(Slot slot, const Name &path, Arguments... arguments) const {
    const std::u32string_view chars = path.chars();
    return detail::call(raw(), slot, as_chars(chars), char_count(chars), arguments...);
  }
  // Calls a slot that returns a path, copies the path and releases it.
  template <typename Slot, typename Release, typename... Arguments>
  Result<std::u32string> lent_path(Slot slot, Release release, Arguments... arguments) const {
    JXChar *path = nullptr;
    uint32_t chars = 0;
    const Status status = detail::call(raw(), slot, arguments..., &path, &chars);
    if (!status.ok()) return Failed(status);
    const auto give_back = [this, release](JXChar *lent) {
      static_cast<void>(detail::call(raw(), release, lent));
    };
    const std::unique_ptr<JXChar, decltype(give_back)> owner(path, give_back);
    return Result<std::u32string>(std::u32string(as_view(path, chars)));
  }
  // The table that a slot made.
  template <typename Value, typename Make>
  Result<Table<Value>> to_table(Make make) const {
    if (!instance_) return Failed(JXWEM_E_NOHANDLE);
    JXStatus status = JX_OK;
    JXTable *table = make(&status);
    if (!table) return Failed(status);
    return Result<Table<Value>>(Table<Value>(table, Pool(), instance_));
  }

  // Refuses options that the module refuses only after it has created or emptied the file, or not
  // at all: empty records, and a conversion that the host does not have or has no room for.
  Status check(const OpenOptions &options) const {
    const JXOpenOptions asked = options.raw();
    if (asked.record_length == 0) return Status(JXWEM_E_BADOPTIONS);
    const Encodings encodings = options.used_encodings();
    if (asked.access_mode == JX_ACCESS_INPUT || encodings.file == encodings.record) return Status();
    JXNls *nls = instance_->nls;
    JXEncodingInfo info = {};
    const Status status(nls->encoding_info(nls, encodings.file, &info));
    if (!status.ok()) return status;
    if (asked.record_length > UINT32_MAX / sizeof(JXChar)) return Status(JX_E_NOMEM);
    auto *transcoder = nls->create_transcoder(nls, encodings.record, encodings.file, 0, nullptr);
    return Status(transcoder ? nls->destroy_transcoder(nls, transcoder) : JXWEM_E_FAILED);
  }
  // Whether a byte-order mark might go into the middle of a file.
  static bool may_mark_middle(const OpenOptions &options) {
    const uint32_t mode = options.raw().access_mode;
    const bool keeps = mode == JX_ACCESS_APPEND || mode == JX_ACCESS_UPDATE;
    return keeps && options.writes_mark();
  }
  // Opens a file, without the checks.
  Result<File> open_as_asked(const Name &name, const OpenOptions &options,
                             const char *caller_tag8) const {
    const std::u32string_view chars = name.chars();
    JXOpenOptions asked = options.raw();
    if (!asked.journal) asked.journal = instance_->journal;
    JXStatus status = JX_OK;
    JXFile *file = instance_->open(raw(), as_chars(chars), char_count(chars), &asked, 0, nullptr,
                                   caller_tag8, &status);
    if (!file) return Failed(status == JX_OK ? JXWEM_E_BADNAME : status);
    return Result<File>(File(file, options, instance_));
  }
  // Opens a file that is open already once more, with the same access, so that it needs no other
  // permissions.
  Result<File> open_to_measure(const Name &name, const OpenOptions &options) const {
    const JXOpenOptions asked = options.raw();
    const OpenOptions bytes =
        asked.access_mode == JX_ACCESS_APPEND ? OpenOptions::append() : OpenOptions::update();
    const OpenOptions unlocked = bytes.binary(1).direct().lock(JX_LOCK_NONE);
    const bool is_literal = (asked.open_flags & JX_OPEN_LITERAL_NAME) != 0;
    return open_as_asked(name, is_literal ? unlocked.literal_name() : unlocked, nullptr);
  }

  std::shared_ptr<JXInstance> instance_;  // shares in the keeper, if there is one
};

}  // namespace wem
