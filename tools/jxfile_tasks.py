"""Twenty tasks for tools/bench_jxfile: their files, the command of jxfile, what other programs need for the
same, and the right result."""
import random
import re
import sys
from dataclasses import dataclass, field
from pathlib import Path
from typing import Callable

SENTENCES = {
    "ascii": "the quick brown fox jumps over a lazy dog while some numbers 0123456789 pass by; ",
    "german": "Zürich grüßt Köln, schöne Straßen führen über Brücken nach Süden und zurück; ",
    "russian": "Съешь же ещё этих мягких французских булок, да выпей чаю в тихом саду у реки; ",
    "japanese": "東京都千代田区丸の内一丁目九番一号、日本語の文章をここに書いて長さを測ります。漢字仮名交じり文",
    "chinese": "北京市海淀区中关村大街的图书馆里有很多书,学生们每天早上都来这里读书学习,晚上才回家去。",
}
# Bytes of UTF-8, and files; few are enough to see whether results are right.
IS_CHECK = "--check" in sys.argv
LARGE, MIDDLE, MANY = (1 << 20, 1 << 18, 300) if IS_CHECK else (16 << 20, 1 << 20, 10000)


def text(language, size, seed=1):
    """Lines of 20 to 79 characters with about that many bytes of UTF-8."""
    source = SENTENCES[language] * 3
    chance = random.Random(seed)
    lines = []
    for _ in range(500):
        start = chance.randrange(len(SENTENCES[language]))
        lines.append(source[start:start + chance.randrange(20, 80)].rstrip() + "\n")
    block = "".join(lines)
    block_bytes = len(block.encode())
    if size >= block_bytes:
        return block * (size // block_bytes)
    return block[:block.index("\n", size * len(block) // block_bytes) + 1]


@dataclass
class Task:
    """Every command runs in a folder with the files, and leaves its result in `out` or in the files."""
    name: str
    command: str
    peers: list
    files: Callable  # () -> {name: bytes}
    expected: Callable = None  # () -> {name: bytes} of what is there afterwards
    is_right: Callable = None  # (folder) -> whether it is, in place of expected
    rounds: int = 0  # fewer than for the others
    made: dict = field(default_factory=dict)

    def right(self, folder):
        if self.is_right:
            return self.is_right(folder)
        return all((folder / name).exists() and (folder / name).read_bytes() == content
                   for name, content in self.expected().items())


def converted(name, command, peers, language, before, after, eol=("\n", "\n"), result="out", size=LARGE):
    """One file into another encoding, or with other line ends."""
    def lines(encoding, end):
        encode = encoding if callable(encoding) else lambda plain: plain.encode(encoding)
        return encode(text(language, size).replace("\n", end))
    return Task(name, command, peers, lambda: {"in": lines(before, eol[0])}, lambda: {result: lines(after, eol[1])})


def latin_files(count, size):
    return {f"files/{i:05}.txt": text("german", size, i).encode("latin1") for i in range(count)}


def many(name, command, peers, count, size, folder, rounds=0):
    return Task(name, command, peers, lambda: latin_files(count, size),
                lambda: {path.replace("files", folder): content.decode("latin1").encode()
                         for path, content in latin_files(count, size).items()}, rounds=rounds)


BROKEN_AT = LARGE - 70000


def broken():
    content = bytearray(text("ascii", LARGE).encode())
    content[BROKEN_AT] = 0xFF
    return {"in": bytes(content)}


def names_the_byte(folder):
    said = (folder / "err").read_text()
    return str(BROKEN_AT) in said or str(BROKEN_AT + 1) in said


DETECTED = [("german", "windows-1252"), ("russian", "windows-1251"), ("russian", "koi8-r"), ("japanese", "shift_jis"),
            ("chinese", "gb18030")]


def strange_files():
    return {f"files/{i:02}-{DETECTED[i % 5][1]}": text(DETECTED[i % 5][0], 20000, i).encode(DETECTED[i % 5][1])
            for i in range(50)}


def names_encodings(folder):
    said = re.split(r"files/", (folder / "out").read_text().lower())[1:]
    first = [re.search(r"(?:encoding +|charset=|: *)([\w-]+)", part)[1] for part in said]
    equal = {"iso-8859-1": "windows-1252"}  # for these texts
    return [equal.get(name, name) for name in first] == [DETECTED[i % 5][1] for i in range(50)]


def records(end):
    """ASCII lines as records of 80, ended by blanks, or as lines."""
    lines = text("ascii", LARGE).splitlines()
    return "".join((line + end) if end else line.ljust(80) for line in lines)


def ebcdic(plain):
    return plain.encode("cp037")


def ebcdic_lines(plain):
    return plain.replace("\n", "\x85").encode("cp037")


def line_count(folder):
    return (folder / "out").read_bytes().count(b"\n") == text("german", LARGE).count("\n")


def dump_is_whole(folder):
    """The last line of a dump has the file's last bytes."""
    size = len(text("german", LARGE).encode())
    lines = (folder / "out").read_bytes().splitlines()
    return len(lines) in (-(-size // 16), -(-size // 16) + 1)


LATIN = "-f LATIN1 -t UTF-8"
TASKS = [
    converted("one file of 1 MB", "jxfile convert --from latin1 in out",
              [f"iconv {LATIN} in > out", "recode latin1..utf8 < in > out", "uconv -f latin1 -t utf-8 in > out"],
              "german", "latin1", "utf-8", size=MIDDLE),
    converted("the same in place", "jxfile convert --in-place --from latin1 in",
              [f"iconv {LATIN} in > new && mv new in", "recode latin1..utf8 in"],
              "german", "latin1", "utf-8", result="in", size=MIDDLE),
    many("50 files of 64 KB into a folder", "mkdir out; jxfile convert --into out --from latin1 files/*",
         [f"mkdir out; for f in files/*; do iconv {LATIN} $f > out/${{f##*/}}; done",
          "mkdir out; for f in files/*; do recode latin1..utf8 < $f > out/${f##*/}; done"], 50, 64 << 10, "out"),
    many("10,000 files of 1 KB in place", "jxfile convert --in-place --from latin1 files/*",
         [f"for f in files/*; do iconv {LATIN} $f > new && mv new $f; done", "recode latin1..utf8 files/*"],
         MANY, 1000, "files", rounds=3),
    converted("in a pipe", "cat in | jxfile convert --from latin1 > out",
              [f"cat in | iconv {LATIN} > out", "cat in | recode latin1..utf8 > out"], "german", "latin1", "utf-8"),
    converted("UTF-16 with its mark", "jxfile convert --from utf-16 --no-bom in out",
              ["iconv -f UTF-16 -t UTF-8 in > out", "recode utf-16..utf8 < in > out",
               "uconv -f utf-16 -t utf-8 in > out"], "russian", "utf-16", "utf-8"),
    converted("UTF-16 without a mark", "jxfile convert --from utf-16le in out",
              ["iconv -f UTF-16LE -t UTF-8 in > out", "uconv -f utf-16le -t utf-8 in > out"],
              "russian", "utf-16-le", "utf-8"),
    converted("Shift-JIS", "jxfile convert --from shift_jis in out",
              ["iconv -f SHIFT_JIS -t UTF-8 in > out", "recode sjis..utf8 < in > out",
               "uconv -f shift_jis -t utf-8 in > out"], "japanese", "shift_jis", "utf-8"),
    converted("GB18030", "jxfile convert --from gb18030 in out",
              ["iconv -f GB18030 -t UTF-8 in > out", "uconv -f gb18030 -t utf-8 in > out"],
              "chinese", "gb18030", "utf-8"),
    converted("EBCDIC, its line ends too", "jxfile convert --from ibm037 --eol lf in out",
              ["tr '\\025' '\\045' < in | iconv -f IBM037 -t UTF-8 > out"], "ascii", ebcdic_lines, "utf-8"),
    converted("LF to CRLF", "jxfile convert --eol crlf in out",
              ["unix2dos -q -n in out", "sed 's/$/\\r/' in > out"], "german", "utf-8", "utf-8", ("\n", "\r\n")),
    converted("CRLF to LF", "jxfile convert --eol lf in out",
              ["dos2unix -q -n in out", "sed 's/\\r$//' in > out", "tr -d '\\r' < in > out"],
              "german", "utf-8", "utf-8", ("\r\n", "\n")),
    Task("which byte is broken", "jxfile convert in > out 2> err",
         ["iconv -f UTF-8 -t UTF-8 in > out 2> err", "isutf8 in > err"], broken, is_right=names_the_byte),
    Task("without what is broken", "jxfile convert --on-error skip in out 2> err",
         ["iconv -c -f UTF-8 -t UTF-8 in > out", "uconv -i -f utf-8 -t utf-8 in > out"], broken,
         lambda: {"out": text("ascii", LARGE).encode()[:BROKEN_AT] + text("ascii", LARGE).encode()[BROKEN_AT + 1:]}),
    Task("the encodings of 50 files", "jxfile detect files/* > out",
         ["uchardet files/* > out", "file -i files/* > out"], strange_files, is_right=names_encodings),
    Task("EBCDIC records of 80 to lines", "jxfile convert --records fixed:80 --strip-blanks --from ibm037 in out",
         ["iconv -f IBM037 -t UTF-8 in | dd cbs=80 conv=unblock ibs=64k obs=64k status=none of=out",
          "dd if=in of=out cbs=80 conv=ascii,unblock ibs=64k obs=64k status=none"],
         lambda: {"in": ebcdic(records(""))}, lambda: {"out": records("\n").encode()}),
    Task("lines to EBCDIC records of 80", "jxfile convert --to-records fixed:80 --to ibm037 in out",
         ["dd if=in cbs=80 conv=block ibs=64k obs=64k status=none | iconv -f UTF-8 -t IBM037 > out"],
         lambda: {"in": records("\n").encode()}, lambda: {"out": ebcdic(records(""))}),
    Task("a hex dump", "jxfile bytes in > out", ["xxd in > out", "hexdump -C in > out", "od -A x -t x1z in > out"],
         lambda: {"in": text("german", LARGE).encode()}, is_right=dump_is_whole),
    Task("lines as JSON", "jxfile lines --json in > out", ["jq -R . in > out"],
         lambda: {"in": text("german", LARGE).encode()}, is_right=line_count),
    Task("lines with numbers", "jxfile lines -n in > out", ["cat -n in > out", "nl -ba in > out"],
         lambda: {"in": text("german", LARGE).encode()}, is_right=line_count),
]


def lay_out(files, folder):
    """Puts files into a folder, which is there."""
    for name, content in files.items():
        path = Path(folder) / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
