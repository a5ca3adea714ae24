// Operands and options of the commands that read and write text, records and bytes.
#pragma once

#include <array>

#include "cli/commands.hpp"

namespace cli {

inline constexpr Option kJson = {"--json", nullptr, "one JSON object a line instead of text"};
inline constexpr Option kFrom = {
    "--from", "ENC",
    "encoding of the input, or auto to have it told (default: its byte-order "
    "mark, else utf-8)",
    "auto"};
inline constexpr Option kTo = {
    "--to", "ENC",
    "encoding of the output (default: utf-8, or as the mark of a file to add to says)"};
inline constexpr Option kAppend = {"--append", nullptr, "add to the end of the file, in place"};
inline constexpr Option kBom = {"--bom", nullptr, "begin the output with a byte-order mark"};
inline constexpr Option kReadLength = {"--record-length", "N",
                                       "longest record in bytes of the file (default: 65536)"};
inline constexpr Option kStripBlanks = {"--strip-blanks", nullptr,
                                        "drop the blanks at the end of records"};
inline constexpr Option kShortLast = {
    "--short-last", "HOW", "a last record shorter than N bytes: pad or keep (default: refuse)",
    "refuse pad keep"};

inline constexpr auto kLinesOperands =
    std::to_array<Operand>({{"FILE", 1, kAnyNumber, "text files; - is standard input"}});
inline constexpr auto kLinesOptions = std::to_array<Option>({
    kFrom,
    kReadLength,
    {"--records", "FORM",
     "text: lines (default); or the form of the records that each become a line: fixed:N, rdw, "
     "bdw, be32, le32",
     "text fixed: rdw bdw be32 le32"},
    kStripBlanks,
    kShortLast,
    {"--direct", nullptr, "read without the record buffer, one transfer a record"},
    {"-n,--number", nullptr, "number the lines"},
    {"--range", "A:B",
     "lines or records A to B only, of each file; A: to its end, :B from its start, A alone"},
    {"--mark", nullptr, "show each record's length and line end; longer lines come in parts"},
    kJson,
});

inline constexpr auto kConvertOperands =
    std::to_array<Operand>({{"IN", 0, 1, "file to read (default: -, standard input)"},
                            {"OUT", 0, kAnyNumber,
                             "file to write (default: -, standard output); with --in-place or "
                             "--into more files to read"}});
inline constexpr auto kConvertOptions = std::to_array<Option>({
    kFrom,
    kTo,
    kBom,
    {"--no-bom", nullptr, "write no byte-order mark (default: as the input has it)"},
    kAppend,
    kReadLength,
    {"--records", "FORM",
     "stream: everything as it is (default); text: every line ends in a line feed; or the form of "
     "the records that each become a line: fixed:N, rdw, bdw, be32, le32",
     "stream text fixed: rdw bdw be32 le32"},
    {"--to-records", "FORM", "write each line as a record: fixed:N, rdw, bdw, be32 or le32",
     "lines fixed: rdw bdw be32 le32"},
    kStripBlanks,
    kShortLast,
    {"--eol", "KIND", "end every line in lf, crlf, cr or nel (default: keep)",
     "lf crlf cr nel keep"},
    {"--final-eol", "HOW", "add: end the last line too (default: keep)", "add keep"},
    {"--on-error", "HOW", "what is no text or not in ENC: replace, skip or escape (default: stop)",
     "replace skip escape stop"},
    {"--translit", nullptr, "write characters that are not in ENC with others, where possible"},
    {"--in-place", nullptr, "convert each file given and put the result in its place"},
    {"--backup", "SUFFIX", "in place: keep the old file under its name with SUFFIX added"},
    {"--into", "DIR", "convert each file given to a file of the same name in this folder"},
    {"--files0-from", "FILE", "convert the files named in FILE, a zero byte after each name"},
    {"--jobs", "N",
     "in place or into a folder: convert N files at once (default: one a processor)"},
    {"--dry-run", nullptr, "in place or into a folder: print what would change, change nothing"},
});

inline constexpr auto kWriteOperands =
    std::to_array<Operand>({{"FILE", 1, 1, "file to write; - is standard output"}});
inline constexpr auto kWriteOptions = std::to_array<Option>({
    {"--records", "FORM",
     "text: lines (default), binary: bytes, stream: text without line ends; or the form of the "
     "records to make of lines: fixed:N, rdw, bdw, be32, le32",
     "text binary stream fixed: rdw bdw be32 le32"},
    kTo,
    kBom,
    kAppend,
    {"--update", nullptr,
     "overwrite from the start, after a byte-order mark if there is one, in place"},
    {"--at", "OFFSET", "overwrite from this byte on, in place"},
    {"--record-length", "N", "longest record in characters, binary in bytes (default: 65536)"},
});

inline constexpr auto kBytesOperands =
    std::to_array<Operand>({{"FILE", 1, 1, "file to read; - is standard input"}});
inline constexpr auto kBytesOptions = std::to_array<Option>({
    {"--raw", nullptr, "the bytes themselves, of records without their lengths"},
    {"--records", "FORM",
     "binary: one after another (default); or the form of the records to show: fixed:N, rdw, bdw, "
     "be32, le32",
     "binary fixed: rdw bdw be32 le32"},
    {"--range", "A:B", "records A to B only; A: to the end, :B from the start, A alone"},
    {"--record-length", "N", "bytes a record (default: 8192)"},
    {"--offset", "N", "pass over that many bytes"},
    {"--count", "N", "stop after that many bytes"},
    kJson,
});

}  // namespace cli
