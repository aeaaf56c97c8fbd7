"""The everyday work of the console beside the tools that people use for the same."""

import os
import shutil
import subprocess
import sys
from dataclasses import dataclass
from typing import Callable

from pasting import paste
from processes import Cost, compare, run

SCRIPT_LINE = "rwl 00001000 deadbeef"
OWN_PASTED_LINE = b"rrl 0\r"
PEER_PASTED_LINE = b"12+34\r"
DD_BLOCK = 0x10000


@dataclass
class Sizes:
    """How much work a pair is, and how many pairs there are."""

    pairs: int = 7
    starts: int = 400
    file_pairs: int = 15
    dump_bytes: int = 0x1000000
    saved_bytes: int = 0x4000000
    flash_bytes: int = 0x200000
    script_lines: int = 500_000
    pasted_bytes: int = 300_000
    filled_bytes: int = 0x40000000


TINY = Sizes(pairs=1, starts=1, file_pairs=1, dump_bytes=0x1000, saved_bytes=0x10000, flash_bytes=0x20000,
             script_lines=100, pasted_bytes=600, filled_bytes=0x10000)


@dataclass
class Row:
    """One line of the table: what is compared with what, and how."""

    work: str
    peer: str
    goal: str
    unit: str
    pairs: int
    ours: Callable[[], float]
    theirs: Callable[[], float]
    most: float  # the ratio that the goal allows
    needs: str = ""


class Benches:
    """Makes the rows over a folder of scratch files."""

    def __init__(self, console, folder, sizes):
        self.console = console
        self.folder = folder
        self.sizes = sizes
        self.random_file("region", sizes.dump_bytes)
        self.write("script", f"{SCRIPT_LINE}\n" * sizes.script_lines)
        self.write("sets.tcl", "set r00001000 deadbeef\n" * sizes.script_lines)

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="ascii") as file:
            file.write(text)

    def random_file(self, name, size):
        with open(self.path(name), "wb") as file:
            file.write(os.urandom(size))

    def own(self, command):
        return run([self.console, "--cmd", command], self.folder)

    def tool(self, *argv, may_fail=False):
        return run([shutil.which(argv[0]), *argv[1:]], self.folder, may_fail)

    def saving(self, command, name, **options):
        """The CPU time of a command that makes a file, which is removed again."""
        cost = self.own(command) if not options else self.tool(*options["argv"])
        os.unlink(self.path(name))
        return cost.cpu

    def cpu_row(self, work, command, peer, most, *argv):
        return Row(f"`{work}`", f"`{peer}`", f"{most:g}", "ms CPU", self.sizes.pairs,
                   lambda: self.own(command).cpu, lambda: self.tool(*argv).cpu, most, argv[0])

    def dumps(self):
        size = self.sizes.dump_bytes
        region = self.path("region")
        bytes_command = f"rrbs 0 {size:x}"
        yield self.cpu_row(bytes_command, bytes_command, "xxd -g1", 0.5, "xxd", "-g1", region)
        yield self.cpu_row(bytes_command, bytes_command, "hexdump -C", 0.05, "hexdump", "-C", region)
        yield self.cpu_row(bytes_command, bytes_command, "od -A x -t x1z", 1, "od", "-A", "x", "-t", "x1z", region)
        yield self.cpu_row(bytes_command, bytes_command, "busybox hexdump -C", 1, "busybox", "hexdump", "-C", region)
        for command, width in ((f"rrls 0 {size // 4:x}", 4), (f"arqs 40000000 {size // 8:x}", 8),
                               (f"vrws 0 {size // 2:x}", 2)):
            yield self.cpu_row(command, command, f"od -t x{width}", 0.1, "od", "-t", f"x{width}", region)

    def files(self):
        size = self.sizes.saved_bytes
        dump = f"vrbs 0 {size:x}"
        dd = ["dd", f"bs={DD_BLOCK}", f"count={size // DD_BLOCK}", "if=/dev/zero", "of=copy", "status=none"]
        yield Row(f"`{dump} f`, less `{dump}`", "`dd bs=64k`", "2", "ms CPU", self.sizes.file_pairs,
                  lambda: self.saving(f"{dump} F", "F") - self.own(dump).cpu,
                  lambda: self.saving("", "copy", argv=dd), 2, "dd")
        flash = self.sizes.flash_bytes
        flashrom = ["flashrom", "-p", f"dummy:emulate=VARIABLE_SIZE,size={flash}", "-r", "image"]
        yield Row(f"`spi read 0 {flash:x} f`", "flashrom, dummy programmer", "0.1", "ms CPU", self.sizes.pairs,
                  lambda: self.saving(f"spi read 0 {flash:x} f", "f"),
                  lambda: self.saving("", "image", argv=flashrom), 0.1, "flashrom")

    def starts(self):
        for most, argv in ((1.5, ["busybox", "true"]), (1, ["i2cget", "-y", "0", "0x50", "0x00"]),
                           (1, ["setpci", "-s", "00:00.0", "VENDOR_ID"])):
            yield Row('`--cmd "rrl 0"`, start to exit', f"`{' '.join(argv)}`", f"{most:g}", "ms wall",
                      self.sizes.starts, lambda: self.own("rrl 0").wall,
                      lambda argv=argv: self.tool(*argv, may_fail=True).wall, most, argv[0])

    def scripts(self):
        lines = self.sizes.script_lines
        loop = f'for ((i = 0; i < {lines}; i++)); do echo "{SCRIPT_LINE}:"; done'
        command = f"load {self.path('script')}"
        yield self.cpu_row(f"load, {lines} writes", command, "bash, its own loop with echo", 0.1, "bash", "-c", loop)
        yield self.cpu_row(f"load, {lines} writes", command, "tclsh, as many sets", 1, "tclsh", self.path("sets.tcl"))

    def pastes(self):
        size = self.sizes.pasted_bytes

        def per_key(argv, line):
            text = line * (size // len(line))
            return paste(argv, text, b"quit\r").cpu / len(text) * 1000  # so that milliseconds read as microseconds

        yield Row(f"paste of {size} keys into the console", "`bc`", "1", "us CPU/key", self.sizes.pairs,
                  lambda: per_key([self.console], OWN_PASTED_LINE),
                  lambda: per_key([shutil.which("bc"), "-q"], PEER_PASTED_LINE), 1, "bc")

    def fills(self):
        size = self.sizes.filled_bytes
        peer = self.path("memset_peer")
        if shutil.which("cc") is not None:
            source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "memset_peer.c")
            subprocess.run(["cc", "-O2", "-o", peer, source], check=True)
        yield self.cpu_row(f"vwls 0 {size // 4:x} deadbeef", f"vwls 0 {size // 4:x} deadbeef",
                           "memset in a C program", 1.5, peer, f"{size:x}")

    def rows(self):
        for group in (self.dumps, self.files, self.starts, self.scripts, self.pastes, self.fills):
            yield from group()


def print_table(console, folder, tiny):
    """Prints a Markdown table; tools that are not there are skipped aloud. True when every goal is met."""
    print("| Work | Peer | Ours | Peer's | Ratio, median | Middle half | Goal: at most |")
    print("|---|---|---|---|---|---|---|")
    met = True
    for row in Benches(console, folder, TINY if tiny else Sizes()).rows():
        if shutil.which(row.needs) is None:
            print(f"skipped: {row.needs} is not installed", file=sys.stderr)
            print(f"| {row.work} | {row.peer} | | | not measured | | {row.goal} |")
            continue
        got = compare(row.pairs, row.ours, row.theirs)
        low, high = got.spread
        met = met and got.ratio <= row.most
        print(f"| {row.work} | {row.peer} | {got.own * 1e3:.2f} {row.unit} | {got.peer * 1e3:.2f} {row.unit} "
              f"| {got.ratio:.3f} | {low:.3f} to {high:.3f} | {row.goal} |", flush=True)
    return met
