"""Pasting text into a program that edits lines on a terminal of its own."""

import os
import pty
import select

from processes import Cost

PIECE = 4000  # less than a terminal holds for a reader


def paste(argv, text, end_keys):
    """Types a text as fast as the program takes it, then the keys that end it. Returns the cost of the program."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execv(argv[0], argv)
    # The first prompt, so that no key meets a terminal that is not yet the program's.
    os.read(terminal, 1)
    os.set_blocking(terminal, False)
    keys = text + end_keys
    sent = 0
    while True:
        readable, writable, _ = select.select([terminal], [terminal] if sent < len(keys) else [], [])
        if readable:
            try:
                if not os.read(terminal, 0x10000):
                    break
            except OSError:  # the program has ended, and its side of the terminal with it
                break
        if writable:
            try:
                sent += os.write(terminal, keys[sent:sent + PIECE])
            except BlockingIOError:
                pass
    os.close(terminal)
    _, _, usage = os.wait4(pid, 0)
    return Cost(usage.ru_utime + usage.ru_stime, 0)
