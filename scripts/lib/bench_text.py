"""Figures of benchmarks as people read them."""

import datetime


def figure(number):
    """Three digits that count: 1.23, 12.3, 123."""
    digits = 2 if number < 9.995 else 1 if number < 99.95 else 0
    return f"{number:.{digits}f}"


def time_text(ns):
    for unit, size in (("ns", 1e3), ("µs", 1e6), ("ms", 1e9)):
        if ns < size * 0.9995:
            return f"{figure(ns / size * 1e3)} {unit}"
    return f"{figure(ns / 1e9)} s"


def bytes_text(number):
    return f"{figure(number)} B" if number < 9999.5 else f"{number / 1024:.0f} KiB"


def ratio_text(ratio):
    if ratio < 0.00995:
        return f"{ratio:.1g}"
    return f"{ratio:.2f}" if ratio < 9.995 else f"{ratio:.0f}"


def circumstances(context):
    date = datetime.datetime.fromisoformat(context["date"]).strftime("%Y-%m-%d %H:%M")
    return (f"{date}, {context['num_cpus']} processors of {context['mhz_per_cpu'] / 1000:.1f} GHz, "
            f"load {context['load_avg'][0]:.1f}")
