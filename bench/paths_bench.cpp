// Paths: splitting and building. What a contender makes it also releases.
#include <libgen.h>
#include <unistd.h>

#include <climits>
#include <filesystem>

#include "bench/path_rows.hpp"
#include "bench/peers.hpp"

namespace {

using namespace jx::bench;
namespace fs = std::filesystem;

// One past the last place of the value, 0 when absent.
size_t last_of(const char32_t *text, size_t length, char32_t value) {
  while (length > 0 && text[length - 1] != value) --length;
  return length;
}

// ---- Splitting

size_t split_with_module(const std::u32string &text) {
  JXInstance *const i = instance();
  JXChar *part[4] = {};
  int32_t chars[4] = {};
  (void)i->split_path(i, chars_of(text), count_of(text), &part[0], &chars[0], &part[1], &chars[1],
                      &part[2], &chars[2], &part[3], &chars[3]);
  keep(chars);
  (void)i->split_path_release(i, part[0], part[1], part[2], part[3]);
  return 0;
}

void split_case(Job &job) {
  const std::vector<std::string> paths = {
      "/usr/lib/libx.so",
      "/home/user/projects/report/2024/figures/chart-01.final.png",
      "name",
      "relative/dir/file.txt",
      "/etc",
      "/var/log/application/service.log.1",
      "a.b/c",
      "/opt/data/set/of/many/levels/that/go/deep/into/the/tree/leaf.data"};
  std::vector<std::u32string> wide;
  for (const auto &path : paths) wide.push_back(widen(path));
  job.begin("split", static_cast<double>(kRounds * paths.size()));
  add(job, "std::filesystem::path", paths, [](const std::string &text) {
    const fs::path path(text);
    return uncompared(path.parent_path().native().size() + path.filename().native().size() +
                      path.stem().native().size() + path.extension().native().size());
  });
  add(job, "dirname, basename on copies", paths, [](const std::string &text) {
    char first[PATH_MAX], second[PATH_MAX];
    std::memcpy(first, text.c_str(), text.size() + 1);
    std::memcpy(second, text.c_str(), text.size() + 1);
    const char *member = basename(second), *dot = std::strrchr(member, '.');
    return uncompared(std::strlen(dirname(first)) + std::strlen(member) +
                      (dot ? std::strlen(dot) : 0));
  });
#ifdef JX_BENCH_GLIB
  add(job, "GLib g_path_get_dirname, g_path_get_basename", paths, [](const std::string &text) {
    gchar *directory = g_path_get_dirname(text.c_str());
    gchar *member = g_path_get_basename(text.c_str());
    const char *dot = std::strrchr(member, '.');
    keep(std::strlen(directory) + std::strlen(member) + (dot ? std::strlen(dot) : 0));
    g_free(directory);
    g_free(member);
    return size_t{0};
  });
#endif
  add(job, kModule, wide, split_with_module, Kind::kModule);
  add(
      job, "a copy, two scans from the end (32-bit)", wide,
      [](const std::u32string &text) {
        const std::u32string copy = text;
        const size_t member = last_of(copy.data(), copy.size(), U'/');
        return uncompared(member + last_of(copy.data() + member, copy.size() - member, U'.'));
      },
      Kind::kLimit);
  job.end();
}

// ---- Building

struct Parts {
  std::string directory, member, extension;
  std::u32string wide_directory = widen(directory), wide_member = widen(member),
                 wide_extension = widen(extension);
};

size_t build_with_module(const Parts &p) {
  JXInstance *const i = instance();
  JXChar *path = nullptr;
  uint32_t chars = 0;
  (void)i->build_path(i, chars_of(p.wide_directory), count_of(p.wide_directory),
                      chars_of(p.wide_member), count_of(p.wide_member), chars_of(p.wide_extension),
                      count_of(p.wide_extension), &path, &chars);
  (void)i->build_path_release(i, path);
  return chars;
}

// The current directory when `path` needs it, with a slash, or nothing.
std::u32string prefix_of(const std::string &path) {
  char current[1024];
  if (path[0] == '/') return {};
  if (!getcwd(current, sizeof current)) fail("getcwd");
  return std::u32string(current, current + std::strlen(current)) + U'/';
}

void build_case(Job &job, const char *name, const std::vector<Parts> &parts) {
  job.begin(name, static_cast<double>(kRounds * parts.size()));
  add(job, "std::filesystem::absolute", parts, [](const Parts &p) {
    return fs::absolute(fs::path(p.directory) / (p.member + '.' + p.extension)).native().size();
  });
#ifdef JX_BENCH_GLIB
  add(job, "GLib g_build_filename, g_canonicalize_filename", parts, [](const Parts &p) {
    gchar *member = g_strconcat(p.member.c_str(), ".", p.extension.c_str(), nullptr);
    gchar *joined = g_build_filename(p.directory.c_str(), member, nullptr);
    gchar *full = g_canonicalize_filename(joined, nullptr);
    const size_t length = std::strlen(full);
    g_free(member);
    g_free(joined);
    g_free(full);
    return length;
  });
#endif
  add(job, "getcwd when relative, snprintf, strdup", parts, [](const Parts &p) {
    char current[1024] = "", full[2048];
    if (p.directory[0] != '/' && !getcwd(current, sizeof current)) fail("getcwd");
    std::snprintf(full, sizeof full, "%s%s%s/%s.%s", current, *current ? "/" : "",
                  p.directory.c_str(), p.member.c_str(), p.extension.c_str());
    return copied_and_freed(full);
  });
  add(job, kModule, parts, build_with_module, Kind::kModule);
  add(
      job, "getcwd when relative, copies (32-bit)", parts,
      [](const Parts &p) {
        std::u32string full = prefix_of(p.directory);
        full.reserve(full.size() + p.directory.size() + p.member.size() + p.extension.size() + 2);
        ((full += p.wide_directory) += U'/') += p.wide_member;
        (full += U'.') += p.wide_extension;
        keep(full[0]);
        return full.size();
      },
      Kind::kLimit);
  job.end();
}

}  // namespace

int main() {
  Job job("paths", "Paths split and built", "ns/path", 1e9);
  split_case(job);
  build_case(job, "build, absolute",
             {{"/usr/share/doc", "readme", "txt"},
              {"/home/user/projects/report/2024", "chart-01", "png"}});
  build_case(job, "build, relative",
             {{"share/doc", "readme", "txt"}, {"projects/report/2024", "chart-01", "png"}});
  job.print();
  return 0;
}
