#!/usr/bin/env python3
"""Compares the binary interface of a built Linux library with the one that is kept.

What the kept lists of names do not show: sizes, the offsets of fields, the slots of virtual
functions, types of parameters and results, values of enumerations. libabigail reads them from the
library's debug information, for everything that exported functions can reach.

usage: check_abi.py [--update] LIBRARY KEPT FOLDER
FOLDER takes what is made on the way. --update says what changed and renews KEPT.
"""

import argparse
import lzma
import re
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
HEADERS = [TOP / "include", *sorted(TOP.glob("siblings/*/include"))]
# One pool stands for all whose instances come from the same list.
OTHER_POOLS = "([1-9]|[1-5][0-9]|6[01])"
SUPPRESSED = f"""
[suppress_function]
  symbol_name_regexp = KZMBasSrmAllocatorILi{OTHER_POOLS}E
  drop = yes
[suppress_variable]
  symbol_name_regexp = KZMBasSrmAllocatorILi{OTHER_POOLS}E
  drop = yes
[suppress_type]
  name_regexp = KZMBasSrmAllocator<{OTHER_POOLS}>
  drop = yes
"""
# What stands in no public header is seen as opaque; no paths, lines or names of parameters.
DUMP = ["--exported-interfaces-only", "--drop-private-types", "--no-corpus-path",
        "--no-comp-dir-path", "--no-show-locs", "--no-parameter-names", "--no-elf-needed",
        "--no-write-default-sizes", "--type-id-style", "hash"]


def dump(library, folder):
    rules = folder / "suppressed.ini"
    rules.write_text(SUPPRESSED)
    result = folder / f"{library.name.split('.')[0]}.abi"
    header_flags = [flag for each in HEADERS for flag in ("--headers-dir", each)]
    subprocess.run(["abidw", *DUMP, *header_flags, "--suppressions", rules, "--out-file", result,
                    library], check=True)
    if "<class-decl" not in result.read_text():
        sys.exit(f"{library}: no types found: it was built without debug information")
    return result


def difference(before, now):
    """(report, whether clients that were built before can go on); no report if nothing differs."""
    def compare(*options):
        found = subprocess.run(["abidiff", "--no-show-locs", *options, before, now],
                               capture_output=True, text=True)
        if found.returncode & 3:
            sys.exit(f"abidiff failed:\n{found.stdout}{found.stderr}")
        return found.returncode, found.stdout.strip()

    status, report = compare("--leaf-changes-only")  # each changed type once
    if status == 0:
        return "", True
    # That leaves out slots of virtual functions, which stand in the report by functions.
    _, by_function = compare()
    slots = dict.fromkeys(re.findall(r"^ *the (vtable offset of .*)$", by_function, re.M))
    parts = re.findall(r"(\d+) (Removed|Changed|Added|leaf type)", report)
    if not slots and not any(int(number) for number, _ in parts):
        report = by_function
    broken = slots or "SONAME" in report or any(
        int(number) for number, what in parts if what != "Added")
    return "\n".join([report, *slots]), status == 4 and not broken


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--update", action="store_true")
    parser.add_argument("library", type=Path)
    parser.add_argument("kept", type=Path)
    parser.add_argument("folder", type=Path)
    args = parser.parse_args()

    args.folder.mkdir(parents=True, exist_ok=True)
    now = dump(args.library, args.folder)
    if args.update and not args.kept.exists():
        report, keeps = "first baseline", True
    else:
        before = now.with_suffix(".kept.abi")
        before.write_bytes(lzma.decompress(args.kept.read_bytes()))
        report, keeps = difference(before, now)
    if not report:
        print(f"{args.kept.name}: the binary interface is as kept")
        return 0
    print(f"{report}\n")
    print(f"{args.kept.name}: " + ("only additions: clients built before go on" if keeps else
                                   "CHANGED: CLIENTS BUILT BEFORE MAY BREAK"))
    if args.update:
        args.kept.write_bytes(lzma.compress(now.read_bytes(), preset=9 | lzma.PRESET_EXTREME))
        print(f"{args.kept.name}: renewed")
        return 0
    print("If that is meant, run scripts/update-exports and commit what it changes.")
    return 1


if __name__ == "__main__":
    sys.exit(main())
