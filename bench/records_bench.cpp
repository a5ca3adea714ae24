// Records against the C library: text lines read and written, with and without transcoding, and
// binary records, on files in memory.
#include <fcntl.h>
#include <iconv.h>
#include <stdlib.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#include "bench/paired.hpp"
#include "bench/record_files.hpp"

namespace {

using namespace jx::bench;

// Reads all records and counts their bytes.
void read_all(const std::string &path, const JXOpenOptions &options, uint32_t wanted) {
  const ModuleFile file(path, options);
  uint64_t total = 0;
  void *data = nullptr;
  uint32_t length = wanted;
  for (;;) {
    const JXStatus status = file->read(file.get(), &data, &length, 0, nullptr);
    if (status != JX_OK && status != JXWEM_E_PARTIAL) break;
    total += length;
    length = wanted;
  }
  keep(total);
}

void lines(uint32_t record_length) {
  JXOpenOptions options = options_for(JX_FORMAT_VARIABLE, JX_ACCESS_INPUT, record_length);
  options.file_encoding = options.record_encoding = JX_ENCODING_UTF8;
  read_all(files().ascii(), options, 0);
}

void lines_getline() {
  FILE *file = std::fopen(files().ascii().c_str(), "r");
  char *line = nullptr;
  size_t room = 0;
  uint64_t total = 0;
  for (ssize_t length; (length = getline(&line, &room, file)) > 0;) {
    total += static_cast<uint64_t>(length);
  }
  keep(total);
  free(line);
  std::fclose(file);
}

void lines_decoded(const std::string &path) {
  JXOpenOptions options = options_for(JX_FORMAT_VARIABLE, JX_ACCESS_INPUT, 1024);
  options.file_encoding = JX_ENCODING_UTF8;
  read_all(path, options, 0);
}

void lines_fgetws(const std::string &path) {
  FILE *file = std::fopen(path.c_str(), "r");
  wchar_t line[1024];
  uint64_t total = 0;
  while (std::fgetws(line, 1024, file)) total += std::wcslen(line);
  keep(total);
  std::fclose(file);
}

// The hand-written equivalent: blocks by read, lines by memchr, each converted by iconv.
void lines_iconv(const std::string &path) {
  const int fd = open(path.c_str(), O_RDONLY);
  const iconv_t converter = iconv_open("UTF-32LE", "UTF-8");
  std::vector<char> buffer(2 * kReadAhead);
  std::vector<JXChar> text(kReadAhead);
  size_t held = 0;
  uint64_t total = 0;
  for (ssize_t got; (got = read(fd, buffer.data() + held, kReadAhead)) > 0;) {
    char *next = buffer.data();
    size_t left = held + static_cast<size_t>(got);
    while (auto *end = static_cast<char *>(std::memchr(next, '\n', left))) {
      auto line_bytes = static_cast<size_t>(end - next);
      left -= line_bytes + 1;
      char *out = reinterpret_cast<char *>(text.data());
      size_t room = text.size() * sizeof(JXChar);
      iconv(converter, &next, &line_bytes, &out, &room);
      total += text.size() * sizeof(JXChar) - room;
      next = end + 1;
    }
    std::memmove(buffer.data(), next, left);
    held = left;
  }
  keep(total);
  iconv_close(converter);
  close(fd);
}

constexpr uint32_t kLinesWritten = 200'000;

void write_lines() {
  static const std::vector<JXChar> line(kRecordBytes - 1, 'a');
  JXOpenOptions options = options_for(JX_FORMAT_VARIABLE, JX_ACCESS_OUTPUT, 1024);
  options.file_encoding = JX_ENCODING_UTF8;
  const ModuleFile file(files().output(), options);
  for (uint32_t i = 0; i < kLinesWritten; ++i) {
    file->write(file.get(), line.data(), (kRecordBytes - 1) * sizeof(JXChar), 0, nullptr);
  }
}

void write_wcsnrtombs() {
  static const std::wstring line(kRecordBytes - 1, L'a');
  const int fd = open(files().output().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  std::vector<char> buffer(kReadAhead + 1024);
  size_t held = 0;
  for (uint32_t i = 0; i < kLinesWritten; ++i) {
    const wchar_t *source = line.data();
    std::mbstate_t shift{};
    held += wcsnrtombs(buffer.data() + held, &source, line.size(), 512, &shift);
    buffer[held++] = '\n';
    if (held < kReadAhead) continue;
    if (write(fd, buffer.data(), kReadAhead) < 0) std::abort();
    held -= kReadAhead;
    std::memmove(buffer.data(), buffer.data() + kReadAhead, held);
  }
  if (write(fd, buffer.data(), held) < 0) std::abort();
  fsync(fd);
  close(fd);
}

void read_binary() {
  read_all(files().ascii(), options_for(JX_FORMAT_BINARY, JX_ACCESS_INPUT, kRecordBytes),
           kRecordBytes);
}

void read_fread() {
  FILE *file = std::fopen(files().ascii().c_str(), "r");
  char record[kRecordBytes];
  uint64_t total = 0;
  for (size_t length; (length = fread_unlocked(record, 1, sizeof record, file)) > 0;) {
    total += length;
    keep(record[0]);
  }
  keep(total);
  std::fclose(file);
}

void write_binary(const std::string &path) {
  static const std::string record(kRecordBytes, 'b');
  const ModuleFile file(path, options_for(JX_FORMAT_BINARY, JX_ACCESS_OUTPUT, kRecordBytes));
  for (uint32_t i = 0; i < kLinesWritten; ++i) {
    file->write(file.get(), record.data(), kRecordBytes, 0, nullptr);
  }
}

void write_fwrite(const std::string &path) {
  static const std::string record(kRecordBytes, 'b');
  FILE *file = std::fopen(path.c_str(), "w");
  for (uint32_t i = 0; i < kLinesWritten; ++i) {
    fwrite_unlocked(record.data(), 1, kRecordBytes, file);
  }
  std::fflush(file);
  fsync(fileno(file));
  std::fclose(file);
}

// One record at one offset, over and over: the cost that the module adds to the system call.
constexpr uint32_t kDirectBytes = 4096;
constexpr int kDirectCalls = 50'000;

void read_direct() {
  JXOpenOptions options = options_for(JX_FORMAT_BINARY, JX_ACCESS_INPUT, kDirectBytes);
  options.buffered = 0;
  const ModuleFile file(files().ascii(), options);
  for (int i = 0; i < kDirectCalls; ++i) {
    void *data = nullptr;
    uint32_t length = kDirectBytes;
    int64_t offset = 8192;
    file->read(file.get(), &data, &length, 0, &offset);
  }
}

void read_pread() {
  const int fd = open(files().ascii().c_str(), O_RDONLY);
  static char record[kDirectBytes];
  for (int i = 0; i < kDirectCalls; ++i) {
    if (pread64(fd, record, sizeof record, 8192) < 0) std::abort();
  }
  close(fd);
}

void write_direct() {
  const ModuleFile file(files().output(),
                        options_for(JX_FORMAT_BINARY, JX_ACCESS_UPDATE, kDirectBytes));
  static const std::string record(kDirectBytes, 'd');
  for (int i = 0; i < kDirectCalls; ++i) {
    int64_t offset = 0;
    file->write(file.get(), record.data(), kDirectBytes, 0, &offset);
  }
}

void write_pwrite() {
  const int fd = open(files().output().c_str(), O_RDWR | O_CREAT, 0666);
  static const std::string record(kDirectBytes, 'd');
  for (int i = 0; i < kDirectCalls; ++i) {
    if (pwrite64(fd, record.data(), kDirectBytes, 0) < 0) std::abort();
  }
  close(fd);
}

std::vector<Pair> pairs() {
  std::vector<Pair> all;
  for (const uint32_t length : {256u, 32'767u, 1'048'576u}) {
    all.push_back({"lines of 80 bytes, record length " + std::to_string(length), "getline",
                   [length] { lines(length); }, lines_getline});
  }
  for (const auto &[name, path] :
       {std::pair("ASCII", files().ascii()), std::pair("CJK", files().cjk())}) {
    const std::string what = std::string("lines, UTF-8 to JXChar, ") + name;
    const auto decode = [path] { lines_decoded(path); };
    all.push_back({what, "fgetws", decode, [path] { lines_fgetws(path); }});
    all.push_back({what, "read + iconv", decode, [path] { lines_iconv(path); }});
  }
  all.push_back(
      {"written lines, JXChar to UTF-8", "wcsnrtombs + write", write_lines, write_wcsnrtombs});
  all.push_back({"binary reads of 80 bytes", "fread_unlocked", read_binary, read_fread});
  for (const auto &[name, path] :
       {std::pair("tmpfs", files().output()), std::pair("/dev/null", std::string("/dev/null"))}) {
    all.push_back({std::string("binary writes of 80 bytes, ") + name, "fwrite_unlocked",
                   [path] { write_binary(path); }, [path] { write_fwrite(path); }});
  }
  all.push_back({"direct reads of 4096 bytes", "pread", read_direct, read_pread});
  all.push_back({"direct writes of 4096 bytes", "pwrite", write_direct, write_pwrite});
  return all;
}

}  // namespace

int main(int argc, char **argv) {
  std::setlocale(LC_ALL, "C.UTF-8");  // for the wide-character peers
  return run_pairs(argc, argv, pairs());
}
