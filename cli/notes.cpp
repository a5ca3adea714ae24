// What holds for more than one command, and examples.
#include <array>

#include "cli/commands.hpp"

namespace cli {
namespace {

constexpr auto kNotes = std::to_array<Note>({
    {"NAMES",
     "A path is taken byte for byte, as the system takes it: ~ and $NAME in it, blanks at its end "
     "and bytes of any kind mean themselves, and what a shell has expanded is not expanded again. "
     "The command expand shows what the module's expansion makes of a path: a leading ~ or ~USER "
     "becomes a home directory, and $NAME, up to the next / . or $, the value of that variable if "
     "it is set. With --expand any other command treats its paths so first. A path of more than "
     "1024 bytes, counted from the root or from the current directory, and one with 127 bytes or "
     "more after a $ up to the next / . or $ cannot be named and are refused. In messages, and in "
     "output to a terminal, bytes that are no printable UTF-8 are shown as \\x and two hexadecimal "
     "digits and a backslash is doubled."},
    {"STANDARD INPUT AND OUTPUT",
     "- is standard input where lines, convert and bytes read a file, and standard output where "
     "convert and write write one. /dev/stdout, /dev/fd/N and links to them mean the same open "
     "descriptor: it is written from its current offset, and neither emptied, replaced nor locked. "
     "A file is never input and output at once. Elsewhere - is a name like others."},
    {"REPLACED FILES",
     "convert and write make a new file in the folder of the old one and put it in its place when "
     "it is complete. It gets the owner, group, permissions and access list of the old one, or "
     "less where that may not be kept: never the set-user-id, set-group-id and sticky bits, nor "
     "other extended attributes. Links are followed; of a file with several names only the one "
     "that was given gets the new content. In a folder where anyone may put files, links and files "
     "that another user put there are refused."},
    {"ENCODINGS",
     "ENC is a name such as utf-8, utf-16, utf-16le, utf-16be, utf-32le, utf-32be, ascii, latin1, "
     "iso-8859-15, windows-1252, koi8-r, shift_jis, euc-jp, gb18030, big5 or ibm037, in capitals "
     "or not, or its number, such as 20 for utf-8: jxfile encodings lists them all. utf-16 and "
     "utf-32 read what the byte-order mark "
     "says, and little-endian without one; what they write begins with a mark and is "
     "little-endian, "
     "or goes on as a mark that is there says. --from auto takes what jxfile detect says of the "
     "input if that is certain or 95 % or more sure, and otherwise stops and lists the candidates. "
     "Of "
     "a pipe it looks at the first 64 KiB, which it waits for; when they are all ASCII it goes on "
     "as for utf-8, which refuses anything else."},
    {"RECORDS",
     "fixed:N are records of N bytes, one after another, filled up with blanks in the encoding of "
     "the text; --strip-blanks drops them again. rdw are records after four bytes: their length in "
     "two, big-endian, which counts the four, and two zeros; bdw the same in blocks of up to 32760 "
     "bytes, which begin with their length in the same form. be32 and le32 are records after the "
     "number of their bytes, big-endian or little-endian in four. Records have any encoding, which "
     "--from or --to names: utf-8 without, as a byte-order mark in them is data. A record is text "
     "of its own: one that ends inside a character, that has a line feed in it, or whose "
     "length cannot be is a fault, and so is a line that is too long for a record. --on-error goes "
     "on after bytes that are no text and line feeds. Messages name the record and its byte offset "
     "in the file. Records may be moved from one form to another in "
     "one run."},
    {"JSON",
     "--json prints an object a line. Dates and times are those of RFC 3339 with the distance from "
     "UTC; a name that is no UTF-8 comes in base64, as the member with _base64 at its end. "
     "jxfile.schema.json, beside the documents, says what each command prints; its $id has a "
     "number, which changes when a member changes or goes. Members may be added."},
    {"NUMBERS",
     "N, OFFSET and LENGTH are decimal, or hexadecimal after 0x; k, M and G at the end multiply "
     "by 1024 once, twice and three times."},
    {"EXIT STATUS",
     "0 when everything was done, 1 when an operation failed, 2 when the command line is wrong."},
});

constexpr auto kExamples = std::to_array<Note>({
    {"Look at a file that is not UTF-8, each line with its number",
     "jxfile lines -n --from latin1 notes.txt"},
    {"Convert every text of a directory and keep the old files",
     "jxfile convert --from latin1 --in-place --backup .old docs/*.txt"},
    {"Give every line the end that Windows programs expect",
     "jxfile convert --eol crlf notes.txt notes-dos.txt"},
    {"Find the byte that is not UTF-8: the message names record and offset",
     "jxfile convert notes.txt /dev/null"},
    {"Print lines 100 to 120 as JSON", "jxfile lines --range 100:120 --json big.log"},
    {"Make lines of a file of 80-byte EBCDIC records, and records of the lines",
     "jxfile convert --records fixed:80 --strip-blanks --from ibm1047 dump.bin dump.txt"},
    {"Look at record 40000 of it",
     "jxfile lines --records fixed:80 --from ibm1047 --range 40000 "
     "dump.bin"},
    {"Write lines as records after their length, in blocks",
     "jxfile convert --to-records bdw --to ibm1047 dump.txt dump.vb"},
    {"Copy a tree with its links, permissions and times", "jxfile cp -pP docs backup"},
    {"Make a file that nobody else has or reads", "jxfile newname --create --prefix job /tmp"},
});

}  // namespace

std::span<const Note> notes() { return kNotes; }
std::span<const Note> examples() { return kExamples; }

}  // namespace cli
