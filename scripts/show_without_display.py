#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Opens the window on a virtual display, saves a picture of it and prints the table's first rows.

    show_without_display.py PROGRAM FOLDER

The rows are read from the window itself; see read_table.py.
"""

import subprocess
import sys
import time
from pathlib import Path

from desktop import Unavailable, desktop, save_picture, wait_for, windows_of


def read_table(program):
    """The table's first rows as text. Another process asks for them: a window that hangs would hang it too."""
    reader = Path(__file__).with_name("read_table.py")
    command = [sys.executable, reader, program.name]
    return subprocess.run(command, timeout=10, check=True, stdout=subprocess.PIPE, text=True).stdout


def show(program, folder, children):
    process = children.start([program])
    window = wait_for("The window", lambda: windows_of(process))[0]
    time.sleep(7)  # until its second refresh
    picture = folder / "main-window.png"
    save_picture(window, picture)
    print(f"Saved {picture}")
    print(read_table(program), end="")


def main():
    program, folder = Path(sys.argv[1]), Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    print(f"No display here: showing {program.name} on a virtual one for some seconds.", flush=True)
    try:
        with desktop() as children:
            show(program, folder, children)
    except Unavailable as reason:
        sys.exit(f"The window cannot be shown: {reason}.")
    except subprocess.SubprocessError as error:
        sys.exit(f"The window does not react: {error}")


if __name__ == "__main__":
    main()
