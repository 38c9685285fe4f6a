#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Property lists as Python's own implementation writes and reads them.

with_plistlib.py write xml|binary FILE   writes a value of every kind
with_plistlib.py check FILE              fails unless FILE holds that value, kinds included
with_plistlib.py check-stored FILE       fails unless FILE holds what store_every_kind stores
"""
import datetime
import plistlib
import sys

EVERY_KIND = {
    "integer": 6, "negative": -(2**63), "huge": 2**64 - 1, "real": 6.0, "third": 1 / 3, "yes": True, "no": False,
    "text": "Äpp & <Co>\n\U0001F600 ]]>", "": "empty key", "list": [1, 2.0, False, "x", [], {"deep": ["er"]}],
    "moment": datetime.datetime(2150, 3, 7, 9, 5, 1), "bytes": bytes(range(100)), "no bytes": b"",
    "many": list(range(300)),
}
STORED = {
    "int": -5, "double": 2.0, "bool": True, "string <&>": "März", "ints": [1, -2, 3], "doubles": [0.1, 1e300],
    "bools": [True, False, True], "strings": ["", "/Applications/Äpp & <Co>.app", "a\rb\r\nc"], "empty": [],
}


def with_kinds(value):
    """1, 1.0 and True are equal in Python; their kinds are not."""
    if isinstance(value, dict):
        return {key: with_kinds(item) for key, item in value.items()}
    if isinstance(value, list):
        return [with_kinds(item) for item in value]
    return type(value).__name__, value


def main(command, *arguments):
    if command == "write":
        form = {"xml": plistlib.FMT_XML, "binary": plistlib.FMT_BINARY}[arguments[0]]
        with open(arguments[1], "wb") as file:
            plistlib.dump(EVERY_KIND, file, fmt=form)
        return 0
    with open(arguments[0], "rb") as file:
        found = plistlib.load(file, fmt=plistlib.FMT_XML)
    expected = {"check": EVERY_KIND, "check-stored": STORED}[command]
    if with_kinds(found) != with_kinds(expected):
        print(f"found    {with_kinds(found)}\nexpected {with_kinds(expected)}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
