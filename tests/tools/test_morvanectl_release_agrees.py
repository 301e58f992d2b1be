"""What `morvanectl release` says of keys and values is what a store of the older release writes,
and what a load by the daemon of the newer one does with it, on generated pairs of releases."""

import json
import re

import pytest
from generated_release import generate_releases
from harness import SLOW_STARTS, RemoteError, run_ctl
from pages import data_of, rows_of

YES, NO, ERROR = 0, 1, 2
PAIRS = 60 if SLOW_STARTS else 300
VALUES = ("0", "1", "2", "3", "5", "6", "7", "8", "9", "10", "16", "-5", "-6", "on", "off", "auto",
          "a", "b", "old", "else")
MAPPED = ("old", "1", "5", "on")  # by some translate sections
VALUES_LOADED = 3  # of a parameter
DROPPED = {"unlisted", "absent", "unmapped", "bad-mapping", "no-instance", "removed",
           "not-in-preset", "read-only"}
SET = {"renamed", "re-indexed", "renamed-re-indexed", "kept", "unknown-key"}
NEW = {"new", "new-without-default"}


class Running:
    """Daemon and simulator of one release."""

    def __init__(self, world, folder, arguments):
        files = {name: folder / f"{name}.def" for name in ("parameters", "presets")}
        self.arguments = ["-p", files["parameters"], "-d", files["presets"]]
        for argument in arguments:
            self.arguments += ["-s", argument]
        self.simulator = world.simulator(*arguments, parameters=files["parameters"])
        self.daemon = world.daemon(*arguments, name=f"{folder.name}-daemon", **files)
        self.user = world.client()

    def stop(self):
        self.daemon.kill()
        self.simulator.stop()

    def keys(self, preset):
        """Those of a preset that the Parameter Handler knows, and whether these are all."""
        status, output, _ = run_ctl("keys", preset, "--json", *self.arguments)
        keys = json.loads(output) if status == YES else []
        known = [key for key in keys
                 if not isinstance(self.user.handler("single_get", "(s)", key), RemoteError)]
        return known, len(known) == len(keys)

    def accepts(self, key, value):
        """Whether the Parameter Handler takes a value, which is not kept."""
        transaction = self.user.handler("start")
        accepted = any(
            not isinstance(self.user.handler(method, "(uss)", transaction, key, value), RemoteError)
            for method in ("set", "set_status"))
        self.user.handler("end", "(u)", transaction)
        return accepted

    def load(self, method, preset, file, text):
        """@return whether the load succeeds, and the lists of its first call of each kind."""
        file.write_text(text)
        begin = self.simulator.position()
        succeeds = self.user.preset(method, preset, str(file)) is True
        lists = {}
        for name, *rest in self.simulator.calls(begin):
            values = [value if isinstance(value, list) else [value] for value in rest[1:]]
            lists.setdefault(name.removesuffix("_bulk"), values)
        return succeeds, lists


def is_one_of(value, texts):
    """Whether a value is one that a list such as `1..3, "on"` has. A store writes numbers in
    decimal."""
    for text in re.findall(r'"[^"]*"|[^,\s]+', texts):
        low, _, high = text.partition("..")
        is_number = re.fullmatch(r"-?\d+", low) and re.fullmatch(r"-?\d+", value)
        if text == f'"{value}"' or is_number and int(low) <= int(value) <= int(high or low):
            return True
    return False


def is_named(value, texts):
    """Whether the texts of a row, such as `1..3`, `"on" -> 1` and `all but 0`, mean a value."""
    mapped = [text.partition(" -> ")[0] for text in texts if " -> " in text]
    if is_one_of(value, ", ".join(mapped)):
        return True
    return any(not is_one_of(value, text.removeprefix("all but ")) if text.startswith("all but ")
               else is_one_of(value, text)
               for text in texts if " -> " not in text)


class Comparison:
    """What one report says of one preset, and what the newer release does."""

    def __init__(self, report, new, file):
        self.report, self.new, self.file = report, new, file
        self.followed = set()  # parameters of which values have been loaded

    def rows(self, preset, fates):
        return [row for row in self.report["rows"] if row["fate"] in fates
                and any(preset in place["presets"] for place in row["places"])]

    def pairs(self, preset, fates):
        return [(key["before"], key["after"])
                for row in self.rows(preset, fates) for key in row["keys"]]

    def is_read_only(self, key):
        transaction = self.new.user.handler("start")
        answer = self.new.user.handler("reset_status", "(us)", transaction, key)
        self.new.user.handler("end", "(u)", transaction)
        return not isinstance(answer, RemoteError)

    def compare_keys(self, preset, keys):
        """Each key has one fate as a key; a load sets those that are set, and no others."""
        dropped, loaded = self.pairs(preset, DROPPED), self.pairs(preset, SET)
        assert sorted(before for before, _ in dropped + loaded) == sorted(keys)
        assert all(after is None for _, after in dropped)
        after = dict(loaded)
        status = {key for key in after.values() if self.is_read_only(key)}
        unknown = {after for _, after in self.pairs(preset, {"unknown-key"})}
        for is_status in False, True:
            lines = [key for key in keys if key not in after
                     or (after[key] in status | unknown) == is_status]
            _, calls = self.new.load("load", preset, self.file,
                                     "".join(f"{key}=x\n" for key in lines))
            called = calls.get("set_status" if is_status else "set", [[]])[0]
            assert called == [after[key] for key in lines if key in after]
        twice = {key for key in after.values() if list(after.values()).count(key) > 1}
        assert {after for _, after in self.pairs(preset, {"set-twice"})} == twice
        return loaded

    def compare_new(self, preset, loaded, all_known):
        """A load with defaults resets what no key becomes."""
        new = {after for _, after in self.pairs(preset, NEW)}
        values = {before: next((value for value in VALUES if value not in MAPPED
                                and self.new.accepts(after, value)), None)
                  for before, after in loaded}
        if not all_known or None in values.values():
            return  # it would fail before
        succeeds, calls = self.new.load("load_with_default", preset, self.file, "".join(
            f"{key}={value}\n" for key, value in values.items()))
        reset = [key for name in ("reset", "reset_status") for key in calls.get(name, [[]])[0]]
        assert succeeds and set(reset) == new

    def compare_values(self, preset, accepted):
        """A load of a value fails if it is named as one that is not valid, and only then."""
        for row in self.rows(preset, SET - {"unknown-key"}):
            before = row["keys"][0]["before"]
            if row["parameter"] in self.followed:
                continue
            self.followed.add(row["parameter"])
            said = {fate: [text for other in self.rows(preset, {fate})
                           if before in [key["before"] for key in other["keys"]]
                           for text in other["values"]]
                    for fate in ("bad-value", "undecided-value", "value-mapped")}
            for value in accepted.get(before, [])[:VALUES_LOADED]:
                succeeds, calls = self.new.load("load", preset, self.file, f"{before}={value}\n")
                sent = (calls.get("set") or calls["set_status"])[1][0]
                case = (self.report, before, value, sent)
                assert (sent != value) == is_named(value, said["value-mapped"]), case
                if is_named(value, said["bad-value"]):
                    assert not succeeds, case
                elif not (is_named(value, said["undecided-value"])
                          or any("bound" in text for text in said["undecided-value"])):
                    assert succeeds, case


@pytest.mark.parametrize("seed", range(PAIRS))
def test_agrees_with_the_daemons_of_both_releases(world, seed):
    pair = generate_releases(seed)
    for name, texts in ("old", pair.old), ("new", pair.new):
        (world.folder / name).mkdir()
        for file, text in zip(("parameters.def", "presets.def"), texts):
            (world.folder / name / file).write_text(text)
    options = [option for argument in pair.arguments for option in ("-s", argument)]

    def release(*option):
        return run_ctl("release", "old", "new", *option, *options, cwd=world.folder)

    status, output, problems = release("--json")
    old = Running(world, world.folder / "old", pair.arguments)
    keys = {preset: old.keys(preset)[0] for preset in pair.presets}
    accepted = {key: [value for value in VALUES if old.accepts(key, value)]
                for key in {key for of_preset in keys.values() for key in of_preset}}
    old.stop()
    new = Running(world, world.folder / "new", pair.arguments)
    if status == ERROR:  # one of the daemons cannot use its definitions either
        assert not any(keys.values()) or not any(
            new.user.preset("is_preset", preset) for preset in [*pair.presets, "fresh"]), problems
        return
    report, = json.loads(output)
    assert release("--html", "page")[:2] == (status, "")
    data = data_of((world.folder / "page").read_text())
    assert rows_of(data, data["releases"][0]) == report["rows"]
    is_lost = any(row["lost"] for row in report["rows"]) or bool(report["gonePresets"])
    assert (status, report["lost"]) == (NO if is_lost else YES, is_lost)
    gone = {preset for place in report["gonePresets"] for preset in place["presets"]}
    comparison = Comparison(report, new, world.folder / "file")
    for preset in pair.presets:
        is_there = new.user.preset("is_preset", preset)
        assert (preset in gone) == (bool(keys[preset]) and not is_there)
        if keys[preset] and is_there:
            loaded = comparison.compare_keys(preset, keys[preset])
            comparison.compare_new(preset, loaded, new.keys(preset)[1])
            comparison.compare_values(preset, accepted)
    # What is suggested can be pasted, and settles all that can be.
    with (world.folder / "new/presets.def").open("a") as presets:
        presets.write(release("--suggest")[1])
    status, output, problems = release("--suggest")
    assert (status in (YES, NO), output) == (True, ""), problems
    report, = json.loads(release("--json")[1])
    assert not [row for row in report["rows"] if row["fate"] == "unlisted"]
