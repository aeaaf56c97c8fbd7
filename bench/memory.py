"""The most memory that a command holds."""

import os
import shutil
import subprocess
import sys

SIZES = (0x1000, 0x1000000)
COMMANDS = (
    ("`rrbs`, no file", "rrbs 0 {count:x}", 1),
    ("`rrbs`, file", "rrbs 0 {count:x} F", 1),
    ("`rrls`", "rrls 0 {count:x}", 4),
    ("`arqs`", "arqs 40000000 {count:x}", 8),
    ("`vrws`", "vrws 0 {count:x}", 2),
    ("`vrbs`, file", "vrbs 0 {count:x} F", 1),
    ("`vrls`", "vrls 0 {count:x}", 4),
    ("`vrls`, file", "vrls 0 {count:x} F", 4),
    ("`vwls`", "vwls 0 {count:x} 5", 4),
    ("`rwbs`", "rwbs 0 {count:x} 5", 1),
)


def peak_kib(time_tool, console, folder, command):
    """As GNU time tells it: the largest resident set of the command alone."""
    report = os.path.join(folder, "peak")
    subprocess.run([time_tool, "-f", "%M", "-o", report, console, "--cmd", command], cwd=folder, check=True,
                   stdout=subprocess.DEVNULL)
    with open(report, encoding="ascii") as file:
        return int(file.read())


def print_table(console, folder, tiny):
    """Prints a Markdown table. True: there is no goal to miss."""
    time_tool = shutil.which("time")
    if time_tool is None:
        print("skipped: GNU time is not installed", file=sys.stderr)
        return True
    sizes = SIZES[:1] if tiny else SIZES
    print(f"| Command | {' | '.join(f'Peak at {size // 1024} KiB' for size in sizes)} |")
    print(f"|---|{'---|' * len(sizes)}")
    for name, command, item_size in COMMANDS:
        peaks = [peak_kib(time_tool, console, folder, command.format(count=size // item_size)) for size in sizes]
        print(f"| {name} | {' | '.join(f'{peak} KiB' for peak in peaks)} |")
    return True
