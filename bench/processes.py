"""Running commands and reading what they cost."""

import os
import statistics
import sys
import time
from dataclasses import dataclass


@dataclass
class Cost:
    """What one run took: CPU time (user and system) and wall time, in seconds."""

    cpu: float
    wall: float


def run(argv, folder=None, may_fail=False):
    """Runs a command once in a folder, with its standard streams thrown away."""
    actions = [
        (os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0),
        (os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0),
    ]
    if may_fail:
        actions.append((os.POSIX_SPAWN_DUP2, 1, 2))
    if folder is not None:
        os.chdir(folder)
    started = time.perf_counter()
    pid = os.posix_spawn(argv[0], argv, os.environ, file_actions=actions)
    _, status, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - started
    if os.waitstatus_to_exitcode(status) != 0 and not may_fail:
        sys.exit(f"{' '.join(argv)[:200]}: ended with status {os.waitstatus_to_exitcode(status)}")
    return Cost(usage.ru_utime + usage.ru_stime, wall)


@dataclass
class Comparison:
    """Medians of the costs of ours and of the peer, and the ratios pair by pair."""

    own: float
    peer: float
    ratios: list

    @property
    def ratio(self):
        return statistics.median(self.ratios)

    @property
    def spread(self):
        """The middle half of the ratios."""
        if len(self.ratios) < 3:
            return min(self.ratios), max(self.ratios)
        low, _, high = statistics.quantiles(self.ratios, n=4, method="inclusive")
        return low, high


def compare(pairs, ours, theirs):
    """Calls two functions that return a cost in seconds in turn, ours first, as often as there are to be pairs."""
    own, peer = [], []
    for _ in range(pairs):
        own.append(ours())
        peer.append(theirs())
    return Comparison(statistics.median(own), statistics.median(peer), [a / b for a, b in zip(own, peer)])
