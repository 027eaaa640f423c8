#!/usr/bin/env python3
"""Makes the tables and the charts out of what the benchmarks have measured.

usage: report.py RESULTS FOLDER PACKAGE...

RESULTS is the folder of the programs' JSON outputs; README.md and one SVG file per group are written to FOLDER.
The packages are the peers' and are named with their versions. groups.toml says which works there are, what they
are compared with and what they aim at.
"""

import json
import re
import statistics
import sys
import tomllib
from dataclasses import dataclass, field
from pathlib import Path

import chart
import machine

OWN = "zorvcrt"


@dataclass
class Measurement:
    """The times of one contender, in nanoseconds, or why there are none."""

    times: list = field(default_factory=list)
    trouble: str = ""

    @property
    def median(self):
        return statistics.median(self.times)

    @property
    def spread(self):
        """Half the distance of the quartiles, relative to the median."""
        if len(self.times) < 3:
            return None
        lower, _, upper = statistics.quantiles(self.times, n=4)
        return (upper - lower) / 2 / self.median


UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read(folder):
    """Gives {work: {input: {contender: Measurement}}}, in the order of the programs."""
    works = {}
    for path in sorted(Path(folder).glob("*.json")):
        runs = [run for run in json.loads(path.read_text())["benchmarks"] if run["run_type"] == "iteration"]
        # Random interleaving shuffles them; the family's index is the order in which the program has them.
        for run in sorted(runs, key=lambda run: run["family_index"]):
            work, amount, contender, *rest = run["name"].split("/")
            entry = works.setdefault(work, {}).setdefault(amount, {}).setdefault(contender, Measurement())
            if run.get("error_occurred"):
                entry.trouble = run["error_message"]
                continue
            # Processor time, because others may use the machine too; what measures itself reports real time.
            time = run["real_time" if "manual_time" in rest else "cpu_time"]
            entry.times.append(time * UNITS[run["time_unit"]])
    return works


def amount_of(name):
    return float(name.split()[0].replace(",", ""))


class Group:
    """A group of rows with their ratios: {input: {contender: ratio}}."""

    def __init__(self, rules, inputs):
        self.rules = rules
        self.measure = rules.get("measure", "time")
        self.peer = rules.get("peer")
        self.limits = set(rules.get("limits", []))
        self.inputs = inputs
        self.ratios = {name: self._ratios(name) for name in inputs}

    def _measured(self, name):
        return {who: one for who, one in self.inputs[name].items() if one.times}

    def _ratios(self, name):
        measured = self._measured(name)
        if self.measure == "growth":
            return {who: self._growth(name, who) for who in measured if self._growth(name, who)}
        base = self._measured(self.rules.get("peer_input", name)).get(self.peer)
        if base is None:
            return {}
        base = base.median
        inverse = self.measure == "throughput"
        return {who: base / one.median if inverse else one.median / base for who, one in measured.items()}

    def _growth(self, name, who):
        first = next(iter(self.inputs))
        start = self._measured(first).get(who)
        if start is None:
            return None
        return self._measured(name)[who].median / start.median * amount_of(first) / amount_of(name)

    def rank(self, name, who):
        """The best come first, what could not be measured last."""
        ratio = self.ratios[name].get(who)
        if ratio is None:
            return float("inf")
        return -ratio if self.measure == "throughput" else ratio

    def aims(self, name):
        """Gives [(text, reached)] of our own contender; not reached is also what could not be measured."""
        ratios = self.ratios[name]
        found = []
        for aim in self.rules.get("aims", []):
            if OWN not in self.inputs[name] or not re.fullmatch(aim.get("inputs", ".*"), name):
                continue
            if self.measure == "growth" and name == next(iter(self.inputs)):
                continue
            least = "at_least" in aim
            bound = aim["at_least" if least else "at_most"]
            others = self._others(aim, ratios)
            known = OWN in ratios and others
            reached = known and all(
                ratios[OWN] >= bound * other if least else ratios[OWN] <= bound * other for other in others)
            found.append((self._aim_text(aim, bound, least), reached if known else None))
        return found

    def _others(self, aim, ratios):
        than = aim.get("than")
        if than == "*":
            return [ratio for who, ratio in ratios.items() if who != OWN and who not in self.limits]
        if than is not None:
            return [ratios[than]] if than in ratios else []
        return [1.0]

    @staticmethod
    def _aim_text(aim, bound, least):
        than = aim.get("than")
        if bound == 1.0 and than is not None:
            return "best of all" if than == "*" else f"ahead of {than}"
        return f"{'≥' if least else '≤'} {bound:g}" + (f" of {than}" if than else "")

    def speed(self):
        """Gives (rival, times as fast as it), the geometric mean over the inputs; None where nothing compares."""
        rival = self.rules.get("rival", self.peer)
        both = [ratios for ratios in self.ratios.values() if OWN in ratios and rival in ratios]
        if self.measure == "growth" or not both:
            return None
        speeds = [ratios[rival] / ratios[OWN] for ratios in both]
        mean = statistics.geometric_mean(speeds)
        return rival, 1 / mean if self.measure == "throughput" else mean

    def bound(self, name):
        """The number of the first aim that is about the peer, for the chart."""
        for aim in self.rules.get("aims", []):
            if "than" not in aim and re.fullmatch(aim.get("inputs", ".*"), name):
                return aim.get("at_least", aim.get("at_most"))
        return None

    def scale(self):
        if self.measure == "growth":
            return f"time per unit, {next(iter(self.inputs))} = 1; shorter is better"
        if self.measure == "throughput":
            return f"throughput, {self.peer} = 1; longer is better"
        peer = ", ".join(name for name in (self.peer, self.rules.get("peer_input")) if name)
        return f"time, {peer} = 1; shorter is better"


def number(ratio):
    if ratio >= 100:
        return f"{ratio:,.0f}"
    return f"{ratio:#.3g}".rstrip(".")


def duration(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


VERDICTS = {True: "yes", False: "**no**", None: "not measured"}


def aim_cells(group, name):
    aims = group.aims(name)
    if not aims:
        return "", ""
    verdicts = [reached for _, reached in aims]
    if len(set(verdicts)) == 1:
        return "; ".join(text for text, _ in aims), VERDICTS[verdicts[0]]
    missed = ", ".join(text for text, reached in aims if not reached)
    return "; ".join(text for text, _ in aims), f"**not** {missed}"


def summary(groups):
    lines = ["| work | input | named peer | ratio | aim | reached |", "|---|---|---|--:|---|---|"]
    for group in groups:
        for name, ratios in group.ratios.items():
            aim, reached = aim_cells(group, name)
            if not aim:
                continue
            ratio = number(ratios[OWN]) if OWN in ratios else ""
            peer = group.peer or next(iter(group.inputs))
            lines.append(f"| {group.rules['title']} | {name} | {peer} | {ratio} | {aim} | {reached} |")
    return lines


def contender_row(group, name, who, measurement):
    shown = f"**{who}**" if who == OWN else f"*{who}*" if who in group.limits else who
    if not measurement.times:
        return f"| {name} | {shown} | | left out: {measurement.trouble} | | |"
    ratio = group.ratios[name].get(who)
    aim, reached = aim_cells(group, name) if who == OWN else ("", "")
    spread = "" if measurement.spread is None else f" ± {measurement.spread:.0%}"
    time = duration(measurement.median) + spread
    return f"| {name} | {shown} | {'' if ratio is None else number(ratio)} | {time} | {aim} | {reached} |"


def section(group):
    rules = group.rules
    lines = [f"## {rules['title']}", ""]
    if "about" in rules:
        lines += [rules["about"], ""]
    lines += [f"![{rules['title']}]({rules['work']}.svg)", ""]
    lines += [f"| input | contender | {group.scale().split(';')[0]} | median | aim | reached |"]
    lines += ["|---|---|--:|--:|---|---|"]
    for name, contenders in group.inputs.items():
        for who in sorted(contenders, key=lambda who: group.rank(name, who)):
            lines.append(contender_row(group, name, who, contenders[who]))
    return lines + [""]


def introduction(groups, packages):
    aims = [reached for group in groups for name in group.inputs for _, reached in group.aims(name)]
    measured = [one for group in groups for inputs in group.inputs.values() for one in inputs.values()]
    repetitions = max(len(one.times) for one in measured)
    return [
        "# Measured speed", "",
        "Made by `./bench.sh`. All contenders of a group were measured in one run of a process of their own, their",
        "repetitions interleaved at random; shown are ratios of the medians of their processor times. Absolute times",
        "depend on the machine and on what else it did; half the distance between the quartiles is given with them.",
        "In italics: what does less than the work and shows what bounds it.", "",
        *machine.description(packages),
        f"- Repetitions of each contender: {repetitions}", "",
        f"Of {len(aims)} aims {sum(reached is True for reached in aims)} are reached.", "",
        "![How many times as fast](overview.svg)", "",
        "## The aims", "",
    ]


def main(results, folder, packages):
    works = read(results)
    rules = tomllib.loads(Path(__file__).with_name("groups.toml").read_text())["group"]
    groups = [Group(rule, works[rule["work"]]) for rule in rules if rule["work"] in works]
    unknown = set(works) - {rule["work"] for rule in rules}
    if unknown:
        sys.exit(f"groups.toml does not know {', '.join(sorted(unknown))}")
    target = Path(folder)
    target.mkdir(parents=True, exist_ok=True)
    for old in target.glob("*.svg"):
        old.unlink()
    lines = introduction(groups, packages) + summary(groups) + [""]
    for group in groups:
        lines += section(group)
        (target / f"{group.rules['work']}.svg").write_text(chart.drawn(group, OWN, number))
    speeds = [(group.rules["title"], *group.speed()) for group in groups if group.speed()]
    (target / "overview.svg").write_text(chart.overview(speeds, number))
    (target / "README.md").write_text("\n".join(lines).rstrip() + "\n")


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2], sys.argv[3:])
