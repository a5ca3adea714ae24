// Finding and loading the module, names and text.
#include "cli/session.hpp"

#include <fcntl.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "cli/descriptor.hpp"
#include "cli/printable.hpp"

namespace cli {
namespace {

constexpr size_t kMaxBytesPerChar = 8;  // of any encoding the host knows
constexpr size_t kMaxUtf8BytesPerChar = 4;
constexpr size_t kPrintChars = 16384;  // encoded at a time

// The system's text of the thread's last error, from the journal.
thread_local std::string journal_text;

// A path that no other session offers.
std::string unique_path() {
  static std::atomic<unsigned> count = 0;
  return "/descriptor of jxfile " + std::to_string(count++);
}

// The folder of the running program, with a slash at its end; empty when the system does not tell.
std::string program_folder() {
  std::array<char, PATH_MAX> path;
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  const std::string program(path.data(), length > 0 ? static_cast<size_t>(length) : 0);
  return program.substr(0, program.rfind('/') + 1);
}

std::string_view as_bytes(std::u32string_view text) {
  return {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char32_t)};
}

}  // namespace

std::u32string widen(std::string_view bytes) {
  std::u32string name(bytes.size(), U'\0');
  std::transform(bytes.begin(), bytes.end(), name.begin(),
                 [](char byte) { return static_cast<char32_t>(static_cast<unsigned char>(byte)); });
  return name;
}

std::string narrow(std::u32string_view name) {
  std::string bytes(name.size(), '\0');
  std::transform(name.begin(), name.end(), bytes.begin(),
                 [](char32_t character) { return static_cast<char>(character); });
  return bytes;
}

Transcoder::Transcoder(JXNls *nls, uint32_t from, uint32_t to)
    : transcoder_(nls->create_transcoder(nls, from, to, 0, nullptr), End{nls}) {
  if (!transcoder_) throw Failure("", JXHOST_E_BADENCODING);
}

wem::Status Transcoder::operator()(std::string_view bytes, std::span<char> room,
                                   size_t *produced_bytes) {
  uint32_t produced = 0;
  const wem::Status status(
      transcoder_->transcode(transcoder_.get(), bytes.data(), static_cast<uint32_t>(bytes.size()),
                             room.data(), static_cast<uint32_t>(room.size()), &produced, 0));
  *produced_bytes = produced;
  return status;
}

Session::Session(std::string module_option, std::string command)
    : module_option_(std::move(module_option)),
      command_(std::move(command)),
      offered_(unique_path()) {
  no_variables_.emplace();
}

Session::Session(const Session &other)
    : command_(other.command_),
      module_path_(other.module_path_),
      offered_(unique_path()),
      module_(other.module_) {}

std::string Session::find_module() const {
  if (!module_option_.empty()) {
    // With rights that the user does not have, code of the user's choice is not run.
    if (::getauxval(AT_SECURE) != 0) throw Failure(module_option_, JXWEM_E_ACCESS);
    if (module_option_.find('/') != module_option_.npos) return literal_path(module_option_);
    throw Failure(module_option_, JXWEM_E_BADNAME)
        .saying("--module takes a path",
                "a file of that name in the current directory is ./" + module_option_);
  }
  const char *variable = ::secure_getenv("JXWEM_MODULE");
  if (variable && *variable == '/') return variable;
  if (variable && *variable) {
    throw Failure(variable, JXWEM_E_BADNAME).saying("JXWEM_MODULE is not an absolute path");
  }
  const std::string folder = program_folder();
  if (folder.empty()) {
    throw Failure("jxwem.so", JXWEM_E_NOTFOUND)
        .saying("the program's own folder is not known", "name the module with --module");
  }
  for (const char *place : {"jxwem.so", "../lib/" JX_TRIPLET "/jxwem/jxwem.so",
                            "../lib/jxwem/jxwem.so", "../lib/jxwem.so"}) {
    if (::access((folder + place).c_str(), R_OK) == 0) return folder + place;
  }
  throw Failure("jxwem.so", JXWEM_E_NOTFOUND)
      .saying("the module is neither beside jxfile nor installed",
              "name it with --module or in JXWEM_MODULE");
}

const wem::Module &Session::module() {
  if (module_) return module_;
  const WithVariables variables;
  module_path_ = find_module();
  if (Descriptor(::open(module_path_.c_str(), O_RDONLY | O_CLOEXEC)).get() < 0) {
    throw system_failure(module_path_, errno);
  }
  JXHostConfig config = JXHOST_CONFIG_INIT;
  config.journal_sink = [](void *, uint32_t, JXStatus, const char *text8) {
    // What goes wrong while a failure closes files is not the failure's cause.
    if (std::uncaught_exceptions() == 0) journal_text = text8;
  };
  std::string error;
  module_ = wem::Module::load(module_path_.c_str(), &config, &error);
  if (!module_) {
    const bool is_named = error.find(module_path_) != error.npos;
    if (error == "out of memory") throw Failure("", JX_E_NOMEM);
    throw Failure(is_named ? "" : module_path_, JXWEM_E_FAILED).saying(error);
  }
  return module_;
}

wem::File Session::open(const std::string &name, const wem::OpenOptions &options) {
  JXJournal *journal = instance().raw()->journal;
  return require(instance().open(this->name(name), options.journal(journal), "jxfile"), name);
}

std::u32string Session::folder_name(const std::string &path) {
  const std::string literal = literal_path(path);
  return widen(literal.ends_with(' ') ? literal + "/." : literal);
}

std::string Session::shown(const std::string &name) const {
  return ::isatty(STDOUT_FILENO) == 1 ? to_printable(name) : name;
}

wem::File Session::open_descriptor(int fd, const wem::OpenOptions &options,
                                   const std::string &shown) {
  JXHost *host = module().host();
  require(wem::Status(jxhost_offer_descriptor(host, offered_.c_str(), fd)), shown);
  JXJournal *journal = instance().raw()->journal;
  auto file = instance().open(widen(offered_), options.journal(journal).literal_name());
  jxhost_withdraw_descriptor(host, offered_.c_str());
  return require(std::move(file), shown);
}

std::string Session::expand(const std::string &name) {
  const WithVariables variables;
  JXInstance *raw = instance().raw();
  const auto expand_path = module_.symbol<decltype(&bkwemexpand_path)>("bkwemexpand_path");
  const auto free_path = module_.symbol<decltype(&bkwemexpand_path_free)>("bkwemexpand_path_free");
  if (!expand_path || !free_path) throw Failure(module_path_, JX_E_UNSUPPORTED);
  const std::u32string wide = widen(name);
  JXChar *path = nullptr;
  uint32_t chars = 0;
  const wem::Status status(
      expand_path(raw, wem::as_chars(wide), wem::char_count(wide), &path, &chars));
  std::string expanded = narrow(wem::as_view(path, chars));
  if (path) free_path(raw->pool, path);
  require(status, name);
  return expanded;
}

std::string Session::encode(std::u32string_view text, uint32_t encoding) {
  Transcoder encoder(nls(), JX_ENCODING_UTF32LE, encoding);
  std::string bytes(text.size() * kMaxBytesPerChar, '\0');
  size_t produced = 0;
  require(encoder(as_bytes(text), bytes, &produced), "");
  bytes.resize(produced);
  return bytes;
}

std::optional<std::u32string> Session::decode(uint32_t encoding, std::string_view bytes) {
  Transcoder &decoder =
      decoders_.try_emplace(encoding, nls(), encoding, JX_ENCODING_UTF32LE).first->second;
  std::u32string text(bytes.size() + 8, U'\0');
  const std::span<char> room(reinterpret_cast<char *>(text.data()), text.size() * sizeof(char32_t));
  size_t produced = 0;
  const bool is_text = decoder(bytes, room, &produced).ok();
  text.resize(produced / sizeof(char32_t));
  // Without room it fails, and forgets a character that was cut off and a shift.
  constexpr char kZeros[4] = {};
  (void)decoder({kZeros, sizeof kZeros}, {}, &produced);
  return is_text ? std::optional(std::move(text)) : std::nullopt;
}

std::string Session::to_utf8(std::u32string_view text) {
  if (!encoder_) encoder_.emplace(nls(), JX_ENCODING_UTF32LE, JX_ENCODING_UTF8);
  std::string bytes(text.size() * kMaxUtf8BytesPerChar, '\0');
  size_t produced = 0;
  require((*encoder_)(as_bytes(text), bytes, &produced), "");
  bytes.resize(produced);
  return bytes;
}

std::optional<std::u32string> Session::from_utf8(std::string_view bytes) {
  Transcoder decoder(nls(), JX_ENCODING_UTF8, JX_ENCODING_UTF32LE);
  std::u32string text(bytes.size(), U'\0');
  const std::span<char> room(reinterpret_cast<char *>(text.data()), text.size() * sizeof(char32_t));
  size_t produced = 0;
  if (!decoder(bytes, room, &produced).ok()) return std::nullopt;
  text.resize(produced / sizeof(char32_t));
  // A character cut off at the end is held back; encoding again tells.
  if (to_utf8(text).size() != bytes.size()) return std::nullopt;
  return text;
}

void Session::print(std::u32string_view text) {
  if (!encoder_) encoder_.emplace(nls(), JX_ENCODING_UTF32LE, JX_ENCODING_UTF8);
  while (!text.empty()) {
    const std::u32string_view part = text.substr(0, kPrintChars);
    size_t produced = 0;
    require(
        (*encoder_)(as_bytes(part), output_.reserve(part.size() * kMaxUtf8BytesPerChar), &produced),
        "");
    output_.commit(produced);
    text.remove_prefix(part.size());
  }
}

Failure Session::explained(Failure failure) {
  const bool is_system = failure.status == JXWEM_E_SYSTEM || failure.status == JXWEM_E_FAILED;
  if (is_system && failure.detail.empty()) {
    failure.detail = journal_text;
    // The module has no status of its own for these.
    for (const int error : {EMFILE, ENFILE, ENOMEM}) {
      if (journal_text != std::strerror(error)) continue;
      failure.status = system_failure({}, error).status;
      failure.detail.clear();
    }
  }
  journal_text.clear();
  return failure;
}

void Session::report(Failure failure) const {
  print_failure(command_, explained(std::move(failure)));
}

}  // namespace cli
