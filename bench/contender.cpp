#include "bench/contender.hpp"

namespace jx::bench {

namespace {

JXOpenOptions options_of(uint32_t access, uint32_t format, uint32_t record_length) {
  JXOpenOptions options{};
  options.access_mode = access;
  options.buffered = 1;
  options.record_format = format;
  options.record_length = record_length;
  options.lock_mode = JX_LOCK_NONE;
  options.open_flags = JX_OPEN_NO_BOM;
  return options;
}

}  // namespace

JXInstance *instance() {
  static JXInstance *const made = [] {
    const char *error = "";
    JXHostModule *module = nullptr;
    JXHost *host = jxhost_create(nullptr);
    JXInstance *loaded = host ? jxhost_load(host, JXWEM_PATH, nullptr, &module, &error) : nullptr;
    if (!loaded) fail(error);
    return loaded;
  }();
  return made;
}

JXOpenOptions text_options(uint32_t access, uint32_t record_length, uint32_t record_encoding) {
  JXOpenOptions options = options_of(access, JX_FORMAT_VARIABLE, record_length);
  options.file_encoding = JX_ENCODING_UTF8;
  options.record_encoding = record_encoding;
  return options;
}

JXOpenOptions binary_options(uint32_t access, uint32_t record_length) {
  return options_of(access, JX_FORMAT_BINARY, record_length);
}

ModuleFile::ModuleFile(const std::string &path, const JXOpenOptions &options) {
  const Name name(path);
  JXOpenOptions wanted = options;
  JXStatus status = JX_OK;
  file_ = instance()->open(instance(), name.data(), name.chars(), &wanted, 0, nullptr, nullptr,
                           &status);
  if (!file_) fail("the module does not open " + path + ": " + jxhost_status_text(status));
}

uint64_t tally_records(const std::string &path, const JXOpenOptions &options, uint32_t wish) {
  ModuleFile file(path, options);
  Tally tally;
  void *data = nullptr;
  const bool is_wide = options.file_encoding != options.record_encoding;
  for (uint32_t bytes = wish; file.read(&data, &bytes); bytes = wish) {
    if (is_wide) {
      tally.line(static_cast<const JXChar *>(data), bytes / sizeof(JXChar));
    } else {
      tally.line(static_cast<const char *>(data), bytes);
    }
  }
  return tally.value();
}

Totals list_with_module(const std::string &path) {
  const Name name(path);
  Totals totals;
  uint64_t count = 0;
  JXStatus status = JX_OK;
  JXTable *table =
      instance()->directory_list(instance(), name.data(), name.chars(), JX_DIRECTORY_NAMED,
                                 JX_LIST_INFORMATION, &count, &status);
  if (!table) fail("the module does not list " + path);
  // The first entry is the directory itself.
  const JXTableEntry *entry = jxhost_table_next(jxhost_table_first(table));
  for (; entry; entry = jxhost_table_next(entry)) {
    const auto *record = static_cast<const JXDirectoryEntry *>(entry->value);
    ++totals.members;
    if (record->is_dir) {
      ++totals.directories;
    } else {
      totals.bytes_of_files += static_cast<uint64_t>(record->size_bytes);
    }
  }
  (void)table->destroy_table(table);
  return totals;
}

void copy_with_module(const std::string &from, const std::string &to) {
  const Name source(from), target(to);
  if (instance()->copy(instance(), source.data(), source.chars(), target.data(), target.chars()) !=
      JX_OK) {
    fail("the module does not copy " + from);
  }
}

void remove_with_module(const std::string &path) {
  const Name name(path);
  if (instance()->remove(instance(), name.data(), name.chars(), JX_REMOVE_CONTENTS) != JX_OK) {
    fail("the module does not remove " + path);
  }
}

}  // namespace jx::bench
