#!/usr/bin/env python3
"""Runs the benchmarks of both targets and prints one table of ratios to peers.

    bench/table.py NAME=BUILD_FOLDER...

A figure is the least of several runs that take turns with the peer's: the machine's moods only
ever add. Pauses are their average. A ratio is this system's time to the peer's; a rate's is the
peer's time to this system's.
"""

import json
import os
import platform
import statistics
import subprocess
import sys
import time

from processes import Room, least, peak_memory

# What libcrypto is told that the processor lacks.
MASKS = {
    "no-sha": ":~0x20000000",  # the SHA extensions
    "no-vectors": "~0x1000020000000000:~0x20000020",  # AVX, SSSE3 and AVX2 as well
}

# program, subject, benchmark, peer, its benchmark, kind, target; without a target, the peer is the
# least that the subject is made of, and the ratio tells what is ours
MICRO = [
    ("digest", "SHA-1, 8 KiB", "Sha1/8192", "libcrypto, low level", "Sha1Libcrypto/8192", "rate", 0.97),
    ("digest", "SHA-1, 1 MiB", "Sha1/1048576", "libcrypto, low level", "Sha1Libcrypto/1048576", "rate", 0.97),
    ("digest", "SHA-1, 1000 B", "Sha1/1000", "libcrypto, low level", "Sha1Libcrypto/1000", "rate", 1.0),
    ("digest", "SHA-1, 64 B", "Sha1/64", "libcrypto, low level", "Sha1Libcrypto/64", "rate", 1.0),
    ("no-sha", "SHA-1 without SHA extensions, 8 KiB", "Sha1Avx2/8192", "libcrypto, masked",
     "Sha1Libcrypto/8192", "rate", 0.7),
    ("no-vectors", "SHA-1 without vectors, 8 KiB", "Sha1Portable/8192", "libcrypto, masked",
     "Sha1Libcrypto/8192", "rate", 0.7),
    ("digest", "MD5, 1000 B", "Md5/1000", "libcrypto, low level", "Md5Libcrypto/1000", "rate", 1.0),
    ("digest", "MD5, 8 KiB", "Md5/8192", "libcrypto, low level", "Md5Libcrypto/8192", "rate", 1.0),
    ("digest", "MD5, 1 MiB", "Md5/1048576", "libcrypto, low level", "Md5Libcrypto/1048576", "rate", 1.0),
    ("trace", "trace call, disabled", "Trace/Disabled", "bare filter", "BareFilter", "time", 1.1),
    ("trace", "trace line, to a callback", "Trace/Line", "spdlog", "Spdlog/Line", "time", 0.3),
    ("trace", "trace line, to a callback", "Trace/Line", "its clocks and snprintf alone", "Least", "time", None),
    ("format", "Format, 106-byte error line", "ErrorLine/Corvo", "snprintf to the stack",
     "ErrorLine/Snprintf", "time", 1.1),
    ("format", "Format, 106-byte error line", "ErrorLine/CorvoNew", "fmt::sprintf", "ErrorLine/Fmt", "time", 1.1),
    ("format", "Format, 106-byte error line", "ErrorLine/Corvo", "snprintf and a copy", "ErrorLine/Copied",
     "time", None),
    ("format", "Format, 2000-byte text", "LongText/Corvo", "snprintf to the stack", "LongText/Snprintf",
     "time", 1.1),
    ("format", "Format, 2000-byte text", "LongText/CorvoNew", "fmt::sprintf", "LongText/Fmt", "time", 1.1),
    ("format", "Format, 2000-byte text", "LongText/Corvo", "snprintf and a copy", "LongText/Copied", "time", None),
    ("settings", "settings: load of 200 keys", "LoadCorvo", "inih", "LoadInih", "time", 0.7),
    ("settings", "settings: get", "GetCorvo", "bare stat", "GetStat", "time", 1.1),
    ("settings", "settings: get", "GetCorvo", "lock, stat, search and copies", "GetLeast", "time", None),
    ("settings", "settings: set", "SetCorvo", "SimpleIni save", "SetSimpleIni", "time", 0.75),
    ("lines", "text-mode lines, 10 MB", "TextModeLines", "POSIX getline", "GetLine", "rate", 1.0),
    ("lock", "lock and unlock, uncontended", "CriticalSectionLock", "recursive mutex, owner test, stamp",
     "RecursiveMutex", "time", 1.05),
    ("lock", "lock and unlock, uncontended", "CriticalSectionLock", "the same, keeping file and line",
     "RecursiveMutexAt", "time", None),
]

SEAL_SIZES = [(7_200_000, 2, 25), (72_000_000, 1, 10), (500_000_000, 1, 3)]  # audio, files, runs
TREE = (7_200_000, 60)  # audio of a file, files


class Row:
    """One line of the table for one target."""

    def __init__(self, subject, peer, kind, target, ours, theirs, unit):
        self.key = (subject, peer)
        self.kind = kind
        self.target = target
        self.ours = ours
        self.theirs = theirs
        self.unit = unit

    def ratio(self):
        return self.theirs / self.ours if self.kind == "rate" else self.ours / self.theirs

    def is_met(self):
        if self.target is None:
            return True
        shown = round(self.ratio(), 2)  # what is behind is chance
        return shown >= self.target if self.kind == "rate" else shown <= self.target

    def target_text(self):
        if self.target is None:
            return "the least"
        return f"{'≥' if self.kind == 'rate' else '≤'} {self.target:g}"

    def text(self):
        mark = "" if self.is_met() else " ✗"
        return f"{figure(self.ours, self.unit)} / {figure(self.theirs, self.unit)} = **{self.ratio():.2f}**{mark}"


def figure(value, unit):
    if unit == "pauses":
        return f"{value:.1f}"
    for limit, name, scale in ((1e-6, "ns", 1e9), (1e-3, "µs", 1e6), (1, "ms", 1e3)):
        if value < limit:
            return f"{value * scale:.3g} {name}"
    return f"{value:.3g} s"


def micro_times(folder, program, environment=None):
    """The least seconds of each benchmark of a program, of several runs: where the memory of each
    lies is another matter of luck."""
    command = [f"{folder}/bench/{program}_bench", "--benchmark_repetitions=6", "--benchmark_min_time=0.04",
               "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"]
    scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    times = {}
    for _ in range(3):
        out = subprocess.run(command, check=True, capture_output=True, text=True,
                             env={**os.environ, **(environment or {})}).stdout
        for entry in json.loads(out)["benchmarks"]:
            if entry["run_type"] == "iteration":
                seconds = entry["cpu_time"] * scale[entry["time_unit"]]
                name = entry["run_name"]
                times[name] = min(seconds, times.get(name, seconds))
    return times


def micro_rows(folder):
    times = {}
    for program in dict.fromkeys(row[0] for row in MICRO):
        if program in MASKS:
            times[program] = micro_times(folder, "digest", {"OPENSSL_ia32cap": MASKS[program]})
        else:
            times[program] = micro_times(folder, program)
    for program, subject, name, peer, peer_name, kind, target in MICRO:
        yield Row(subject, peer, kind, target, times[program][name], times[program][peer_name], "")


def size_text(size):
    return f"{size / 1e6:g} MB"


def seal_rows(folder, room):
    """Sealing and verifying beside the bare system calls; the two take turns."""
    programs = {"ours": f"{folder}/bench/seal_host", "floor": f"{folder}/bench/seal_floor"}
    for size, count, runs in SEAL_SIZES:
        for operation in ("seal", "verify"):
            times = {name: [] for name in programs}
            for _ in range(runs):
                for name, program in programs.items():
                    files = room.copies(size, count)
                    if operation == "verify":
                        room.seal_times(programs["floor"], "seal", files)
                    times[name] += room.seal_times(program, operation, files)
            processor = {name: min(t[0] for t in times[name]) / 1e6 for name in times}
            pauses = {name: statistics.mean(t[1] for t in times[name]) for name in times}
            subject = f"{operation}, {size_text(size)}, "
            yield Row(subject + "processor", "seal_floor", "time", 1.05, processor["ours"], processor["floor"], "")
            yield Row(subject + "pauses", "seal_floor", "time", 1.05, pauses["ours"], pauses["floor"], "pauses")


def tree_rows(folder, room):
    size, count = TREE
    tree = room.tree(size, count)
    files = sorted(tree.iterdir())
    corvo = [f"{folder}/tools/corvo/corvo", "--home", room.home, "verify", "--quiet"]
    commands = {"ours": [*corvo, "--jobs", "1", tree], "openssl": ["openssl", "dgst", "-sha1", *files],
                "sha1sum": ["sha1sum", *files]}
    processor = least(7, commands, "processor")
    subject = f"corvo verify of {count} recordings, {size_text(size * count)}, one job"
    yield Row(subject, "openssl dgst -sha1", "time", 1.0, processor["ours"], processor["openssl"], "")
    yield Row(subject, "sha1sum", "time", 0.6, processor["ours"], processor["sha1sum"], "")
    wall = least(7, {jobs: [*corvo, "--jobs", jobs, tree] for jobs in ("1", "2")}, "wall")
    yield Row("corvo verify, two jobs, wall time", "one job", "time", 0.55, wall["2"], wall["1"], "")


def memory_text(folder, room):
    host = f"{folder}/bench/seal_host"
    size = SEAL_SIZES[-1][0]
    rest = peak_memory([host, "seal", room.home])
    sealing = peak_memory([host, "seal", room.home, *room.copies(size, 1)])
    return f"{rest / 1024:.1f} MiB at rest, {sealing / 1024:.1f} MiB while {size_text(size)} are sealed"


def measure(folder):
    with Room(f"{folder}/tools/corvo/corvo") as room:
        rows = [*micro_rows(folder), *seal_rows(folder, room), *tree_rows(folder, room)]
        return rows, memory_text(folder, room)


def processor_name():
    with open("/proc/cpuinfo", encoding="ascii") as lines:
        names = [line.split(":", 1)[1].strip() for line in lines if line.startswith("model name")]
    return f"{len(names)} × {names[0]}"


def print_table(results):
    print(f"{time.strftime('%Y-%m-%d')}, {processor_name()}, Linux {platform.release()}\n")
    print("| Subject | Peer | " + " | ".join(results) + " | Target |")
    print("|---|---|" + "---|" * (len(results) + 1))
    tables = [{row.key: row for row in rows} for rows, _ in results.values()]
    for key, row in tables[0].items():
        print(f"| {key[0]} | {key[1]} | " + " | ".join(table[key].text() for table in tables) +
              f" | {row.target_text()} |")
    print("| memory of a host | | " + " | ".join(text for _, text in results.values()) + " | constant |")


def main():
    folders = dict(argument.split("=", 1) for argument in sys.argv[1:])
    if not folders:
        sys.exit(__doc__)
    print_table({name: measure(folder) for name, folder in folders.items()})


if __name__ == "__main__":
    main()
