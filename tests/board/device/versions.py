"""What the stores on the board write, for them and for the judge of what is left of it.

A version is a number; all values of its file are the same text made of it.
"""

KEYS = {"tiny": ["single"], "medium": [f"some[{n}]" for n in range(1, 41)],
        "large": [f"many[{n}]" for n in range(1, 2001)]}
# The files and their presets. "sub" is a sub-preset of the first keys. "careless" is stored after
# an interrupted store without having been loaded before.
FILES = {"first": "tiny", "second": "tiny", "middle": "medium", "big": "large", "sub": "medium",
         "careless": "tiny"}
SUB_KEYS = 5


def text_of(version):
    """The value of every key in a version; longer ones follow shorter ones and the reverse."""
    return f"{version}." + "x" * (version * 13 % 30)


def keys_of(file):
    keys = KEYS[FILES[file]]
    return keys[:SUB_KEYS] if file == "sub" else keys
