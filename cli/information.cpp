// The commands "info", "fsinfo" and "ls": what the file system knows.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "cli/colour.hpp"
#include "cli/commands.hpp"
#include "cli/many.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

// A date and time of a file, local and with the distance from UTC that its day has there.
struct LocalTime {
  std::string text;  // 2026-01-31T12:00:00
  std::string zone;  // +01:00
};

// The value is local time by today's distance from UTC, which may not be that of its own day.
LocalTime to_local(Session &session, double modified) {
  const double utc = modified - JX_SECONDS_1960_TO_1970 + session.module().host()->time_zone;
  auto seconds = static_cast<std::time_t>(utc);
  if (static_cast<double>(seconds) > utc) --seconds;
  std::tm parts = {};
  if (!::localtime_r(&seconds, &parts)) return {std::to_string(modified), ""};
  // Not by strftime, which would read the time zone again from the environment, empty by now.
  char text[96];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", parts.tm_year + 1900,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
  const long minutes = parts.tm_gmtoff / 60;
  char zone[32];
  std::snprintf(zone, sizeof zone, "%c%02ld:%02ld", minutes < 0 ? '-' : '+',
                std::labs(minutes) / 60, std::labs(minutes) % 60);
  return {text, zone};
}

struct ListedName {
  std::string name;
  std::optional<wem::FileInfo> info;  // when asked for and found
};

void add_info(Session &session, Row &row, const std::optional<wem::FileInfo> &info) {
  if (!info) return;
  const auto [text, zone] = to_local(session, info->modified);
  row.add("size", info->size_bytes).add("modified", text + zone);
  row.add("is_dir", info->is_directory);
}

// The name as it is printed, that of a directory in its colour.
std::string name_line(Session &session, const ListedName &listed) {
  const std::string name = session.shown(listed.name);
  const bool is_folder = listed.info && listed.info->is_directory;
  return (is_folder && wants_colour(STDOUT_FILENO) ? coloured(kFolderColour, name) : name) + "\n";
}

std::string long_line(Session &session, const ListedName &listed) {
  const std::string name = name_line(session, listed);
  if (!listed.info) return std::string("?") + std::string(35, ' ') + name;
  char text[64];
  std::snprintf(text, sizeof text, "%c %12llu  %s  ", listed.info->is_directory ? 'd' : '-',
                static_cast<unsigned long long>(listed.info->size_bytes),
                to_local(session, listed.info->modified).text.c_str());
  return text + name;
}

// The names without a leading dot, from the directory list. It would give paths and information
// too, but drops blanks at the end of the names it asks for.
std::vector<std::string> list_visible(Session &session, const std::string &directory) {
  const auto table =
      require(session.instance().directory_list(session.folder_name(directory)), directory);
  std::vector<std::string> names;
  for (const JXDirectoryEntry &entry : table) names.push_back(narrow(wem::name_of(entry)));
  // The first record is the directory itself.
  if (!names.empty()) names.erase(names.begin());
  return names;
}

// Every name, through a directory handle.
std::vector<std::string> list_all(Session &session, const std::string &directory) {
  wem::Directory handle = require(
      session.instance().open_directory(session.name(directory), JX_DIRECTORY_OPEN_ALL), directory);
  std::vector<std::string> names;
  wem::EntryRange entries = handle.entries();
  for (const std::u32string &name : entries) names.push_back(narrow(name));
  if (entries.status() != JXWEM_E_EOF) throw Failure(directory, entries.status());
  return names;
}

// A member that cannot be looked at, such as a link that leads nowhere, is listed without
// information.
std::optional<wem::FileInfo> member_info(Session &session, const std::string &path) {
  try {
    const auto info = session.instance().info(session.name(path));
    return info ? std::optional(*info) : std::nullopt;
  } catch (const Failure &) {
    return std::nullopt;
  }
}

std::string join(const std::string &folder, const std::string &name) {
  return folder + (folder.ends_with('/') ? "" : "/") + name;
}

std::vector<ListedName> list(Session &session, const Arguments &arguments,
                             const std::string &directory) {
  const bool is_full = arguments.has("--full");
  const bool needs_info =
      arguments.has("--long") || (wants_colour(STDOUT_FILENO) && !arguments.has("--json"));
  std::vector<std::string> names =
      arguments.has("--all") ? list_all(session, directory) : list_visible(session, directory);
  std::sort(names.begin(), names.end());
  const std::string folder = full_path(directory);
  std::vector<ListedName> listed;
  for (const std::string &name : names) {
    ListedName entry{is_full ? join(folder, name) : name, std::nullopt};
    if (needs_info) entry.info = member_info(session, join(directory, name));
    listed.push_back(std::move(entry));
  }
  return listed;
}

// The directory that holds what a path names, by the path alone.
std::string parent_of(const std::string &directory) {
  const PathParts parts = split_last(full_path(directory));
  if (parts.name.empty()) throw Failure(directory, JXWEM_E_NOMEMBER);
  return parts.name == "." || parts.name == ".." ? directory + "/.." : parts.folder;
}

// The paths to list.
std::vector<std::string> places_of(Session &session, const Arguments &arguments) {
  const bool is_given = !arguments.operands().empty();
  const int places = arguments.has("--parent") + arguments.has("--root") + arguments.has("--home");
  if (places > 1) throw UsageError("only one of --parent, --root and --home can be given");
  if (is_given && (arguments.has("--root") || arguments.has("--home"))) {
    throw UsageError("--root and --home take no PATH");
  }
  if (arguments.has("--root")) return {"/"};
  if (arguments.has("--home")) return {session.expand("~")};
  return is_given ? arguments.operands() : std::vector<std::string>{"."};
}

// Whether a path names something that is no directory; a link to nothing too.
bool is_file(const std::string &path) {
  struct ::stat status = {};
  if (::stat(path.c_str(), &status) == 0) return !S_ISDIR(status.st_mode);
  return errno == ENOENT && ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

// directory: of a member of one of several; else empty.
void print_listed(Session &session, const Arguments &arguments, const ListedName &listed,
                  const std::string &directory) {
  if (arguments.has("--json")) {
    Row row;
    if (!directory.empty()) row.add_name("directory", directory);
    add_info(session, row.add_name("name", listed.name), listed.info);
    session.output() << row;
  } else if (arguments.has("--long")) {
    session.output() << long_line(session, listed);
  } else {
    session.output() << name_line(session, listed);
  }
}

void print_info(Session &session, const Arguments &arguments, const std::string &path) {
  const wem::FileInfo info = require(session.instance().info(session.name(path)), path);
  if (arguments.has("--json")) {
    Row row;
    add_info(session, row.add_name("path", path), info);
    session.output() << row;
    return;
  }
  session.output() << session.shown(path) + "\n  size      " + std::to_string(info.size_bytes) +
                          " bytes\n  modified  " + to_local(session, info.modified).text +
                          "\n  kind      " + (info.is_directory ? "directory" : "file") + "\n";
}

}  // namespace

int run_info(Session &session, const Arguments &arguments) {
  return for_each(session, arguments.operands(),
                  [&](const std::string &path) { print_info(session, arguments, path); });
}

int run_fsinfo(Session &session, const Arguments &arguments) {
  const std::string path = arguments.operand(0);
  const wem::FileSystemInfo info =
      require(session.instance().file_system_info(session.name(path)), path);
  if (arguments.has("--json")) {
    Row row;
    row.add_name("path", path).add("free", info.free_bytes);
    session.output() << row.add("id", uint64_t{info.identifier});
    return 0;
  }
  char id[16];
  std::snprintf(id, sizeof id, "0x%08x", static_cast<unsigned>(info.identifier));
  session.output() << session.shown(path) + "\n  free  " + std::to_string(info.free_bytes) +
                          " bytes\n  id    " + id + "\n";
  return 0;
}

int run_ls(Session &session, const Arguments &arguments) {
  const bool is_parent = arguments.has("--parent");
  std::vector<std::string> paths, folders;  // files first
  for (const std::string &path : places_of(session, arguments)) {
    (!is_parent && is_file(path) ? paths : folders).push_back(path);
  }
  size_t files_left = paths.size();
  bool needs_gap = !paths.empty();
  paths.insert(paths.end(), folders.begin(), folders.end());
  const bool is_many = paths.size() > 1;
  return for_each(session, paths, [&](const std::string &path) {
    if (files_left > 0) {
      --files_left;
      ListedName listed{arguments.has("--full") ? full_path(path) : path, std::nullopt};
      if (arguments.has("--long")) listed.info = member_info(session, path);
      return print_listed(session, arguments, listed, {});
    }
    const std::string directory = is_parent ? parent_of(path) : path;
    const std::vector<ListedName> names = list(session, arguments, directory);
    if (is_many && !arguments.has("--json")) {
      session.output() << (needs_gap ? "\n" : "") << session.shown(directory) + ":\n";
    }
    needs_gap = true;
    for (const ListedName &listed : names) {
      print_listed(session, arguments, listed, is_many ? directory : std::string());
    }
  });
}

}  // namespace cli
