#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints the first rows of a running program's table, read from its window the way a screen reader reads it.

    read_table.py PROGRAM
"""

import sys
import time

import pyatspi

ROWS = 12
SECONDS = 8  # that a program may take to answer


def find(accessible, wanted):
    """The first element below `accessible`, depth first, for which `wanted` holds; None while there is none."""
    for child in accessible:
        if child is None:
            continue
        if wanted(child):
            return child
        if found := find(child, wanted):
            return found
    return None


def find_table(name):
    """The table of the program called `name`, once it has a row."""
    for program in pyatspi.Registry.getDesktop(0):
        if program and program.name == name:
            table = find(program, lambda element: "Table" in pyatspi.listInterfaces(element))
            if table and table.queryTable().nRows > 0:
                return table.queryTable()
    return None


def read_rows(table):
    """The header and the first rows, as lists of texts."""
    columns = range(table.nColumns)
    header = [table.getColumnHeader(column).name for column in columns]
    rows = [[table.getAccessibleAt(r, c).name for c in columns] for r in range(min(ROWS, table.nRows))]
    return header, rows


def print_rows(header, rows):
    widths = [max(map(len, cells)) for cells in zip(header, *rows)]
    for cells in (header, *rows):
        print("  ".join(cell.ljust(width) for cell, width in zip(cells, widths)).rstrip())


def main():
    deadline = time.monotonic() + SECONDS
    while time.monotonic() < deadline:
        if table := find_table(sys.argv[1]):
            print_rows(*read_rows(table))
            return
        time.sleep(0.1)
    sys.exit(f"{sys.argv[1]} shows no table with a row.")


if __name__ == "__main__":
    main()
