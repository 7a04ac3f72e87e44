# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""Counts what the library costs, and fails if that is more than budgets.json allows:
scripts/budgets [--update]. With --update, what it costs now is what it may cost from then on."""

import json
import sys
from pathlib import Path

import counts

FILE = Path("benchmarks/drivers/budgets.json")
TOLERANCE = 0.03
# What others cost is measured for comparison, and is not ours to keep.
REFERENCES = ("_by_hand.", "_plainly.")


def is_ours(name):
    return not any(part in name for part in REFERENCES)


def measure():
    """What there are budgets for, and the instructions by shared object."""
    instructions = counts.instructions()
    measured = {name: number for name, number in counts.resources().items() if is_ours(name)}
    for name, cost in instructions.items():
        if is_ours(name):
            # What the C library spends on a block depends on how the heap lies; the number of
            # blocks has budgets of its own.
            measured[name] = sum(cost.values()) - cost["libc"]
    return measured, instructions


def exceeded_budgets(budgets, measured):
    """One line for each budget that is exceeded, or whose measurement has come or gone."""
    for name in sorted(measured.keys() ^ budgets.keys()):
        yield f"{name}: {'has no budget' if name in measured else 'is not measured'}"
    for name in sorted(measured.keys() & budgets.keys()):
        excess = measured[name] / budgets[name] - 1
        if excess > TOLERANCE:
            yield f"{name}: {measured[name]:.10g}, {excess:.1%} over {budgets[name]:.10g}"


def exceeded_ratios(ratios, instructions):
    """One line for each comparison with others that has come out worse than it may."""
    for entry in ratios:
        # Large results can differ by more than their bound for how the heap lies.
        left_out = entry.get("but for")
        of, to = (
            sum(number for name, number in instructions[entry[key]].items() if name != left_out)
            for key in ("of", "to")
        )
        ratio = of / to
        if ratio > entry["at most"]:
            yield f"{entry['of']} is {ratio:.3f} times {entry['to']}, over {entry['at most']}"


def main():
    if sys.argv[1:] not in ([], ["--update"]):
        sys.exit(__doc__)
    kept = json.loads(FILE.read_text())
    measured, instructions = measure()
    if sys.argv[1:]:
        kept["budgets"] = {name: round(number, 1) for name, number in sorted(measured.items())}
        FILE.write_text(json.dumps(kept, indent=4) + "\n")
    faults = list(exceeded_budgets(kept["budgets"], measured))
    faults += exceeded_ratios(kept["ratios"], instructions)
    print("\n".join(faults) or f"{len(kept['budgets'])} budgets kept")
    sys.exit(1 if faults else 0)


main()
