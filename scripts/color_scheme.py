#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Stands in for the desktop's portal, and tells whoever asks that windows shall be dark or light.

    color_scheme.py dark|light

Prints "ready" once it can be asked.
"""

import sys

from gi.repository import Gio, GLib

INTERFACE = """
<node><interface name="org.freedesktop.portal.Settings">
  <method name="Read">
    <arg name="namespace" type="s" direction="in"/><arg name="key" type="s" direction="in"/>
    <arg name="value" type="v" direction="out"/>
  </method>
</interface></node>
"""
PREFERENCES = {"dark": 1, "light": 2}


def answer(preference):
    """Reads of any key but the colour scheme fail, as they do at a portal that does not know the key."""

    def read(_connection, _sender, _path, _interface, _method, arguments, invocation):
        if arguments.unpack() == ("org.freedesktop.appearance", "color-scheme"):
            value = GLib.Variant("v", GLib.Variant("u", preference))
            invocation.return_value(GLib.Variant("(v)", (value,)))  # in two wraps, as real portals do
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no such setting")

    return read


def main():
    interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
    read = answer(PREFERENCES[sys.argv[1]])
    Gio.bus_own_name(
        Gio.BusType.SESSION,
        "org.freedesktop.portal.Desktop",
        Gio.BusNameOwnerFlags.NONE,
        lambda bus, _: bus.register_object("/org/freedesktop/portal/desktop", interface, read, None, None),
        lambda *_: print("ready", flush=True),
        lambda *_: sys.exit("There is a portal already, or no bus."),
    )
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
