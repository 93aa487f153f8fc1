"""The report as one page of HTML that needs nothing else."""
import html

from .text import range_of

STYLE = """
:root { color-scheme: light dark; --ground: #ffffff; --text: #1c1e21; --faint: #63676d; --line: #d4d7db; --warn: #fff3d6; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #16181b; --text: #e4e6e9; --faint: #a0a5ab; --line: #3a3e44; --warn: #453812; }
}
body { background: var(--ground); color: var(--text); font: 15px/1.5 system-ui, sans-serif; margin: 0 auto; max-width: 1080px;
       padding: 1.5rem; }
h1 { font-size: 1.6rem; } h2 { font-size: 1.25rem; margin-top: 2.5rem; border-top: 1px solid var(--line); padding-top: 1rem; }
h3 { font-size: 1rem; margin-bottom: .3rem; }
p.what, figcaption, footer { color: var(--faint); }
.note { background: var(--warn); padding: .6rem .9rem; border-radius: 4px; }
.wide { overflow-x: auto; }
table { border-collapse: collapse; font-size: .88rem; margin: .4rem 0 1rem; }
th, td { border-bottom: 1px solid var(--line); padding: .25rem .7rem .25rem 0; text-align: right; vertical-align: bottom; }
th:first-child, td:first-child { text-align: left; }
td { font-variant-numeric: tabular-nums; white-space: nowrap; } th { font-weight: 600; }
td:first-child { white-space: normal; }
.texts td { text-align: left; white-space: normal; }
figure { margin: 1rem 0; } figcaption { font-weight: 600; }
svg { width: 100%; max-width: 760px; height: auto; color: var(--text); }
"""


def table(head, rows):
    lines = ['<div class="wide"><table>', "<tr>" + "".join(f"<th>{html.escape(text)}</th>" for text in head) + "</tr>"]
    lines += ["<tr>" + "".join(f"<td>{html.escape(text)}</td>" for text in row) + "</tr>" for row in rows]
    return "\n".join([*lines, "</table></div>"])


def items(sentences):
    return "<ul>" + "".join(f"<li>{html.escape(text)}</li>" for text in sentences) + "</ul>" if sentences else ""


def ratio_rows(ratios):
    return [[ratio.what, f"{range_of(ratio.value)} {ratio.unit}".strip() if ratio.value else "not measured"]
            for ratio in ratios]


def section_lines(section, drawings):
    yield f'<h2 id="{section.name}">{html.escape(section.title)}</h2>'
    yield f'<p class="what">{html.escape(section.what)}</p>'
    yield items(section.sentences + section.bends)
    for plot in section.plots:
        yield f"<figure><figcaption>{html.escape(plot.title)}</figcaption>\n{drawings[plot.name]}\n</figure>"
    for each in section.tables:
        if each.title:
            yield f"<h3>{html.escape(each.title)}</h3>"
        yield table(each.head, each.rows)


def mode_note(run):
    if run.quick:
        yield ('<p class="note"><b>Quick run.</b> Few rounds and small sweeps: it shows that everything can be measured. '
               "For figures to quote, run without --quick.</p>")
    for one in run.failed:
        yield f'<p class="note"><b>{html.escape(one["name"])}</b> failed: {html.escape(one["error"])}</p>'


def about_rows(run):
    about = run.about
    return [["Measured", f"{about['started']}, {about['seconds'] / 60:.1f} minutes, {about['mode']} run"],
            *([label, text] for label, text in about["machine"].items()),
            ["Load before and after", f"{about['load_before']:.2f} and {about['load_after']:.2f}"]]


def page(run, drawings):
    """drawings: name of a plot -> SVG."""
    ratios = [ratio for section in run.sections for ratio in section.ratios]
    bends = [sentence for section in run.sections for sentence in section.bends]
    lines = ["<!DOCTYPE html>", '<html lang="en"><head><meta charset="utf-8">',
             '<meta name="viewport" content="width=device-width, initial-scale=1">',
             "<title>Benchmarks of qv_corba_pub</title>", f"<style>{STYLE}</style></head><body>",
             "<h1>Benchmarks of qv_corba_pub</h1>", *mode_note(run),
             "<p>Each figure is the median of the rounds, with the least and the greatest in brackets; bars and lines show "
             "the same. Ratios are taken within a round, so that a slow spell of the machine hits both sides. A cost per "
             "unit bends where it is twice the least at fewer units, and still is at the next step.</p>",
             "<h2>Main ratios</h2>", table(["Figure", "median (least–greatest)"], ratio_rows(ratios)),
             *(["<h2>Where it bends</h2>", items(bends)] if bends else []),
             "<h2>Machine and versions</h2>", '<div class="texts">', table(["", ""], about_rows(run)), "</div>"]
    for section in run.sections:
        lines += section_lines(section, drawings)
    lines += ["<footer><p>Made by <code>./run.sh bench</code>.</p></footer>", "</body></html>"]
    return "\n".join(lines) + "\n"
