# SPDX-License-Identifier: GPL-3.0-or-later
"""Stands in for a desktop's notification service: keeps what it is given, and clicks and ends it when told to."""

import os
import threading
from typing import NamedTuple

from gi.repository import Gio, GLib

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"
INTERFACE = """
<node><interface name="org.freedesktop.Notifications">
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/>
  </method>
</interface></node>
"""
EXPIRED = 1  # why a notification was closed


class Notification(NamedTuple):
    application: str
    replaces: int
    icon: str
    title: str
    body: str
    actions: list
    hints: dict
    milliseconds: int


class NotificationService:
    """On the session's bus from its making to `die`. Answers every call after `delay` seconds."""

    def __init__(self, capabilities=("actions", "body", "body-markup"), delay=0):
        self.notifications = []
        self._capabilities = capabilities
        self._delay = delay
        self._context = GLib.MainContext()
        ready = threading.Event()
        threading.Thread(target=self._run, args=(ready,), daemon=True).start()
        ready.wait()

    def _run(self, ready):
        self._context.push_thread_default()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        address = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        self._bus = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self._bus.set_exit_on_close(False)
        self._bus.register_object(PATH, Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], self._take, None, None)
        self._bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                            GLib.Variant("(su)", (NAME, 0)), None, Gio.DBusCallFlags.NONE, -1, None)
        self._loop = GLib.MainLoop(self._context)
        ready.set()
        self._loop.run()

    def _take(self, _connection, _sender, _path, _interface, method, arguments, invocation):
        if method == "Notify":
            given = Notification(*arguments.unpack())
            self.notifications.append(given)
            answer = GLib.Variant("(u)", (given.replaces or len(self.notifications),))
        else:
            answer = GLib.Variant("(as)", (self._capabilities,))
        source = GLib.timeout_source_new(int(self._delay * 1000))
        source.set_callback(lambda *_: invocation.return_value(answer))
        source.attach(self._context)

    def click(self, number, token):
        self._emit("ActivationToken", "(us)", number, token)
        self._emit("ActionInvoked", "(us)", number, "default")

    def close(self, number, reason=EXPIRED):
        self._emit("NotificationClosed", "(uu)", number, reason)

    def _emit(self, signal, kind, *values):
        self._bus.emit_signal(None, PATH, NAME, signal, GLib.Variant(kind, values))

    def die(self):
        if not self._bus.is_closed():
            self._bus.close_sync(None)
            self._loop.quit()
