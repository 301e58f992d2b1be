"""The clients of examples/clients: built as their first lines say, and used with the daemon.

They are programs of this machine, also where the daemon is emulated.
"""

import re
import shutil
import signal
import subprocess

import pytest
from harness import DEADLINE_SECONDS, SOURCE

CLIENTS = SOURCE / "examples/clients"
INTERFACE = "/usr/share/dbus-1/interfaces/org.norvix.preset.xml"
USAGE = "Usage: client wait SECONDS | store PRESET FILE | load PRESET FILE\n"
FILES = ["client.c", "client.cpp", "client.py", "client.sh"]
# The constants with which a request gives up.
TIMEOUTS = {"client.c": "TIMEOUT_SECONDS 60", "client.cpp": "timeout = 60s",
            "client.py": "TIMEOUT_SECONDS = 60", "client.sh": "timeout_seconds=60"}


def build_commands(text):
    """The commands in the comment at the head of a file: its indented lines."""
    lines = re.findall(r"^(?:/\*|//| \*)   ( *\S.*)$", text.split("#include")[0], re.MULTILINE)
    return "\n".join(lines)


def build(folder, name, text):
    """Makes a program of a client's text, and returns its command line."""
    (folder / name).write_text(text)
    commands = build_commands(text)
    if commands:
        for installed, here in ((INTERFACE, f"'{SOURCE}/src/dbus/org.norvix.preset.xml'"),
                                (" -o ", " -Wall -Wextra -Werror -o ")):
            commands = commands.replace(installed, here)
        subprocess.run(["sh", "-e", "-c", commands], cwd=folder, check=True)
        return [folder / "client"]
    shutil.copymode(CLIENTS / name, folder / name)
    return [folder / name]


@pytest.fixture(scope="module", params=FILES)
def program(request, tmp_path_factory):
    name = request.param
    return build(tmp_path_factory.mktemp("client"), name, (CLIENTS / name).read_text())


@pytest.fixture(scope="module", params=FILES)
def hasty_program(request, tmp_path_factory):
    """A client that does not listen for long."""
    name, text = request.param, (CLIENTS / request.param).read_text()
    assert text.count(TIMEOUTS[name]) == 1
    return build(tmp_path_factory.mktemp("hasty"), name,
                 text.replace(TIMEOUTS[name], TIMEOUTS[name].replace("60", "1")))


def outcome(process):
    """Exit status, standard output and standard error of a client."""
    try:
        output, errors = process.communicate(timeout=2 * DEADLINE_SECONDS)
    finally:
        process.kill()
    return process.returncode, output, errors


def start(world, command, *arguments, **environment):
    return subprocess.Popen([*command, *arguments], cwd=world.folder, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE, text=True,
                            env=world.bus.environment(**environment))


def run(world, command, *arguments, **environment):
    return outcome(start(world, command, *arguments, **environment))


def failed(message):
    return 1, "", f"client: {message}\n"


def test_stores_and_loads(served, program):
    stored = "gain[1]=0\ngain[2]=-6\ngain[3]=0\nmode=auto\ntemperature=40\n"
    served.user.handler("single_set", "(ss)", "gain[2]", "-6")
    # A relative name: the daemon's folder is another one.
    assert run(served, program, "store", "scene", "it's a \"scene\" (1)") == (0, "", "")
    assert served.folder.joinpath("it's a \"scene\" (1)").read_text() == stored
    served.user.handler("single_set", "(ss)", "gain[2]", "3")
    assert run(served, program, "load", "scene", "it's a \"scene\" (1)") == (0, "", "")
    assert served.user.handler("single_get", "(s)", "gain[2]") == "-6"


@pytest.mark.parametrize("arguments, message", [
    (("store", "dinner", "p"), "dbus_norvix_preset: Store preset failed"),
    (("load", "scene", "missing"), "dbus_norvix_preset: Load preset failed"),
])
def test_shows_the_error_of_a_failing_call(served, program, arguments, message):
    assert run(served, program, *arguments) == failed(message)


def test_says_that_the_service_is_not_there(world, program):
    message = "The name org.norvix.preset was not provided by any .service files"
    assert run(world, program, "store", "scene", "p") == failed(message)


def test_waits_for_the_service(world, program):
    assert run(world, program, "wait", "0") == failed("org.norvix.preset is not on the bus")
    waiting = start(world, program, "wait", str(DEADLINE_SECONDS))
    world.daemon()
    assert outcome(waiting) == (0, "", "")
    assert run(world, program, "wait", str(DEADLINE_SECONDS)) == (0, "", "")


def test_has_the_bus_start_the_service(activated, program):
    assert run(activated, program, "wait", str(DEADLINE_SECONDS)) == (0, "", "")


def test_gives_up_when_no_answer_comes(served, hasty_program):
    served.morvane.process.send_signal(signal.SIGSTOP)
    status, output, errors = run(served, hasty_program, "store", "scene", "p")
    served.morvane.process.send_signal(signal.SIGCONT)
    assert (status, output) == (1, "")
    assert re.fullmatch(r"client: .*([Tt]imed? ?out|Did not receive a reply).*\n", errors)


def test_says_that_there_is_no_bus(world, program):
    for arguments in (("wait", "1"), ("store", "scene", "p")):
        status, output, errors = run(world, program, *arguments,
                                     DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere")
        assert (status, output) == (1, "")
        assert errors.startswith("client: ") and errors.count("\n") == 1


def test_says_that_an_argument_is_not_utf8(served, program):
    status, output, errors = run(served, program, "store", "scene", b"\xff")
    assert (status, output) == (1, "")
    assert "client: " in errors  # after a line that dbus-send has the shell print
    assert served.user.preset("is_preset", "scene") is True


@pytest.mark.parametrize("arguments", [
    (), ("wait",), ("wait", "1", "2"), ("store", "scene"), ("delete", "scene", "p"),
    ("load", "scene", "p", "q")])
def test_explains_its_arguments(world, program, arguments):
    assert run(world, program, *arguments) == (2, "", USAGE)
