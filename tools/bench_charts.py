"""Draws the charts of docs/performance.md as SVG. One file serves light and dark pages: it brings its
own background and follows the reader's colour scheme."""
import math
from xml.sax.saxutils import escape

WIDTH, MARGIN, GAP = 860, 18, 24
PANEL = (WIDTH - 2 * MARGIN - GAP) / 2
BARS = 278          # room for bars in a panel; the figures are to the right
BAR, CASE = 15, 19  # heights of a bar and of a case's name
WIDEST = 2.2        # ratios beyond are cut off
ENDS = 40           # room for the figures at both ends of a line
ABIS = ("i386", "x86-64")
COLOURS = {  # class: (light, dark)
    "back": ("#ffffff", "#0d1117"), "text": ("#1f2328", "#e6edf3"), "soft": ("#59636e", "#9198a1"),
    "line": ("#d1d9e0", "#3d444d"), "module": ("#0969da", "#388bfd"), "peer": ("#c8d1da", "#454d57"),
    "limit": ("#c6ecd0", "#1d4a2f"), "behind": ("#bc4c00", "#f0883e"), "inside": ("#ffffff", "#0d1117"),
    "second": ("#8250df", "#ab7df8"), "other": ("#6e7781", "#8b949e"),
}


def style():
    def rules(which):
        return "".join(f".{name}{{fill:{pair[which]}}}.{name}-line{{stroke:{pair[which]}}}"
                       for name, pair in COLOURS.items()) + f".halo{{stroke:{COLOURS['back'][which]}}}"
    return (f"<style>text{{font-family:-apple-system,'Segoe UI','Noto Sans',Helvetica,Arial,"
            f"sans-serif;font-size:11px}}.halo{{paint-order:stroke;stroke-width:3px}}.bold{{font-weight:600}}.title{{font-size:15px}}"
            f"{rules(0)}@media (prefers-color-scheme: dark){{{rules(1)}}}</style>")


def text(x, y, words, classes="text", anchor="start"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" class="{classes}" text-anchor="{anchor}">'
            f"{escape(words)}</text>")


def box(x, y, width, height, classes, radius=2):
    return (f'<rect x="{x:.1f}" y="{y:.1f}" width="{max(width, 1):.1f}" height="{height}" '
            f'rx="{radius}" class="{classes}"/>')


def line(x1, y1, x2, y2, classes, width=1):
    return (f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{classes}" '
            f'stroke-width="{width}"/>')


def document(title, height, parts):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height:.0f}" '
            f'viewBox="0 0 {WIDTH} {height:.0f}" role="img" aria-label="{escape(title)}">\n{style()}\n'
            + "\n".join([box(0, 0, WIDTH, f"{height:.0f}", "back", 6), *parts]) + "\n</svg>\n")


def digits(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def figure(value, unit):
    """A time with its unit, in the unit that needs the fewest digits."""
    unit = unit.split("/")[0]
    for larger in {"ns": ["µs", "ms", "s"], "ms": ["s"]}[unit]:
        if value < 1000:
            break
        value, unit = value / 1000, larger
    return f"{digits(value)} {unit}"


def cut(words, room):
    most = int(room / 5.9)
    return words if len(words) <= most else words[:most - 1] + "…"


def bar(x, y, cell, kind, scale, unit):
    """One bar with its name in it, and its figure and ratio at the right edge of the panel."""
    width = min(cell.ratio, WIDEST) * scale
    parts = [box(x, y, width, BAR - 2, kind)]
    if cell.ratio > WIDEST:  # a gap near the end says that the bar is longer
        parts.append(f'<path d="M{x + width - 14:.1f} {y + BAR - 2}l5 -{BAR - 2}h4l-5 {BAR - 2}z" '
                     'class="back"/>')
    baseline = y + BAR - 5
    if kind == "module":
        inside = width > 52
        parts.append(text(x + 5 if inside else x + width + 5, baseline, cell.name,
                          "bold inside" if inside else "bold text"))
    else:
        parts.append(text(x + 5, baseline, cut(cell.name, BARS), "text"))
    ratio = "bold behind" if kind == "module" and cell.ratio > 1.05 else (
        "bold text" if kind == "module" else "soft")
    right = x + PANEL
    parts.append(text(right - 48, baseline, figure(cell.median, unit),
                      "bold text" if kind == "module" else "soft", "end"))
    parts.append(text(right, baseline, f"{cell.ratio:.2f} ×", ratio, "end"))
    return parts


def legend(x, y, entries):
    parts = []
    for kind, words in entries:
        parts += [box(x, y - 9, 11, 11, kind), text(x + 16, y, words, "soft")]
        x += 34 + 6.0 * len(words)
    return parts


def bar_chart(job):
    """Module, best peer and limit for every case: one panel an ABI, one group of bars a case."""
    parts = [text(MARGIN, 26, job.title, "title bold text")]
    parts += legend(MARGIN, 46, [("module", "the module"), ("peer", "its best peer (1 ×)"),
                                 ("limit", "the least work that does it")])
    parts.append(text(WIDTH - MARGIN, 46, "time, shorter is better", "soft", "end"))
    longest = max([1.0] + [min(cell.ratio, WIDEST) for abi in ABIS for case in job.cases
                           for cell in job.bars(abi, case)])
    height = 0
    for abi in ABIS:
        x, y = MARGIN + ABIS.index(abi) * (PANEL + GAP), 70
        parts.append(text(x, y, abi, "bold text"))
        parts.append(line(x, y + 6, x + PANEL, y + 6, "line-line"))
        y += 8
        for case in job.cases:
            cells = job.bars(abi, case)
            parts.append(text(x, y + CASE - 5, case, "bold soft"))
            y += CASE
            for cell in cells:
                parts += bar(x, y, cell, cell.kind, BARS / longest, job.unit)
                y += BAR
            y += 5
        height = max(height, y)
    return document(job.title, height + 8, parts)


def short_count(value):
    for size, mark in ((1e6, "M"), (1e3, "k")):
        if value >= size:
            return f"{value / size:g}{mark}"
    return f"{value:g}"


class Axes:
    """One panel of a line chart; x is logarithmic, y too unless it starts at zero."""

    def __init__(self, left, top, xs, ys, from_zero):
        self.left, self.top, self.width, self.height = left + 34, top, PANEL - 34, 190
        self.x_range = (math.log10(min(xs)), math.log10(max(xs)))
        self.from_zero = from_zero
        if from_zero:
            step = 10 ** math.floor(math.log10(max(ys)))
            step = step if max(ys) / step > 3 else step / 2
            self.ticks = [i * step for i in range(math.ceil(max(ys) * 1.1 / step) + 1)]
            self.y_range = (0, self.ticks[-1])
        else:
            steps = [m * 10.0 ** e for e in range(-4, 8) for m in (1, 2, 5)]
            first = max(s for s in steps if s <= min(ys) * 0.95)
            last = min(s for s in steps if s >= max(ys) * 1.15)
            self.ticks = [s for s in steps if first <= s <= last]
            self.y_range = (math.log10(first), math.log10(last))

    def x(self, value):
        low, high = self.x_range
        inner = self.width - 2 * ENDS
        return self.left + ENDS + (math.log10(value) - low) / (high - low) * inner

    def y(self, value):
        low, high = self.y_range
        share = ((value if self.from_zero else math.log10(value)) - low) / (high - low)
        return self.top + self.height - share * self.height

    def grid(self, xs):
        parts = []
        for tick in self.ticks:
            parts.append(line(self.left, self.y(tick), self.left + self.width, self.y(tick),
                              "line-line"))
            parts.append(text(self.left - 6, self.y(tick) + 4, f"{tick:g}", "soft", "end"))
        for value in xs:
            parts.append(text(self.x(value), self.top + self.height + 16, short_count(value), "soft",
                              "middle"))
        return parts


def labels(axes, series):
    """The figures at both ends of every line, moved apart where they would overlap."""
    parts = []
    for which, shift, anchor in ((0, -8, "end"), (-1, 8, "start")):
        ends = sorted((axes.y(points[which][1]), points[which], colour) for points, colour in series)
        last = -math.inf
        for y, (x, value), colour in ends:
            last = max(y + 4, last + 12)
            parts.append(text(axes.x(x) + shift, last, digits(value), f"bold halo {colour}", anchor))
    return parts


def line_chart(job, x_title, y_title, from_zero=False, transform=lambda value: value):
    """A line for every contender: one panel an ABI."""
    colours = dict(zip(job.names_of("module"), ("module", "second")))
    colours |= dict(zip(job.names_of("peer"), ("other", "peer")))
    parts = [text(MARGIN, 26, job.title, "title bold text")]
    parts += legend(MARGIN, 46, [(colour, name) for name, colour in colours.items()])
    parts.append(text(WIDTH - MARGIN, 46, y_title, "soft", "end"))
    xs = [float(case) for case in job.cases]
    lines = {abi: [([(float(case), transform(job.cell(abi, case, name).median))
                     for case in job.cases if job.cell(abi, case, name)], colour)
                   for name, colour in colours.items()] for abi in ABIS}
    ys = [y for series in lines.values() for points, _ in series for _, y in points]
    for abi in ABIS:
        series = [entry for entry in lines[abi] if entry[0]]
        if not series:
            continue
        left = MARGIN + ABIS.index(abi) * (PANEL + GAP)
        axes = Axes(left, 88, xs, ys, from_zero)
        parts.append(text(left, 74, abi, "bold text"))
        parts += axes.grid(xs)
        parts.append(text(axes.left + axes.width / 2, axes.top + axes.height + 34, x_title, "soft",
                          "middle"))
        for points, colour in series:
            where = " ".join(f"{axes.x(x):.1f},{axes.y(y):.1f}" for x, y in points)
            parts.append(f'<polyline points="{where}" fill="none" class="{colour}-line" '
                         'stroke-width="2.2" stroke-linejoin="round"/>')
            parts += [f'<circle cx="{axes.x(x):.1f}" cy="{axes.y(y):.1f}" r="3" class="{colour}"/>'
                      for x, y in points]
        parts += labels(axes, series)
    return document(job.title, 326, parts)
