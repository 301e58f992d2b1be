"""Two releases of a generated device: what changes from one to the next, with and without a word in
the translate section."""

import random
from dataclasses import dataclass

from generated_device import INDICES, VALUE_MAPS, Generator

CHANGES = ("same",) * 3 + ("other",) * 4 + ("renamed",) * 4 + ("removed", "gone")
EVERYTHING = "preset { include ro { all } }"


@dataclass
class GeneratedReleases:
    """What one seed gives. The definition files are texts."""

    old: tuple  # parameters, presets
    new: tuple
    arguments: list
    presets: list  # names of the older release


def generate_releases(seed):
    return _ReleaseGenerator(random.Random(seed)).releases()


class _ReleaseGenerator(Generator):
    def releases(self):
        before = [self._parameter(number) for number in range(self.chance.randint(4, 9))]
        names = [f"s{number}" for number in range(self.chance.randint(1, 3))]
        after = []
        changes = [self._change(number, parameter, after)
                   for number, parameter in enumerate(before)]
        after.append(self._parameter(len(before)))
        indices = [self._index(name) for name in INDICES]
        new_indices = [self._index(name) if self._happens(0.2) else text
                       for name, text in zip(INDICES, indices)]
        # Some presets go, and one comes; both releases have the first.
        others = [name for name in names[1:] if self._happens(0.8)]
        return GeneratedReleases(
            old=("".join(indices + [p.text for p in before]), self._presets(names, before)),
            new=("".join(new_indices + [p.text for p in after]),
                 self._translation([change for change in changes if change])
                 + self._presets([names[0], *others, "fresh"], after)),
            arguments=self._arguments(), presets=names)

    def _parameter(self, number):
        parameter = super()._parameter(number)
        # With an index that is not defined, neither release would have a preset.
        return self._parameter(number) if "i9" in parameter.indices else parameter

    def _presets(self, names, parameters):
        return "".join(f"{name} {EVERYTHING}\n" if self._happens(0.5)
                       else self._preset(name, parameters) for name in names)

    def _translation(self, changes):
        """A section for all, in which index mappings end where a parameter is not on the variant,
        or one for each."""
        sections = changes if self._happens(0.7) else [" ".join(changes)] if changes else []
        return "".join(f"translate {{ {section} }}\n" for section in sections)

    def _change(self, number, before, after):
        """Adds what becomes of a parameter.
        @return what the translate section says about it."""
        name, change = before.name, self.chance.choice(CHANGES)
        if change == "removed":
            return f"removed {{ {name} }} "
        if change == "gone":
            return ""
        is_same = change == "same" or change == "renamed" and self._happens(0.5)
        parameter = before if is_same else self._parameter(number)
        if change == "renamed":
            after.append(type(parameter)(f"q{number}", parameter.access, parameter.indices,
                                         f"q{parameter.text[1:]}"))
            return self._mapping(name, len(before.indices), after[-1])
        after.append(parameter)
        return self._mapping(name, len(before.indices), parameter) if self._happens(0.5) else ""

    def _mapping(self, old_name, count, parameter):
        mapping = f"from {{ {old_name}{self.chance.choice(VALUE_MAPS)} }} "
        if parameter.indices and self._happens(0.7):
            elements = (f"{index} = {self.chance.choice(('1', '2', 'idx::0', 'idx::0', 'idx::1'))}"
                        for index in parameter.indices)
            count = count if self._happens(0.8) else self.chance.randint(0, 2)
            mapping += f"index {count} {{ {', '.join(elements)} }} "
        return f"{parameter.name} {{ {mapping}}} "
