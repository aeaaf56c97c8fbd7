#!/usr/bin/env python3
"""Measures the console and prints the tables of docs/performance.md.

    bench/report.py [--build DIR] [--tiny] [ratios] [growth] [memory] [instructions]

Needs a release build (./run --help makes one) and, for the tables that use them, the tools that the console is compared
with, GNU time and valgrind; what is missing is skipped aloud. Ours and a peer run in turn, A B A B; each figure is the
median over the pairs, so that a machine whose speed drifts slows both sides alike. Exit status 0 when every ratio that
was measured is within its goal, 1 otherwise.
"""

import argparse
import os
import sys
import tempfile
import time

import growth
import instructions
import memory
import side_by_side

SECTIONS = {
    "ratios": ("Beside other tools", side_by_side),
    "growth": ("Growth with the count", growth),
    "memory": ("Peak memory", memory),
    "instructions": ("Instructions", instructions),
}


def machine():
    """What a figure is worth without: when and where it was measured."""
    with open("/proc/cpuinfo", encoding="ascii") as file:
        models = [line.split(":", 1)[1].strip() for line in file if line.startswith("model name")]
    system = os.uname()
    return (f"{time.strftime('%Y-%m-%d %H:%M', time.gmtime())} UTC, {len(models)} processors {models[0]}, "
            f"{system.sysname} {system.release}, load {os.getloadavg()[0]:.1f}")


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--build", default=os.path.join(root, "build", "release"), help="folder of a release build")
    parser.add_argument("--tiny", action="store_true", help="one run of next to nothing each, to try the script out")
    parser.add_argument("sections", nargs="*", metavar="|".join(SECTIONS), help="what to measure (default: all)")
    options = parser.parse_args()
    wanted = options.sections or SECTIONS
    unknown = set(wanted) - set(SECTIONS)
    if unknown:
        parser.error(f"no such section: {', '.join(sorted(unknown))}")

    console = os.path.join(os.path.abspath(options.build), "tovira_util_tool")
    if not os.access(console, os.X_OK):
        sys.exit(f"{console}: not built")
    print(machine())
    met = True
    with tempfile.TemporaryDirectory() as folder:
        for name in SECTIONS:
            if name not in wanted:
                continue
            title, section = SECTIONS[name]
            print(f"\n### {title}\n")
            met = section.print_table(console, folder, options.tiny) and met
        os.chdir(root)
    return 0 if met or options.tiny else 1


if __name__ == "__main__":
    sys.exit(main())
