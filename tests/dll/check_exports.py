#!/usr/bin/env python3
"""Checks one built library: what it exports is what its link file says, and that is the kept list.

usage: check_exports.py BINARY LINK-FILE NAMES KEPT TOOL     (TOOL: objdump of a DLL, nm otherwise)
"""

import difflib
import re
import subprocess
import sys
from pathlib import Path


def exported(binary, tool):
    if binary.endswith(".dll"):
        text = subprocess.run([tool, "-p", binary], capture_output=True, text=True,
                              check=True).stdout
        table = text.partition("[Ordinal/Name Pointer] Table")[2]
        return set(re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+(?:[0-9a-f]+\s+)?)?(\S+)$",
                              table, re.M))
    text = subprocess.run([tool, "-D", "--defined-only", "-f", "posix", binary],
                          capture_output=True, text=True, check=True).stdout
    return {line.split()[0] for line in text.splitlines()}


def main():
    binary, link_file, names, kept, tool = sys.argv[1:]
    said = set(re.findall(r'^ +"([^"]+)"', Path(link_file).read_text(), re.M))
    real = exported(binary, tool)
    faults = [f"exported but not said: {n}" for n in sorted(real - said)]
    faults += [f"said but not exported: {n}" for n in sorted(said - real)]
    now, before = Path(names).read_text(), Path(kept).read_text()
    faults += difflib.unified_diff(before.splitlines(), now.splitlines(), kept, names, n=0,
                                   lineterm="")
    print("\n".join(faults) or f"{len(real)} exported names, as kept in {kept}")
    if now != before:
        print("If the interface is meant to change, run scripts/update-exports.")
    return 1 if faults or not real else 0


if __name__ == "__main__":
    sys.exit(main())
