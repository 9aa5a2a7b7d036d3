# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmark programs of a build and collects what they print."""

import os
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

from arithmetic import (Pair, allocations_in, combine, instructions_in, median_times, pairs,
                        relocations_in, split_title)

REPETITIONS = 9
RECONNECTIONS = 9
LOADS = 9
MAP_SIZES = (10, 10_000, 300_000)
LIBRARY = "android.hardware.camera.provider@2.4-impl-orvo.so"


@dataclass
class Report:
    machine: dict
    operations: list
    walks: dict  # Instructions of the bare walk of a map file, by its entries.
    cached_ids: list  # (providers, instructions) of getCameraIdList with a large allocator cache.
    map_memory: list  # (entries, bytes of the file, Pair of bytes)
    reconnection: Pair  # Medians, in nanoseconds.
    device_bytes: Pair
    library: dict


class Programs:
    """The programs of one build."""

    def __init__(self, build):
        self.bin = Path(build) / "bin"
        self.library = Path(build) / "lib" / LIBRARY

    def run(self, name, *arguments):
        return run([self.bin / name, *arguments])


def run(command, **environment):
    """Standard output of a command, which must succeed."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True,
                          env={**os.environ, **environment})
    if done.returncode != 0:
        sys.exit(f"{Path(command[0]).name} failed:\n{done.stderr.strip()}")
    return done.stdout


def say(what):
    print(what, flush=True)


def times(programs):
    return pairs(median_times(programs.run(
        "benchmark_timing", f"--benchmark_repetitions={REPETITIONS}",
        "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.01",
        "--benchmark_format=json")))


def instructions(programs, *arguments, **environment):
    """Instructions of one call, by title."""
    with tempfile.TemporaryDirectory() as directory:
        run(["valgrind", "--tool=callgrind", "--collect-atstart=no",
             f"--callgrind-out-file={directory}/profile",
             programs.bin / "benchmark_instructions", *arguments], **environment)
        found = (instructions_in(file.read_text()) for file in Path(directory).iterdir())
        return dict(entry for entry in found if entry is not None)


def walks_in(counted):
    """Takes the bare walks out of the counted instructions: {entries: instructions}."""
    titles = [title for title in counted if title.endswith("/walk")]
    return {split_title(title)[1]: counted.pop(title) for title in titles}


def cached_ids(programs):
    """getCameraIdList where the allocator keeps all small blocks at hand for the next call."""
    counted = instructions(programs, 64, GLIBC_TUNABLES="glibc.malloc.tcache_count=65535")
    walks_in(counted)
    return sorted((size, pair.product) for (operation, size), pair in pairs(counted).items()
                  if operation == "getCameraIdList")


def allocations(programs):
    """Those of the operations, and the bytes of an active device."""
    counted = allocations_in(programs.run("benchmark_allocations"))
    device = Pair(counted.pop("bytes of an active device/product"),
                  counted.pop("bytes of an active device/floor"))
    return pairs(counted), device


def map_memory(programs):
    rows = []
    for entries in MAP_SIZES:
        path, size = programs.run("benchmark_map_memory", "write", entries).split()
        try:
            memory = Pair(*(float(programs.run("benchmark_map_memory", side, path))
                            for side in ("product", "floor")))
        finally:
            shutil.rmtree(Path(path).parent)
        rows.append((entries, int(size), memory))
    return rows


def reconnection(programs):
    sides = []
    for side in ("product", "floor"):
        rounds = programs.run("benchmark_reconnection", side, RECONNECTIONS).split()
        sides.append(statistics.median(float(time) * 1e3 for time in rounds))
    return Pair(*sides)


def library_facts(programs):
    library = programs.library
    with tempfile.TemporaryDirectory() as directory:
        stripped = Path(directory) / "stripped.so"
        run(["strip", "--strip-all", "-o", stripped, library])
        size = stripped.stat().st_size
    needed = re.findall(r"=> (/\S+)", run(["ldd", library]))
    alone, together = ([programs.run("benchmark_load", library, *first).split()
                        for _ in range(LOADS)] for first in (needed, []))
    return {
        "stripped bytes": size,
        "relocations": relocations_in(run(["readelf", "-rW", library])),
        "page faults alone": statistics.median(int(faults) for faults, _ in alone),
        "page faults together": statistics.median(int(faults) for faults, _ in together),
        "load nanoseconds alone": statistics.median(float(us) * 1e3 for _, us in alone),
        "load nanoseconds together": statistics.median(float(us) * 1e3 for _, us in together),
        "libraries": len(needed),
    }


def machine(build):
    """What the numbers were measured on. No names of hosts or people."""
    cpu = re.search(r"^model name\s*: (.*)$", Path("/proc/cpuinfo").read_text(), re.M)
    cache = (Path(build) / "CMakeCache.txt").read_text()
    compiler = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.M)[1]
    kind = re.search(r"^CMAKE_BUILD_TYPE:\w+=(.*)$", cache, re.M)[1]
    system = re.search(r'^PRETTY_NAME="(.*)"$', Path("/etc/os-release").read_text(), re.M)
    version = run([compiler, "--version"]).splitlines()[0]
    return {
        "processor": cpu[1] if cpu else platform.machine(),
        "cores": os.cpu_count(),
        "memory": f"{os.sysconf('SC_PAGE_SIZE') * os.sysconf('SC_PHYS_PAGES') / 2**30:.0f} GiB",
        # What follows the numbers names who built it.
        "kernel": f"{platform.system()} {re.match('[0-9.]*[0-9]', platform.release())[0]}",
        "system": system[1] if system else "unknown",
        "compiler": f"{version}, {kind}",
    }


def measure(build):
    programs = Programs(build)
    say(f"times: medians of {REPETITIONS} interleaved runs")
    measured_times = times(programs)
    say("allocations")
    measured_allocations, device_bytes = allocations(programs)
    say("instructions, under callgrind; this takes a minute or two")
    counted = instructions(programs)
    walks = walks_in(counted)
    ids = cached_ids(programs)
    say("memory of map files")
    memory = map_memory(programs)
    say(f"reconnections, {RECONNECTIONS} of each side, in a simulated device")
    reconnected = reconnection(programs)
    say("the library")
    return Report(machine(build),
                  combine(measured_times, pairs(counted), measured_allocations), walks, ids,
                  memory, reconnected, device_bytes, library_facts(programs))
