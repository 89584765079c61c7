#!/usr/bin/env python3
"""site_input.py FOLDER: writes to FOLDER what the reference site shows besides headers and pages.

examples.dox   the example of each class: the block of code of a page that names it, as compiled and
               run by the tests; a class without one, and without a class to point at, is an error
changes.md     the notes of docs/changes as one page
"""

import re
import sys
from pathlib import Path

from doxygen_filter import classes
from page_examples import blocks

# Pages that name everything come last where an example is looked for.
OVERVIEWS = ["getting-started", "from-std", "which-container", "interoperation"]
# Parts that clients meet through another class, and names that one example shows for several.
SHOWN_BY = {
    "HashCursor": "HashTable", "HashTableEntry": "HashTable", "iterState": "HashIterator",
    "KZMBasDCAllocator": "KZMBasSrmDCAllocator", "KZMBasSrmDCAllocEntry": "KZMBasSrmDCAllocator",
    "KZMBasMemSmallBlockAllocator": "KZMBasOmiDefaultAllocator",
    "KZMBasSrmBase": "KZMBasSrmMemoryInfo",
    "KZMBasUtlExcModelSingleton": "KZMBasUtlExceptionModel",
    "SingletonDestructCondition": "KZMBas_SingletonRegistry",
    "atr_FormatArg": "atr_format", "atr_StringBase": "cow_String", "atr_StringRecord": "cow_String",
    "cow_2DArrayRep": "cow_2DArray", "cow_BtreeCell": "cow_Btree",
    "cow_BtreeNode": "cow_Btree", "cow_BtreeWalk": "cow_Btree", "cow_Counter": "cow_CountedHld",
    "cow_FixedArrayRep": "cow_FixedArray", "cow_KeyValue": "cow_Map", "cow_ListBlock": "cow_List",
    "cow_ListConstIterator": "cow_List", "cow_ListRuns": "cow_WritableRuns",
    "cow_MapNode": "cow_Map", "cow_MapWalk": "cow_Map",
    "mem_AllocationOperatorsTiny": "mem_AllocationOperators",
    "mem_AllocatorResource": "mem_PolicyResource", "mem_PoolResource": "mem_PolicyResource",
    "mem_SourceResource": "mem_PolicyResource",
    "omi_BlockSource": "omi_WritableRuns", "omi_MemberSource": "omi_WritableRuns",
    "omi_Run": "omi_WritableRuns", "omi_Runs": "omi_WritableRuns",
    "omi_GeneratedSetIT": "omi_GeneratedSet", "omi_IntMultiMapLink": "omi_IntMultiMap",
    "omi_PairItem": "omi_IntTable", "omi_SortedRecords": "omi_IntTableIterator",
    "omi_StdIterator": "omi_IntTable", "omi_UintTableBlock": "omi_UintTable",
}
# Behind private bases and in the middle of headers: not on the site; see docs/site/Doxyfile.
EXCLUDED = {"KZMBasTreeLinks", "KZMBasVectorStorage", "cow_BtreeOrder", "cow_MapBits"}


def example(name, pages):
    """The page and the code that show a name best."""
    found = []
    for page in pages:
        intro = page.read_text().split("```")[0]
        for number, code in enumerate(blocks(page, "cpp")):
            if re.search(rf"\b{name}\b", code):
                found.append((page.stem in OVERVIEWS, name not in intro, number, page, code))
    return min(found)[3:] if found else None


def main(folder):
    pages = sorted(Path("docs").glob("*.md"))
    excluded = re.findall(r"\S+\.h", Path("docs/site/Doxyfile").read_text().split("\nEXCLUDE ")[1]
                          .split("\nEXCLUDE")[0])
    text, missing = "", []
    layout = Path("docs/site/layout.xml").read_text()
    for page in pages:
        if page.stem != "getting-started" and f'"@ref page_{page.stem}"' not in layout:
            missing.append(f"{page}: has no place in docs/site/layout.xml")
    for header in sorted([*Path("include").rglob("*.h"), *Path("siblings").glob("*/include/*/*.h")]):
        if header.name.endswith(".impl.h") or str(header) in excluded:
            continue
        for tag, name in classes(header.read_text()):
            if name in EXCLUDED:
                continue
            found = example(name, pages) or example(SHOWN_BY.get(name, name), pages)
            if not found:
                missing.append(f"{header}: {name} stands in no example of docs/*.md")
                continue
            page, code = found
            code = code.replace("*/", "*&#47;")
            text += (f"/** @{tag} {name}\n@par Example\n@code{{.cpp}}\n{code}@endcode\n"
                     f"Compiled and run by the tests; more on the page @ref page_{page.stem}. */\n\n")
    if missing:
        sys.exit("\n".join(missing))
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "examples.dox").write_text(text)
    notes = "\n\n".join(re.sub(r"^#+ ", "## ", p.read_text().strip().replace("](../", "](../../docs/"),
                               flags=re.M) for p in sorted(Path("docs/changes").glob("*.md")))
    (folder / "changes.md").write_text(f"# Changes\n\n{notes}\n")


if __name__ == "__main__":
    main(Path(sys.argv[1]))
