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
                                    [] { replace<&JXNls::create_encoder>(nullptr); }};
  for (const auto missing : kMissing) {
    start_kernel();
    missing();
    const WrongKernel kernel;
    EXPECT_EQ(jxwem(kernel.host, nullptr), nullptr);
  }
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
