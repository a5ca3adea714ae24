// Finding out which files become what.
#include "cli/convert_plan.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <utility>

#include "cli/copying.hpp"
#include "cli/input.hpp"
#include "cli/names.hpp"

namespace cli {
namespace {

// The names in a list, each ended by a zero byte.
std::vector<std::string> read_names(Session &session, const std::string &list) {
  constexpr uint32_t kChunkBytes = 65536;
  Input input(session, list, Input::Use::kBytes);
  wem::File file =
      input.open(wem::OpenOptions::input().binary(kChunkBytes).direct().direct_transfer());
  ByteReader reader(file, input.shown(), kChunkBytes);
  std::string text;
  while (!reader.is_at_end()) text += reader.next();
  std::vector<std::string> names;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\0', at), text.size());
    if (end == at) throw Failure(input.shown(), JXWEM_E_BADNAME).saying("a name in it is empty");
    names.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return names;
}

std::string output_of(const std::string &input, const Arguments &arguments) {
  if (!arguments.has("--into")) return input;
  const PathParts parts = split_last(input);
  const std::string_view name = parts.name;
  const bool is_file = !name.empty() && name != "." && name != ".." && input != "-";
  return is_file ? arguments.text("--into") + "/" + parts.name : std::string();
}

// Files by what they are, and the name of each.
class KnownFiles {
 public:
  // The name under which a file is known; null when it is not there or not known.
  const std::string *find(const std::string &name) const {
    struct ::stat status = {};
    if (::stat(name.c_str(), &status) != 0) return nullptr;
    const auto found = names_.find({status.st_dev, status.st_ino});
    return found == names_.end() ? nullptr : found->second;
  }
  // Adds a file, whose name lives longer. The name under which it is known already, or null.
  const std::string *add(const std::string &name) {
    struct ::stat status = {};
    if (::stat(name.c_str(), &status) != 0) return nullptr;
    const auto [entry, is_new] = names_.try_emplace({status.st_dev, status.st_ino}, &name);
    return is_new ? nullptr : entry->second;
  }

 private:
  std::map<std::pair<dev_t, ino_t>, const std::string *> names_;
};

Failure clash(const std::string &name, const std::string &other, const char *why) {
  return Failure(name, JXWEM_E_BADOPTIONS, other).saying(why);
}

void find_clashes_in_place(std::vector<Job> &jobs) {
  KnownFiles known;
  for (Job &job : jobs) {
    const std::string *same = known.add(job.input);
    if (same) job.failure = clash(job.input, *same, "it is the same file as one before it");
  }
}

void find_clashes_in_folder(std::vector<Job> &jobs) {
  KnownFiles inputs;
  std::map<std::string, const std::string *> outputs;
  for (const Job &job : jobs) static_cast<void>(inputs.add(job.input));
  for (Job &job : jobs) {
    if (job.output.empty()) {
      job.failure = Failure(job.input, JXWEM_E_BADNAME).saying("it has no name in a folder");
      continue;
    }
    const auto [same, is_first] = outputs.try_emplace(job.output, &job.input);
    const std::string *replaced = inputs.find(job.output);
    if (!is_first) {
      job.failure = clash(job.input, *same->second, "another file has the same name in the folder");
    } else if (replaced) {
      job.failure = clash(job.output, *replaced, "it is one of the files to read");
    }
  }
}

}  // namespace

Plan make_plan(Session &session, const Arguments &arguments, const Conversion &conversion) {
  Plan plan = {conversion,
               arguments.has("--in-place"),
               arguments.has("--dry-run"),
               arguments.text("--backup"),
               {}};
  if (plan.is_in_place && arguments.has("--into")) {
    throw UsageError("--in-place and --into cannot be given together");
  }
  if (arguments.has("--backup") && !plan.is_in_place) {
    throw UsageError("--backup needs --in-place");
  }
  const bool is_suffix =
      plan.backup_suffix.find('/') == std::string::npos && !plan.backup_suffix.empty();
  if (arguments.has("--backup") && !is_suffix) {
    throw UsageError("--backup takes what is added to a name");
  }
  std::vector<std::string> names = arguments.operands();
  if (arguments.has("--files0-from")) {
    if (!names.empty()) throw UsageError("--files0-from cannot be given with files");
    names = read_names(session, arguments.text("--files0-from"));
  } else if (names.empty()) {
    throw UsageError("files to convert are required");
  }
  for (std::string &name : names) {
    Job &job = plan.jobs.emplace_back();
    job.output = output_of(name, arguments);
    job.input = std::move(name);
  }
  if (plan.is_in_place) {
    find_clashes_in_place(plan.jobs);
  } else {
    find_clashes_in_folder(plan.jobs);
  }
  return plan;
}

}  // namespace cli
