"""Instructions of the hot paths as callgrind counts them: the same at every run, so that changes compare exactly."""

import os
import re
import shutil
import subprocess
import sys

FEW, MANY = 0x1000, 0x3000
HOT_PATHS = (
    ("`rrbs`, a byte", "rrbs 0 {count:x}"),
    ("`rrbs` with a file, a byte", "rrbs 0 {count:x} F"),
    ("`rrls`, a long", "rrls 0 {count:x}"),
    ("`arqs`, a quad", "arqs 40000000 {count:x}"),
    ("`vrws`, a word", "vrws 0 {count:x}"),
    ("`vrbs` with a file, a byte", "vrbs 0 {count:x} F"),
    ("`vrls`, a long", "vrls 0 {count:x}"),
    ("`rwls`, a long", "rwls 0 {count:x} deadbeef"),
    ("`vwls`, a long", "vwls 0 {count:x} deadbeef"),
    ("`spi read`, a byte", "spi read 0 {count:x} f"),
    ("`load`, a line of one write", "load script{count:x}"),
)
START = "rrl 0"


def count(console, folder, command):
    """The instructions of a whole run, the loader's included."""
    got = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", console, "--cmd", command],
                         cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    return int(re.search(r"Collected : (\d+)", got.stderr).group(1))


def print_table(console, folder, tiny):
    """Prints a Markdown table. True: there is no goal to miss."""
    if shutil.which("valgrind") is None:
        print("skipped: valgrind is not installed", file=sys.stderr)
        return True
    print("| Path | Instructions |")
    print("|---|---|")
    print(f'| `--cmd "{START}"`, start to exit | {count(console, folder, START)} |', flush=True)
    for lines in (FEW, MANY):
        with open(os.path.join(folder, f"script{lines:x}"), "w", encoding="ascii") as file:
            file.write("rwl 00001000 deadbeef\n" * lines)
    for name, command in HOT_PATHS[:1] if tiny else HOT_PATHS:
        more = count(console, folder, command.format(count=MANY)) - count(console, folder, command.format(count=FEW))
        print(f"| {name} | {more / (MANY - FEW):.2f} |", flush=True)
    return True
