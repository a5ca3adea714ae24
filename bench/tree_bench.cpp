// Copying and removing a tree, and copying one large file.
#include <ftw.h>

#include "bench/peers.hpp"
#include "bench/trees.hpp"

namespace {

using namespace jx::bench;
namespace fs = std::filesystem;

using Copy = std::function<void(const std::string &from, const std::string &to)>;
using Remove = std::function<void(const std::string &path)>;

struct Tool {
  std::string name;
  Copy copy;      // null: does not copy
  Remove remove;  // null: does not remove
  Kind kind = Kind::kPeer;
};

void remove_by_nftw(const std::string &path) {
  const auto visit = [](const char *name, const struct stat *, int type, FTW *) {
    return type == FTW_DP ? rmdir(name) : unlink(name);
  };
  nftw(path.c_str(), visit, 16, FTW_DEPTH | FTW_PHYS);
}

std::vector<Tool> tools() {
  return {
      {"std::filesystem",
       [](const std::string &from, const std::string &to) {
         fs::copy(from, to, fs::copy_options::recursive);
       },
       [](const std::string &path) { fs::remove_all(path); }},
      {"cp -r, rm -rf (processes)",
       [](const std::string &from, const std::string &to) {
         run_program({"cp", "-r", from, to});
       },
       [](const std::string &path) {
         run_program({"rm", "-rf", path});
       }},
      {"nftw(3), unlink, rmdir", nullptr, remove_by_nftw},
      {kModule, copy_with_module, remove_with_module, Kind::kModule},
      {"bare calls", copy_by_path,
       [](const std::string &path) { remove_at(AT_FDCWD, path.c_str()); }, Kind::kLimit},
  };
}

void copy_case(Job &job, const std::string &tree, const std::string &copy) {
  const uint64_t expected = count_tree(tree);
  job.begin("copy", 1);
  for (const Tool &tool : tools()) {
    if (!tool.copy) continue;
    job.add(
        tool.name,
        [=, is_checked = false](Watch &watch) mutable {
          tool.copy(tree, copy);
          watch.stop();
          if (!is_checked && count_tree(copy) != expected) fail(tool.name + " copies wrongly");
          is_checked = true;
          remove_at(AT_FDCWD, copy.c_str());
          return uint64_t{0};
        },
        tool.kind);
  }
  job.end(std::min(7, default_repetitions()));
}

void remove_case(Job &job, const std::string &tree, const std::string &copy) {
  job.begin("remove", 1);
  for (const Tool &tool : tools()) {
    job.add(
        tool.name,
        [=](Watch &watch) {
          copy_by_path(tree, copy);
          watch.start();
          tool.remove(copy);
          watch.stop();
          if (fs::exists(copy)) fail(tool.name + " removes wrongly");
          return uint64_t{0};
        },
        tool.kind);
  }
  job.end(std::min(7, default_repetitions()));
}

#ifdef JX_BENCH_GLIB
void copy_by_gio(const std::string &from, const std::string &to) {
  GFile *source = g_file_new_for_path(from.c_str()), *target = g_file_new_for_path(to.c_str());
  if (!g_file_copy(source, target, G_FILE_COPY_NONE, nullptr, nullptr, nullptr, nullptr)) {
    fail("g_file_copy");
  }
  g_object_unref(source);
  g_object_unref(target);
}
#endif

void large_file_job(const std::string &from, const std::string &to) {
  constexpr size_t kBytes = 256u << 20;
  write_file(from, std::string(kBytes, 'x'));
  Job job("copy-large", "One file of 256 MiB copied", "ms", 1e3);
  job.begin("copy", 1);
  const auto add = [&](const char *name, Copy copy, Kind kind = Kind::kPeer) {
    job.add(
        name,
        [=](Watch &watch) {
          copy(from, to);
          watch.stop();
          const auto made = static_cast<uint64_t>(fs::file_size(to));
          unlink(to.c_str());
          return made;
        },
        kind);
  };
  add("std::filesystem::copy_file",
      [](const std::string &a, const std::string &b) { fs::copy_file(a, b); });
  add("cp (process)", [](const std::string &a, const std::string &b) {
    run_program({"cp", a, b});
  });
#ifdef JX_BENCH_GLIB
  add("GLib g_file_copy", copy_by_gio);
#endif
  add(kModule, copy_with_module, Kind::kModule);
  add(
      "read, write, blocks of 4096 bytes",
      [](const std::string &a, const std::string &b) {
        copy_file_by_loop(a.c_str(), b.c_str(), 4096);
      },
      Kind::kLimit);
  job.end(std::min(7, default_repetitions()));
  job.print();
}

}  // namespace

int main() {
  const Scratch scratch;
  const std::string root = scratch.at("a/path/of/some/depth");
  const std::string tree = root + "/tree", copy = root + "/copy";
  make_tree(tree, 10'000, 4096);
  Job job("tree", "A tree of 10,000 files of 2 KiB in 100 directories", "ms", 1e3);
  copy_case(job, tree, copy);
  remove_case(job, tree, copy);
  job.print();
  large_file_job(root + "/large", root + "/large-copy");
  return 0;
}
