#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints the first rows of a running program's table, read from its window the way a screen reader reads it.

    read_table.py PROGRAM
"""

import sys

import accessible
from desktop import wait_for

ROWS = 12


def find_table(name):
    """The table of the program called `name`, once it has a row."""
    filled = [table for program in accessible.programs(name) for table in accessible.tables(program) if table.nRows > 0]
    return filled[0] if filled else None


def print_rows(rows):
    widths = [max(map(len, cells)) for cells in zip(*rows)]
    for cells in rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(cells, widths)).rstrip())


def main():
    table = wait_for("A table with a row", lambda: find_table(sys.argv[1]), seconds=8)
    print_rows([accessible.header(table), *accessible.rows(table, ROWS)])


if __name__ == "__main__":
    main()
