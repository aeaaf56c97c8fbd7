#!/usr/bin/env python3
"""Runs the console and what an engineer would use instead in turn, and prints the ratio of their costs.

    bench/side_by_side.py [--build DIR] [--pairs N]

Needs a release build (./run --help makes one), xxd, bash and a static busybox. Work is measured in CPU time (user and
system), start-up in wall time; each figure is the median over pairs of runs, so that a machine whose speed drifts slows
both sides of a pair alike. Exit status 0 when every ratio is within its goal, 1 otherwise.
"""

import argparse
import os
import shutil
import statistics
import sys
import tempfile
import time
from dataclasses import dataclass

DUMP_BYTES = 0x1000000
SCRIPT_LINES = 500_000
SCRIPT_LINE = "rwl 00001000 deadbeef"
STARTS_PER_PAIR = 40


@dataclass
class Cost:
    cpu: float
    wall: float


def run(argv):
    """Runs a command once with its output thrown away."""
    actions = [(os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)]
    started = time.perf_counter()
    pid = os.posix_spawn(argv[0], argv, os.environ, file_actions=actions)
    _, status, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - started
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{' '.join(argv)}: ended with status {status}")
    return Cost(usage.ru_utime + usage.ru_stime, wall)


def run_often(argv, times):
    """The middle cost of many runs of a short command."""
    costs = [run(argv) for _ in range(times)]
    return Cost(statistics.median(c.cpu for c in costs), statistics.median(c.wall for c in costs))


def need(program):
    path = shutil.which(program)
    if path is None:
        sys.exit(f"{program} is not installed")
    return path


def compare(title, figure, goal, pairs, ours, theirs):
    ratios, own, peer = [], [], []
    for _ in range(pairs):
        a, b = getattr(ours(), figure), getattr(theirs(), figure)
        own.append(a)
        peer.append(b)
        ratios.append(a / b)
    ratio = statistics.median(ratios)
    print(
        f"{title:<44} {figure:>4}  ours {statistics.median(own) * 1e3:9.2f} ms  peer {statistics.median(peer) * 1e3:9.2f} ms"
        f"  ratio {ratio:6.3f} ({min(ratios):.3f} to {max(ratios):.3f})  goal {goal}"
    )
    return ratio <= goal


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--build", default=os.path.join(root, "build", "release"), help="folder of a release build")
    parser.add_argument("--pairs", type=int, default=7, help="pairs of runs per figure (default 7)")
    options = parser.parse_args()

    console = os.path.join(options.build, "tovira_util_tool")
    xxd, busybox, bash = need("xxd"), need("busybox"), need("bash")

    with tempfile.TemporaryDirectory() as folder:
        region = os.path.join(folder, "region")
        with open(region, "wb") as file:
            file.truncate(DUMP_BYTES)
        script = os.path.join(folder, "script")
        with open(script, "w", encoding="ascii") as file:
            file.write(f"{SCRIPT_LINE}\n" * SCRIPT_LINES)
        loop = f'for ((i = 0; i < {SCRIPT_LINES}; i++)); do echo "{SCRIPT_LINE}:"; done'

        met = [
            compare("rrbs 0 1000000 : xxd -g1", "cpu", 0.5, options.pairs,
                    lambda: run([console, "--cmd", f"rrbs 0 {DUMP_BYTES:x}"]), lambda: run([xxd, "-g1", region])),
            compare("--cmd \"rrl 0\" : busybox true", "wall", 1.5, options.pairs,
                    lambda: run_often([console, "--cmd", "rrl 0"], STARTS_PER_PAIR),
                    lambda: run_often([busybox, "true"], STARTS_PER_PAIR)),
            compare(f"load of {SCRIPT_LINES} writes : bash loop", "cpu", 0.1, options.pairs,
                    lambda: run([console, "--cmd", f"load {script}"]), lambda: run([bash, "-c", loop])),
        ]
    return 0 if all(met) else 1


if __name__ == "__main__":
    sys.exit(main())
