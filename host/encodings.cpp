// The table of encodings, with look-up by number and by name.
//
// Numbers never change. 20 to 27 and 62 are the host's own; an encoding with a code page number has
// that one; the others are numbered from 3001. Encodings that depend on a byte-order mark or a
// header at the start are left out on purpose: records are converted one by one.
#include "host/encodings.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "jx/jxhost.h"

namespace jxhost {
namespace {

using enum Laxity;

constexpr Encoding page(uint32_t number, const char *name, const char *aliases = "",
                        const char *iconv_name = nullptr) {
  return {number, name, aliases, iconv_name ? iconv_name : name, 1, 1, Form::kPage};
}

// Sorted by number.
constexpr Encoding kEncodings[] = {
    {20, "UTF-8", "cp65001", "", 1, 4, Form::kUtf8},
    {21, "US-ASCII", "ascii us iso646us cp367 ansix341968 cp20127", "", 1, 1, Form::kAscii},
    {24, "UTF-16BE", "cp1201", "", 2, 4, Form::kUtf16Be},
    {25, "UTF-16LE", "utf16 cp1200", "", 2, 4, Form::kUtf16Le},
    {26, "UTF-32BE", "ucs4be cp12001", "", 4, 4, Form::kUtf32Be},
    {27, "UTF-32LE", "utf32 ucs4le jxchar cp12000", "", 4, 4, Form::kUtf32Le},
    page(37, "IBM037", "ebcdicus ebcdiccpus"),
    {62, "native", "bytes", "", 1, 1, Form::kByte},
    page(256, "IBM256"),
    page(273, "IBM273"),
    page(277, "IBM277"),
    page(278, "IBM278"),
    page(280, "IBM280"),
    page(284, "IBM284"),
    page(285, "IBM285"),
    page(290, "IBM290"),
    page(297, "IBM297"),
    page(420, "IBM420"),
    page(423, "IBM423"),
    page(424, "IBM424"),
    page(437, "IBM437", "dosus"),
    page(500, "IBM500", "ebcdicint"),
    page(737, "CP737", "dosgreek"),
    page(770, "CP770"),
    page(771, "CP771"),
    page(772, "CP772"),
    page(773, "CP773"),
    page(774, "CP774"),
    page(775, "CP775", "dosbaltic"),
    page(850, "IBM850", "doslatin1"),
    page(851, "IBM851"),
    page(852, "IBM852", "doslatin2"),
    page(855, "IBM855"),
    page(856, "IBM856"),
    page(857, "IBM857", "dosturkish"),
    page(858, "IBM858", "doslatin1euro"),
    page(860, "IBM860"),
    page(861, "IBM861"),
    page(862, "IBM862"),
    page(863, "IBM863"),
    page(864, "IBM864"),
    page(865, "IBM865"),
    page(866, "IBM866", "doscyrillic"),
    page(868, "IBM868"),
    page(869, "IBM869"),
    page(870, "IBM870"),
    page(871, "IBM871"),
    page(874, "windows-874", "", "CP874"),
    page(875, "IBM875"),
    page(880, "IBM880"),
    page(901, "IBM901"),
    page(902, "IBM902"),
    page(905, "IBM905"),
    page(918, "IBM918"),
    page(921, "IBM921"),
    page(922, "IBM922"),
    {930, "IBM930", "", "IBM930", 1, 4, Form::kShifting, kSubstitutes},
    {932, "windows-31j", "ms932 cswindows31j", "CP932", 1, 2, Form::kIconv},
    {933, "IBM933", "", "IBM933", 1, 4, Form::kShifting, kSubstitutes},
    {935, "IBM935", "", "IBM935", 1, 4, Form::kShifting, kSubstitutes},
    {936, "GBK", "ms936 windows936", "GBK", 1, 2, Form::kIconv},
    {937, "IBM937", "", "IBM937", 1, 4, Form::kShifting, kSubstitutes},
    {939, "IBM939", "", "IBM939", 1, 4, Form::kShifting, kSubstitutes},
    {943, "IBM943", "", "IBM943", 1, 2, Form::kIconv, kSubstitutes},
    {949, "CP949", "uhc mscp949", "UHC", 1, 2, Form::kIconv},
    {950, "Big5", "bigfive cnbig5", "BIG5", 1, 2, Form::kIconv, kControls},
    {951, "Big5-HKSCS", "big5hk", "BIG5-HKSCS", 1, 2, Form::kJoining, kControls},
    page(1004, "IBM1004"),
    page(1008, "IBM1008"),
    page(1025, "IBM1025"),
    page(1026, "IBM1026"),
    {1046, "IBM1046", "", "IBM1046", 1, 1, Form::kIconv},
    page(1047, "IBM1047", "ebcdicopensystems"),
    page(1051, "HP-ROMAN8", "roman8"),
    page(1097, "IBM1097"),
    page(1100, "DEC-MCS", "dec"),
    page(1112, "IBM1112"),
    page(1122, "IBM1122"),
    page(1123, "IBM1123"),
    page(1124, "IBM1124"),
    page(1125, "CP1125", "ruscii"),
    page(1129, "IBM1129"),
    page(1130, "IBM1130"),
    {1132, "IBM1132", "", "IBM1132", 1, 1, Form::kIconv},
    {1133, "IBM1133", "", "IBM1133", 1, 1, Form::kIconv},
    page(1137, "IBM1137"),
    page(1140, "IBM1140"),
    page(1141, "IBM1141"),
    page(1142, "IBM1142"),
    page(1143, "IBM1143"),
    page(1144, "IBM1144"),
    page(1145, "IBM1145"),
    page(1146, "IBM1146"),
    page(1147, "IBM1147"),
    page(1148, "IBM1148"),
    page(1149, "IBM1149"),
    page(1153, "IBM1153"),
    page(1154, "IBM1154"),
    page(1155, "IBM1155"),
    page(1156, "IBM1156"),
    page(1157, "IBM1157"),
    page(1158, "IBM1158"),
    {1160, "IBM1160", "", "IBM1160", 1, 1, Form::kIconv},
    {1161, "IBM1161", "", "IBM1161", 1, 1, Form::kIconv},
    page(1162, "IBM1162"),
    page(1163, "IBM1163"),
    page(1164, "IBM1164"),
    page(1166, "IBM1166"),
    page(1167, "IBM1167"),
    page(1250, "windows-1250", "msee", "CP1250"),
    page(1251, "windows-1251", "mscyrl", "CP1251"),
    page(1252, "windows-1252", "msansi", "CP1252"),
    page(1253, "windows-1253", "msgreek", "CP1253"),
    page(1254, "windows-1254", "msturk", "CP1254"),
    {1255, "windows-1255", "mshebr", "CP1255", 1, 3, Form::kJoining},
    page(1256, "windows-1256", "msarab", "CP1256"),
    page(1257, "windows-1257", "msbaltic", "CP1257"),
    {1258, "windows-1258", "", "CP1258", 1, 2, Form::kJoining},
    {1361, "Johab", "mscp1361", "JOHAB", 1, 2, Form::kIconv},
    {1364, "IBM1364", "", "IBM1364", 1, 4, Form::kShifting, kSubstitutes},
    {1371, "IBM1371", "", "IBM1371", 1, 4, Form::kShifting, kSubstitutes},
    {1388, "IBM1388", "", "IBM1388", 1, 4, Form::kShifting, kSubstitutes},
    {1390, "IBM1390", "", "IBM1390", 1, 4, Form::kShifting, kSubstitutes},
    {1399, "IBM1399", "", "IBM1399", 1, 4, Form::kShifting, kSubstitutes},
    {3001, "Shift_JIS", "sjis mskanji", "SJIS", 1, 2, Form::kIconv},
    {3002, "Shift_JISX0213", "", "SHIFT_JISX0213", 1, 2, Form::kJoining},
    {3003, "EUC-JISX0213", "", "EUC-JISX0213", 1, 3, Form::kJoining},
    {3004, "EUC-JP-MS", "eucjpwin eucjpopen", "EUC-JP-MS", 1, 3, Form::kIconv, kControls},
    page(3005, "TIS-620", "tis62025330"),
    {3006, "TCVN", "tcvn57121", "TCVN", 1, 2, Form::kJoining},
    page(3007, "VISCII"),
    page(3008, "KOI8-RU"),
    page(3009, "KOI8-T"),
    {3010, "ARMSCII-8", "", "ARMSCII-8", 1, 1, Form::kIconv},
    page(3011, "GEORGIAN-ACADEMY"),
    page(3012, "GEORGIAN-PS"),
    page(3013, "PT154", "ptcp154 cyrillicasian"),
    page(3014, "RK1048", "kz1048 strk10482002"),
    page(3015, "MIK"),
    page(3016, "ISO-IR-111", "ecmacyrillic koi8e", "ECMA-CYRILLIC"),
    page(3017, "WIN-SAMI-2", "ws2"),
    page(3018, "HP-GREEK8", "greek8"),
    page(3019, "HP-TURKISH8", "turkish8"),
    page(3020, "HP-THAI8", "thai8"),
    page(3021, "ISO-IR-197"),
    page(3022, "ISO-IR-209"),
    page(3023, "MAC-SAMI"),
    page(10000, "macintosh", "macroman mac"),
    page(10007, "x-mac-cyrillic", "maccyrillic", "CP10007"),
    page(10017, "x-mac-ukrainian", "macukrainian macuk", "MAC-UK"),
    page(10029, "x-mac-ce", "maccentraleurope macce", "MAC-CENTRALEUROPE"),
    page(10079, "x-mac-icelandic", "macicelandic macis", "MAC-IS"),
    {20261, "T.61", "t618bit", "T.61", 1, 2, Form::kIconv},
    {20269, "ISO_6937", "iso69372", "ISO_6937", 1, 2, Form::kIconv},
    page(20866, "KOI8-R", "koi8"),
    page(21866, "KOI8-U"),
    {28591, "ISO-8859-1", "latin1 l1 cp819 ibm819", "", 1, 1, Form::kByte},
    page(28592, "ISO-8859-2", "latin2 l2"),
    page(28593, "ISO-8859-3", "latin3 l3"),
    page(28594, "ISO-8859-4", "latin4 l4"),
    page(28595, "ISO-8859-5", "cyrillic"),
    page(28596, "ISO-8859-6", "arabic"),
    page(28597, "ISO-8859-7", "greek"),
    page(28598, "ISO-8859-8", "hebrew"),
    page(28599, "ISO-8859-9", "latin5 l5"),
    page(28600, "ISO-8859-10", "latin6 l6"),
    page(28601, "ISO-8859-11", "latinthai"),
    page(28603, "ISO-8859-13", "latin7 l7"),
    page(28604, "ISO-8859-14", "latin8 l8"),
    page(28605, "ISO-8859-15", "latin9 l9"),
    page(28606, "ISO-8859-16", "latin10 l10"),
    {50220, "ISO-2022-JP", "jis", "ISO-2022-JP", 1, 8, Form::kShifting},
    {51932, "EUC-JP", "ujis", "EUC-JP", 1, 3, Form::kIconv, kControls},
    {51936, "GB2312", "euccn cngb", "GB2312", 1, 2, Form::kIconv},
    {51949, "EUC-KR", "", "EUC-KR", 1, 2, Form::kIconv, kControls},
    {51950, "EUC-TW", "", "EUC-TW", 1, 4, Form::kIconv},
    {54936, "GB18030", "", "GB18030", 1, 4, Form::kIconv},
    {65000, "UTF-7", "", "UTF-7", 1, 10, Form::kShifting},
};

constexpr bool is_in_order() {
  return std::adjacent_find(std::begin(kEncodings), std::end(kEncodings),
                            [](const Encoding &a, const Encoding &b) {
                              return a.number >= b.number;
                            }) == std::end(kEncodings);
}
static_assert(is_in_order(), "find_encoding searches by halves");

// A name reduced to lower-case letters and digits; empty when it is longer than any known name.
class ReducedName {
 public:
  explicit ReducedName(std::string_view name) {
    for (const char given : name) {
      const char c = given >= 'A' && given <= 'Z' ? static_cast<char>(given - 'A' + 'a') : given;
      if (!(c >= 'a' && c <= 'z') && !(c >= '0' && c <= '9')) continue;
      if (length_ == sizeof(text_)) {
        length_ = 0;
        return;
      }
      text_[length_++] = c;
    }
  }
  std::string_view view() const { return {text_, length_}; }

 private:
  char text_[32];
  size_t length_ = 0;
};

bool is_in_list(std::string_view list, std::string_view word) {
  while (!list.empty()) {
    const size_t end = std::min(list.find(' '), list.size());
    if (list.substr(0, end) == word) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

// The encoding of a code page number, alone or after "cp", "ibm" or "windows"; null if unknown.
const Encoding *find_by_code_page(std::string_view name) {
  const size_t digits = std::min(name.find_first_of("0123456789"), name.size());
  const std::string_view prefix = name.substr(0, digits);
  if (!prefix.empty() && !is_in_list("cp ibm windows win", prefix)) return nullptr;
  uint32_t number = 0;
  const auto [end, error] =
      std::from_chars(name.data() + digits, name.data() + name.size(), number);
  if (error != std::errc() || end != name.data() + name.size()) return nullptr;
  const Encoding *encoding = find_encoding(number);
  const bool is_code_page = encoding && encoding->form >= Form::kPage;
  return prefix.empty() || is_code_page ? encoding : nullptr;
}

}  // namespace

const Encoding *find_encoding(uint32_t number) {
  const auto *found =
      std::lower_bound(std::begin(kEncodings), std::end(kEncodings), number,
                       [](const Encoding &row, uint32_t wanted) { return row.number < wanted; });
  return found != std::end(kEncodings) && found->number == number ? found : nullptr;
}

}  // namespace jxhost

uint32_t jxhost_encoding_by_name(const char *name8) {
  using namespace jxhost;
  if (!name8) return 0;
  const ReducedName name{std::string_view(name8)};
  if (name.view().empty()) return 0;
  for (const Encoding &row : kEncodings) {
    if (ReducedName(row.name).view() == name.view()) return row.number;
    if (is_in_list(row.aliases, name.view())) return row.number;
  }
  const Encoding *encoding = find_by_code_page(name.view());
  return encoding ? encoding->number : 0;
}

const char *jxhost_encoding_name(uint32_t encoding) {
  const jxhost::Encoding *row = jxhost::find_encoding(encoding);
  return row ? row->name : nullptr;
}

uint32_t jxhost_encoding_at(uint32_t index) {
  return index < std::size(jxhost::kEncodings) ? jxhost::kEncodings[index].number : 0;
}
