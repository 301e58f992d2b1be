"""Definition files to measure with. Each function that writes makes a parameter definition file and
a preset definition file in a folder and returns their paths; the texts depend on its arguments
alone.
"""

import subprocess

PRESET = "scene"  # of the definitions that have one preset: all keys


def write(folder, parameters_text, presets_text):
    parameters, presets = folder / "parameters.def", folder / "presets.def"
    parameters.write_text(parameters_text)
    presets.write_text(presets_text)
    return parameters, presets


def write_almost_empty(folder):
    """One parameter and one preset."""
    return write(folder, "level rw { }\n", f"{PRESET} preset {{ }}\n")


def write_keys(folder, size):
    """One preset of `size` keys, each of 24 characters."""
    names, columns = 10, min(100, size // 10)
    rows = size // (names * columns)
    if names * rows * columns != size or rows > 9000:
        raise ValueError(f"{size} keys: 100, or 1,000 times a number up to 9,000")
    return write(
        folder,
        f"row index {{ rangeValid {{ 1000..{1000 + rows - 1} }} }}\n"
        f"column index {{ rangeValid {{ 100..{100 + columns - 1} }} }}\n"
        + "".join(f"mixer{n:02}Volume rw {{ index {{ row }} index {{ column }} }}\n"
                  for n in range(names)),
        f"{PRESET} preset {{ }}\n")


def list_keys(build, definitions, preset, *arguments):
    """The keys of a preset, one a line, sorted. `arguments` are system arguments."""
    parameters, presets = definitions
    system = [part for argument in arguments for part in ("-s", argument)]
    return subprocess.run([build / "morvanectl", "-p", parameters, "-d", presets, *system, "keys",
                           preset], stdout=subprocess.PIPE, check=True, text=True).stdout


# Ten parameters of a unit: one in five has a small index, one in five asks for the model.
UNIT = """
# Unit {unit}
unit{unit}Level rw {{ rangeValid {{ -60..12 }} default {{ 0 }} }}
unit{unit}Mute rw {{ rangeValid {{ 0..1 }} default {{ 0 }} }}
unit{unit}Mode rw {{
    rangeValid {{ "auto", "manual", "off" }}
    default {{ "auto" }}
}}
unit{unit}Gain rw {{ index {{ channel }} rangeValid {{ -15..15 }} default {{ 0 }} }}
unit{unit}Delay rw {{ rangeValid {{ 0..(delay) }} default {{ (delay / 10) }} }}
unit{unit}Label rw {{ default {{ "unnamed" }} }}
unit{unit}Source rw {{
    rangeValid {{ "analog", "digital" }}
    rangeValid (model == "studio") {{ "network" }}
    default {{ "analog" }}
}}
unit{unit}Status ro {{ rangeValid {{ "none", "warning", "critical" }} default {{ "none" }} }}
unit{unit}Width rw {{
    ctrlValid (model == "studio")
    rangeValid {{ 1..10 }}
    default {{ 3 }}
}}
unit{unit}Meter ro {{ index {{ channel }} rangeValid {{ -120..20 }} default {{ -120 }} }}
"""
DEVICE_PRESETS = """
everything preset { }
snapshot preset { include ro { all } }
scalars preset { exclude rw { index { channel } } }
status preset {
    include ro { all }
    exclude rw { all }
}
"""
DEVICE_PRESET_NAMES = ("everything", "snapshot", "scalars", "status")
DEVICE_ARGUMENTS = ("model=studio", "delay=500")


def write_device(folder, count):
    """`count` parameters, ten times a whole number, of a mix that devices have, and four presets of
    them. The device is that of DEVICE_ARGUMENTS."""
    if count % 10 != 0:
        raise ValueError(f"{count} parameters: not ten times a whole number")
    units = "".join(UNIT.format(unit=f"{unit:05}") for unit in range(count // 10))
    return write(folder, f"channel index {{ rangeValid {{ 1..4 }} }}\n{units}", DEVICE_PRESETS)
