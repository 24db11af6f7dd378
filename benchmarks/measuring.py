# SPDX-License-Identifier: MIT
"""What the benchmarks share: the optimised build, sample recordings, turns, and the form of a row."""

import os
import statistics
import subprocess
from pathlib import Path

BUILD = Path(__file__).resolve().parent.parent / "build/release"
RESOURCES = BUILD / "resources"
CLI = BUILD / "bin/filmwright-cli"


def row(what, figure, unit, beside, reference, goal=""):
    """Prints what scripts/bench collects: six fields, divided by tabs.

    The result is figure / reference, both in `unit`. A goal is "at most R" or "at least R" for that
    ratio, or "at most D more" for the difference.
    """
    print(what, f"{figure:.6g}", unit, beside, f"{reference:.6g}", goal, sep="\t", flush=True)


def write_sample(path, *options):
    subprocess.run([RESOURCES / "mlv_sample", *options, path], check=True)


def take_turns(rounds, works):
    """Calls each of the named works once a round and returns the median of what each answers.

    Whatever disturbs the machine then disturbs all of them. Another one goes first in each second
    round, for it may find the machine cooler; the rounds between go backwards, for each finds memory
    and disk as the one before has left them. So an even number of rounds is fair to all.
    """
    answers = {name: [] for name in works}
    names = list(works)
    for turn in range(rounds):
        first = turn // 2 % len(names)
        order = names[first:] + names[:first]
        for name in reversed(order) if turn % 2 else order:
            answers[name].append(works[name]())
    return {name: statistics.median(values) for name, values in answers.items()}


def resident_mebibytes(pid):
    """What a process holds in memory now, without its children."""
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1]) / 1024
    raise ProcessLookupError(pid)


def environment(folder, **variables):
    """Has programs keep their temporary files below `folder`, which is the caller's own."""
    return {**os.environ, "TMPDIR": str(folder), **variables}
