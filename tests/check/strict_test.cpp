// The module on a kernel that is wrong in ways that it sees: it refuses instead of crashing.
#include "check/broken_kernel.hpp"
#include "support/files.hpp"
#include "support/open.hpp"
#include "support/text.hpp"

namespace jx::test {
namespace {

bool claims;  // whether transcoders say that they produced more than their room

// The reference host with replaced slots, which are its own again at the end.
class WrongKernel {
 public:
  WrongKernel() {
    JXHostConfig config = JXHOST_CONFIG_INIT;
    config.journal_context = &text;
    config.journal_sink = [](void *context, uint32_t, JXStatus, const char *text8) {
      *static_cast<std::string *>(context) += text8;
    };
    host = jxhost_create(&config);
    kept_ = *host;
    kept_nls_ = *host->nls;
    break_kernel(host);
    jxextent(host);
  }
  WrongKernel(const WrongKernel &) = delete;
  WrongKernel &operator=(const WrongKernel &) = delete;
  ~WrongKernel() {
    *host = kept_;
    *host->nls = kept_nls_;
    EXPECT_EQ(jxhost_destroy(host), 0u);
  }

  JXHost *host;
  std::string text;  // of the journal

 private:
  JXHost kept_;
  JXNls kept_nls_;
};

TEST(StrictEdge, SlotsThatTheEntryCalls) {
  constexpr void (*kMissing[])() = {[] { replace<&JXHost::create_pool>(nullptr); },
                                    [] { replace<&JXHost::load_extension>(nullptr); },
                                    [] { replace<&JXNls::create_decoder>(nullptr); },
                                    [] { replace<&JXNls::create_encoder>(nullptr); },
                                    [] { replace<&JXNls::destroy_transcoder>(nullptr); }};
  for (const auto missing : kMissing) {
    start_kernel();
    missing();
    const WrongKernel kernel;
    EXPECT_EQ(jxwem(kernel.host, nullptr), nullptr);
  }
}

TEST(StrictEdge, SlotsThatOperationsCall) {
  start_kernel();
  const TempDir dir;
  const WrongKernel kernel;
  JXInstance *instance = jxwem(kernel.host, nullptr);
  ASSERT_NE(instance, nullptr);
  const JXString name = jx(dir.path());
  kernel.host->create_lock = nullptr;
  kernel.host->create_table = nullptr;
  kernel.host->get_option = nullptr;
  const File file(instance, dir.file("file"), open_options(JX_ACCESS_OUTPUT));
  EXPECT_EQ(file.status, JXWEM_E_FAILED);
  JXStatus status = JX_OK;
  EXPECT_EQ(instance->file_system_info(instance, name.data(), chars(name), &status), nullptr);
  EXPECT_EQ(status, JXWEM_E_NOHANDLE);
  const JXCreateName request = {nullptr, 0, nullptr, 0, JX_NAME_PREFIX};
  JXChar *path = nullptr;
  uint32_t path_chars = 0;
  EXPECT_EQ(instance->create_name(instance, nullptr, 0, &request, &path, &path_chars),
            JXWEM_E_NOHANDLE);
  EXPECT_EQ(instance->destroy(instance), JX_OK);
}

TEST(StrictEdge, TranscodersThatClaimMoreThanTheirRoom) {
  start_kernel();
  replace<&JXTranscoder::transcode>(
      transcode_then<[](JXStatus status, char *, uint32_t capacity, uint32_t &count) {
        if (claims) count = capacity + 1;
        return status;
      }>);
  const TempDir dir;
  WrongKernel kernel;
  JXInstance *instance = jxwem(kernel.host, nullptr);
  ASSERT_NE(instance, nullptr);
  write_file(dir.file("in"), "one\ntwo\n");
  const std::string claim = "a transcoder claims more bytes than it had room for";
  for (const uint32_t access : {JX_ACCESS_INPUT, JX_ACCESS_OUTPUT}) {
    JXOpenOptions options = open_options(access);
    options.file_encoding = JX_ENCODING_UTF8;
    options.record_encoding = JX_ENCODING_UTF32LE;
    options.journal = jxhost_journal(kernel.host);
    File file(instance, dir.file(access == JX_ACCESS_INPUT ? "in" : "out"), options);
    ASSERT_EQ(file.status, JX_OK);
    claims = true;
    kernel.text.clear();
    if (access == JX_ACCESS_INPUT) {
      void *data = nullptr;
      uint32_t bytes = 0;
      EXPECT_EQ(file->read(file, &data, &bytes, 0, nullptr), JXWEM_E_FAILED);
    } else {
      EXPECT_EQ(file->write(file, U"x", 4, 0, nullptr), JXWEM_E_FAILED);
    }
    EXPECT_EQ(kernel.text, claim);
    const File refused(instance, dir.file("in"), options);
    EXPECT_NE(refused.status, JX_OK);
    claims = false;
    EXPECT_EQ(file.close(), JX_OK);
  }
  EXPECT_EQ(instance->destroy(instance), JX_OK);
}

}  // namespace
}  // namespace jx::test
