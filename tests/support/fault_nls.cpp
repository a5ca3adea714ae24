// The operations of the test host's character-set service and its transcoders.
#include "support/fault_shells.hpp"

namespace jx::test {

struct NlsCalls {
  static FaultHost &self_of(JXNls *nls) { return *shell_of(nls)->owner; }

  static JXStatus measure_conversion(JXNls *nls, uint32_t from, const void *text, uint32_t bytes,
                                     uint32_t to, uint32_t *bytes_out) {
    FaultHost &self = self_of(nls);
    if (self.fails(Call::measure_conversion)) return self.fault_status();
    return self.nls_.inner->measure_conversion(self.nls_.inner, from, text, bytes, to, bytes_out);
  }

  static int32_t needs_conversion(JXNls *nls, uint32_t a, uint32_t b) {
    FaultHost &self = self_of(nls);
    self.fails(Call::needs_conversion, number(a) + " " + number(b));
    return self.nls_.inner->needs_conversion(self.nls_.inner, a, b);
  }

  static JXStatus encoding_info(JXNls *nls, uint32_t encoding, JXEncodingInfo *info_out) {
    FaultHost &self = self_of(nls);
    if (self.fails(Call::encoding_info, number(encoding))) return self.fault_status();
    return self.nls_.inner->encoding_info(self.nls_.inner, encoding, info_out);
  }

  static JXTranscoder *adopt(FaultHost &self, JXTranscoder *inner, std::string label) {
    if (!inner) return nullptr;
    return self.adopt<JXTranscoder>(ObjectKind::transcoder, {.transcode = transcode}, inner,
                                    std::move(label));
  }

  static JXTranscoder *create_transcoder(JXNls *nls, uint32_t from, uint32_t to, uint32_t zero,
                                         JXOwner owner) {
    FaultHost &self = self_of(nls);
    const std::string label = number(from) + " " + number(to);
    if (self.fails(Call::create_transcoder, label)) return nullptr;
    JXNls *inner = self.nls_.inner;
    return adopt(self, inner->create_transcoder(inner, from, to, zero, owner), label);
  }

  static JXTranscoder *create_decoder(JXNls *nls, uint32_t encoding, uint32_t zero1,
                                      uint32_t zero2) {
    FaultHost &self = self_of(nls);
    if (self.fails(Call::create_decoder, number(encoding))) return nullptr;
    JXNls *inner = self.nls_.inner;
    return adopt(self, inner->create_decoder(inner, encoding, zero1, zero2),
                 "decoder " + number(encoding));
  }

  static JXTranscoder *create_encoder(JXNls *nls, uint32_t encoding, uint32_t zero1,
                                      uint32_t zero2) {
    FaultHost &self = self_of(nls);
    if (self.fails(Call::create_encoder, number(encoding))) return nullptr;
    JXNls *inner = self.nls_.inner;
    return adopt(self, inner->create_encoder(inner, encoding, zero1, zero2),
                 "encoder " + number(encoding));
  }

  static JXStatus destroy_transcoder(JXNls *nls, JXTranscoder *transcoder) {
    FaultHost &self = self_of(nls);
    auto *shell = shell_of(transcoder);
    const bool fails = self.fails(Call::destroy_transcoder, shell->label);
    if (!self.end(shell)) return JXHOST_E_BADOBJECT;
    const JXStatus status = self.nls_.inner->destroy_transcoder(self.nls_.inner, shell->inner);
    return fails ? self.fault_status() : status;
  }

  static JXStatus transcode(JXTranscoder *transcoder, const void *source, uint32_t source_bytes,
                            void *destination, uint32_t capacity_bytes,
                            uint32_t *produced_bytes_out, uint32_t zero) {
    auto *shell = shell_of(transcoder);
    FaultHost &self = *shell->owner;
    if (self.fails(Call::transcode, shell->label)) return self.fault_status();
    if (!self.is_alive(shell)) return JXHOST_E_BADOBJECT;
    return shell->inner->transcode(shell->inner, source, source_bytes, destination, capacity_bytes,
                                   produced_bytes_out, zero);
  }
};

constinit const JXNls kNlsOperations = {.measure_conversion = NlsCalls::measure_conversion,
                                        .needs_conversion = NlsCalls::needs_conversion,
                                        .encoding_info = NlsCalls::encoding_info,
                                        .create_transcoder = NlsCalls::create_transcoder,
                                        .create_decoder = NlsCalls::create_decoder,
                                        .create_encoder = NlsCalls::create_encoder,
                                        .destroy_transcoder = NlsCalls::destroy_transcoder};

}  // namespace jx::test
