// Listing a directory with the size, time and kind of every member.
#include <dirent.h>
#include <ftw.h>

#include <chrono>
#include <cstring>

#include "bench/peers.hpp"
#include "bench/trees.hpp"

namespace {

using namespace jx::bench;
namespace fs = std::filesystem;

struct Member {
  std::string name;
  int64_t size_bytes;
  double modified;
  bool is_dir;
};

// The list that a caller of a peer keeps.
class List {
 public:
  List() { members_.reserve(16384); }
  void add(std::string name, int64_t size_bytes, double modified, bool is_dir) {
    members_.push_back({std::move(name), size_bytes, modified, is_dir});
  }
  void add(std::string name, const struct stat &info) {
    add(std::move(name), info.st_size, static_cast<double>(info.st_mtim.tv_sec),
        S_ISDIR(info.st_mode));
  }
  uint64_t value() const {
    Totals totals;
    for (const Member &member : members_) {
      ++totals.members;
      totals.directories += member.is_dir;
      totals.bytes_of_files += member.is_dir ? 0 : static_cast<uint64_t>(member.size_bytes);
      keep(member.modified);
    }
    return totals.value();
  }

 private:
  std::vector<Member> members_;
};

uint64_t by_iterator(const std::string &path) {
  List list;
  for (const auto &entry : fs::directory_iterator(path)) {
    const bool is_dir = entry.is_directory();
    list.add(entry.path().filename().string(), is_dir ? 0 : static_cast<int64_t>(entry.file_size()),
             std::chrono::duration<double>(entry.last_write_time().time_since_epoch()).count(),
             is_dir);
  }
  return list.value();
}

uint64_t by_iterator_and_stat(const std::string &path) {
  List list;
  for (const auto &entry : fs::directory_iterator(path)) {
    struct stat info;
    stat(entry.path().c_str(), &info);
    list.add(entry.path().filename().string(), info);
  }
  return list.value();
}

uint64_t by_nftw(const std::string &path) {
  static List *walked;  // nftw has no argument for its callback
  List list;
  walked = &list;
  const auto visit = [](const char *name, const struct stat *info, int, FTW *at) {
    if (at->level == 1) walked->add(name + at->base, *info);
    return 0;
  };
  nftw(path.c_str(), visit, 16, FTW_PHYS);
  return list.value();
}

uint64_t by_scandir(const std::string &path) {
  List list;
  dirent **entries = nullptr;
  const int count = scandir(path.c_str(), &entries, nullptr, nullptr);
  for (int i = 0; i < count; ++i) {
    struct stat info;
    if (!is_dots(entries[i]->d_name)) {
      stat((path + '/' + entries[i]->d_name).c_str(), &info);
      list.add(entries[i]->d_name, info);
    }
    std::free(entries[i]);
  }
  std::free(entries);
  return list.value();
}

#ifdef JX_BENCH_GLIB
uint64_t by_gio(const std::string &path) {
  List list;
  GFile *directory = g_file_new_for_path(path.c_str());
  GFileEnumerator *members = g_file_enumerate_children(
      directory, "standard::name,standard::type,standard::size,time::modified",
      G_FILE_QUERY_INFO_NONE, nullptr, nullptr);
  while (GFileInfo *info = g_file_enumerator_next_file(members, nullptr, nullptr)) {
    list.add(g_file_info_get_name(info), g_file_info_get_size(info),
             static_cast<double>(g_file_info_get_attribute_uint64(info, "time::modified")),
             g_file_info_get_file_type(info) == G_FILE_TYPE_DIRECTORY);
    g_object_unref(info);
  }
  g_object_unref(members);
  g_object_unref(directory);
  return list.value();
}

uint64_t by_gdir(const std::string &path) {
  List list;
  GDir *directory = g_dir_open(path.c_str(), 0, nullptr);
  while (const gchar *name = g_dir_read_name(directory)) {
    gchar *full = g_build_filename(path.c_str(), name, nullptr);
    GStatBuf info;
    g_stat(full, &info);
    list.add(name, info);
    g_free(full);
  }
  g_dir_close(directory);
  return list.value();
}
#endif

uint64_t by_readdir(const std::string &path) {
  List list;
  each_entry(path.c_str(), [&](int directory, const dirent &entry) {
    struct stat info;
    fstatat(directory, entry.d_name, &info, 0);
    list.add(entry.d_name, info);
  });
  return list.value();
}

// Files of up to 64 KiB without blocks, and a hundredth of directories.
void make_members(const std::string &path, int count) {
  fs::create_directories(path);
  Random random;
  for (int i = 0; i < count; ++i) {
    char name[64];
    std::snprintf(name, sizeof name, "/member-%05d-%0*llx", i,
                  static_cast<int>(4 + random.below(12)),
                  static_cast<unsigned long long>(random.next() & 0xFFFF));
    if (i % 100 == 0) {
      fs::create_directory(path + name);
      continue;
    }
    const int fd = open((path + name).c_str(), O_WRONLY | O_CREAT, 0666);
    if (ftruncate(fd, static_cast<off_t>(random.below(65536))) != 0) fail("ftruncate");
    close(fd);
  }
}

}  // namespace

int main() {
  constexpr int kMembers = 10'000;
  const Scratch scratch;
  const std::string path = scratch.at("a/path/of/some/depth");
  make_members(path, kMembers);
  Job job("list", "A directory of 10,000 members listed with size, time and kind", "ns/member",
          1e9);
  job.begin("list", kMembers);
  const auto add = [&](const char *who, auto list, Kind kind = Kind::kPeer) {
    job.add(
        who, [=](Watch &) { return list(path); }, kind);
  };
  const auto add_program = [&](const char *who, std::vector<std::string> words) {
    add(who, [=](const std::string &) { return run_program(words), uint64_t{0}; });
  };
  add("std::filesystem::directory_iterator", by_iterator);
  add("directory_iterator, stat(2)", by_iterator_and_stat);
  add("nftw(3)", by_nftw);
  add("scandir(3), stat(2)", by_scandir);
#ifdef JX_BENCH_GLIB
  add("GLib g_file_enumerate_children", by_gio);
  add("GLib g_dir_open, g_stat", by_gdir);
#endif
  add_program("find -printf (process)",
              {"find", path, "-mindepth", "1", "-maxdepth", "1", "-printf", "%f %s %T@ %y\\n"});
  add_program("ls -l (process)", {"ls", "-lU", path});
  add(
      kModule, [](const std::string &p) { return list_with_module(p).value(); }, Kind::kModule);
  add("opendir, readdir, fstatat", by_readdir, Kind::kLimit);
  job.end();
  job.print();
  return 0;
}
