"""The page of benchmark results: charts in SVG, all in one file that needs nothing else."""

import html
import math
import re

import bench_results as results
from bench_text import bytes_text, circumstances, ratio_text, time_text

STYLE = """
:root { --ground: #fff; --card: #f8f9fb; --line: #dfe3ea; --text: #1c2430; --soft: #5c6675;
  --ours: #2463c9; --peer: #b6bfcc; --best: #7d8899; --floor: #e3e7ee; --good: #18794e;
  --bad: #b4540a; --goodback: #dff3e7; --badback: #fdebd7; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #12161c; --card: #1a2029; --line: #2d3644; --text: #e4e8ee; --soft: #98a3b3;
    --ours: #5c9bff; --peer: #4a5565; --best: #7b879a; --floor: #2a323e; --good: #5fce98;
    --bad: #f0a35a; --goodback: #17362a; --badback: #3d2a16; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--text);
  font: 15px/1.5 system-ui, "Segoe UI", Roboto, "Helvetica Neue", "DejaVu Sans", sans-serif; }
main { max-width: 1180px; margin: 0 auto; padding: 36px 24px 80px; }
h1 { font-size: 28px; margin: 0 0 4px; letter-spacing: -.01em; }
h2 { font-size: 21px; margin: 44px 0 14px; padding-bottom: 6px;
  border-bottom: 1px solid var(--line); }
h3 { font-size: 16px; margin: 0; }
p { margin: 4px 0 12px; }
.soft { color: var(--soft); }
.tiles { display: flex; flex-wrap: wrap; gap: 14px; margin: 22px 0; }
.tile { background: var(--card); border: 1px solid var(--line); border-radius: 10px;
  padding: 12px 20px; min-width: 150px; }
.tile b { display: block; font-size: 26px; line-height: 1.2; font-variant-numeric: tabular-nums; }
nav a { margin-right: 14px; }
a { color: var(--ours); text-decoration: none; }
a:hover { text-decoration: underline; }
.cards { columns: 2 440px; column-gap: 18px; }
.card { background: var(--card); border: 1px solid var(--line); border-radius: 10px;
  padding: 16px 18px 12px; break-inside: avoid; margin-bottom: 18px; }
.card p { font-size: 13.5px; color: var(--soft); margin: 2px 0 8px; }
.case { display: flex; flex-wrap: wrap; gap: 8px; align-items: baseline; font-size: 13px;
  margin-top: 12px; }
.case b { flex: 1; font-variant-numeric: tabular-nums; }
.badge { border-radius: 20px; padding: 0 9px; font-size: 12px; font-variant-numeric: tabular-nums;
  white-space: nowrap; }
.good { background: var(--goodback); color: var(--good); }
.bad { background: var(--badback); color: var(--bad); }
svg { display: block; width: 100%; height: auto; overflow: visible; }
svg text { fill: var(--text); font-size: 12px; font-variant-numeric: tabular-nums; }
svg .soft { fill: var(--soft); }
svg .ours { fill: var(--ours); } svg .peer { fill: var(--peer); } svg .best { fill: var(--best); }
svg .floor { fill: var(--floor); } svg .strong { font-weight: 600; }
svg .goal { stroke: var(--bad); stroke-width: 1.5; stroke-dasharray: 3 2; }
svg .goal.met { stroke: var(--good); }
svg .grid { stroke: var(--line); } svg .one { stroke: var(--soft); stroke-width: 1.5; }
svg .tear { fill: var(--card); }
svg .ahead { fill: var(--good); } svg .behind { fill: var(--bad); }
svg .dot { opacity: .72; }
table { border-collapse: collapse; font-size: 13.5px; width: 100%; }
td, th { text-align: left; padding: 5px 12px 5px 0; border-bottom: 1px solid var(--line);
  font-variant-numeric: tabular-nums; }
th { font-weight: 600; color: var(--soft); }
.legend { margin-top: 36px; }
.legend span { margin-right: 18px; white-space: nowrap; font-size: 13px; }
.legend i { display: inline-block; width: 12px; height: 12px; border-radius: 3px; margin-right: 6px;
  vertical-align: -1px; }
"""

TEMPLATE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>KZMBasShared beside its peers</title>
<style>{style}</style>
</head>
<body>
<main>
<h1>KZMBasShared beside its peers</h1>
<p class="soft">{about}</p>
<div class="tiles">{tiles}</div>
<nav>{links}</nav>
<h2>All workloads</h2>
<p class="soft">Our median over the best peer's, one dot a workload. Left of 1 we are ahead.</p>
{overview}
{missed}
<p class="legend">
<span><i style="background:var(--ours)"></i>this library</span>
<span><i style="background:var(--best)"></i>best peer</span>
<span><i style="background:var(--peer)"></i>other peers</span>
<span><i style="background:var(--floor)"></i>floor: less work than was asked for</span>
<span>┊ goal</span>
<span><b>×</b> our median over the best peer's</span></p>
{sections}
</main>
</body>
</html>
"""

escape = html.escape


def words(name):
    """FindRandom becomes Find random."""
    parts = re.findall(r"[A-Z]+(?![a-z])|[A-Z][a-z0-9]*", name)
    rest = (part if part.isupper() and len(part) > 1 else part.lower() for part in parts[1:])
    return " ".join([parts[0], *rest])


def badge(good, text, title=""):
    kind = "good" if good else "bad"
    return f'<span class="badge {kind}" title="{escape(title)}">{escape(text)}</span>'


def bars(workload, reached):
    """A bar for each who did the workload; what is far off is torn, so that others stay apart."""
    left, right, width, step = 172, 132, 560, 21
    room = width - left - right
    best = workload.best()
    shown = [e.median for e in workload.of_kind("ours")] + ([best.median] if best else [])
    full = min(max(e.median for e in workload.entries), 2.2 * max(shown, default=1)) or 1
    height = step * len(workload.entries) + 2
    out = [f'<svg viewBox="0 0 {width} {height}" role="img" aria-label="{escape(workload.key)}">']
    for i, entry in enumerate(workload.entries):
        y = i * step
        ours = entry.kind == "ours"
        kind = "best" if entry is best else entry.kind
        length = max(1.5, room * min(1, entry.median / full))
        strong = " strong" if ours else ""
        tip = f"{entry.who}: {time_text(entry.median)}, spread {entry.spread:.0%}"
        if entry.bytes_each is not None:
            tip += f", {bytes_text(entry.bytes_each)} an entry"
        out.append(f'<g><title>{escape(tip)}</title>'
                   f'<text x="{left - 8}" y="{y + 15}" text-anchor="end" class="{strong}">'
                   f'{escape(entry.who)}</text><rect x="{left}" y="{y + 4}" width="{length:.1f}" '
                   f'height="{step - 7}" rx="2.5" class="{kind}"/>')
        if entry.median > full * 1.001:
            x = left + room * .86
            out.append(f'<path class="tear" d="M{x:.0f} {y + 20}l6 -18h5l-6 18z"/>')
        out.append(f'<text x="{left + length + 7:.1f}" y="{y + 15}" class="soft{strong}">'
                   f'{time_text(entry.median)}</text></g>')
        if ours and best:
            ratio = entry.median / best.median
            out.append(f'<text x="{width}" y="{y + 15}" text-anchor="end" class="strong '
                       f'{"ahead" if ratio < 1 else "behind"}">{ratio_text(ratio)} ×'
                       f'<title>{escape(entry.who)} to {escape(best.who)}</title></text>')
        for verdict in reached[entry.who] if ours else ():
            if verdict.goal.measure == "time":
                peer = next(e for e in workload.entries if e.who == verdict.against)
                at = verdict.goal.target * peer.median / full
                if at <= 1:
                    x = left + room * at
                    met = " met" if verdict.met else ""
                    out.append(f'<line class="goal{met}" x1="{x:.1f}" x2="{x:.1f}" y1="{y}" '
                               f'y2="{y + step}"><title>goal: {verdict.goal.target:g} of '
                               f'{escape(verdict.against)}</title></line>')
    out.append("</svg>")
    return "".join(out)


def case(workload, goals):
    reached = {e.who: results.verdicts(workload, e, goals) for e in workload.of_kind("ours")}
    badges = []
    for who, verdicts in reached.items():
        name = f"{who} " if sum(map(bool, reached.values())) > 1 else ""
        for verdict in verdicts:
            unit = " B" if verdict.goal.measure == "each" else ""
            what = f" {verdict.against}" if verdict.against else ""
            what = f" bytes of{what}" if verdict.goal.measure == "bytes" else what
            sign = "≤" if verdict.met else ">"
            text = (f"{name}{ratio_text(verdict.reached)}{unit} {sign} "
                    f"{verdict.goal.target:g}{unit}{what}")
            badges.append(badge(verdict.met, text, f"goal of {who}"))
    label = f"<b>{escape(workload.label)}</b>" if workload.label else "<b></b>"
    return f'<div class="case">{label}{"".join(badges)}</div>{bars(workload, reached)}'


def overview(families, link):
    left, width, step, low, high = 70, 1130, 34, 1e-4, 30
    span = math.log(high / low)

    def place(ratio):
        return left + (width - left - 20) * math.log(min(max(ratio, low), high) / low) / span

    height = step * len(families) + 26
    out = [f'<svg viewBox="0 0 {width} {height}" role="img" aria-label="all ratios">']
    for tick in (1e-4, 1e-3, .01, .1, 1, 10):
        x = place(tick)
        kind = "one" if tick == 1 else "grid"
        out.append(f'<line class="{kind}" x1="{x:.1f}" x2="{x:.1f}" y1="0" y2="{height - 22}"/>'
                   f'<text class="soft" x="{x:.1f}" y="{height - 6}" '
                   f'text-anchor="middle">{tick:g}</text>')
    for i, (family, workloads) in enumerate(families.items()):
        y = i * step + step / 2
        out.append(f'<text x="0" y="{y + 4}" class="strong">{escape(family)}</text>'
                   f'<line class="grid" x1="{left}" x2="{width}" y1="{y}" y2="{y}"/>')
        for workload in workloads:
            best = workload.best()
            for entry in workload.of_kind("ours") if best else ():
                ratio = entry.median / best.median
                tip = (f"{workload.name} {workload.label}: {entry.who} "
                       f"{ratio_text(ratio)} of {best.who}")
                side = "ahead" if ratio < 1 else "behind"
                out.append(f'<a href="#{link(workload)}"><circle class="dot {side}" '
                           f'cx="{place(ratio):.1f}" cy="{y}" r="6"><title>'
                           f'{escape(tip)}</title></circle></a>')
    return "".join(out) + "</svg>"


def missed_goals(workloads, goals, bounds, link):
    lines = []
    for workload, (_, name, *others) in results.missed(workloads, goals, bounds):
        cells = "".join(f"<td>{escape(cell)}</td>" for cell in others)
        lines.append(f'<tr><td><a href="#{link(workload)}">{escape(words(name))}</a></td>{cells}</tr>')
    if not lines:
        return ""
    heads = "".join(f"<th>{head}</th>" for head in results.MISSED[1:])
    return f"<h2>Goals that are missed</h2><table><tr>{heads}</tr>{''.join(lines)}</table>"


def page(families, goals, bounds, context, commit, questions):
    def link(workload):
        return f"{workload.family}-{workload.name}"

    workloads = [w for members in families.values() for w in members]
    ratios = [e.median / w.best().median for w in workloads if w.best() for e in w.of_kind("ours")]
    verdicts = results.all_verdicts(workloads, goals)
    figures = ((len({link(w) for w in workloads}), "workloads"),
               (f"{sum(r < 1 for r in ratios)} / {len(ratios)}", "ahead of the best peer"),
               (f"{sum(v.met for v in verdicts)} / {len(verdicts)}", "goals met"))
    tiles = "".join(f'<div class="tile"><b>{figure}</b><span class="soft">{text}</span></div>'
                    for figure, text in figures)
    about = (circumstances(context)
             + (f" · version {commit}" if commit else "") +
             " · medians of processor time, for an entry where a workload works on many")
    sections = []
    for family, members in families.items():
        by_name = {}
        for workload in members:
            by_name.setdefault(workload.name, []).append(workload)
        cards = []
        for name, cases in by_name.items():
            question = questions.get((family, name), "")
            cards.append(f'<div class="card" id="{link(cases[0])}"><h3>{escape(words(name))}</h3>'
                         + (f"<p>{escape(question)}</p>" if question else "")
                         + "".join(case(w, goals) for w in cases) + "</div>")
        sections.append(f'<h2 id="{family}">{escape(family)}</h2>'
                        f'<div class="cards">{"".join(cards)}</div>')
    return TEMPLATE.format(
        style=STYLE, about=escape(about), tiles=tiles, overview=overview(families, link),
        links="".join(f'<a href="#{family}">{escape(family)}</a>' for family in families),
        missed=missed_goals(workloads, goals, bounds, link), sections="".join(sections))
