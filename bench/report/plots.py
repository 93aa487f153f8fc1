"""Draws plots with gnuplot, as SVG that a page can hold and that is readable on light and dark ground."""
import re
import subprocess

from .text import short

WIDTH, HEIGHT = 760, 420
ROOM = 84  # letters that stand side by side below a plot
# Of a brightness in the middle, so that they stand out from white and from black.
COLOURS = ("#3b82d6", "#d9782d", "#2f9e62", "#a960c8", "#c2434f", "#7d8a2e", "#5a8f9b")
GREY = "#8a8a8a"


class PlotError(Exception):
    """gnuplot is missing or didn't draw."""


def quoted(text):
    """Text for gnuplot, between double quotes."""
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n") + '"'


def wrapped(text, width):
    """Broken into lines of so many letters at spaces, for the foot of a bar."""
    lines = [""]
    for word in text.split(" "):
        if lines[-1] and len(lines[-1]) + 1 + len(word) > width:
            lines.append(word)
        else:
            lines[-1] = f"{lines[-1]} {word}".strip()
    return "\n".join(lines)


def places_of(plot):
    """All x of a plot, in order."""
    places = []
    for series in plot.series:
        places += [x for x, _ in series.points if x not in places]
    return places if plot.bars else sorted(places)


def label_of(plot, category):
    """The foot of a bar, as broad as there is room."""
    return wrapped(category, max(8, ROOM // len(places_of(plot))))


def lines_of_labels(plot):
    return max(label_of(plot, category).count("\n") + 1 for category in places_of(plot))


def data_blocks(plot):
    lines = []
    for number, series in enumerate(plot.series):
        lines.append(f"$series{number} << end_of_data")
        values = dict(series.points)
        for x in places_of(plot):
            if x in values:
                place = quoted(label_of(plot, x)) if plot.bars else x
                lines.append(f"{place} {values[x].median} {values[x].least} {values[x].greatest}")
            elif plot.bars:
                lines.append(f"{quoted(label_of(plot, x))} ? ? ?")
        lines.append("end_of_data")
    return lines


def frame(plot):
    return [
        f"set terminal svg size {WIDTH},{HEIGHT} dynamic noenhanced font 'sans-serif,13' linewidth 1.4",
        "set encoding utf8",
        f"set border 3 linecolor rgb '{GREY}'",
        f"set grid ytics linecolor rgb '{GREY}' linewidth 0.4 dashtype 3",
        "set tics nomirror",
        "set key outside top left horizontal Left reverse maxrows 2 samplen 2 width 1" if len(plot.series) > 1
        else "unset key",
        f"set xlabel {quoted(plot.x_label)}" if plot.x_label else "unset xlabel",
        f"set ylabel {quoted(plot.y_label)}",
        "set lmargin 11",
        "set rmargin 4",
        f"set bmargin {4 if not plot.bars else 2 + lines_of_labels(plot)}",
    ]


def bends_by_place(plot):
    """What bends at the same place has one label."""
    labels = {}
    for x, label in plot.bends:
        labels.setdefault(x, []).append(label)
    return {x: "bends: " + "; ".join(found) for x, found in labels.items()}


def apart(places, share=0.07):
    """Those places of a linear axis whose names don't touch, from the last one down."""
    kept = []
    for x in reversed(places):
        if not kept or kept[-1] - x >= share * (places[-1] - places[0]):
            kept.append(x)
    return kept


def axes_of_lines(plot):
    places = places_of(plot)
    named = places if plot.log_x else apart(places)
    tics = ", ".join(f"{quoted(short(x) if x in named else '')} {x}" for x in places)
    lines = [f"set xtics ({tics})", "set logscale y 10" if plot.log_y else "set yrange [0:*]"]
    lines.append("set format y '%g'")
    margin = 1.15 if plot.log_x else 1
    if plot.log_x:
        lines.append("set logscale x 2")
    lines.append(f"set xrange [{places[0] / margin}:{places[-1] * margin}]")
    for x, label in bends_by_place(plot).items():
        lines.append(f"set arrow from {x}, graph 0 to {x}, graph 1 nohead linecolor rgb '{GREY}' dashtype 2")
        lines.append(f"set label {quoted(label)} at {x}, graph 0.97 right rotate by 90 offset -1.3,0 font ',11'")
    return lines


def draw_lines(plot):
    parts = []
    for number, series in enumerate(plot.series):
        colour = f"linecolor rgb '{COLOURS[number % len(COLOURS)]}'"
        parts.append(f"$series{number} using 1:2 with linespoints {colour} pointtype 7 pointsize 0.5 "
                     f"title {quoted(series.label)}")
        # From the least to the greatest. Error bars would lay white dots over the points.
        parts.append(f"$series{number} using 1:3:(0):($4-$3) with vectors heads size screen 0.005,90 {colour} notitle")
    return ["plot " + ", ".join(parts)]


def draw_bars(plot):
    lines = ["set style data histogram", "set style histogram errorbars gap 1 linewidth 1",
             "set style fill solid 0.8 noborder", f"set errorbars linecolor rgb '{GREY}'",
             "set logscale y 10" if plot.log_y else "set yrange [0:*]", "set format y '%g'", "set xtics scale 0 font ',12'"]
    parts = [f"$series{number} using 2:3:4:xtic(1) linecolor rgb '{COLOURS[number % len(COLOURS)]}' "
             f"title {quoted(series.label)}" for number, series in enumerate(plot.series)]
    return [*lines, "plot " + ", ".join(parts)]


def script_of(plot):
    body = draw_bars(plot) if plot.bars else [*axes_of_lines(plot), *draw_lines(plot)]
    return "\n".join([*data_blocks(plot), *frame(plot), *body]) + "\n"


def fit_into_page(svg, plot):
    """Without what only a file needs, with names of its own, and with the page's colour for text."""
    svg = svg[svg.index("<svg"):]
    svg = svg.replace("<title>Gnuplot</title>", f"<title>{plot.title}</title>")
    svg = re.sub(r"<desc>.*?</desc>", "", svg, flags=re.DOTALL)
    svg = re.sub(r"\b(fill|stroke)\s*=\s*(['\"])black\2", r"\1=\2currentColor\2", svg)
    svg = re.sub(r"(?<![-\w])color\s*=\s*(['\"])(black|white)\1", "", svg)
    svg = re.sub(r"rgb\(\s*0,\s*0,\s*0\)", "currentColor", svg)
    for name in set(re.findall(r"\bid=['\"]([^'\"]+)['\"]", svg)):
        own = f"{plot.name}_{name}"
        svg = re.sub(rf"\bid=(['\"]){re.escape(name)}\1", rf"id=\1{own}\1", svg)
        svg = svg.replace(f"'#{name}'", f"'#{own}'").replace(f'"#{name}"', f'"#{own}"').replace(f"url(#{name})",
                                                                                              f"url(#{own})")
    return svg


def draw(plot):
    """The plot as SVG. Throws PlotError."""
    try:
        done = subprocess.run(["gnuplot"], input=script_of(plot), capture_output=True, text=True, timeout=60)
    except FileNotFoundError:
        raise PlotError("gnuplot is missing; install the package gnuplot-nox") from None
    if done.returncode != 0 or "<svg" not in done.stdout:
        raise PlotError(f"gnuplot did not draw {plot.name}: {done.stderr.strip()[:500]}")
    return fit_into_page(done.stdout, plot)
