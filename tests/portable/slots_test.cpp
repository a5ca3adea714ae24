// The table of the host guide that says which slots of the host each operation calls.
#include <array>
#include <optional>

#include "support/directory_fixture.hpp"
#include "support/open.hpp"
#include "support/path_text.hpp"

namespace jx::test {
namespace {

class Slots : public DirectoryTest {
 protected:
  // Runs an operation and adds its name to the row of the slots it called.
  template <typename Run>
  void row(const std::string &operation, Run run) {
    host.start_trace();
    run();
    std::string slots;
    for (const std::string &line : host.take_trace()) {
      const std::string slot = "`" + line.substr(0, line.find(' ')) + "`";
      if (slots.find(slot) == slots.npos) slots += (slots.empty() ? "" : ", ") + slot;
    }
    if (slots.empty()) slots = "none";
    const auto is_it = [&slots](const auto &each) { return each.first == slots; };
    auto known = std::find_if(rows_.begin(), rows_.end(), is_it);
    if (known == rows_.end()) known = rows_.insert(known, {slots, ""});
    std::string &names = known->second;
    if (names.find(operation) == names.npos) names += (names.empty() ? "" : ", ") + operation;
  }
  void file_rows(const std::string &kind, uint32_t format, uint32_t buffered) {
    JXOpenOptions options = open_options(JX_ACCESS_OUTPUT, buffered, format);
    options.file_encoding = JX_ENCODING_UTF8;
    const std::string name = dir.file("f"), record(8, '\0');
    std::optional<File> file;
    row("`open` of " + kind, [&] { file.emplace(instance, name, options); });
    row("`write` of " + kind, [&] { EXPECT_EQ(write_record(*file, record), JX_OK); });
    row("`flush`", [&] { EXPECT_EQ((*file)->flush(*file), JX_OK); });
    row("`attach_journal`", [&] { (*file)->attach_journal(*file, nullptr); });
    row("`close` of " + kind, [&] { EXPECT_EQ(file->close(), JX_OK); });
    options.access_mode = JX_ACCESS_INPUT;
    row("`open` of " + kind, [&] { file.emplace(instance, name, options); });
    row("`read` of " + kind, [&] { EXPECT_EQ(read_record(*file, 8).status, JX_OK); });
  }
  std::string table() const {
    std::string lines = "| Operation | Slots that it calls, by their first call |\n|---|---|\n";
    for (const auto &[slots, names] : rows_) lines += "| " + names + " | " + slots + " |\n";
    return lines;
  }

 private:
  std::vector<std::pair<std::string, std::string>> rows_;  // slots and operations
};

TEST_F(Slots, AreThoseOfTheGuide) {
  const JXString file = jx(dir.file("f")), folder = jx(dir.file("d")), inner = folder + jx("/f");
  std::optional<Instance> other;
  row("`jxwem`", [&] { other.emplace(host); });
  row("instance `destroy`", [&] { other.reset(); });
  for (const uint32_t buffered : {1u, 0u}) {
    file_rows("lines", JX_FORMAT_VARIABLE, buffered);
    file_rows("stream text", JX_FORMAT_STREAM, buffered);
    file_rows("bytes", JX_FORMAT_BINARY, buffered);
  }
  std::array<std::string, 4> parts;
  std::string name;
  JXStatus status = 0;
  uint64_t count = 0;
  row("`make_directory`", [&] { make(folder); });
  row("`rename`", [&] { rename(file, inner); });
  row("`copy` of a file", [&] { copy(inner, file); });
  row("`copy` of a directory", [&] { copy(folder, folder + jx("2")); });
  row("`exist`", [&] { exist(file); });
  row("`build_path`", [&] { build(instance, folder, jx("f"), {}, &status); });
  row("`split_path`", [&] { split(instance, file, &parts); });
  row("`create_name`", [&] { create_name(instance, folder, {}, {}, JX_NAME_HOST, &name); });
  Owned<JXDirectory> directory, whole = open(folder, 0, &status);
  row("`directory_open`", [&] { directory = open(folder, 0, &status); });
  JXChar letter = 'f', text[9];
  uint32_t chars = std::size(text);
  row("`member_exist`", [&] { directory->member_exist(directory.get(), &letter, 1); });
  row("`read` of a directory", [&] { directory->read(directory.get(), text, &chars); });
  Owned<JXTable> first, second, third, fourth;
  row("`info`", [&] { first = info(file, &status); });
  row("`file_system_info`", [&] { second.reset(call(instance->file_system_info, file, &status)); });
  row("`directory_list`", [&] { third = list(folder, JX_DIRECTORY_NAMED, 2, &count, &status); });
  row("`member_list`",
      [&] { fourth.reset(whole->member_list(whole.get(), pool, 2, &count, &status)); });
  row("directory `close`", [&] { directory.reset(); });
  row("the caller's `destroy_table`", [&] { first.reset(); });
  row("`remove` of a file", [&] { remove(file); });
  row("`remove` of a directory", [&] { remove(folder, JX_REMOVE_CONTENTS); });
  const std::string guide = read_file(JX_SOURCE_DIR "/docs/host-guide.md");
  EXPECT_NE(guide.find(table()), guide.npos) << "the table should be\n" << table();
}

}  // namespace
}  // namespace jx::test
