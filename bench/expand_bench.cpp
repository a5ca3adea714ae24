// Paths expanded, and unique names. What a contender makes it also releases.
#include <pwd.h>
#include <unistd.h>
#include <wordexp.h>

#include <atomic>
#include <boost/uuid/uuid_generators.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <filesystem>

#include "bench/path_rows.hpp"
#include "bench/peers.hpp"

namespace {

using namespace jx::bench;
namespace fs = std::filesystem;

size_t expand_with_module(const std::u32string &text) {
  JXChar *result = nullptr;
  uint32_t chars = 0;
  if (bkwemexpand_path(instance(), chars_of(text), count_of(text), &result, &chars) != JX_OK) {
    fail("the module does not expand a path");
  }
  (void)bkwemexpand_path_free(instance()->pool, result);
  return chars;
}

// What goes before the rest of a path, which it moves to the first byte after that.
std::string lookup(const char *&rest) {
  char strings[1024];
  passwd entry, *found = nullptr;
  const char *const text = rest;
  if (text[0] != '/' && text[0] != '$' && text[0] != '~') {
    if (!getcwd(strings, sizeof strings)) fail("getcwd");
    return std::string(strings) + '/';
  }
  rest = std::strchr(text, '/');
  if (text[0] == '/') return {};
  if (text[0] == '$') return std::getenv("BENCH_DIRECTORY");
  if (text[1] == '/') return std::getenv("HOME");
  if (getpwnam_r("root", &entry, strings, sizeof strings, &found) != 0 || !found) fail("getpwnam");
  return entry.pw_dir;
}

void expand_case(Job &job, const std::string &path) {
  const std::vector<std::string> paths(4, path);
  const std::vector<std::u32string> wide(4, widen(path));
  const bool has_prefix = path[0] == '~' || path[0] == '$';
  job.begin(path, static_cast<double>(kRounds * paths.size()));
  if (path[0] == '/' || has_prefix) {
    add(job, "wordexp(3)", paths, [](const std::string &text) {
      wordexp_t words;
      if (wordexp(text.c_str(), &words, WRDE_NOCMD) != 0) fail("wordexp");
      const size_t length = std::strlen(words.we_wordv[0]);
      wordfree(&words);
      return length;
    });
  }
  if (!has_prefix) {
    add(job, "std::filesystem::absolute", paths,
        [](const std::string &text) { return fs::absolute(text).native().size(); });
#ifdef JX_BENCH_GLIB
    add(job, "GLib g_canonicalize_filename", paths, [](const std::string &text) {
      gchar *full = g_canonicalize_filename(text.c_str(), nullptr);
      const size_t length = std::strlen(full);
      g_free(full);
      return length;
    });
#endif
  }
  add(job, kModule, wide, expand_with_module, Kind::kModule);
  add(
      job, "the one lookup, a copy (32-bit)", paths,
      [](const std::string &text) {
        const char *rest = text.c_str();
        const std::string prefix = lookup(rest);
        std::u32string full;
        full.reserve(prefix.size() + std::strlen(rest));
        for (const char c : prefix) full += static_cast<unsigned char>(c);
        for (; *rest; ++rest) full += static_cast<unsigned char>(*rest);
        keep(full[0]);
        return full.size();
      },
      Kind::kLimit);
  job.end();
}

size_t name_with_module(const std::u32string &directory) {
  static constexpr JXChar kPrefix[] = {'t', 'm', 'p', '-'}, kExtension[] = {'d', 'a', 't'};
  JXInstance *const i = instance();
  JXCreateName request{};
  request.prefix = kPrefix;
  request.prefix_chars = 4;
  request.extension = kExtension;
  request.extension_chars = 3;
  request.flags = JX_NAME_PREFIX | JX_NAME_EXTENSION;
  JXChar *path = nullptr;
  uint32_t chars = 0;
  (void)i->create_name(i, chars_of(directory), count_of(directory), &request, &path, &chars);
  (void)i->create_name_release(i, path);
  return uncompared(chars);
}

void name_case(Job &job) {
  static std::atomic<unsigned> counter{0};
  const std::vector<std::string> directories(4, "/usr/share/doc");
  const std::vector<std::u32string> wide(4, widen(directories[0]));
  job.begin("unique name", static_cast<double>(kRounds * directories.size()));
  add(job, "Boost uuids", directories, [](const std::string &directory) {
    static boost::uuids::random_generator_mt19937 generate;
    return uncompared((directory + '/' + boost::uuids::to_string(generate())).size());
  });
  add(job, "atomic counter, snprintf, strdup", directories, [](const std::string &directory) {
    char name[1024];
    std::snprintf(name, sizeof name, "%s/ZOR_util%04X%08X_%s", directory.c_str(),
                  ++counter & 0xFFFF, 1234u, "node7");
    return uncompared(copied_and_freed(name));
  });
  add(job, kModule, wide, name_with_module, Kind::kModule);
  add(
      job, "atomic counter, by hand (32-bit)", wide,
      [](const std::u32string &directory) {
        std::u32string name;
        name.reserve(directory.size() + 28);
        (name += directory) += U"/ZOR_util";
        const uint64_t value = uint64_t{++counter & 0xFFFF} << 32 | 1234;
        for (int shift = 44; shift >= 0; shift -= 4)
          name += U"0123456789ABCDEF"[value >> shift & 15];
        name += U"_node7";
        keep(name[0]);
        return uncompared(name.size());
      },
      Kind::kLimit);
  job.end();
}

}  // namespace

int main() {
  setenv("BENCH_DIRECTORY", "/opt/data/archive", 1);
  setenv("HOME", "/home/user", 1);
  Job job("expand", "Paths expanded, a unique name made", "ns/path", 1e9);
  for (const char *path : {"/usr/share/doc/x.txt", "doc/x.txt", "~/doc/x.txt", "~root/doc/x.txt",
                           "$BENCH_DIRECTORY/x.txt"}) {
    expand_case(job, path);
  }
  name_case(job);
  job.print();
  return 0;
}
