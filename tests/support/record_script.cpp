#include "support/record_script.hpp"

#include <algorithm>
#include <cstdio>
#include <initializer_list>

#include "support/text_model.hpp"

namespace jx::test {

namespace {

constexpr std::initializer_list<uint32_t> kEncodings = {62, 20, 24, 25, 26, 27};
constexpr std::initializer_list<uint32_t> kSmallLengths = {0, 1,  2,  3,  4,  5, 7,
                                                           8, 10, 12, 16, 33, 80};
constexpr std::initializer_list<uint32_t> kLargeLengths = {255,  1000, 8180,   8191,  8192,
                                                           8193, 8200, 16'384, 24'600};

class Maker {
 public:
  explicit Maker(Choices *choices) : choices_(*choices) {}

  Script make() {
    Script script;
    choose_frame();
    if (!one_in(6)) script.content = content();
    for (uint32_t sessions = 1 + below(3); sessions > 0; --sessions) add_session(&script.steps);
    return script;
  }

 private:
  uint32_t below(uint32_t limit) { return static_cast<uint32_t>(choices_.below(limit)); }
  bool one_in(uint32_t count) { return below(count) == 0; }
  uint32_t any_of(std::initializer_list<uint32_t> values) {
    return values.begin()[below(static_cast<uint32_t>(values.size()))];
  }
  // A number close to `value`.
  uint32_t near(uint32_t value, uint32_t spread) {
    return value - std::min(value, spread) + below(2 * spread + 1);
  }

  // Chooses what the sessions of a script share, so that they can read each other's files.
  void choose_frame() {
    format_ = any_of({0, 0, 0, 3, 1, 4, 4});
    length_ = one_in(15) ? any_of(kLargeLengths) : any_of(kSmallLengths);
    file_encoding_ = any_of(kEncodings);
    record_encoding_ = one_in(4) ? file_encoding_ : any_of(kEncodings);
    unit_bytes_ = unit_bytes_of(file_encoding_);
  }

  JXOpenOptions options() {
    JXOpenOptions options{};
    options.access_mode = any_of({0, 0, 1, 1, 1, 1, 2, 2, 3, 3, 3});
    options.buffered = below(2);
    options.record_length = one_in(8) ? any_of(kSmallLengths) : length_;
    options.record_format = one_in(8) ? any_of({0, 1, 3, 4}) : format_;
    options.lock_mode = below(5);
    // 0, the default, is used where it means the same.
    options.file_encoding = file_encoding_ == 62 && one_in(2) ? 0 : file_encoding_;
    const uint32_t default_encoding = options.record_format == JX_FORMAT_STREAM ? 62u : 27u;
    options.record_encoding =
        record_encoding_ == default_encoding && one_in(2) ? 0 : record_encoding_;
    const bool is_text = options.record_format % 3 == 0;
    if (one_in(is_text ? 40 : 3)) options.open_flags |= JX_OPEN_DIRECT_TRANSFER;
    if (one_in(2)) options.open_flags |= JX_OPEN_LITERAL_NAME;
    if (one_in(3)) options.open_flags |= JX_OPEN_NO_BOM;
    return options;
  }

  char32_t character() {
    static constexpr char32_t kRare[] = {U'\n',   U'\r',   U'\f',   0,       0xE9,   0xFF,
                                         0x7FF,   0x800,   0xA0A,   0xD0D,   0x20AC, 0xFEFF,
                                         0x10000, 0x10A0D, 0x1F600, 0x10FFFF};
    return one_in(8) ? kRare[below(std::size(kRare))] : U'a' + below(26);
  }

  // Characters that both encodings usually have; a long text repeats itself, by an odd number, so
  // that its parts are at every place of a block.
  std::u32string characters(uint32_t count, uint32_t encoding) {
    constexpr uint32_t kMostChoices = 301;
    std::u32string text;
    text.reserve(count);
    while (text.size() < std::min(count, kMostChoices)) {
      const char32_t c = character();
      text += c < 0x100 || encoding != JX_ENCODING_NATIVE ? c : U'?';
    }
    if (one_in(2)) {
      for (char32_t &c : text) c = c < 0x80 ? c : U'x';
    }
    while (text.size() < count) text += text[text.size() - kMostChoices];
    return text;
  }

  // Damages text: changes, removes or inserts a byte, or cuts the end off.
  void damage(std::string *bytes) {
    if (bytes->empty()) return;
    const uint32_t place = below(static_cast<uint32_t>(bytes->size()));
    const auto stray =
        static_cast<char>(one_in(2) ? below(256) : any_of({0x80, 0xC3, 0xD8, 0xE2, 0xF0, 0xFF}));
    // Bytes to remove, and their replacement.
    const size_t taken = one_in(4) ? std::string::npos : below(2);
    bytes->replace(place, taken, one_in(2) ? 1 : 0, stray);
  }

  std::string line() {
    const uint32_t limit = length_ / unit_bytes_;
    const uint32_t count = one_in(3) ? below(6) : near(std::min(limit, 9000u), 3);
    std::string line = encode(file_encoding_, characters(count, file_encoding_));
    if (one_in(20)) line.insert(0, bom_of(file_encoding_));
    if (one_in(20)) line.erase(line.size() - std::min<size_t>(line.size(), 1 + below(3)));
    static constexpr const char32_t *kEnds[] = {U"\n", U"\n", U"\r\n", U"\r\n", U"\r", U"\r\r\n"};
    return line + encode(file_encoding_, kEnds[below(std::size(kEnds))]);
  }

  std::string content() {
    std::string content = one_in(3) ? bom_of(file_encoding_) : "";
    // Sometimes the interesting part is close to the end of a block.
    if (one_in(length_ < 16 ? 30 : 4)) fill(&content, 8192 * (1 + below(2)) - below(16));
    // Now and then more lines than a reader notes ahead.
    const uint32_t most_lines = one_in(8) ? 120 : 9;
    for (uint32_t lines = below(most_lines); lines > 0 && content.size() < 40'000; --lines) {
      content += line();
    }
    if (one_in(2) && !content.empty()) {
      content.resize(content.size() - std::min<size_t>(content.size(), unit_bytes_));
    }
    if (one_in(6)) damage(&content);
    return content;
  }

  // Adds lines up to exactly that many bytes.
  void fill(std::string *content, uint32_t bytes) {
    const std::string end = encode(file_encoding_, U"\n");
    const std::string x = encode(file_encoding_, U"x");
    while (content->size() < bytes) {
      const size_t most = std::max<size_t>(length_, 64) / unit_bytes_;
      for (size_t i = 0; i < most && content->size() + end.size() < bytes; ++i) *content += x;
      *content += end;
    }
    content->resize(bytes);
  }

  void add_session(std::vector<Step> *steps) {
    const Step open = {.act = Act::open, .options = options()};
    steps->push_back(open);
    const bool reads = open.options.access_mode % 2 != 0;
    const bool writes = open.options.access_mode != JX_ACCESS_INPUT;
    for (uint32_t count = 1 + below(10); count > 0; --count) {
      const bool does_read = one_in(20) ? writes : reads && (!writes || one_in(2));
      if (one_in(4)) {
        steps->push_back(position());
      } else if (does_read) {
        steps->push_back(read(open.options));
        if (writes && one_in(3)) steps->push_back({.act = Act::write_back});
      } else {
        steps->push_back(write(open.options));
      }
    }
    steps->push_back({.act = Act::close});
  }

  std::optional<int64_t> offset() {
    if (!one_in(3)) return std::nullopt;
    if (one_in(4)) return 0;
    return one_in(12) ? -1 : int64_t{one_in(4) ? near(8192, 20) : below(200)};
  }

  Step position() {
    const auto somewhere = [this] { return int64_t{below(200)} - (one_in(2) ? 100 : 0); };
    const uint32_t choice = below(5);
    if (choice == 0) return {.act = Act::note};
    if (choice == 1) return {.act = Act::flush};
    if (choice == 2) return {.act = Act::truncate, .offset = one_in(8) ? 8192 : somewhere()};
    return {.act = Act::point, .count = below(8), .offset = somewhere()};
  }

  // A count close to an interesting size.
  uint32_t count_for(const JXOpenOptions &options) {
    const uint32_t length = options.record_length;
    const uint32_t choice = below(5);
    if (choice == 0) return below(5);
    if (choice == 1) return length + (one_in(3) ? 1 + below(3) : 0);
    if (choice == 2) return one_in(4) ? near(8192, 3) : below(100);
    return near(length, 3);
  }

  Step read(const JXOpenOptions &options) {
    Step step = {.act = Act::read, .count = count_for(options), .offset = offset()};
    // Blocks are read to the end; records from the descriptor are alike, and cost a call each.
    const bool has_blocks = options.buffered && options.access_mode != JX_ACCESS_UPDATE;
    step.times = any_of({1, 1, 2, 5, has_blocks ? 2000u : 60u});
    // A read at an offset finds no end.
    if (step.count < 4 || (step.offset && !has_blocks)) step.times = std::min(step.times, 5u);
    return step;
  }

  Step write(const JXOpenOptions &options) {
    Step step = {.act = Act::write, .offset = offset()};
    const bool is_binary = options.record_format == JX_FORMAT_BINARY;
    const uint32_t encoding = is_binary ? JX_ENCODING_NATIVE : record_encoding_;
    step.data =
        encode(encoding, characters(count_for(options), file_encoding_ == 62 ? 62 : encoding));
    if (one_in(12)) damage(&step.data);
    if (one_in(6)) step.times = 2 + below(step.data.size() < 300 ? 40 : 4);
    return step;
  }

  Choices &choices_;
  uint32_t format_ = 0, length_ = 0;
  uint32_t file_encoding_ = 0, record_encoding_ = 0, unit_bytes_ = 1;
};

std::string number(int64_t value) { return std::to_string(value); }

std::string describe(const JXOpenOptions &options) {
  static constexpr const char *kAccess[] = {"append", "input", "output", "update"};
  return std::string(kAccess[options.access_mode]) + (options.buffered ? " buffered" : " direct") +
         " format " + number(options.record_format) + " length " + number(options.record_length) +
         " encodings " + number(options.file_encoding) + "/" + number(options.record_encoding) +
         " flags " + number(options.open_flags) + " lock " + number(options.lock_mode);
}

std::string describe(const Step &step) {
  static constexpr const char *kActs[] = {"open", "read",  "write",    "write what was read",
                                          "note", "point", "truncate", "flush",
                                          "close"};
  std::string text = kActs[static_cast<size_t>(step.act)];
  if (step.act == Act::open) text += " " + describe(step.options);
  if (step.act == Act::read || step.act == Act::point) text += " " + number(step.count);
  if (step.act == Act::write) text += " " + hex(step.data);
  if (step.offset) text += " at " + number(*step.offset);
  if (step.times > 1) text += " x" + number(step.times);
  return text;
}

}  // namespace

std::string hex(std::string_view bytes) {
  constexpr size_t kMost = 64;
  std::string text = "(" + std::to_string(bytes.size()) + ")";
  for (const char byte : bytes.substr(0, kMost)) {
    char digits[4];
    std::snprintf(digits, sizeof digits, " %02x", static_cast<uint8_t>(byte));
    text += digits;
  }
  return text + (bytes.size() > kMost ? " .." : "");
}

std::string describe(const Script &script) {
  std::string text = "file " + (script.content ? hex(*script.content) : "missing") + "\n";
  for (size_t i = 0; i < script.steps.size(); ++i) {
    text += number(static_cast<int64_t>(i)) + ": " + describe(script.steps[i]) + "\n";
  }
  return text;
}

Script make_script(Choices *choices) { return Maker(choices).make(); }

}  // namespace jx::test
