"""Definition files: what goes wrong in them is reported on standard output, and the service is
offered all the same."""

import pytest

PARAMETER_ERRORS = [
    ("an unknown access type", "p wr {}\n",
     "Error on line 1\nInvalid parameter access type\np wr {}\n  ^\n"),
    ("an unknown attribute", "# one\np rw {\n\tfoo\n}\n",
     "Error on line 3\nSyntax error\n\tfoo\n ^\n"),
    ("no line feed at the end", "p rw { default { 1x } }",
     "Error on line 1\nSyntax error\np rw { default { 1x } }\n                  ^\n"),
    ("a write-only parameter that is to be read-only", "p wo { ctrlRO (1) }",
     "Error on line 1\nInvalid parameter access type\np wo { ctrlRO (1) }\n                ^\n"),
]
PRESET_ERRORS = [
    ("a wrong header", "scene preset { }\npreset preset {\n",
     "PARSE_PRESET_INVALID_IDENTIFIER Error on line 2\npreset preset {\n             ^\n"),
    ("a wrong pairing", "scene preset { include rw { gain } }\n",
     "PARSE_PRESET_INC_EXC_ACCESS_ERR Error on line 1\nscene preset { include rw { gain } }\n"
     "                         ^\n"),
    ("an unknown parameter", "scene preset {\n exclude rw { nowhere } }\n",
     "Preset Definition Error on line 2.\n nowhere - is an undefined system parameter\n"),
    ("a removed parameter that is still there",
     "scene preset { }\ntranslate { removed { gain } }\n",
     "Preset Definition Error on line 2.\ngain - In translate removed list, but still a defined "
     "system parameter\n"),
    ("a block that is not closed", "scene preset { }\nlate preset {\n", ""),
    ("nothing", "", ""),
]


def check(world, report, **options):
    daemon = world.launch(**options)
    if "options" in options:
        assert daemon.wait() == 0
    else:
        daemon.wait_ready()
    client = world.client()
    assert daemon.stdout.read_text() == report
    assert daemon.stderr.read_text() == ""
    assert not any("rror" in text for _, text in daemon.records()), "the system log never sees it"
    assert client.preset("is_preset", "scene") is False
    assert client.preset("in_preset", "scene", ["mode"]) is False
    client.preset("die")


@pytest.mark.parametrize("text, report", [row[1:] for row in PARAMETER_ERRORS],
                         ids=[row[0] for row in PARAMETER_ERRORS])
def test_a_wrong_parameter_definition_file_leaves_the_tables_empty(world, text, report):
    check(world, report, parameters=world.write("wrong.def", text))


@pytest.mark.parametrize("text, report", [row[1:] for row in PRESET_ERRORS],
                         ids=[row[0] for row in PRESET_ERRORS])
def test_a_wrong_preset_definition_file_leaves_the_tables_empty(world, text, report):
    check(world, report, presets=world.write("wrong.def", text))


def test_a_missing_parameter_definition_file_is_reported(world):
    check(world, "Can't open file\n", parameters=world.folder / "missing.def")


def test_a_missing_preset_definition_file_is_not_reported(world):
    check(world, "", presets=world.folder / "missing.def")


def test_a_daemon_that_detaches_has_reported_before(world):
    """What standard output still buffers would be lost when it detaches."""
    _, text, report = PARAMETER_ERRORS[0]
    check(world, report, parameters=world.write("wrong.def", text), options=[])


@pytest.mark.parametrize("arguments, answers", [
    ([], (False, False)),
    (["model=small"], (True, False)),
    (["model=large", "inputs=2"], (True, True)),
    (["model=large", "model=small", "inputs=2"], (True, True)),  # the first value counts
])
def test_system_arguments_decide_what_exists(world, arguments, answers):
    world.write("parameters.def", """\
input index { rangeValid { 1..(inputs) } }
mode rw { ctrlValid (model == "small" || model == "large") }
gain rw { index { input } ctrlValid (model == "large") }
""")
    world.write("presets.def", "scene preset { }\n")
    world.daemon(*arguments)
    client = world.client()
    assert (client.preset("in_preset", "scene", ["mode"]),
            client.preset("in_preset", "scene", ["gain[2]"])) == answers
    assert client.preset("in_preset", "scene", ["gain[3]"]) is False
