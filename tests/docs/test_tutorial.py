"""The tutorial and the guide to releases, typed as they are written in an empty folder: the output
is what they say."""

import re
import subprocess

import pytest
from harness import DEADLINE_SECONDS, SOURCE, tools_on_path, without_notices


def steps_of(guide):
    """The commands of a guide with what they print."""
    text, found = (SOURCE / f"docs/{guide}.md").read_text(), []
    for block in re.findall(r"^```console\n(.*?)^```$", text, re.MULTILINE | re.DOTALL):
        inside = None  # the end of a here document
        for line in block.splitlines():
            if inside is not None:
                found[-1][0].append(line)
                inside = None if line == inside else inside
            elif line.startswith("$ "):
                found.append(([line[2:]], []))
                document = re.search(r"<<'(\w+)'$", line)
                inside = document and document[1]
            elif line.startswith("> "):
                found[-1][0].append(line[2:])
            else:
                found[-1][1].append(line)
    return [("\n".join(command), "".join(text + "\n" for text in output))
            for command, output in found]


def until_lines(count):
    """A loop until the monitor has written so many lines."""
    return f'until [ "$(cat changes 2>/dev/null | wc -l)" -ge {count} ]; do :; done'


def waits_before(command):
    """What has happened by the time that somebody has typed the command."""
    return [until_lines(6)] if command == "cat changes" else []


@pytest.mark.parametrize("guide", ["tutorial", "release"])
def test_every_step_prints_what_the_guide_says(world, guide):
    steps = steps_of(guide)
    # Job control, as an interactive shell has it, for "kill %1".
    script = ["set -m"]
    for number, (command, _) in enumerate(steps):
        script += [f"status=$?; echo '=== {number}'", *waits_before(command), "(exit $status)",
                   command]  # which may show the status of the last one
        if command.startswith("kill "):
            # The next job is to have its number. One that has ended may be known no more.
            script.append(f"wait {command.split()[1]} 2>/dev/null")
        elif command.startswith("morvanectl monitor "):
            script.append(until_lines(2))  # it listens
        elif command == "morvanectl die":  # the next daemon needs the name
            script.append("while morvanectl status | grep -q 'preset: running'; do :; done")
    folder = world.folder / "empty"
    folder.mkdir()
    printed_file = world.folder / "printed"  # a pipe would stay open as long as any process
    with printed_file.open("w") as output:
        subprocess.run(
            ["bash", "-c", "\n".join(script)], cwd=folder, check=False, stdout=output,
            stderr=subprocess.STDOUT, timeout=5 * DEADLINE_SECONDS,  # of all steps together
            env=world.bus.environment(PATH=tools_on_path(world.folder)))
    without_jobs = re.sub(r"^\[\d+\].*\n", "", without_notices(printed_file.read_text()),
                          flags=re.MULTILINE)
    printed = re.split(r"^=== \d+\n", without_jobs, flags=re.MULTILINE)[1:]
    assert list(zip([command for command, _ in steps], printed)) == steps
    assert len(steps) > 20
