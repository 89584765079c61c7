#!/usr/bin/env python3
"""Checks that includes point downwards only and that the system is known in few places.

The layers, lowest first, are below. A file may include what lies on its own or a lower layer, with
the exceptions named here and in docs/architecture.md.
"""

import re
import subprocess
import sys

LAYERS = ["host", "coreutils", "generics", "alloc", "values", "runtime", "frame", "interop"]
FOLDER_LAYER = {"cow": "values", "omi": "values", "runtime": "runtime", "errors": "frame",
                "process": "frame", "files": "frame", "platform": "alloc"}

# (who, whom): patterns of a file and of what it may include although it lies higher.
UPWARDS = [
    (r"src/runtime/KZMBasShared\.cpp", r"(errors|process|files)/.*"),  # starts the layers above
    (r"siblings/alloc/.*/KZMBasMemPoolCow\.(h|cpp)", r"runtime/omi_Singleton\.h"),
    (r"src/omi/omi_tables_define\.h", r"runtime/KZMBasSrmAllocator\.h"),  # instances with pools
    (r".*", r"runtime/mem_AllocationOperators\.h"),  # stands on the alloc sibling alone
]
# The two families of values meet only where one holds the other's.
ACROSS = [
    (r"(include|src)/cow/cow_(Map|Int(Table|MultiMap)Int).*", r"omi/.*"),
    (r"(include|src)/omi/.*", r"cow/cow_(String|COW|CountedHld|Counter|List|ListIter)(\.impl)?\.h"),
]
SYSTEM = r"(src|tests)/.*_win(_test)?\.cpp|siblings/.*/src/.*_win\.cpp"
KNOWS_WIN32 = SYSTEM + r"|include/kzm_export\.h|tests/support/expect_abort\.h"


def subsystem(path):
    """(subsystem, layer) of a file of the tree or of an include; None where layers do not apply."""
    found = re.match(r"(?:include|src|siblings)/(\w+)/", path)
    name = found.group(1) if found else path.split("/")[0] if "/" in path else None
    layer = FOLDER_LAYER.get(name, name)
    return (name, LAYERS.index(layer)) if layer in LAYERS else None


def allowed(rules, path, target):
    return any(re.fullmatch(who, path) and re.fullmatch(whom, target) for who, whom in rules)


def complaint(path, target):
    own, other = subsystem(path), subsystem(target)
    if own is None or other is None:
        return None
    if path.startswith("include/") and other[0] == "platform":
        return "a public header shows the platform seam"
    if other[1] > own[1] and not allowed(UPWARDS, path, target):
        return "points upwards"
    if {own[0], other[0]} == {"cow", "omi"} and not allowed(ACROSS, path, target):
        return "joins cow and omi"
    return None


def main():
    files = subprocess.run(["git", "ls-files", "*.h", "*.cpp"], capture_output=True, text=True,
                           check=True).stdout.split()
    faults = []
    for path in files:
        with open(path, encoding="utf-8") as source:
            for number, line in enumerate(source, 1):
                include = re.match(r'\s*#\s*include\s*[<"]([^>"]+)[>"]', line)
                if include and path.startswith(("include/", "src/", "siblings/")):
                    what = complaint(path, include.group(1))
                    if what:
                        faults.append(f"{path}:{number}: {include.group(1)}: {what}")
                if include and include.group(1).lower() == "windows.h" and \
                        not re.fullmatch(SYSTEM, path):
                    faults.append(f"{path}:{number}: <windows.h> outside the platform's sources")
                if "_WIN32" in line and not re.fullmatch(KNOWS_WIN32, path):
                    faults.append(f"{path}:{number}: _WIN32 outside the platform's sources")
    print("\n".join(faults) or f"{len(files)} files include downwards only")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
