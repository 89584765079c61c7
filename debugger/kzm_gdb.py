"""Views of the library's values for gdb, which loads this file by itself beside the library.

They read memory and never call into the program, so they work on core files too, and lazily: gdb
takes as many elements as `print elements` says. What holds no value, because it is not initialised
or destroyed, shows as a text in angle brackets. `print $kzm_sharers(x)` is the number of values
that share the contents of x, `print/r x` shows the fields.
"""

import itertools
import re
import struct

import gdb
import gdb.printing
import gdb.types

NOT_READABLE = "<not readable>"
INCOMPLETE = "<incomplete type: compile with -femit-class-debug-always>"
NOT_VALID = "<not valid: uninitialised or destroyed>"
COUNT_LIMIT = 1000  # where the contents must be walked to be counted
INT_MAX = 2**31 - 1


class Invalid(Exception):
    """The fields contradict each other."""


def check(condition):
    if not condition:
        raise Invalid


# What memory holds. Nothing here knows a class of the library.


def read(address, size, count, code):
    """`count` numbers of `size` bytes as a tuple; empty where all of them are 0."""
    raw = gdb.selected_inferior().read_memory(address, size * count).tobytes()
    if raw.count(0) == len(raw):
        return ()
    order = ">" if "big endian" in gdb.execute("show endian", to_string=True) else "<"
    return struct.unpack(f"{order}{count}{code}", raw)


def present(table, slots, down=False):
    """(slot, address) of the entries of an array of pointers that are not null."""
    size = table.type.target().sizeof
    step = 4096
    firsts = range(0, slots, step)
    for first in reversed(firsts) if down else firsts:
        count = min(step, slots - first)
        entries = read(int(table) + first * size, size, count, "Q" if size == 8 else "I")
        numbered = [(first + i, entry) for i, entry in enumerate(entries) if entry]
        yield from reversed(numbered) if down else numbered


def at(address, pointer_type):
    """The object behind an address that was read from an array of such pointers."""
    return gdb.Value(address).cast(pointer_type).dereference()


def array_items(first, count):
    for i in range(count):
        yield f"[{i}]", (first + i).dereference()


def plural(count, noun):
    return f"{count} {noun}" if str(count) == "1" else f"{count} {noun}s"


def counted(items):
    """How many there are, as a text; it does not go on for ever."""
    count = sum(1 for _ in itertools.islice(items, COUNT_LIMIT + 1))
    return f"more than {COUNT_LIMIT}" if count > COUNT_LIMIT else str(count)


# How the values lie in memory: the only place that names fields.


def handle(value):
    """(pointer to the shared object, number of holders) of a cow_CountedHld or cow_COW."""
    check(int(value["m_counter"]) != 0)
    sharers = int(value["m_counter"]["m_count"])
    check(sharers >= 1)
    return value["m_referent"], sharers


def shared_object(value):
    """The same for handles that must have an object."""
    referent, sharers = handle(value)
    check(int(referent) != 0)
    return referent.dereference(), sharers


def string(value):
    """(first byte, length, number of sharers) of a text; null and 0 sharers for the empty one."""
    if int(value["m_rep"]) == 0:
        return None, 0, 0
    record = value["m_rep"].dereference()
    length, capacity = int(record["m_length"]), int(record["m_capacity"])
    check(0 <= length <= capacity and int(record["m_count"]) >= 1)
    check(int(value["m_data"]) == int(value["m_rep"]) + record.type.sizeof)
    return value["m_data"], length, int(record["m_count"])


def list_length(value):
    """(length, number of sharers)"""
    length, offset = int(value["m_length"]), int(value["m_offset"])
    slots, shift = int(value["m_tableSlots"]), int(value["m_blockShift"])
    check(length >= 0 and offset >= 0 and slots >= 0 and 0 <= shift < 31)
    check(offset + length <= slots << shift and int(value["m_tableCount"]) != 0)
    sharers = int(value["m_tableCount"].dereference())
    check(sharers >= 1)
    return length, sharers


def list_items(value):
    length, _ = list_length(value)
    offset, shift = int(value["m_offset"]), int(value["m_blockShift"])
    slot = -1
    for i in range(length):
        if slot != offset + i >> shift:
            slot = offset + i >> shift
            block = value["m_table"][slot]
            check(int(block) != 0 and int(block["m_count"]) >= 1)
            data = block["m_data"]
        yield f"[{i}]", data[offset + i & (1 << shift) - 1]


def btree_nodes(root):
    """The nodes in key order."""
    path, seen, node = [], set(), root
    while path or int(node):
        while int(node):
            check(int(node) not in seen)
            seen.add(int(node))
            path.append(node)
            node = btree_child(node, 0)
        node = path.pop()
        yield node.dereference()
        node = btree_child(node, 1)


def btree_child(node, side):
    child = node["m_children"][side]
    return handle(child.dereference())[0] if int(child) else child


def map_nodes(root, size):
    """The nodes in the order of the map's own walks."""
    pending = [root] if int(root) else []
    for _ in range(size):
        check(pending)
        node = pending.pop()
        for child in (1, 0):
            referent, _ = handle(node["m_children"][child])
            if int(referent):
                pending.append(referent)
        yield node.dereference()
    check(not pending)


def tree_nodes(value):
    """The nodes of a KZMBasTree in key order."""
    owner = gdb.types.get_basic_type(value.type)
    node_type = gdb.lookup_type(f"{owner.name}::Node").pointer()
    link, path = value["m_root"], []
    for _ in range(int(value["m_size"])):
        while int(link):
            check(len(path) < 64)
            path.append(link)
            link = link["m_child"][0]
        check(path)
        link = path.pop()
        yield link.cast(node_type).dereference()
        link = link["m_child"][1]


def blocks(value, down=False):
    """(number of the first cell, pointer to it) of each block of an omi_BlockedArray."""
    shift, slots = int(value["m_blockShift"]) & 31, int(value["m_slotCount"])
    size = int(value["m_blockSize"])
    check(size == 1 << shift and int(value["m_blockMask"]) == size - 1)
    check(int(value["m_growthStep"]) > 0 and (slots == 0 or int(value["m_table"]) != 0))
    cell_type = value["m_table"].type.target()
    for slot, address in present(value["m_table"], slots, down):
        yield slot << shift, gdb.Value(address).cast(cell_type)


def blocked_items(value):
    size = int(value["m_blockSize"])
    for first, cells in blocks(value):
        for i in range(size):
            yield first + i, cells[i]


def bits(value, down=False):
    """The members of an omi_BlkBitVect."""
    for first, words in blocks(value, down):
        numbered = enumerate(read(int(words), 4, int(value["m_blockSize"]), "I"))
        for i, word in reversed(list(numbered)) if down else numbered:
            for bit in range(31, -1, -1) if down else range(32):
                if word >> bit & 1:
                    yield (first + i) * 32 + bit


def bit_count(value):
    next(blocks(value), None)
    if int(value["m_stale"]):
        return counted(bits(value))
    return str(int(value["m_bitCount"]))


def signed_set(negative, members):
    """The members of a set in two bit vectors, in the order of its listings."""
    return itertools.chain((-bit for bit in bits(negative)), bits(members))


def table_items(value, down=False):
    """(key, cell) of the members of an omi_UintTable."""
    shift, slots = int(value["m_keyShift"]), int(value["m_slotCount"])
    check(shift <= 32 and int(value["m_localMask"]) == (1 << shift) - 1)
    check((slots <= 1 << 32 - shift or slots <= 64) and int(value["m_table"]) != 0)
    for slot, address in present(value["m_table"], slots, down):
        block = at(address, value["m_table"].type.target())
        inner, mask = int(block["m_blockShift"]) & 31, int(block["m_blockMask"])
        group = None
        for bit in bits(block["m_members"], down):
            if group != bit >> inner:
                group = bit >> inner
                check(group < int(block["m_slotCount"]))
                cells = block["m_table"][group]
                check(int(cells) != 0)
            yield (slot << shift) + bit, cells[bit & mask]


def signed_table_items(value):
    """The same of an omi_IntTable, keys ascending."""
    for key, cell in table_items(value["m_negative"].dereference(), down=True):
        yield -key, cell
    yield from table_items(value["m_nonNegative"].dereference())


def signed_table_size(value):
    halves = value["m_negative"], value["m_nonNegative"]
    check(all(int(half) for half in halves))
    return sum(int(half["m_memberCount"]) for half in halves)


def multi_map_items(value):
    link_type = value["m_currentLink"].type
    left = int(value["m_entryCount"])
    for key, cell in signed_table_items(value):
        link = cell.cast(link_type)
        while int(link):
            check(left > 0)
            left -= 1
            yield key, link["value"]
            link = link["next"]


def hash_entries(value):
    count, seen = int(value["m_bucketCount"]), set()
    check(count > 0 and int(value["m_buckets"]) != 0)
    for _, address in present(value["m_buckets"], count):
        entry = gdb.Value(address).cast(value["m_buckets"].type.target())
        while int(entry):
            check(int(entry) not in seen)
            seen.add(int(entry))
            yield entry.dereference()
            entry = entry["next"]


def vector_items(value, element=None):
    size, capacity = int(value["m_size"]), int(value["m_capacity"])
    check(0 <= size <= capacity and (capacity == 0 or int(value["m_data"]) != 0))
    element = element or gdb.types.get_basic_type(value.type).template_argument(0)
    return array_items(value["m_data"].cast(element.pointer()), size)


def walk_node(value):
    """The node that a cow_BtreeWalk or cow_MapWalk stands on, or null."""
    return value["m_current"]


def sharers_of(value):
    """How many values share the contents of this one."""
    kind = gdb.types.get_basic_type(value.type)
    if gdb.types.has_field(kind, "m_counter"):
        return handle(value)[1]
    if gdb.types.has_field(kind, "m_rep") and gdb.types.has_field(kind, "m_data"):
        return string(value)[2]
    if gdb.types.has_field(kind, "m_tableCount"):
        return list_length(value)[1]
    for field in ("m_root", "m_rep", "m_table", "m_map"):
        if gdb.types.has_field(kind, field):
            return sharers_of(value[field])
    raise gdb.GdbError(f"{kind} is not shared")


# How they are shown. A view is chosen by the name of the class template and needs the fields that
# it lists.


class View:
    hint = "array"
    fields = ()

    def __init__(self, value):
        self.value = value

    def title(self, what, sharers=1):
        name = re.match(r"\w+", gdb.types.get_basic_type(self.value.type).name).group()
        return f"{name} {what}" + (f", shared by {sharers}" if sharers > 1 else "")

    def text(self):
        """What is said before the contents."""

    def items(self):
        """Pairs of name and value; in maps of key and value."""
        return ()

    def to_string(self):
        try:
            return self.text()
        except gdb.MemoryError:
            return NOT_READABLE
        except gdb.error:
            return INCOMPLETE  # fields or template arguments that the program does not describe
        except Invalid:
            return NOT_VALID

    def children(self):
        complaint = None
        try:
            self.text()  # which says what is wrong with the value as a whole
        except (gdb.error, Invalid):
            return
        number = 0
        try:
            for key, item in self.items():
                if isinstance(item, gdb.Value):
                    item.fetch_lazy()
                if self.hint == "map":
                    yield f"[{number}]", key
                    yield f"[{number + 1}]", item
                    number += 2
                else:
                    yield key, item
        except gdb.MemoryError:
            complaint = NOT_READABLE
        except gdb.error:
            complaint = INCOMPLETE
        except Invalid:
            complaint = NOT_VALID
        if complaint:
            yield "[error]", complaint
            if self.hint == "map":
                yield "[error]", complaint

    def display_hint(self):
        return self.hint


class String(View):
    hint = "string"
    fields = ("m_data", "m_rep")

    def text(self):
        data, length, _ = string(self.value)
        return data.lazy_string(length=length) if length else ""

    def display_hint(self):
        return None if self.to_string() in (NOT_READABLE, INCOMPLETE, NOT_VALID) else "string"


class List(View):
    fields = ("m_length", "m_tableSlots", "m_blockShift", "m_offset", "m_tableCount", "m_table")

    def text(self):
        length, sharers = list_length(self.value)
        return self.title(f"of length {length}", sharers)

    def items(self):
        return list_items(self.value)


class FixedArray(View):
    fields = ("m_rep",)

    def text(self):
        rep, sharers = shared_object(self.value["m_rep"])
        size = int(rep["m_size"])
        check(size >= 0 and (size == 0 or int(rep["m_data"]) != 0))
        return self.title(f"of length {size}", sharers)

    def items(self):
        rep, _ = shared_object(self.value["m_rep"])
        return array_items(rep["m_data"], int(rep["m_size"]))


class PlaneArray(View):
    fields = ("m_rep",)

    def text(self):
        rep, sharers = shared_object(self.value["m_rep"])
        rows, columns = int(rep["m_rows"]), int(rep["m_cols"])
        check(rows >= 0 and columns >= 0 and (rows * columns == 0 or int(rep["m_data"]) != 0))
        return self.title(f"of {plural(rows, 'row')} and {plural(columns, 'column')}", sharers)

    def items(self):
        rep, _ = shared_object(self.value["m_rep"])
        data, columns = rep["m_data"], int(rep["m_cols"])
        if columns > 0:
            shown = min(columns, (gdb.parameter("print elements") or INT_MAX) + 1)
            row = data.type.target().array(shown - 1).pointer()
            for i in range(int(rep["m_rows"])):
                yield f"[{i}]", (data + i * columns).cast(row).dereference()


class Btree(View):
    hint = "map"
    fields = ("m_root",)

    def text(self):
        root, sharers = handle(self.value["m_root"])
        return self.title(f"of length {counted(btree_nodes(root))}", sharers)

    def items(self):
        root, _ = handle(self.value["m_root"])
        return ((node["key"], node["value"]) for node in btree_nodes(root))


class Map(View):
    hint = "map"
    fields = ("m_root", "m_size")

    def text(self):
        root, sharers = handle(self.value["m_root"])
        size = int(self.value["m_size"])
        check(size > 0 if int(root) else size == 0)
        return self.title(f"of length {size}", sharers)

    def items(self):
        root, _ = handle(self.value["m_root"])
        nodes = map_nodes(root, int(self.value["m_size"]))
        return ((node["key"], node["value"]) for node in nodes)


class Node(View):
    """One entry, without the entries below it."""
    hint = None
    fields = ("key", "value")

    def text(self):
        return self.title("of one entry")

    def items(self):
        return [("key", self.value["key"]), ("value", self.value["value"])]


class Tree(View):
    hint = "map"
    fields = ("m_root", "m_size")

    def text(self):
        size = int(self.value["m_size"])
        check(size > 0 if int(self.value["m_root"]) else size == 0)
        return self.title(f"of length {size}")

    def items(self):
        return ((node["m_key"], node["m_value"]) for node in tree_nodes(self.value))


class Vector(View):
    fields = ("m_data", "m_size", "m_capacity")

    def text(self):
        vector_items(self.value)
        return self.title(f"of length {int(self.value['m_size'])}")

    def items(self):
        return vector_items(self.value)


class BlockedArray(View):
    hint = "map"
    fields = ("m_growthStep", "m_slotCount", "m_blockSize", "m_blockShift", "m_blockMask", "m_table")

    def text(self):
        present_blocks = plural(counted(blocks(self.value)), "block")
        size = int(self.value["m_blockSize"])
        return self.title(f"of {present_blocks} of {plural(size, 'cell')}")

    def items(self):
        return blocked_items(self.value)


class BitVector(View):
    fields = ("m_bitCount", "m_stale") + BlockedArray.fields

    def text(self):
        return self.title(f"of length {bit_count(self.value)}")

    def items(self):
        return ((f"[{i}]", bit) for i, bit in enumerate(bits(self.value)))


class UintTable(View):
    hint = "map"
    fields = ("m_table", "m_memberCount", "m_slotCount", "m_localMask", "m_keyShift")

    def text(self):
        next(table_items(self.value), None)
        return self.title(f"of length {int(self.value['m_memberCount'])}")

    def items(self):
        return table_items(self.value)


class IntTable(View):
    hint = "map"
    fields = ("m_negative", "m_nonNegative")

    def text(self):
        return self.title(f"of length {signed_table_size(self.value)}")

    def items(self):
        return signed_table_items(self.value)


class MultiMap(View):
    hint = "map"
    fields = ("m_entryCount", "m_currentLink") + IntTable.fields

    def text(self):
        keys = plural(signed_table_size(self.value), "key")
        return self.title(f"of length {int(self.value['m_entryCount'])}, of {keys}")

    def items(self):
        return multi_map_items(self.value)


class SharedTable(View):
    """A table or multimap behind a handle."""
    hint = "map"

    def text(self):
        referent, sharers = shared_object(self.referent())
        if self.field == "m_map":
            return self.title(f"of length {int(referent['m_entryCount'])}", sharers)
        return self.title(f"of length {signed_table_size(referent)}", sharers)

    def items(self):
        referent, _ = shared_object(self.referent())
        walk = multi_map_items if self.field == "m_map" else signed_table_items
        return walk(referent)

    def referent(self):
        return self.value[self.field]


class SharedIntTable(SharedTable):
    field = "m_table"
    fields = (field,)


class SharedMultiMap(SharedTable):
    field = "m_map"
    fields = (field,)


class Hash(View):
    hint = "map"
    fields = ("m_buckets", "m_bucketCount")

    def text(self):
        length = counted(hash_entries(self.value))
        buckets = plural(int(self.value["m_bucketCount"]), "bucket")
        return self.title(f"of length {length} in {buckets}")

    def items(self):
        return ((entry["key"], entry["value"]) for entry in hash_entries(self.value))


class Set(View):
    fields = ("m_members", "m_negative")

    def text(self):
        counts = [bit_count(self.value[field]) for field in self.fields]
        length = str(sum(map(int, counts))) if all(c.isdigit() for c in counts) else counts[0]
        return self.title(f"of length {length}")

    def items(self):
        members = signed_set(self.value["m_negative"], self.value["m_members"])
        return ((f"[{i}]", member) for i, member in enumerate(members))


class SparseSet(View):
    fields = ("m_negative", "m_values", "m_unique", "m_count")

    def text(self):
        count, values = int(self.value["m_count"]), self.value["m_values"]
        check(int(values["m_size"]) == count and 0 <= count <= int(values["m_capacity"]))
        ordered = count < 2 or int(self.value["m_unique"])
        negative = self.value["m_negative"]
        if int(negative):
            count += int(bit_count(negative.dereference()))
        return self.title(f"of length {count}{'' if ordered else ', repeats not dropped yet'}")

    def items(self):
        number = itertools.count()
        if int(self.value["m_negative"]):
            for bit in bits(self.value["m_negative"].dereference()):
                yield f"[{next(number)}]", -bit
        for _, item in vector_items(self.value["m_values"]):
            yield f"[{next(number)}]", item


class GeneratedSet(View):
    fields = ("m_starts", "m_ends", "m_steps")

    def text(self):
        for field in self.fields:
            vector_items(self.value[field])
        sizes = {int(self.value[field]["m_size"]) for field in self.fields}
        check(len(sizes) == 1)
        return self.title(f"of {plural(sizes.pop(), 'generator')}")

    def items(self):
        columns = [vector_items(self.value[field]) for field in self.fields]
        for (name, start), (_, end), (_, step) in zip(*columns):
            yield name, f"{int(start)} to {int(end)} by {int(step)}"


class Handle(View):
    hint = None
    fields = ("m_counter", "m_referent")

    def text(self):
        referent, sharers = handle(self.value)
        return self.title("with a value" if int(referent) else "without a value", sharers)

    def items(self):
        referent, _ = handle(self.value)
        if int(referent):
            yield "value", referent.dereference()


class ListIterator(View):
    hint = None
    fields = ("m_list", "m_item", "m_blockEnd")

    def place(self):
        """(list, index)"""
        target = self.value["m_list"]
        if gdb.types.has_field(gdb.types.get_basic_type(self.value.type), "m_index"):
            return target, int(self.value["m_index"])
        check(int(target) != 0)
        target = target.dereference()
        if int(self.value["m_item"]) == 0:
            return target, 0
        end = int(self.value["m_slot"]) + 1 << int(target["m_blockShift"])
        left = int(self.value["m_blockEnd"] - self.value["m_item"])
        return target, end - left - int(target["m_offset"])

    def text(self):
        target, index = self.place()
        length, _ = list_length(target)
        check(0 <= index <= length)
        return self.title(f"at {index} of {length}" if index < length else "at the end")

    def items(self):
        target, index = self.place()
        if index < int(target["m_length"]):
            yield "value", self.value["m_item"].dereference()


class Walk(View):
    hint = None

    def node(self):
        return walk_node(self.value)

    def text(self):
        return self.title("at an entry" if int(self.node()) else "at the end")

    def items(self):
        node = self.node()
        if int(node):
            yield "key", node["key"]
            yield "value", node["value"]


class BtreeWalk(Walk):
    fields = ("m_pending", "m_current", "m_root")


class MapWalk(Walk):
    fields = ("m_pending", "m_current")


class Iterator(Walk):
    fields = ("m_walk",)

    def node(self):
        return walk_node(self.value["m_walk"])


class SortedIterator(Walk):
    fields = ("m_map", "m_nodes", "m_position")

    def node(self):
        nodes, position = self.value["m_nodes"], int(self.value["m_position"])
        size = int(self.value["m_map"]["m_size"])
        check(0 <= position <= size)
        return nodes[position] if position < size else gdb.Value(0).cast(nodes.type.target())


VIEWS = {
    "atr_StringBase": String,
    "atr_String": String,
    "cow_String": String,
    "cow_List": List,
    "cow_ListIter": ListIterator,
    "cow_ListConstIterator": ListIterator,
    "cow_FixedArray": FixedArray,
    "cow_2DArray": PlaneArray,
    "cow_Btree": Btree,
    "cow_BtreeNode": Node,
    "cow_BtreeWalk": BtreeWalk,
    "cow_BtreeIterator": Iterator,
    "cow_Map": Map,
    "cow_MapNode": Node,
    "cow_MapWalk": MapWalk,
    "cow_ConstMapIterator": Iterator,
    "cow_ConstMapSortedIt": SortedIterator,
    "cow_IntTableInt": SharedIntTable,
    "cow_IntMultiMapInt": SharedMultiMap,
    "cow_CountedHld": Handle,
    "cow_COW": Handle,
    "omi_BlockedArray": BlockedArray,
    "omi_BlkBitVect": BitVector,
    "omi_UintTable": UintTable,
    "omi_IntTable": IntTable,
    "omi_IntMultiMap": MultiMap,
    "HashTable": Hash,
    "omi_Set": Set,
    "omi_SparseSet": SparseSet,
    "omi_GeneratedSet": GeneratedSet,
    "KZMBasVector": Vector,
    "KZMBasTree": Tree,
}


class Views(gdb.printing.PrettyPrinter):
    def __init__(self):
        names = [gdb.printing.SubPrettyPrinter(name) for name in sorted(VIEWS)]
        super().__init__("KZMBasShared", names)
        self.enabled_by_name = {name.name: name for name in names}

    def __call__(self, value):
        kind = gdb.types.get_basic_type(value.type)
        name = re.match(r"(\w+)(<.*>)?$", kind.name or "")
        view = VIEWS.get(name.group(1)) if name else None
        if not view or not self.enabled_by_name[name.group(1)].enabled:
            return None
        if not all(gdb.types.has_field(kind, field) for field in view.fields):
            return None
        return view(value)


class Sharers(gdb.Function):
    """$kzm_sharers(value): how many values share its contents."""

    def __init__(self):
        super().__init__("kzm_sharers")

    def invoke(self, value):
        if value.type.strip_typedefs().code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
        try:
            return sharers_of(value)
        except Invalid:
            raise gdb.GdbError(NOT_VALID) from None


gdb.printing.register_pretty_printer(gdb.current_objfile(), Views(), replace=True)
Sharers()
