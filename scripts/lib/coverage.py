"""Adds up what a coverage build counted and says how much of include/ and src/ the tests run.

usage: coverage.py BUILD-FOLDER OUT-FOLDER

A template counts once, not once an instance: a branch is taken when any instance takes it. Edges
that only an exception takes do not count. Writes a file that gcovr makes pages from. Fails below
the goal.
"""

import concurrent.futures
import json
import os
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

import plain_errors  # noqa: F401

TOP = Path(__file__).resolve().parents[2]
GOAL = 0.95
MEASURED = re.compile(r"(include|src)/")
# What the compiler decides beside these, such as whether what is deleted is null, is no decision of
# the source.
DECIDES = re.compile(r"\b(if|for|while|switch)\b|\?|&&|\|\|")
# What exceeds memory of 32 bits only is no branch where the tests run.
NARROW = re.compile(r"size_t>::max\(\)|size_t>\(-1\)|SIZE_MAX")


def counted(counters):
    """gcov's own account of one object."""
    result = subprocess.run(["gcov", "--json-format", "--stdout", "--branch-probabilities",
                             str(counters)], capture_output=True, text=True, check=True,
                            cwd=counters.parent)
    found = []
    for line in result.stdout.splitlines():
        account = json.loads(line)
        for file in account["files"]:
            path = os.path.relpath(os.path.join(account["current_working_directory"], file["file"]),
                                   TOP)
            if not MEASURED.match(path):
                continue
            starts = defaultdict(int)
            for each in file["functions"]:
                starts[each["start_line"], each["start_column"], each["end_line"]] += 1
            templates = [(first, last) for (first, _, last), n in starts.items() if n > 1]
            for line in file["lines"]:
                number = line["line_number"]
                mixed = "function_name" not in line and any(
                    first <= number <= last for first, last in templates)
                found.append((path, number, line["count"], decisions(line["branches"], mixed)))
    return found


def decisions(branches, mixed):
    """The counts of the edges that a condition chooses between: a call's way on, and its way out by
    an exception, stand side by side and are none. In a lambda of a template those of all instances
    are mixed, so there only whether each way of a condition was ever taken is known."""
    counts, i = [], 0
    while i < len(branches):
        if any(b["throw"] for b in branches[i:i + 2]):
            i += 2
        else:
            counts.append(branches[i]["count"])
            i += 1
    if mixed:
        counts = [sum(counts[0::2]), sum(counts[1::2])]
    return counts if len(counts) > 1 else []


def main():
    build, out = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
    lines = defaultdict(int)     # (file, line): times run
    branches = {}                # (file, line, number of branches): times taken, each
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for found in pool.map(counted, sorted(build.rglob("*.gcda"))):
            for path, number, count, counts in found:
                lines[path, number] += count
                key = path, number, len(counts)
                old = branches.get(key, [0] * len(counts))
                branches[key] = [a + b for a, b in zip(old, counts)]
    files = defaultdict(dict)
    for (path, number), count in lines.items():
        files[path][number] = {"line_number": number, "count": count, "branches": [],
                               "gcovr/excluded": False, "gcovr/noncode": False}
    texts = {path: (TOP / path).read_text().split("\n") for path in files}
    for (path, number, _), counts in sorted(branches.items()):
        text = re.sub(r"//.*|\"[^\"]*\"", "", texts[path][number - 1])
        if DECIDES.search(text) and not NARROW.search(text):
            files[path][number]["branches"] += [
                {"count": count, "fallthrough": False, "throw": False} for count in counts]
    out.mkdir(parents=True, exist_ok=True)
    with (out / "coverage.json").open("w") as file:
        json.dump({"gcovr/format_version": "0.3", "files": [
            {"file": path, "functions": [], "lines": [each[n] for n in sorted(each)]}
            for path, each in sorted(files.items())]}, file)

    table, missing = [], []
    for path, each in files.items():
        taken = [(number, b["count"] > 0) for number, line in each.items()
                 for b in line["branches"]]
        run = sum(line["count"] > 0 for line in each.values())
        table.append((sum(hit for _, hit in taken), len(taken), run, len(each), path))
        missing += [(path, n) for n in sorted({n for n, hit in taken if not hit})]
    with (out / "missing.txt").open("w") as file:
        for path, n in sorted(missing):
            marks = "".join("-+"[b["count"] > 0] for b in files[path][n]["branches"])
            file.write(f"{path}:{n}: {marks} {texts[path][n - 1].strip()}\n")
    print("branches       lines          file")
    for hit, all_, run, number, path in sorted(table, key=lambda row: row[0] - row[1])[:15]:
        print(f"{hit:4} of {all_:4}   {run:4} of {number:4}   {path}")
    hit, all_, run, number = (sum(row[i] for row in table) for i in range(4))
    print(f"== lines: {run} of {number}, {run / number:.1%}")
    print(f"== branches: {hit} of {all_}, {hit / all_:.1%}")
    if hit / all_ < GOAL:
        sys.exit(f"error: fewer than {GOAL:.0%} of all branches; out/coverage/missing.txt has them")


if __name__ == "__main__":
    main()
