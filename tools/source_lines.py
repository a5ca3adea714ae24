"""Reads C and C++ sources for the checks: which files there are, and their text without comments."""
import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# A comment, or a literal, which may hold what looks like a comment.
TOKEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|(?:u8|[uUL])?R"([^()\\\s]{0,16})\(.*?\)\1"'
    r"|\"(?:\\.|[^\"\\\n])*\"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'", re.DOTALL)


def tracked_sources(*folders):
    """The C and C++ files under version control, as paths relative to the checkout."""
    listed = subprocess.run(["git", "ls-files", "--", *folders], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split("\n")
    return [name for name in listed if re.search(r"\.(c|h|cpp|hpp)$", name)]


def without_comments(text, keep_literals=True):
    """The text with its comments blanked, line for line; literals too when asked."""
    def blank(match):
        token = match.group(0)
        if token[:2] in ("//", "/*"):
            return "\n" * token.count("\n")
        return token if keep_literals else '""' + "\n" * token.count("\n")
    return TOKEN.sub(blank, text)


def code_line_count(name):
    """Lines of a file that are neither blank nor only comment."""
    text = without_comments((ROOT / name).read_text())
    return sum(1 for line in text.split("\n") if line.strip())
