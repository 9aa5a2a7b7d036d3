# SPDX-License-Identifier: Apache-2.0
"""What the report computes from what the benchmark programs print."""

import json
import math
import re
import statistics
from dataclasses import dataclass, field

BAR = 1.10  # The instructions that the library may take for each of its floor.


@dataclass
class Pair:
    """One quantity of both sides."""

    product: float
    floor: float

    @property
    def ratio(self):
        return self.product / self.floor


@dataclass
class Measured:
    """An operation with one amount of work, such as getCameraIdList over 8 providers."""

    operation: str
    size: int
    nanoseconds: Pair = None
    instructions: Pair = None
    allocations: Pair = None
    misses: list = field(default_factory=list)

    @property
    def title(self):
        return f"{self.operation}/{self.size}"


def split_title(title):
    """("getCameraIdList", 8, "product") of "getCameraIdList/8/product"."""
    operation, size, side = title.rsplit("/", 2)
    return operation, int(size), side


def median_times(report):
    """Medians of the repetitions in a report of Google Benchmark, by title, in nanoseconds of the
    processor."""
    units = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    runs = {}
    for run in json.loads(report)["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        # Where the program takes the time itself, it is reported as the real one.
        title = run["name"].removesuffix("/manual_time")
        time = run["cpu_time" if title == run["name"] else "real_time"]
        runs.setdefault(title, []).append(time * units[run["time_unit"]])
    return {title: statistics.median(times) for title, times in runs.items()}


def instructions_in(profile):
    """(title, instructions of one call) of a profile of callgrind; None if it is of no side."""
    trigger = re.search(r"^desc: Trigger: Client Request: (.+) calls (\d+)$", profile, re.M)
    total = re.search(r"^(?:totals|summary): (\d+)$", profile, re.M)
    if trigger is None or total is None:
        return None
    return trigger[1], int(total[1]) / int(trigger[2])


def allocations_in(output):
    """The number at the end of each line, by what stands before it."""
    lines = (line.rsplit(" ", 1) for line in output.splitlines() if line)
    return {title: float(number) for title, number in lines}


def pairs(values):
    """{(operation, size): Pair} of {"operation/size/side": value}; both sides must be there."""
    sides = {}
    for title, value in values.items():
        operation, size, side = split_title(title)
        sides.setdefault((operation, size), {})[side] = value
    return {key: Pair(both["product"], both["floor"]) for key, both in sides.items()}


def allocations_above(operation, size):
    """How many more allocations than its floor's an operation may make: two for a status report and
    for each device of a death, where plain strings are worth more than what they cost."""
    if "StatusChange" in operation:
        return 2
    return 2 * size if operation == "death of a provider" else 0


def combine(times, instructions, allocations):
    """The measured operations, in the order in which the allocations were counted, which is that
    of the programs; each of the three must know all of them."""
    if not times.keys() == instructions.keys() == allocations.keys():
        missing = times.keys() ^ instructions.keys() | times.keys() ^ allocations.keys()
        raise ValueError(f"not everything was measured in every way: {sorted(missing)}")
    measured = []
    for key, heap in allocations.items():
        entry = Measured(*key, times[key], instructions[key], heap)
        # As it is printed: with two decimals.
        if round(entry.instructions.ratio, 2) > BAR:
            entry.misses.append("instructions")
        if entry.allocations.product > entry.allocations.floor + allocations_above(*key):
            entry.misses.append("allocations")
        measured.append(entry)
    return measured


def largest_ratio(measured):
    """The operation with the largest ratio of instructions."""
    return max(measured, key=lambda entry: entry.instructions.ratio)


def slope(points):
    """The exponent k of cost = c * size ** k that fits best; None below two sizes."""
    if len({size for size, _ in points}) < 2:
        return None
    xs = [math.log(size) for size, _ in points]
    ys = [math.log(cost) for _, cost in points]
    mean_x, mean_y = statistics.fmean(xs), statistics.fmean(ys)
    rise = sum((x - mean_x) * (y - mean_y) for x, y in zip(xs, ys))
    return rise / sum((x - mean_x) ** 2 for x in xs)


def last_slope(points):
    """The exponent between the two largest sizes only, where a constant part weighs least."""
    return slope(sorted(points)[-2:])


def relocations_in(listing):
    """How often each type of relocation is in what readelf -rW printed."""
    counts = {}
    for kind in re.findall(r"^[0-9a-f]+ +[0-9a-f]+ (R_\w+)", listing, re.M):
        counts[kind] = counts.get(kind, 0) + 1
    return counts


def in_words(value):
    """A number with three digits that count, thousands apart: 1,230,000 of 1234567."""
    if value == 0:
        return "0"
    digits = 2 - math.floor(math.log10(abs(value)))
    rounded = round(value, digits)
    return f"{rounded:,.{max(digits, 0)}f}"


def time_in_words(nanoseconds):
    for unit, factor in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= factor:
            return f"{in_words(nanoseconds / factor)} {unit}"
    return f"{in_words(nanoseconds)} ns"
