// The table of commands.
#include "cli/commands.hpp"

#include <array>

#include "cli/convert_description.hpp"
#include "cli/text_options.hpp"

namespace cli {
namespace {

constexpr std::span<const Operand> kNoOperands;
constexpr std::span<const Option> kNoOptions;

constexpr auto kCommonOptions = std::to_array<Option>({
    {"--module", "FILE", "load this module, which JXWEM_MODULE names else; FILE has a / in it"},
    {"--expand", nullptr, "expand $NAME and a leading ~ in the paths given"},
    {"--color", "WHEN", "colours: always, never or auto, on a terminal without NO_COLOR (default)",
     "auto always never"},
});

constexpr auto kTruncateOperands =
    std::to_array<Operand>({{"FILE", 1, 1, "file to change"}, {"LENGTH", 1, 1, "in bytes", false}});

constexpr auto kJsonOnly = std::to_array<Option>({kJson});
constexpr auto kInfoOperands =
    std::to_array<Operand>({{"PATH", 1, kAnyNumber, "files and directories"}});
constexpr auto kFsinfoOperands = std::to_array<Operand>({{"PATH", 1, 1, "any file in it"}});

constexpr auto kLsOperands =
    std::to_array<Operand>({{"PATH", 0, kAnyNumber, "directories and files (default: .)"}});
constexpr auto kLsOptions = std::to_array<Option>({
    {"-a,--all", nullptr, "names that begin with a dot too"},
    {"-l,--long", nullptr, "kind, size and modification time"},
    {"--full", nullptr, "full paths"},
    {"--parent", nullptr, "the directory that holds PATH"},
    {"--root", nullptr, "the root directory"},
    {"--home", nullptr, "the home directory"},
    kJson,
});

constexpr auto kPathsOperands = std::to_array<Operand>({{"PATH", 1, kAnyNumber, "what to act on"}});
constexpr auto kRmOperands = std::to_array<Operand>(
    {{"PATH", 0, kAnyNumber, "what to remove; may be missing with --force"}});
constexpr auto kMkdirOptions =
    std::to_array<Option>({{"-p,--parents", nullptr, "the missing directories on the way too"}});
constexpr auto kRmOptions = std::to_array<Option>({
    {"-r,--recursive", nullptr, "directories with everything in them"},
    {"-f,--force", nullptr, "what is not there is no failure"},
});
constexpr auto kPairOperands = std::to_array<Operand>({
    {"OLD", 1, kAnyNumber, "existing path"},
    {"NEW", 1, 1, "new path, or a directory that takes each OLD up under its name"},
});
constexpr Option kNoTargetDirectory = {"-T,--no-target-directory", nullptr,
                                       "NEW is the new path itself, even if it is a directory"};
constexpr auto kMvOptions = std::to_array<Option>({kNoTargetDirectory});
constexpr auto kCpOptions = std::to_array<Option>({
    {"-p,--preserve", nullptr, "keep permissions and times"},
    {"-P,--no-dereference", nullptr, "copy links as links"},
    kNoTargetDirectory,
});

constexpr auto kNewnameOperands =
    std::to_array<Operand>({{"DIR", 0, 1, "directory (default: the current one)"}});
constexpr auto kNewnameOptions = std::to_array<Option>({
    {"--prefix", "TEXT", "what the name begins with (default: tmp)"},
    {"--extension", "TEXT", "extension, without its dot"},
    {"--host", nullptr, "a name with the machine's name in it"},
    {"--create", nullptr, "make a file of each name, which nobody else has made or may read"},
    {"--count", "N", "how many names, up to 65535 (default: 1)"},
    kJson,
});

constexpr auto kSplitOperands = std::to_array<Operand>({{"PATH", 1, 1, "path to take apart"}});
constexpr auto kBuildOptions = std::to_array<Option>({
    {"--directory", "DIR", "directory (default: the current one)"},
    {"--member", "NAME", "name in it"},
    {"--extension", "TEXT", "extension, without its dot"},
    kJson,
});
constexpr auto kExpandOperands = std::to_array<Operand>({{"PATH", 1, 1, "path to expand", false}});

constexpr auto kFormatOperands = std::to_array<Operand>(
    {{"FORMAT", 1, 1, "text with directives that begin with %", false},
     {"ARG", 0, kAnyNumber, "one for each directive that takes one", false}});
constexpr auto kFormatOptions = std::to_array<Option>(
    {{"--capacity", "N", "room for N characters only (default: enough)"}, kJson});

constexpr auto kDetectOperands =
    std::to_array<Operand>({{"FILE", 1, kAnyNumber, "files; - is standard input"}});
constexpr auto kEncodingsOperands =
    std::to_array<Operand>({{"ENC", 0, kAnyNumber, "only these (default: every encoding)", false}});
constexpr auto kStatusOperands =
    std::to_array<Operand>({{"CODE", 0, 1, "number or name (default: every status)", false}});
constexpr auto kCheckHostOperands =
    std::to_array<Operand>({{"FOLDER", 0, 1, "where files are made (default: /tmp)"}});
constexpr auto kCheckHostOptions = std::to_array<Option>(
    {kJson, {"--tap", nullptr, "a line for each check, as the Test Anything Protocol has it"}});
constexpr auto kHelpOperands =
    std::to_array<Operand>({{"COMMAND", 0, 1, "command (default: the list of commands)", false}});
constexpr auto kGenerateOperands =
    std::to_array<Operand>({{"KIND", 1, 1, "man, bash, zsh or fish", false}});

constexpr auto kCommands = std::to_array<Command>({
    {"lines", "print the lines of text files",
     "Prints text records in UTF-8. A line longer than the record length is printed whole, though "
     "it arrives in parts; a missing last line end stays missing. --mark shows what arrives. Lines "
     "that come through a pipe or from a terminal are printed as they come. With --records each "
     "record of a file is a line; a file of records of one length is entered where --range begins.",
     "jxfile lines --from latin1 --number notes.txt", kLinesOperands, kLinesOptions, run_lines},
    {"convert", "copy a text file into another encoding", kConvertDescription,
     "jxfile convert --from utf-8 --to utf-16le --bom in.txt out.txt", kConvertOperands,
     kConvertOptions, run_convert},
    {"write", "write records from standard input",
     "Writes standard input, which is UTF-8 unless --records is binary. A new content replaces the "
     "file when all of it is written; --append, --update and --at change the file in place. With "
     "the form of records each line becomes one.",
     "printf 'one\\ntwo\\n' | jxfile write --to utf-16le --bom out.txt", kWriteOperands,
     kWriteOptions, run_write},
    {"bytes", "print the bytes of a file",
     "Reads binary records and prints them as a hex dump. Standard input is read from its "
     "current offset, and no further than --count says. With --records each record is shown by "
     "itself, after its number and length, and a last one that is too short as it is.",
     "jxfile bytes --offset 16 --count 32 jxwem.so", kBytesOperands, kBytesOptions, run_bytes},
    {"truncate", "set the length of a file",
     "Cuts a file off or fills it up with zeros. The file must exist.", "jxfile truncate out.txt 0",
     kTruncateOperands, kNoOptions, run_truncate},
    {"info", "show size, time and kind of files",
     "Prints the information table of each path, with the modification time as a local date.",
     "jxfile info README.md docs", kInfoOperands, kJsonOnly, run_info},
    {"fsinfo", "show the file system that holds a file",
     "Prints the free space and the identifier of the file system.", "jxfile fsinfo .",
     kFsinfoOperands, kJsonOnly, run_fsinfo},
    {"ls", "list directories and files",
     "Prints the names in a directory, sorted by their bytes; of several paths the files first and "
     "then each directory with a heading, or in JSON with its path. Names go out as the bytes they "
     "are; "
     "on a terminal what is not printable is escaped.",
     "jxfile ls --long --full docs", kLsOperands, kLsOptions, run_ls},
    {"exists", "test whether files exist", "Ends with 1 when one of the paths names nothing.",
     "jxfile exists ~/.profile", kPathsOperands, kJsonOnly, run_exists},
    {"mkdir", "make directories", "Makes each directory; one that exists already is fine.",
     "jxfile mkdir -p work/2026/may", kPathsOperands, kMkdirOptions, run_mkdir},
    {"rm", "remove files and directories",
     "Removes files, links and empty directories; no link is followed. '.', '..', a path that ends "
     "in either, and the root directory are refused. What was removed before a failure stays "
     "removed; the message names the member that stopped it.",
     "jxfile rm -r ./work", kRmOperands, kRmOptions, run_rm},
    {"mv", "rename a file or directory",
     "Renames within one file system; a file NEW is replaced, unless it was just moved "
     "there.",
     "jxfile mv draft.txt final.txt", kPairOperands, kMvOptions, run_mv},
    {"cp", "copy a file or a tree",
     "Copies to a name that does not exist yet. The copy has that name when it is whole: a failure "
     "or a signal leaves nothing of it. FIFOs, sockets and devices are refused, in a tree before "
     "anything is copied. Links are followed, unless they are to be copied as links. A copy has "
     "the "
     "permissions of what it is a copy of, as far as the umask allows; with --preserve in full, "
     "but for the set-user-id, set-group-id and sticky bits.",
     "jxfile cp docs docs.bak", kPairOperands, kCpOptions, run_cp},
    {"newname", "make unique names",
     "Prints names that no one else was given recently. No file is made without --create.",
     "jxfile newname --prefix job --extension tmp /tmp", kNewnameOperands, kNewnameOptions,
     run_newname},
    {"split", "take a path apart", "Prints directory, member, base name and extension.",
     "jxfile split /usr/lib/libx.so", kSplitOperands, kJsonOnly, run_split},
    {"build", "put a path together",
     "Joins the parts and makes the path absolute; a slash at its end goes. Nothing is expanded "
     "without --expand, which expands the result with the member and the extension in it.",
     "jxfile build --directory ~ --member notes --extension txt", kNoOperands, kBuildOptions,
     run_build},
    {"expand", "expand a path",
     "Replaces $NAME, a leading ~ and leading dots, and makes the path absolute.",
     "jxfile expand '~/$USER.txt'", kExpandOperands, kJsonOnly, run_expand},
    {"format", "format text",
     "Formats the arguments by the directives of FORMAT: d i u o x X for integers, c C for one "
     "character, s for text and hs for bytes, S for text as long as the precision, which it needs, "
     "p P for addresses, e E f g G for doubles, and %; with flags, width, precision, h, l, ll, L "
     "and argument numbers. Options come before FORMAT.",
     "jxfile format '%05d|%-8s|%.3e' 42 left 1234.5", kFormatOperands, kFormatOptions, run_format,
     true},
    {"detect", "tell the encoding and the line ends of files",
     "Prints for each file the encoding, how sure that is and why, whether there is a byte-order "
     "mark, how many lines end in LF, CRLF, CR and NEL, the longest line and the NUL characters. "
     "ASCII, UTF-8, UTF-16, UTF-32 and ISO-2022-JP are told for certain, by a mark or by the "
     "bytes, "
     "or not at all. For other bytes it guesses by how likely the text reads in the languages of "
     "Europe, Chinese, Japanese and Korean, and lists the candidates, the best first. The guess "
     "comes from the first 64 KiB that have bytes beyond ASCII.",
     "jxfile detect --json notes.txt", kDetectOperands, kJsonOnly, run_detect},
    {"encodings", "list the encodings that text can have",
     "Prints name, number, bytes a character (from the shortest to the longest), whether the "
     "encoding has a byte-order mark, and other names. The names of iconv -l are among them; those "
     "few that are not converted come last, with the reason.",
     "jxfile encodings latin1 cp932", kEncodingsOperands, kJsonOnly, run_encodings},
    {"status", "explain a status code", "Prints name and meaning of one status, or of every one.",
     "jxfile status 0x80bfe801", kStatusOperands, kJsonOnly, run_status},
    {"version", "show the module that is used",
     "Prints the module's versions, the file it was loaded from and its binary interface.",
     "jxfile version", kNoOperands, kJsonOnly, run_version},
    {"check-host", "examine the reference host",
     "Runs jxcheck.so, which lies beside the module, on the host that this program works with: "
     "what "
     "the author of another host does with that one. Prints what is wrong and what was not "
     "checked, "
     "and the counts; with --json or --tap every check. Works in a new folder in FOLDER, which it "
     "removes.",
     "jxfile check-host --tap", kCheckHostOperands, kCheckHostOptions, run_check_host},
    {"help", "explain a command", "Prints the same as jxfile COMMAND --help.",
     "jxfile help convert", kHelpOperands, kNoOptions, run_help},
    {"generate", "print the man page or a completion", "For the build of this program.",
     "jxfile generate man", kGenerateOperands, kNoOptions, run_generate, false, true},
});

}  // namespace

std::span<const Command> commands() { return kCommands; }
std::span<const Option> common_options() { return kCommonOptions; }

}  // namespace cli
