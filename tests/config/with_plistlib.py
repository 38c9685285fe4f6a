#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""with_plistlib.py write-xml|write-binary|check|check-stored FILE

Property lists as Python's own implementation has them: writes a value of every kind, or fails unless FILE is XML and
holds that value, or what store_every_kind stores, kinds included.
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


command, path = sys.argv[1:]
if command.startswith("write"):
    with open(path, "wb") as file:
        plistlib.dump(EVERY_KIND, file, fmt=plistlib.FMT_BINARY if command == "write-binary" else plistlib.FMT_XML)
else:
    with open(path, "rb") as file:
        found = with_kinds(plistlib.load(file, fmt=plistlib.FMT_XML))
    expected = with_kinds(STORED if command == "check-stored" else EVERY_KIND)
    if found != expected:
        sys.exit(f"found    {found}\nexpected {expected}")
