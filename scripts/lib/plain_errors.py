"""Imported by programs that users start: what the system refuses is one line, not a traceback."""
import sys


def tell(kind, error, trace):
    if issubclass(kind, OSError):
        print(f"error: {error}", file=sys.stderr)
    else:
        sys.__excepthook__(kind, error, trace)


sys.excepthook = tell
