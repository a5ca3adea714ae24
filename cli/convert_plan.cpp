// Finding out which files become what.
#include "cli/convert_plan.hpp"

#include <algorithm>

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

// What is wrong before anything is done: files that are given twice, also by other names, and
// several that would become one.
void find_clashes(Plan &plan) {
  std::map<std::string, const std::string *> outputs;
  for (Job &job : plan.jobs) {
    if (job.output.empty()) {
      job.failure = Failure(job.input, JXWEM_E_BADNAME).saying("it has no name in a folder");
      continue;
    }
    struct ::stat status = {};
    if (::stat(job.input.c_str(), &status) == 0) {
      const auto [same, is_first] =
          plan.inputs.try_emplace({status.st_dev, status.st_ino}, &job.input);
      if (!is_first && plan.is_in_place) {
        job.failure = Failure(job.input, JXWEM_E_BADOPTIONS, *same->second)
                          .saying("it is the same file as one before it");
      }
    }
    const auto [same, is_first] = outputs.try_emplace(job.output, &job.input);
    if (is_first || plan.is_in_place) continue;
    job.failure = Failure(job.input, JXWEM_E_BADOPTIONS, *same->second)
                      .saying("another file has the same name in the folder");
  }
}

}  // namespace

Plan make_plan(Session &session, const Arguments &arguments, const Conversion &conversion) {
  Plan plan = {conversion,
               arguments.has("--in-place"),
               arguments.has("--dry-run"),
               arguments.text("--backup"),
               {},
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
  find_clashes(plan);
  return plan;
}

}  // namespace cli
