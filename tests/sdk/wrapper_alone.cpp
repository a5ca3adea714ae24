// The C++ wrapper in a host without the reference host: the header-only part links and works.
#include "jx/wem.hpp"

extern "C" int use_wrapper(JXInstance *raw, const JXChar *path, uint32_t path_chars);

// Appends two lines to a new file and reads them back. 1 on success.
extern "C" int use_wrapper(JXInstance *raw, const JXChar *path, uint32_t path_chars) {
  const wem::Instance instance(raw);
  const wem::Name name = wem::as_view(path, path_chars);
  for (const char *line : {"one", "two"}) {
    // The only encodings of the host are this one and JXChars.
    const auto options = wem::OpenOptions::append().text(80).file_encoding(JX_ENCODING_NATIVE);
    auto file = instance.open(name, options);
    if (!file || !file->write_line(line).ok() || !file->close().ok()) return 0;
  }
  auto file =
      instance.open(name, wem::OpenOptions::input().text(80).file_encoding(JX_ENCODING_NATIVE));
  const auto lines = file->read_lines();
  const auto parts = instance.split_path(name);
  auto directory = instance.open_directory(*parts->directory);
  return lines && *lines == std::vector<std::string>{"one", "two"} &&
         directory->contains(*parts->member).ok() && instance.remove(name).ok();
}
