// How cost grows: per byte with the length of lines, per member with the size of lists and trees,
// and with the number of threads, each with a file of its own. The columns are numbers.
#include <cstdio>

#include "bench/crew.hpp"
#include "bench/trees.hpp"

namespace {

using namespace jx::bench;
namespace fs = std::filesystem;

uint64_t tally_by_getline(const std::string &path) {
  std::FILE *file = std::fopen(path.c_str(), "rb");
  Tally tally;
  char *line = nullptr;
  size_t room = 0;
  for (ssize_t got; (got = getline(&line, &room, file)) > 0;) {
    tally.line(line, static_cast<size_t>(got - 1));
  }
  std::free(line);
  std::fclose(file);
  return tally.value();
}

void lines_job(const std::string &path) {
  Job job("growth-lines", "Lines of 10 B to 1 MB read", "ns/byte", 1e9);
  for (const uint32_t bytes : {10u, 100u, 1'000u, 10'000u, 100'000u, 1'000'000u}) {
    const std::string line = std::string(bytes - 1, 'x') + '\n';
    std::string all;
    // Many lines even of the longest: the memory of a record is new to each open file.
    while (all.size() < std::max(8'000'000u, 64 * bytes)) all += line;
    write_file(path, all);
    job.begin(std::to_string(bytes), static_cast<double>(all.size()));
    const auto add = [&](const char *name, uint32_t encoding) {
      const JXOpenOptions options = text_options(JX_ACCESS_INPUT, std::max(512u, bytes), encoding);
      job.add(
          name, [=](Watch &) { return tally_records(path, options); }, Kind::kModule);
    };
    add("jxwem", JX_ENCODING_UTF8);
    add("jxwem, to JXChar", JX_ENCODING_UTF32LE);
    job.add("getline(3)", [=](Watch &) { return tally_by_getline(path); });
    job.end(std::min(7, default_repetitions()));
  }
  job.print();
}

uint64_t list_by_readdir(const std::string &path) {
  Totals totals;
  each_entry(path.c_str(), [&](int directory, const dirent &entry) {
    struct stat info;
    fstatat(directory, entry.d_name, &info, 0);
    ++totals.members;
    if (!S_ISDIR(info.st_mode)) totals.bytes_of_files += static_cast<uint64_t>(info.st_size);
  });
  return totals.value();
}

void lists_job(const std::string &path) {
  Job job("growth-lists", "Directories of 100 to 1,000,000 members listed", "µs/member", 1e6);
  fs::create_directory(path);
  int made = 0;
  for (const int members : {100, 1'000, 10'000, 100'000, 1'000'000}) {
    for (; made < members; ++made) {
      const std::string name = path + "/member-" + std::to_string(made) + ".dat";
      close(open(name.c_str(), O_WRONLY | O_CREAT, 0644));
    }
    const int rounds = std::max(1, 20'000 / members);
    job.begin(std::to_string(members), static_cast<double>(members) * rounds);
    const auto add = [&](const char *name, auto list, Kind kind = Kind::kPeer) {
      job.add(
          name,
          [=](Watch &) {
            uint64_t sum = 0;
            for (int i = 0; i < rounds; ++i) sum += list();
            return sum;
          },
          kind);
    };
    add(
        kModule, [=] { return list_with_module(path).value(); }, Kind::kModule);
    add("readdir, fstatat", [=] { return list_by_readdir(path); });
    job.end(members > 100'000 ? 3 : std::min(7, default_repetitions()));
  }
  job.print();
  fs::remove_all(path);
}

// Several copies, or removals, for a small tree, so that a pass is long enough to time.
void trees_case(Job &copies, Job &removals, const std::string &tree, int members) {
  const int rounds = std::max(1, 2'000 / members);
  const int repetitions = std::min(members > 10'000 ? 3 : 5, default_repetitions());
  const auto pass = [=](auto copy, auto remove, bool is_copy_timed) {
    return [=](Watch &watch) {
      watch.start();
      watch.stop();
      const std::string to = tree + "-copy";
      for (int i = 0; i < rounds; ++i) {
        if (is_copy_timed) watch.start();
        copy(tree, to);
        if (is_copy_timed) watch.stop();
        if (!is_copy_timed) watch.start();
        remove(to);
        if (!is_copy_timed) watch.stop();
      }
      return uint64_t{0};
    };
  };
  const auto copy_by_library = [](const std::string &from, const std::string &to) {
    fs::copy(from, to, fs::copy_options::recursive);
  };
  const auto remove_by_library = [](const std::string &path) { fs::remove_all(path); };
  const auto run = [&](Job &job, bool is_copy_timed) {
    job.begin(std::to_string(members), static_cast<double>(members) * rounds);
    job.add(kModule, pass(copy_with_module, remove_with_module, is_copy_timed), Kind::kModule);
    job.add("std::filesystem", pass(copy_by_library, remove_by_library, is_copy_timed));
    job.end(repetitions);
  };
  run(copies, true);
  run(removals, false);
}

void trees_jobs(const Scratch &scratch) {
  Job copies("growth-copies", "Trees of 10 to 100,000 files copied", "µs/file", 1e6);
  Job removals("growth-removals", "Trees of 10 to 100,000 files removed", "µs/file", 1e6);
  for (const int members : {10, 100, 1'000, 10'000, 100'000}) {
    const std::string tree = scratch.at("tree");
    make_tree(tree, members, 200);
    trees_case(copies, removals, tree, members);
    fs::remove_all(tree);
  }
  copies.print();
  removals.print();
}

constexpr uint64_t kLines = 1'600'000;  // of all threads together

// Every thread reads its file once.
template <typename Read>
uint64_t read_in_threads(Watch &watch, int threads, Read read) {
  run_crew(
      watch, threads, [](int) {}, read);
  return 0;
}

void threads_job(const Scratch &scratch) {
  Job job("growth-threads", "1 to 16 threads, each reading a file of its own, lines of 80 B",
          "ns/line", 1e9, Clock::kWall);
  const auto path = [&](int t) { return scratch.at("lines-" + std::to_string(t)); };
  const std::string line = std::string(79, 'x') + '\n';
  for (const int threads : {1, 2, 4, 8, 16}) {
    std::string all;
    for (uint64_t i = 0; i < kLines / static_cast<uint64_t>(threads); ++i) all += line;
    for (int t = 0; t < threads; ++t) write_file(path(t), all);
    job.begin(std::to_string(threads), static_cast<double>(kLines));
    const auto add = [&](const char *name, auto read, Kind kind = Kind::kPeer) {
      job.add(
          name,
          [=](Watch &watch) {
            return read_in_threads(watch, threads, [&](int t) { keep(read(path(t))); });
          },
          kind);
    };
    const auto add_module = [&](const char *name, uint32_t encoding) {
      const JXOpenOptions options = text_options(JX_ACCESS_INPUT, 512, encoding);
      add(
          name, [=](const std::string &p) { return tally_records(p, options); }, Kind::kModule);
    };
    add_module("jxwem", JX_ENCODING_UTF8);
    add_module("jxwem, to JXChar", JX_ENCODING_UTF32LE);
    add("getline(3)", tally_by_getline);
    job.end(std::min(5, default_repetitions()));
  }
  job.print();
}

}  // namespace

int main() {
  const Scratch scratch;
  lines_job(scratch.at("lines"));
  lists_job(scratch.at("list"));
  trees_jobs(scratch);
  threads_job(scratch);
  return 0;
}
