"""Reads what gcovr has counted (JSON) and what may stay uncovered: coverage_report.py COUNTED EXCUSED.

Prints lines and branches per room, the branches not taken and the lines that no test ran, each with its reason.
Fails when a line has none, when a reason is for a line that is not there, and when a figure is too low.
"""
import json
import sys
from collections import defaultdict
from pathlib import Path

REQUIRED_BRANCHES = 95.0


def read_reasons(path):
    """{(file, code): reason} of a list of "FILE: reason" with the lines of code indented below."""
    reasons, file, reason = {}, None, None
    for line in Path(path).read_text().split("\n"):
        if line.startswith(" "):
            reasons[file, line.strip()] = reason
        elif line and not line.startswith("#"):
            file, reason = line.split(": ", 1)
    return reasons


def percent(part, whole):
    return 100.0 if whole == 0 else 100.0 * part / whole


def read_counts(path):
    """(room, file, line number, count, [count of each branch]) of every line that code was made from."""
    for file in sorted(json.loads(Path(path).read_text())["files"], key=lambda file: file["file"]):
        room = file["file"].split("/")[1]
        for line in file["lines"]:
            if not line["gcovr/noncode"]:
                branches = [branch["count"] for branch in line["branches"]]
                yield room, file["file"], line["line_number"], line["count"], branches


def main(counted, excused):
    reasons, used = read_reasons(excused), set()
    totals = defaultdict(lambda: [0, 0, 0, 0])  # lines, those that ran, branches, those that were taken
    untaken, uncovered, unexplained = [], [], []
    sources = {}
    for room, file, number, count, branches in read_counts(counted):
        code = sources.setdefault(file, Path(file).read_text().split("\n"))[number - 1].strip()
        taken = sum(branch > 0 for branch in branches)
        for key in (room, "all"):
            for index, more in enumerate((1, count > 0, len(branches), taken)):
                totals[key][index] += more
        if taken < len(branches):
            untaken.append(f"{file}:{number}: {taken} of {len(branches)}: {code}")
        if count == 0:
            reason = reasons.get((file, code))
            used.add((file, code))
            uncovered.append(f"{file}:{number}: {code}\n    {reason or 'NOT EXPLAINED'}")
            unexplained += [] if reason else [number]

    print("Branches not all taken:\n" + "\n".join(untaken))
    print(f"\n{'room':12}{'lines':>8}{'run':>8}{'%':>8}{'branches':>10}{'taken':>8}{'%':>8}")
    for room, (lines, ran, branches, taken) in sorted(totals.items(), key=lambda item: item[0] == "all"):
        print(f"{room:12}{lines:>8}{ran:>8}{percent(ran, lines):>8.2f}"
              f"{branches:>10}{taken:>8}{percent(taken, branches):>8.2f}")
    print("\nLines that did not run:\n" + "\n".join(uncovered))

    faults = []
    if unexplained:
        faults.append(f"{len(unexplained)} uncovered lines are not explained")
    for file, code in sorted(set(reasons) - used):
        if code not in [line.strip() for line in sources.get(file, [])]:
            faults.append(f"a reason is given for a line that is not there: {file}: {code}")
    if percent(totals["all"][3], totals["all"][2]) < REQUIRED_BRANCHES:
        faults.append(f"less than {REQUIRED_BRANCHES:.0f} % of the branches were taken")
    if faults:
        sys.exit("coverage: " + "\ncoverage: ".join(faults))
    lines, ran, branches, taken = totals["all"]
    print(f"\ncoverage: {percent(ran, lines):.2f} % of {lines} lines, {percent(taken, branches):.2f} % of {branches} "
          f"branches, {len(uncovered)} lines explained")


if __name__ == "__main__":
    main(*sys.argv[1:])
