"""The main ratios as Markdown."""
from .page import about_rows, ratio_rows


def table(head, rows):
    cell = lambda text: text.replace("|", "\\|")
    return ["| " + " | ".join(map(cell, row)) + " |" for row in (head, ["---"] * len(head), *rows)]


def summary(run):
    lines = ["# Benchmarks of qv_corba_pub", ""]
    if run.quick:
        lines += ["**Quick run**: few rounds and small sweeps, no figures to quote.", ""]
    lines += [f"**{one['name']}** failed: {one['error']}\n" for one in run.failed]
    lines += ["Medians of the rounds, with the least and the greatest in brackets. `report.html` has all figures.", ""]
    for section in run.sections:
        sentences = section.sentences + section.bends
        if not section.ratios and not sentences:
            continue
        lines += [f"## {section.title}", ""]
        if section.ratios:
            lines += [*table(["Figure", "median (least–greatest)"], ratio_rows(section.ratios)), ""]
        lines += [f"- {text}" for text in sentences] + ([""] if sentences else [])
    lines += ["## Machine and versions", "", *table(["", ""], about_rows(run)), ""]
    return "\n".join(lines)
