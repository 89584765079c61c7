#!/usr/bin/env python3
"""check_site.py FOLDER: every link of the site leads somewhere, and nothing is loaded from outside."""

import posixpath
import re
import sys
from pathlib import Path
from urllib.parse import unquote, urldefrag

folder = Path(sys.argv[1])
files = {p.relative_to(folder).as_posix(): p.read_text(errors="replace")
         for p in folder.rglob("*") if p.suffix in (".html", ".js", ".css")}
anchors = {name: set(re.findall(r'\b(?:id|name)="([^"]+)"', text))
           for name, text in files.items() if name.endswith(".html")}
faults, links = [], 0
for name, text in files.items():
    if name.endswith(".html"):
        # What scripts write into the page is no link of the page.
        text = re.sub(r"<script.*?</script>", lambda m: m.group().split(">")[0] + ">", text, flags=re.S)
        found = re.findall(r'\b(href|src)="([^"]*)"', text)
    elif name == "navtreedata.js":
        found = [("href", link) for link in re.findall(r'"([\w.-]+\.html(?:#\w+)?)"', text)]
    else:
        found = [("src", link) for link in re.findall(r'url\(["\']?(https?:[^)"\']+)', text)]
    for kind, link in found:
        links += 1
        if link.startswith("javascript:"):
            continue
        if re.match(r"[a-z]+:", link):
            if kind == "src" or link.endswith((".css", ".js")):
                faults.append(f"{name}: loads {link}")
            continue
        target, anchor = urldefrag(link)
        target = posixpath.normpath(posixpath.join(posixpath.dirname(name), unquote(target))) \
            if target else name
        if not (folder / target).exists():
            faults.append(f"{name}: no file {target}")
        elif anchor and target in anchors and unquote(anchor) not in anchors[target]:
            faults.append(f"{name}: no place {anchor} in {target}")
print("\n".join(sorted(set(faults))) or f"{links} links of {len(anchors)} pages lead somewhere")
sys.exit(bool(faults))
