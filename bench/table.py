"""Results of orv_bench as ratios: orv to the best of the others, and orv to what the core can do."""
import collections
import csv
import re

# kernel, case, least ratio to the best peer, least share of the limit. The first line that fits a case holds;
# None asks nothing. Where the order of operations is part of the contract, it sets the bound: scaled norms divide once a
# number, dsdot and sdsdot add one product after the other, norms of singles widen each number.
TARGETS = [
    (r"dgemm", r"NN|TN|NT|TT", 1.03, 0.90),
    (r"[scz]gemm", r"NN|TN|NT|TT", 1.03, 0.87),
    (r".potrf", r".*", 1.0, None),
    (r".gtsv|.dttrb", r".*", 1.2, None),
    (r".omatcopy", r"T alpha=1.*", 1.2, 0.70),
    (r".[oi]matcopy", r"T.*m=1000", 1.0, None),
    (r".[oi]matcopy", r"T.*", 1.2, None),
    (r".fft", r"small factors", 0.9, None),
    (r".fft", r"primes", 0.8, None),
    (r"dsparse_mv", r".*", 1.05, 0.90),
    (r"dsparse_mm", r".*", 1.3, None),
    (r".*", r"call", None, None),
    (r"dnrm2|dznrm2|dsdot|sdsdot", r".*", None, 0.90),
    (r"snrm2|scnrm2", r"unit", None, 0.90),
    (r".*", r".*", 1.0, None),
]
CALL_OVERHEAD_NS = 40  # standard interface above kernel, at n = 10
THREADS_2_OVER_1 = [(r".gemm", 1.8), (r".(sy|he|tr)(mm|sm|rk|r2k)|.gemm3m", 1.75), (r".*matcopy", 1.5), (r".dft", 1.6)]
OURS = ("orv", "orv-kernel")
# The reference library is shown, but nobody chooses it for its speed.
NO_PEER = OURS + ("reference", "limit", "against", "orv 1", "orv 2")

Time = collections.namedtuple("Time", "median slowest fastest")


class Case:
    """One case of one pass: the figures of every library that ran it."""

    def __init__(self, pass_, kernel, variant, size, unit):
        self.pass_, self.kernel, self.variant, self.size, self.unit = pass_, kernel, variant, size, unit
        self.figures = {}

    name = property(lambda self: f"{self.kernel} {self.variant} {self.size}")

    def faster(self, a, b):
        """How many times as fast figure a is as figure b."""
        return b / a if self.unit == "ns" else a / b

    @property
    def ours(self):
        return next((self.figures[name] for name in OURS if name in self.figures), None)

    def best(self):
        """Name and figures of the fastest peer, or None."""
        peers = [(name, f) for name, f in self.figures.items() if name not in NO_PEER]
        return max(peers, key=lambda peer: self.faster(peer[1].median, 1), default=None)

    def ratio(self):
        best = self.best()
        return self.faster(self.ours.median, best[1].median) if self.ours and best else None

    def share(self):
        limit = self.figures.get("limit")
        return self.ours.median / limit.median if self.ours and limit else None

    def against(self):
        other = self.figures.get("against")
        return self.faster(self.ours.median, other.median) if self.ours and other else None

    def ranges_overlap(self, name, other):
        """Whether two libraries' samples do not tell them apart."""
        a, b = self.figures[name], self.figures[other]
        return max(min(a[1:]), min(b[1:])) <= min(max(a[1:]), max(b[1:]))

    def misses(self):
        """What the case falls short of, as sentences."""
        missed = []
        ratio, share = self.ratio(), self.share()
        for kernel, variant, least_ratio, least_share in TARGETS:
            if re.fullmatch(kernel, self.kernel) and re.fullmatch(variant, self.variant):
                break
        if ratio is not None and least_ratio is not None and ratio < least_ratio:
            best = self.best()[0]
            own = next(name for name in OURS if name in self.figures)
            noise = ", ranges overlap" if self.ranges_overlap(own, best) else ""
            missed.append(f"{ratio:.2f} of {best}, wanted {least_ratio:.2f}{noise}")
        if share is not None and least_share is not None and share < least_share:
            missed.append(f"{100 * share:.0f} % of the limit, wanted {100 * least_share:.0f} %")
        if self.unit == "ns" and all(name in self.figures for name in OURS):
            overhead = self.figures["orv"].median - self.figures["orv-kernel"].median
            if overhead > CALL_OVERHEAD_NS:
                missed.append(f"{overhead:.0f} ns above the kernel, wanted {CALL_OVERHEAD_NS}")
        if "orv 2" in self.figures:
            speedup = self.figures["orv 2"].median / self.figures["orv 1"].median
            wanted = next((least for name, least in THREADS_2_OVER_1 if re.fullmatch(name, self.kernel)), 0)
            if speedup < wanted:
                missed.append(f"two threads {speedup:.2f} times one, wanted {wanted}")
        return missed


def load(path):
    """Cases in the order of the file, and what the comment lines say of the libraries: (pass, library, file, core)."""
    cases, libraries = {}, []
    with open(path, newline="") as file:
        for row in csv.reader(file):
            if row[0].startswith("#"):
                about = [row[0][1:]] + row[1:]
                if about not in libraries:
                    libraries.append(about)
            elif row[0] != "kernel":
                kernel, variant, library, size, median, slowest, fastest, unit, pass_ = row
                key = (pass_, kernel, variant, int(size))
                case = cases.setdefault(key, Case(pass_, kernel, variant, int(size), unit))
                case.figures[library] = Time(float(median), float(slowest), float(fastest))
    return list(cases.values()), libraries


def percent(share):
    return "" if share is None else f"{100 * share:.0f}"


def console(cases):
    """The table that a run prints, then what misses its target."""
    print(f"{'case':34}{'orv':>10}{'best peer':>22}{'ratio':>8}{'% limit':>9}")
    for case in cases:
        if case.pass_ != "held" or not case.ours:
            continue
        best, ratio = case.best(), case.ratio()
        peer = f"{best[0]} {best[1].median:.4g}" if best else ""
        figure = f"{case.ours.median:.4g} {'ns' if case.unit == 'ns' else ''}"
        print(f"{case.name:34}{figure:>10}{peer:>22}{'' if ratio is None else f'{ratio:.2f}':>8}"
              f"{percent(case.share()):>9}")
    for case in cases:
        if case.pass_ == "threaded":
            print(f"{case.name:34}" + "  ".join(f"{name} {f.median:.4g}" for name, f in case.figures.items()))
    changed = [case for case in cases if case.against() is not None]
    if changed:
        print("\nagainst the other commit (above 1: this one is faster), where the samples tell them apart:")
        for case in changed:
            own = next(name for name in OURS if name in case.figures)
            if not case.ranges_overlap(own, "against"):
                print(f"  {case.name:34}{case.against():6.2f}")
    held = [case for case in cases if case.pass_ in ("held", "threaded") and case.misses()]
    print(f"\n{len(held)} of {sum(case.pass_ in ('held', 'threaded') for case in cases)} cases miss a target:")
    for case in held:
        print(f"  {case.name:34}{'; '.join(case.misses())}")
