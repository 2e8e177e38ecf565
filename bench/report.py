#!/usr/bin/env python3
"""Writes figures, tables and plots: report.py DIRECTORY COMMIT RESULTS.json...

The results are those of imageop_bench, the first of the best vector target. They replace the figures of this machine's
maker in the directory; the tables and plots are of all figures there. Exit status 1 if a benchmark failed its check.
"""
import datetime
import pathlib
import re
import sys

import figures
import plots
from figures import number
from plots import MODES, hot

CONTENTS = "abcde"
FORMAT_BITS = {"4": 16, "5": 16, "6": 24, "7": 32, "8": 32, "9": 32}


def table(head, rows):
    """@return lines; none without rows."""
    lines = ["| " + " | ".join(row) + " |" for row in rows]
    return ["| " + " | ".join(head) + " |", "|---" + "|--:" * (len(head) - 1) + "|", *lines, ""] if lines else []


def ratios(run, case):
    """Of a blend case, to the scalar loop, to memcpy and to pixman."""
    _, pair, *_, size = case.split("/")
    copy = f"Memcpy/{FORMAT_BITS[pair[0]]}bit/{size}"
    return [run.ratio(f"Blend/{case}", to) for to in (f"Scalar/{case}", copy, f"Pixman/{case}")]


def pages(run):
    """All calls of a page, and those that the plain loop and pixman make as well."""
    head = ["page", "calls", "kpixel", "ns a call", "shared calls", "ns a call", "scalar", "pixman"]
    lines = []
    for group, title in {"own": "The project's own pages:", "others": "Other pages:"}.items():
        rows, sums = [], {}
        for name in [n for n in run.names(f"Pages/All/{group}/") if run.calls[f"Pages/All/{group}/{n}"]]:
            keys = {way: f"Pages/{way}/{group}/{name}" for way in ("All", "Library", "Scalar", "Pixman")}
            time = {way: run.ns.get(key, 0) * run.calls.get(key, 0) for way, key in keys.items()}
            facts = [run.calls[keys["All"]], run.speed.get(keys["All"], 0) * time["All"] / 1e6, time["All"],
                     run.calls[keys["Library"]], *(time[way] for way in ("Library", "Scalar", "Pixman"))]
            rows.append((name, facts))
            sums = [a + b for a, b in zip(sums or [0] * len(facts), facts)]
        if rows:
            lines += [title, ""] + table(head, [page_row(*row) for row in [("**sum**", sums), *rows]])
    return lines


def page_row(name, facts):
    calls, kpixel, time, shared, library, scalar, pixman = facts
    each = library / shared if shared else 0
    return [name, str(calls), number(kpixel), number(time / calls), str(shared), number(each),
            *(number(other / library if library else 0) for other in (scalar, pixman))]


def masks(run):
    kinds = dict.fromkeys(name.rpartition("/")[0] for name in run.names("Masks/Library/"))
    return table(["source and mask", "16²", "64²", "256²"],
                 ([kind.replace("/", ", "), *(run.cell(f"Masks/Library/{kind}/{size}", f"Masks/Pixman/{kind}/{size}")
                                              for size in (16, 64, 256))] for kind in kinds))


def pictures(run):
    def cell(name):
        return run.cell(f"Pictures/Library/{name}", f"Pictures/Pixman/{name}")

    if not run.names("Pictures/"):
        return []
    return table(["Normal", "16²", "64²", "256²"],
                 ([kind, *(cell(f"Normal/{kind}/{size}") for size in (16, 64, 256))] for kind in CONTENTS + "fo")
                 ) + table(["256²", "d", "f", "o"],
                           ([mode, *(cell(f"{mode}/{kind}/256") for kind in "dfo")] for mode in MODES))


def groups(run):
    def each(part, ending, content):
        time = run.ns[f"Groups/{part}/{ending}/{content}"]
        return number((time - run.ns[f"Groups/End/nothing/{content}"] if part == "End" else time) / 65536)

    endings = [e for e in dict.fromkeys(n.partition("/")[0] for n in run.names("Groups/End/")) if e != "nothing"]
    return table(["end", "over opaque", "over random", "all, over opaque", "all, over random"],
                 ([e, *(each(part, e, c) for part in ("End", "All") for c in "bc")] for e in endings))


def threads(run):
    return table(["threads", "ms", "times as fast as one", "arithmetic alone"],
                 ([n, number(run.ns[f"Threads/{n}"] * run.calls[f"Threads/{n}"] / 1e6),
                   *(number(run.ratio(f"{kind}/{n}", f"{kind}/1")) for kind in ("Threads", "Arithmetic"))]
                  for n in run.names("Threads/")))


def modes(run):
    cases = [[hot(mode, content) for content in CONTENTS] for mode in MODES]
    lines = ["Mpixel/s:", ""]
    lines += table(["mode", *CONTENTS], ([m, *(number(run.speed.get(f"Blend/{c}")) for c in row)]
                                         for m, row in zip(MODES, cases)))
    lines += ["Times as fast as the scalar loop / memcpy / pixman:", ""]
    return lines + table(["mode", *CONTENTS], ([m, *(" / ".join(map(number, ratios(run, c))) for c in row)]
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
        rows.append([label, number(run.speed.get(name)), *map(number, ratios(run, case)), number(plain)])
    return table(["case", "Mpixel/s", "scalar", "memcpy", "pixman", "plain 7←7"], sorted(rows))


def setup(run):
    return table(["what", "ns"], ([what, number(run.ns[f"Setup/{what}"])] for what in run.names("Setup/")))


def loaders(run):
    return table(["file", "ms", "times as fast"],
                 ([f, f'{run.ns[f"Load/{f}"] / 1e6:.3f}', number(run.ratio(f"Load/{f}", f"BareLoad/{f}"))]
                  for f in run.names("Load/")))


def utilities(run):
    return table(["what", "ms", "memcpy"],
                 ([u.replace("/format:", " "), f'{run.ns[f"Util/{u}"] / 1e6:.3f}',
                   number(run.ratio(f"Util/{u}", f"Util/Memcpy/{u.partition('/')[2]}"))] for u in run.names("Util/")))


def main():
    out, commit = pathlib.Path(sys.argv[1]), sys.argv[2]
    results = [figures.read_results(path) for path in sys.argv[3:]]
    failed = [failure for _, failures, _ in results for failure in failures]
    if failed:
        print("\n".join(failed), file=sys.stderr)
        return 1
    facts = {"machine": figures.machine(), "compiler": results[0][0]["compiler"], "commit": commit,
             "date": datetime.date.today().isoformat()}
    maker = re.match("[A-Za-z0-9]+", facts["machine"])[0].lower()
    figures.write(out / f"figures-{maker}.csv", facts, [(context["target"], rows) for context, _, rows in results])
    # This machine first.
    files = sorted(out.glob("figures-*.csv"), key=lambda path: (path.stem != f"figures-{maker}", path.name))
    machines = [figures.read(path) for path in files]
    best = [runs[0] for _, runs in machines]

    text = pathlib.Path(__file__).with_name("report.md.in").read_text()
    lines = table(["machine", "compiler", "commit", "date", "targets"],
                  ([f["machine"], f["compiler"], f["commit"], f["date"], ", ".join(r.target for r in runs)]
                   for f, runs in machines))
    sections = {"machines": "\n".join(lines)}
    for section in (pages, masks, pictures, groups, threads, others, setup, loaders, utilities):
        parts = [[f"{run.maker}, {run.target}:", "", *section(run)] for run in best if section(run)]
        sections[section.__name__] = "\n".join(line for part in parts for line in part)
    sections["beside"] = "\n".join(table(["mode", *CONTENTS], (
        [m, *(" / ".join(number(run.ratio(f"Blend/{hot(m, c)}", f"Pixman/{hot(m, c)}")) for run in best)
              for c in CONTENTS)] for m in MODES)))
    sections["makers"] = " / ".join(run.maker for run in best)
    sections["modes"] = "\n".join(line for _, runs in machines for run in runs
                                  for line in [f"### {run.maker}, {run.target}", "", *modes(run)])
    for name, value in sections.items():
        text = text.replace("{" + name + "}", value.rstrip("\n"))
    (out / "README.md").write_text(text)
    plots.modes(machines[0][1], out / "speed.png")
    plots.pages(best[0], out / "pages.png")
    return 0


if __name__ == "__main__":
    sys.exit(main())
