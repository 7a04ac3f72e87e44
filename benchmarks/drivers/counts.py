# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""Measures the counts, which do not depend on how busy the machine is."""

import os
import re
import statistics
import subprocess
import tempfile
from collections import Counter
from pathlib import Path

BUILD = Path("build/benchmark/benchmarks")
BUILD_FOR_QT6 = Path("build/benchmark-qt6/benchmarks")
DESCRIPTION = re.compile(r"^desc: Trigger: Client Request: (\S+)/(\d+)$", re.MULTILINE)
PROGRAMS = (
    "count_instructions",
    "count_getter_instructions",
    "count_sandbox_instructions",
)
OBJECT = re.compile(r"(c?)ob=\((\d+)\)(?: (.*))?$")
COST = re.compile(r"[\d+*-]\S* (\d+)$")


def resources(build=BUILD, runs=5):
    """The allocations, messages and bytes, by name: the median of some runs."""
    numbers = {}
    for _ in range(runs):
        output = subprocess.run(
            [build / "count_resources"], check=True, stdout=subprocess.PIPE, text=True
        ).stdout
        for line in output.splitlines():
            name, number = line.split()
            numbers.setdefault(name, []).append(float(number))
    return {name: statistics.median(values) for name, values in numbers.items()}


def read_dump(text):
    """The instructions spent in each shared object itself."""
    names, cost, current, is_callee = {}, Counter(), None, False
    for line in text.splitlines():
        if match := OBJECT.match(line):
            callee, number, name = match.groups()
            if name:
                names[number] = Path(name).name.split(".so")[0]
            if not callee:
                current = number
        elif line.startswith("calls="):
            # The next line is the cost of the callee, which is counted in its own shared object.
            is_callee = True
        elif match := COST.match(line):
            if not is_callee:
                cost[names.get(current, "?")] += int(match[1])
            is_callee = False
    return cost


def instructions(build=BUILD):
    """The instructions of each action, by name: a Counter over the shared objects."""
    counts = {}
    # The same hash seeds and the same binding of symbols in every run.
    environment = dict(os.environ, LD_BIND_NOW="1", QT_HASH_SEED="0")
    with tempfile.TemporaryDirectory() as directory:
        command = ["valgrind", "--quiet", "--tool=callgrind", "--instr-atstart=no"]
        for program in PROGRAMS:
            output = f"--callgrind-out-file={directory}/{program}"
            subprocess.run(
                command + [output, build / program],
                check=True,
                env=environment,
                stderr=subprocess.DEVNULL,
            )
        for dump in Path(directory).iterdir():
            text = dump.read_text()
            if match := DESCRIPTION.search(text):
                cost = read_dump(text)
                times = int(match[2])
                counts[f"instructions.{match[1]}"] = Counter(
                    {name: number / times for name, number in cost.items()}
                )
    if not counts:
        raise SystemExit("callgrind has written no counts")
    return counts
