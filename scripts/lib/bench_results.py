"""Benchmark results brought together by workload, and what they say about the goals.

bench/README.md has the rules for names; goals.txt says what its columns are.
"""

import dataclasses
import fnmatch
import json
import pathlib
import re
import statistics

from bench_text import circumstances, ratio_text

UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


@dataclasses.dataclass
class Measured:
    """What one container did in one workload, over all repetitions."""

    who: str
    times: list = dataclasses.field(default_factory=list)  # ns, an item's where items are counted
    results: set = dataclasses.field(default_factory=set)
    bytes_each: float | None = None
    per_item: bool = False

    @property
    def kind(self):
        library, qualified, _ = self.who.partition("::")
        return "ours" if not qualified else "floor" if library == "floor" else "peer"

    @property
    def median(self):
        return statistics.median(self.times)

    @property
    def spread(self):
        """Half the distance between the quartiles, as a share of the median."""
        if len(self.times) < 3 or self.median == 0:
            return 0.0
        low, _, high = statistics.quantiles(self.times, n=4, method="inclusive")
        return (high - low) / 2 / self.median


@dataclasses.dataclass
class Workload:
    family: str
    name: str
    arguments: tuple  # as printed, `name:value` where the benchmark names them
    entries: list = dataclasses.field(default_factory=list)

    @property
    def key(self):
        """The name that goals are matched with; names of arguments are not part of it."""
        values = [argument.rpartition(":")[2] for argument in self.arguments]
        return "/".join([self.name, *values])

    @property
    def label(self):
        return ", ".join(number(argument) for argument in self.arguments)

    def of_kind(self, kind):
        return [entry for entry in self.entries if entry.kind == kind]

    def best(self, patterns=("*",), measure="time"):
        """The peer that is ahead of the other peers, none where none is measured."""
        fitting = [entry for entry in self.of_kind("peer")
                   if value(entry, measure) is not None and fits(entry.who, patterns)]
        return min(fitting, key=lambda e: value(e, measure), default=None)


@dataclasses.dataclass
class Goal:
    family: str
    workload: str
    ours: str
    peers: tuple
    measure: str
    target: float
    used: bool = False


@dataclasses.dataclass
class Verdict:
    goal: Goal
    against: str  # the peer, empty for an absolute goal
    reached: float
    floors: list = dataclasses.field(default_factory=list)  # who does less than was asked, and what
                                                            # of the peer that takes

    @property
    def met(self):
        return self.reached <= self.goal.target


def fits(name, patterns):
    # Only the star is special: names contain brackets and parentheses.
    return any(fnmatch.fnmatchcase(name, pattern.replace("[", "[[]")) for pattern in patterns)


def value(entry, measure):
    return entry.median if measure == "time" else entry.bytes_each


def number(argument):
    name, colon, digits = argument.rpartition(":")
    text = f"{int(digits):,}" if digits.isdigit() else digits
    return f"{name} {text}" if colon else text


def read_goals(path):
    goals = []
    for line in pathlib.Path(path).read_text().splitlines():
        if line and not line.startswith("#"):
            family, workload, ours, peers, measure, target = line.split()
            patterns = tuple(peers.split(","))
            goals.append(Goal(family, workload, ours, patterns, measure, float(target)))
    return goals


def read_bounds(path):
    """Lines of patterns for family, workload and container, and what bounds those in a few words."""
    lines = pathlib.Path(path).read_text().splitlines()
    return [tuple(line.split(None, 3)) for line in lines if line and not line.startswith("#")]


def read_results(paths):
    """The workloads in the order of their registration, the context of the run, and complaints."""
    workloads, complaints, context = {}, [], {}
    for path in map(pathlib.Path, paths):
        try:
            document = json.loads(path.read_text())
            circumstances(document["context"])
            context = context or document["context"]
            runs = [run for run in document["benchmarks"] if run.get("run_type") == "iteration"]
            runs.sort(key=lambda run: (run["family_index"], run["per_family_instance_index"]))
            for run in runs:
                complaints += take_up(workloads, path.stem, run)
        except (ValueError, LookupError, TypeError, AttributeError) as error:
            raise SystemExit(f"error: {path} holds no results of benchmarks: {error!r}") from error
    for workload in workloads.values():
        complaints += disagreements(workload)
    return list(workloads.values()), context, list(dict.fromkeys(complaints))


def take_up(workloads, family, run):
    """Adds one repetition to the workload it belongs to, or complains."""
    name = re.sub(r"/(iterations|repeats|min_time|\w+_time)\b[^/]*", "", run["run_name"])
    parts = name.split("/")
    if len(parts) < 2 or not re.fullmatch(r"[A-Z][A-Za-z0-9]*", parts[0]):
        return [f"{family}: {name} is not named Workload/who/arguments"]
    if run.get("error_occurred"):
        return [f"{family}: {name}: {run.get('error_message')}"]
    key = (family, parts[0], tuple(parts[2:]))
    workload = workloads.setdefault(key, Workload(*key))
    entry = next((e for e in workload.entries if e.who == parts[1]), None)
    if entry is None:
        entry = Measured(parts[1])
        workload.entries.append(entry)
    # Processor time: what other programs do on the machine is no part of it.
    if run.get("items_per_second"):
        entry.times.append(1e9 / run["items_per_second"])
        entry.per_item = True
    else:
        entry.times.append(run["cpu_time"] * UNITS[run["time_unit"]])
    entry.results.add(run.get("result"))
    entry.bytes_each = run.get("bytes", entry.bytes_each)
    return []


def disagreements(workload):
    """What shows that those who did the workload did not do the same."""
    place = "/".join([f"{workload.family}: {workload.name}", *workload.arguments])
    workers = [entry for entry in workload.entries if entry.kind != "floor"]
    silent = [entry.who for entry in workers if None in entry.results]
    if silent:
        return [f"{place}: no result from {', '.join(silent)}"]
    if len(set().union(*(entry.results for entry in workers))) > 1:
        said = ", ".join(f"{e.who} {sorted(int(r) for r in e.results)}" for e in workers)
        return [f"{place}: results differ: {said}"]
    if len({entry.per_item for entry in workload.entries}) > 1:
        return [f"{place}: some count items, some do not"]
    return []


def verdicts(workload, entry, goals):
    """What the entry, one of ours, reaches of its goals; of those for a measure the first."""
    found = {}
    for goal in goals:
        if (goal.measure in found or goal.family != workload.family
                or not fits(workload.key, [goal.workload]) or not fits(entry.who, [goal.ours])):
            continue
        if goal.measure == "each":
            if entry.bytes_each is not None:
                found["each"] = Verdict(goal, "", entry.bytes_each)
        else:
            best = workload.best(goal.peers, goal.measure)
            mine = value(entry, goal.measure)
            if best is not None and mine is not None:
                peer = value(best, goal.measure)
                floors = [(floor.who, value(floor, goal.measure) / peer)
                          for floor in workload.of_kind("floor") if value(floor, goal.measure)]
                found[goal.measure] = Verdict(goal, best.who, mine / peer, floors)
        if goal.measure in found:
            goal.used = True
    return list(found.values())


def all_verdicts(workloads, goals):
    return [verdict for workload in workloads for entry in workload.of_kind("ours")
            for verdict in verdicts(workload, entry, goals)]


MISSED = ("family", "workload", "arguments", "ours", "against", "reached", "goal", "floors",
          "what bounds it")


def missed(workloads, goals, bounds):
    """Each missed goal as its workload and the texts of its columns."""
    for workload in workloads:
        for entry in workload.of_kind("ours"):
            for verdict in verdicts(workload, entry, goals):
                if verdict.met:
                    continue
                against = {"each": "bytes", "bytes": f"bytes of {verdict.against}"}.get(
                    verdict.goal.measure, verdict.against)
                floors = ", ".join(f"{who.removeprefix('floor::')} {ratio_text(ratio)}"
                                   for who, ratio in verdict.floors)
                asked = (f"{workload.key}:{verdict.goal.measure}", workload.key)
                bound = next((text for family, name, who, text in bounds
                              if family == workload.family and fits(entry.who, [who])
                              and any(fits(each, [name]) for each in asked)), "")
                yield workload, (workload.family, workload.name, workload.label, entry.who, against,
                                 ratio_text(verdict.reached), f"{verdict.goal.target:g}", floors,
                                 bound)
