"""Makes one small change at a time in the libraries and counts those that no test notices.

For scripts/mutate, which tells how it is used. Each seed draws a sample of all places where a change
is possible; all samples are compiled into one build, in a copy of the tree under build/mutation, and
an environment variable says which change is on. A first run without any tells which test reaches
which place, so that afterwards each change costs no more than the tests that can see it, the quickest
first, until one fails, crashes or hangs.
"""

import argparse
import concurrent.futures
import hashlib
import json
import math
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from mutation_sites import Source, instrumented
from plain_errors import write_whole

TOP = Path(__file__).resolve().parents[2]
WORK = TOP / "build/mutation"
TREE, BUILD = WORK / "tree", WORK / "build"
GOAL = 0.90
MOST_MEMORY = 4 << 20  # KiB
WORKERS = os.cpu_count() or 1
NOT_RUN = re.compile(r"(_win\.cpp|/layout\.cpp|\.f90|kzm_export\.h)$")


def run(command, **options):
    return subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          **options)


def snapshot():
    """The files of the tree as they are now; whoever works on them meanwhile does no harm."""
    names = run(["git", "ls-files", "-co", "--exclude-standard"], cwd=TOP).stdout.split("\n")
    return {n: (TOP / n).read_bytes() for n in sorted(names) if n and (TOP / n).is_file()}


def copy_tree(files, changed):
    """Brings the copy up to date, with the changed texts; files that stay keep their times."""
    for path in [p for p in TREE.rglob("*") if p.is_file()]:
        if str(path.relative_to(TREE)) not in files:
            path.unlink()
    for name, data in files.items():
        data = changed[name].encode() if name in changed else data
        path = TREE / name
        if not path.exists() or path.read_bytes() != data:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(data)
            shutil.copymode(TOP / name, path)


def all_sites(files, seed, prefixes):
    sites, seen = [], {}
    for name, data in files.items():
        if not name.startswith(("include/", "src/", "siblings/")):
            continue
        if not name.endswith((".h", ".cpp")) or NOT_RUN.search(name):
            continue
        if prefixes and not name.startswith(tuple(prefixes)):
            continue
        sites += Source(name, data.decode(), seed).sites
    for site in sites:  # two of one kind in one line, or in equal lines, are told apart by a number
        seen[site.key] = seen.get(site.key, 0) + 1
        if seen[site.key] > 1:
            site.key += f" ({seen[site.key]})"
    # Not shuffled, so that an edit elsewhere changes nothing about the order of the others.
    return sorted(sites, key=lambda s: hashlib.sha256(f"{seed} {s.key}".encode()).digest())


def numbered(sites):
    """Numbers that stay from run to run, so that only what was edited is built anew."""
    file = WORK / "numbers.json"
    known = json.loads(file.read_text()) if file.exists() else {}
    if len(known) + len(sites) >= 1 << 16:
        known = {}
    for site in sites:
        known.setdefault(site.key, len(known) + 1)
    WORK.mkdir(parents=True, exist_ok=True)
    write_whole(file, json.dumps(known))
    return {known[site.key]: site for site in sites}


def equivalents():
    known = {}
    for line in (TOP / "scripts/lib/mutation_equivalents.txt").read_text().splitlines():
        if line and line[0] != "#":
            key, _, reason = line.rpartition(" | ")
            known[key] = reason
    return known


def prepare():
    """What every build of the copy needs: the state's library and a compiler that knows of it."""
    WORK.mkdir(parents=True, exist_ok=True)
    here = Path(__file__).parent
    library = WORK / "libkzm_mutation.so"
    state = here / "mutation.cpp"
    if not library.exists() or library.stat().st_mtime < state.stat().st_mtime:
        made = run(["g++", "-std=c++20", "-O1", "-shared", "-fPIC", "-o", str(library), str(state)])
        if made.returncode:
            sys.exit(made.stdout)
    compiler = WORK / "g++"
    compiler.write_text(f'#!/bin/sh\nexec g++ -std=c++20 -include {here}/mutation.h "$@"\n')
    compiler.chmod(0o755)
    return library, compiler


def configure(library, compiler, sanitize):
    kind = (["-DCMAKE_CXX_FLAGS_DEBUG=-O1 -w -Wno-narrowing", "-DKZM_SANITIZE=address,undefined"]
            if sanitize else
            ["-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0 -DNDEBUG -w -Wno-narrowing"])
    made = run(["cmake", "-S", str(TREE), "-B", str(BUILD), "-G", "Ninja",
                f"-DCMAKE_BUILD_TYPE={'Debug' if sanitize else 'RelWithDebInfo'}", *kind,
                "-DKZM_WERROR=OFF", f"-DCMAKE_CXX_COMPILER={compiler}",
                f"-DCMAKE_CXX_STANDARD_LIBRARIES={library}"],
               env={k: v for k, v in os.environ.items() if "COMPILER_LAUNCHER" not in k})
    if made.returncode:
        sys.exit(made.stdout)


def build(files, sites, programs, sanitize):
    """Builds with as many of the numbered sites as compile, and says which do not."""
    library, compiler = prepare()
    failed = set()
    while True:
        by_file = {}
        for number, site in sites.items():
            if number not in failed:
                by_file.setdefault(site.path, {})[number] = site
        copy_tree(files, {path: instrumented(files[path].decode(), numbered)
                          for path, numbered in by_file.items()})
        configure(library, compiler, sanitize)
        made = run(["cmake", "--build", str(BUILD), "--parallel", str(WORKERS), "--target",
                    *programs, "--", "-k", "0"])
        if made.returncode == 0:
            return failed
        lines = {}
        for path, numbered in by_file.items():
            for number, site in numbered.items():
                for line in range(site.old.count("\n") + 1):
                    lines.setdefault((path, site.line + line), []).append(number)
        more = set()
        tree = re.escape(str(TREE))
        for block in re.split(r"(?=^\S+: In |^In file included)", made.stdout, flags=re.M):
            if " error: " not in block:
                continue
            # The place of the error, or, where that lies in what is called, who asked for it.
            for path, line in re.findall(rf"{tree}/(\S+?):(\d+):", block):
                if (path, int(line)) in lines:
                    more.update(lines[path, int(line)])
                    break
        if not more - failed:
            sys.exit(made.stdout[-6000:] + "\nerror: the build fails and no change is the cause")
        failed |= more
        print(f"   {len(failed)} do not compile", flush=True)


class Test:
    def __init__(self, entry):
        self.name, self.command = entry["name"], entry["command"]
        self.program = self.command[0]
        self.filter = next((c[len("--gtest_filter="):] for c in self.command
                            if c.startswith("--gtest_filter=")), None)
        self.seconds, self.reached = 0.0, frozenset()


def tests_of_build():
    listed = run(["ctest", "--test-dir", str(BUILD), "--show-only=json-v1"]).stdout
    tests = [Test(t) for t in json.loads(listed)["tests"] if "command" in t]
    return [t for t in tests if not t.name.endswith("_NOT_BUILT") and
            (t.program.startswith(str(BUILD)) and os.path.exists(t.program) or
             "-DPROGRAM" in " ".join(t.command))]


def limited(command, folder, seconds, env):
    """Whether the command passes, and how much processor time it took. One that takes more of that
    than allowed, or waits for much longer, is ended with all its children."""
    # Sanitizers reserve more addresses than there is memory and watch it themselves.
    data = "unlimited" if BUILD.name == "sanitized" else MOST_MEMORY
    watch = {"ASAN_OPTIONS": f"hard_rss_limit_mb={MOST_MEMORY >> 10}"}
    shell = ["bash", "-c", f'ulimit -c 0 -d {data} -f {1 << 20} -t {seconds}; exec "$@"', "bash"]
    process = subprocess.Popen(shell + command, cwd=folder, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               start_new_session=True, env={**os.environ, **watch, **env})

    def end():
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
    timer = threading.Timer(20 + 5 * seconds, end)
    timer.start()
    _, status, usage = os.wait4(process.pid, 0)
    timer.cancel()
    end()
    process.returncode = os.waitstatus_to_exitcode(status)
    return process.returncode == 0, usage.ru_utime + usage.ru_stime


folders = threading.local()


def own_folder():
    if not hasattr(folders, "name"):
        folders.name = tempfile.mkdtemp(dir=WORK, prefix="run-")
    return folders.name


def baseline(tests, numbers):
    def one(test):
        with tempfile.NamedTemporaryFile(dir=WORK) as file:
            file.truncate(1 << 16)
            passed, test.seconds = limited(test.command, own_folder(), 300,
                                           {"KZM_MUTANTS_REACHED": file.name})
            data = file.read()
        test.reached = frozenset(n for n in numbers if data[n])
        return test.name if not passed else None
    with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
        failed = {name for name in pool.map(one, tests) if name}
    if len(failed) > 2:
        sys.exit(f"error: with no change on, these fail: {', '.join(failed)}")
    for name in failed:
        print(f"warning: without {name}, which fails with no change on")
    return [test for test in tests if test.name not in failed]


def noticed_by(number, tests):
    """The first tests that notice, or none: quick ones first, several of a program together."""
    groups, open_group = [], {}
    for test in sorted((t for t in tests if number in t.reached), key=lambda t: t.seconds):
        group = open_group.get(test.program)
        if test.filter and group and sum(t.seconds for t in group) + test.seconds < 2:
            group.append(test)
        else:
            groups.append([test])
            if test.filter:
                open_group[test.program] = groups[-1]
    for group in groups:
        command = group[0].command
        if group[0].filter:
            command = [group[0].program, "--gtest_fail_fast",
                       "--gtest_filter=" + ":".join(t.filter for t in group)]
        seconds = 3 + math.ceil(3 * sum(t.seconds for t in group))
        if not limited(command, own_folder(), seconds, {"KZM_MUTANT": str(number)})[0]:
            return group[0].name
    return None


def kept(log):
    """The last result of each change, as earlier runs left it."""
    if not log.exists():
        return {}
    lines = [json.loads(line) for line in log.read_text().splitlines()]
    return {line["key"]: line["result"] for line in lines}


def main():
    parser = argparse.ArgumentParser(usage="scripts/mutate OPTIONS; see scripts/mutate --help")
    parser.add_argument("--seed", type=int, nargs="+", default=[1])
    parser.add_argument("--minutes", type=float)
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--sanitize", action="store_true")
    parser.add_argument("--show", action="store_true")
    parser.add_argument("--path", nargs="+")
    parser.add_argument("--programs", required=True)
    options = parser.parse_args()
    if options.sanitize:
        global BUILD
        BUILD = WORK / "sanitized"
    started = time.monotonic()
    files = snapshot()
    count = 1500 if options.minutes else options.count
    samples, places = {}, set()
    for seed in options.seed:
        everything = [site for site in all_sites(files, seed, options.path)
                      if (site.path, site.at) not in places]
        samples[seed] = everything[:count]
        places |= {(site.path, site.at) for site in samples[seed]}
        print(f"== seed {seed}: {len(samples[seed])} of {len(everything)} possible changes")
    sites = [site for sample in samples.values() for site in sample]
    if options.show:
        for site in sites:
            print(f"{site.path}:{site.line}: {site.what}\n-{site.old}\n+{site.new}")
        return
    logs = {seed: TOP / f"out/mutation/seed-{seed}.jsonl" for seed in samples}
    results = {key: result for log in logs.values() for key, result in kept(log).items()}
    log_of = {site.key: logs[seed] for seed, sample in samples.items() for site in sample}
    harmless = equivalents()
    redo = ("missed", "unreached") if options.again else ()
    lock = threading.Lock()

    def record(site, result, by=None):
        with lock:
            results[site.key] = result
            log_of[site.key].parent.mkdir(parents=True, exist_ok=True)
            with log_of[site.key].open("a") as file:
                file.write(json.dumps({"key": site.key, "result": result, "by": by}) + "\n")

    built_in = numbered([site for site in sites if results.get(site.key) != "does not compile"])
    todo = {number: site for number, site in built_in.items() if site.key not in harmless and
            (site.key not in results or results[site.key] in redo)}
    if todo:
        print(f"== building, to run {len(todo)} of them", flush=True)
        for number in build(files, built_in, options.programs.split(),
                            options.sanitize):
            record(built_in[number], "does not compile")
            todo.pop(number, None)
        built = time.monotonic()
        tests = tests_of_build()
        print(f"== built in {built - started:.0f} s; running {len(tests)} tests without a change",
              flush=True)
        tests = baseline(tests, todo)
        print(f"== they took {sum(t.seconds for t in tests):.0f} s; now with one change at a time",
              flush=True)
        end = started + options.minutes * 60 if options.minutes else float("inf")

        def one(number, site):
            if time.monotonic() > end:
                return
            by = noticed_by(number, tests)
            reached = any(number in t.reached for t in tests)
            record(site, "noticed" if by else "missed" if reached else "unreached", by)
        begun = time.monotonic()
        with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
            list(pool.map(one, todo.keys(), todo.values()))
        print(f"== {len(todo)} changes in {time.monotonic() - begun:.0f} s")
        for folder in WORK.glob("run-*"):
            shutil.rmtree(folder, ignore_errors=True)
    shares = [report(seed, sample, results, harmless) for seed, sample in samples.items()]
    if min(shares) < GOAL:
        sys.exit(f"error: fewer than {GOAL:.0%}")


def report(seed, sample, results, harmless):
    """Prints which changes no test noticed, and returns the share of those that one did."""
    count = {"noticed": 0, "missed": 0, "unreached": 0, "does not compile": 0, "not run": 0,
             "without effect": 0}
    for site in sample:
        result = "without effect" if site.key in harmless else results.get(site.key, "not run")
        count[result] += 1
        if result in ("missed", "unreached"):
            print(f"\n{result}: {site.key}\n--- {site.path}:{site.line}")
            print("\n".join(f"-{line}" for line in site.old.split("\n")))
            print("\n".join(f"+{line}" for line in site.new.split("\n")))
    run_ones = count["noticed"] + count["missed"] + count["unreached"]
    share = count["noticed"] / run_ones if run_ones else 0.0
    print(f"\n== seed {seed}: " + ", ".join(f"{n} {result}" for result, n in count.items()))
    print(f"== noticed {count['noticed']} of {run_ones} changes: {share:.1%}")
    return share


if __name__ == "__main__":
    main()
