// Command lines of jxfile, made of its own words and of any bytes, run in this process on a few
// files: exit codes and messages keep their form, nothing unfinished is left, and a command that
// only reads, or is refused, changes nothing.
#include <fcntl.h>

#include <array>
#include <optional>
#include <set>

#include "fuzz/scratch.hpp"

int jxfile_main(int argc, char **argv);

namespace jx::fuzz {
namespace {

constexpr const char *kCommands[] = {"lines",  "convert", "write",  "bytes",  "truncate", "info",
                                     "fsinfo", "ls",      "exists", "mkdir",  "rm",       "mv",
                                     "cp",     "newname", "split",  "build",  "expand",   "format",
                                     "status", "version", "help",   "--help", "generate"};
// Commands that change files.
const std::set<std::string> kChanging = {"convert", "write", "truncate", "mkdir",
                                         "rm",      "mv",    "cp",       "newname"};
constexpr const char *kOptions[] = {"--json",      "--from",       "--to",
                                    "--append",    "--bom",        "--record-length",
                                    "--expand",    "--direct",     "-n",
                                    "--mark",      "--no-bom",     "--records",
                                    "--update",    "--at",         "--raw",
                                    "--offset",    "--count",      "-a",
                                    "-l",          "--full",       "--parent",
                                    "--root",      "--home",       "-r",
                                    "--prefix",    "--extension",  "--host",
                                    "--directory", "--member",     "--help",
                                    "--capacity",  "--",           "--in-place",
                                    "--into",      "--backup",     "--files0-from",
                                    "--jobs",      "--dry-run",    "--eol",
                                    "--final-eol", "--on-error",   "--translit",
                                    "--create",    "--range",      "-p",
                                    "-P",          "-f",           "-T",
                                    "--color",     "--to-records", "--strip-blanks",
                                    "--short-last"};
constexpr const char *kValues[] = {
    "utf-8",   "utf-16",  "utf-16be",   "latin1",   "ascii",
    "cp1252",  "sjis",    "gb18030",    "ibm037",   "utf-7",
    "nosuch",  "0",       "1",          "7",        "100",
    "64k",     "2:",      "0x10",       "12x",      "99999999999999999999",
    "text",    "binary",  "stream",     "man",      "bash",
    "%d %s",   "%08.3f",  "JX_E_NOMEM", "80bfe801", "x",
    "",        "nel",     "crlf",       "add",      "escape",
    "replace", "fixed:3", "rdw",        "bdw",      "be32",
    "le32",    "pad",     "keep"};
// None leads out of the folder.
constexpr const char *kNames[] = {"text",      "wide",   "folder", "folder/inner", "link",
                                  "nothing",   "-",      "new",    "folder/new",   ".",
                                  "two words", "text/x", "a\nb"};

// Any bytes that cannot name a file outside the folder.
std::string any_word(FuzzedDataProvider *input) {
  std::string word = input->ConsumeRandomLengthString(300);
  for (char &byte : word) byte = byte == '/' || byte == '~' || byte == '\0' ? 'x' : byte;
  return word == ".." ? "dots" : word;
}

std::vector<std::string> make_words(FuzzedDataProvider *input) {
  std::vector<std::string> words = {"jxfile"};
  words.emplace_back(input->PickValueInArray(kCommands));
  for (auto count = input->ConsumeIntegralInRange<size_t>(0, 8); count > 0; --count) {
    const auto kind = input->ConsumeIntegral<uint8_t>() % 8;
    words.push_back(kind < 3   ? input->PickValueInArray(kNames)
                    : kind < 5 ? input->PickValueInArray(kOptions)
                    : kind < 7 ? input->PickValueInArray(kValues)
                               : any_word(input));
  }
  return words;
}

std::string standard_file(int fd) {
  return (scratch() / (".standard" + std::to_string(fd))).string();
}

// Replaces the standard descriptors by files while a command runs. The files stay open from run to
// run.
class Redirected {
 public:
  Redirected() {
    static const std::array files = {open_file(0), open_file(1), open_file(2)};
    for (int fd = 0; fd < 3; ++fd) {
      const int file = files[static_cast<size_t>(fd)];
      require((fd == 0 || ftruncate(file, 0) == 0) && lseek(file, 0, SEEK_SET) == 0, "a file");
      dup2(file, fd);
    }
  }
  ~Redirected() {
    std::fflush(stdout);
    for (int fd = 0; fd < 3; ++fd) dup2(kKept[static_cast<size_t>(fd)], fd);
  }

 private:
  static int keep(int fd) { return fcntl(fd, F_DUPFD_CLOEXEC, 100); }
  static int open_file(int fd) {
    const int file =
        open(standard_file(fd).c_str(), (fd == 0 ? O_RDONLY : O_RDWR) | O_CREAT | O_CLOEXEC, 0600);
    const int kept = keep(file);
    close(file);
    return kept;
  }
  static const std::array<int, 3> kKept;
};
const std::array<int, 3> Redirected::kKept = {keep(0), keep(1), keep(2)};

fs::path folder() { return scratch() / "work"; }

// The files of a run. The folder is made anew unless it is as the last run began with it.
Content make_files(FuzzedDataProvider *input, bool is_left) {
  Content content = {{"folder/", ""},
                     {"folder/inner", "inner\n"},
                     {"link", "to text"},
                     {"text", input->ConsumeRandomLengthString(300)},
                     {"wide", std::string("\xFF\xFEw\0i\0\n\0", 8)}};
  write_file(standard_file(0), input->ConsumeRandomLengthString(300));
  if (is_left) {
    write_file(folder() / "text", content["text"]);
    return content;
  }
  fs::remove_all(folder());
  fs::create_directories(folder() / "folder");
  fs::create_symlink("text", folder() / "link");
  for (const char *name : {"folder/inner", "text", "wide"})
    write_file(folder() / name, content[name]);
  require(chdir(folder().c_str()) == 0, "a folder to work in");
  return content;
}

int run_command(std::vector<std::string> words) {
  std::vector<char *> arguments;
  for (std::string &word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const Redirected redirected;
  return jxfile_main(static_cast<int>(words.size()), arguments.data());
}

std::string joined(const std::vector<std::string> &words) {
  std::string line;
  for (const std::string &word : words) line += "[" + word + "] ";
  return line;
}

void run(FuzzedDataProvider *input) {
  const std::vector<std::string> words = make_words(input);
  static bool is_left = false;
  const Content before = make_files(input, is_left);
  const int code = run_command(words);
  const std::string messages = read_file(standard_file(2));
  const std::string line = joined(words);
  require(code >= 0 && code <= 2, "exit code of " + line);
  const auto has = [&words](const char *option) { return std::ranges::count(words, option) > 0; };
  const bool is_lenient = has("--on-error") || has("--translit");
  require((code == 0) == messages.empty() || words[1] == "exists" || is_lenient,
          "messages of " + line + messages);
  const bool has_name =
      messages.starts_with("jxfile") || messages.starts_with("\033[1;31mjxfile:\033[0m ");
  require(code == 0 || messages.empty() || has_name, "message: " + messages);
  // One line for each thing that went wrong, and hints.
  require(messages.empty() || messages.ends_with('\n'), "a message without its end");

  const Content after = look(folder());
  is_left = after == before;
  for (const auto &[name, content] : after) {
    require(name.find(".jxfile-") == std::string::npos, "left by " + line + ": " + name);
  }
  const bool may_change = kChanging.contains(words[1]) && code != 2;
  // What is added to a file goes in up to a fault.
  const bool is_many = has("--in-place") || has("--into");
  const bool is_undone = words[1] == "convert" && code == 1 && !is_many && !has("--append");
  require(is_left || (may_change && !is_undone), "changed by " + line);
}

}  // namespace
}  // namespace jx::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool is_set_up = [] {
    clearenv();
    setenv("HOME", jx::fuzz::folder().c_str(), 1);
    return true;
  }();
  (void)is_set_up;
  FuzzedDataProvider input(data, size);
  jx::fuzz::run(&input);
  return 0;
}
