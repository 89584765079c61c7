"""The kept programs of a model: a text file with one program a line, in base64, shortest first.

usage: corpus.py unpack FILE FOLDER    writes each program into a file of its own, for libFuzzer
       corpus.py pack FOLDER FILE      the way back
"""
import base64
import hashlib
import pathlib
import sys

from plain_errors import write_whole


def unpack(file, folder):
    lines = file.read_text().split() if file.exists() else []
    programs = [base64.b64decode(line, validate=True) for line in lines]
    folder.mkdir(parents=True, exist_ok=True)
    for program in programs:
        (folder / hashlib.sha1(program).hexdigest()).write_bytes(program)


def pack(folder, file):
    programs = sorted({each.read_bytes() for each in folder.iterdir()}, key=lambda p: (len(p), p))
    file.parent.mkdir(parents=True, exist_ok=True)
    write_whole(file, "".join(base64.b64encode(each).decode() + "\n" for each in programs if each))


if len(sys.argv) != 4 or sys.argv[1] not in ("pack", "unpack"):
    sys.exit(__doc__)
try:
    (pack if sys.argv[1] == "pack" else unpack)(*map(pathlib.Path, sys.argv[2:]))
except ValueError as error:
    sys.exit(f"error: {sys.argv[2]} holds no kept programs: {error}")
