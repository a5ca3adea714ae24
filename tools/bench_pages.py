#!/usr/bin/env python3
"""bench_pages.py [--behind] TSV: writes the charts in docs/charts and, between their marks, the tables
of docs/performance.md from what the benchmarks measured. --behind prints the cases in which the module
is behind its best peer instead."""
import platform
import re
import subprocess
import sys
from datetime import date
from pathlib import Path
from typing import NamedTuple

import bench_charts

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/performance.md"
CHARTS = ROOT / "docs/charts"
# Packages whose code runs in a contender, and what the page calls them.
PACKAGES = {"libc6": "glibc", "libstdc++6": "libstdc++", "libboost-dev": "Boost", "libfmt-dev": "{fmt}",
            "libglib2.0-0": "GLib", "libicu72": "ICU", "libunistring2": "libunistring",
            "libutfcpp-dev": "utfcpp", "coreutils": "coreutils", "findutils": "findutils"}
LINE_CHARTS = {
    "growth-lines": dict(x_title="bytes a line", y_title="ns/byte, lower is better"),
    "growth-lists": dict(x_title="members", y_title="µs/member, lower is better"),
    "growth-copies": dict(x_title="files", y_title="µs/file, lower is better"),
    "growth-removals": dict(x_title="files", y_title="µs/file, lower is better"),
    "growth-threads": dict(x_title="threads", y_title="million lines/s in all, higher is better",
                           from_zero=True, transform=lambda ns: 1e3 / ns),
}


class Cell(NamedTuple):
    name: str
    kind: str
    median: float
    ratio: float


class Job:
    """The cells of one table in both ABIs, by ABI, case and contender."""

    def __init__(self, title, unit):
        self.title, self.unit, self.cells = title, unit, {}
        self.cases, self.names = [], []

    def add(self, abi, case, cell):
        if case not in self.cases:
            self.cases.append(case)
        if cell.name not in self.names:
            self.names.append(cell.name)
        self.cells[abi, case, cell.name] = cell

    def cell(self, abi, case, name):
        return self.cells.get((abi, case, name))

    def of_kind(self, abi, case, kind):
        return [cell for (a, c, _), cell in self.cells.items() if (a, c) == (abi, case) and
                cell.kind == kind]

    def names_of(self, kind):
        """The contenders of a kind, in their order."""
        found = {cell.name for cell in self.cells.values() if cell.kind == kind}
        return [name for name in self.names if name in found]

    def bars(self, abi, case):
        """The module, its best peer and the lowest limit, as far as there are any."""
        return [min(cells, key=lambda cell: cell.median) for cells in
                (self.of_kind(abi, case, kind) for kind in ("module", "peer", "limit")) if cells]


def read_jobs(path):
    jobs = {}
    for row in Path(path).read_text().splitlines():
        abi, ident, title, case, name, kind, unit, median, _, _, ratio = row.split("\t")
        job = jobs.setdefault(ident, Job(title, unit))
        job.add(abi, case, Cell(name, kind, float(median), float(ratio)))
    return jobs


def behind(jobs):
    """Lines about the cases where the module is not ahead, worst first, and a summary."""
    found = sorted(((cell.ratio, abi, job.title, case) for job in jobs.values()
                    for (abi, case, name), cell in job.cells.items() if name == "jxwem"),
                   reverse=True)
    late = [entry for entry in found if entry[0] > 1]
    return ["Behind the best peer, worst first:",
            *(f"{ratio:6.2f}  {abi:7} {title}, {case}" for ratio, abi, title, case in late),
            f"ahead or level in {len(found) - len(late)} of {len(found)} cases"]


def table(rows):
    head, *body = rows
    return "\n".join(["| " + " | ".join(head) + " |",
                      "|---|" + "---:|" * (len(head) - 1),
                      *("| " + " | ".join(row) + " |" for row in body)])


def bar_rows(job):
    rows = [["", "i386", "best peer", "ratio", "limit", "x86-64", "best peer", "ratio", "limit"]]
    for case in job.cases:
        row = [f"`{case}`" if re.search(r"[%$~]", case) else case]
        for abi in bench_charts.ABIS:
            cells = {cell.kind: cell for cell in job.bars(abi, case)}
            module, peer, limit = (cells.get(kind) for kind in ("module", "peer", "limit"))
            if not module:
                row += [""] * 4
                continue
            row += [bench_charts.figure(module.median, job.unit),
                    f"{bench_charts.figure(peer.median, job.unit)} {peer.name}",
                    f"**{module.ratio:.2f}**",
                    bench_charts.figure(limit.median, job.unit) if limit else ""]
        rows.append(row)
    return rows


def line_rows(job, x_title):
    columns = [(abi, name) for abi in bench_charts.ABIS for name in job.names]
    rows = [[x_title] + [f"{abi}: {name}" for abi, name in columns]]
    for case in job.cases:
        cells = [job.cell(abi, case, name) for abi, name in columns]
        rows.append([f"{int(case):,}"] + [bench_charts.digits(cell.median) if cell else ""
                                          for cell in cells])
    return rows


def section(ident, job):
    """The chart's file, and what the page shows between the job's marks."""
    options = LINE_CHARTS.get(ident)
    chart = bench_charts.line_chart(job, **options) if options else bench_charts.bar_chart(job)
    (CHARTS / f"{ident}.svg").write_text(chart)
    rows = line_rows(job, options["x_title"]) if options else bar_rows(job)
    unit = f" ({job.unit})" if options else ""
    return (f"![{job.title}](charts/{ident}.svg)\n\n<details><summary>The figures{unit}</summary>\n\n"
            f"{table(rows)}\n\n</details>")


def output_of(*command):
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    return done.stdout.strip()


def machine():
    """The machine and the versions of everything that was timed."""
    info = Path("/proc/cpuinfo").read_text()
    model = re.search(r"^model name\s*: (.*)$", info, re.MULTILINE)
    cores = len(re.findall(r"^processor\s*:", info, re.MULTILINE))
    memory = int(re.search(r"MemTotal:\s*(\d+)", Path("/proc/meminfo").read_text())[1]) / 2**20
    vectors = [name for name in ("sse2", "avx2", "avx512bw", "avx512_vbmi2")
               if re.search(rf"\b{name}\b", info)]
    versions = []
    for package, name in PACKAGES.items():
        version = output_of("dpkg-query", "-W", "-f", "${Version}", package)
        if version:
            versions.append(f"{name} {re.sub(r'^[0-9]+:|[-+].*$', '', version)}")
    cache = ROOT / "build/bench/CMakeCache.txt"
    if cache.exists() and re.search(r"^JX_BENCH_SIMDUTF:\w+=.", cache.read_text(), re.MULTILINE):
        versions.append("simdutf")
    commit = output_of("git", "-C", str(ROOT), "rev-parse", "--short", "HEAD")
    return "\n".join([
        f"- Measured on {date.today():%-d %B %Y} at commit {commit}.",
        f"- Processor: {model[1] if model else platform.machine()}, {cores} cores "
        f"({', '.join(vectors)}), {memory:.0f} GiB of memory.",
        f"- System: Linux {platform.release()}, files on "
        f"{output_of('stat', '-f', '-c', '%T', '/dev/shm')} (/dev/shm).",
        f"- Compiler: {output_of('g++', '--version').splitlines()[0]}, -O2.",
        "- Peers: " + ", ".join(versions) + "."])


def write_page(sections):
    page = PAGE.read_text()
    for ident, content in sections.items():
        pattern = re.compile(rf"(<!-- {ident} -->\n).*?(<!-- end -->)", re.DOTALL)
        if not pattern.search(page):
            print(f"docs/performance.md has no place for {ident}", file=sys.stderr)
            continue
        page = pattern.sub(lambda found: f"{found[1]}{content}\n{found[2]}", page)
    PAGE.write_text(page)


def main():
    jobs = read_jobs(sys.argv[-1])
    if "--behind" in sys.argv:
        print("\n".join(behind(jobs)))
        return 0
    CHARTS.mkdir(exist_ok=True)
    sections = {ident: section(ident, job) for ident, job in jobs.items()}
    write_page({"machine": machine(), **sections})
    print(f"docs/performance.md and {len(sections)} charts written", file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main())
