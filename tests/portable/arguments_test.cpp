// Every export of the layers with its instance, its handle or its result missing.
#include <fstream>
#include <sstream>

#include "support/directory_fixture.hpp"
#include "support/open.hpp"

namespace jx::test {
namespace {

struct Refusal {
  JXStatus expected, found;
  const char *call;
};
// A row of the table: what a call answers, under its own text.
#define ROW(expected, call) \
  Refusal { expected, call, #call }

constexpr JXStatus kHandle = JXWEM_E_NOHANDLE, kFailed = JXWEM_E_FAILED, kName = JXWEM_E_BADNAME;

// The status of a call that makes an object, which it must not here; no_status where it leaves
// none.
constexpr JXStatus kNoStatus = 0x12345678;
template <typename Object>
JXStatus refused(Object *made, JXStatus &status) {
  EXPECT_EQ(made, nullptr);
  return std::exchange(status, kNoStatus);
}

class Arguments : public DirectoryTest {
 protected:
  void SetUp() override {
    DirectoryTest::SetUp();
    make_file("file");
  }

  // Tells of rows that answer otherwise; adds the names of their routines.
  void check(const std::vector<Refusal> &rows) {
    for (const Refusal &row : rows) {
      EXPECT_EQ(row.found, row.expected) << row.call;
      calls_ += row.call;
    }
  }
  // The exports of the layers that no row calls.
  std::string not_called() const {
    std::ifstream file(JX_SOURCE_DIR "/cmake/jxwem.map");
    std::string missing;
    for (std::string line; std::getline(file, line);) {
      const size_t start = line.find_first_not_of(' ');
      const std::string routine = line.substr(std::min(start, line.size()), line.find(';') - start);
      const bool is_layer = routine.starts_with("bkwem") || routine.starts_with("jxwem") ||
                            routine.starts_with("skwem") || routine.starts_with("sk_buf") ||
                            routine.starts_with("setup");
      if (is_layer && calls_.find(routine + "(") == calls_.npos) missing += routine + " ";
    }
    return missing;
  }

  JXInstance *none = nullptr;
  const JXString given = at("file");
  const JXChar *name = given.data();
  const uint32_t length = chars(given);
  JXStatus status = kNoStatus;
  uint64_t many = 7;
  uint32_t count = 7;
  int32_t part_chars = 7;
  int64_t offset = 7;
  JXChar *text = nullptr;
  void *data = nullptr;
  JXInfoItem **items = nullptr;
  JXMember *member = nullptr;
  JXDirectoryEntry *entry = nullptr;
  const JXOpenOptions options = open_options();
  const JXCreateName request = {nullptr, 0, nullptr, 0, JX_NAME_PREFIX};

  std::vector<Refusal> instance_rows() {
    return {
        ROW(kHandle, bkwem(none)),
        ROW(kHandle, bkwemdestroy(none)),
        ROW(kHandle, jxwemdestroy(none)),
        ROW(JX_OK, jxwemgetreqversion(none, &count, &count, &count)),
        ROW(JX_OK, jxwemgetversion(none, &count, &count, &count)),
        ROW(kNoStatus, refused(jxwem(nullptr, nullptr), status = kNoStatus)),
        ROW(JX_OK, bkwemerror(none, ENOENT, journal.journal())),
        ROW(JX_OK, bkwemerror(instance, ENOENT, nullptr)),
    };
  }
  std::vector<Refusal> path_rows() {
    return {
        ROW(kHandle, bkwemexist(none, name, length)),
        ROW(kName, bkwemexist(instance, nullptr, 1)),
        ROW(kHandle, bkwemisdir(none, name, length)),
        ROW(kName, bkwemisdir(instance, nullptr, 1)),
        ROW(kHandle, bkwemmakedirectory(none, name, length)),
        ROW(kName, bkwemmakedirectory(instance, nullptr, 1)),
        ROW(kHandle, bkwemremove(none, name, length, 0)),
        ROW(kName, bkwemremove(instance, nullptr, 1, 0)),
        ROW(kHandle, bkwemrename(none, name, length, name, length)),
        ROW(kName, bkwemrename(instance, nullptr, 1, name, length)),
        ROW(kName, bkwemrename(instance, name, length, nullptr, 1)),
        ROW(kName, bkwemrename(instance, name, length, name, 0)),
        ROW(kHandle, bkwemcopy(none, name, length, name, length)),
        ROW(kName, bkwemcopy(instance, nullptr, 1, name, length)),
        ROW(kName, bkwemcopy(instance, name, 0, name, length)),
        ROW(kName, bkwemcopy(instance, name, length, nullptr, 1)),
        ROW(kName, bkwemcopy(instance, name, length, name, 0)),
        ROW(kHandle, bkwemexpand_path(none, name, length, &text, &count)),
        ROW(kFailed, bkwemexpand_path(instance, nullptr, 1, &text, &count)),
        ROW(JX_OK, bkwemexpand_path_free(pool, nullptr)),
        ROW(kHandle, bkwemsplitpath(none, name, length, &text, &part_chars, &text, &part_chars,
                                    &text, &part_chars, &text, &part_chars)),
        ROW(kHandle,
            bkwemsplitpathdestroy(none, const_cast<JXChar *>(name), nullptr, nullptr, nullptr)),
        ROW(kHandle, bkwembuildpath(none, name, length, name, 1, name, 1, &text, &count)),
        ROW(kFailed, bkwembuildpath(instance, name, length, name, 1, name, 1, nullptr, &count)),
        ROW(kFailed, bkwembuildpath(instance, name, length, name, 1, name, 1, &text, nullptr)),
        ROW(kHandle, bkwembuildpathdestroy(none, const_cast<JXChar *>(name))),
        ROW(JX_OK, bkwembuildpathdestroy(none, nullptr)),
        ROW(kHandle, jxwemcreatename(none, name, length, &request, &text, &count)),
        ROW(kFailed, jxwemcreatename(instance, name, length, nullptr, &text, &count)),
        ROW(kFailed, jxwemcreatename(instance, name, length, &request, nullptr, &count)),
        ROW(kFailed, jxwemcreatename(instance, name, length, &request, &text, nullptr)),
    };
  }
  std::vector<Refusal> information_rows() {
    JXTableEntry empty_entry = {};
    return {
        ROW(kHandle, bkweminfo(none, pool, name, length, &items, &count)),
        ROW(kFailed, bkweminfo(instance, nullptr, name, length, &items, &count)),
        ROW(kFailed, bkweminfo(instance, pool, nullptr, 1, &items, &count)),
        ROW(kFailed, bkweminfo(instance, pool, name, length, nullptr, &count)),
        ROW(kFailed, bkweminfo(instance, pool, name, length, &items, nullptr)),
        ROW(kHandle, refused(jxweminfo(none, pool, name, length, &status), status)),
        ROW(kNoStatus, refused(jxweminfo(none, pool, name, length, nullptr), status)),
        ROW(kHandle, bkwemfsinfo(none, name, length, &items, &count)),
        ROW(kFailed, bkwemfsinfo(instance, nullptr, 1, &items, &count)),
        ROW(kFailed, bkwemfsinfo(instance, name, length, nullptr, &count)),
        ROW(kFailed, bkwemfsinfo(instance, name, length, &items, nullptr)),
        ROW(kHandle, refused(jxwemfsinfo(none, name, length, &status), status)),
        ROW(kHandle, bkwemdirectorylist(none, name, length, 0, 0, &entry, &many)),
        ROW(kFailed, bkwemdirectorylist(instance, name, length, 0, 0, nullptr, &many)),
        ROW(kFailed, bkwemdirectorylist(instance, name, length, 0, 0, &entry, nullptr)),
        ROW(kHandle, refused(jxwemdirectorylist(none, name, length, 0, 0, &many, &status), status)),
        ROW(kNoStatus,
            refused(jxwemdirectorylist(none, name, length, 0, 0, nullptr, nullptr), status)),
        ROW(kNoStatus, refused(jxwemfsinfo(none, name, length, nullptr), status)),
        ROW(JX_OK, jxwemInfoDestroy(&empty_entry)),
        ROW(JX_OK, jxwemDirectoryListDestroy(&empty_entry)),
        ROW(JX_OK, jxwemDirectoryMemberListDestroy(&empty_entry)),
        ROW(JX_OK, jxwemInfoDestroy(nullptr)),
        ROW(JX_OK, jxwemFSInfoDestroy(nullptr)),
        ROW(JX_OK, jxwemDirectoryListDestroy(nullptr)),
        ROW(JX_OK, jxwemDirectoryMemberListDestroy(nullptr)),
    };
  }
  std::vector<Refusal> directory_rows() {
    const auto opened = open(at(""), JX_DIRECTORY_ALL, &status);
    JXDirectory *directory = opened.get();
    JXDirectory without_instance = {};
    return {
        ROW(kHandle,
            refused(jxwemdirectoryopen(none, name, 1, 0, 0, nullptr, "", &status), status)),
        ROW(kName,
            refused(jxwemdirectoryopen(instance, nullptr, 1, 0, 0, nullptr, "", &status), status)),
        ROW(kNoStatus,
            refused(jxwemdirectoryopen(instance, name, 1, 0, 0, nullptr, "", nullptr), status)),
        ROW(kHandle, jxwemdirectoryclose(nullptr)),
        ROW(kHandle, bkwemopendir(nullptr)),
        ROW(kHandle, bkwemopendir(&without_instance)),
        ROW(kHandle, bkwemclosedir(nullptr)),
        ROW(JX_OK, bkwemclosedir(&without_instance)),
        ROW(kHandle, bkwemreaddir(nullptr, text, &count)),
        ROW(kHandle, bkwemreaddir(&without_instance, text, &count)),
        ROW(kFailed, bkwemreaddir(directory, nullptr, &count)),
        ROW(kFailed, bkwemreaddir(directory, const_cast<JXChar *>(name), nullptr)),
        ROW(kHandle, jxwemdirectorymemberexist(nullptr, name, 1)),
        ROW(kHandle, jxwemdirectorymemberexist(&without_instance, name, 1)),
        ROW(kHandle, bkwemdirectorymemberlist(none, directory, pool, 0, &member, &many)),
        ROW(kHandle, bkwemdirectorymemberlist(instance, nullptr, pool, 0, &member, &many)),
        ROW(kFailed, bkwemdirectorymemberlist(instance, directory, nullptr, 0, &member, &many)),
        ROW(kFailed, bkwemdirectorymemberlist(instance, directory, pool, 0, nullptr, &many)),
        ROW(kFailed, bkwemdirectorymemberlist(instance, directory, pool, 0, &member, nullptr)),
        ROW(kFailed, refused(jxwemdirectorymemberlist(nullptr, pool, 0, &many, &status), status)),
        ROW(kFailed,
            refused(jxwemdirectorymemberlist(directory, nullptr, 0, &many, &status), status)),
        ROW(kNoStatus,
            refused(jxwemdirectorymemberlist(directory, nullptr, 0, nullptr, nullptr), status)),
    };
  }
  std::vector<Refusal> file_rows() {
    return {
        ROW(kHandle, refused(jxwemopen(none, name, 1, &options, 0, nullptr, "", &status), status)),
        ROW(JX_OK,
            refused(jxwemopen(instance, nullptr, 1, &options, 0, nullptr, "", &status), status)),
        ROW(JX_OK, refused(jxwemopen(instance, name, 1, nullptr, 0, nullptr, "", &status), status)),
        ROW(kNoStatus,
            refused(jxwemopen(instance, name, 1, &options, 0, nullptr, "", nullptr), status)),
        ROW(kHandle, jxwemclose(nullptr)),
        ROW(kHandle, jxwemattachjnl(nullptr, journal.journal())),
        ROW(JXWEM_E_NOTSUPPORTED, jxwemposition2record(nullptr)),
        ROW(JXWEM_E_NOTSUPPORTED, jxwemrecord2position(nullptr)),
        ROW(JX_OK, bkwemposition2byte(nullptr, &offset, &offset)),
        ROW(JX_OK, bkwembyte2position(nullptr, &offset, &offset)),
        ROW(kHandle, bkwemvec(nullptr)),
        ROW(kHandle, bkwem_open(nullptr)),
        ROW(kHandle, bkwem_close(nullptr)),
        ROW(kHandle, bkwem_read(nullptr, &count, 4, &count, nullptr)),
        ROW(kHandle, bkwem_write(nullptr, &count, 4, &count, nullptr)),
        ROW(kHandle, bkwem_flush(nullptr)),
        ROW(kHandle, bkwem_note(nullptr, &offset)),
        ROW(kHandle, bkwem_point(nullptr, &offset, 0)),
        ROW(kHandle, bkwemtruncate(nullptr, &offset)),
        ROW(kHandle, setupCCTable(nullptr, 0, 1)),
        ROW(kHandle, sk_buf_write(nullptr, "x", 1)),
        ROW(kHandle, skwem_open(nullptr)),
        ROW(kHandle, skwem_close(nullptr)),
        ROW(kHandle, skwem_flush(nullptr)),
        ROW(kHandle, skwem_read_bin(nullptr, &data, &count, 0, &offset)),
        ROW(kHandle, skwem_read_rbin(nullptr, &data, &count, 0, &offset)),
        ROW(kHandle, skwem_read_stream(nullptr, &data, &count, 0, &offset)),
        ROW(kHandle, skwem_read_rstream(nullptr, &data, &count, 0, &offset)),
        ROW(kHandle, skwem_read_var(nullptr, &data, &count, 0, &offset)),
        ROW(kHandle, skwem_read_rvar(nullptr, &data, &count, 0, &offset)),
        ROW(kHandle, skwem_write_bin(nullptr, "x", 1, 0, &offset)),
        ROW(kHandle, skwem_write_rbin(nullptr, "x", 1, 0, &offset)),
        ROW(kHandle, skwem_write_stream(nullptr, "x", 1, 0, &offset)),
        ROW(kHandle, skwem_write_rstream(nullptr, "x", 1, 0, &offset)),
        ROW(kHandle, skwem_write_var(nullptr, "x", 1, 0, &offset)),
        ROW(kHandle, skwem_write_rvar(nullptr, "x", 1, 0, &offset)),
    };
  }

 private:
  std::string calls_;
};

TEST_F(Arguments, Missing) {
  check(instance_rows());
  check(path_rows());
  check(information_rows());
  check(directory_rows());
  check(file_rows());
  EXPECT_EQ(not_called(), "");
  host.arm(calls(Call::transcode), 0);
  EXPECT_EQ(bkwemerror(instance, ENOENT, journal.journal()), JX_OK) << "and no line";
  EXPECT_TRUE(!text && !data && !items && !member && !entry && offset == 7);
}

}  // namespace
}  // namespace jx::test
