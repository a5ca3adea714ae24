// What help and man page say about "convert".
#pragma once

namespace cli {

inline constexpr const char *kConvertDescription =
    "Copies IN to OUT and changes the encoding only: line ends, a missing last line end and a "
    "byte-order mark stay as they are, so that converting there and back gives the same bytes; "
    "utf-16 and utf-32 add a mark, and some encodings of the C library map look-alikes. OUT is "
    "replaced when everything is written; a failure leaves it as it was. --append adds to it in "
    "place. --in-place and --into convert any number of files: each is replaced as a whole or "
    "not at all, one whose bytes would stay the same is not touched, and one that fails does not "
    "stop the others. A backup never replaces a file, so that a run with --backup can be "
    "repeated: what is done already is left alone. --eol gives every line the same end; a line "
    "feed, a carriage return, both, and NEL (U+0085, 0x15 in EBCDIC) are one each. --on-error "
    "goes on after bytes that are no text and characters that the target encoding does not have: "
    "replace writes U+FFFD, or a question mark where there is none; skip leaves them out; escape "
    "writes \\x{ff} for a byte and \\u{20ac} for a character, and \\u{7b} for the brace of text "
    "that looks so, which makes it reversible. Their number and the first places go to standard "
    "error. --records reads a file of records and writes each as a line; --to-records makes a "
    "record of each line, which a line feed ends, with a carriage return before it or not; with "
    "--eol lf every other line end ends it too.";

}  // namespace cli
