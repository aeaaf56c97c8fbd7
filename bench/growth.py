"""How the cost of a command grows with its count: the exponent of a power law, fitted over powers of two."""

import math
import os
import statistics

from processes import run

FIRST_POWER = 10
RUNS = 3
# So much is done at each count, in as many commands as it takes: a short run is measured as exactly as a long one.
LEAST_WORK_POWER = 20


def exponent(points):
    """The slope of the line that fits best through the logarithms."""
    slope, _ = statistics.linear_regression([math.log(count) for count, _ in points],
                                            [math.log(cost) for _, cost in points])
    return slope


def curves(folder, tiny):
    """Each with the power of two that its counts end at, and a function from a count and a place to a command."""
    last = 12 if tiny else 26
    script = os.path.join(folder, "lines")

    def load(count, _):
        with open(script, "w", encoding="ascii") as file:
            file.write("rwl 00001000 deadbeef\n" * count)
        return f"load {script}"

    yield "`rrbs 0 n`", min(last, 24), lambda count, _: f"rrbs 0 {count:x}"
    yield "`rrls 0 n`", min(last, 22), lambda count, _: f"rrls 0 {count:x}"
    yield "`vrbs 0 n`", last, lambda count, _: f"vrbs 0 {count:x}"
    yield "`vrls 0 n`", last, lambda count, _: f"vrls 0 {count:x}"
    yield "`vwls 0 n v`", last, lambda count, place: f"vwls {place * count * 4:x} {count:x} deadbeef"
    yield "`load` of n writes", min(last, 22), load


def cost_of_one(console, folder, command, count, runs):
    """The CPU time of one command of that count."""
    times = max(1, (1 << LEAST_WORK_POWER) // count)
    script = os.path.join(folder, "growth")
    lines = [command(count, place) for place in range(times)]
    # A file's first piece decides how much of every piece is run.
    width = max(len(line) for line in lines)
    with open(script, "w", encoding="ascii") as file:
        file.write("".join(f"{line.ljust(width)}\n" for line in lines))
    return statistics.median(run([console, "--cmd", f"load {script}"], folder).cpu for _ in range(runs)) / times


def print_table(console, folder, tiny):
    """Prints a Markdown table. True: there is no goal to miss."""
    print("| Command | Counts | Exponent | Per item at the smallest count | at the largest |")
    print("|---|---|---|---|---|")
    for name, last, command in curves(folder, tiny):
        points = [(1 << power, cost_of_one(console, folder, command, 1 << power, 1 if tiny else RUNS))
                  for power in range(FIRST_POWER, last + 1)]
        per_item = [cost / count * 1e9 for count, cost in points]
        print(f"| {name} | 2^{FIRST_POWER} to 2^{last} | {exponent(points):.3f} | {per_item[0]:.2f} ns "
              f"| {per_item[-1]:.2f} ns |", flush=True)
    return True
