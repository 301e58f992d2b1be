"""A client of a bus that sends and receives messages one by one: for the service tests, and for
those on an emulated board, which have little else."""

from jeepney import DBusAddress, HeaderFields, MessageType, message_bus, new_method_call
from jeepney.io.blocking import open_dbus_connection

DEADLINE_SECONDS = 60  # for each event that a test waits for


class RawClient:
    """A connection whose messages are sent and received one by one, by an implementation of D-Bus
    that shares nothing with the daemon's or the simulator's."""

    SERVICE = DBusAddress("/preset", "org.norvix.preset", "org.norvix.preset")

    def __init__(self, address, deadline_seconds=DEADLINE_SECONDS):
        self.connection = open_dbus_connection(address)
        self.deadline_seconds = deadline_seconds

    def send(self, method, *arguments, address=SERVICE):
        """Sends a call, strings and lists of strings only, and returns its serial number."""
        signature = "".join("s" if isinstance(a, str) else "as" for a in arguments)
        serial = next(self.connection.outgoing_serial)
        self.connection.send_message(
            new_method_call(address, method, signature or None, arguments), serial=serial)
        return serial

    def receive(self):
        """The next reply: the serial number of its call, and the result or the error's name."""
        while True:
            message = self.connection.receive(timeout=self.deadline_seconds)
            fields = message.header.fields
            if message.header.message_type == MessageType.error:
                return fields[HeaderFields.reply_serial], fields[HeaderFields.error_name]
            if message.header.message_type == MessageType.method_return:
                return fields[HeaderFields.reply_serial], *message.body

    def call(self, *arguments, **options):
        """The answer to a call, which must be that of the next reply."""
        serial = self.send(*arguments, **options)
        replied, *answer = self.receive()
        assert replied == serial
        return answer[0] if answer else None

    def own(self, name):
        """Takes a name on the bus."""
        self.connection.send_and_get_reply(message_bus.RequestName(name))

    def answer_calls(self, answers):
        """Answers calls until the bus cuts the connection. `answers` has a function for each
        method, which makes the bytes of a reply from a call and a serial number."""
        try:
            while True:
                call = self.connection.receive(timeout=self.deadline_seconds)
                if call.header.message_type == MessageType.method_call:
                    method = call.header.fields[HeaderFields.member]
                    serial = next(self.connection.outgoing_serial)
                    self.connection.sock.sendall(answers[method](call, serial))
        except ConnectionError:
            pass

    def listen(self, interface):
        """Subscribes to the signals of an interface."""
        self.connection.send_and_get_reply(
            message_bus.AddMatch(f"type='signal',interface='{interface}'"))

    def signals(self):
        """The names of the signals since the last call, received before the reply to a new call."""
        serial = self.send("GetId", address=DBusAddress(
            "/org/freedesktop/DBus", "org.freedesktop.DBus", "org.freedesktop.DBus"))
        names = []
        while True:
            message = self.connection.receive(timeout=self.deadline_seconds)
            fields = message.header.fields
            if fields.get(HeaderFields.reply_serial) == serial:
                return names
            if fields.get(HeaderFields.interface) != "org.freedesktop.DBus":
                names.append(fields[HeaderFields.member])

    def close(self):
        self.connection.close()
