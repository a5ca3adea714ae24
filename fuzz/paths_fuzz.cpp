// Paths of any characters with environments of any values: expansion, split and build against
// models that work on strings.
#include <unistd.h>

#include <array>
#include <map>
#include <optional>

#include "fuzz/fuzz.hpp"
#include "jx/exports/posix.h"

namespace jx::fuzz {
namespace {

constexpr size_t kAreaBytes = 1024;  // work text
constexpr size_t kVariableNameBytes = 127;
constexpr uint32_t kDepth = 16, kVariables = 4096;

struct Expanded {
  JXStatus status;
  std::string path;
  bool operator==(const Expanded &) const = default;
};

using Environment = std::map<std::string, std::string>;

// Variables in a text, cut where the work text ends.
class Variables {
 public:
  explicit Variables(const Environment &environment) : environment_(environment) {}

  Expanded expand(const std::string &text) {
    add(text, 1);
    return {status_, made_.substr(0, kAreaBytes)};
  }

 private:
  void add(const std::string &text, uint32_t depth) {
    size_t at = 0;
    while (at < text.size() && made_.size() < kAreaBytes && status_ == JX_OK) {
      if (text[at] != '$') {
        made_ += text[at++];
        continue;
      }
      const size_t end = std::min(text.find_first_of("/.$", at + 1), text.size());
      const std::string name = text.substr(at + 1, end - at - 1);
      const bool is_refused = name.size() >= kVariableNameBytes || ++count_ > kVariables;
      const auto variable = environment_.find(name);
      if (is_refused) {
        status_ = JXWEM_E_NAMETOOLONG;
      } else if (variable == environment_.end()) {
        made_ += text.substr(at, end - at);
      } else {
        add_value(variable->second, depth);
      }
      at = end;
    }
  }
  void add_value(const std::string &value, uint32_t depth) {
    const size_t plain = std::min(value.find('$'), value.size());
    const size_t room = kAreaBytes - std::min(made_.size(), kAreaBytes);
    made_ += value.substr(0, plain);
    // A value that was cut, or that fills the area, is not looked at any further.
    if (plain >= room || plain == value.size()) return;
    const std::string rest = value.substr(plain);
    if (depth == kDepth || rest.size() >= kAreaBytes) {
      status_ = JXWEM_E_NAMETOOLONG;
    } else {
      add(rest, depth + 1);
    }
  }

  const Environment &environment_;
  std::string made_;
  uint32_t count_ = 0;
  JXStatus status_ = JX_OK;
};

// Takes leading "." and ".." components off a remainder, and for each ".." the last component off
// the prefix. False above the root.
bool resolve_dots(std::string *prefix, std::string *rest) {
  while (rest->starts_with('.')) {
    const size_t end = std::min(rest->find('/'), rest->size());
    const std::string component = rest->substr(0, end);
    if (component != "." && component != "..") break;
    if (component == "..") {
      while (prefix->ends_with('/')) prefix->pop_back();
      if (prefix->empty()) return false;
      while (!prefix->empty() && !prefix->ends_with('/')) prefix->pop_back();
      if (prefix->empty()) return false;
    }
    rest->erase(0, rest->find_first_not_of('/', end));
  }
  return true;
}

// Puts the prefix, a slash and the rest together.
Expanded join(std::string prefix, std::string rest) {
  if (prefix.find_first_not_of('/', 1) != std::string::npos) {
    while (prefix.ends_with('/')) prefix.pop_back();
  }
  rest.erase(0, rest.find_first_not_of('/'));
  if (prefix.size() + rest.size() + 2 > kAreaBytes) return {JXWEM_E_NAMETOOLONG, ""};
  return {JX_OK, prefix + "/" + rest};
}

// The model of an expansion in a current directory; nullopt for the home of a named user.
std::optional<Expanded> expand(const std::string &path, const std::string &current,
                               const Environment &environment) {
  if (path.size() > kAreaBytes) return Expanded{JXWEM_E_NAMETOOLONG, ""};
  if (path.find('\0') != std::string::npos) return Expanded{JXWEM_E_FAILED, ""};
  Expanded expanded = Variables(environment).expand(path);
  if (expanded.status != JX_OK) return Expanded{expanded.status, ""};
  std::string text = expanded.path;
  if (text.starts_with('~')) {
    if (text.size() > 1 && text[1] != '/') return std::nullopt;
    const std::string &home = environment.at("HOME");
    expanded = home.empty() ? Expanded{JX_OK, text.substr(1)} : join(home, text.substr(1));
  } else if (!text.starts_with('/')) {
    std::string prefix = current;
    if (!resolve_dots(&prefix, &text)) return Expanded{JXWEM_E_FAILED, ""};
    expanded = join(prefix, text);
  }
  while (expanded.path.size() > 1 && expanded.path.ends_with('/')) expanded.path.pop_back();
  return expanded;
}

Expanded expand(const std::string &path) {
  const Name name(path);
  JXChar *made = nullptr;
  uint32_t chars = 0;
  const JXStatus status = bkwemexpand_path(instance(), name.data(), name.chars(), &made, &chars);
  const Expanded result = {status, status == JX_OK ? narrow(made, chars) : ""};
  require(bkwemexpand_path_free(instance()->pool, made) == JX_OK, "a result is freed");
  return result;
}

void check_split(const std::string &path) {
  if (path.empty()) return;
  const size_t slash = path.rfind('/');
  const bool has_folder = slash != std::string::npos;
  const std::string member = has_folder ? path.substr(slash + 1) : path;
  const size_t point = member.rfind('.');
  const bool has_extension = point != std::string::npos && point > 0 && point + 1 < member.size();
  const std::array<std::string, 4> expected = {
      has_folder ? path.substr(0, std::max<size_t>(slash, 1)) : "", member,
      has_extension ? member.substr(0, point) : member,
      has_extension ? member.substr(point + 1) : ""};

  const Name name(path);
  std::array<JXChar *, 4> parts = {};
  std::array<int32_t, 4> counts = {};
  require(bkwemsplitpath(instance(), name.data(), name.chars(), &parts[0], &counts[0], &parts[1],
                         &counts[1], &parts[2], &counts[2], &parts[3], &counts[3]) == JX_OK,
          "a split");
  for (size_t i = 0; i < parts.size(); ++i) {
    const std::string part = parts[i] ? narrow(parts[i], static_cast<uint32_t>(counts[i])) : "";
    require(part == expected[i], "part " + std::to_string(i) + " of " + path);
  }
  require(bkwemsplitpathdestroy(instance(), parts[0], parts[1], parts[2], parts[3]) == JX_OK,
          "the parts are freed");
}

// Directory, member and extension that need no trimming give the expansion of the three together.
void check_build(const std::string &directory, const std::string &member,
                 const std::string &extension) {
  const Name names[] = {Name(directory), Name(member), Name(extension)};
  JXChar *made = nullptr;
  uint32_t chars = 0;
  const JXStatus status =
      bkwembuildpath(instance(), names[0].data(), names[0].chars(), names[1].data(),
                     names[1].chars(), names[2].data(), names[2].chars(), &made, &chars);
  const std::string path = status == JX_OK ? narrow(made, chars) : "";
  require(bkwembuildpathdestroy(instance(), made) == JX_OK, "a built path is freed");
  require(status != JX_OK || chars <= kAreaBytes, "a built path is too long");
  const bool is_plain =
      (directory + member + extension).find_first_of(std::string(" $~\0", 4)) == std::string::npos;
  if (status != JX_OK || !is_plain || directory.empty() || directory.ends_with('/')) return;
  if (member.empty() || member.ends_with('/') || extension.ends_with('/')) return;
  const Expanded expected =
      expand(directory + "/" + member + (extension.empty() ? "" : "." + extension));
  require(expected.status != JX_OK || expected.path == path, "a built path: " + path);
}

// Text with the characters that paths are about.
std::string make_text(FuzzedDataProvider *input) {
  static constexpr const char *kPieces[] = {"/",    "//", ".",   "..", "~",     "$",  "$A", "$B/",
                                            "${A}", "a",  "b.c", " ",  "$HOME", "./", "../"};
  if (input->ConsumeBool()) return input->ConsumeRandomLengthString(1100);
  std::string text;
  for (auto count = input->ConsumeIntegralInRange<size_t>(0, 12); count > 0; --count) {
    const auto piece = input->ConsumeIntegralInRange<size_t>(0, std::size(kPieces));
    if (piece == std::size(kPieces)) {
      text.append(input->ConsumeIntegralInRange<size_t>(0, 1030), 'x');
    } else {
      text += kPieces[piece];
    }
  }
  return text;
}

void run(FuzzedDataProvider *input) {
  Environment environment;
  clearenv();
  for (const char *name : {"HOME", "A", "B", "{A}"}) {
    std::string value = make_text(input);
    value.resize(std::min(value.find('\0'), value.size()));
    environment[name] = value;
    setenv(name, value.c_str(), 1);
  }
  const char *const folder = input->ConsumeBool() ? "/" : "/usr/lib";
  require(chdir(folder) == 0, "a folder to work in");
  const std::string path = make_text(input);
  const std::optional<Expanded> expected = expand(path, folder, environment);
  const Expanded expanded = expand(path);
  require(!expected || expanded == *expected, "expansion of " + path);
  check_split(path);
  check_build(path, make_text(input), make_text(input));
}

}  // namespace
}  // namespace jx::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider input(data, size);
  jx::fuzz::run(&input);
  return 0;
}
