#!/usr/bin/env python3
"""Runs the benchmark, prints its table, and checks or plots the ratios of our time to our peers'."""
import argparse
import csv
import json
import pathlib
import re
import subprocess
import sys

import chart
import masking

HERE = pathlib.Path(__file__).resolve().parent
MISSED_BY = 0.9  # a goal is missed when less than this part of it is reached


def command_line():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--filter", default=".", metavar="REGEX",
                        help="only the rows whose function|input|variant matches")
    parser.add_argument("--repetitions", type=int, default=15)
    parser.add_argument("--min-time", type=float, default=0.02, metavar="SECONDS",
                        help="of one repetition of one variant")
    parser.add_argument("--no-mask", action="store_true", help="leave out korv-mask")
    parser.add_argument("--no-run", action="store_true", help="use the JSON of an earlier run")
    parser.add_argument("--check", action="store_true",
                        help="fail when a goal of bench/goals.csv is missed by more than 10 %%")
    parser.add_argument("--plot", action="store_true", help="draw docs/performance.svg")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    return parser.parse_args()


def run_benchmark(options):
    """The benchmark's own JSON; the variants of all rows are interleaved at random."""
    raw = options.build / "google-benchmark.json"
    program = subprocess.run([options.build / "bin/korv_bench",
                              f"--benchmark_filter={options.filter}",
                              f"--benchmark_repetitions={options.repetitions}",
                              f"--benchmark_min_time={options.min_time}",
                              "--benchmark_enable_random_interleaving=true",
                              f"--benchmark_out={raw}", "--benchmark_out_format=json"],
                             check=False, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                             text=True)
    if program.returncode or not raw.stat().st_size:
        raise SystemExit(program.stderr)
    return json.loads(raw.read_text())


def least_times(raw):
    """{(function, input): {variant: least nanoseconds of one unit}}, in the order of the program.

    What other work on the machine adds is never negative."""
    times = {}
    for entry in raw["benchmarks"]:
        if entry["run_type"] != "iteration":
            continue
        function, shape, variant = entry["run_name"].removesuffix("/manual_time").split("|")
        nanoseconds = entry["real_time"] * {"ns": 1, "us": 1e3, "ms": 1e6}[entry["time_unit"]]
        row = times.setdefault(entry["family_index"], (function, shape, variant, []))
        row[3].append(nanoseconds / entry["units"])
    table = {}
    for _, (function, shape, variant, values) in sorted(times.items()):
        table.setdefault((function, shape), {})[variant] = min(values)
    return table


def rows_of(table, goals):
    """One row for each peer; the literal steps are one where a goal says so or there is no other."""
    for (function, shape), times in table.items():
        ours = times.get("ours")
        if ours is None:
            continue
        peers = [name for name in times if name not in ("ours", "literal")]
        if "literal" in times and (not peers or (function, shape, "literal") in goals):
            peers.append("literal")
        for peer in peers:
            yield {"function": function, "input": shape, "peer": peer, "unit": "ns", "ours": ours,
                   "literal": times.get("literal"), "peer_time": times[peer],
                   "ratio": times[peer] / ours}


def read_goals():
    with open(HERE / "goals.csv", newline="", encoding="utf-8") as file:
        return {(goal["function"], goal["input"], goal["peer"]): float(goal["ratio"])
                for goal in csv.DictReader(file)}


def add_goals(rows, goals):
    for row in rows:
        row["goal"] = goals.get((row["function"], row["input"], row["peer"]))
        row["missed"] = row["goal"] is not None and row["ratio"] < row["goal"] * MISSED_BY


def number(value):
    if value is None:
        return "-"
    return f"{value:.2f}" if value < 100 else f"{value:.0f}"


def print_table(rows):
    heads = ["function", "input", "ours", "literal", "peer", "peer's", "ratio", "goal", ""]
    lines = [heads]
    for row in rows:
        unit = row["unit"]
        mark = "missed" if row["missed"] else ""
        lines.append([row["function"], row["input"], number(row["ours"]) + " " + unit,
                      number(row["literal"]), row["peer"], number(row["peer_time"]),
                      number(row["ratio"]), number(row["goal"]), mark])
    widths = [max(len(line[i]) for line in lines) for i in range(len(heads))]
    right = {2, 3, 5, 6, 7}
    for line in lines:
        cells = [cell.rjust(width) if i in right else cell.ljust(width)
                 for i, (cell, width) in enumerate(zip(line, widths))]
        print("  ".join(cells).rstrip())


def check(rows, goals, whole):
    """Fails for a missed goal, and in a whole run for a goal without a row."""
    missed = [row for row in rows if row["missed"]]
    measured = {(row["function"], row["input"], row["peer"]) for row in rows}
    unmeasured = [goal for goal in goals if goal not in measured] if whole else []
    for row in missed:
        print(f"missed: {row['function']}, {row['input']}, {row['peer']}: "
              f"{row['ratio']:.2f}, goal {row['goal']}", file=sys.stderr)
    for goal in unmeasured:
        print(f"not measured: {', '.join(goal)}", file=sys.stderr)
    met = sum(1 for row in rows if row["goal"] is not None and not row["missed"])
    print(f"goals: {met} met, {len(missed)} missed, {len(unmeasured)} not measured")
    return not missed and not unmeasured


def main():
    options = command_line()
    goals = read_goals()
    result = options.build / "bench.json"
    if options.no_run:
        report = json.loads(result.read_text())
    else:
        raw = run_benchmark(options)
        report = {"context": raw["context"], "rows": list(rows_of(least_times(raw), goals))}
        if not options.no_mask and re.search(options.filter, masking.FUNCTION):
            report["rows"] += masking.rows(options.build)
    add_goals(report["rows"], goals)
    result.write_text(json.dumps(report, indent=1) + "\n")
    print_table(report["rows"])
    print(f"JSON: {result}")
    if options.plot:
        print(f"chart: {chart.draw(report['rows'], HERE.parent / 'docs/performance.svg')}")
    if options.check:
        if options.no_mask:
            goals = {goal: ratio for goal, ratio in goals.items() if goal[0] != masking.FUNCTION}
        if not check(report["rows"], goals, options.filter == "."):
            sys.exit(1)


if __name__ == "__main__":
    main()
