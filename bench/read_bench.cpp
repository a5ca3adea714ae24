// Reading: text lines as they are in the file, and binary records.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>

#include "bench/contender.hpp"
#include "bench/peers.hpp"

namespace {

using namespace jx::bench;

struct CloseFile {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File open_file(const std::string &path) {
  File file(std::fopen(path.c_str(), "rb"));
  if (!file) fail("cannot open " + path);
  return file;
}

// ---- Lines

uint64_t lines_by_map(const std::string &path) {
  const int fd = open(path.c_str(), O_RDONLY);
  struct stat info;
  fstat(fd, &info);
  const auto size = static_cast<size_t>(info.st_size);
  void *map = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
  Tally tally;
  const char *next = static_cast<const char *>(map);
  const char *const end = next + size;
  while (next < end) {
    const void *line_end = std::memchr(next, '\n', static_cast<size_t>(end - next));
    const auto bytes = static_cast<size_t>(static_cast<const char *>(line_end) - next);
    tally.line(next, bytes);
    next += bytes + 1;
  }
  munmap(map, size);
  close(fd);
  return tally.value();
}

uint64_t lines_by_blocks(const std::string &path) {
  return split_then(path,
                    [](const char *line, size_t bytes, Tally &tally) { tally.line(line, bytes); });
}

uint64_t lines_by_getline(const std::string &path) {
  const File file = open_file(path);
  Tally tally;
  char *line = nullptr;
  size_t room = 0;
  for (ssize_t got; (got = getline(&line, &room, file.get())) > 0;) {
    tally.line(line, static_cast<size_t>(got - 1));
  }
  std::free(line);
  return tally.value();
}

uint64_t lines_by_fgets(const std::string &path, decltype(fgets) *get) {
  const File file = open_file(path);
  Tally tally;
  char line[kWidestLine];
  while (get(line, sizeof line, file.get())) tally.line(line, std::strlen(line) - 1);
  return tally.value();
}

uint64_t lines_by_getc(const std::string &path) {
  const File file = open_file(path);
  Tally tally;
  char line[kWidestLine];
  size_t n = 0;
  for (int c; (c = getc_unlocked(file.get())) != EOF;) {
    if (c != '\n') {
      line[n++] = static_cast<char>(c);
      continue;
    }
    tally.line(line, n);
    n = 0;
  }
  return tally.value();
}

uint64_t lines_by_stream(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  Tally tally;
  for (std::string line; std::getline(file, line);) tally.line(line.data(), line.size());
  return tally.value();
}

#ifdef JX_BENCH_GLIB
uint64_t lines_by_channel(const std::string &path) {
  GIOChannel *channel = g_io_channel_new_file(path.c_str(), "r", nullptr);
  g_io_channel_set_encoding(channel, nullptr, nullptr);
  Tally tally;
  gchar *line = nullptr;
  gsize bytes = 0, end = 0;
  while (g_io_channel_read_line(channel, &line, &bytes, &end, nullptr) == G_IO_STATUS_NORMAL) {
    tally.line(line, end);
    g_free(line);
  }
  g_io_channel_unref(channel);
  return tally.value();
}

uint64_t lines_by_data_stream(const std::string &path) {
  GFile *name = g_file_new_for_path(path.c_str());
  GFileInputStream *file = g_file_read(name, nullptr, nullptr);
  GDataInputStream *data = g_data_input_stream_new(G_INPUT_STREAM(file));
  Tally tally;
  gsize bytes = 0;
  while (char *line = g_data_input_stream_read_line(data, &bytes, nullptr, nullptr)) {
    tally.line(line, bytes);
    g_free(line);
  }
  g_object_unref(data);
  g_object_unref(file);
  g_object_unref(name);
  return tally.value();
}
#endif

void lines_case(Job &job, const std::string &name, const std::string &path, size_t mean,
                uint32_t record_length) {
  const auto lines = make_lines(Script::kAscii, mean, 8 << 20);
  write_file(path, join_utf8(lines));
  job.begin(name, static_cast<double>(lines.size()));
  const auto add = [&](const char *who, auto read, Kind kind = Kind::kPeer) {
    job.add(
        who, [=](Watch &) { return read(path); }, kind);
  };
  add("getline(3)", lines_by_getline);
  add("fgets", [](const std::string &p) { return lines_by_fgets(p, fgets); });
  add("fgets_unlocked", [](const std::string &p) { return lines_by_fgets(p, fgets_unlocked); });
  add("getc_unlocked", lines_by_getc);
  add("ifstream, std::getline", lines_by_stream);
#ifdef JX_BENCH_GLIB
  add("GLib GIOChannel read_line", lines_by_channel);
  add("GLib GDataInputStream", lines_by_data_stream);
#endif
  const JXOpenOptions options = text_options(JX_ACCESS_INPUT, record_length, JX_ENCODING_UTF8);
  add(
      kModule, [=](const std::string &p) { return tally_records(p, options); }, Kind::kModule);
  add("mmap, memchr", lines_by_map, Kind::kLimit);
  add("read(2) 8 KiB, memchr", lines_by_blocks, Kind::kLimit);
  job.end();
}

// ---- Binary records

uint64_t records_by_fread(const std::string &path, size_t record, decltype(fread) *get) {
  const File file = open_file(path);
  Tally tally;
  char data[kWidestLine];
  while (get(data, 1, record, file.get()) == record) tally.line(data, record);
  return tally.value();
}

uint64_t records_by_filebuf(const std::string &path, size_t record) {
  std::filebuf file;
  file.open(path, std::ios::in | std::ios::binary);
  Tally tally;
  char data[kWidestLine];
  const auto wish = static_cast<std::streamsize>(record);
  while (file.sgetn(data, wish) == wish) tally.line(data, record);
  return tally.value();
}

uint64_t records_in_place(const std::string &path, size_t record) {
  const int fd = open(path.c_str(), O_RDONLY);
  Tally tally;
  static char buffer[8192 + kWidestLine];
  size_t begin = 0, held = 0;
  for (;;) {
    if (held < record) {
      std::memmove(buffer, buffer + begin, held);
      begin = 0;
      const ssize_t got = read(fd, buffer + held, 8192);
      if (got <= 0) break;
      held += static_cast<size_t>(got);
    }
    tally.line(buffer + begin, record);
    begin += record;
    held -= record;
  }
  close(fd);
  return tally.value();
}

void binary_case(Job &job, const std::string &path, size_t record) {
  const size_t count = (8 << 20) / record;
  write_file(path, std::string(count * record, 'x'));
  job.begin(std::to_string(record) + " B", static_cast<double>(count));
  const auto add = [&](const char *who, auto read, Kind kind = Kind::kPeer) {
    job.add(
        who, [=](Watch &) { return read(); }, kind);
  };
  add("fread", [=] { return records_by_fread(path, record, fread); });
  add("fread_unlocked", [=] { return records_by_fread(path, record, fread_unlocked); });
  add("filebuf.sgetn", [=] { return records_by_filebuf(path, record); });
  const auto length = static_cast<uint32_t>(record);
  const JXOpenOptions options = binary_options(JX_ACCESS_INPUT, length);
  add(
      kModule, [=] { return tally_records(path, options, length); }, Kind::kModule);
  add(
      "read(2) 8 KiB, records in place", [=] { return records_in_place(path, record); },
      Kind::kLimit);
  job.end();
}

}  // namespace

int main() {
  const Scratch scratch;
  const std::string path = scratch.at("records");
  Job lines("read-lines", "Text lines read", "ns/line", 1e9);
  lines_case(lines, "20 B", path, 20, 512);
  lines_case(lines, "80 B", path, 80, 512);
  lines_case(lines, "80 B, record length 1 MiB", path, 80, 1 << 20);
  lines_case(lines, "1000 B", path, 1000, 8192);
  lines.print();

  Job binary("read-binary", "Binary records read", "ns/record", 1e9);
  for (const size_t record : {80u, 4096u}) binary_case(binary, path, record);
  binary.print();

  return 0;
}
