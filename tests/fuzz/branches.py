#!/usr/bin/python3
"""Counts the branches of the parsers: each condition has two, that it holds and that it does not, and each case of a switch
as well. Reads what llvm-cov exports; ends with 1 when less is taken than is wanted, or untaken.txt is not true.

branches.py BRANCHES.json [--rows | --branches [FILE...]]"""

import json
import sys
from collections import defaultdict
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
WANTED = 95  # percent


def text_at(lines, place):
    """The condition as it is written, on one line."""
    begin_line, begin, end_line, end = place
    part = lines[begin_line - 1:end_line]
    part[-1] = part[-1][:end - 1]
    part[0] = part[0][begin - 1:]
    return " ".join(" ".join(part).split())


def branches_of(name, file):
    """[(line, condition, side, taken)] of a file, instances of a template counted as one."""
    counts = defaultdict(lambda: [0, 0])
    for *place, holds, fails, _, _, _ in file["branches"]:
        counts[tuple(place)][0] += holds
        counts[tuple(place)][1] += fails
    lines = (ROOT / name).read_text().splitlines()
    return [(place[0], text_at(lines, place), side, count > 0)
            for place, sides in sorted(counts.items()) for side, count in zip(("true", "false"), sides)]


def reasons():
    """{(file, condition, side): why nothing can take it}"""
    lines = (line for line in (HERE / "untaken.txt").read_text().splitlines() if line and not line.startswith("#"))
    found = {}
    for line in lines:
        file, rest = line.split(" | ", 1)
        condition, side, why = rest.rsplit(" | ", 2)
        found[file, condition, side] = why
    return found


def main():
    exported = json.loads(Path(sys.argv[1]).read_text())["data"][0]["files"]
    # A compiler cache knows them by another folder.
    files = {name: branches_of(name, file) for name in (HERE / "parsers.txt").read_text().split()
             for file in exported if file["filename"].endswith("/" + name)}
    mode, chosen = sys.argv[2] if len(sys.argv) > 2 else "", sys.argv[3:]
    excused, untrue, sums, below = reasons(), [], [0, 0, 0], []
    for key in excused:
        if not any((condition, side) == key[1:] and not taken for _, condition, side, taken in files.get(key[0], [])):
            untrue.append(key)
    for name, branches in sorted(files.items()):
        missing = [each for each in branches if not each[3]]
        listed = sum((name, condition, side) in excused for _, condition, side, _ in missing)
        row = [len(branches) - len(missing), len(branches), listed]
        sums = [total + count for total, count in zip(sums, row)]
        if mode == "--branches" and (not chosen or name in chosen):
            for line, condition, side, _ in missing:
                print(f"{name}:{line} | {condition} | {side} | {excused.get((name, condition, side), 'not taken')}")
        elif mode != "--branches":
            print(told(mode, name, *row))
    if mode == "--branches":
        return 0
    print(told(mode, "all parsers", *sums))
    for key in untrue:
        print("branches: untaken.txt names what is taken, or is not there:", " | ".join(key), file=sys.stderr)
    return 1 if untrue or share(*sums) < WANTED else 0


def share(taken, count, listed):
    return 100 * taken / max(1, count - listed)


def told(mode, name, taken, count, listed):
    if mode != "--rows":
        return f"{taken:5} of {count:5}, {listed:3} that nothing can take: {share(taken, count, listed):6.1f} %  {name}"
    found = "nothing" if share(taken, count, listed) >= WANTED or name != "all parsers" else f"less than {WANTED} %"
    can = f", {listed} that nothing can take" if listed else ""
    return f"branches of {name} | {taken} of {count}{can}: {share(taken, count, listed):.1f} % | {found}"


sys.exit(main())
