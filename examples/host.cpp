// A host in C++ through the wrapper: writes a text file, reads it back, and looks at its directory.
// Usage: host MODULE FILE
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "jx/wem.hpp"

namespace {

// The name of a file as the module takes it: byte n is the character n.
std::u32string to_name(std::string_view bytes) {
  std::u32string name;
  for (const char byte : bytes) name += static_cast<char32_t>(static_cast<unsigned char>(byte));
  return name;
}

// A record as UTF-8 for printing.
std::string_view to_text(const wem::Record &record) {
  return {reinterpret_cast<const char *>(record.bytes.data()), record.bytes.size()};
}

wem::Status write_lines(const wem::Instance &instance, std::u32string_view name) {
  constexpr std::array<std::u32string_view, 3> kLines = {U"first line", U"zweite Zeile: äöü",
                                                         U"第三行"};
  const auto options =
      wem::OpenOptions::output().text(1000).encodings(JX_ENCODING_UTF16LE, JX_ENCODING_UTF32LE);
  auto file = instance.open(name, options);
  if (!file) return file.status();
  for (const std::u32string_view line : kLines) {
    if (const wem::Status status = file->write(line); !status.ok()) return status;
  }
  return file->close();
}

wem::Status print_lines(const wem::Instance &instance, std::u32string_view name) {
  const auto options =
      wem::OpenOptions::input().text(1000).encodings(JX_ENCODING_UTF16LE, JX_ENCODING_UTF8);
  auto file = instance.open(name, options);
  if (!file) return file.status();
  wem::RecordRange records = file->records();
  int number = 0;
  for (const wem::Record &record : records) {
    const std::string_view text = to_text(record);
    std::printf("%d: %.*s\n", ++number, static_cast<int>(text.size()), text.data());
  }
  std::printf("%d records\n", number);
  return records.status() == JXWEM_E_EOF ? file->close() : records.status();
}

wem::Status print_neighbours(const wem::Instance &instance, std::u32string_view name) {
  const auto list = instance.directory_list(name, JX_DIRECTORY_PARENT, JX_LIST_INFORMATION);
  if (!list) return list.status();
  for (const JXDirectoryEntry &entry : *list) {
    for (const char32_t character : wem::name_of(entry)) std::putchar(static_cast<int>(character));
    std::printf("  %lld bytes\n", static_cast<long long>(entry.size_bytes));
  }
  return JX_OK;
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
  const std::u32string name = to_name(argv[2]);
  wem::Status status = write_lines(module.instance(), name);
  if (status.ok()) status = print_lines(module.instance(), name);
  if (status.ok()) status = print_neighbours(module.instance(), name);
  if (!status.ok()) std::fprintf(stderr, "%s: %s\n", argv[2], status.text());
  return status.ok() ? 0 : 1;
}
