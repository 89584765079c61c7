"""Imported by programs that users start: what the system refuses is one line, not a traceback, and
leaves no half file."""
import os
import sys


def tell(kind, error, trace):
    if issubclass(kind, OSError):
        print(f"error: {error}", file=sys.stderr)
    else:
        sys.__excepthook__(kind, error, trace)


sys.excepthook = tell


def write_whole(path, text):
    """Replaces the file, a pathlib.Path, or leaves it as it was."""
    part = path.with_name(f".{path.name}.{os.getpid()}")
    try:
        part.write_text(text)
        part.replace(path)
    finally:
        part.unlink(missing_ok=True)
