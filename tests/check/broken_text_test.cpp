// Kernels with broken character sets and journals.
#include <stdarg.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

#include "check/broken_slot.hpp"

namespace jx::test {
namespace {

const BrokenSlot kText[] = {
    {"conversion that is never needed",
     [] { replace<&JXNls::needs_conversion>([](auto...) { return 0; }); },
     "nls.needs_conversion: every pair of 0, 20, 24 to 27 and 62; came: 0 from 0 to 0"},
    {"a thousandfold growth",
     [] {
       replace<&JXNls::measure_conversion>([](JXNls *nls, uint32_t from, const void *text,
                                              uint32_t bytes, uint32_t to, uint32_t *out) {
         const JXStatus status = real<JXNls>.measure_conversion(nls, from, text, bytes, to, out);
         return *out *= 1000, status;
       });
     },
     "nls.measure_conversion: encodings 27 and 62; came: 1000 bytes from 27 to 62, not 1"},
    {"characters of one byte",
     [] {
       replace<&JXNls::encoding_info>([](JXNls *, uint32_t encoding, JXEncodingInfo *info) {
         info->max_bytes_per_char = encoding == JX_ENCODING_UTF32LE ? 4 : 1;
         return encoding > 0xFFFF ? JX_E_BADARG : JX_OK;
       });
     },
     "where the host has them; came: 1 bytes for a character of encoding 20"},
    {"every encoding",
     [] {
       replace<&JXNls::create_transcoder>(
           [](JXNls *n, uint32_t from, uint32_t to, uint32_t, JXOwner) {
             return changed(
                 real<JXNls>.create_transcoder(n, from > 0xFFFF ? 62 : from, to, 0, nullptr));
           });
     },
     "nls.create_transcoder: an encoding that there is not; came: a transcoder"},
    {"ASCII for encoding 62",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *room, uint32_t, uint32_t &count) {
             std::replace_if(
                 room, room + count, [](char c) { return c < 0; }, '?');
             return status;
           }>);
     },
     "nls.create_decoder: encoding 62: all bytes; came: all 256: byte 512 is 0x3f, not 0x80"},
    {"more bytes than the room has",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *, uint32_t, uint32_t &count) {
             return count *= 9, status;
           }>);
     },
     "nls.create_decoder: encoding 62: all bytes; came: 9216 bytes said to be in a room of 1024"},
    {"bytes beyond the room",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *room, uint32_t capacity, uint32_t &) {
             return room[capacity] = 0, status;
           }>);
     },
     "transcoder.transcode: text that does not fit its room; came: 1 bytes beyond a room of 0"},
    {"no failures",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus, char *, uint32_t, uint32_t &) { return JX_OK; }>);
     },
     "transcoder.transcode: malformed text; came: status 0 and 0 bytes from encoding 20"},
    {"a byte-order mark that is lost",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *room, uint32_t, uint32_t &count) {
             if (count == 4 && memcmp(room, "\xFF\xFE\0", 4) == 0) count = 0;
             return status;
           }>);
     },
     "transcoder.transcode: a byte-order mark; came: the mark: 0 bytes, not 4"},
    {"an overlong form",
     [] {
       replace<&JXTranscoder::transcode>([](JXTranscoder *self, const void *text, uint32_t bytes,
                                            void *room, uint32_t capacity, uint32_t *out,
                                            uint32_t) {
         const bool is_overlong = bytes == 2 && memcmp(text, "\xC0\xAF", 2) == 0;
         return real<JXTranscoder>.transcode(self, is_overlong ? "//" : text, bytes, room, capacity,
                                             out, 0);
       });
     },
     "and numbers beyond U+10FFFF; came: status 0 for bytes c0 af... of encoding 20"},
    {"a decoder for one caller",
     [] {
       replace<&JXTranscoder::transcode>(
           transcode_then<[](JXStatus status, char *, uint32_t, uint32_t &) -> JXStatus {
             static std::atomic<int> callers;
             const bool is_alone = callers.fetch_add(1) == 0;
             usleep(100);
             callers.fetch_sub(1);
             return is_alone ? status : JX_E_NOMEM;
           }>);
     },
     "transcoder.transcode: eight threads at once, with one decoder of encoding 62; came: a fail"},
    {"no start of a character is kept",
     [] {
       replace<&JXTranscoder::transcode>([](JXTranscoder *self, const void *text, uint32_t bytes,
                                            void *room, uint32_t capacity, uint32_t *out,
                                            uint32_t) {
         const auto slot = real<JXTranscoder>.transcode;
         const JXStatus status = slot(self, text, bytes, room, capacity, out, 0);
         char ignored[64];
         (void)slot(self, "\xDC\xDC\xDC\xDC\xDC\xDC\xDC\xDC", 8, ignored, 64, nullptr, 0);
         return status;
       });
     },
     "transcoder.transcode: text in two parts, cut at every byte; came: "},
    {"a buffer that is written over",
     [] {
       replace<&JXJournal::status_to_buffer>(
           [](JXJournal *, uintptr_t buffer, uintptr_t capacity, uintptr_t, uintptr_t, va_list) {
             reinterpret_cast<JXChar *>(buffer)[capacity] = 0;
             return JX_OK;
           });
     },
     "journal.status_to_buffer: a status and a text; came: 4 bytes beyond the room"},
    {"a text that is always there",
     [] {
       replace<&JXJournal::status_to_journal>(
           [](JXJournal *, uintptr_t, uintptr_t, va_list args) -> JXStatus {
             return *va_arg(args, volatile JXChar *) == 0;
           });
     },
     "journal.status_to_journal: a status without a text; came: the process "},
};

INSTANTIATE_TEST_SUITE_P(Text, BrokenKernel, testing::ValuesIn(kText), name_of_slot);

}  // namespace
}  // namespace jx::test
