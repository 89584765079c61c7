#!/usr/bin/env python3
"""Adds up result files of ctest and prints one summary in ctest's own form, failures first."""

import sys
import xml.etree.ElementTree as tree


def main():
    total, failed, seconds = 0, [], 0.0
    for path in sys.argv[1:]:
        for case in tree.parse(path).getroot().iter("testcase"):
            total += 1
            seconds += float(case.get("time") or 0)
            if case.get("status") != "run":
                failed.append(f"{path}: {case.get('name')}")
    passed = total - len(failed)
    percent = 100 * passed // total if total else 0
    for line in failed:
        print(f"\t{line} (Failed)")
    print(f"\n{percent}% tests passed, {len(failed)} tests failed out of {total}")
    print(f"\nTotal Test time (real) = {seconds:7.2f} sec")
    return 1 if failed or not total else 0


if __name__ == "__main__":
    sys.exit(main())
