# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""Measures what the library costs, beside what others cost, and writes the tables and the chart of
docs/performance.md afresh."""

import json
import os
import platform
import re
import subprocess
import sys
from pathlib import Path

import counts
from chart import draw

PAGE = Path("docs/performance.md")
CHART = Path("docs/performance.svg")
SHAPES = ["small", "large", "fleet", "mixed_10", "mixed_100", "mixed_1000", "mixed_20000"]
SHAPES += ["unsorted_1000"]
CLIENTS = ["library", "QtDBus by hand", "GDBus", "sdbus-c++"]
REPETITIONS = 9


def table(header, rows):
    lines = [header, ["---"] + ["--:"] * (len(header) - 1)] + rows
    return "\n".join("| " + " | ".join(map(str, line)) + " |" for line in lines)


def run_benchmarks():
    """What Google Benchmark has measured: the medians of some repetitions, by name."""
    command = [counts.BUILD / "benchmarks", "--benchmark_format=json", "--benchmark_min_time=0.05"]
    command += [f"--benchmark_repetitions={REPETITIONS}", "--benchmark_report_aggregates_only=true"]
    command += ["--benchmark_enable_random_interleaving=true"]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout
    results = {}
    for result in json.loads(output)["benchmarks"]:
        if result["aggregate_name"] in ("median", "BigO", "RMS"):
            results[result["run_name"], result["aggregate_name"]] = result
    return results


def median(results, what, client, shape):
    """The median of what starts so, or None if that client was left out."""
    pattern = re.compile(re.escape(f"{what}/{client}/{shape}") + r"(/(iter|process).*)?$")
    for (name, aggregate), result in results.items():
        if aggregate == "median" and pattern.match(name):
            return result
    return None


def machine():
    cpu = re.search(r"^model name\s*: (.*)$", Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    memory = re.search(r"^MemTotal: *(\d+)", Path("/proc/meminfo").read_text(), re.MULTILINE)
    system = re.search(r'^PRETTY_NAME="(.*)"$', Path("/etc/os-release").read_text(), re.MULTILINE)
    version = ["g++", "-dumpfullversion"]
    compiler = subprocess.run(version, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()
    return (
        f"{cpu[1] if cpu else platform.machine()}, {os.cpu_count()} cores, "
        f"{round(int(memory[1]) / 1024 / 1024)} GiB of memory; {system[1]}; gcc {compiler}, Release; "
        f"{REPETITIONS} repetitions, of which each time given is the median."
    )


def ratio(ours, others, excluded=None):
    ours, others = (sum(cost.values()) - cost[excluded] for cost in (ours, others))
    return ours / others


def wire_table(instructions, action):
    rows = []
    for shape in SHAPES:
        ours = instructions[f"instructions.{action}.{shape}"]
        others = instructions[f"instructions.{action}_by_hand.{shape}"]
        row = [shape, f"{sum(ours.values()):,.0f}", f"{sum(others.values()):,.0f}"]
        rows.append(row + [f"{ratio(ours, others):.3f}", f"{ratio(ours, others, 'libc'):.3f}"])
    return table([action, "library", "by hand", "ratio", "but for the C library"], rows)


def growth_table(instructions):
    rows = []
    for action, kind in (("decode", "mixed"), ("decode", "unsorted"), ("encode", "mixed")):
        each = [
            sum(instructions[f"instructions.{action}.{kind}_{count}"].values()) / count
            for count in (1000, 100000)
        ]
        name = f"{action}, {'sorted' if kind == 'mixed' else 'unsorted'} keys"
        rows.append([name, f"{each[0]:,.0f}", f"{each[1]:,.0f}", f"{each[1] / each[0]:.2f}"])
    return table(["instructions an entry", "of 1000", "of 100,000", "ratio"], rows)


def lookup_table(instructions, resources):
    rows = []
    names = [f"index_of_{count}" for count in (10, 1000, 100000)]
    names += [f"depth_{depth}" for depth in range(1, 7)]
    for name in names:
        ours = sum(instructions[f"instructions.lookup.{name}"].values())
        plain = sum(instructions[f"instructions.lookup_plainly.{name}"].values())
        allocations = resources.get(f"allocations.lookup.{name}")
        rows.append(
            [
                name.replace("_", " "),
                f"{ours:,.0f}",
                f"{plain:,.0f}",
                f"{ours / plain:.3f}",
                "" if allocations is None else f"{allocations:.0f}",
            ]
        )
    header = ["look up", "library", "step by step", "ratio", "allocations of the library"]
    return table(header, rows)


def share_table(instructions):
    actions = ["decode.large", "decode.fleet", "encode.large", "encode.fleet"]
    shares = [instructions[f"instructions.{action}"] for action in actions]
    names = ["libTarnvelManagedConfiguration", "libQt5DBus", "libdbus-1", "libQt5Core", "libc"]
    rows = []
    for name in names:
        rows.append([name] + [f"{share[name] / sum(share.values()):.0%}" for share in shares])
    return table(["share of the instructions"] + actions, rows)


def request_table(resources):
    names = {
        "messages.request": "messages: a read request",
        "messages.change_and_notification": "messages: a change, its announcement and the re-read",
        "messages.instance_and_request": "messages: `instance()` and a read request",
        "allocations.request": "allocations: a read request of 10 values",
        "allocations.instance_and_request": "allocations: `instance()` and a read request",
        "bytes.notification": "bytes kept: a notification",
    }
    return table(
        ["what", "count"], [[text, f"{resources[name]:.0f}"] for name, text in names.items()]
    )


def memory_table(resources):
    rows = []
    for shape in ("small", "large", "fleet", "mixed_1000"):
        ours, map_ = (resources[f"bytes.{kind}.{shape}"] for kind in ("entry", "entry_by_hand"))
        rows.append([shape, f"{ours:.0f}", f"{map_:.0f}", f"{ours / map_:.2f}"])
    return table(["bytes an entry", "Configuration", "QVariantMap", "ratio"], rows)


def round_trip_table(results):
    rows = []
    for client in CLIENTS:
        row = [client]
        for shape in ("small", "large", "fleet", "mixed_20000"):
            result = median(results, "round trip", client, shape)
            row.append(f"{result['cpu_time'] / 1e6:.2f}" if result else "not installed")
        first = median(results, "first configuration", client, "small")
        row.append(f"{first['real_time'] / 1e6:.1f}" if first else "not installed")
        row.append(f"{first['processor_ms']:.1f}" if first else "not installed")
        rows.append(row)
    header = ["milliseconds", "small", "large", "fleet", "mixed_20000", "first: elapsed"]
    return table(header + ["first: processor"], rows)


def fit_table(results):
    rows = []
    for name, aggregate in sorted(results):
        if aggregate == "BigO":
            what, client, kind = name.split("/")
            growth = results[name, "BigO"]["big_o"].replace("(1)", "1")
            error = results[name, "RMS"]["rms"]
            rows.append([f"{what}, {client}, {kind}", f"O({growth})", f"{error:.0%}"])
    return table(["times", "grow as", "error of the fit"], rows)


def write(tables):
    text = PAGE.read_text()
    for name, content in tables.items():
        pattern = re.compile(rf"(<!-- {name} -->\n).*?(<!-- end -->)", re.DOTALL)
        text, replaced = pattern.subn(lambda match: f"{match[1]}{content}\n{match[2]}", text)
        if replaced != 1:
            sys.exit(f"{PAGE} has no place for {name}")
    PAGE.write_text(text)


def main():
    resources = counts.resources()
    instructions = counts.instructions()
    results = run_benchmarks()
    write(
        {
            "machine": machine(),
            "decode": wire_table(instructions, "decode"),
            "encode": wire_table(instructions, "encode"),
            "growth": growth_table(instructions),
            "lookup": lookup_table(instructions, resources),
            "shares": share_table(instructions),
            "requests": request_table(resources),
            "memory": memory_table(resources),
            "round trips": round_trip_table(results),
            "fits": fit_table(results),
        }
    )
    bars = []
    for action in ("decode", "encode"):
        for shape in SHAPES:
            ours = instructions[f"instructions.{action}.{shape}"]
            others = instructions[f"instructions.{action}_by_hand.{shape}"]
            bars.append((f"{action} {shape}", ratio(ours, others)))
    CHART.write_text(draw("Instructions, as a part of those by hand", bars))


main()
