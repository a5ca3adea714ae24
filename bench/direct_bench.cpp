// Direct transfers: one block at one offset, over and over.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "bench/contender.hpp"

namespace {

using namespace jx::bench;

constexpr int kCalls = 20'000;
constexpr size_t kBlock = 4096;
constexpr int64_t kOffset = 8192;

// `transfer` returns whether it moved a whole block.
template <typename Transfer>
void add_direct(Job &job, const char *who, Transfer transfer, Kind kind = Kind::kPeer) {
  job.add(
      who,
      [transfer](Watch &) {
        for (int i = 0; i < kCalls; ++i) {
          if (!transfer()) fail("a direct transfer fails");
        }
        return uint64_t{0};
      },
      kind);
}

void direct_job(const std::string &path) {
  static char block[kBlock];
  write_file(path, std::string(8 * kBlock, 'd'));
  const int fd = open(path.c_str(), O_RDWR);
  std::FILE *const stream = std::fopen(path.c_str(), "r+b");
  if (fd < 0 || !stream) fail("cannot open " + path);
  std::setvbuf(stream, nullptr, _IONBF, 0);
  JXOpenOptions options = binary_options(JX_ACCESS_UPDATE, kBlock);
  options.buffered = 0;
  const auto direct = std::make_shared<ModuleFile>(path, options);
  Job job("direct", "Blocks of 4096 bytes at an offset, not buffered", "ns/block", 1e9);
  job.begin("read", kCalls);
  add_direct(job, "fseeko, fread", [=] {
    return fseeko(stream, kOffset, SEEK_SET) == 0 && std::fread(block, kBlock, 1, stream) == 1;
  });
  add_direct(
      job, kModule,
      [=] {
        void *data = nullptr;
        uint32_t bytes = kBlock;
        int64_t offset = kOffset;
        return direct->read(&data, &bytes, &offset);
      },
      Kind::kModule);
  add_direct(
      job, "pread(2)", [=] { return pread(fd, block, kBlock, kOffset) == kBlock; }, Kind::kLimit);
  job.end();
  job.begin("write", kCalls);
  add_direct(job, "fseeko, fwrite", [=] {
    return fseeko(stream, kOffset, SEEK_SET) == 0 && std::fwrite(block, kBlock, 1, stream) == 1;
  });
  add_direct(
      job, kModule,
      [=] {
        int64_t offset = kOffset;
        return direct->write(block, kBlock, &offset);
      },
      Kind::kModule);
  add_direct(
      job, "pwrite(2)", [=] { return pwrite(fd, block, kBlock, kOffset) == kBlock; }, Kind::kLimit);
  job.end();
  std::fclose(stream);
  close(fd);
  job.print();
}

}  // namespace

int main() {
  const Scratch scratch;
  direct_job(scratch.at("blocks"));
  return 0;
}
