// What a command works with: the loaded module, standard output, names and text.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "cli/names.hpp"
#include "cli/output.hpp"
#include "jx/wem.hpp"

namespace cli {

// Names travel as bytes: byte n of a name is the character n, which the module's native encoding
// turns back into the byte n.
std::u32string widen(std::string_view bytes);
std::string narrow(std::u32string_view name);

inline constexpr size_t kLongestUtf8 = 4;  // character of UTF-8, in bytes

// A transcoder of the host's character-set service. Holds the start of a character that a call cut
// off and completes it in the next.
class Transcoder {
 public:
  static constexpr size_t kBytesPerByte = 12;  // the most that a conversion makes of one byte

  // A Failure when the service does not know one of the encodings.
  Transcoder(JXNls *nls, uint32_t from, uint32_t to);
  // Converts bytes into room and stores how many bytes were produced. A status of the host.
  wem::Status operator()(std::string_view bytes, std::span<char> room, size_t *produced_bytes);

 private:
  struct End {
    JXNls *nls;
    void operator()(JXTranscoder *transcoder) const { nls->destroy_transcoder(nls, transcoder); }
  };
  std::unique_ptr<JXTranscoder, End> transcoder_;
};

// While it lives the environment is empty: see cli/names.hpp. For one thread.
class Session {
 public:
  // module_option is the value of --module, or empty.
  Session(std::string module_option, std::string command);
  // For another thread: works with the same module, which must be loaded, while the other lives.
  explicit Session(const Session &other);
  Session &operator=(const Session &) = delete;

  Output &output() { return output_; }
  // The module; loaded at the first use, from --module, JXWEM_MODULE, beside the program or the
  // install folder, never by a name that the system's loader or the current directory gives a
  // meaning. A Failure when there is none.
  const wem::Module &module();
  const wem::Instance &instance() { return module().instance(); }
  // Where the module was loaded from.
  const std::string &module_path() const { return module_path_; }
  JXNls *nls() { return module().host()->nls; }

  // The name under which the module reaches what the user named, byte for byte. A Failure when
  // there is none.
  static std::u32string name(const std::string &path) { return widen(literal_path(path)); }
  // The same for a directory that is a part of a path to build, where blanks at the end are
  // dropped.
  static std::u32string folder_name(const std::string &path);
  // A name as it is printed: its bytes, or what is safe to see when a terminal shows them.
  std::string shown(const std::string &name) const;
  // Opens a file that the user named. A Failure when that fails.
  wem::File open(const std::string &name, const wem::OpenOptions &options);
  // Opens the file of a descriptor of this program, which keeps its content and its offset:
  // no name is looked up. A Failure under shown's name when that fails.
  wem::File open_descriptor(int fd, const wem::OpenOptions &options, const std::string &shown);
  // A name expanded by the module, in bytes, with the user's variables.
  std::string expand(const std::string &name);

  // The text of bytes; none when they are malformed. A character may be cut off at the end. A
  // Failure for an encoding that is not known.
  std::optional<std::u32string> decode(uint32_t encoding, std::string_view bytes);
  // Text in UTF-8; and the way back, empty when the bytes are not UTF-8.
  std::string to_utf8(std::u32string_view text);
  std::optional<std::u32string> from_utf8(std::string_view bytes);
  // Text in any encoding, such as a line end.
  std::string encode(std::u32string_view text, uint32_t encoding);
  // Prints text in UTF-8.
  void print(std::u32string_view text);

  // A failure on this thread with what the journal knows about it.
  static Failure explained(Failure failure);
  // Prints it so. The command goes on.
  void report(Failure failure) const;
  // Prints a message that is no failure of its own.
  void note(const std::string &text) const { print_note(command_, text); }

 private:
  std::string find_module() const;

  std::optional<WithoutVariables> no_variables_;  // none for another thread
  std::string module_option_;
  std::string command_;
  std::string module_path_;
  std::string offered_;  // the path under which a descriptor is handed to the module
  Output output_;
  wem::Module module_;
  std::optional<Transcoder> encoder_;
  std::map<uint32_t, Transcoder> decoders_;  // kept: the C library loads a file for each
};

}  // namespace cli
