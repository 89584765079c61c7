#!/usr/bin/env python3
"""page_examples.py LANGUAGE PAGE...: the code of the given language in pages of docs/, as one source.

The C++ code of a page is compiled as it stands: definitions at the left margin (functions, classes,
aliases, g_ variables) go to a namespace of the page, statements into test cases. A block with
includes begins a new case, one without goes on with the case before it. assert() is checked in every
build. A Fortran example is a whole program.
"""

import re
import sys
from pathlib import Path

DEFINITION = re.compile(
    r"(template|class|struct|enum|union|using|extern)\b"
    r"|(?!(for|if|while|switch|do|try|else|return)\b)[\w:<>,&*\s]+[\s&*]\w+\s*\([^;=]*\)"
    r"\s*(const|noexcept)?\s*\{"
    r"|[\w:<>,&*\s]+\bg_\w+\s*[={;]")


def blocks(page, language):
    """The code blocks of a page, each a text."""
    return re.findall(rf"^```{language}\n(.*?)^```$", page.read_text(), re.M | re.S)


def chunks(lines):
    """Declarations and statements at the left margin, each a list of lines."""
    chunk, depth = [], 0
    for line in lines:
        chunk.append(line)
        code = re.sub(r'//.*|"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'', "", line)
        depth += sum(map(code.count, "({[")) - sum(map(code.count, ")}]"))
        if depth == 0 and code.rstrip().endswith((";", "}")):
            yield chunk
            chunk = []
    if chunk:
        yield chunk


def tests(page):
    """The includes of a page's C++ code, and the code as test cases."""
    includes, source, cases = [], [], []
    for block in blocks(page, "cpp"):
        lines = block.splitlines()
        own = [line for line in lines if line.startswith("#include")]
        includes += own
        if own or not cases:
            cases.append([])
        for chunk in chunks([line for line in lines if not line.startswith("#include")]):
            code = "\n".join(line for line in chunk if not line.strip().startswith("//")).strip()
            (source if DEFINITION.match(code) else cases[-1]).extend(chunk)
    words = re.findall(r"\w+", page.stem)
    name = "".join(word.capitalize() for word in words)
    text = f"namespace docs_{'_'.join(words)} {{\nnamespace {{\n" + "\n".join(source)
    for number, case in enumerate(cases, 1):
        text += f"\nTEST(DocsExamples, {name}{number}) {{\n" + "\n".join(case) + "\n}\n"
    return includes, text + "}\n}\n"


def main(language, pages):
    includes, sources = ["#include <gtest/gtest.h>"], []
    for page in pages:
        found = blocks(page, language)
        if not found:
            continue
        if language != "cpp":
            sources += found
            continue
        needed, text = tests(page)
        includes += needed
        sources.append(text)
    if language == "cpp":
        print("\n".join(dict.fromkeys(includes)))
        print("#undef assert\n#define assert(...) EXPECT_TRUE((__VA_ARGS__))")
    print("\n".join(sources))


if __name__ == "__main__":
    main(sys.argv[1], [Path(p) for p in sys.argv[2:]])
