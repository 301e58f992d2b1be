"""Definition files, system arguments and preset data files made from a seed: what an engineer might
write, and what nobody should."""

import random
from dataclasses import dataclass, field

INDICES = ("i0", "i1", "i2")
CONDITIONS = (  # met or not met on some variants, not decided, malformed, or about nothing
    "1", "0", 'model == "a"', 'model != "a"', "n > 1", "n == 2 || n == 4", "n % 2", "8 / n",
    "p0 == 1", "i0 != 0", "p1 ==", "model ==", "1 2", "(n", "unknown == 1", "n && unknown")
SPANS = (
    "0..9", "0..9", "0..9", "1..3", "-5..5", "(n)..9", "0..(n * 2)", "0..(p0)", "0..(unknown)", "7",
    "0x10", "5..1", '"on"', '"off"', '"auto"', "(model)", "(n + 1)")
VALUES = (
    "0", "1", "3", "5", "7", "9", "10", "16", "0x7", "-5", "-6", "on", "off", "auto", "a", "5 ",
    "=", "old", "5\t", "1" * 1100, "x" * 1015 + "p0=1")
VALUE_SETS = ("", " { 1 }", " { 1, 2 }", " { 0..2 }", " { 9 }", " { on }")
VALUE_MAPS = ("", " { old = on }", " { 1 = 5, 5 = 1 }", ' { on = "a b" }')
INDEX_VALUES = ("0", "1", "1", "2", "3", "5", "9", "on")
OLD_NAMES = ("old0", "old1", "old2", "gone")


@dataclass
class Parameter:
    name: str
    access: str
    indices: list
    text: str


@dataclass
class GeneratedDevice:
    """What one seed gives."""

    parameters: str
    presets: str
    arguments: list
    data: bytes
    has_backup: bool
    names: list = field(default_factory=list)  # of the presets
    read_only: set = field(default_factory=set)  # names of parameters


def generate(seed):
    return Generator(random.Random(seed)).device()


class Generator:
    """Makes the parts of a device, one after the other."""

    def __init__(self, chance):
        self.chance = chance

    def device(self):
        parameters = [self._parameter(number) for number in range(self.chance.randint(4, 9))]
        indices = "".join(self._index(name) for name in INDICES)
        names = [f"s{number}" for number in range(self.chance.randint(1, 3))]
        presets = "".join(self._preset(name, parameters) for name in names)
        return GeneratedDevice(
            parameters=indices + "".join(p.text for p in parameters),
            presets=self._translate(parameters) + presets, arguments=self._arguments(),
            data=self._data(parameters), has_backup=self._happens(0.2), names=names,
            read_only={p.name for p in parameters if p.access in ("ro", "rostrict")})

    def _happens(self, probability):
        return self.chance.random() < probability

    def _some(self, choices, most):
        return self.chance.sample(choices, self.chance.randint(1, min(most, len(choices))))

    def _condition(self, attribute, probability):
        """Malformed ones keep their parentheses: those that end nowhere are errors of a file."""
        if not self._happens(probability):
            return ""
        condition = self.chance.choice(CONDITIONS)
        return f"{attribute} ({condition.replace('(n', '( ) n')}) "

    def _range(self, probability):
        items = ", ".join(self._some(SPANS, 3))
        return f"rangeValid {self._condition('', probability)}{{ {items} }} "

    def _index(self, name):
        ranges = f"rangeValid {{ {self.chance.choice(('1..3', '0..(n)', '1, 2', '5'))} }} "
        if self._happens(0.4):
            ranges += f"rangeValid {self._condition('', 0.9)}{{ {self.chance.choice(SPANS)} }} "
        return f"{name} index {{ {self._condition('ctrlValid', 0.2)}{ranges}}}\n"

    def _parameter(self, number):
        name = f"p{number}"
        access = self.chance.choice(("rw", "rw", "rw", "ro", "rostrict", "wo"))
        indices = [self.chance.choice(INDICES) for _ in range(self.chance.choice((0, 0, 1, 1, 2)))]
        if self._happens(0.01):
            indices = ["i9"]
        text = f"{name} {access} {{ {self._condition('ctrlValid', 0.3)}"
        text += "".join(f"index {{ {index} }} " for index in indices)
        text += "".join(self._range(0.5) for _ in range(self.chance.choice((0, 1, 1, 2))))
        if self._happens(0.6):
            text += f"default {{ {self.chance.choice(('0', '1', '5', '99'))} }} "
        return Parameter(name, access, indices, text + "}\n")

    def _clause(self, indices):
        """An index clause that can be written for a parameter with these indices."""
        if not indices:
            return "index { none }"
        selectors = []
        for index in dict.fromkeys(self._some(indices, 2)):
            values = self.chance.choice(VALUE_SETS)
            selectors.append(self.chance.choice(("", "not ")) + index + values)
        return f"index {{ {', '.join(selectors)} }}"

    def _list(self, parameters):
        items = []
        for parameter in self._some(parameters, 3) if parameters else []:
            count = self.chance.choice((0, 0, 1, 2))
            clauses = [self._clause(parameter.indices) for _ in range(count)]
            items.append(parameter.name + (f" {{ {' '.join(clauses)} }}" if clauses else ""))
        if self._happens(0.2) or not items:
            items.append(self._clause([self.chance.choice(INDICES)]))
        if self._happens(0.05):
            items.append("all")
        return ", ".join(items)

    def _preset(self, name, parameters):
        lists = ""
        for kind, access in (("include", ("ro", "rostrict")), ("exclude", ("rw",))):
            for _ in range(self.chance.choice((0, 1, 1, 2))):
                fitting = [p for p in parameters if p.access in access]
                lists += f"{kind} {'ro' if 'ro' in access else 'rw'} {{ {self._list(fitting)} }} "
        return f"{name} preset {{ {lists}}}\n"

    def _template(self, parameter):
        texts = (f"{index} = {self.chance.choice(('1', '2', 'idx::0', 'idx::1', 'idx::7'))}"
                 for index in dict.fromkeys(parameter.indices))
        return f"index {self.chance.randint(0, 2)} {{ {', '.join(texts)} }} "

    def _translate(self, parameters):
        if self._happens(0.3):
            return ""
        parts = "removed { gone } " if self._happens(0.5) else ""
        old_names = list(OLD_NAMES[:3])
        for parameter in self._some([p for p in parameters if p.access != "wo"] or parameters, 3):
            values = self.chance.choice(VALUE_MAPS)
            mapping = f"from {{ {old_names.pop()}{values} }} "
            if parameter.indices and self._happens(0.7):
                mapping += self._template(parameter)
            parts += f"{parameter.name} {{ {mapping}}} "
        return f"translate {{ {parts}}}\n"

    def _arguments(self):
        arguments = [f"model={self.chance.choice('ab')}", f"n={self.chance.randint(0, 4)}"]
        return [argument for argument in arguments if self._happens(0.9)]

    def _key(self, parameters):
        name = self.chance.choice([p.name for p in parameters] * 3 + list(OLD_NAMES)
                                  + [*INDICES, "nowhere", ""])
        count = next((len(p.indices) for p in parameters if p.name == name), 0)
        if self._happens(0.15):
            count = self.chance.randint(0, 3)
        values = [self.chance.choice(INDEX_VALUES) for _ in range(count)]
        junk = self.chance.choice(("x", " ", "[", "\t")) if self._happens(0.05) else ""
        return name + "".join(f"[{value}]" for value in values) + junk

    def _line(self, parameters):
        if self._happens(0.06):
            return self.chance.choice((b"", b"# comment", b"# p0=1", b"no entry", b"p0=", b"=1",
                                       b"p0=1\0x", b"#" * 1500, b"p0=1\r"))
        value = self.chance.choice(VALUES).encode()
        if self._happens(0.005):
            value += b"\xff"
        return self._key(parameters).encode() + b"=" + value

    def _good_line(self, parameters):
        parameter = self.chance.choice(parameters)
        name, count = parameter.name, len(parameter.indices)
        if self._happens(0.2):
            name, count = self.chance.choice(OLD_NAMES), self.chance.randint(0, 2)
        key = name + "".join(f"[{self.chance.randint(1, 2)}]" for _ in range(count))
        return f"{key}={self.chance.choice('123')}".encode()

    def _data(self, parameters):
        """Half of the files have nothing but what many loads take: of the others, little more is
        seen than that the first value is refused."""
        make = self.chance.choice((self._line, self._good_line))
        lines = [make(parameters) for _ in range(self.chance.randint(1, 12))]
        return b"\n".join(lines) + (b"\n" if self._happens(0.9) else b"")
