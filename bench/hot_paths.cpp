// Runs one hot path a given number of times, for tools/check_instructions to count instructions.
//   hot_paths              the names of the paths, and how often each should run at least
//   hot_paths NAME COUNT   runs a path
//   hot_paths level        the vector level of the processor that it runs on
// What is prepared before a path runs does not depend on COUNT.
#include <sys/stat.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "bench/module.hpp"
#include "bench/paired.hpp"
#include "bench/wide.hpp"
#include "jx/exports/posix.h"
#include "jx/runtime.h"
#include "vector/processor.hpp"

namespace {

using namespace jx::bench;

// ---- Records

constexpr uint32_t kRecords = 4000;
constexpr uint32_t kRecordBytes = 80;

// A line of kRecordBytes bytes from repetitions of some text, the last ones cut to letters.
std::string line_of(const std::string &text) {
  std::string line;
  while (line.size() + text.size() <= kRecordBytes) line += text;
  return line.append(kRecordBytes - line.size(), 'x');
}
const std::string kPlain = line_of("plain text ");
const std::string kEuropean = line_of("\u00c5ngstr\u00f6m, Z\u00fcrich ");
const std::string kCjk = line_of("\u6f22\u5b57");

// Reads as many records as a count says, of a file that has twice kRecords lines.
void read_records(const std::string &line, uint32_t format, uint32_t record_encoding,
                  uint32_t count) {
  const std::string path = scratch().at("input");
  std::ofstream file(path);
  for (uint32_t i = 0; i < 2 * kRecords; ++i) file << line << '\n';
  file.close();
  JXOpenOptions options = options_for(format, JX_ACCESS_INPUT, 1024);
  options.file_encoding = JX_ENCODING_UTF8;
  options.record_encoding = record_encoding;
  if (format == JX_FORMAT_BINARY) options.file_encoding = 0;
  const ModuleFile input(path, options);
  for (uint32_t i = 0; i < count; ++i) {
    void *data = nullptr;
    uint32_t length = kRecordBytes;
    check(input->read(input.get(), &data, &length, 0, nullptr) == JX_OK);
    keep(data);
  }
}

void write_records(const void *record, uint32_t bytes, uint32_t record_encoding, uint32_t count) {
  JXOpenOptions options = options_for(JX_FORMAT_VARIABLE, JX_ACCESS_OUTPUT, 1024);
  options.file_encoding = JX_ENCODING_UTF8;
  options.record_encoding = record_encoding;
  const ModuleFile output(scratch().at("output"), options);
  for (uint32_t i = 0; i < count; ++i) {
    check(output->write(output.get(), record, bytes, 0, nullptr) == JX_OK);
  }
}

void read_plain(const std::string &line, uint32_t count) {
  read_records(line, JX_FORMAT_VARIABLE, JX_ENCODING_UTF8, count);
}
void read_decoded(const std::string &line, uint32_t count) {
  read_records(line, JX_FORMAT_VARIABLE, 0, count);
}
void write_encoded(const std::string &line, uint32_t count) {
  JXChar text[kRecordBytes];
  uint32_t chars = kRecordBytes;
  check(jxhost_utf8_to_text(line.data(), kRecordBytes, text, &chars) == JX_OK);
  write_records(text, chars * uint32_t{sizeof(JXChar)}, 0, count);
}

// ---- Formatted text

template <size_t kChars, typename... Args>
void format(const std::array<JXChar, kChars> &text, uint32_t count, Args... args) {
  JXChar buffer[64];
  uint32_t length = 0;
  for (uint32_t i = 0; i < count; ++i) {
    check(jxzFormatBuff(nullptr, text.data(), kChars, buffer, 64, &length, args...) == JX_OK);
    keep(length);
  }
}

// ---- Paths

const Chars kFolder = chars_of("/usr/share/doc");

void split(uint32_t count) {
  const Chars path = chars_of("/usr/share/doc/package/readme.txt");
  for (uint32_t i = 0; i < count; ++i) {
    JXChar *parts[4] = {};
    int32_t chars[4];
    check(instance()->split_path(instance(), path.data(), count_of(path), &parts[0], &chars[0],
                                 &parts[1], &chars[1], &parts[2], &chars[2], &parts[3],
                                 &chars[3]) == JX_OK);
    instance()->split_path_release(instance(), parts[0], parts[1], parts[2], parts[3]);
  }
}

void build(uint32_t count) {
  const Chars member = chars_of("member-1234"), extension = chars_of("dat");
  for (uint32_t i = 0; i < count; ++i) {
    JXChar *path = nullptr;
    uint32_t chars = 0;
    check(instance()->build_path(instance(), kFolder.data(), count_of(kFolder), member.data(),
                                 count_of(member), extension.data(), count_of(extension), &path,
                                 &chars) == JX_OK);
    instance()->build_path_release(instance(), path);
  }
}

void expand(const char *text, uint32_t count) {
  setenv("JX_HOT_FOLDER", "/opt/data/archive", 1);
  const Chars path = chars_of(text);
  for (uint32_t i = 0; i < count; ++i) {
    JXChar *expanded = nullptr;
    uint32_t chars = 0;
    check(bkwemexpand_path(instance(), path.data(), count_of(path), &expanded, &chars) == JX_OK);
    bkwemexpand_path_free(instance()->pool, expanded);
  }
}

void make_name(uint32_t count) {
  const Chars prefix = chars_of("tmp-"), extension = chars_of("dat");
  const JXCreateName request{prefix.data(), count_of(prefix), extension.data(), count_of(extension),
                             JX_NAME_PREFIX | JX_NAME_EXTENSION};
  for (uint32_t i = 0; i < count; ++i) {
    JXChar *path = nullptr;
    uint32_t chars = 0;
    check(instance()->create_name(instance(), kFolder.data(), count_of(kFolder), &request, &path,
                                  &chars) == JX_OK);
    instance()->create_name_release(instance(), path);
  }
}

// ---- Directories

// Makes a folder with empty files.
Chars make_folder(const std::string &path, int files) {
  check(mkdir(path.c_str(), 0755) == 0);
  for (int i = 0; i < files; ++i) {
    std::ofstream(path + "/member-" + std::to_string(1000 + i) + ".dat").close();
  }
  return chars_of(path);
}

void list(uint32_t count) {
  const Chars path = make_folder(scratch().at("folder"), 100);
  for (uint32_t i = 0; i < count; ++i) {
    uint64_t members = 0;
    JXStatus status = JX_OK;
    JXTable *table =
        instance()->directory_list(instance(), path.data(), count_of(path), JX_DIRECTORY_NAMED,
                                   JX_LIST_INFORMATION, &members, &status);
    check(table && members >= 100);
    table->destroy_table(table);
  }
}

void copy_and_remove(uint32_t count) {
  const Chars source = make_folder(scratch().at("source"), 5);
  make_folder(scratch().at("source/inner"), 5);
  const Chars target = chars_of(scratch().at("target"));
  for (uint32_t i = 0; i < count; ++i) {
    check(instance()->copy(instance(), source.data(), count_of(source), target.data(),
                           count_of(target)) == JX_OK);
    check(instance()->remove(instance(), target.data(), count_of(target), JX_REMOVE_CONTENTS) ==
          JX_OK);
  }
}

// ---- Run-time routines

void push_and_pop(uint32_t count) {
  struct Node {
    void *link;
  } nodes[2] = {};
  alignas(64) void *head = nullptr;
  jxAStackPush(&head, &nodes[0], offsetof(Node, link));
  for (uint32_t i = 0; i < count; ++i) {
    jxAStackPush(&head, &nodes[1], offsetof(Node, link));
    check(jxAStackPop(&head, offsetof(Node, link)) == &nodes[1]);
  }
}

template <auto kScan>
void scan(uint32_t count) {
  alignas(64) static JXChar units[256];
  for (uint32_t i = 0; i < count; ++i) keep(kScan(units, 250, 1));
}

template <uint32_t kUnits>
void compare(uint32_t count) {
  alignas(64) static JXChar first[kUnits], second[kUnits];
  for (uint32_t i = 0; i < count; ++i) keep(skWMemCmp(first, second, kUnits));
}

// ---- The paths

struct HotPath {
  const char *name;
  uint32_t count;  // of operations that are enough for an exact mean
  void (*run)(uint32_t count);
};

constexpr uint32_t kCalls = 1000;
constexpr auto kD = wide("%d");
constexpr auto kLlu = wide("%llu");
constexpr auto kF = wide("%.6f");
constexpr auto kName = wide("ZOR_util%04X%08X_%s");
constexpr wchar_t kNode[] = L"node7.example";

const HotPath kPaths[] = {
    {"read a line, 20 B", kRecords,
     [](uint32_t count) { read_plain(kPlain.substr(0, 20), count); }},
    {"read a line, 80 B", kRecords, [](uint32_t count) { read_plain(kPlain, count); }},
    {"read ASCII to JXChar, 80 B", kRecords, [](uint32_t count) { read_decoded(kPlain, count); }},
    {"read European to JXChar, 80 B", kRecords,
     [](uint32_t count) { read_decoded(kEuropean, count); }},
    {"read CJK to JXChar, 80 B", kRecords, [](uint32_t count) { read_decoded(kCjk, count); }},
    {"read a binary record, 80 B", kRecords,
     [](uint32_t count) { read_records(kPlain, JX_FORMAT_BINARY, 0, count); }},
    {"write a line, 80 B", kRecords,
     [](uint32_t count) { write_records(kPlain.data(), kRecordBytes, JX_ENCODING_UTF8, count); }},
    {"write ASCII from JXChar, 80 B", kRecords,
     [](uint32_t count) { write_encoded(kPlain, count); }},
    {"write European from JXChar, 80 B", kRecords,
     [](uint32_t count) { write_encoded(kEuropean, count); }},
    {"write CJK from JXChar, 80 B", kRecords, [](uint32_t count) { write_encoded(kCjk, count); }},
    {"format %d", kCalls, [](uint32_t count) { format(kD, count, -1234567); }},
    {"format %llu", kCalls, [](uint32_t count) { format(kLlu, count, 12345678901234567ull); }},
    {"format %.6f", kCalls, [](uint32_t count) { format(kF, count, 314159.265); }},
    {"format a unique name", kCalls,
     [](uint32_t count) { format(kName, count, 4711u, 0x1234ABCDu, kNode); }},
    {"split a path", kCalls, split},
    {"build a path", kCalls, build},
    {"expand an absolute path", kCalls,
     [](uint32_t count) { expand("/usr/share/doc/x.txt", count); }},
    {"expand $NAME", kCalls, [](uint32_t count) { expand("$JX_HOT_FOLDER/x.txt", count); }},
    {"make a unique name", kCalls, make_name},
    {"list 100 members", 20, list},
    {"copy and remove a tree of 10 files", 20, copy_and_remove},
    {"push and pop a node", kCalls, push_and_pop},
    {"scan 250 bytes", kCalls, scan<skMemScan>},
    {"scan 250 JXChars", kCalls, scan<jxzspos>},
    {"compare 16 units", kCalls, compare<16>},
    {"compare 250 units", kCalls, compare<250>},
};

int show_paths() {
  for (const HotPath &path : kPaths) std::printf("%s\t%u\n", path.name, path.count);
  return 0;
}

int show_level() {
  constexpr const char *kNames[] = {"base", "avx2", "avx512"};
  std::puts(kNames[static_cast<int>(jx::vector::processor_level())]);
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc == 1) return show_paths();
  if (argc == 2 && std::strcmp(argv[1], "level") == 0) return show_level();
  for (const HotPath &path : kPaths) {
    if (argc != 3 || std::strcmp(path.name, argv[1]) != 0) continue;
    path.run(static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10)));
    return 0;
  }
  std::fprintf(stderr, "usage: hot_paths [NAME COUNT | level]\n");
  return 2;
}
