"""Run by gdb with the names of two files, `output` and `natvis`: writes the local variables of each
function that calls ShowLocals, as gdb shows them and as Visual Studio would."""
import pathlib
import sys
import traceback

import gdb
import gdb.types

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from natvis import Natvis  # noqa: E402


class AtShowLocals(gdb.Breakpoint):
    def stop(self):
        try:
            self.show(gdb.newest_frame().older())
        except Exception:  # which gdb would swallow
            traceback.print_exc(file=out)
        return False

    def show(self, caller):
        caller.select()
        out.write(f"-- {caller.name()}\n")
        for symbol in caller.block():
            if not symbol.is_variable or symbol.name in ("bytes", "fills"):
                continue
            value = symbol.value(caller)
            out.write(f"{symbol.name}: {value.format_string(symbols=False)}\n")
            if "ShowRaw" not in caller.name() and views.find(
                    gdb.types.get_basic_type(value.type)) is not None:
                out.write(f"    {views.show(value)}\n")
        if caller.name().endswith("ShowTexts"):
            for name in ("empty", "name"):
                out.write(f"sharers of {name}: {gdb.parse_and_eval(f'$kzm_sharers({name})')}\n")


gdb.execute("set print elements 12")
gdb.execute("set startup-with-shell off")
views = Natvis(natvis)
with open(output, "w", encoding="utf-8") as out:
    AtShowLocals("ShowLocals", internal=True)
    gdb.execute("run")
    out.write(f"natvis types without a value: {sorted(views.unused)}\n")
