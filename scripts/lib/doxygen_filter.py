#!/usr/bin/env python3
"""doxygen_filter.py FILE: FILE as Doxygen is to read it, on standard output.

In a header every `//` comment that stands directly before a declaration becomes its description, and
that of all declarations which follow without a blank line, comment or access label between. A
comment behind a declaration comes first in its own description. Comments are plain text: only code
in backticks and code indented by four is marked up.

Left out are what is no part of the interface (private members, friends, definitions outside of their
class, forward declarations, lists of instances with their macros) and members that the language
makes by itself. Line numbers stay.

In a manual page the title gets a name to refer to, and links to files that are no pages become plain
text.
"""

import re
import sys
from bisect import bisect_right
from pathlib import Path

# What every C++ programmer knows, where no comment says more.
KNOWN = [
    (r"^using (value_type|key_type|mapped_type|size_type|difference_type|(const_)?reference|pointer"
     r"|(const_)?iterator(_category|_concept)?) =",
     "For generic code: means what it does in the standard containers and iterators."),
    (r"^(\w+)\((const )?\1\s*(<[^()]*>)?\s*&[^()]*\) = delete", "Objects are not copied."),
    (r"operator=\([^()]*\) = delete", "Objects are not assigned."),
    (r"operator(\*|->|\+\+|--)\((int)?\)", "As for every standard iterator."),
]
# Left out where no comment stands: the language makes them, and they do what they always do.
MADE_BY_THE_LANGUAGE = [r"= default;$", r"^(inline |virtual )*~\w+\(\)"]

# What is said of other members before them does not hold for these.
ON_ITS_OWN = r"^(constexpr |explicit |virtual )*((\w+)\((const )?\3\b[^()]*&[^()]*\)|~|.*operator=\()"

BODY_WORDS = {"const", "noexcept", "override", "final", "try", "mutable"}


class Declaration:
    def __init__(self, kind, start, head_end, end, text, access):
        self.kind = kind  # class, function, macro, label or other
        self.start, self.head_end, self.end = start, head_end, end
        self.text = " ".join(text.split())
        self.shown = access != "private"
        self.group = None  # the lines of the comment above, shared by its group
        self.leads = False  # whether it is the first of its group
        self.notes = []


def mask(text):
    """Text of equal length without comments, literals and directives; comments as (start, end);
    directives as (start, end)."""
    out, comments, directives = list(text), [], []
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9a-zA-Z])\'(?:\\.|[^\'\\\n])+\''
        r"|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.S | re.M)
    for match in pattern.finditer(text):
        if match.group().startswith("/"):
            comments.append(match.span())
        elif match.group().lstrip().startswith("#"):
            directives.append(match.span())
        for i in range(*match.span()):
            if out[i] != "\n":
                out[i] = " "
    return "".join(out), comments, directives


def closing(code, position):
    """The place of the bracket that closes the one at position."""
    depth = 0
    for i in range(position, len(code)):
        if code[i] in "({[":
            depth += 1
        elif code[i] in ")}]":
            depth -= 1
            if depth == 0:
                return i
    raise ValueError("bracket without end")


def without_template(text):
    """The declaration without `template <...>` and the requirements right behind it."""
    text = text.strip()
    while text.startswith("template"):
        depth = 0
        for i, c in enumerate(text):
            depth += (c == "<") - (c == ">" and text[i - 1] != "-")
            if c == ">" and depth == 0:
                break
        text = text[i + 1:].strip()
    return re.sub(r"^requires\s*(\((?:[^()]|\([^()]*\))*\)|[\w:]+<[^<>]*>)\s*", "", text)


def is_initializer(before):
    """Whether a brace behind this text opens a value rather than a body."""
    before = before.rstrip()
    if before.endswith(("=", ",", "(", "return")):
        return True
    word = re.search(r"(\w+)$", before)
    if not word or word.group(1) in BODY_WORDS or "->" in before:
        return False
    return bool(re.search(r"\)[^()]*(?<!:):(?!:)", before)) or "(" not in before


def parse(code, position, end, kind, found, access="public"):
    """Appends the declarations of code[position:end], a scope of that kind."""
    while True:
        while position < end and (code[position].isspace() or code[position] == ";"):
            position += 1
        if position >= end:
            return
        label = re.compile(r"(public|protected|private)\s*:(?!:)").match(code, position)
        if label and kind == "class":
            access = label.group(1) if access != "hidden" else access
            found.append(Declaration("label", position, label.end(), label.end(), "", "private"))
            position = label.end()
            continue
        instances = re.compile(r"[A-Z][A-Z0-9_]+\(.*\)[ \t]*$", re.M).match(code, position)
        if instances and kind == "namespace":
            found.append(Declaration("other", position, instances.end(), instances.end(), "", "private"))
            position = instances.end()
            continue
        position = statement(code, position, end, kind, found, access)


def statement(code, start, end, kind, found, access):
    """Appends the declaration that begins at start; returns where it ends."""
    i, nested = start, None
    while i < end:
        c = code[i]
        if c in "([":
            i = closing(code, i)
        elif c == ";" or (c == "," and kind == "enum"):
            break
        elif c == "{":
            before = without_template(code[start:i])
            after = closing(code, i)
            if re.match(r"(inline )?namespace\b|extern\s*$", before):
                hidden = "hidden" if re.search(r"detail|\bstd\b", before) else access
                parse(code, i + 1, after, "namespace", found, hidden)
                return after + 1
            tag = re.match(r"(class|struct|union|enum)\b", before)
            if tag and nested is None:
                nested = (i, after, tag.group(1))
                i = after
            elif is_initializer(code[start:i]):
                i = after
            else:
                found.append(Declaration("function", start, i, after + 1, code[start:i + 1], access))
                return after + 1
        i += 1
    if nested:
        opened, closed, tag = nested
        found.append(Declaration("class", start, opened, i + 1, code[start:opened], access))
        inner = access if tag != "class" or access in ("private", "hidden") else "private"
        if access in ("private", "hidden"):
            inner = "hidden"
        parse(code, opened + 1, closed, "enum" if tag == "enum" else "class", found, inner)
    else:
        last = min(i + 1, end)
        if kind == "enum":
            last = i
        found.append(Declaration("other", start, last, last, code[start:last], access))
    return i + 1


def is_hidden(declaration):
    text = without_template(declaration.text)
    if declaration.kind in ("label", "macro"):
        return False
    if declaration.kind == "other":
        if re.match(r"(class|struct|union|enum)\b[\w\s]*;$", text) or "extern template" in text:
            return True
    if re.match(r"friend\b", text) and declaration.kind != "function":
        return True
    # A definition of what a class declares.
    if re.search(r"[\w>]::\s*~?(operator\W+|\w+)\s*(\(|=(?!=))", text.split("(")[0] + "(") \
            and declaration.kind == "function":
        return True
    if re.search(r"\w\s*(<[^()]*>)?::\w+ =", text) and not text.startswith("using"):
        return True
    return text.startswith(("class std::", "struct std::")) or not declaration.shown


def plain(text):
    """Text without anything that Doxygen would take for markup."""
    parts = re.split(r"(`[^`]*`)", text)
    for i in range(0, len(parts), 2):
        parts[i] = re.sub(r"[\\@<>&#$%*]", lambda m: "\\" + m.group(), parts[i])
        parts[i] = parts[i].replace("~", "&#126;")
        parts[i] = re.sub(r"(?<!\w)::", r"\\::", parts[i])
        parts[i] = parts[i].replace("---", r"\---").replace("--", r"\--")
        parts[i] = re.sub(r"^(\s*)([-+])(?=\s)", r"\1\\\2", parts[i])
        parts[i] = re.sub(r"^(\s*\d+)\.(?=\s)", r"\1\\.", parts[i])
    return "".join(parts)


def in_lines(lines):
    """A comment's lines, as many, with its code marked."""
    result, code = [], False
    for line in lines:
        is_code = line.startswith("    ") and (code or not result or not result[-1].strip())
        if is_code and not code:
            if result:
                result[-1] = "@code{.cpp}"
        elif code and not is_code:
            result[-1] += " @endcode"
        code = is_code
        result.append(line[4:] if code else plain(line))
    if code:
        result[-1] += " @endcode"
    return result


def header(text):
    code, comments, directives = mask(text)
    starts = [0] + [m.end() for m in re.finditer("\n", text)]

    def line_of(offset):
        return bisect_right(starts, offset) - 1

    lines = text.split("\n")
    found = []
    parse(code, 0, len(code), "namespace", found)
    for begin, end in directives:
        macro = re.match(r"\s*#define (\w+)", text[begin:end])
        if macro:
            found.append(Declaration("macro", begin, end, end, macro.group(1), "public"))
    found.sort(key=lambda d: d.start)

    # Comments that fill lines, and comments behind code with those that go on below them.
    whole, behind = {}, {}
    for begin, end in comments:
        line, column = line_of(begin), begin - starts[line_of(begin)]
        content = re.sub(r"^// ?", "", text[begin:end])
        if lines[line][:column].strip():
            behind[line] = (column, [content])
        elif line - 1 in behind and behind[line - 1][0] == column:
            behind[line - 1][1].append(content)
            behind[line] = behind[line - 1]
        else:
            whole[line] = content

    edits = []  # (start, end, text)

    def blank(begin, end):
        edits.append((begin, end, "\n" * text.count("\n", begin, end)))

    previous = None
    for each in found:
        line = line_of(each.start)
        above = line - 1
        if above in whole:
            first = above
            while first - 1 in whole:
                first -= 1
            each.group, each.leads = (first, [whole[i] for i in range(first, line)]), True
        elif previous and previous.kind not in ("class", "label") \
                and line_of(previous.end - 1) in (line, above):
            alone = [bool(re.match(ON_ITS_OWN, without_template(d.text)))
                     for d in (previous, each)]
            if alone[0] or not alone[1]:
                each.group = previous.group
        previous = each
        seen = set()
        for i in [*range(line, line_of(each.head_end) + 1), line_of(each.end - 1)]:
            if i in behind and id(behind[i]) not in seen:
                if starts[i] + behind[i][0] >= each.start:
                    seen.add(id(behind[i]))
                    each.notes += behind[i][1]

    for each in found:
        if each.kind == "label":
            continue
        if each.kind == "macro" and not (each.text.startswith("KZM_") and each.group):
            blank(each.start, each.end)
            continue
        if is_hidden(each):
            blank(each.start, each.end)
            continue
        short = without_template(each.text)
        # A virtual destructor and a `= default` with a comment of its own stay.
        if not each.notes and not each.leads and any(
                re.search(p, short) for p in MADE_BY_THE_LANGUAGE):
            blank(each.start, each.end)
            continue
        note = " ".join(plain(n) for n in each.notes)
        if each.group and each.leads:
            first, content = each.group
            described = in_lines(content)
            if note:
                described[0] = note + " <p> " + described[0]
            described[0] = "/** " + described[0]
            described[-1] += " */"
            for i, line in enumerate(described, first):
                edits.append((starts[i], starts[i] + len(lines[i]), line))
            continue
        known = next((says for p, says in KNOWN if re.search(p, short)), "")
        if each.group and not (known and short.startswith("using")):
            note = " <p> ".join(filter(None, [note, " ".join(
                plain(l) or "<p>" for l in each.group[1] if not l.startswith("    "))]))
        if note or known:
            edits.append((each.start, each.start, f"/** {note or known} */ "))

    edits.append((0, 0, "/** @file */ "))
    result, position = [], 0
    for begin, end, new in sorted(edits, key=lambda e: (e[0], e[1])):
        if begin < position:
            continue  # inside of something that is left out
        result += [text[position:begin], new]
        position = end
    return "".join(result) + text[position:]


def classes(text):
    """Kind and name of each class of a header that is described, nested ones left out."""
    code = mask(text)[0]
    found, outer = [], 0
    parse(code, 0, len(code), "namespace", found)
    for each in sorted(found, key=lambda d: d.start):
        named = re.match(r"(class|struct) (?:KZM_API )?(\w+)( final)?\s*(:(?!:)|$)",
                         without_template(each.text))
        if each.kind == "class" and each.shown and each.start >= outer:
            outer = each.end
            if named:
                yield named.group(1), named.group(2)


def page(path):
    text = path.read_text()

    def link(match):
        target = match.group(2).split("#")[0]
        if re.match(r"[a-z]+:", target) or not target:
            return match.group()
        file = (path.parent / target).resolve()
        if file.name == "getting-started.md":  # the start page
            return f"[{match.group(1)}](index.html)"
        inside = file.is_file() and file.suffix == ".md" and file.is_relative_to(Path("docs").resolve())
        return match.group() if inside else match.group(1)

    text = re.sub(r"\[([^\]]*)\]\(([^)\s]+)\)", link, text)
    return re.sub(r"\A# .*", lambda m: f"{m.group()} {{#page_{path.stem}}}", text)


if __name__ == "__main__":
    source = Path(sys.argv[1])
    sys.stdout.write(page(source) if source.suffix == ".md" else header(source.read_text()))
