#!/usr/bin/python3
"""The status bar's side of a StatusNotifierItem, as small as Qt accepts it. Prints a line for each item that registers."""
import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.kde.StatusNotifierWatcher"
# Qt believes only what the introspection data lists.
PROPERTIES = f"""
<interface name="{NAME}"><property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/></interface></node>"""


class Watcher(dbus.service.Object):
    @dbus.service.method(NAME, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        print("item", sender, service, flush=True)

    @dbus.service.method("org.freedesktop.DBus.Properties", in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return {"IsStatusNotifierHostRegistered": True, "ProtocolVersion": 0}[name]

    @dbus.service.method("org.freedesktop.DBus.Introspectable", out_signature="s", path_keyword="object_path",
                         connection_keyword="connection")
    def Introspect(self, object_path, connection):
        return super().Introspect(object_path, connection).replace("</node>", PROPERTIES)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
watcher = Watcher(bus, "/StatusNotifierWatcher")
owned = dbus.service.BusName(NAME, bus)
GLib.MainLoop().run()
