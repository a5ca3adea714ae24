// Where the cases that write go to, and the contenders that differ only in how they write. Timed:
// from the first record to the moment the last byte is handed to the system. Not timed: opening,
// which empties the file, and closing, which in the module forces the data to the device.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <locale>
#include <string>
#include <type_traits>

#include "bench/contender.hpp"

namespace jx::bench {

struct Target {
  std::string path;
  std::string expected;

  // Compares the file byte by byte, the first time, and returns its size.
  uint64_t check(bool *is_compared) const {
    struct stat info;
    if (stat(path.c_str(), &info) != 0) fail("cannot examine " + path);
    if (!S_ISREG(info.st_mode)) return 0;
    if (!*is_compared) {
      std::ifstream file(path, std::ios::binary);
      if (std::string(std::istreambuf_iterator<char>(file), {}) != expected) {
        fail("wrong content of " + path);
      }
    }
    *is_compared = true;
    return static_cast<uint64_t>(info.st_size);
  }
};

// Writes through a FILE; `put` writes all records.
template <typename Put>
void add_stdio(Job &job, std::string name, const Target &target, Put put) {
  job.add(std::move(name), [=, &target, is_compared = false](Watch &watch) mutable {
    std::FILE *file = std::fopen(target.path.c_str(), "wb");
    watch.start();
    put(file);
    std::fflush(file);
    watch.stop();
    std::fclose(file);
    return target.check(&is_compared);
  });
}

// Writes through blocks and write(2).
template <typename Put>
void add_blocks(Job &job, std::string name, const Target &target, size_t block, Kind kind,
                Put put) {
  job.add(
      std::move(name),
      [=, &target, is_compared = false](Watch &watch) mutable {
        const int fd = open(target.path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        watch.start();
        BlockWriter writer(fd, block);
        put(writer);
        writer.flush();
        watch.stop();
        close(fd);
        return target.check(&is_compared);
      },
      kind);
}

// Writes through a C++ stream.
template <typename Stream, typename Put>
void add_stream(Job &job, std::string name, const Target &target, Put put) {
  job.add(std::move(name), [=, &target, is_compared = false](Watch &watch) mutable {
    Stream file;
    if constexpr (std::is_same_v<Stream, std::wofstream>) file.imbue(std::locale("C.UTF-8"));
    file.open(target.path, std::ios::binary);
    watch.start();
    put(file);
    file.flush();
    watch.stop();
    file.close();
    return target.check(&is_compared);
  });
}

// Writes through the module, whose close writes the last block of under 8 KiB.
template <typename Records>
void add_module(Job &job, const Target &target, const JXOpenOptions &options,
                const Records &records) {
  job.add(
      kModule,
      [=, &target, &records, is_compared = false](Watch &watch) mutable {
        {
          ModuleFile file(target.path, options);
          watch.start();
          for (const auto &record : records) {
            file.write(record.data(), record.size() * sizeof record[0]);
          }
          watch.stop();
        }
        return target.check(&is_compared);
      },
      Kind::kModule);
}

}  // namespace jx::bench
