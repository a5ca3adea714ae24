"""Turns text from Doxygen's XML into the source of a manual page, as lists of lines."""
import re
import textwrap

WIDTH = 78  # of a line of the source
ESCAPES = {"\\": "\\e", "~": "\\(ti", "^": "\\(ha", "'": "\\(aq", "`": "\\(ga"}


def escaped(text):
    text = re.sub(r"[\\~^'`]", lambda m: ESCAPES[m[0]], text)
    return re.sub(r"(?<![a-z])-|-(?![a-z\n])", r"\\-", text)


def bold(text):
    return f"\\fB{text}\\fP"


def hard(name):
    """A name that is not broken at its hyphens."""
    return name.replace("-", "\\-")


def line_safe(line):
    return "\\&" + line if line[:1] in (".", "'") else line


def filled(text):
    """Lines of a paragraph."""
    return [line_safe(line) for line in
            textwrap.wrap(" ".join(text.split()), WIDTH, break_long_words=False, break_on_hyphens=False)]


def inline(element):
    """The text of an element; what is declared somewhere is bold."""
    text = escaped(element.text or "")
    for child in element:
        inner = inline(child)
        text += (bold(inner) if child.tag == "ref" else inner) + escaped(child.tail or "")
    return text


def block(lines):
    return [".nf", *(line_safe(escaped(line)) for line in lines), ".fi"]


def paragraph_parts(para):
    """A paragraph as parts: text, or the lines of a list or of a block."""
    text, parts = escaped(para.text or ""), []
    for child in para:
        if child.tag == "verbatim":
            parts += [filled(text), block(textwrap.dedent(child.text.strip("\n")).split("\n"))]
            text = ""
        elif child.tag == "itemizedlist":
            parts.append(filled(text))
            text = ""
            for item in child:
                parts.append([".IP \\(bu 2", *filled(" ".join(inline(line) for line in item))])
        else:
            text += bold(inline(child)) if child.tag == "ref" else inline(child)
        text += escaped(child.tail or "")
    return [part for part in parts + [filled(text)] if part]


def described(element):
    """The description of an element, as lines; the brief one begins the first paragraph."""
    brief, detailed = (element.find(tag) for tag in ("briefdescription", "detaileddescription"))
    paragraphs = [para for part in (brief, detailed) if part is not None for para in part.findall("para")
                  if (para.text or "").strip() or len(para)]
    parts = [paragraph_parts(para) for para in paragraphs]
    if brief is not None and len(brief) and len(parts) > 1:
        first = parts.pop(0)
        if parts[0][0][0].startswith("."):
            parts[0] = first + parts[0]
        else:
            parts[0][0] = filled(" ".join(first[0] + parts[0][0]))
    lines = []
    for paragraph in parts:
        for part in paragraph:
            lines += ([".PP"] if lines and not part[0].startswith(".IP") else []) + part
    return lines
