#!/usr/bin/env python3
"""Shows benchmark results as a table, a page with charts and, where asked, in the documentation.

usage: bench_report.py --goals FILE --bounds FILE --sources DIR --page FILE [--docs FILE]
                       RESULT.json...

Ends with 1 where results cannot be trusted: names outside the rules, containers that disagree about
the result of a workload, goals that no workload answers.
"""

import argparse
import pathlib
import re
import subprocess
import sys

import bench_page
import bench_results as results
from bench_text import bytes_text, circumstances, ratio_text, time_text
from plain_errors import write_whole


def goal_text(verdict):
    goal = verdict.goal
    said = "met" if verdict.met else "missed"
    if goal.measure == "each":
        return f"{verdict.reached:.1f} bytes, goal {goal.target:g}: {said}"
    what = "bytes of " if goal.measure == "bytes" else "of "
    return f"{ratio_text(verdict.reached)} {what}{verdict.against}, goal {goal.target:g}: {said}"


def rows(workload, goals):
    """A line for each of ours: who, time, best peer, its time, ratio, goals, memory."""
    best = workload.best()
    for entry in workload.of_kind("ours"):
        ratio = ratio_text(entry.median / best.median) if best else ""
        verdicts = results.verdicts(workload, entry, goals)
        lean = workload.best(measure="bytes")
        memory = ""
        if entry.bytes_each is not None:
            memory = bytes_text(entry.bytes_each)
            if lean is not None:
                memory += f" / {bytes_text(lean.bytes_each)}"
        yield (workload.name, workload.label, entry.who, time_text(entry.median),
               best.who if best else "", time_text(best.median) if best else "", ratio,
               memory, "; ".join(map(goal_text, verdicts)))


HEADINGS = ("workload", "arguments", "ours", "median", "best peer", "median", "ratio",
            "bytes each", "goal")


def text_table(lines):
    widths = [max(map(len, column)) for column in zip(HEADINGS, *lines)]
    right = {3, 5, 6}
    for line in [HEADINGS, *lines]:
        cells = [cell.rjust(width) if i in right else cell.ljust(width)
                 for i, (cell, width) in enumerate(zip(line, widths))]
        print("  ".join(cells).rstrip())


def markdown(families, context, goals, bounds):
    out = [f"Measured on {circumstances(context)}. "
           "Processor time; for an entry where a workload works on many."]
    if context["load_avg"][0] > context["num_cpus"]:  # one is the measured program itself
        out.append("Other work kept the machine busy at the same time: single figures are uncertain.")
    everything = [workload for workloads in families.values() for workload in workloads]
    out += ["", "### Goals that are missed", "", "| " + " | ".join(results.MISSED) + " |",
            "|---|---|---|---|---|--:|--:|---|---|"]
    for _, cells in results.missed(everything, goals, bounds):
        out.append("|" + "|".join(f" {cell} " if cell else " " for cell in cells) + "|")
    out.append("")
    for family, workloads in families.items():
        out += [f"### {family}", "", "| " + " | ".join(HEADINGS) + " |",
                "|---|---|---|--:|---|--:|--:|---|---|"]
        for workload in workloads:
            for line in rows(workload, goals):
                out.append("|" + "|".join(f" {cell} " if cell else " " for cell in line) + "|")
        out.append("")
    return "\n".join(out)


def write_between_markers(path, text):
    path = pathlib.Path(path)
    begin, end = "<!-- begin of the last full run -->\n", "<!-- end of the last full run -->"
    old = path.read_text()
    if begin not in old or end not in old:
        sys.exit(f"error: {path} has no markers for the tables")
    head, _, rest = old.partition(begin)
    write_whole(path, head + begin + "\n" + text + end + rest.partition(end)[2])


def questions(sources):
    """The comment above each workload, by its folder and name."""
    found = {}
    pattern = re.compile(r"((?:^//.*\n)+)template <[^\n]*>\nvoid (\w+)\(benchmark::State", re.M)
    for path in pathlib.Path(sources).glob("*/*.cpp"):
        for comment, name in pattern.findall(path.read_text()):
            words = " ".join(line.lstrip("/ ").strip() for line in comment.splitlines())
            found[path.parent.name, name] = words
    return found


def commit():
    git = subprocess.run(["git", "log", "-1", "--format=%h"], capture_output=True, text=True)
    return git.stdout.strip()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--goals", required=True)
    parser.add_argument("--bounds", required=True)
    parser.add_argument("--sources", required=True)
    parser.add_argument("--page", required=True)
    parser.add_argument("--docs")
    parser.add_argument("results", nargs="+")
    options = parser.parse_args()

    goals = results.read_goals(options.goals)
    bounds = results.read_bounds(options.bounds)
    workloads, context, complaints = results.read_results(options.results)
    families = {}
    for workload in workloads:
        families.setdefault(workload.family, []).append(workload)

    for family, members in families.items():
        print(f"\n== {family}")
        text_table([line for workload in members for line in rows(workload, goals)])
    complaints += [f"{goal.family}: nobody answers the goal for {goal.workload} of {goal.ours}"
                   for goal in goals if goal.family in families and not goal.used]

    page = pathlib.Path(options.page)
    write_whole(page, bench_page.page(families, goals, bounds, context, commit(),
                                      questions(options.sources)))
    if options.docs:
        write_between_markers(options.docs, markdown(families, context, goals, bounds))

    for _, (_, name, label, who, *_, bound) in results.missed(workloads, goals, bounds):
        if not bound:
            print(f"note: {name} of {who}, {label}: bench/bounds.txt does not say what bounds it")
    verdicts = results.all_verdicts(workloads, goals)
    print(f"\n{sum(v.met for v in verdicts)} of {len(verdicts)} goals are met; charts: {page}")
    for complaint in complaints:
        print(f"error: {complaint}", file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
