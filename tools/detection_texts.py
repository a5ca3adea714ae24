"""Texts in many languages from packages of the archive: those that jxfile's tables for telling encodings
are made from, and others, which they are measured on.

The texts to learn from are the translated messages of programs; those to measure on are manual pages,
guides and the tutorial of an editor. No package is in both lists, and pages that are tables of characters
are not measured."""
import gettext
import gzip
import html
import re
import subprocess
from pathlib import Path

LEARN_PACKAGES = """apt aptitude-common bash coreutils diffutils dpkg dpkg-dev findutils gnupg-l10n grep
  python3-django sed tar util-linux-locales wget""".split()
MEASURE_PACKAGES = """debian-faq-ko installation-guide-amd64 maint-guide-zh-tw manpages-cs manpages-de
  manpages-el manpages-es manpages-fr manpages-hu manpages-it manpages-ja manpages-pl manpages-ru
  manpages-sv manpages-uk manpages-zh vim-runtime""".split()

TABLES = re.compile("8859|latin|ascii|charmap|charsets|koi8|cp125|unicode|utf")
PIECE_CHARS = 12000  # of a long text


def fetch(folder):
    """Downloads and unpacks the packages that are not in the folder yet."""
    folder.mkdir(parents=True, exist_ok=True)
    missing = [name for name in LEARN_PACKAGES + MEASURE_PACKAGES if not (folder / name).is_dir()]
    if not missing:
        return
    subprocess.run(["apt-get", "download", *missing], cwd=folder, check=True)
    for package in sorted(folder.glob("*.deb")):
        target = folder / package.name.split("_")[0]
        subprocess.run(["dpkg-deb", "-x", package, target], check=True)


def messages(folder, language):
    """The translated messages of the packages to learn from, as one text."""
    texts = []
    source = "de" if language == "en" else language
    for package in LEARN_PACKAGES:
        for path in sorted((folder / package).glob(f"**/{source}/LC_MESSAGES/*.mo")):
            with path.open("rb") as file:
                catalogue = gettext.GNUTranslations(file)._catalog
            pick = (lambda pair: pair[0]) if language == "en" else (lambda pair: pair[1])
            texts += [pick(pair) for pair in catalogue.items() if pair[0] and isinstance(pick(pair), str)]
    return "\n".join(texts)


def read(path):
    """A file as text, or "" when it is not UTF-8."""
    data = path.read_bytes()
    if path.suffix == ".gz":
        data = gzip.decompress(data)
    try:
        text = data.decode("utf-8")
    except UnicodeDecodeError:
        return ""
    return html.unescape(re.sub("<[^>]*>", "", text)) if path.suffix == ".html" else text


def pieces(text):
    count = max(1, len(text) // PIECE_CHARS)
    return [text[i * PIECE_CHARS:(i + 1) * PIECE_CHARS] for i in range(count)]


def spread(items, count):
    """As many of the items, evenly from all of them."""
    return [items[i * len(items) // count] for i in range(count)] if len(items) > count else items


def measured_texts(folder, language, count):
    """That many pairs of a name and a text of at most PIECE_CHARS characters."""
    tutor = folder / f"vim-runtime/usr/share/vim/vim90/tutor/tutor.{language.lower()}.utf-8"
    pages = [path for path in sorted((folder / f"manpages-{language[:2]}").glob(
        f"usr/share/man/{language}/man*/*.gz"))
             if not TABLES.search(path.name) and len(read(path)) > 3000]
    guides = sorted((folder / "installation-guide-amd64").glob(f"**/{language}/*.txt.gz"))
    guides += sorted((folder / "debian-faq-ko").glob(f"**/*.{language}.txt.gz"))
    guides += sorted((folder / "maint-guide-zh-tw").glob(f"**/*.{language.lower().replace('_', '-')}.html"))
    found = [(path.name, pieces(read(path))[0]) for path in [tutor] if path.exists()]
    long = [(f"{path.name} {i}", piece) for path in guides for i, piece in enumerate(pieces(read(path)))
            if len(piece) > 3000]
    found += spread([(path.name, pieces(read(path))[0]) for path in pages], count - len(found))
    return found + spread(long, count - len(found))
