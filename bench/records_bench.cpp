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

#include "bench/ratio.hpp"
#include "jx/jxhost.h"
#include "jx/wem.h"

namespace {

constexpr size_t kFileBytes = size_t{64} << 20;
constexpr uint32_t kRecordBytes = 80;
constexpr size_t kReadAhead = 8192;

// The files that are read, made once and removed at the end.
class Files {
 public:
  Files() {
    char name[] = "/dev/shm/jxwem-bench-XXXXXX";
    if (!mkdtemp(name)) std::abort();
    folder_ = name;
    fill(ascii(), std::string(kRecordBytes - 1, 'a') + "\n");
    std::string line;
    for (int i = 0; i < 26; ++i) line += "\xe6\xbc\xa2";
    fill(cjk(), line + "x\n");
  }
  ~Files() {
    for (const std::string &path : {ascii(), cjk(), output()}) unlink(path.c_str());
    rmdir(folder_.c_str());
  }
  std::string ascii() const { return folder_ + "/ascii"; }
  std::string cjk() const { return folder_ + "/cjk"; }
  std::string output() const { return folder_ + "/output"; }

 private:
  static void fill(const std::string &path, const std::string &line) {
    FILE *file = std::fopen(path.c_str(), "w");
    if (!file) std::abort();
    for (size_t done = 0; done < kFileBytes; done += line.size()) {
      std::fwrite(line.data(), 1, line.size(), file);
    }
    std::fclose(file);
  }
  std::string folder_;
};

const Files &files() {
  static const Files instance;
  return instance;
}

JXInstance *instance() {
  static JXHost *host = jxhost_create(nullptr);
  static JXInstance *made = [] {
    jxextent(host);
    return jxwem(host, nullptr);
  }();
  return made;
}

// An open file of the module, closed at the end.
class ModuleFile {
 public:
  ModuleFile(const std::string &path, JXOpenOptions options) {
    const std::vector<JXChar> name(path.begin(), path.end());
    JXStatus status = JX_OK;
    file_ = instance()->open(instance(), name.data(), static_cast<uint32_t>(name.size()), &options,
                             0, nullptr, nullptr, &status);
    if (!file_) std::abort();
  }
  ModuleFile(const ModuleFile &) = delete;
  ModuleFile &operator=(const ModuleFile &) = delete;
  ~ModuleFile() { file_->close(file_); }
  JXFile *operator->() const { return file_; }
  JXFile *get() const { return file_; }

 private:
  JXFile *file_;
};

JXOpenOptions options_for(uint32_t format, uint32_t access, uint32_t record_length) {
  JXOpenOptions options{};
  options.record_format = format;
  options.access_mode = access;
  options.buffered = 1;
  options.record_length = record_length;
  options.open_flags = JX_OPEN_NO_BOM;
  return options;
}

// Reads all records and counts their bytes, so that nothing is optimised away.
void read_all(benchmark::State &state, const std::string &path, const JXOpenOptions &options,
              uint32_t wanted) {
  for (auto _ : state) {
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
    benchmark::DoNotOptimize(total);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kFileBytes);
}

void lines(benchmark::State &state) {
  JXOpenOptions options =
      options_for(JX_FORMAT_VARIABLE, JX_ACCESS_INPUT, static_cast<uint32_t>(state.range(0)));
  options.file_encoding = options.record_encoding = JX_ENCODING_UTF8;
  read_all(state, files().ascii(), options, 0);
}
BENCHMARK(lines)->Arg(256)->Arg(32767)->Arg(1048576)->Unit(benchmark::kMillisecond);

void lines_getline(benchmark::State &state) {
  for (auto _ : state) {
    FILE *file = std::fopen(files().ascii().c_str(), "r");
    char *line = nullptr;
    size_t room = 0;
    uint64_t total = 0;
    for (ssize_t length; (length = getline(&line, &room, file)) > 0;) {
      total += static_cast<uint64_t>(length);
    }
    benchmark::DoNotOptimize(total);
    free(line);
    std::fclose(file);
  }
}
BENCHMARK(lines_getline)->Name("getline")->Unit(benchmark::kMillisecond);

void lines_decoded(benchmark::State &state, const std::string &path) {
  JXOpenOptions options = options_for(JX_FORMAT_VARIABLE, JX_ACCESS_INPUT, 1024);
  options.file_encoding = JX_ENCODING_UTF8;
  read_all(state, path, options, 0);
}

void lines_fgetws(benchmark::State &state, const std::string &path) {
  std::setlocale(LC_ALL, "C.UTF-8");
  for (auto _ : state) {
    FILE *file = std::fopen(path.c_str(), "r");
    wchar_t line[1024];
    uint64_t total = 0;
    while (std::fgetws(line, 1024, file)) total += std::wcslen(line);
    benchmark::DoNotOptimize(total);
    std::fclose(file);
  }
}

// What a careful program does by hand: blocks by read, lines by memchr, each converted by iconv.
void lines_iconv(benchmark::State &state, const std::string &path) {
  for (auto _ : state) {
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
    benchmark::DoNotOptimize(total);
    iconv_close(converter);
    close(fd);
  }
}

#define DECODING_PAIR(text)                                                              \
  BENCHMARK_CAPTURE(lines_decoded, text, files().text())->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(lines_fgetws, text, files().text())->Unit(benchmark::kMillisecond);  \
  BENCHMARK_CAPTURE(lines_iconv, text, files().text())->Unit(benchmark::kMillisecond)
DECODING_PAIR(ascii);
DECODING_PAIR(cjk);

constexpr uint32_t kLinesWritten = 200'000;

void write_lines(benchmark::State &state) {
  const std::vector<JXChar> line(kRecordBytes - 1, 'a');
  JXOpenOptions options = options_for(JX_FORMAT_VARIABLE, JX_ACCESS_OUTPUT, 1024);
  options.file_encoding = JX_ENCODING_UTF8;
  for (auto _ : state) {
    const ModuleFile file(files().output(), options);
    for (uint32_t i = 0; i < kLinesWritten; ++i) {
      file->write(file.get(), line.data(), (kRecordBytes - 1) * sizeof(JXChar), 0, nullptr);
    }
  }
}
BENCHMARK(write_lines)->Unit(benchmark::kMillisecond);

void write_wcsnrtombs(benchmark::State &state) {
  std::setlocale(LC_ALL, "C.UTF-8");
  const std::wstring line(kRecordBytes - 1, L'a');
  for (auto _ : state) {
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
}
BENCHMARK(write_wcsnrtombs)->Unit(benchmark::kMillisecond);

void read_binary(benchmark::State &state) {
  read_all(state, files().ascii(), options_for(JX_FORMAT_BINARY, JX_ACCESS_INPUT, kRecordBytes),
           kRecordBytes);
}
BENCHMARK(read_binary)->Unit(benchmark::kMillisecond);

void read_fread(benchmark::State &state) {
  for (auto _ : state) {
    FILE *file = std::fopen(files().ascii().c_str(), "r");
    char record[kRecordBytes];
    uint64_t total = 0;
    for (size_t length; (length = fread_unlocked(record, 1, sizeof record, file)) > 0;) {
      total += length;
      benchmark::DoNotOptimize(record);
    }
    benchmark::DoNotOptimize(total);
    std::fclose(file);
  }
}
BENCHMARK(read_fread)->Name("fread_unlocked")->Unit(benchmark::kMillisecond);

void write_binary(benchmark::State &state, const std::string &path) {
  const std::string record(kRecordBytes, 'b');
  const JXOpenOptions options = options_for(JX_FORMAT_BINARY, JX_ACCESS_OUTPUT, kRecordBytes);
  for (auto _ : state) {
    const ModuleFile file(path, options);
    for (uint32_t i = 0; i < kLinesWritten; ++i) {
      file->write(file.get(), record.data(), kRecordBytes, 0, nullptr);
    }
  }
}

void write_fwrite(benchmark::State &state, const std::string &path) {
  const std::string record(kRecordBytes, 'b');
  for (auto _ : state) {
    FILE *file = std::fopen(path.c_str(), "w");
    for (uint32_t i = 0; i < kLinesWritten; ++i) {
      fwrite_unlocked(record.data(), 1, kRecordBytes, file);
    }
    std::fflush(file);
    fsync(fileno(file));
    std::fclose(file);
  }
}

#define WRITING_PAIR(name, path)                                              \
  BENCHMARK_CAPTURE(write_binary, name, path)->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(write_fwrite, name, path)->Unit(benchmark::kMillisecond)
WRITING_PAIR(tmpfs, files().output());
WRITING_PAIR(null, "/dev/null");

// One record at one offset, again and again: what the module adds to the system call.
constexpr uint32_t kDirectBytes = 4096;

void read_direct(benchmark::State &state) {
  JXOpenOptions options = options_for(JX_FORMAT_BINARY, JX_ACCESS_INPUT, kDirectBytes);
  options.buffered = 0;
  const ModuleFile file(files().ascii(), options);
  for (auto _ : state) {
    void *data = nullptr;
    uint32_t length = kDirectBytes;
    int64_t offset = 8192;
    file->read(file.get(), &data, &length, 0, &offset);
    benchmark::DoNotOptimize(data);
  }
}
BENCHMARK(read_direct);

void read_pread(benchmark::State &state) {
  const int fd = open(files().ascii().c_str(), O_RDONLY);
  char record[kDirectBytes];
  for (auto _ : state) {
    if (pread(fd, record, sizeof record, 8192) < 0) std::abort();
    benchmark::DoNotOptimize(record);
  }
  close(fd);
}
BENCHMARK(read_pread)->Name("pread");

void write_direct(benchmark::State &state) {
  JXOpenOptions options = options_for(JX_FORMAT_BINARY, JX_ACCESS_UPDATE, kDirectBytes);
  const ModuleFile file(files().output(), options);
  const std::string record(kDirectBytes, 'd');
  for (auto _ : state) {
    int64_t offset = 0;
    file->write(file.get(), record.data(), kDirectBytes, 0, &offset);
  }
}
BENCHMARK(write_direct);

void write_pwrite(benchmark::State &state) {
  const int fd = open(files().output().c_str(), O_RDWR | O_CREAT, 0666);
  const std::string record(kDirectBytes, 'd');
  for (auto _ : state) {
    if (pwrite(fd, record.data(), kDirectBytes, 0) < 0) std::abort();
  }
  close(fd);
}
BENCHMARK(write_pwrite)->Name("pwrite");

const std::vector<jx::bench::Ratio> kRatios = {
    {"lines of 80 bytes, record length 256", "lines/256", "getline"},
    {"lines, record length 32,767", "lines/32767", "getline"},
    {"lines, record length 1,048,576", "lines/1048576", "getline"},
    {"lines, length 1,048,576 against 256", "lines/1048576", "lines/256"},
    {"UTF-8 to JXChar, ASCII", "lines_decoded/ascii", "lines_fgetws/ascii"},
    {"UTF-8 to JXChar, ASCII", "lines_decoded/ascii", "lines_iconv/ascii"},
    {"UTF-8 to JXChar, CJK", "lines_decoded/cjk", "lines_fgetws/cjk"},
    {"UTF-8 to JXChar, CJK", "lines_decoded/cjk", "lines_iconv/cjk"},
    {"JXChar lines to UTF-8", "write_lines", "write_wcsnrtombs"},
    {"binary reads of 80 bytes", "read_binary", "fread_unlocked"},
    {"binary writes of 80 bytes, tmpfs", "write_binary/tmpfs", "write_fwrite/tmpfs"},
    {"binary writes of 80 bytes, /dev/null", "write_binary/null", "write_fwrite/null"},
    {"direct read of 4096 bytes", "read_direct", "pread"},
    {"direct write of 4096 bytes", "write_direct", "pwrite"},
};

}  // namespace

int main(int argc, char **argv) { return jx::bench::run_ratios(argc, argv, kRatios); }
