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
const std::set<std::string> kChanging = {"convert", "write", "truncate", "mkdir", "rm", "mv", "cp"};
constexpr const char *kOptions[] = {
    "--json",     "--from",      "--to",     "--append",    "--bom",    "--record-length",
    "--expand",   "--direct",    "-n",       "--mark",      "--no-bom", "--records",
    "--update",   "--at",        "--raw",    "--offset",    "--count",  "-a",
    "-l",         "--full",      "--parent", "--root",      "--home",   "-r",
    "--prefix",   "--extension", "--host",   "--directory", "--member", "--help",
    "--capacity", "--"};
constexpr const char *kValues[] = {"utf-8",      "utf-16", "utf-16be", "latin1",
                                   "ascii",      "cp1252", "sjis",     "gb18030",
                                   "ibm037",     "utf-7",  "nosuch",   "0",
                                   "1",          "7",      "100",      "64k",
                                   "-1",         "0x10",   "12x",      "99999999999999999999",
                                   "text",       "binary", "stream",   "man",
                                   "completion", "%d %s",  "%08.3f",   "JX_E_NOMEM",
                                   "80bfe801",   "x",      ""};
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

// Replaces the standard descriptors by files while a command runs.
class Redirected {
 public:
  Redirected() {
    for (int fd = 0; fd < 3; ++fd) {
      kept_[static_cast<size_t>(fd)] = fcntl(fd, F_DUPFD_CLOEXEC, 100);
      const int file = open(name(fd), fd == 0 ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC, 0600);
      dup2(file, fd);
      close(file);
    }
  }
  ~Redirected() {
    std::fflush(stdout);
    for (int fd = 0; fd < 3; ++fd) {
      dup2(kept_[static_cast<size_t>(fd)], fd);
      close(kept_[static_cast<size_t>(fd)]);
    }
  }

  static const char *name(int fd) {
    static const std::array<std::string, 3> names = {
        (scratch() / ".in").string(), (scratch() / ".out").string(), (scratch() / ".err").string()};
    return names[static_cast<size_t>(fd)].c_str();
  }

 private:
  std::array<int, 3> kept_ = {};
};

fs::path folder() { return scratch() / "work"; }

void make_files(FuzzedDataProvider *input) {
  empty_scratch();
  fs::create_directory(folder());
  fs::create_directory(folder() / "folder");
  write_file(folder() / "folder/inner", "inner\n");
  write_file(folder() / "text", input->ConsumeRandomLengthString(300));
  write_file(folder() / "wide", std::string("\xFF\xFEw\0i\0\n\0", 8));
  fs::create_symlink("text", folder() / "link");
  write_file(Redirected::name(0), input->ConsumeRandomLengthString(300));
  require(chdir(folder().c_str()) == 0, "a folder to work in");
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
  make_files(input);
  const auto before = look(folder());
  const int code = run_command(words);
  const std::string messages = read_file(Redirected::name(2));
  const std::string line = joined(words);
  require(code >= 0 && code <= 2, "exit code of " + line);
  require((code == 0) == messages.empty() || words[1] == "exists",
          "messages of " + line + messages);
  require(code == 0 || messages.empty() || messages.starts_with("jxfile"), "message: " + messages);
  // One line for each thing that went wrong, and hints.
  require(messages.empty() || messages.ends_with('\n'), "a message without its end");

  const auto after = look(folder());
  for (const auto &[name, content] : after) {
    require(name.find(".jxfile-") == std::string::npos, "left by " + line + ": " + name);
  }
  if (code == 2 || !kChanging.contains(words[1])) require(after == before, "changed by " + line);
  if (code == 1 && words[1] == "convert") require(after == before, "changed by failing " + line);
}

}  // namespace
}  // namespace jx::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool is_set_up = [] {
    clearenv();
    setenv("HOME", jx::fuzz::folder().c_str(), 1);
    setenv("JXWEM_MODULE", JXWEM_PATH, 1);
    return true;
  }();
  (void)is_set_up;
  FuzzedDataProvider input(data, size);
  jx::fuzz::run(&input);
  return 0;
}
