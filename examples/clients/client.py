#!/usr/bin/python3
"""A client of the preset service in Python, with dbus-python (Debian's python3-dbus)."""

import os
import sys
import time

import dbus

SERVICE = "org.norvix.preset"

# A load tries each of its six operations ten times, a second apart, before it gives up. After
# D-Bus's usual 25 seconds nobody would be there to hear of it.
TIMEOUT_SECONDS = 60


def wait_for_service(bus, seconds):
    """Waits until the service is on the bus, and has the bus start it if the bus knows how."""
    end = time.monotonic() + seconds
    driver = bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus", introspect=False)
    driver.StartServiceByName(SERVICE, dbus.UInt32(0), ignore_reply=True,
                              dbus_interface="org.freedesktop.DBus")
    while not bus.name_has_owner(SERVICE):
        if time.monotonic() >= end:
            raise TimeoutError(f"{SERVICE} is not on the bus")
        time.sleep(0.1)


def request(bus, method, preset, file):
    """Stores a preset in a file, or loads it. A request that fails is answered with an error, so
    there is no need to look at the answer."""
    path = os.path.abspath(file)  # the daemon's own folder is "/"
    bus.call_blocking(SERVICE, "/preset", SERVICE, method, "ss", (preset, path),
                      timeout=TIMEOUT_SECONDS)


def run(arguments):
    "".join(arguments).encode()  # D-Bus carries nothing but UTF-8
    bus = dbus.SessionBus()
    # A bus that goes away is an error like others, and not the end of the program.
    bus.set_exit_on_disconnect(False)
    if arguments[0] == "wait":
        wait_for_service(bus, int(arguments[1]))
    else:
        request(bus, *arguments)


def main():
    arguments = sys.argv[1:]
    if (arguments[:1], len(arguments)) not in ((["wait"], 2), (["store"], 3), (["load"], 3)):
        print("Usage: client wait SECONDS | store PRESET FILE | load PRESET FILE", file=sys.stderr)
        sys.exit(2)
    try:
        run(arguments)
    except dbus.DBusException as error:
        sys.exit(f"client: {error.get_dbus_message()}")
    except (OSError, ValueError) as error:  # a ValueError for an argument that is not UTF-8
        sys.exit(f"client: {error}")


if __name__ == "__main__":
    main()
