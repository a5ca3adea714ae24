// A host in C++ through the wrapper: writes a text file, reads it back, and looks at its directory.
// Usage: host MODULE FILE
#include <cstdio>
#include <ctime>
#include <string>

#include "jx/wem.hpp"

namespace {

wem::Status write_lines(const wem::Instance &instance, const wem::Name &name) {
  const auto options = wem::OpenOptions::output().text(1000).file_encoding(JX_ENCODING_UTF16LE);
  auto file = instance.open(name, options);
  if (!file) return file.status();
  for (const char *line : {"first line", "zweite Zeile: äöü", "第三行"}) {
    if (const wem::Status status = file->write_line(line); !status.ok()) return status;
  }
  return file->close();
}

wem::Status print_lines(const wem::Instance &instance, const wem::Name &name) {
  const auto options = wem::OpenOptions::input().text().file_encoding(JX_ENCODING_UTF16LE);
  auto file = instance.open(name, options);
  if (!file) return file.status();
  wem::LineRange lines = file->lines();
  int number = 0;
  for (const std::string &line : lines) std::printf("%d: %s\n", ++number, line.c_str());
  std::printf("%d records\n", number);
  return lines.error().ok() ? file->close() : lines.error();
}

wem::Status print_neighbours(const wem::Instance &instance, const wem::Name &name) {
  const auto list = instance.directory_list(name, JX_DIRECTORY_PARENT, JX_LIST_INFORMATION);
  if (!list) return list.status();
  for (const JXDirectoryEntry &entry : *list) {
    const auto info = instance.info_of(entry);
    if (!info) continue;
    const std::time_t modified = info->modified_time_t();
    char date[32];
    std::strftime(date, sizeof date, "%F %T", std::localtime(&modified));
    std::printf("%s  %s  %llu bytes\n", date, wem::Name(wem::name_of(entry)).utf8().c_str(),
                static_cast<unsigned long long>(info->size_bytes));
  }
  return wem::Status();
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  std::string error;
  const wem::Module module = wem::Module::load(argv[1], nullptr, &error);
  if (!module) {
    std::fprintf(stderr, "%s: %s\n", argv[1], error.c_str());
    return 1;
  }
  const wem::Name name = argv[2];
  wem::Status status = write_lines(module.instance(), name);
  if (status.ok()) status = print_lines(module.instance(), name);
  if (status.ok()) status = print_neighbours(module.instance(), name);
  if (!status.ok()) std::fprintf(stderr, "%s: %s\n", argv[2], status.text());
  return status.ok() ? 0 : 1;
}
