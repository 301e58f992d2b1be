"""Fixtures: everything that a test started is gone when it ends."""

import pytest
from harness import ActivatedDaemon, Bus, Client, Daemon, Simulator

PARAMETERS = """\
input index { rangeValid { 1..3 } }
gain rw { index { input } rangeValid { -60..12 } default { 0 } }
mode rw { rangeValid { "auto", "off", 1..3 } default { "auto" } }
temperature ro { default { 40 } }
serial rostrict { default { "A-17" } }
trigger wo { rangeValid { 0..1 } default { 0 } }
"""
PRESETS = """\
scene preset { include ro { temperature } }
single preset { exclude rw { gain } }
states preset { include ro { temperature, serial } exclude rw { all } }
nothing preset { exclude rw { all } }
"""


class World:
    """A bus and what runs on it. Definition files are written where they are used."""

    def __init__(self, folder, bus=None):
        self.folder = folder
        self.bus = bus or Bus()
        self.started = []
        self.parameters = self.write("parameters.def", PARAMETERS)
        self.presets = self.write("presets.def", PRESETS)

    def write(self, name, text):
        path = self.folder / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return path

    def client(self):
        client = Client(self.bus)
        self.started.append(client.close)
        return client

    def simulator(self, *arguments, parameters=None, **options):
        simulator = Simulator(self.bus, self.folder, parameters or self.parameters, *arguments,
                              **options)
        self.started.append(simulator.stop)
        return simulator

    def launch(self, *arguments, parameters=None, presets=None, **options):
        """Starts the daemon and does not wait for it."""
        daemon = Daemon(self.bus, self.folder, parameters or self.parameters,
                        presets or self.presets, *arguments, **options)
        self.started.append(daemon.kill)
        return daemon

    def daemon(self, *arguments, **options):
        """Starts the daemon and waits until it serves."""
        return self.launch(*arguments, **options).wait_ready()

    def close(self):
        for stop in reversed(self.started):
            stop()
        self.bus.stop()


@pytest.fixture
def world(tmp_path):
    world = World(tmp_path)
    yield world
    world.close()


@pytest.fixture
def served(world):
    """A world with simulator, daemon and client."""
    world.handler = world.simulator()
    world.morvane = world.daemon()
    world.user = world.client()
    world.file = world.folder / "p"
    return world


@pytest.fixture
def activated(tmp_path):
    """A bus that can start the daemon, and a client."""
    parameters, presets = tmp_path / "parameters.def", tmp_path / "presets.def"
    parameters.write_text("mode rw { default { 1 } }\n")
    presets.write_text("scene preset { }\n")
    activated = ActivatedDaemon(tmp_path, parameters, presets)
    activated.bus = Bus(activated.config)
    activated.client = Client(activated.bus)
    activated.parameters = parameters
    yield activated
    activated.client.close()
    activated.kill()
    activated.bus.stop()
