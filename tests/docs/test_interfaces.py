"""The interface files, from which other programs and their authors learn what there is to call."""

import subprocess
import xml.etree.ElementTree as ET

import pytest
from harness import SOURCE

FILES = ["src/dbus/org.norvix.preset.xml",
         "tools/parameter-handler-sim/org.norvix.transaction.xml"]
DOCUMENTED = ("interface", "method", "signal", "arg")


def documentation(element):
    """The documentation string of an element."""
    texts = [a.get("value") for a in element.findall("annotation")
             if a.get("name") == "org.gtk.GDBus.DocString"]
    assert len(texts) == 1, f"{element.tag} {element.get('name')}"
    return texts[0]


@pytest.mark.parametrize("file", FILES)
def test_every_method_and_argument_is_documented(file):
    elements = [e for e in ET.parse(SOURCE / file).iter() if e.tag in DOCUMENTED]
    assert len(elements) > 20
    for element in elements:
        assert documentation(element).endswith("."), element.get("name")


@pytest.mark.parametrize("file", FILES)
def test_generators_of_manuals_take_the_documentation(file, tmp_path):
    subprocess.run(["gdbus-codegen", "--generate-docbook", "manual", SOURCE / file], cwd=tmp_path,
                   check=True)
    (manual,) = tmp_path.iterdir()
    text = manual.read_text()
    for element in ET.parse(SOURCE / file).iter():
        if element.tag in DOCUMENTED:
            assert documentation(element) in text
