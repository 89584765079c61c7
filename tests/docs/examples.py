#!/usr/bin/env python3
"""examples.py LANGUAGE PAGE...: the code of the given language in pages of docs/, as one source.

A C++ example becomes a test case, its includes go in front; a Fortran example is a whole program.
"""

import re
import sys
from pathlib import Path

language, pages = sys.argv[1], [Path(p) for p in sys.argv[2:]]
includes, cases = ["#include <gtest/gtest.h>"], []
for page in pages:
    blocks = re.findall(rf"^```{language}\n(.*?)^```$", page.read_text(), re.M | re.S)
    if not blocks:
        sys.exit(f"{page}: no example in {language}")
    for number, block in enumerate(blocks, 1):
        if language != "cpp":
            cases.append(block)
            continue
        lines = block.splitlines()
        includes += [line for line in lines if line.startswith("#include")]
        body = "\n".join(line for line in lines if not line.startswith("#include"))
        name = "".join(word.capitalize() for word in re.findall(r"\w+", page.stem))
        cases.append(f"TEST(DocsExamples, {name}{number}) {{\n{body}\n}}\n")
if language == "cpp":
    cases.insert(0, "\n".join(dict.fromkeys(includes)) + "\n")
print("\n".join(cases))
