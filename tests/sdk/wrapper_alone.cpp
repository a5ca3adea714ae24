// The C++ wrapper in a host that shares nothing with the reference host: what is said to need only
// the headers links and works without it.
#include "jx/wem.hpp"

extern "C" int use_wrapper(JXInstance *raw, const JXChar *path, uint32_t path_chars);

// Appends two lines to a new file and reads them back. 1 when all went well.
extern "C" int use_wrapper(JXInstance *raw, const JXChar *path, uint32_t path_chars) {
  const wem::Instance instance(raw);
  const std::u32string_view name = wem::as_view(path, path_chars);
  for (const std::u32string_view line : {U"one", U"two"}) {
    auto file = instance.open(name, wem::OpenOptions::append().text(80));
    if (!file || !file->write(line).ok() || !file->close().ok()) return 0;
  }
  std::u32string seen;
  auto file = instance.open(name, wem::OpenOptions::input().text(80));
  for (const wem::Record &record : file->records()) seen += record.text();
  const auto parts = instance.split_path(name);
  auto directory = instance.open_directory(*parts->directory);
  return seen == U"onetwo" && directory->contains(*parts->member).ok() &&
         instance.remove(name).ok();
}
