"""Where C++ sources can be changed for a mutation run, and how.

A change is not made in the text but as code that chooses while the program runs: `a < b` becomes
`a < kzm_mutation::LtLe{7} < b`, which is `a <= b` once mutant 7 is on and `a < b` otherwise. So one
build holds hundreds of mutants. Everything is done by inserting text; mutation.h has what is called.
"""

import re
import zlib

BINARY = {"<": ("LtLe", "LtGe"), "<=": ("LeLt", "LeGt"), ">": ("GtGe", "GtLe"),
          ">=": ("GeGt", "GeLt"), "==": ("EqNe",), "!=": ("NeEq",), "+": ("AddSub",),
          "-": ("SubAdd",), "*": ("MulAdd",), "/": ("DivMul",), "%": ("ModMul",),
          "<<": ("ShlShr",), ">>": ("ShrShl",), "&": ("AndOr",), "|": ("OrAnd",), "^": ("XorAnd",)}
ASSIGN = {"+=": "AddSub", "-=": "SubAdd", "*=": "MulAdd", "|=": "OrAnd", "&=": "AndOr",
          "^=": "XorAnd", "<<=": "ShlShr", ">>=": "ShrShl"}
SPELLED = {"Lt": "<", "Le": "<=", "Gt": ">", "Ge": ">=", "Eq": "==", "Ne": "!=", "Add": "+",
           "Sub": "-", "Mul": "*", "Div": "/", "Mod": "%", "Shl": "<<", "Shr": ">>", "And": "&",
           "Or": "|", "Xor": "^"}
OPEN, CLOSE = "([{", ")]}"
# What the compiler itself must know, what has no effect when run, and what no release contains.
NOT_RUN = re.compile(
    r"\b(?:static_assert|sizeof|alignof|alignas|decltype|offsetof|assert|requires|typeid)"
    r"\s*(?=[({])|\bnoexcept\s*(?=\()|\bif constexpr (?=\()|\btemplate\s*(?=<)|\bcase\b[^:;]*:(?!:)"
    r"|\b(?:static )?(?:constexpr|constinit|enum|using|typedef) [^;{]*[;{]")
KEYWORDS = {"return", "break", "continue", "throw", "using", "typedef", "goto", "static", "const",
            "constexpr", "auto", "public", "private", "protected", "co_return", "extern", "friend"}
PRIMARY = re.compile(r"\**(?:this->)?[A-Za-z_]\w*")


class Site:
    """One place and one change: texts to insert, and the change as a reader would write it."""

    def __init__(self, path, text, at, what, inserts, change):
        self.path, self.at, self.what, self.inserts = path, at, what, inserts
        begin, end, new = change
        self.line = text.count("\n", 0, at) + 1
        first = text.rfind("\n", 0, begin) + 1
        last = text.find("\n", end)
        self.old = text[first:last]
        self.new = text[first:begin] + new + text[end:last]
        self.source = " ".join(self.old.split())
        self.key = f"{path} | {self.source} | {what}"


def mask(text):
    """The text with comments, literals and preprocessor lines blanked out, of the same length."""
    def blank(match):
        return re.sub(r"[^\n]", " ", match.group())

    def blank_text(match):
        return match.group()[0] + "_" * (len(match.group()) - 2) + match.group()[-1]
    text = re.sub(r'//[^\n]*|/\*.*?\*/|R"\((?:.|\n)*?\)"|"(?:\\.|[^"\\\n])*"'
                  r"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'",
                  lambda m: blank(m) if m.group()[0] == "/" else blank_text(m), text, flags=re.S)
    return re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", blank, text, flags=re.M)


def matching(text, at):
    """The place of the bracket that closes the one at `at`."""
    depth = 0
    for i in range(at, len(text)):
        if text[i] in OPEN:
            depth += 1
        elif text[i] in CLOSE:
            depth -= 1
            if depth == 0:
                return i
    return len(text)


class Source:
    """The sites of one file."""

    def __init__(self, path, text, seed):
        self.path, self.text, self.seed = path, text, seed
        self.masked = mask(text)
        self.sites = []
        self.runs = bytearray(len(text))  # 1 where code runs
        self.declarations(0, len(text))
        for match in NOT_RUN.finditer(self.masked):
            end = match.end()
            if match.group().rstrip()[-1] not in ":;{":
                if match.group().startswith("template"):
                    end = self.masked.find("\n", end)
                else:
                    end = matching(self.masked, end)
            elif match.group()[-1] == "{" and "enum" not in match.group():
                end = match.end() - 1
                if "=" in match.group() or "(" not in match.group():
                    end = matching(self.masked, end)
                else:
                    continue  # a constexpr function or lambda
            self.runs[match.start():end] = bytes(end - match.start())
        self.operators()
        self.constants()
        self.conditions()
        self.sites = [site for site in self.sites if self.runs[site.at]]

    # --- which parts run -----------------------------------------------------------------------

    def declarations(self, at, end):
        """Walks namespaces and classes; the bodies of functions are statements."""
        start = at
        while at < end:
            c = self.masked[at]
            if c in "([":
                at = matching(self.masked, at)
            elif c == ";":
                start = at + 1
            elif c == "{":
                close = matching(self.masked, at)
                head = re.sub(r"template\s*<[^{}]*?>\s*(?=[a-zA-Z~])", "", self.masked[start:at])
                if "(" not in head and re.search(r"\b(namespace|class|struct|union|extern)\b", head):
                    self.declarations(at + 1, close)
                elif "(" in head and not re.search(r"[^=!<>]=\s*$", head):
                    colon = re.search(r"\)[^()]*?[^:]:(?!:)", self.masked[start:at])
                    if colon:  # the initializers of a constructor
                        self.runs[start + colon.end():at] = b"\1" * (at - start - colon.end())
                        if self.masked[at - 1] not in " )}":  # m_field{...}
                            at = close + 1
                            continue
                    self.runs[at:close] = b"\1" * (close - at)
                    self.block(at + 1, close)
                at = close
                start = at + 1
            at += 1

    def block(self, at, end):
        while at < end:
            at = self.statement(at, end)

    def statement(self, at, end):
        masked = self.masked
        while at < end and masked[at].isspace():
            at += 1
        if at >= end:
            return end
        if masked[at] == "{":
            close = matching(masked, at)
            self.block(at + 1, close)
            return close + 1
        word = re.match(r"\w*", masked[at:at + 30]).group()
        if word in ("if", "for", "while", "switch", "catch"):
            paren = masked.find("(", at)
            close = matching(masked, paren)
            return self.statement(close + 1, end)
        if word in ("else", "do", "try"):
            return self.statement(at + len(word), end)
        if word in ("case", "default"):
            return re.compile(r":(?!:)").search(masked, at).end()
        if word in ("struct", "class", "union") and masked[at:masked.find(";", at)].count("{"):
            close = masked.find(";", matching(masked, masked.find("{", at)))
            self.declarations(at, close)
            return close + 1
        stop, depth = at, 0
        while stop < end and (masked[stop] != ";" or depth):
            if masked[stop] == "{" and re.search(r"(\)|\]|mutable|noexcept|const)\s*$",
                                                 masked[max(at, stop - 12):stop]):
                close = matching(masked, stop)
                self.block(stop + 1, close)
                stop = close
            elif masked[stop] in OPEN:
                depth += 1
            elif masked[stop] in CLOSE:
                depth -= 1
            stop += 1
        self.simple(at, stop, word)
        return stop + 1

    def simple(self, at, end, word):
        """A statement without statements in it, up to its semicolon."""
        text = self.masked[at:end]
        first = self.primary(at)
        rest = self.masked[first:end].strip()
        plain = word in ("break", "continue", "delete") or text == "return"
        step = text[:2] in ("++", "--")
        call = first == end and text.endswith(")") and text not in ("_", "")
        assignment = re.match(r"(?:[-+*/%&|^]|<<|>>)?=[^=]", rest)
        if word in KEYWORDS and not plain:
            return
        if plain or step or call or (assignment and first > at):
            self.add(at, "statement left out",
                     [(at, "{ if (!kzm_mutation::On(#)) "), (end + 1, " }")], (at, end + 1, ";"))
        if assignment and first > at:
            op = assignment.group()[:-1]
            if op in ASSIGN:
                where = self.masked.find(op, first)
                mutation = ASSIGN[op]
                new = SPELLED[re.findall("[A-Z][a-z]+", mutation)[1]] + "="
                self.add(where, f"{op} to {new}",
                         [(at, f"kzm_mutation::Assign{mutation}(#, "), (first, ")")],
                         (where, where + len(op), new))

    def primary(self, at):
        """The end of the name, call, member or element that begins at `at`."""
        match = PRIMARY.match(self.masked, at)
        if not match:
            return at
        at = match.end()
        while at < len(self.masked):
            more = re.compile(r"(?:\.|->|::)~?\w+").match(self.masked, at)
            if more:
                at = more.end()
            elif self.masked[at] in "([":
                at = matching(self.masked, at) + 1
            elif self.masked[at] == "<" and re.match(r"<[\w:*, <>]*>[({:]", self.masked[at:at + 60]):
                at += re.match(r"<[\w:*, <>]*>", self.masked[at:at + 60]).end()
            else:
                break
        return at

    def choice(self, at, choices):
        """One of them, by the seed and what stands there, whatever changes elsewhere."""
        begin, end = self.text.rfind("\n", 0, at) + 1, self.text.find("\n", at)
        where = f"{self.seed} {self.path} {at - begin} {self.text[begin:end]}"
        return choices[zlib.crc32(where.encode()) // 7 % len(choices)]

    # --- what is changed -----------------------------------------------------------------------

    def add(self, at, what, inserts, change):
        self.sites.append(Site(self.path, self.text, at, what, inserts, change))

    def operators(self):
        for match in re.finditer(r"(?<=[\w)\]\"'])(\s+)([-+*/%&|^]|<<|>>|[<>]=?|[=!]=)(?=\s)",
                                 self.masked):
            op, at = match.group(2), match.start(2)
            before = re.search(r"(\w+)$", self.masked[:match.start(1)][-20:])
            if before and before.group(1) in ("return", "case", "operator", "template", "typename"):
                continue
            mutation = self.choice(at, BINARY[op])
            new = SPELLED[re.findall("[A-Z][a-z]+", mutation)[1]]
            self.add(at, f"{op} to {new}",
                     [(match.end(2), f" kzm_mutation::{mutation}{{#}} {op}")],
                     (at, match.end(2), new))
        for match in re.finditer(r"(\+\+|--)(?=[\w*(])", self.masked):
            begin = match.end()
            end = self.primary(begin)
            if end > begin:
                other = {"++": "--", "--": "++"}[match.group()]
                self.add(match.start(), f"{match.group()} to {other}",
                         [(begin, "kzm_mutation::Step(#, "), (end, ")")],
                         (match.start(), begin, other))
        for match in re.finditer(r"(?<![\w)\]])!(?=[\w(*])", self.masked):
            self.add(match.start(), "! left out", [(match.start(), "kzm_mutation::On(#) != ")],
                     (match.start(), match.end(), ""))

    def constants(self):
        for match in re.finditer(r"(?<![\w.'])(?:(\d+|0x[0-9a-fA-F]+)([uUlL]*)|true|false"
                                 r"|(?:\w+::)*k[A-Z]\w*|'_+')(?![\w.:(]|\s*[{])", self.masked):
            begin, end = match.span()
            old = self.text[begin:end]
            if re.search(r"\d[eE][-+]?$", self.masked[:begin][-3:]):
                continue  # an exponent
            if re.match(r"\s*>", self.masked[end:]) and not re.match(r"\s+>=? ", self.masked[end:]):
                continue  # a template argument
            if re.search(r"(<|, )$", self.masked[:begin][-2:]) and self.masked[end:end + 1] == ">":
                continue
            if re.search(r"[\w>*] \w+\[$", self.masked[:begin][-60:]):
                continue  # the size of an array
            if match.group(1):
                value = int(match.group(1), 0 if match.group(1)[:1] != "0" or "x" in match.group(1) else 8)
                value = self.choice(begin, [value + 1, value - 1]) if value else 1
                new = f"{value}{match.group(2)}"
            elif old in ("true", "false"):
                new = {"true": "false", "false": "true"}[old]
            elif old[0] == "'":
                new = "'@'"
            else:
                new = f"{old} + 1"
            self.add(begin, f"{old} to {new}",
                     [(begin, f"(kzm_mutation::On(#) ? {new} : "), (end, ")")],
                     (begin, end, new))

    def conditions(self):
        for match in re.finditer(r"\b(if|while) \(", self.masked):
            begin = match.end()
            end = matching(self.masked, begin - 1)
            inside = self.masked[begin:end]
            if ";" in inside or re.search(r"[^=!<>]=[^=]", inside):
                continue
            choices = [("negated", "kzm_mutation::On(#) != static_cast<bool>(", ")",
                        f"!({self.text[begin:end]})"),
                       ("made false", "!kzm_mutation::On(#) && (", ")", "false"),
                       ("made true", "kzm_mutation::On(#) || (", ")", "true")]
            what, before, after, new = self.choice(begin, choices)
            self.add(begin, f"condition {what}", [(begin, before), (end, after)],
                     (begin, end, new))
        for match in re.finditer(r"\s\?(?=\s)", self.masked):
            at = match.end() - 1
            what, new = self.choice(at, [("made false", " && !kzm_mutation::On(#) "),
                                          ("made true", " || kzm_mutation::On(#) ")])
            text = {"made false": "&& false ?", "made true": "|| true ?"}[what]
            self.add(at, f"choice {what}", [(at, new)], (at, at + 1, text))
        for match in re.finditer(r"\s(&&|\|\|)(?=\s)", self.masked):
            at, end = match.end(), match.end()
            depth = 0
            while end < len(self.masked):
                c = self.masked[end]
                if depth == 0 and (c in ",;?)]}" or self.masked[end:end + 2] in ("&&", "||") or
                                   self.masked[end:end + 3] == " : "):
                    break
                depth += (c in OPEN) - (c in CLOSE)
                end += 1
            while self.masked[end - 1].isspace():
                end -= 1
            guard = {"&&": " (kzm_mutation::On(#) || (", "||": " (!kzm_mutation::On(#) && ("}
            self.add(match.start(1), f"second operand of {match.group(1)} left out",
                     [(at, guard[match.group(1)]), (end, "))")], (match.start(1), end, ""))


def instrumented(text, sites):
    """The text with the numbered sites, as {number: site}, chosen between while it runs."""
    inserts = []
    for number, site in sites.items():
        length = site.inserts[-1][0] - site.inserts[0][0]
        for i, (at, new) in enumerate(site.inserts):
            # At one place: first what closes, the inner one first; then what opens, the outer first.
            closing = i > 0
            inserts.append((at, 0 if closing else 1, length if closing else -length,
                            new.replace("#", str(number))))
    for at, _, _, new in sorted(inserts, reverse=True):
        text = text[:at] + new + text[at:]
    return text
