#!/usr/bin/env python3
"""check.py GDB PROGRAM LIBRARY NATVIS EXPECTED OUTPUT: has gdb show the values of the program, with
the views that it finds beside the library by itself, and compares what it shows with a kept text."""
import difflib
import pathlib
import subprocess
import sys

gdb, program, library, natvis, expected, output = sys.argv[1:]
script = pathlib.Path(__file__).with_name("show.py")
pathlib.Path(output).unlink(missing_ok=True)
run = subprocess.run(
    [gdb, "-nx", "-batch", "-iex", f"add-auto-load-safe-path {pathlib.Path(library).parent}",
     "-ex", f"python output, natvis = {output!r}, {natvis!r}", "-x", str(script), program],
    capture_output=True, text=True, timeout=250)
if not pathlib.Path(output).exists():
    sys.exit(f"gdb has shown nothing:\n{run.stdout}{run.stderr}")
wanted, shown = (pathlib.Path(p).read_text(encoding="utf-8") for p in (expected, output))
if wanted == shown:
    print(f"{shown.count(chr(10))} lines as expected")
    sys.exit()
sys.stdout.writelines(difflib.unified_diff(wanted.splitlines(True), shown.splitlines(True),
                                           expected, output))
sys.exit(f"gdb said:\n{run.stdout}{run.stderr}")
