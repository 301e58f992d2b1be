"""What morvanectl says is what the daemon and the Parameter Handler do, on generated devices."""

import json
import subprocess

import pytest
from generated_device import generate
from harness import CTL, EMULATOR, RemoteError, wait_until

YES, NO, ERROR = 0, 1, 2
DEVICES = 60 if EMULATOR else 300
KEYS_ASKED = 3  # of a preset, and of a file
ATTEMPTS = 10  # of the daemon, before it gives up
PIECE = 1023  # bytes of a line that the daemon reads at once


class Tool:
    """Runs commands of morvanectl on one device, all at the same time."""

    def __init__(self, world, device):
        self.world, self.running = world, {}
        self.options = ["-p", "parameters.def", "-d", "presets.def"]
        for argument in device.arguments:
            self.options += ["-s", argument]

    def start(self, name, *arguments):
        self.running[name] = subprocess.Popen(
            [*CTL, *arguments, *self.options], cwd=self.world.folder, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.world.bus.environment())

    def answer(self, name):
        """The status and the JSON value that a command wrote; none of one that failed."""
        process = self.running.pop(name)
        output, problems = process.communicate()
        assert process.returncode in (YES, NO, ERROR), (process.args, problems)
        return process.returncode, json.loads(output) if process.returncode != ERROR else None


def calls_of(handler, begin):
    """The calls since the given one, as a dry run shows them."""
    calls = []
    for name, *rest in handler.calls()[begin:]:
        lists = [value if isinstance(value, list) else [value] for value in rest[1:]]
        calls.append({"method": name, **dict(zip(("keys", "values"), lists))})
    return calls


class Comparison:
    """One device, with the daemon, the simulator and the tool."""

    def __init__(self, world, seed):
        self.world, self.device = world, generate(seed)
        world.write("parameters.def", self.device.parameters)
        world.write("presets.def", self.device.presets)
        self.handler = world.simulator(*self.device.arguments)
        self.daemon = world.daemon(*self.device.arguments)
        self.user = world.client()
        self.tool = Tool(world, self.device)
        self.preset = self.device.names[seed % len(self.device.names)]
        self.file = str(world.folder / "data")

    def write_data(self):
        self.world.write("data", b"half=" if self.device.has_backup else self.device.data)
        if self.device.has_backup:
            self.world.write("data_bak", self.device.data)

    def is_read_only(self, key):
        return key.split("[")[0] in self.device.read_only

    def refusal(self, key, value):
        """What the Parameter Handler says to a value; nothing if it takes it. It is not kept."""
        transaction = self.user.handler("start")
        method = "set_status" if self.is_read_only(key) else "set"
        answer = self.user.handler(method, "(uss)", transaction, key, value)
        self.user.handler("end", "(u)", transaction)
        return answer.message if isinstance(answer, RemoteError) else None

    def is_unknown(self, key):
        return isinstance(self.user.handler("single_get", "(s)", key), RemoteError)

    # The definitions

    def compare_presets(self):
        """@return the keys of the preset; none without it."""
        self.tool.start("presets", "presets", "--json")
        self.tool.start("keys", "keys", self.preset, "--json")
        _, presets = self.tool.answer("presets")
        assert (presets or []) == sorted(
            name for name in self.device.names if self.user.preset("is_preset", name))
        status, keys = self.tool.answer("keys")
        assert (status == YES) == (self.preset in (presets or []))
        if keys:
            begin = len(self.handler.calls())
            self.user.preset("store", self.preset, str(self.world.folder / "stored"))
            asked = next(call for call in self.handler.calls()[begin:] if "get" in call[0])
            assert keys == (asked[-1] if isinstance(asked[-1], list) else [asked[-1]])
        return keys or []

    def compare_keys(self, keys):
        data = self.device.data.decode(errors="replace").splitlines()
        texts = sorted({line.split("=")[0] for line in data if 0 < line.find("=") < 100
                        and line.isprintable()})
        asked = dict.fromkeys([*keys[:KEYS_ASKED], *texts[:KEYS_ASKED]])
        for key in asked:
            self.tool.start(key, "explain", self.preset, key, "--json")
        for key in asked:
            status, answer = self.tool.answer(key)
            if answer is None:
                continue
            covered = self.user.preset("in_preset", self.preset, [key])
            assert (status, answer["covered"]) == (YES if covered else NO, covered), answer
            reasons = answer["reasons"]
            assert covered == (reasons[-1] == "no exclude list takes it away" or any(
                "added by the include list" in reason for reason in reasons)), answer

    # A preset data file

    def compare_lines(self, keys):
        """What becomes of each line, and what the Parameter Handler says to it.
        @return what is sent, and the part of it that the Parameter Handler refuses."""
        _, lines = self.tool.answer("translate")
        self.compare_coverage(lines, self.tool.answer("any")[1])
        status, findings = self.tool.answer("validate")
        assert status == (NO if any(f["severity"] == "warning" for f in findings) else YES)
        sent, refused = [], []
        for line in lines:
            codes = {f["code"] for f in findings if self.is_about(f, line)}
            if line["after"] is None:
                assert not codes & {"bad-value", "undecided-value", "set-twice"}, (line, codes)
                continue
            pair = line["after"].split("=", 1)
            assert pair[0] in keys
            sent.append(pair)
            if self.compare_line(line, pair, codes):
                refused.append(pair)
        return sent, refused

    @staticmethod
    def is_about(finding, line):
        """Lines have two pieces at most."""
        return finding["line"] == line["line"] and (
            (finding["column"] > PIECE) == (line["column"] > PIECE))

    def compare_line(self, line, pair, codes):
        """@return whether the Parameter Handler refuses the value, or does not know the key."""
        refusal = self.refusal(*pair)
        if refusal is None:
            assert not codes & {"bad-value", "unknown-key"}, (line, codes)
        elif refusal.endswith(f"unknown parameter {pair[0]}"):
            assert "unknown-key" in codes, (line, codes)
        else:
            assert codes & {"bad-value", "undecided-value"}, (line, codes)
        return refusal is not None

    def compare_coverage(self, lines, lines_of_any):
        """A line is kept for some preset or for this one, or for none."""
        assert len(lines) == len(lines_of_any)
        for line, of_any in zip(lines, lines_of_any):
            if of_any["after"] is None:
                assert line["after"] is None, (line, of_any)
                continue
            key = of_any["after"].split("=", 1)[0]
            assert any(self.user.preset("in_preset", name, [key]) for name in self.device.names)
            assert (line["after"] is not None) == self.user.preset(
                "in_preset", self.preset, [key]), line

    def expected_calls(self, calls, refused):
        """The calls of a dry run, up to the one that the Parameter Handler refuses ten times."""
        expected = []
        for call in calls:
            keys = call.get("keys", [])
            pairs = [list(pair) for pair in zip(keys, call.get("values", []))]
            if (any(pair in refused for pair in pairs)
                    or "reset" in call["method"] and any(map(self.is_unknown, keys))):
                return expected + [call] * ATTEMPTS, False
            expected.append(call)
        return expected, True

    def compare_load(self, method, dry_run, sent, refused):
        """@return whether the load succeeds."""
        status, calls = dry_run
        expected, succeeds = self.expected_calls(calls or [], refused)
        pairs = [[key, value] for call in calls or [] if "values" in call
                 for key, value in zip(call["keys"], call["values"])]
        if status == YES and pairs:
            assert pairs == sorted(sent, key=lambda pair: self.is_read_only(pair[0]))
        begin = len(self.handler.calls())
        answer = self.user.preset(method, self.preset, self.file)
        if status == YES and succeeds:
            assert answer is True
            if calls:
                wait_until(lambda: "end" in self.handler.methods()[begin:], "the end of the load")
        else:
            assert isinstance(answer, RemoteError)
        assert calls_of(self.handler, begin) == expected
        return status == YES and succeeds

    def compare_loads(self, keys):
        # All are about the file and the values before the first load, which puts the backup back.
        self.tool.start("translate", "translate", "data", "--json", "--for", self.preset)
        self.tool.start("any", "translate", "data", "--json")
        self.tool.start("validate", "validate", "data", "--json", "--for", self.preset)
        self.tool.start("diff", "diff", "data", "--live", self.preset, "--json")
        self.tool.start("load", "load", self.preset, "data", "--dry-run", "--json")
        self.tool.start("defaults", "load-with-default", self.preset, "data", "--dry-run", "--json")
        sent, refused = self.compare_lines(keys)
        status, changes = self.tool.answer("diff")
        load, load_with_default = self.tool.answer("load"), self.tool.answer("defaults")
        before = {key: self.user.handler("single_get", "(s)", key) for key in keys}
        if self.compare_load("load", load, sent, refused):
            assert status in (YES, NO)
            after = {key: self.user.handler("single_get", "(s)", key) for key in keys}
            assert after == before | {change["key"]: change["first"] for change in changes}
            assert all(before[c["key"]] == c["second"] != c["first"] for c in changes)
        self.compare_load("load_with_default", load_with_default, sent, refused)


@pytest.mark.parametrize("seed", range(DEVICES))
def test_agrees_with_the_daemon(world, seed):
    comparison = Comparison(world, seed)
    keys = comparison.compare_presets()
    comparison.compare_keys(keys)
    comparison.write_data()
    if keys:
        comparison.compare_loads(keys)
