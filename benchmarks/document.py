# SPDX-License-Identifier: Apache-2.0
"""Writes docs/performance.md and its plots."""

import subprocess

from arithmetic import BAR, in_words, largest_ratio, last_slope, slope, time_in_words

# What the amounts of each operation count, and what its floor cannot leave out.
OPERATIONS = {
    "getCameraDeviceInterface_V3_x": (
        "active devices",
        "the look-up of the name among the active devices under their lock, with a string of the "
        "name, which is what the map is searched by, and a copy of what was found, as the lock "
        "ends there; the look-up of the provider; both lines; the call"),
    "getCameraDeviceInterface_V1_x": ("active devices", "as above, with one line"),
    "getCameraIdList": (
        "providers of 16 ids",
        "the calls, and one copy of each name, which its provider lends for the length of its "
        "answer, in an array that grows"),
    "getVendorTags": (
        "providers of 32 sections of 32 tags",
        "the calls, one copy of each section in an array that grows, the markers, and one record "
        "of where each answer begins, as answers pair with providers by order of arrival"),
    "cameraDeviceStatusChange PRESENT": (
        "active devices",
        "one line for each active device and two more; the framework's name; the entry with its "
        "key and value; reading and writing the property, whose name and new value have no "
        "greatest length; the call"),
    "cameraDeviceStatusChange NOT_PRESENT": (
        "active devices", "as above; the property's value is edited in place"),
    "torchModeStatusChange": ("active devices", "two lines, the framework's name, the call"),
    "death of a provider": (
        "active devices of it",
        "the walk over all active devices, a copy of the name, one edit of the property and one "
        "call for each, the "
        "lines, a thread, and the reconnection, whose pause takes no time here"),
    "loading a map file": (
        "entries",
        "reading the file, `xmlParseMemory`, the walk, both strings of each entry as libxml2 "
        "returns them and as the map keeps them, and one line for each"),
    "entry point": (
        "providers",
        "the map file, all lines, the objects in shared ownership, the list of the services, and "
        "a look-up, a link and a shim for each provider"),
}

COLOURS = ("#4477aa", "#ee6677", "#228833", "#ccbb44", "#66ccee", "#aa3377", "#888888", "#000000",
           "#ee7733", "#009988")


def _table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|---" + "|---:" * (len(header) - 1) + "|"]
    lines += ["| " + " | ".join(str(cell) for cell in row) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def _count(value):
    return f"{value:,.0f}" if value == int(value) else f"{value:,.2f}"


def _cost_table(operations):
    rows = []
    for entry in operations:
        time, count, heap = entry.nanoseconds, entry.instructions, entry.allocations
        rows.append((f"{entry.operation}, {entry.size:,}", time_in_words(time.product),
                     time_in_words(time.floor), f"{time.ratio:.2f}", f"{count.product:,.0f}",
                     f"{count.floor:,.0f}", f"{count.ratio:.2f}", _count(heap.product),
                     _count(heap.floor)))
    return _table(("operation, amount of work", "time", "floor", "ratio", "instructions", "floor",
                   "ratio", "allocations", "floor"), rows)


def _by_operation(operations):
    groups = {}
    for entry in operations:
        groups.setdefault(entry.operation, []).append(entry)
    return groups


def _growth_table(operations):
    rows = []
    for name, entries in _by_operation(operations).items():
        if len(entries) < 2:
            continue
        exponents = [fit([(entry.size, getattr(getattr(entry, quantity), side))
                          for entry in entries])
                     for fit, quantity in ((slope, "instructions"), (last_slope, "instructions"),
                                           (slope, "nanoseconds"))
                     for side in ("product", "floor")]
        sizes = ", ".join(f"{entry.size:,}" for entry in entries)
        rows.append((name, f"{sizes} {OPERATIONS[name][0]}", *(f"{k:.2f}" for k in exponents)))
    return _table(("operation", "amounts", "instructions", "floor", "largest two amounts", "floor",
                   "time", "floor"), rows)


def _bar(operations):
    missed = [entry for entry in operations if entry.misses]
    worst = largest_ratio(operations)
    if not missed:
        return (f"All {len(operations)} rows stay below {BAR:.2f} times the instructions of their "
                f"floors, and allocate no more than they do but for up to two blocks for a status "
                f"report and for each device of a death. The largest ratio of instructions is "
                f"{worst.instructions.ratio:.2f}, of {worst.operation} with {worst.size:,}.\n")
    names = "\n".join(f"* {entry.operation}, {entry.size:,}: {' and '.join(entry.misses)}"
                      for entry in missed)
    return (f"The bar is {BAR:.2f} times the instructions of the floor, and no allocation above "
            f"it but for two for a status report and for each device of a death. These rows miss "
            f"it:\n\n{names}\n")


def _floors():
    return "\n".join(f"* **{name}**, over {unit}: {floor}."
                     for name, (unit, floor) in OPERATIONS.items()) + "\n"


def _walk_table(report):
    loads = {entry.size: entry.instructions for entry in report.operations
             if entry.operation == "loading a map file"}
    return _table(("entries", "library", "floor", "bare walk", "library / bare walk"),
                  [(f"{size:,}", f"{loads[size].product:,.0f}", f"{loads[size].floor:,.0f}",
                    f"{walk:,.0f}", f"{loads[size].product / walk:.2f}")
                   for size, walk in sorted(report.walks.items())])


def _memory_table(rows):
    mebi = 2**20
    return _table(("entries", "file", "peak memory", "floor", "peak / file"),
                  [(f"{entries:,}", f"{size:,} bytes", f"{memory.product / mebi:.1f} MiB",
                    f"{memory.floor / mebi:.1f} MiB",
                   f"{memory.product / size:.1f}" if size > 100_000 else "")
                   for entries, size, memory in rows])


def _library_table(report):
    facts = report.library
    relocations = facts["relocations"]
    kinds = ", ".join(f"{count} {kind}" for kind, count in sorted(relocations.items()))
    return _table(("", ""), [
        ("size of the stripped library", f"{facts['stripped bytes']:,} bytes"),
        ("relocations", f"{sum(relocations.values()):,} ({kinds})"),
        ("page faults of loading it", f"{facts['page faults alone']:.0f}"),
        (f"page faults of loading it and the {facts['libraries']} libraries below it",
         f"{facts['page faults together']:.0f}"),
        ("time of loading it", time_in_words(facts["load nanoseconds alone"])),
        ("time of loading it and the libraries below it",
         time_in_words(facts["load nanoseconds together"])),
        ("memory of an active device",
         f"{report.device_bytes.product:.0f} bytes (floor: {report.device_bytes.floor:.0f})"),
    ])


def text(report):
    """The whole document."""
    machine = report.machine
    reconnected = report.reconnection
    return f"""# What every call costs

Written by `make bench` from a real run on the machine below:

{_table(("", ""), [(key, value) for key, value in machine.items()])}
Every operation is measured twice: as the library does it, and as its *floor* does, which is written
out in `benchmarks/floor` and does only what the operation cannot avoid. The two share the fake
providers and the fake framework around them, and the platform's code; the log lines are formatted
and then dropped. Tests hold both sides to the same calls, log lines, property writes and answers in
the same order.

Times are those of the processor: medians of interleaved runs in one process. They still wander with
whatever else the machine does. Instructions are counted by callgrind and allocations by a counter in
front of the C library's allocator; both are the same in every run but for what threads and addresses
bring in.

## The operations

{_cost_table(report.operations)}
![ratios of instructions](performance/ratios.svg)

{_bar(report.operations)}
What remains above the floors is what well-formed names do not need: the floors know that every name
has all of its parts, that every provider is connected and answers once, and that every look-up
finds something. The library checks each of these, because its providers are other programs. It also
searches its providers, a set of descriptors, with a descriptor made for the search. In reports and
deaths it works with strings of its own, where the floors lend the framework theirs, give one away to
the map of active devices, and edit the value of a property in place.

## What the floors do

{_floors()}
## Growth

The exponent k of the cost c·nᵏ that fits best, over the amounts measured: 0 is a cost that does not
grow with the work, 1 one that grows with it. Looking a device up grows with the logarithm of the
devices. Loading a map sorts its entries; that part is too small to be seen beside the parser's.
Beside the fit over all amounts stands the exponent between the largest two alone.

{_growth_table(report.operations)}
![instructions by amount of work](performance/growth.svg)

Where getCameraIdList and its floor alike show more than 1, it is the C library's allocator, whose
cache of each thread holds only a few blocks of a size; and with one provider the array of names
need not grow. With a cache that holds all of them, the exponent from {report.cached_ids[-2][0]} to
{report.cached_ids[-1][0]} providers is {last_slope(report.cached_ids):.2f}.

## The walk of a map file

Of the instructions of a load, `xmlParseMemory` and a walk that takes out both strings of each entry
need those of the bare walk. The rest, in the library as in its floor, is the map, which is ordered
by instance and asked later, and a line in the log for each entry, both of which are required.

{_walk_table(report)}
## Memory of a map file

What the peak memory of a process grows by while it loads the file. Nearly all of it is the document
that libxml2 builds; the text of the file is in memory once beside it.

{_memory_table(report.map_memory)}
## Reconnection

From the end of the pause to the registration with the new process, end to end: a simulated provider
is killed and started again while a process that has loaded the library waits; the floor makes the
same four calls (look-up, link, shim, registration) by hand. Medians. The provider reports its
cameras as soon as it is registered; what the library does with the reports, while the floor drops
them, runs beside the end of the registration.

{_table(("", ""), [("library", time_in_words(reconnected.product)),
                   ("floor", time_in_words(reconnected.floor)),
                   ("ratio", f"{reconnected.ratio:.2f}")])}
## The library

{_library_table(report)}"""


def _plot(script, path):
    header = (f"set terminal svg size 900,520 font 'sans-serif,13' background '#ffffff'\n"
              f"set output '{path}'\n")
    subprocess.run(["gnuplot"], input=header + script, text=True, check=True)


def _ratio_script(operations):
    data = "\n".join(f'"{entry.operation}, {entry.size:,}" {entry.instructions.ratio:.4f}'
                     for entry in operations)
    return f"""$data << EOD
{data}
EOD
set title "Instructions of the library for each of its floor"
set yrange [0.9:{max(BAR + 0.02, largest_ratio(operations).instructions.ratio + 0.02):.2f}]
set style fill solid 0.8 noborder
set boxwidth 0.7
set xtics rotate by -55 font ',10' noenhanced
set grid ytics
set bmargin 15
set rmargin 8
set key outside top right horizontal
plot $data using 0:2:xtic(1) with boxes lc rgb '#4477aa' title 'library', \\
     1 with lines lc rgb '#222222' title 'floor', \\
     {BAR} with lines dt 2 lc rgb '#cc3311' title 'bar'
"""


def _growth_script(operations):
    blocks, plots = [], []
    groups = {name: entries for name, entries in _by_operation(operations).items()
              if len(entries) > 1}
    for index, (name, entries) in enumerate(groups.items()):
        colour = COLOURS[index % len(COLOURS)]
        rows = "\n".join(f"{entry.size} {entry.instructions.product:.0f} "
                         f"{entry.instructions.floor:.0f}" for entry in entries)
        blocks.append(f"$data{index} << EOD\n{rows}\nEOD")
        plots.append(f"$data{index} using 1:2 with linespoints lc rgb '{colour}' pt 7 ps 0.6 "
                     f"title '{name}'")
        plots.append(f"$data{index} using 1:3 with points lc rgb '{colour}' pt 6 ps 1.2 "
                     f"notitle")
    return "\n".join(blocks) + """
set title "Instructions of a call by amount of work (rings: floor)"
set logscale xy
set format y '10^{%L}'
set xlabel 'devices, providers or entries'
set grid
set key outside right noenhanced font ',10'
plot """ + ", \\\n     ".join(plots) + "\n"


def write(report, docs):
    """docs/performance.md and docs/performance/*.svg."""
    plots = docs / "performance"
    plots.mkdir(parents=True, exist_ok=True)
    (docs / "performance.md").write_text(text(report))
    _plot(_ratio_script(report.operations), plots / "ratios.svg")
    _plot(_growth_script(report.operations), plots / "growth.svg")
