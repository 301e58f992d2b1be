"""A Parameter Handler with one fault: it passes all calls on to the simulator, which serves another
bus, and falsifies one thing. As a program: BUS SIMULATOR_BUS FAULT; prints "ready" when it serves.
"""

import re
import sys
from pathlib import Path

from gi.repository import Gio, GLib

NAME, PATH = "org.norvix.transaction", "/transaction"
INTERFACE = Path(__file__).parents[2] / "tools/parameter-handler-sim/org.norvix.transaction.xml"
FLAGS = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
         | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)


class Refusal(Exception):
    """The text of an error that answers a call."""


class Handler:
    """Without a fault. Each subclass is one: its methods `on_METHOD` take the arguments of a call
    in place of the simulator, and return the tuple that answers it, or raise a Refusal."""

    def __init__(self, address, simulator):
        self.bus, self.simulator = (
            Gio.DBusConnection.new_for_address_sync(a, FLAGS, None, None)
            for a in (address, simulator))
        self.types = {}
        node = Gio.DBusNodeInfo.new_for_xml(self.interface(INTERFACE.read_text()))
        for method in node.interfaces[0].methods:
            self.types[method.name] = tuple(
                "(" + "".join(a.signature for a in arguments) + ")"
                for arguments in (method.in_args, method.out_args))
        self.bus.register_object(PATH, node.interfaces[0], self.on_call, None, None)
        self.simulator.signal_subscribe(
            NAME, NAME, None, PATH, None, Gio.DBusSignalFlags.NONE,
            lambda *signal: self.on_signal(signal[4], signal[5]))

    def interface(self, xml):
        return xml

    def on_signal(self, name, values):
        self.bus.emit_signal(None, PATH, NAME, name, values)

    def on_call(self, _bus, _sender, _path, _interface, method, values, invocation):
        answer = getattr(self, "on_" + method, None)
        try:
            result = (answer or (lambda *a: self.ask(method, *a)))(*values.unpack())
            invocation.return_value(GLib.Variant(self.types[method][1], result))
        except Refusal as refusal:
            invocation.return_dbus_error("org.norvix.transaction.Error", str(refusal))

    def ask(self, method, *arguments):
        """Calls the simulator."""
        try:
            return self.simulator.call_sync(
                NAME, PATH, NAME, method, GLib.Variant(self.types[method][0], arguments), None,
                Gio.DBusCallFlags.NONE, -1, None).unpack()
        except GLib.Error as error:
            Gio.DBusError.strip_remote_error(error)
            raise Refusal(self.refusal(error.message)) from None

    def refusal(self, text):
        return text.removeprefix("GDBus.Error:org.norvix.transaction.Error: ")


class LacksMethod(Handler):
    def interface(self, xml):
        return re.sub(r'<method name="set_bulk">.*?</method>', "", xml, count=1, flags=re.DOTALL)


class TakesOtherTypes(Handler):
    """The option of a bulk get is missing."""

    def interface(self, xml):
        head, mark, tail = xml.partition('<method name="get_bulk">')
        return head + mark + re.sub(r'<arg type="u" name="option".*?</arg>', "", tail, count=1,
                                    flags=re.DOTALL)


class ShowsBeforeCommit(Handler):
    def on_set(self, transaction, key, value):
        self.ask("single_set", key, value)
        return self.ask("set", transaction, key, value)


class CommitsAtEnd(Handler):
    def on_end(self, transaction):
        self.ask("commit", transaction)
        return self.ask("end", transaction)


class EndsAtCommit(Handler):
    def on_commit(self, transaction):
        self.ask("commit", transaction)
        return self.ask("end", transaction)


class DoesNotMark(Handler):
    def refusal(self, text):
        return super().refusal(text).removeprefix("dbus_norvix_transaction: ")


class ResetsToAnotherValue(Handler):
    def on_reset(self, transaction, key):
        self.ask("reset", transaction, key)
        return self.ask("set", transaction, key, "5") if key == "gain[1]" else ()


class SortsBulkGet(Handler):
    def on_get_bulk(self, transaction, option, keys):
        return self.ask("get_bulk", transaction, option, sorted(keys))


class LacksKey(Handler):
    KEY = "gain[3]"

    def lack(self, keys):
        if self.KEY in keys:
            raise Refusal(f"dbus_norvix_transaction: unknown parameter {self.KEY}")

    def on_get(self, transaction, key):
        self.lack([key])
        return self.ask("get", transaction, key)

    def on_single_get(self, key):
        self.lack([key])
        return self.ask("single_get", key)

    def on_get_bulk(self, transaction, option, keys):
        self.lack(keys)
        return self.ask("get_bulk", transaction, option, keys)


class TakesUnknownKeys(Handler):
    def on_get(self, transaction, key):
        return ("",) if key == "noSuchParameter" else self.ask("get", transaction, key)


class TakesEndedTransactions(Handler):
    def on_commit(self, transaction):
        try:
            return self.ask("commit", transaction)
        except Refusal:
            return ()


class DropsSets(Handler):
    def on_set(self, _transaction, _key, _value):
        return ()


class SetsFirstOnly(Handler):
    def on_set_bulk(self, transaction, keys, values):
        return self.ask("set_bulk", transaction, keys[:1], values[:1])


class KeepsFirstOfTwo(Handler):
    def on_set_bulk(self, transaction, keys, values):
        first = dict(reversed(list(zip(keys, values))))
        return self.ask("set_bulk", transaction, list(first), list(first.values()))


class HoldsOthersUp(Handler):
    """One that has changed something holds up the commit of any other."""

    writer = None

    def on_set(self, transaction, key, value):
        self.writer = self.writer or transaction
        return self.ask("set", transaction, key, value)

    def on_commit(self, transaction):
        if self.writer not in (None, transaction):
            raise Refusal("dbus_norvix_transaction: busy")
        return self.ask("commit", transaction)

    def on_end(self, transaction):
        self.writer = None if self.writer == transaction else self.writer
        return self.ask("end", transaction)


class RepeatsNumbers(Handler):
    """The number of a transaction is 7; calls are about the one that was started last."""

    def __init__(self, *addresses):
        self.open = []
        super().__init__(*addresses)

    def on_start(self):
        self.open += self.ask("start")
        return (7,)

    def ask(self, method, *arguments):
        if self.types[method][0].startswith("(u") and not method.startswith("single_"):
            if not self.open:
                raise Refusal("dbus_norvix_transaction: unknown transaction 7")
            transaction = self.open.pop() if method == "end" else self.open[-1]
            arguments = (transaction, *arguments[1:])
        return super().ask(method, *arguments)


class ReadsEmptyValue(Handler):
    def on_get_bulk(self, transaction, option, keys):
        values, = self.ask("get_bulk", transaction, option, keys)
        return (["" if key == "serial" else value for key, value in zip(keys, values)],)


class SaysYes(Handler):
    def on_check_set(self, _transaction, _key, _value):
        return (True,)


class LocksValues(Handler):
    """From the first value that is set outside a transaction on, nothing can be set any more."""

    locked = False

    def on_single_set(self, key, value):
        self.ask("single_set", key, value)
        self.locked = value != "0"
        return ()

    def ask(self, method, *arguments):
        if self.locked and "set" in method and not method.endswith("check_set"):
            raise Refusal("dbus_norvix_transaction: locked")
        return super().ask(method, *arguments)


class SaysNothing(Handler):
    def on_signal(self, _name, _values):
        pass


def main():
    address, simulator, fault = sys.argv[1:]
    handler = globals()[fault](address, simulator)
    Gio.bus_own_name_on_connection(
        handler.bus, NAME, Gio.BusNameOwnerFlags.NONE,
        lambda *_: print("ready", flush=True), None)
    GLib.MainLoop().run()


if __name__ == "__main__":
    main()
