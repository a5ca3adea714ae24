// An open directory.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "jx/wem.h"
#include "jx/wem/handle.hpp"
#include "jx/wem/status.hpp"
#include "jx/wem/tables.hpp"
#include "jx/wem/text.hpp"

namespace wem {

namespace detail {

// Reads the next name of a directory.
inline Result<std::u32string> read_entry(JXDirectory *directory) {
  std::array<JXChar, JX_NAME_MAX_CHARS> buffer;
  uint32_t chars = JX_NAME_MAX_CHARS;
  const Status status = call(directory, &JXDirectory::read, buffer.data(), &chars);
  if (!status.ok()) return Failed(status);
  return Result<std::u32string>(std::u32string(as_view(buffer.data(), chars)));
}

struct EntryReader {
  using Item = std::u32string;
  Result<std::u32string> read() { return read_entry(directory.get()); }
  Handle<JXDirectory>::Watch directory;
};

}  // namespace detail

// The names of a directory not read yet, in the form that Name takes.
using EntryRange = ReadRange<detail::EntryReader>;

// An open directory; the destructor closes it. Used by one thread at a time. On a directory that is
// closed, moved from or was never opened every operation answers JXWEM_E_NOHANDLE. The module stays
// loaded as long as a directory is open.
class Directory {
 public:
  Directory() = default;
  // Takes ownership of a directory.
  explicit Directory(JXDirectory *directory, Keeper keeper = {})
      : handle_(directory, std::move(keeper)) {}

  // Whether it is open.
  explicit operator bool() const { return raw() != nullptr; }
  // The module's handle, which stays this object's; null when it is not open.
  JXDirectory *raw() const { return handle_.get(); }
  // 0 for a directory that is closed already.
  Status close() { return handle_.close(); }

  // The next name, in the system's order. JXWEM_E_EOF after the last one.
  Result<std::u32string> read() { return detail::read_entry(raw()); }
  // Every name not read yet, for a range-for; check error() after the loop.
  EntryRange entries() & { return EntryRange({handle_.watch()}); }
  EntryRange entries() && = delete;
  // 0 when the directory holds a member of that name; JXWEM_E_NOTFOUND.
  Status contains(const Name &name) const {
    const std::u32string_view chars = name.chars();
    return detail::call(raw(), &JXDirectory::member_exist, as_chars(chars), char_count(chars));
  }
  // The members not read yet as a table, by JX_LIST_* flags.
  Result<Table<JXMember>> members(uint32_t flags = 0) {
    if (!raw()) return Failed(JXWEM_E_NOHANDLE);
    Pool pool(raw()->instance->host, "jxwem members");
    if (!pool) return Failed(JX_E_NOMEM);
    uint64_t count = 0;
    JXStatus status = JX_OK;
    JXTable *table = raw()->member_list(raw(), pool.raw(), flags, &count, &status);
    if (!table && status != JX_OK) return Failed(status);
    return Result<Table<JXMember>>(Table<JXMember>(table, std::move(pool), handle_.keeper()));
  }

 private:
  detail::Handle<JXDirectory> handle_;
};

}  // namespace wem
