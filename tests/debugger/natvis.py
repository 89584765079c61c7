"""What Visual Studio would show: reads a natvis file and evaluates it in gdb, as far as it is used.

A name that is neither a field of the type nor a variable of the list is an error.
"""
import itertools
import re
import xml.etree.ElementTree as tree

import gdb
import gdb.types

SPACE = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
LIMIT = 12
GIVEN = {}  # values that gdb's variables have already
TRANSLATED = {}


class Natvis:
    def __init__(self, path):
        self.types = []  # (pattern, element)
        self.unused = set()
        for element in tree.parse(path).getroot().iter(SPACE + "Type"):
            names = [element.get("Name")]
            names += [other.get("Name") for other in element.iter(SPACE + "AlternativeType")]
            self.types += [(name, element) for name in names]
            self.unused.update(names)

    def find(self, kind):
        for name, element in self.types:
            if re.fullmatch(re.escape(name).replace(r"\*", ".*"), kind.name or ""):
                self.unused.discard(name)
                return element
        if kind.code != gdb.TYPE_CODE_STRUCT:
            return None
        bases = (self.find(field.type) for field in kind.fields() if field.is_base_class)
        return next((base for base in bases if base is not None), None)

    def display(self, value):
        kind = gdb.types.get_basic_type(value.type)
        element = self.find(kind)
        if kind.code == gdb.TYPE_CODE_PTR and \
                self.find(gdb.types.get_basic_type(kind.target())) is not None:
            return f"-> {self.display(value.dereference())}"
        if element is None:
            return value.cast(kind).format_string(raw=True, symbols=False)
        scope = Scope(value)
        text = next(d for d in element.findall(SPACE + "DisplayString") if scope.holds(d)).text
        return self.fill(text, scope)

    def fill(self, text, scope):
        """The text with its expressions in braces evaluated."""
        def shown(match):
            expression, size = re.fullmatch(r"(.*?)(?:,\[(.*)\])?", match.group(1)).groups()
            value = scope.evaluate(expression)
            if size:
                return repr(value.string(length=int(scope.evaluate(size))))
            return self.display(value)
        return re.sub(r"\{(.*?)\}", shown, text)

    def show(self, value):
        shown = itertools.islice(self.items(value), LIMIT)
        return f"{self.display(value)} {{{', '.join(f'{n}={v}' for n, v in shown)}}}"

    def items(self, value):
        kind = gdb.types.get_basic_type(value.type)
        element = self.find(kind)
        expand = element.find(SPACE + "Expand") if element is not None else None
        for part in expand if expand is not None else ():
            scope = Scope(value)
            if scope.holds(part):
                yield from getattr(self, part.tag.replace(SPACE, ""))(part, scope)

    def Item(self, part, scope):
        name = self.fill(part.get("Name", ""), scope)
        value = scope.evaluate(part.text)
        kind = gdb.types.get_basic_type(value.type)
        yield name, self.display(value) if self.find(kind) is None else self.show(value)

    def ExpandedItem(self, part, scope):
        return self.items(scope.evaluate(part.text))

    def ArrayItems(self, part, scope):
        size, rank = part.find(SPACE + "Size").text, part.findtext(SPACE + "Rank", "1")
        pointer = scope.evaluate(part.find(SPACE + "ValuePointer").text)
        ranges = []
        for i in range(int(rank)):
            scope.variables["$i"] = gdb.Value(i)
            ranges.append(range(int(scope.evaluate(size))))
        for number, place in enumerate(itertools.product(*ranges)):
            yield list(place), self.display((pointer + number).dereference())

    def IndexListItems(self, part, scope):
        for i in range(int(scope.evaluate(part.find(SPACE + "Size").text))):
            scope.variables["$i"] = gdb.Value(i)
            yield [i], self.display(scope.evaluate(part.find(SPACE + "ValueNode").text))

    def TreeItems(self, part, scope):
        value, size = part.find(SPACE + "ValueNode"), part.find(SPACE + "Size")
        children = [part.find(SPACE + side + "Pointer").text for side in ("Left", "Right")]

        def walk(node):
            if int(node):
                own = Scope(node.dereference(), scope.value)
                left, right = (own.evaluate(child) for child in children)
                yield from walk(left)
                yield self.fill(value.get("Name"), own), self.display(own.evaluate(value.text))
                yield from walk(right)
        found = list(walk(scope.evaluate(part.find(SPACE + "HeadPointer").text)))
        if size is not None and int(scope.evaluate(size.text)) != len(found):
            raise gdb.GdbError(f"{size.text} is not {len(found)}")
        return found

    def CustomListItems(self, part, scope):
        for variable in part.findall(SPACE + "Variable"):
            scope.variables[variable.get("Name")] = scope.evaluate(variable.get("InitialValue"))
        return self.steps(part, scope)

    def steps(self, part, scope):
        for step in part:
            tag = step.tag.replace(SPACE, "")
            if tag == "Exec":
                name, expression = step.text.split(" = ")
                before, value = scope.variables[name], scope.evaluate(expression)
                scope.variables[name] = value.cast(before.type)
            elif tag == "Item":
                yield from self.Item(step, scope)
            elif tag == "If" and scope.holds(step):
                yield from self.steps(step, scope)
            while tag == "Loop" and scope.holds(step):
                yield from self.steps(step, scope)


class Scope:
    """The object that names are looked up in, and the variables of a list."""

    def __init__(self, value, owner=None):
        self.value = value
        self.kind = gdb.types.get_basic_type(value.type)
        self.owner = gdb.types.get_basic_type((owner or value).type)
        self.variables = {}

    def holds(self, element):
        condition = element.get("Condition")
        return condition is None or bool(self.evaluate(condition))

    def evaluate(self, expression):
        cast = re.fullmatch(r"\(\w+<.*>::(\w+) \*\)(\w+.*)", expression)
        if cast:  # to a class in the class, which gdb cannot parse
            kind = gdb.lookup_type(f"{self.owner.name}::{cast.group(1)}")
            return self.evaluate(cast.group(2)).cast(kind.pointer())
        for name, value in {"this": self.value.address, **self.variables}.items():
            if GIVEN.get(name) is not value:
                gdb.set_convenience_variable("nv_" + name.lstrip("$"), value)
                GIVEN[name] = value
        key = expression, self.kind.name, self.owner.name, *self.variables
        if key not in TRANSLATED:
            TRANSLATED[key] = self.translate(expression)
        return gdb.parse_and_eval(TRANSLATED[key])

    def translate(self, expression):
        """The expression with its names made gdb's."""
        def resolve(match):
            before, name = match.groups()
            if before or name == "int":
                return match.group()
            if name == "nullptr":
                return "0"
            if name in self.variables:
                return f"$nv_{name.lstrip('$')}"
            if name.startswith("$T"):
                return str(self.owner.template_argument(int(name[2:]) - 1))
            if self.kind.code == gdb.TYPE_CODE_STRUCT and gdb.types.has_field(self.kind, name):
                return f"$nv_this->{name}"
            if expression[match.end():].startswith("<"):  # of a type's name
                return name
            raise gdb.GdbError(f"{self.kind} has no {name}: {expression}")
        return re.sub(r"(\.|->|::)?(\$?\b[A-Za-z_]\w*)", resolve, expression)
