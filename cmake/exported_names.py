#!/usr/bin/env python3
"""Says what a shared library exports: the same rule for Windows DLLs and Linux shared objects.

The interface is what the library's public headers mark: classes and functions with KZM_API, and
the instances in `extern template` lines. Of what the objects define, exported are
  - of a listed template instance everything, inline members included: clients make no copy;
  - of a plain class everything but inline functions, which every client compiles for itself;
  - marked functions and variables.
The linker gets these names as a module-definition file (.def) or a version script (.map). Beside it
stands a readable list (.txt), which the tests compare with the one kept in exports/.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
from collections import defaultdict
from pathlib import Path

MARK = "__kzm_exported__"
DATA_PREFIXES = ("vtable for ", "typeinfo for ", "typeinfo name for ", "VTT for ",
                 "construction vtable for ", "guard variable for ")
THUNK = re.compile(r"^(?:(?:non-)?virtual thunk|covariant return thunk) to ")


def run(command, text=None):
    result = subprocess.run(command, input=text, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{' '.join(command)}\n{result.stderr}")
    return result.stdout


class Interface:
    """What the public headers of one library mark."""

    def __init__(self, compiler, flags, headers, header_folders, scratch):
        self.header_folders = header_folders
        self.compiler, self.flags, self.scratch = compiler, flags, scratch
        includes = "".join(f'#include "{h}"\n' for h in headers)
        stub = scratch / "stub"
        stub.mkdir()
        (stub / "kzm_export.h").write_text(
            f"#pragma once\n#define KZM_API {MARK}\n"
            "#define KZM_DECLARE(...) extern template class KZM_API __VA_ARGS__;\n"
            "#define KZM_DEFINE(...) template class __VA_ARGS__;\n")
        own = self.own_text(self.preprocess([f"-I{stub}"], includes), headers)
        instances = sorted({" ".join(i.split()) for i in re.findall(
            rf"extern\s+template\s+(?:class|struct)\s+(?:{MARK}\s+)?([^;]+);", own)})
        members = sorted({(" ".join(c.split()), m) for c, m in re.findall(
            rf"extern\s+template\s+[^;]*?\b(\w+\s*<[^;]*>)::(\w+)\s*(?:\([^;]*)?;", own)
            if not re.match(r"(?:class|struct)\s", c)})
        own = re.sub(r"extern\s+template\s[^;]*;", "", own)
        spelled = self.demangled(includes, instances + [c for c, _ in members])
        self.instances = {spelled[i] for i in instances}
        self.members = {(spelled[c], m) for c, m in members}
        self.plain = self.marked(own)
        self.listing = "".join(f"    X({i}) \\\n" for i in instances)
        self.includes = "".join(f"#include <{h.relative_to(d)}>\n" for h in headers
                                for d in h.parents if str(d) in self.header_folders)

    def preprocess(self, first_flags, text):
        return run([self.compiler, *first_flags, *self.flags, "-E", "-x", "c++", "-"], text)

    @staticmethod
    def own_text(text, headers):
        """The preprocessed lines that come from the given headers."""
        wanted = {str(h) for h in headers}
        lines, keep = [], False
        for line in text.splitlines():
            origin = re.match(r'# \d+ "([^"]*)"', line)
            if origin:
                keep = origin.group(1) in wanted
            elif keep:
                lines.append(line)
        return "\n".join(lines)

    def demangled(self, includes, types):
        """The compiler's spelling of each type, as it stands in demangled symbols."""
        if not types:
            return {}
        marks = "".join(f"void kzm_mark_{n}(std::type_identity_t<{t}>*) {{}}\n"
                        for n, t in enumerate(types))
        out = run([self.compiler, *self.flags, "-S", "-O0", "-x", "c++", "-o", "-", "-"],
                  includes + "#include <type_traits>\n" + marks)
        names = run(["c++filt"], "\n".join(
            n for n in dict.fromkeys(re.findall(r"_Z\d+kzm_mark_\w+", out))))
        found = {int(n): t for n, t in re.findall(r"^kzm_mark_(\d+)\((.*)\*\)$", names, re.M)}
        return {t: found[n] for n, t in enumerate(types)}

    @staticmethod
    def marked(text):
        """Names of marked classes, functions and variables, with their namespaces."""
        names = set()
        scopes, depth, position = [], 0, 0
        token = re.compile(
            rf"\bnamespace\s+([\w:]+)\s*\{{|[{{}}]|\b(?:class|struct)\s+{MARK}\s+(\w+)|\b{MARK}\b")
        for match in token.finditer(text):
            if match.start() < position:
                continue
            prefix = "".join(f"{name}::" for name, _ in scopes)
            if match.group(1):
                depth += 1
                scopes.append((match.group(1), depth))
            elif match.group(0) == "{":
                depth += 1
            elif match.group(0) == "}":
                if scopes and scopes[-1][1] == depth:
                    scopes.pop()
                depth -= 1
            elif match.group(2):
                names.add(prefix + match.group(2))
            else:
                rest = text[match.end():]
                operator = re.match(r"[^;{(=]*\b(operator\s*(?:\(\)|[^\s\w(]+))\s*\(", rest)
                declaration = re.match(r"[^;{(=]*", rest).group(0)
                name = operator or re.search(r"(\w+)\s*(?:\[[^]]*\]\s*)*$", declaration)
                if name:
                    names.add(prefix + re.sub(r"\s", "", name.group(1)))
        return names


def owner_parts(text):
    """The qualified name at the head of a demangled symbol, split at its top-level `::`."""
    parts, depth, start, i = [], 0, 0, 0
    while i < len(text):
        if depth == 0 and text.startswith("operator", i) and (i == 0 or text[i - 1] == ":"):
            break
        c = text[i]
        if c in "<(":
            if c == "(" and depth == 0 and not text.startswith("(anonymous", i):
                break
            depth += 1
        elif c in ">)":
            depth -= 1
        elif depth == 0 and text.startswith("::", i):
            parts.append(text[start:i])
            start = i = i + 2
            continue
        i += 1
    tail = text[start:]
    if tail.startswith("operator"):
        parts.append(re.match(r"operator(?:\(\)|[^(]*)", tail).group(0))
    else:
        parts.append(tail[:i - start])
    return parts


def exporting_owner(interface, text, weak):
    """The part of the interface that the symbol, in demangled form, belongs to; None if none."""
    is_data = text.startswith(DATA_PREFIXES)
    name = THUNK.sub("", text)
    for prefix in DATA_PREFIXES:
        if name.startswith(prefix):
            name = name[len(prefix):]
    name = re.sub(r"^.*?-in-", "", name) if text.startswith("construction") else name
    if "{lambda" in name or "(anonymous namespace)" in name:
        return None
    parts = owner_parts(name)
    for count in range(1, len(parts) + 1):
        owner = "::".join(parts[:count])
        if owner in interface.instances:
            member_template = "<" in re.sub(r"^operator\S*", "", parts[-1])
            return owner if count == len(parts) or not member_template else None
        if owner in interface.plain:
            return owner if is_data or not weak else None
        if count < len(parts) and (owner, parts[count].rstrip()) in interface.members:
            return (owner, parts[count].rstrip())
    return None


def defined_symbols(nm, objects, is_windows):
    """{name: (weak, data)} of the global symbols that the objects define."""
    symbols = {}
    for line in run([nm, "--defined-only", "--extern-only", "-f", "sysv", *objects]).splitlines():
        fields = [f.strip() for f in line.split("|")]
        if len(fields) != 7 or fields[0] == "Name":
            continue
        name, kind, section = fields[0], fields[2], fields[6]
        if is_windows:
            if not name.startswith("_") or name.startswith("__imp_"):
                continue
            weak = "$" in section
            data = not section.startswith(".text")
            name = name[1:]
        else:
            weak = kind in "WVu"
            data = not section.startswith(".text")
        symbols[name] = (weak, data)
    return symbols


def ranges(numbers):
    numbers, out = sorted(numbers), []
    for n in numbers:
        if out and out[-1][1] == n - 1:
            out[-1][1] = n
        else:
            out.append([n, n])
    return ",".join(str(a) if a == b else f"{a}-{b}" for a, b in out)


def folded(lines):
    """Sorted, with the pool numbers of one family folded into one line with their range."""
    pool = re.compile(r"(KZMBasSrmAllocator<(?:\(\w+\))?)(\d+)(u?>)")
    families = defaultdict(set)
    for line in set(lines):
        numbers = {int(n) for _, n, _ in pool.findall(line)}
        key = pool.sub(r"\1#\3", line) if len(numbers) == 1 else line
        families[key].update(numbers if len(numbers) == 1 else ())
    return sorted(k.replace("#", f"{{{ranges(v)}}}") if v else k for k, v in families.items())


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library", required=True)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--nm", required=True)
    parser.add_argument("--windows", action="store_true")
    parser.add_argument("--include", action="append", default=[], help="include folders")
    parser.add_argument("--headers", action="append", default=[], help="folders of own headers")
    parser.add_argument("--objects", required=True, help="file that lists the objects")
    parser.add_argument("--link", required=True, help="the .def or .map file to write")
    parser.add_argument("--names", required=True, help="the readable list to write")
    parser.add_argument("--instances", required=True,
                        help="header to write that lists the declared instances, for tests")
    args = parser.parse_args()

    headers = sorted(h for folder in args.headers for h in Path(folder).rglob("*.h")
                     if h.name != "kzm_export.h" and h.parent.name != "interop")
    flags = ["-std=c++20", *(f"-I{d}" for d in dict.fromkeys(args.include + args.headers))]
    with tempfile.TemporaryDirectory() as scratch:
        interface = Interface(args.compiler, flags, headers, args.headers, Path(scratch))

    objects = Path(args.objects).read_text().split("\n")
    symbols = defined_symbols(args.nm, [o for o in objects if o], args.windows)
    names = sorted(symbols)
    demangled = dict(zip(names, run(["c++filt"], "\n".join(names)).splitlines()))
    owners = {n: exporting_owner(interface, demangled[n], symbols[n][0]) for n in names}
    exported = [n for n in names if owners[n]]
    if len(exported) > 65535:
        sys.exit(f"{args.library}: {len(exported)} exported names; a DLL can have 65535")

    if args.windows:
        entries = "".join(f'    "{n}"{" DATA" if symbols[n][1] else ""}\n' for n in exported)
        Path(args.link).write_text(f"LIBRARY {args.library}.dll\nEXPORTS\n{entries}")
    else:
        entries = "".join(f'    "{n}";\n' for n in exported)
        global_part = f"  global:\n{entries}" if entries else ""
        Path(args.link).write_text(f"{{\n{global_part}  local:\n    *;\n}};\n")
    Path(args.instances).write_text(
        f"#pragma once\n{interface.includes}\n#define KZM_INSTANCES(X) \\\n{interface.listing}\n")
    lines = folded(demangled[n] for n in exported)
    Path(args.names).write_text("".join(f"{line}\n" for line in lines))
    print(f"{args.library}: {len(exported)} exported names in {len(lines)} lines")

    undefined = (interface.instances | interface.members) - set(owners.values())
    if undefined:
        first = ", ".join(sorted(map(str, undefined))[:20])
        sys.exit(f"{args.library}: {len(undefined)} declared but defined nowhere: {first}")


if __name__ == "__main__":
    main()
