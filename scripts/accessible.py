# SPDX-License-Identifier: GPL-3.0-or-later
"""Programs' windows the way a screen reader sees them. Import it anywhere; ask it once there is a desktop."""

import pyatspi
from gi.repository import GLib

from desktop import Unavailable


def check_available():
    """Raises `Unavailable` where the desktop that was just made answers no screen reader."""
    try:
        pyatspi.Registry.getDesktop(0).get_child_count()
    except (GLib.Error, AttributeError, RuntimeError) as error:
        raise Unavailable(f"nobody answers screen readers here: {error}") from error


def programs(name):
    """The running programs with this name, seen as they are now: nothing of them is remembered."""
    desktop = pyatspi.Registry.getDesktop(0)
    desktop.setCacheMask(pyatspi.cache.NONE)
    # One that has just ended may still be listed, and has no name any more.
    return [program for program in desktop if program and attempt(lambda program=program: program.name) == name]


def elements(root):
    """Everything below `root`, depth first, except what is inside tables."""
    for child in root:
        if child is None:
            continue
        yield child
        if child.getRoleName() != "table":
            yield from elements(child)


def find_all(root, roles, name=None):
    """The elements of these roles, those of one name if it is given."""
    return [
        element
        for element in elements(root)
        if element.getRoleName() in roles and (name is None or element.name == name)
    ]


def find(root, role, name=None):
    """The first such element; None while there is none."""
    return next(iter(find_all(root, [role], name)), None)


def has_state(element, state):
    return element.getState().contains(state)


def is_enabled(element):
    return has_state(element, pyatspi.STATE_ENABLED)


def is_checked(element):
    return has_state(element, pyatspi.STATE_CHECKED)


def is_showing(element):
    return has_state(element, pyatspi.STATE_SHOWING)


def press(element):
    """What a click does, or the key that stands for it."""
    actions = element.queryAction()
    names = [actions.getName(i).lower() for i in range(actions.nActions)]
    actions.doAction(next(i for i, name in enumerate(names) if name in ("press", "toggle", "click")))


def box(element):
    """Where on the screen it is; has `x`, `y`, `width` and `height`."""
    return element.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)


def middle(element):
    x, y, width, height = box(element)
    return x + width // 2, y + height // 2


def header(table):
    return [table.getColumnHeader(column).name for column in range(table.nColumns)]


def rows(table, count=None):
    """The texts of the first `count` rows, of all rows if it is not given."""
    columns = range(table.nColumns)
    end = table.nRows if count is None else min(count, table.nRows)
    return [[table.getAccessibleAt(row, column).name for column in columns] for row in range(end)]


def tables(program):
    return [table.queryTable() for table in find_all(program, ["table"])]


def attempt(question):
    """The answer; None while the program is busy changing what was asked about."""
    try:
        return question()
    except (GLib.Error, AttributeError, RuntimeError, StopIteration):  # an element that is gone, or has lost a child
        return None
