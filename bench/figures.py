"""The figures of imageop_bench, as results of a run and as the CSV files that keep them."""
import csv
import json
import pathlib
import platform
import re

COLUMNS = ["target", "benchmark", "ns", "mpixel_per_s", "calls"]


def number(value):
    if not value:
        return "–"
    digits = 0 if value >= 20 else 1 if value >= 2 else 2 if value >= 0.095 else 3
    return f"{value:.{digits}f}"


class Run:
    """What one vector target of one machine took: nanoseconds, Mpixel/s and calls by benchmark name."""

    def __init__(self, machine, target, rows):
        self.machine, self.target = machine, target
        self.maker = machine.partition(" ")[0].partition("(")[0]
        self.ns = {name: ns for name, ns, _, _ in rows}
        self.speed = {name: speed for name, _, speed, _ in rows if speed}
        self.calls = {name: calls for name, _, _, calls in rows}

    def ratio(self, name, to):
        """How many times as fast `name` is; None if one was not measured."""
        return self.ns[to] / self.ns[name] if self.ns.get(name) and to in self.ns else None

    def names(self, start):
        """What the names that start so go on with, sorted."""
        return sorted(name.removeprefix(start) for name in self.ns if name.startswith(start))

    def cell(self, name, peer):
        """Nanoseconds, and how many times as fast as the peer."""
        return f"{number(self.ns[name])} / {number(self.ratio(name, peer))}" if name in self.ns else "–"


def machine():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return f"{line.partition(':')[2].strip()}, {platform.machine()}"
    return platform.machine()


def read_results(path):
    """What a run of the program wrote: the context, the failures and rows of medians."""
    with open(path) as file:
        content = json.load(file)
    failed = sorted({f'{b["run_name"]}: {b["error_message"]}'
                     for b in content["benchmarks"] if b.get("error_occurred")})
    rows = []
    for b in content["benchmarks"]:
        if b.get("aggregate_name") != "median":
            continue
        name = re.sub("(/iterations:[0-9]+)?(/manual_time)?$", "", b["run_name"])
        speed = b.get("pixels_per_second", b.get("items_per_second", 0))
        rows.append((name, b.get("ns", b["cpu_time"]), speed / 1e6, int(b.get("calls", 1))))
    return content["context"], failed, sorted(rows)


def write(path, facts, runs):
    """@param runs pairs of a vector target and its rows, the best one first."""
    with open(path, "w", newline="") as file:
        file.writelines(f"# {name}: {value}\n" for name, value in facts.items())
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(COLUMNS)
        for target, rows in runs:
            writer.writerows([target, name, f"{ns:.1f}", f"{speed:.1f}", calls] for name, ns, speed, calls in rows)


def read(path):
    """@return the facts of the machine, and a Run for each vector target, the best one first."""
    facts, rows = {}, {}
    with open(path, newline="") as file:
        lines = file.read().splitlines()
    for line in lines:
        if line.startswith("# "):
            name, _, value = line[2:].partition(": ")
            facts[name] = value
    for row in csv.DictReader(line for line in lines if not line.startswith("#")):
        rows.setdefault(row["target"], []).append(
            (row["benchmark"], float(row["ns"]), float(row["mpixel_per_s"]), int(row.get("calls") or 1)))
    return facts, [Run(facts["machine"], target, those) for target, those in rows.items()]
