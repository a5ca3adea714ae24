// The commands "info", "fsinfo" and "ls": what the file system knows.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <vector>

#include "cli/commands.hpp"
#include "cli/session.hpp"

namespace cli {
namespace {

constexpr double kSecondsTo1970 = 315619200;  // from 1 January 1960

// A local date and time in the form 2026-01-31T12:00:00. The value is local time by today's
// distance from UTC, which may not be that of its own day.
std::string to_date(Session &session, double modified) {
  const double utc = modified - kSecondsTo1970 + session.module().host()->time_zone;
  const auto seconds = static_cast<std::time_t>(std::floor(utc));
  std::tm parts = {};
  if (!::localtime_r(&seconds, &parts)) return std::to_string(modified);
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  return text;
}

struct ListedName {
  std::string name;
  std::optional<wem::FileInfo> info;  // when asked for and found
};

void add_info(Session &session, Row &row, const std::optional<wem::FileInfo> &info) {
  if (!info) return;
  row.add("size", info->size_bytes).add("modified", to_date(session, info->modified));
  row.add("is_dir", info->is_directory);
}

std::string long_line(Session &session, const ListedName &listed) {
  if (!listed.info) return std::string("?") + std::string(35, ' ') + listed.name + "\n";
  char text[64];
  std::snprintf(text, sizeof text, "%c %12llu  %s  ", listed.info->is_directory ? 'd' : '-',
                static_cast<unsigned long long>(listed.info->size_bytes),
                to_date(session, listed.info->modified).c_str());
  return text + listed.name + "\n";
}

struct ListRequest {
  std::string directory;
  uint32_t kind = JX_DIRECTORY_NAMED;
  bool is_long = false;
  bool is_full = false;
};

// The directory list: names without a leading dot.
std::vector<ListedName> list_visible(Session &session, const ListRequest &request) {
  const uint32_t flags =
      (request.is_full ? JX_LIST_FULL_PATH : 0u) | (request.is_long ? JX_LIST_INFORMATION : 0u);
  const auto table =
      require(session.instance().directory_list(widen(request.directory), request.kind, flags),
              request.directory);
  std::vector<ListedName> names;
  for (const JXDirectoryEntry &entry : table) {
    ListedName listed{narrow(wem::name_of(entry)), std::nullopt};
    if (entry.size_bytes >= 0) {
      listed.info =
          wem::FileInfo{static_cast<uint64_t>(entry.size_bytes), entry.modified, entry.is_dir != 0};
    }
    names.push_back(std::move(listed));
  }
  // The first record is the directory itself.
  if (!names.empty()) names.erase(names.begin());
  return names;
}

// Every name, through a directory handle. A member that cannot be looked at, such as a link that
// leads nowhere, is listed without information.
std::vector<ListedName> list_all(Session &session, const ListRequest &request) {
  const wem::Instance &instance = session.instance();
  const std::u32string path = widen(request.directory);
  wem::Directory directory =
      require(instance.open_directory(path, JX_DIRECTORY_ALL), request.directory);
  const std::string folder = narrow(require(instance.build_path(path), request.directory));
  std::vector<ListedName> names;
  wem::EntryRange entries = directory.entries();
  for (const std::u32string &name : entries) {
    const std::string full = folder + (folder.ends_with('/') ? "" : "/") + narrow(name);
    ListedName listed{request.is_full ? full : narrow(name), std::nullopt};
    if (request.is_long) {
      const auto info = instance.info(widen(full));
      if (info) listed.info = *info;
    }
    names.push_back(std::move(listed));
  }
  if (entries.status() != JXWEM_E_EOF) throw Failure(request.directory, entries.status());
  return names;
}

ListRequest list_request(Session &session, const Arguments &arguments) {
  ListRequest request;
  const bool is_given = !arguments.operands().empty();
  request.directory = is_given ? arguments.operand(0) : ".";
  request.is_long = arguments.has("--long");
  request.is_full = arguments.has("--full");
  const int places = arguments.has("--parent") + arguments.has("--root") + arguments.has("--home");
  if (places > 1) throw UsageError("only one of --parent, --root and --home can be given");
  if (is_given && (arguments.has("--root") || arguments.has("--home"))) {
    throw UsageError("--root and --home take no DIR");
  }
  if (arguments.has("--parent")) request.kind = JX_DIRECTORY_PARENT;
  if (arguments.has("--root")) request.kind = JX_DIRECTORY_ROOT;
  if (arguments.has("--home")) request.kind = JX_DIRECTORY_HOME;
  if (!arguments.has("--all")) return request;
  // A directory handle takes a path only: the kinds are turned into one.
  if (request.kind == JX_DIRECTORY_ROOT) request.directory = "/";
  if (request.kind == JX_DIRECTORY_HOME) request.directory = "~";
  if (request.kind == JX_DIRECTORY_PARENT) {
    const auto path =
        require(session.instance().build_path(widen(request.directory)), request.directory);
    const auto parts = require(session.instance().split_path(path), request.directory);
    if (!parts.member || !parts.directory) throw Failure(request.directory, JXWEM_E_NOMEMBER);
    request.directory = narrow(*parts.directory);
  }
  return request;
}

}  // namespace

int run_info(Session &session, const Arguments &arguments) {
  int code = 0;
  for (const std::string &path : arguments.operands()) {
    const auto info = session.instance().info(widen(path));
    if (!info) {
      session.output().flush();
      session.report(Failure(path, info.status()));
      code = 1;
      continue;
    }
    if (arguments.has("--json")) {
      Row row;
      add_info(session, row.add_name("path", path), *info);
      session.output() << row;
      continue;
    }
    session.output() << path + "\n  size      " + std::to_string(info->size_bytes) +
                            " bytes\n  modified  " + to_date(session, info->modified) +
                            "\n  kind      " + (info->is_directory ? "directory" : "file") + "\n";
  }
  return code;
}

int run_fsinfo(Session &session, const Arguments &arguments) {
  const std::string path = arguments.operand(0);
  const wem::FileSystemInfo info = require(session.instance().file_system_info(widen(path)), path);
  if (arguments.has("--json")) {
    Row row;
    row.add_name("path", path).add("free", info.free_bytes);
    session.output() << row.add("id", uint64_t{info.identifier});
    return 0;
  }
  char id[16];
  std::snprintf(id, sizeof id, "0x%08x", static_cast<unsigned>(info.identifier));
  session.output() << path + "\n  free  " + std::to_string(info.free_bytes) + " bytes\n  id    " +
                          id + "\n";
  return 0;
}

int run_ls(Session &session, const Arguments &arguments) {
  const ListRequest request = list_request(session, arguments);
  std::vector<ListedName> names;
  try {
    names = arguments.has("--all") ? list_all(session, request) : list_visible(session, request);
  } catch (Failure &failure) {
    const bool is_there = session.instance().exist(widen(request.directory)).ok();
    if (failure.status != JXWEM_E_NOTFOUND || !is_there) throw;
    failure.hint = "it is not a directory; show a file with: jxfile info";
    throw;
  }
  std::sort(names.begin(), names.end(),
            [](const ListedName &a, const ListedName &b) { return a.name < b.name; });
  for (const ListedName &listed : names) {
    if (arguments.has("--json")) {
      Row row;
      add_info(session, row.add_name("name", listed.name), listed.info);
      session.output() << row;
    } else {
      session.output() << (request.is_long ? long_line(session, listed) : listed.name + "\n");
    }
  }
  return 0;
}

}  // namespace cli
