"""build/bench/index.html: plots whose axes end at what the core can do, the table of ratios, and how it was made."""
import datetime
import html
import json
import math
import re
import subprocess

import table

LINES = {  # library: colour, width
    "orv": ("#0a5bd3", 2.6), "orv-kernel": ("#0a5bd3", 2.6), "openblas": ("#e07b00", 1.4), "blis": ("#2b9348", 1.4),
    "eigen": ("#9b3fb5", 1.4), "fftw": ("#c2264b", 1.4), "reference": ("#999999", 1.0),
}
TYPES = "sdcz"
MATRIX_AND_VECTOR = r".(ge|gb|sy|he|sp|hp|sb|hb|tr|tp|tb)(mv|sv|2v[uc]|r[uc]?|r2)"
PACKAGES = ("libopenblas0-serial", "libblis4-serial", "libeigen3-dev", "libfftw3-double3", "libblas3", "libc6")

STYLE = """
body { font: 15px/1.45 system-ui, sans-serif; margin: 2em auto; max-width: 1180px; padding: 0 1em; color: #222 }
svg { width: 100%; height: auto } h2 { margin-top: 2em } code { background: #f3f3f3; padding: 0 .2em }
table { border-collapse: collapse; font-size: 13px } td, th { padding: 1px 9px; text-align: right }
td:first-child, th:first-child { text-align: left } .slow { background: #fbd9d3 } .fast { background: #dcf1dc }
dl { display: grid; grid-template-columns: max-content auto; gap: 0 1em } dt { color: #666 } dd { margin: 0 }
"""


class Panel:
    """One plot: a curve for each library that has points, and the height of the limit."""

    def __init__(self, title, cases, value, ylabel, log=False, ceiling=None):
        self.title, self.ylabel, self.log = title, ylabel, log
        self.curves = {}
        for case in cases:
            for library, figure in case.figures.items():
                if library in LINES:
                    points = [value(case, f) for f in (figure.median, min(figure), max(figure))]
                    if None not in points:
                        self.curves.setdefault(library, []).append((case.size, *points))
        limits = [case.figures["limit"].median for case in cases if "limit" in case.figures]
        self.limit = ceiling or (max(limits) if limits else None)
        self.sizes = sorted({case.size for case in cases})

    def script(self, ends_at_limit):
        """Gnuplot's words for this panel; the band behind a curve goes from the slowest to the fastest sample."""
        words, plots = [], []
        for index, (library, points) in enumerate(self.curves.items()):
            rows = "\n".join(" ".join(f"{number:.6g}" for number in point) for point in sorted(points))
            words.append(f"$d{index} << E\n{rows}\nE")
            colour, width = LINES[library]
            plots.append(f"$d{index} using 1:3:4 with filledcurves fc rgb '{colour}' fs transparent solid 0.15 notitle")
            plots.append(f"$d{index} using 1:2 with linespoints pt 7 ps 0.3 lc rgb '{colour}' lw {width} "
                         f"title '{library.replace('-kernel', '')}'")
        words.append(f"set title '{self.title}'; set ylabel '{self.ylabel}'")
        words.append("set logscale x; set format x '10^{%T}'" if self.log else "unset logscale x; set format x '%g'")
        low, high = self.sizes[0], self.sizes[-1]
        margin = 0.05 * (high - low) or 1
        words.append(f"set xrange [{low / 1.3:g}:{high * 1.3:g}]" if self.log
                     else f"set xrange [{low - margin:g}:{high + margin:g}]")
        top = f"{self.limit:g}" if self.limit and ends_at_limit else "*"
        words.append(f"set yrange [0:{top}]")
        if self.limit and not ends_at_limit:
            plots.append(f"{self.limit:g} with lines lc rgb '#444444' dt 2 title 'limit of 128 bits'")
        return "\n".join(words) + "\nplot " + ", \\\n".join(plots)


class Bars(Panel):
    """The same for cases that have no order: a group of bars for each."""

    def script(self, ends_at_limit):
        names = {size: name for size, name in enumerate(self.title[1])}
        libraries = list(self.curves)
        words, plots = [], []
        width = 0.8 / max(len(libraries), 1)
        for index, library in enumerate(libraries):
            shift = (index - (len(libraries) - 1) / 2) * width
            rows = "\n".join(f"{at + shift:g} {median:g} {low:g} {high:g}" for at, median, low, high in self.curves[library])
            words.append(f"$d{index} << E\n{rows}\nE")
            plots.append(f"$d{index} using 1:2:({width:g}) with boxes fs solid 0.75 lc rgb '{LINES[library][0]}' "
                         f"title '{library.replace('-kernel', '')}'")
        ticks = ", ".join(f"'{name}' {at}" for at, name in names.items())
        words.append(f"set title '{self.title[0]}'; set ylabel '{self.ylabel}'; unset logscale x; set xtics ({ticks})")
        words.append(f"set xrange [-0.6:{len(names) - 0.4}]")
        words.append(f"set yrange [0:{f'{self.limit:g}' if self.limit and ends_at_limit else '*'}]")
        return "\n".join(words) + "\nplot " + ", \\\n".join(plots) + "\nset xtics autofreq"


def grid(panels, columns, ends_at_limit=True):
    """An SVG of the panels, row by row; empty where there is nothing to show."""
    panels = [panel for panel in panels if panel.curves]
    if not panels:
        return ""
    rows = math.ceil(len(panels) / columns)
    script = [f"set terminal svg size 1160,{210 * rows} dynamic font 'sans,10' background rgb 'white'",
              f"set multiplot layout {rows},{columns}", "set grid y lc rgb '#dddddd'; set border 3; set tics nomirror",
              f"set key {'outside top horizontal' if isinstance(panels[0], Bars) else 'bottom right'} samplen 1 font ',8'"]
    script += [panel.script(ends_at_limit) for panel in panels]
    done = subprocess.run(["gnuplot"], input="\n".join(script), capture_output=True, text=True)
    if done.returncode:
        raise RuntimeError(done.stderr)
    # Inlined pictures share one space of names.
    grid.count = getattr(grid, "count", 0) + 1
    svg = done.stdout[done.stdout.index("<svg"):]
    return re.sub(r"(id=['\"]|url\(#|href=['\"]#)", rf"\g<1>p{grid.count}_", svg)


def rate(_, figure):
    return figure


def share(case, figure):
    return figure / case.figures["limit"].median if "limit" in case.figures else None


def gemm_small(cases):
    return [Panel(f"{t}gemm, n by n, beta = {beta}", [c for c in cases if c.kernel == t + "gemm" and
                                                     c.name.startswith(f"{t}gemm small beta={beta}")], rate, "GFLOP/s")
            for t in TYPES for beta in (0, 1)]


def gemm_large(cases):
    return [Panel(f"{t}gemm {trans}, n by n", [c for c in cases if c.kernel == t + "gemm" and c.variant == trans],
                  rate, "GFLOP/s") for t in TYPES for trans in ("NN", "TN", "NT", "TT")]


def gemm_skinny(cases):
    panels = []
    for t in TYPES:
        group = [c for c in cases if c.kernel == t + "gemm" and c.variant.startswith("skinny")]
        shapes = [c.variant.removeprefix("skinny ") for c in group]
        panel = Bars((f"{t}gemm, the other dimensions 2000", shapes), group, rate, "GFLOP/s")
        for library in panel.curves:
            panel.curves[library] = [(at, *[f[i] for i in (0, 1, 2)]) for at, f in
                                     enumerate(c.figures[library] for c in group) if f]
        panels.append(panel)
    return panels


def matrices_and_vectors(cases):
    """A curve over n for each routine with the first of its letters, of bands for the wider one."""
    groups = {}
    for case in cases:
        if re.fullmatch(MATRIX_AND_VECTOR, case.kernel) and re.fullmatch(r"(N|U|UN|unit)( k=50)?", case.variant):
            groups.setdefault((case.kernel, case.variant), []).append(case)
    return [Panel(f"{kernel} {variant.removesuffix('unit')}", group, share, "share of the limit", log=True, ceiling=1.2)
            for (kernel, variant), group in groups.items()]


def vectors(cases):
    groups = {}
    for case in cases:
        if case.variant == "unit" and not re.fullmatch(MATRIX_AND_VECTOR, case.kernel):
            groups.setdefault(case.kernel, []).append(case)
    return [Panel(f"{kernel}, unit stride", group, share, "share of the limit", log=True, ceiling=1.2)
            for kernel, group in groups.items()]


def figures(cases, pass_):
    held = pass_ == "held"
    chosen = [c for c in cases if c.pass_ == pass_]
    for title, panels, columns in (
            ("Matrix product, small squares", gemm_small(chosen), 2),
            ("Matrix product, large squares", gemm_large(chosen), 4),
            ("Matrix product with one dimension of 8", gemm_skinny(chosen), 2),
            ("Matrix and vector, from the first cache to memory", matrices_and_vectors(chosen), 4),
            ("Vector routines, from the first cache to memory", vectors(chosen), 4)):
        picture = grid(panels, columns, ends_at_limit=held)
        if picture:
            yield f"<h3>{title}</h3>\n{picture}"


def results(cases, pass_):
    chosen = [c for c in cases if c.pass_ == pass_]
    libraries = list(dict.fromkeys(name for c in chosen for name in c.figures))
    head = "".join(f"<th>{html.escape(name)}</th>" for name in libraries)
    yield f"<table><tr><th>case</th><th>unit</th>{head}<th>ratio</th><th>% of limit</th></tr>"
    for case in chosen:
        cells = "".join(f"<td>{case.figures[name].median:.4g}</td>" if name in case.figures else "<td></td>"
                        for name in libraries)
        ratio = case.ratio()
        colour = "" if ratio is None else "slow" if case.misses() else "fast"
        number = "" if ratio is None else f"{ratio:.2f}"
        yield (f"<tr><td>{case.name}</td><td>{case.unit}</td>{cells}<td class='{colour}'>{number}</td>"
               f"<td>{table.percent(case.share())}</td></tr>")
    yield "</table>"


def output(*command, cwd=None):
    done = subprocess.run(command, capture_output=True, text=True, cwd=cwd)
    return done.stdout.strip()


def circumstances(libraries, root, command):
    """What has to be told so that somebody else could get the same figures."""
    processor = dict(re.findall(r"^(model name|cpu MHz|cache size)\s*: (.*)$", open("/proc/cpuinfo").read(), re.M))
    cache = (root / "build" / "CMakeCache.txt").read_text()
    compiler = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.M)[1]
    commands = json.loads((root / "build" / "compile_commands.json").read_text())
    kernels = next(c["command"] for c in commands if c["file"].endswith("frame/branch.cpp"))
    flags = " ".join(word for word in kernels.split() if re.match("-[Ofm]", word))
    versions = output("dpkg-query", "-W", "-f", "${Package} ${Version}, ", *PACKAGES).rstrip(", ")
    cores = ", ".join(f"{library} {core} ({pass_})" for pass_, library, _, core in libraries if core)
    return {
        "command": command, "date": datetime.datetime.now().strftime("%Y-%m-%d %H:%M"),
        "orv": output("git", "describe", "--always", "--dirty", cwd=root),
        "processor": f"{processor.get('model name')}, {processor.get('cpu MHz')} MHz as the system tells, "
                     f"last cache {processor.get('cache size')}",
        "threads": "one, bound to one processor, where not told otherwise",
        "compiler": f"{output(compiler, '--version').splitlines()[0]}, {flags}",
        "peers": versions, "peers compute for": cores,
    }


def write(path, cases, libraries, root, command):
    about = "".join(f"<dt>{key}</dt><dd>{html.escape(value)}</dd>"
                    for key, value in circumstances(libraries, root, command).items())
    parts = [f"<!DOCTYPE html><meta charset='utf-8'><title>orv beside its peers</title><style>{STYLE}</style>",
             "<h1>orv beside its peers</h1>", f"<dl>{about}</dl>",
             "<p>Every figure is the median of samples taken in turn from all libraries, on the same operands; bands go "
             "from the slowest to the fastest. A matrix product of m, n, k counts 2mnk operations (8mnk complex), a vector "
             "routine the bytes it must read and write. <b>The limit</b> is measured in the same rounds: for products "
             "128-bit multiplies and adds on registers, for vector routines a loop that moves the same operands and "
             "computes nothing, for scaled norms one division and one dependent addition a number. Axes end there.</p>",
             "<h2>Peers held to SSE4.2</h2>", *figures(cases, "held"),
             "<h2>Peers with all that the processor has</h2>",
             "<p>A run of its own, with wider vectors for the peers; orv is the same.</p>", *figures(cases, "unrestricted")]
    for pass_ in dict.fromkeys(case.pass_ for case in cases):
        parts += [f"<h2>Figures: {pass_}</h2>", *results(cases, pass_)]
    path.write_text("\n".join(parts))
