# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""Compares what the library costs with the budgets; scripts/budgets starts it."""

import json
import sys
from pathlib import Path

import counts

FILE = Path("benchmarks/drivers/budgets.json")
TOLERANCE = 0.03
# Measured for comparison only.
REFERENCES = ("_by_hand.", "_step_by_step.")


def has_budget(name):
    return not any(part in name for part in REFERENCES)


def measure(build):
    """The costs that have budgets, and all instructions by shared object."""
    instructions = counts.instructions(build)
    resources = counts.resources(build)
    measured = {name: number for name, number in resources.items() if has_budget(name)}
    for name, cost in instructions.items():
        if has_budget(name):
            # How much the C library spends on a block depends on the layout of the heap. The
            # number of blocks has budgets of its own.
            measured[name] = sum(cost.values()) - cost["libc"]
    return measured, instructions


def exceeded_budgets(budgets, measured):
    """One line for each exceeded budget, and for each cost or budget without the other."""
    for name in sorted(measured.keys() ^ budgets.keys()):
        yield f"{name}: {'has no budget' if name in measured else 'is not measured'}"
    for name in sorted(measured.keys() & budgets.keys()):
        excess = measured[name] / budgets[name] - 1
        if excess > TOLERANCE:
            yield f"{name}: {measured[name]:.10g}, {excess:.1%} over {budgets[name]:.10g}"


def exceeded_ratios(ratios, limit, instructions):
    """One line for each ratio of two costs that is over its limit."""
    for entry in ratios:
        left_out = entry.get("without")
        of, to = (
            sum(number for name, number in instructions[entry[key]].items() if name != left_out)
            for key in ("of", "to")
        )
        ratio = of / to
        at_most = entry.get(limit, entry["at most"])
        if ratio > at_most:
            yield f"{entry['of']} is {ratio:.3f} times {entry['to']}, over {at_most}"


def main():
    options = sys.argv[1:]
    budgets, limit, build = "budgets", "at most", counts.BUILD
    if options[:1] == ["--qt6"]:
        budgets, limit = "budgets for Qt 6", "at most for Qt 6"
        build = counts.BUILD_FOR_QT6
        options.pop(0)
    if options not in ([], ["--update"]):
        sys.exit("usage: scripts/budgets [--qt6] [--update]")
    stored = json.loads(FILE.read_text())
    measured, instructions = measure(build)
    if options:
        stored[budgets] = {name: round(number, 1) for name, number in sorted(measured.items())}
        FILE.write_text(json.dumps(stored, indent=4) + "\n")
    problems = list(exceeded_budgets(stored[budgets], measured))
    problems += exceeded_ratios(stored["ratios"], limit, instructions)
    print("\n".join(problems) or f"{len(stored[budgets])} budgets met")
    sys.exit(1 if problems else 0)


main()
