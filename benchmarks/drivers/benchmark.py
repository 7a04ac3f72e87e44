# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""Measures the library and the alternatives to it, and rewrites the tables and the chart of
docs/performance.md; scripts/benchmark starts it."""

import json
import os
import platform
import re
import statistics
import subprocess
import sys
from pathlib import Path

import counts
from chart import draw

PAGE = Path("docs/performance.md")
CHART = Path("docs/performance.svg")
PAYLOADS = ["small", "large", "fleet", "mixed_10", "mixed_100", "mixed_1000", "mixed_20000"]
PAYLOADS += ["unsorted_1000"]
CLIENTS = ["library", "Qt D-Bus by hand", "GDBus", "sdbus-c++"]
REPETITIONS = 9


def table(header, rows):
    lines = [header, ["---"] + ["--:"] * (len(header) - 1)] + rows
    return "\n".join("| " + " | ".join(map(str, line)) + " |" for line in lines)


def run_benchmarks():
    """The results of Google Benchmark by name and aggregate, of some repetitions."""
    command = [counts.BUILD / "benchmarks", "--benchmark_format=json", "--benchmark_min_time=0.05"]
    command += [f"--benchmark_repetitions={REPETITIONS}", "--benchmark_report_aggregates_only=true"]
    command += ["--benchmark_enable_random_interleaving=true"]
    output = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout
    results = {}
    for result in json.loads(output)["benchmarks"]:
        if result["aggregate_name"] in ("median", "BigO", "RMS"):
            results[result["run_name"], result["aggregate_name"]] = result
    return results


def median(results, what, client, payload):
    """The median of this benchmark, or None if the client is not installed."""
    pattern = re.compile(re.escape(f"{what}/{client}/{payload}") + r"(/(iter|process).*)?$")
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
        f"each time is the median of {REPETITIONS} repetitions."
    )


def ratio(ours, others, excluded=None):
    ours, others = (sum(cost.values()) - cost[excluded] for cost in (ours, others))
    return ours / others


def wire_table(instructions, action):
    rows = []
    for payload in PAYLOADS:
        ours = instructions[f"instructions.{action}.{payload}"]
        others = instructions[f"instructions.{action}_by_hand.{payload}"]
        row = [payload, f"{sum(ours.values()):,.0f}", f"{sum(others.values()):,.0f}"]
        rows.append(row + [f"{ratio(ours, others):.3f}", f"{ratio(ours, others, 'libc'):.3f}"])
    return table([action, "library", "by hand", "ratio", "without the C library"], rows)


def growth_table(instructions):
    rows = []
    for action, kind in (("decode", "mixed"), ("decode", "unsorted"), ("encode", "mixed")):
        each = [
            sum(instructions[f"instructions.{action}.{kind}_{count}"].values()) / count
            for count in (1000, 100000)
        ]
        name = f"{action}, {'sorted' if kind == 'mixed' else 'unsorted'} keys"
        rows.append([name, f"{each[0]:,.0f}", f"{each[1]:,.0f}", f"{each[1] / each[0]:.2f}"])
    return table(["instructions per entry", "of 1000", "of 100,000", "ratio"], rows)


def lookup_table(instructions, resources):
    rows = []
    names = [f"index_of_{count}" for count in (10, 1000, 100000)]
    names += [f"depth_{depth}" for depth in range(1, 7)]
    for name in names:
        ours = sum(instructions[f"instructions.lookup.{name}"].values())
        plain = sum(instructions[f"instructions.lookup_step_by_step.{name}"].values())
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
    header = ["lookup", "library", "step by step", "ratio", "allocations by the library"]
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
        "messages.change_and_announcement": "messages: a change, its announcement and the re-read",
        "messages.instance_and_request": "messages: `instance()` and a read request",
        "allocations.request": "allocations: a read request of 10 values",
        "allocations.instance_and_request": "allocations: `instance()` and a read request",
        "bytes.announcement": "bytes kept per announcement",
    }
    return table(
        ["what", "count"], [[text, f"{resources[name]:.0f}"] for name, text in names.items()]
    )


def memory_table(resources):
    rows = []
    for payload in ("small", "large", "fleet", "mixed_1000"):
        ours, map_ = (resources[f"bytes.{kind}.{payload}"] for kind in ("entry", "entry_by_hand"))
        rows.append([payload, f"{ours:.0f}", f"{map_:.0f}", f"{ours / map_:.2f}"])
    return table(["bytes per entry", "Configuration", "QVariantMap", "ratio"], rows)


def round_trip_table(results):
    rows = []
    for client in CLIENTS:
        row = [client]
        for payload in ("small", "large", "fleet", "mixed_20000"):
            result = median(results, "round trip", client, payload)
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
    return table(["time of", "growth", "error of the fit"], rows)


def sandbox_table(instructions):
    names = {
        "sandbox.read_5000_applications": "reading 5,000 applications of 5 settings",
        "sandbox.edit_100000": "an edit of 100,000 settings: reading, comparing, announcing",
        "sandbox.set_in_10": "a change of one of 10 settings",
        "sandbox.set_in_100000": "a change of one of 100,000 settings",
    }
    times = {name: [] for name in names}
    for _ in range(REPETITIONS):
        program = counts.BUILD / "count_sandbox_instructions"
        output = subprocess.run(
            [program], check=True, text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL
        ).stdout
        for name, time in (line.split() for line in output.splitlines()):
            times.setdefault(name, []).append(float(time))
    rows = []
    for name, text in names.items():
        count = sum(instructions[f"instructions.{name}"].values())
        rows.append([text, f"{count:,.0f}", f"{statistics.median(times[name]):.2f}"])
    return table(["sandbox", "instructions", "milliseconds"], rows)


def qt_table():
    """The budgets for Qt 5 beside those for Qt 6."""
    stored = json.loads(Path("benchmarks/drivers/budgets.json").read_text())
    rows = []
    for name, number in stored["budgets"].items():
        other = stored["budgets for Qt 6"][name]
        if name.startswith(("instructions.", "allocations.")):
            rows.append([name, f"{number:,.0f}", f"{other:,.0f}", f"{other / number:.2f}"])
    return table(["budget", "Qt 5", "Qt 6", "ratio"], rows)


def write(tables):
    text = PAGE.read_text()
    for name, content in tables.items():
        pattern = re.compile(rf"(<!-- {name} -->\n).*?(<!-- end -->)", re.DOTALL)
        text, replaced = pattern.subn(lambda match: f"{match[1]}{content}\n{match[2]}", text)
        if replaced != 1:
            sys.exit(f"{PAGE} must mark the position of {name} once")
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
            "qts": qt_table(),
            "sandbox": sandbox_table(instructions),
            "requests": request_table(resources),
            "memory": memory_table(resources),
            "round trips": round_trip_table(results),
            "fits": fit_table(results),
        }
    )
    bars = []
    for action in ("decode", "encode"):
        for payload in PAYLOADS:
            ours = instructions[f"instructions.{action}.{payload}"]
            others = instructions[f"instructions.{action}_by_hand.{payload}"]
            bars.append((f"{action} {payload}", ratio(ours, others)))
    title = "Instructions of the library relative to reading and writing by hand"
    CHART.write_text(draw(title, "by hand: 1.00", bars))


main()
