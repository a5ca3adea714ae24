#include "bench/texts.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "bench/job.hpp"

namespace jx::bench {

namespace {

// UTF-8 of a character of the basic plane.
void append_utf8(std::string *out, char32_t c) {
  const auto put = [&](char32_t byte) { out->push_back(static_cast<char>(byte)); };
  if (c < 0x80) return put(c);
  if (c < 0x800) {
    put(0xC0 | c >> 6);
  } else {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

char32_t any_letter(Script script, Random *random) {
  static constexpr char32_t kAccented[] = U"äöüßéèêçñøåæíóúÄÖÜÉÅ";
  const auto pick = [&](char32_t first, uint64_t count) {
    return first + static_cast<char32_t>(random->below(count));
  };
  if (script == Script::kCjk) {
    const uint64_t die = random->below(30);
    return die == 0 ? pick(U'0', 10) : die < 3 ? pick(U'\u3001', 2) : pick(U'\u4E00', 20902);
  }
  const uint64_t die = random->below(200);
  if (die < 30) return U' ';
  if (script == Script::kAscii || die < 175) return pick(U'a', 26);
  return die == 199 ? U'\u20AC' : kAccented[random->below(std::size(kAccented) - 1)];
}

}  // namespace

Scratch::Scratch() {
  const char *parent = std::getenv("BENCH_FOLDER");
  path_ = std::string(parent ? parent : "/dev/shm") + "/jxwem-bench-XXXXXX";
  if (!mkdtemp(path_.data())) fail("cannot make a folder in memory");
}

Scratch::~Scratch() { std::filesystem::remove_all(path_); }

const char *name_of(Script script) {
  return script == Script::kAscii ? "ASCII" : script == Script::kEuropean ? "European" : "CJK";
}

std::vector<std::u32string> make_lines(Script script, size_t mean, size_t bytes) {
  Random random;
  std::vector<std::u32string> lines;
  for (size_t done = 0; done < bytes;) {
    std::u32string line(mean - mean / 2 + static_cast<size_t>(random.below(2 * (mean / 2) + 1)), 0);
    for (char32_t &c : line) {
      c = any_letter(script, &random);
      done += c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
    }
    ++done;
    lines.push_back(std::move(line));
  }
  return lines;
}

std::string to_utf8(const std::u32string &line) {
  std::string out;
  for (const char32_t c : line) append_utf8(&out, c);
  return out;
}

std::string join_utf8(const std::vector<std::u32string> &lines) {
  std::string out;
  for (const auto &line : lines) out += to_utf8(line) += '\n';
  return out;
}

void write_file(const std::string &path, const std::string &bytes) {
  std::FILE *file = std::fopen(path.c_str(), "wb");
  if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() ||
      std::fclose(file) != 0) {
    fail("cannot write " + path);
  }
}

BlockLines::BlockLines(const std::string &path, size_t block)
    : fd_(open(path.c_str(), O_RDONLY)),
      block_(block),
      buffer_(block + kLongestLine),
      begin_(buffer_.data()) {
  if (fd_ < 0) fail("cannot open " + path);
}

BlockLines::~BlockLines() { close(fd_); }

bool BlockLines::refill() {
  if (held_ > kLongestLine) fail("line too long");
  std::memmove(buffer_.data(), begin_, held_);
  begin_ = buffer_.data();
  const ssize_t got = read(fd_, begin_ + held_, block_);
  if (got > 0) held_ += static_cast<size_t>(got);
  return got > 0;
}

void BlockWriter::flush() {
  if (used_ && write(fd_, buffer_.data(), used_) != static_cast<ssize_t>(used_)) {
    fail("cannot write");
  }
  used_ = 0;
}

}  // namespace jx::bench
