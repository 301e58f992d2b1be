"""morvanectl in shells: completion in real ones on a terminal, what it is told, help, colours."""

import os
import re
import shlex
import subprocess

import pexpect
import pytest
from harness import CTL, DEADLINE_SECONDS, SOURCE, run_ctl

YES, NO, ERROR = 0, 1, 2
SCRIPTS = SOURCE / "tools/morvanectl"


class Shell:
    """A shell on a terminal that completes for morvanectl, which is replaced when it is run.

    The replacement notes its arguments, which is what the shell has made of the typed line. A shell
    reads the key behind TAB when the completion is done, so nothing has to wait for that.
    """

    def __init__(self, world, command, setup):
        self.noted = world.folder / "noted"
        tools = world.folder / "bin"
        tools.mkdir()
        program = tools / "morvanectl"
        real = shlex.join(map(str, CTL))
        program.write_text(f"#!/bin/sh\n[ \"$1\" = complete ] && exec {real} \"$@\"\n"
                           f"printf '%s\\0' \"$@\" >{shlex.quote(str(self.noted))}\n"
                           "echo 'has 'run\n")
        program.chmod(0o755)
        self.child = pexpect.spawn(
            command, encoding="utf-8", timeout=DEADLINE_SECONDS, dimensions=(50, 500),
            cwd=str(world.folder), env={
                **os.environ, "PATH": f"{tools}:{os.environ['PATH']}", "TERM": "vt100",
                "HOME": str(world.folder), "LC_ALL": "C.UTF-8"})
        self.child.delaybeforesend = None
        self.child.sendline(f"{setup}; echo 'is 'ready")
        self.child.expect("is ready\r")

    def run(self, typed):
        """Types the text and the key Enter; returns the arguments that morvanectl got."""
        self.child.send(typed + "\r")
        self.child.expect("has run\r")
        return self.noted.read_bytes().decode().split("\0")[:-1]


def bash(world):
    return Shell(world, "bash --noprofile --norc -i",
                 f"source {shlex.quote(str(SCRIPTS / 'completion.bash'))}")


def zsh(world):
    functions = world.folder / "functions"
    functions.mkdir()
    (functions / "_morvanectl").symlink_to(SCRIPTS / "completion.zsh")
    return Shell(world, "zsh -f -i", f"fpath+={functions}; autoload -U compinit; compinit -D -u")


def fish(world):
    return Shell(world, "fish --no-config --interactive",
                 f"source {shlex.quote(str(SCRIPTS / 'completion.fish'))}")


@pytest.fixture(params=[bash, zsh, fish], ids=lambda start: start.__name__)
def shell(request, world):
    shell = request.param(world)
    yield shell
    shell.child.close(force=True)


DEFINITIONS = "-p parameters.def -d presets.def "


@pytest.mark.parametrize("typed, meant", [
    ("pres\t", "presets"),
    ("keys sc\t", "keys scene"),
    ("keys --js\t scene", "keys --json scene"),
    ("--vers\t", "--version"),
    ("explain scene mo\t", "explain scene mode"),
    ("explain 'sc'ene mo\t", "explain scene mode"),
    ("-s a=b keys sc\t", "-s a=b keys scene"),
    ("keys -s a=b:c sc\t", "keys -s a=b:c scene"),
    ("validate --for=sc\t old", "validate --for=scene old"),
    ("validate --for sc\t old", "validate --for scene old"),
    ("load scene pres\t", "load scene presets.def"),
    ("--variants=vari\t keys scene", "--variants=variants keys scene"),
    ("--variants variants --variant fi\t keys", "--variants variants --variant field keys"),
    ("keys 'sc\t", "keys scene"),
    ('keys "sc\t', "keys scene"),
    ("keys s'c\t", "keys scene"),
    ("validate --for='sc\t old", "validate --for=scene old"),
    ("explain scene gain\\[2\t", "explain scene 'gain[2]'"),
    ("explain scene 'gain[2\t", "explain scene 'gain[2]'"),
    ("keys other\t", "keys other"),
    ("load 'my\\ scene' with\\ bl\t", "load 'my\\ scene' 'with blank'"),
])
def test_completes(world, shell, typed, meant):
    world.write("variants", "field: a=b\n")
    world.write("with blank", "")
    assert shell.run(f"morvanectl {DEFINITIONS}{typed}") == shlex.split(DEFINITIONS + meant)


def test_offers_nothing_when_the_definition_files_are_wrong(world, shell):
    world.write("presets.def", "scene preset {")
    assert shell.run(f"morvanectl {DEFINITIONS}keys sc\t") == [*DEFINITIONS.split(), "keys", "sc"]


# To zsh, that would be an index of an array.
@pytest.mark.parametrize("shell", [bash], indirect=True)
def test_bash_completes_behind_a_bracket_without_quotes(shell):
    assert shell.run(f"morvanectl {DEFINITIONS}explain scene gain[2\t") == [
        *DEFINITIONS.split(), "explain", "scene", "gain[2]"]


# What fish 4 would make of it, it does not read itself: there, nothing is completed.
@pytest.mark.parametrize("shell", [fish], indirect=True)
def test_fish_reads_what_it_completes_behind_a_bracket_without_quotes(shell):
    version = subprocess.run(["fish", "--version"], check=True, capture_output=True, text=True)
    closes = int(re.search(r"\d+", version.stdout)[0]) < 4
    assert shell.run(f"morvanectl {DEFINITIONS}explain scene gain[2\t{'' if closes else ']'}") == [
        *DEFINITIONS.split(), "explain", "scene", "gain[2]"]


@pytest.mark.parametrize("shell", [bash], indirect=True)
def test_bash_completes_up_to_the_cursor(shell):
    left = "\x02"
    assert shell.run(f"cd .; morvanectl {DEFINITIONS}keys -s a=b scxy{2 * left}\t") == [
        *DEFINITIONS.split(), "keys", "-s", "a=b", "scenexy"]


@pytest.mark.parametrize("shell", [bash], indirect=True)
@pytest.mark.parametrize("name, quote", [("a'b", "'"), ('a"b', '"'), ("a$b", '"'), ("a`b", '"')])
def test_bash_offers_in_quotes_what_can_stand_there(world, shell, name, quote):
    world.write("presets.def", f"{name} preset {{ }}\n")
    assert shell.run(f"morvanectl {DEFINITIONS}keys {quote}a\t{quote}") == [
        *DEFINITIONS.split(), "keys", "a"]


# No name has a blank or a line feed: they end names in definition files.
HOSTILE = ["a$(>run)", "a`>run`", "a$HOME", "a~", "a*", "a?[b]", "a'", 'a"', "a'b\"", "a\\", "a\\n",
           "a;>run", "a&", "a|b", "a>run", "a!!", "a!b", "a#", "a%s", "a:b=c", "a=b", "ä€"]


@pytest.mark.parametrize("name", HOSTILE)
def test_completes_a_name_of_any_characters_as_itself(world, shell, name):
    world.write("presets.def", f"{name} preset {{ }}\n")
    before = set(world.folder.iterdir())
    assert shell.run(f"morvanectl {DEFINITIONS}keys {name[0]}\t") == [
        *DEFINITIONS.split(), "keys", name]
    assert set(world.folder.iterdir()) - before == {world.folder / "noted"}


def test_lists_names_of_any_characters_without_running_them(world, shell):
    world.write("presets.def", "".join(f"{name} preset {{ }}\n" for name in HOSTILE)
                + "other preset { }\n")
    before = set(world.folder.iterdir())
    command, discard = f"morvanectl {DEFINITIONS}keys ", "\x15"
    assert shell.run(f"{command}a\t\t{discard}{command}o\t") == [
        *DEFINITIONS.split(), "keys", "other"]
    assert set(world.folder.iterdir()) - before == {world.folder / "noted"}


# What the scripts of the shells are told.

COMMANDS = ["load", "load-with-default", "load-default", "store", "store-subpreset", "in-preset",
            "is-preset", "die", "status", "get", "set", "monitor", "handler-check", "check",
            "presets", "keys", "explain", "matrix", "translate", "validate", "diff",
            "release"]
DESCRIPTION = ["-p", "--parameters", "-d", "--presets", "-s", "--system", "--variant", "--variants"]


def run(world, *arguments, environment=None):
    return run_ctl(*arguments, cwd=world.folder, env={**os.environ, **(environment or {})})


def completions(world, *words, environment=None):
    """The candidates for the last of the words after options that name the world's definitions."""
    status, output, problem = run(world, "complete", "--", *DEFINITIONS.split(), *words,
                                  environment=environment)
    assert (status, problem) == (YES, "")
    return output.splitlines()


@pytest.mark.parametrize("words, candidates", [
    ([""], COMMANDS),
    (["--json", ""], COMMANDS),
    (["load-"], ["load-with-default", "load-default"]),
    (["x", ""], []),
    (["die", ""], []),
    (["--"], ["--help", "--version", *(name for name in DESCRIPTION if name.startswith("--")),
              "--address", "--timeout", "--json"]),
    (["presets", "-"], ["-h", "--help", *DESCRIPTION, "--json"]),
    (["die", "-"], ["-h", "--help", "--address", "--timeout", "--json"]),
    (["load-default", "--d"], ["--dry-run"]),
    (["keys", "s"], ["scene", "single", "states"]),
    (["keys", "--", "s"], ["scene", "single", "states"]),
    (["-s", "no-value", "--nonsense", "keys", "s"], ["scene", "single", "states"]),
    (["-s", "a=b", "-s", "a=c", "keys", "s"], ["scene", "single", "states"]),
    (["keys", "[s]"], []),
    (["keys", "scene", ""], []),
    (["explain", "scene", "gain"], ["gain[1]", "gain[2]", "gain[3]"]),
    (["in-preset", "single", "gain[1]", ""], ["mode"]),
    (["store-subpreset", "single", "file", ""], ["mode"]),
    (["set", "gain"], ["gain[1]", "gain[2]", "gain[3]"]),
    (["set", "mode", "gain"], []),
    (["set", "mode", "off", "--status", "gain[1"], ["gain[1]"]),
    (["explain", "nonsense", ""], []),
    (["--system", ""], []),
    (["--address", ""], []),
    (["check", "--all-variants", ""], []),
    (["validate", "--for", "sc"], ["scene"]),
    (["validate", "--for=sc"], ["--for=scene"]),
    (["diff", "file", "--live", "sc"], ["scene"]),
    (["matrix", "--only-"], ["--only-differences"]),
    (["matrix", "--all-variants", "--for", "sc"], ["scene"]),
    (["matrix", "--only", ""], []),
    (["--variant", ""], ["field", "studio"]),
    (["--variant=s"], ["--variant=studio"]),
    (["--variant", "studio", "keys", "sc"], ["scene"]),
])
def test_says_what_may_follow(world, words, candidates):
    world.write("variants", "field: a=b\nstudio: a=c\n")
    assert completions(world, *words) == candidates


@pytest.mark.parametrize("words", [
    ["-p", ""], ["-d", ""], ["--parameters="], ["--variants", "x"], ["load", "scene", "x"],
    ["validate", ""], ["diff", "x", ""], ["translate", "x", "--output", ""],
    ["keys", "--presets="], ["release", "x", ""]])
def test_leaves_the_names_of_files_to_the_shell(world, words):
    assert run(world, "complete", "--", *words) == (NO, "", "")


def test_takes_the_list_of_variants_from_the_environment_and_files_from_the_home(world):
    world.write("list", "field: a=b\n")
    variables = {"MORVANE_VARIANTS": "list", "HOME": str(world.folder)}
    assert completions(world, "--variant", "", environment=variables) == ["field"]
    assert run(world, "complete", "--", "-p", "~/parameters.def", "-d", "~/presets.def", "keys",
               "sc", environment=variables) == (YES, "scene\n", "")


@pytest.mark.parametrize("words, environment", [
    (["--variants", "list"], {}), ([], {"MORVANE_VARIANTS": "list"})])
def test_takes_what_stands_behind_a_wrong_word(world, words, environment):
    world.write("list", "field: a=b\n")
    assert completions(world, "-s", "no-value", *words, "--variant", "",
                       environment=environment) == ["field"]


@pytest.mark.parametrize("name, text, words", [
    ("presets.def", "scene preset {", ["keys", ""]),
    ("parameters.def", "gain what { }", ["explain", "scene", ""]),
    ("variants", "no colon", ["--variant", ""]),
    ("variants", "no colon", ["keys", ""]),
])
def test_is_silent_about_files_that_cannot_be_used(world, name, text, words):
    world.write(name, text)
    assert run(world, "complete", "--", *DEFINITIONS.split(), *words) == (ERROR, "", "")


def test_is_silent_about_what_is_doubtful(world):
    world.write("parameters.def", world.parameters.read_text()
                + "other rw { rangeValid { 0..(unknown) } }\n")
    assert completions(world, "keys", "sc") == ["scene"]


def test_offers_no_name_that_would_reach_the_terminal_as_a_command(world):
    world.write("presets.def", "a\x1b[31m preset { }\na\x7f preset { }\nab preset { }\n")
    assert completions(world, "keys", "a") == ["ab"]


# Help.

HELP = """\
{text}
Usage: {program} {command} [OPTIONS] preset

Positionals:
  preset PRESET REQUIRED      Name of a preset

Options:
  -h,--help                   Print this help message and exit

Common options:
{common}  --json                      Write lists as JSON

"""
DESCRIPTION_HELP = """\
  -p,--parameters FILE=/etc/morvane/parameters.def
                              Parameter definition file
  -d,--presets FILE=/etc/morvane/presets.def
                              Preset definition file
  -s,--system NAME=VALUE ...  A system argument that describes the device; may be repeated
  --variant VARIANT           Describe the device by a named variant; -s replaces its arguments
  --variants FILE (Env:MORVANE_VARIANTS)
                              List of named variants; without it, the file variants beside the \
parameter definition file, if it is there
"""
CALL_HELP = """\
  --address TEXT              Bus to use instead of the session bus
  --timeout SECONDS           Give up what the bus or a service does not answer within this time
"""


@pytest.mark.parametrize("command, text, common", [
    ("keys", "List the keys of a preset", DESCRIPTION_HELP),
    ("is-preset", "Ask whether there is a preset", DESCRIPTION_HELP + CALL_HELP),
])
def test_help_of_a_command_shows_the_options_that_it_takes(world, command, text, common):
    program = CTL[-1]
    status, output, problem = run(world, command, "--help")
    # Versions of CLI11 differ in how they show a default, and in the last line.
    shown = re.sub(r"FILE \[(.*)\] ?\n", r"FILE=\1\n", output).rstrip("\n") + "\n\n"
    assert (status, shown, problem) == (
        YES, HELP.format(text=text, program=program, command=command, common=common), "")


@pytest.mark.parametrize("command, described, calling", [
    *((name, False, True) for name in ("die", "get", "set", "monitor")),
    *((name, True, False) for name in ("check", "presets", "keys", "explain", "matrix",
                                       "translate", "validate")),
    *((name, True, True) for name in ("load", "load-with-default", "load-default", "store",
                                      "store-subpreset", "in-preset", "is-preset", "status",
                                      "handler-check", "diff"))])
def test_every_command_shows_its_own_options_and_those_of_the_program(world, command, described,
                                                                      calling):
    output = run(world, command, "--help")[1]
    common = output.partition("\nCommon options:\n")[2]
    assert re.findall(r"(?m)^  (-\S+)", common) == [
        *(["-p,--parameters", "-d,--presets", "-s,--system", "--variant", "--variants"]
          if described else []), *(["--address", "--timeout"] if calling else []), "--json"]
    own = [name for name in completions(world, command, "--") if f"{name} " in output]
    assert own == completions(world, command, "--")


MORE = "Run with --help for more information.\n"


@pytest.mark.parametrize("arguments, problem", [
    (["laod", "scene", "file"], "there is no command laod; did you mean load?"),
    (["--json", "-s", "a=b", "preset"], "there is no command preset; did you mean presets?"),
    (["complet"], "there is no command complet"),
    (["--nonsense", "laod"], "A subcommand is required"),
    ([], "A subcommand is required"),
])
def test_names_a_mistyped_command(world, arguments, problem):
    status, output, said = run(world, *(word for word in arguments if word != "--json"))
    assert (status, output, said) == (ERROR, "", f"{problem}\n{MORE}")
    status, output, said = run(world, *arguments, "--json")
    assert (status, output) == (ERROR, "")
    assert said == ('{"file":null,"line":null,"column":null,"severity":"error","code":null,'
                    f'"text":"{problem}","variants":[]}}\n')


# Colours.

PLAIN = """\
parameters.def:1:6: error: Invalid parameter access type
gain what { }
     ^
parameters.def:1:6: note: the access type is index, ro, rostrict, rw or wo
"""
COLOURED = """\
parameters.def:1:6: \x1b[1;31merror:\x1b[0m Invalid parameter access type
gain what { }
     \x1b[1;31m^\x1b[0m
parameters.def:1:6: \x1b[1;36mnote:\x1b[0m the access type is index, ro, rostrict, rw or wo
"""
WARNING = ("nothing gives a value to unknown, which parameters.def uses; describe the device with "
           "--system or --variant\n")


def on_terminal(world, command, **environment):
    """What a terminal shows of a command of a shell, with {ctl} for morvanectl."""
    variables = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
    output, status = pexpect.run(
        shlex.join(["sh", "-c", command.format(ctl=shlex.join(map(str, CTL)))]),
        timeout=DEADLINE_SECONDS, withexitstatus=True, encoding="utf-8", cwd=str(world.folder),
        env={**variables, "TERM": "xterm", **environment})
    return status, output.replace("\r\n", "\n")


@pytest.mark.parametrize("environment, shown", [
    ({}, COLOURED), ({"NO_COLOR": ""}, COLOURED), ({"NO_COLOR": "0"}, PLAIN),
    ({"TERM": "dumb"}, PLAIN), ({"TERM": ""}, PLAIN)])
@pytest.mark.parametrize("command", ["check", "presets"])  # on standard output, on standard error
def test_colours_findings_on_a_terminal(world, command, environment, shown):
    world.write("parameters.def", "gain what { }\n")
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}{command}", **environment) == (ERROR, shown)


def test_each_stream_has_colours_by_itself(world):
    world.write("parameters.def", "gain what { }\n")
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}presets | cat") == (YES, COLOURED)
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}presets 2>&1 | cat") == (YES, PLAIN)
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}check 2>/dev/null") == (ERROR, COLOURED)
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}check | cat") == (YES, PLAIN)
    assert run(world, *DEFINITIONS.split(), "check", environment={"TERM": "xterm"}) == (
        ERROR, PLAIN, "")


def test_colours_the_word_warning(world):
    world.write("parameters.def", "gain rw { rangeValid { 0..(unknown) } }\n")
    world.write("presets.def", "")
    world.write("presets.def", "scene preset { }\n")
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}presets") == (
        YES, f"morvanectl: \x1b[1;35mwarning:\x1b[0m {WARNING}scene\n")
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}presets 2>&1 | cat") == (
        YES, f"morvanectl: warning: {WARNING}scene\n")
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}check | tail -n 3")[1] == (
        "parameters.def:1:28: warning: nothing gives a value to unknown, so what uses it cannot be "
        "computed\ngain rw { rangeValid { 0..(unknown) } }\n                           ^\n")
    assert on_terminal(world, f"{{ctl}} {DEFINITIONS}check") == (
        YES, "parameters.def:1:28: \x1b[1;35mwarning:\x1b[0m nothing gives a value to unknown, so "
        "what uses it cannot be computed\ngain rw { rangeValid { 0..(unknown) } }\n"
        "                           \x1b[1;35m^\x1b[0m\n")


def test_json_has_no_colours(world):
    world.write("parameters.def", "gain what { }\n")
    for command in ("check", "presets", "nonsense"):
        assert "\x1b" not in on_terminal(world, f"{{ctl}} {DEFINITIONS}{command} --json")[1]
