#!/usr/bin/env python3
"""Writes figures, tables and a plot: report.py DIRECTORY COMMIT RESULTS.json...

The results are those of imageop_bench, the first of the best vector target. Exit status 1 if a benchmark failed its
check.
"""
import csv
import json
import pathlib
import platform
import re
import subprocess
import sys

MODES = ["Normal", "Multiply", "Screen", "Overlay", "HardLight", "Darken", "Lighten", "Difference", "Exclusion",
         "ColorDodge", "ColorBurn", "SoftLight"]
CONTENTS = "abcde"
FORMAT_BITS = {"4": 16, "5": 16, "6": 24, "7": 32, "8": 32, "9": 32}


class Run:
    """The medians of one run of the program: nanoseconds and pixels per second by benchmark name."""

    def __init__(self, path):
        with open(path) as file:
            content = json.load(file)
        self.target = content["context"]["target"]
        self.compiler = content["context"]["compiler"]
        self.failed = sorted({f'{b["run_name"]}: {b["error_message"]}'
                              for b in content["benchmarks"] if b.get("error_occurred")})
        self.ns, self.speed = {}, {}
        for b in content["benchmarks"]:
            if b.get("aggregate_name") != "median":
                continue
            name = b["run_name"].removesuffix("/manual_time")
            self.ns[name] = b.get("ns", b["cpu_time"])
            self.speed[name] = b.get("pixels_per_second", b.get("items_per_second"))

    def ratio(self, name, to):
        """How many times as fast `name` is; empty if one was not measured."""
        return self.ns[to] / self.ns[name] if name in self.ns and to in self.ns else None

    def ratios(self, case):
        """Of a blend case, to the scalar loop, to memcpy and to pixman."""
        _, pair, *_, size = case.split("/")
        copy = f"Memcpy/{FORMAT_BITS[pair[0]]}bit/{size}"
        return [self.ratio(f"Blend/{case}", to) for to in (f"Scalar/{case}", copy, f"Pixman/{case}")]

    def mpixel(self, name):
        return self.speed[name] / 1e6 if self.speed.get(name) else None


def number(value):
    if value is None:
        return "–"
    digits = 0 if value >= 20 else 1 if value >= 2 else 2 if value >= 0.095 else 3
    return f"{value:.{digits}f}"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|---" + "|--:" * (len(head) - 1) + "|"]
    return lines + ["| " + " | ".join(row) + " |" for row in rows] + [""]


def hot(mode, content):
    return f"{mode}/7<-7/{content}/rect/plain/256"


def modes(run):
    cases = [[hot(mode, content) for content in CONTENTS] for mode in MODES]
    lines = [f"## Modes, {run.target}", "", "Mpixel/s:", ""]
    lines += table(["mode", *CONTENTS], ([m, *(number(run.mpixel(f"Blend/{c}")) for c in row)]
                                         for m, row in zip(MODES, cases)))
    lines += ["Times as fast as the scalar loop / memcpy / pixman:", ""]
    return lines + table(["mode", *CONTENTS], ([m, *(" / ".join(map(number, run.ratios(c))) for c in row)]
                                               for m, row in zip(MODES, cases)))


def others(run):
    rows = []
    for name in run.ns:
        kind, _, case = name.partition("/")
        if kind != "Blend" or re.search("7<-7/./rect/plain/256", case):
            continue
        mode, pair, content, loop, form, size = case.split("/")
        plain = run.ratio(name, "Blend/" + hot(mode, content)) if size == "256" else None
        label = f"{mode} {pair.replace('<-', '←')} {content} {loop} {form} {size}²"
        rows.append([label, number(run.mpixel(name)), *map(number, run.ratios(case)), number(plain)])
    return ["## Formats, masks, groups and sizes", "",
            "Times as fast as the scalar loop, memcpy, pixman, and as the same mode and content of the tables above:", ""
            ] + table(["case", "Mpixel/s", "scalar", "memcpy", "pixman", "plain 7←7"], sorted(rows))


def rest(run):
    def of(kind):
        return sorted(name.partition("/")[2] for name in run.ns if name.startswith(kind + "/"))

    lines = ["## Set-up", ""]
    lines += table(["what", "ns"], ([what, number(run.ns[f"Setup/{what}"])] for what in of("Setup")))
    lines += ["## Loaders", "", "Against the bare library reading the same file; for the bitmap, reading its bytes.", ""]
    lines += table(["file", "ms", "times as fast"],
                   ([f, f'{run.ns[f"Load/{f}"] / 1e6:.3f}', number(run.ratio(f"Load/{f}", f"BareLoad/{f}"))]
                    for f in of("Load")))
    lines += ["## Utilities", "", "2048×2048 pixels; formats by their number. Times as fast as memcpy of the bytes:", ""]
    return lines + table(["what", "ms", "memcpy"],
                         ([u.replace("/format:", " "), f'{run.ns[f"Util/{u}"] / 1e6:.3f}',
                           number(run.ratio(f"Util/{u}", f"Util/Memcpy/{u.partition('/')[2]}"))] for u in of("Util")))


INTRODUCTION = """# How fast

Written by `scripts/bench`; `scripts/bench-compare BEFORE.csv AFTER.csv` says what got slower by more than 10 %.

{facts}

Each figure is the median of interleaved repetitions on one core, each in turn the median of its paintings. Targets are
put back, untimed, before each painting. Before it is timed, every case is checked to give the bytes of the scalar loop
(pixman, which rounds: all but 1 % of the bytes within 3). The scalar loop goes pixel by pixel over the steps that
define the result. memcpy copies as many bytes as the destination has. – means that there is no such operation.

Contents: a opaque source at constant alpha 128 over opaque; b random source alpha over opaque; c random over random;
d sprite (60 % transparent, 30 % opaque, 10 % edge pixels, in runs) over opaque; e the same over alpha 128. Pairs are
the numbers of the destination's and the source's `PixelFormat`. Without another word: 256×256 pixels of 32-bit
premultiplied colour onto the same. Images are painted whole, so that without a mask all rows make one span; a
rectangle inside a wider image is painted row by row.

![Speed by mode and content](speed.png)
"""


def plot(runs, out):
    series = [(run.target, run, "Blend") for run in reversed(runs)]
    series += [("pixman", runs[0], "Pixman"), ("scalar loop", runs[0], "Scalar")]
    series = [s for s in series if any(f"{s[2]}/{hot(m, 'a')}" in s[1].ns for m in MODES)]
    blocks = []
    for content in "abce":
        rows = [" ".join([mode, *(str(run.mpixel(f"{kind}/{hot(mode, content)}") or "NaN") for _, run, kind in series)])
                for mode in MODES]
        blocks.append(f"$content_{content} << EOD\n" + "\n".join(rows) + "\nEOD\n")
    titles = {"a": "a: constant alpha over opaque", "b": "b: random over opaque", "c": "c: random over random",
              "e": "e: sprite over alpha 128"}
    script = "".join(blocks) + f"""
set terminal pngcairo size 1200,800 font "sans,10"
set output "{out}"
set multiplot layout 2,2
set style data histograms
set style fill solid
set logscale y
set yrange [10:30000]
set ylabel "Mpixel/s"
set grid ytics
set xtics rotate by -35 scale 0
set key top right horizontal samplen 1 width -2
"""
    for content, title in titles.items():
        columns = ", ".join(f"$content_{content} using {i + 2}:xtic(1) title '{name.replace('_', ' ')}'"
                            for i, (name, _, _) in enumerate(series))
        script += f"set title '{title}'\nplot {columns}\n"
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def machine():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return f"{line.partition(':')[2].strip()}, {platform.machine()}"
    return platform.machine()


def main():
    out, commit, runs = pathlib.Path(sys.argv[1]), sys.argv[2], [Run(path) for path in sys.argv[3:]]
    failed = [failure for run in runs for failure in run.failed]
    if failed:
        print("\n".join(failed), file=sys.stderr)
        return 1
    facts = {"machine": machine(), "compiler": runs[0].compiler, "commit": commit}
    with open(out / "figures.csv", "w", newline="") as file:
        file.writelines(f"# {name}: {value}\n" for name, value in facts.items())
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(["target", "benchmark", "ns", "mpixel_per_s"])
        for run in runs:
            writer.writerows([run.target, name, f"{run.ns[name]:.1f}", f"{run.mpixel(name) or 0:.1f}"]
                             for name in sorted(run.ns))
    lines = [INTRODUCTION.format(facts="\n".join(f"- {name}: {value}" for name, value in facts.items()))]
    for run in runs:
        lines += modes(run)
    lines += others(runs[0]) + rest(runs[0])
    (out / "README.md").write_text("\n".join(lines).rstrip() + "\n")
    plot(runs, out / "speed.png")
    return 0


if __name__ == "__main__":
    sys.exit(main())
